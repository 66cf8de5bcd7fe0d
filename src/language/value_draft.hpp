/// A value that is being parsed: its pieces and their offsets. Building each level of a nest would
/// copy the inner levels once for each outer one, so the bytes are built only when they take no
/// more memory than the pieces, or when the value is requested.
#ifndef VORNATH_LANGUAGE_VALUE_DRAFT_HPP
#define VORNATH_LANGUAGE_VALUE_DRAFT_HPP

#include <cstdint>
#include <vector>

#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath::build {

/// A default-constructed or moved-from draft may only be assigned to. The destructor does not
/// recurse, however deep the nest is.
class Draft {
 public:
  Draft() = default;
  /// Implicit: a finished value is accepted wherever a draft is.
  // NOLINTNEXTLINE(google-explicit-constructor)
  Draft(const DynamicValue& value) : type_(value.type()), whole_(value.block()) {}
  Draft(const Draft&) = default;
  Draft(Draft&&) noexcept = default;
  Draft& operator=(const Draft&) = default;
  Draft& operator=(Draft&&) noexcept = default;
  /// Apart from the parser, which destroys many symbols, most of them of other kinds.
  ~Draft();

  /// Builds a struct or an array whose first parts are the values, which are consumed. Throws
  /// std::bad_alloc.
  static Draft of(const InternedType& type, std::vector<Draft> values);

  /// Returns the type, without metadata like that of any value.
  const TypePtr& type() const noexcept { return type_; }

  /// Builds the value. Throws std::bad_alloc.
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
