/// Creates, finds and destroys types.
///
/// Lock order: parser_mutex before the factory's lock, always; no parse starts under the factory's
/// lock. Only who holds it changes the tables. A look-up that finds a living type takes no lock;
/// one that finds none looks again under the lock before the answer is that there is none.
///
/// The decrement of a count to zero and the removal of the type from the tables are one step under
/// the lock: otherwise a look-up under the lock could return a type that is being destroyed. A
/// look-up without the lock may meet such a type. It adds its reference only to a count above zero,
/// and the count of a dead type stays zero (type_pool.hpp), so that it cannot return one. A
/// decrement to a count above zero takes no lock.
#ifndef VORNATH_TYPES_TYPE_FACTORY_HPP
#define VORNATH_TYPES_TYPE_FACTORY_HPP

#include <cstdint>
#include <memory>
#include <set>
#include <string_view>

#include "types/digest_table.hpp"
#include "types/type.hpp"
#include "types/type_order.hpp"
#include "types/type_pool.hpp"

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
  /// or a new one, which takes the description over. The alternative's own constructor has checked
  /// the description. Throws std::bad_alloc and "Illegal base type."; the tables are then
  /// unchanged.
  TypePtr makeType(TypeDesc&& desc, const Metadata& metadata = {});
  /// Does the same with a copy of the description.
  TypePtr makeType(const TypeDesc& desc, const Metadata& metadata = {});
  /// Does the same. A new type takes the metadata over.
  TypePtr makeType(TypeDesc&& desc, Metadata&& metadata);

  /// Returns the array type of one dimension with this element type and extent, without metadata,
  /// if it lives, else null. Needs no description of it.
  TypePtr findArray(const InternedType& element, std::int32_t extent) const noexcept;

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
  TypePtr makeType(TypeDesc&& desc, const Metadata& metadata, Metadata* movable);
  TypePtr makeNewLocked(TypeDesc&& desc, Metadata&& metadata, std::uint64_t digest);
  TypePtr makeStrippedLocked(const TypeDesc& desc, const Metadata& metadata);
  TypePtr findText(std::string_view text) const;
  TypePtr findLongText(std::string_view text);
  void indexLongTextLocked(const InternedType* type);
  void insertTextLocked(const InternedType* type) noexcept;
  void insertSampleLocked(std::string_view text, const InternedType* type) noexcept;
  void removeTextLocked(const InternedType* type) noexcept;
  void destroyLocked(const InternedType* type) noexcept;

  // Room for the types that a host with a few groups uses: 16 KiB for each table.
  static constexpr std::size_t kMinSlots = 1024;

  // By typeDigest(): all types.
  DigestTable typesByKey_{kMinSlots};
  // By wholeDigest(): all short texts. By sampledDigest(): those that it does not read as a whole,
  // and those long texts that were looked up or parsed. A text has at most one entry by each.
  DigestTable typesByText_{kMinSlots};
  // By the digest of the fingerprint: long texts. Two texts of one fingerprint displace each other,
  // which costs a parse.
  DigestTable typesByLongText_{64};
  std::set<TypePtr, TypeOrder> permanentTypes_;
  bool shuttingDown_ = false;
  const std::unique_ptr<boost::recursive_mutex> lock_;  // its header is a costly one

  // Types that await destruction, chained through nextUnlinked_: the destruction of a type releases
  // its children, and a chain of them must not recurse.
  const InternedType* unlinked_ = nullptr;
  bool destroying_ = false;

  std::unique_ptr<TypePool> pool_;
};

}  // namespace qex::vornath

#endif
