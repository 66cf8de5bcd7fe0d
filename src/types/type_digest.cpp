#include "types/type_digest.hpp"

#include <type_traits>

#include "types/extents.hpp"
#include "types/text_digest.hpp"

namespace qex::vornath {
namespace {

// Takes words in, one after the other.
class Digest {
 public:
  explicit Digest(std::uint64_t first) : digest_(first) {}

  void add(std::uint64_t word) { digest_ = digestOf(digest_, word); }
  void add(const void* address) { add(reinterpret_cast<std::uintptr_t>(address)); }
  void add(const std::string& text) { add(wholeDigest(text)); }
  void add(const TypePtr& type) { add(type.get()); }
  void add(const Metadata& metadata) {
    add(std::uint64_t{metadata.size()});
    for (const auto& [key, entry] : metadata) {
      add(key);
      add(std::uint64_t{entry.index()});
      if (const auto* text = std::get_if<std::string>(&entry)) add(*text);
      if (const auto* value = std::get_if<HeapValue<DynamicValue>>(&entry)) add(value->get());
    }
  }

  std::uint64_t result() const { return digest_; }

 private:
  std::uint64_t digest_;
};

void add(Digest& digest, Type::TBasetype base) { digest.add(static_cast<std::uint64_t>(base)); }

void add(Digest& digest, const Type::TEnum& enumeration) {
  for (const Type::Constructor& constructor : enumeration.constructors) {
    digest.add(constructor.name);
    if (!constructor.metadata.empty()) digest.add(constructor.metadata);
  }
}

void add(Digest& digest, const Type::TStruct& structure) {
  for (const Type::Field& field : structure.fields) {
    digest.add(field.type);
    digest.add(field.label);
  }
}

constexpr std::size_t kArrayIndex = 3;

void addArray(Digest& digest, const InternedType* element, const Extents& extents) {
  digest.add(element);
  if (!extents.known()) return;
  for (const std::int32_t extent : extents) digest.add(static_cast<std::uint64_t>(extent));
}

template <typename D>
void add(Digest& digest, const Type::TArrayND<D>& array) {
  addArray(digest, array.element.get(), array);
}

void add(Digest& digest, const Type::TRef& reference) { digest.add(reference.target); }

void add(Digest& digest, const Type::TFun& function) {
  digest.add(function.codomain);
  for (const TypePtr& domain : function.domain) digest.add(domain);
}

}  // namespace

std::uint64_t typeDigest(const TypeDesc& desc, const Metadata& metadata) {
  Digest digest(desc.index());
  std::visit([&digest](const auto& alternative) { add(digest, alternative); }, desc);
  if (!metadata.empty()) digest.add(metadata);
  return digest.result();
}

std::uint64_t arrayDigest(const InternedType& element, std::int32_t extent) {
  static_assert(
      std::is_same_v<std::variant_alternative_t<kArrayIndex, TypeDesc>, Type::TArrayND<int>>);
  Digest digest(kArrayIndex);
  addArray(digest, &element, Extents(extent));
  return digest.result();
}

}  // namespace qex::vornath
