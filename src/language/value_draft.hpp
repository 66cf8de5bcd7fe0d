/// A value while its text is read: the pieces that it is made of and where they come to lie.
/// Putting each level of a nest together would copy what is inside it once a level, so that is left
/// until the bytes are no more than the pieces take anyway, or somebody wants the value.
#ifndef VORNATH_LANGUAGE_VALUE_DRAFT_HPP
#define VORNATH_LANGUAGE_VALUE_DRAFT_HPP

#include <cstdint>
#include <vector>

#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath::build {

/// Nothing but a place for another one if it is default constructed or was moved from. Ends without
/// recursion, however deep the nest is.
class Draft {
 public:
  Draft() = default;
  /// A value that is whole: one will do wherever a draft is expected.
  // NOLINTNEXTLINE(google-explicit-constructor)
  Draft(const DynamicValue& value) : type_(value.type()), whole_(value.block()) {}
  Draft(const Draft&) = default;
  Draft(Draft&&) noexcept = default;
  Draft& operator=(const Draft&) = default;
  Draft& operator=(Draft&&) noexcept = default;
  /// Apart from the parser, which destroys many symbols, most of them of other kinds.
  ~Draft();

  /// A struct or an array of which these are the first parts. The values are used up. Throws
  /// std::bad_alloc.
  static Draft of(const InternedType& type, std::vector<Draft> values);

  /// Without metadata, as that of any value.
  const TypePtr& type() const noexcept { return type_; }

  /// The value, put together. Throws std::bad_alloc.
  DynamicValue value() &&;

 private:
  struct Piece {
    std::uint64_t offset;  // without the draft's own
    BlockPtr block;
  };

  std::size_t pieceCount() const { return whole_.get() != nullptr ? 1 : pieces_.size(); }
  void copyTo(char* destination) const;
  void moveTo(std::vector<Piece>& pieces, std::uint64_t origin);

  TypePtr type_;
  std::uint64_t offset_ = 0;  // of all pieces
  BlockPtr whole_;            // or, if it is empty:
  std::vector<Piece> pieces_;
};

}  // namespace qex::vornath::build

#endif
