// Two schemas that the benchmarks of types and values share, so that their rows can be compared:
// S has 14 leaves and about 2.3 KB of annotated type text, L has 100 leaves in 7 structs and about
// 16.6 KB. A third one, XS, has two leaves and about 300 bytes. Yardsticks that need another form
// of a schema, such as a protobuf message, make it from the leaves.
#ifndef VORNATH_BENCH_SCHEMAS_HPP
#define VORNATH_BENCH_SCHEMAS_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace bench {

struct Leaf {
  enum class Kind { Float, Float3, Int, Bool, Enum };

  Kind kind;
  std::string label;
  std::string name;  // the annotations "name" and "desc"
  std::string description;
  std::string limits;                   // the annotations "max" and "min", or nothing
  std::string more;                     // annotations whose keys follow "name", or nothing
  std::vector<std::string> components;  // the default: a literal, three of them, or a constructor
};

// The constructors of each leaf of kind Enum, in the order of their codes.
extern const std::vector<std::string> kConstructors;

/// The default of a leaf, as it stands in the text of a value.
std::string defaultText(const Leaf& leaf);

// A struct of leaves.
struct Part {
  std::string label;  // empty if the struct is the whole schema
  std::vector<Leaf> leaves;
};

struct Schema {
  std::string name;  // "XS", "S" or "L"
  std::vector<Part> parts;

  bool isNested() const { return parts.size() > 1; }
};

const Schema& schemaXS();
const Schema& schemaS();
const Schema& schemaL();

enum class Form {
  Annotated,    // with default, limits, name and description of each leaf; in canonical spelling
  Plain,        // without annotations: the type of the values
  Moved,        // plain, with the first leaf of the first part behind the others
  Specialized,  // plain, with two leaves of each part marked @no_specialize
};

std::string typeText(const Schema& schema, Form form);

/// The type of a schema, with a new reference.
vrnt::UniqueType typeOf(const Schema& schema, Form form);

/// The default value of a schema.
vrnt::UniqueValue defaultOf(const Schema& schema);

/// The text of the default value of a schema, in canonical spelling.
std::string valueText(const Schema& schema);

// The annotated text of a schema as one that no living type has: each text has another number in
// the first label of each part. The texts of a schema have the same length.
class NewTypeTexts {
 public:
  explicit NewTypeTexts(const Schema& schema);
  /// The next text, which is valid until the next call.
  const char* next();
  std::string_view current() const { return text_; }

 private:
  std::string text_;
  std::vector<std::size_t> numbers_;  // where the digits of each number begin
  std::uint32_t next_ = 0;
};

}  // namespace bench

#endif
