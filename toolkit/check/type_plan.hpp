// A plan of a type: what the check looks at in a value of the type, and where its references are.
#ifndef VORNATH_TOOLKIT_CHECK_TYPE_PLAN_HPP
#define VORNATH_TOOLKIT_CHECK_TYPE_PLAN_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vornath_data/types.h"

namespace vrtk {

enum class Rule : std::uint8_t {
  Bool,     ///< 0 or all ones
  Enum,     ///< a code below `bound`
  Int,      ///< within the limits
  Char,     ///< within the limits
  Float,    ///< within the limits
  Half,     ///< within the limits
  Texture,  ///< the index of a texture, or negative
  Loop      ///< the operations up to `end`, for each of the elements of an array
};

/// One operation: a rule for `count` numbers, each `stride` bytes behind the one before.
struct Operation {
  Rule rule;
  std::uint32_t end = 0;     ///< of a loop: the operation behind its last one
  std::uint64_t offset = 0;  ///< bytes from the start of the value, or of the loop's element
  std::uint64_t count = 1;
  std::uint64_t stride = 0;
  std::uint32_t bound = 0;
  double min = 0, max = 0;  ///< both allowed. A float or half is finite, too, unless one of them
                            ///< is infinite
};

/// A reference word in a value.
struct ReferencePlace {
  std::uint64_t offset;      ///< bytes from the start of the value
  const vrntType_t* target;  ///< the declared type; null for `void*` and the words of a function
};

class TypePlan {
 public:
  /// What is known of the numbers in a value of the type.
  enum class Numbers {
    Annotated,  ///< limits and defaults are in the type's metadata
    Bare        ///< nothing: any number is right, but not a NaN
  };

  /// The type must live as long as the plan. Throws std::bad_alloc.
  TypePlan(const vrntType_t* type, Numbers numbers);

  const vrntType_t* type() const { return type_; }
  std::uint64_t size() const { return size_; }
  const std::vector<Operation>& operations() const { return operations_; }

  /// Returns the number of reference words.
  std::uint64_t references() const { return loops_[0].perElement; }
  /// Returns a reference word by its index, in the order of their offsets.
  ReferencePlace reference(std::uint64_t index) const;

  /// Returns how many parts a text of a value has, without what its references lead to.
  double parts() const { return parts_; }

  /// Returns the bytes that the plan takes.
  std::size_t memory() const;

 private:
  friend class PlanBuilder;

  // References that repeat for each element of an array. The first loop is the value itself.
  struct ReferenceItem {
    std::uint64_t first;  // the index of its first reference in an element
    std::uint64_t offset;
    const vrntType_t* target;
    std::uint32_t loop;  // 0 for a reference word
  };
  struct ReferenceLoop {
    std::uint64_t stride = 0;
    std::uint64_t perElement = 0;
    std::vector<ReferenceItem> items;
  };

  const vrntType_t* type_;
  std::uint64_t size_;
  double parts_ = 0;
  std::vector<Operation> operations_;
  std::vector<ReferenceLoop> loops_;
};

/// Appends the path to a place in a value of a type, such as "/matrix/x/0". `offset` is in bytes.
void appendPath(std::string& out, const vrntType_t* type, std::uint64_t offset);

/// Returns whether a struct is a reference to a texture: it has one int, and either a label or an
/// alias that says so.
bool isTextureReference(const vrntType_t* structType);

}  // namespace vrtk

#endif
