/// Creates, finds and destroys types.
///
/// Lock order: parser_mutex before the factory's lock, always; no parse starts under the factory's
/// lock. The decrement of a count to zero and the removal of the type from the tables are one step
/// under the lock: otherwise a look-up could return a type that is being destroyed. A decrement to
/// a count above zero takes no lock.
#ifndef VORNATH_TYPES_TYPE_FACTORY_HPP
#define VORNATH_TYPES_TYPE_FACTORY_HPP

#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string_view>

#include "types/type.hpp"
#include "types/type_order.hpp"

namespace boost {
class recursive_mutex;
}

namespace qex::vornath {

class Type::Factory {
 public:
  Factory();
  Factory(const Factory&) = delete;
  Factory& operator=(const Factory&) = delete;
  ~Factory();

  /// Returns the one type of this description and metadata: the existing one with a new reference,
  /// or a new one. The alternative's own constructor has checked the description. Throws
  /// std::bad_alloc and "Illegal base type."; the tables are then unchanged.
  TypePtr makeType(TypeDesc desc, const Metadata& metadata = {});

  /// Returns the type of a text: from the table if the text is the canonical one of a living type,
  /// else by a parse. Throws what the parse throws.
  TypePtr parseType(std::string_view text);

  /// Keeps the type alive until shutDown(). Returns its argument.
  const InternedType* makePermanent(const InternedType* type);

  /// Releases a reference that may be the last one.
  void releaseType(const InternedType* type) noexcept;

  /// Releases the references that keep permanent types alive. Cannot be undone.
  void shutDown();

  /// Returns the number of living types, for tests that look for leaks.
  std::size_t liveTypes() const;

 private:
  // Points into the Type, or into the arguments of a look-up.
  struct Key {
    const Metadata* metadata;
    const TypeDesc* desc;
  };
  struct KeyOrder {
    bool operator()(const Key& a, const Key& b) const {
      return compareInterned(*a.desc, *a.metadata, *b.desc, *b.metadata) < 0;
    }
  };

  // A text with a digest of its length and a few samples of it. The digest nearly always decides,
  // so that a look-up of a long text costs one comparison of it. The text points into the Type.
  struct TextKey {
    explicit TextKey(std::string_view typeText);

    std::uint64_t digest;
    std::string_view text;

    friend bool operator<(const TextKey& a, const TextKey& b) {
      return a.digest != b.digest ? a.digest < b.digest : a.text < b.text;
    }
  };

  // A long text that its type may not have built yet. Texts of one key are nearly always equal; a
  // look-up compares them. Two that differ may displace each other in the table, which costs a
  // parse.
  struct LongTextKey {
    explicit LongTextKey(const TextFingerprint& text) : length(text.length), digest(text.digest) {}

    std::uint64_t length;
    std::uint64_t digest;

    friend auto operator<=>(const LongTextKey&, const LongTextKey&) = default;
  };

  TypePtr findByTextLocked(std::string_view text);
  TypePtr findLongTextLocked(std::string_view text);
  void indexLongTextLocked(const InternedType* type);
  void insertTextLocked(InternedType* type);
  void insertLongTextLocked(InternedType* type);
  void removeTextLocked(const InternedType* type) noexcept;
  TypePtr makeStrippedLocked(const TypeDesc& desc, const Metadata& metadata);
  void destroyLocked(const InternedType* type) noexcept;

  std::map<Key, InternedType*, KeyOrder> typesByKey_;
  // All short texts, and those long ones that were looked up or parsed.
  std::map<TextKey, const InternedType*> typesByText_;
  std::map<LongTextKey, const InternedType*> typesByLongText_;
  std::set<TypePtr, TypeOrder> permanentTypes_;
  bool shuttingDown_ = false;
  const std::unique_ptr<boost::recursive_mutex> lock_;  // its header is a costly one

  // Types that await destruction, chained through nextUnlinked_: the destruction of a type releases
  // its children, and a chain of them must not recurse.
  const InternedType* unlinked_ = nullptr;
  bool destroying_ = false;
};

}  // namespace qex::vornath

#endif
