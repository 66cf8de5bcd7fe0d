#include "colour/universal_spectrum.hpp"

#include <unordered_map>

#include "colour/type_making.hpp"
#include "types/fixed_struct_types.hpp"

namespace qex::vornath {
namespace {

using Array = Type::TArrayND<int>;
using TStruct = Type::TStruct;

// Returns the universal spectrum that replaces a compact one.
TypePtr universalFor(const InternedType& compact) {
  const InternedType& universal = spectrumType();
  if (compact.metadata().empty()) return TypePtr(&universal);
  Metadata metadata = compact.metadata();
  metadata.insert(universal.metadata().begin(), universal.metadata().end());
  return Type::get_factory(true)->makeType(universal.desc(), metadata);
}

// Each different part once, its own parts before it, on a stack of its own.
class Rebuild {
 public:
  TypePtr run(const InternedType& root) {
    open_.push_back(&root);
    while (!open_.empty()) {
      const InternedType& type = *open_.back();
      const auto [entry, isNew] = results_.try_emplace(&type);
      if (isNew) {
        entry->second = begin(type);
        continue;
      }
      open_.pop_back();
      // No type is a part of itself: what has no result here has all its parts' results.
      if (!entry->second) entry->second = finish(type);
    }
    return results_[&root];
  }

 private:
  // The result, or null if it depends on parts, which are open then.
  TypePtr begin(const InternedType& type) {
    if (const auto* array = type.getIf<Array>()) {
      open_.push_back(array->element.get());
      return nullptr;
    }
    const auto* structure = type.getIf<TStruct>();
    if (structure == nullptr) return TypePtr(&type);
    if (isSameType(type, compactSpectrumType())) return universalFor(type);
    for (const Type::Field& field : structure->fields) open_.push_back(field.type.get());
    return nullptr;
  }

  // A type whose parts are as they were is returned itself: a copy of a value in its metadata would
  // make it another type.
  TypePtr finish(const InternedType& type) const {
    if (const auto* array = type.getIf<Array>()) {
      const TypePtr& element = resultOf(array->element);
      if (element == array->element) return TypePtr(&type);
      return Type::get_factory(true)->makeType(Array(element, array->shape), type.metadata());
    }
    const std::vector<Type::Field>& fields = type.getIf<TStruct>()->fields;
    std::vector<Type::Field> rebuilt;
    rebuilt.reserve(fields.size());
    bool changed = false;
    for (const Type::Field& field : fields) {
      rebuilt.emplace_back(resultOf(field.type), field.label);
      changed = changed || rebuilt.back().type != field.type;
    }
    return changed ? makeStruct(std::move(rebuilt), type.metadata()) : TypePtr(&type);
  }

  const TypePtr& resultOf(const TypePtr& part) const { return results_.find(part.get())->second; }

  std::unordered_map<const InternedType*, TypePtr> results_;  // null while a type's parts are open
  std::vector<const InternedType*> open_;
};

}  // namespace

const InternedType& compactSpectrumType() {
  static const InternedType& type = permanentType(InternedType::parse("{ float3 spectrum; }"));
  return type;
}

TypePtr toUniversalSpectrum(const InternedType& type) { return Rebuild().run(type); }

}  // namespace qex::vornath
