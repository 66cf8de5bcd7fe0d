/// The one place where types come into being, are found again, and end.
///
/// Lock order: parser_mutex before the factory's lock, always; no parse starts under the factory's
/// lock. The last step of a type's count is decided under the lock together with its removal from
/// the tables: otherwise a look-up could hand out a type that is going away. A count that stays
/// above zero goes down without the lock, as nothing can tell the difference.
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

  /// The one type of this description and metadata: an existing one with a new reference, or a new
  /// one. The alternative's own constructor has checked the description. Throws std::bad_alloc and
  /// "Illegal base type."; the tables are then as they were.
  TypePtr makeType(TypeDesc desc, const Metadata& metadata = {});

  /// The type of a text: from the table if the text is the canonical one of a living type, else by
  /// a parse. Throws what the parse throws.
  TypePtr parseType(std::string_view text);

  /// Keeps the type alive until shutDown(). Returns the type that it was given.
  const InternedType* makePermanent(const InternedType* type);

  /// Drops a reference that may be the last one.
  void releaseType(const InternedType* type) noexcept;

  /// Drops the references that keep permanent types alive. There is no way back.
  void shutDown();

  /// How many types are alive: for tests that nothing is left over.
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

  // A text with a digest of its length and a few samples, which nearly always decides, so that a
  // look-up of a long text costs one comparison of it. The text points into the Type.
  struct TextKey {
    explicit TextKey(std::string_view typeText);

    std::uint64_t digest;
    std::string_view text;

    friend bool operator<(const TextKey& a, const TextKey& b) {
      return a.digest != b.digest ? a.digest < b.digest : a.text < b.text;
    }
  };

  // A long text that its type may not have put together. Texts of one key are nearly always equal,
  // which a look-up makes sure of; elsewhere two that aren't may drive each other out of the table,
  // which costs a parse.
  struct LongTextKey {
    explicit LongTextKey(const TextFingerprint& text) : length(text.length), digest(text.digest) {}

    std::uint64_t length;
    std::uint64_t digest;

    friend auto operator<=>(const LongTextKey&, const LongTextKey&) = default;
  };

  TypePtr findByTextLocked(std::string_view text);
  TypePtr findLongTextLocked(std::string_view text);
  void indexLongTextLocked(const InternedType* type);
  void enterTextLocked(InternedType* type);
  void enterLongTextLocked(InternedType* type);
  void removeTextLocked(const InternedType* type) noexcept;
  TypePtr makeStrippedLocked(const TypeDesc& desc, const Metadata& metadata);
  void endLocked(const InternedType* type) noexcept;

  std::map<Key, InternedType*, KeyOrder> typesByKey_;
  // All short texts, and of the long ones those that were looked up or parsed.
  std::map<TextKey, const InternedType*> typesByText_;
  std::map<LongTextKey, const InternedType*> typesByLongText_;
  std::set<TypePtr, TypeOrder> permanentTypes_;
  bool shuttingDown_ = false;
  const std::unique_ptr<boost::recursive_mutex> lock_;  // its header is a costly one

  // Types that have ended and wait for their destruction, chained through nextEnded_: the end of a
  // type ends its children, and a chain of them must not recurse.
  const InternedType* ended_ = nullptr;
  bool ending_ = false;
};

}  // namespace qex::vornath

#endif
