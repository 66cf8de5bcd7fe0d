// Prints a value of any type, with one line for each field. The fields of a struct are indented
// below its label.
#ifndef CORNELL_BOX_VALUE_PRINTER_HPP
#define CORNELL_BOX_VALUE_PRINTER_HPP

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "vornath_data/value.hpp"
#include "vornath_data/vrnt.h"

namespace cornell_box {

class ValuePrinter {
 public:
  explicit ValuePrinter(std::string indent) : indent_(std::move(indent)) {}

  /// Adds a value of which only the value itself is known.
  void add(const vrntValue_t* value);

  /// Adds a value together with its annotated type (the value's own type has no annotations) and
  /// its value before any change. A field with a unit is printed with the unit, and a changed field
  /// with its former value. If `changedOnly`, leaves out unchanged fields.
  void add(const vrntValue_t* value, const vrntType_t* annotated, const vrntValue_t* standard,
           bool changedOnly);

  bool empty() const { return lines_.empty(); }

  /// Prints what was added, with the values in one column.
  void print(std::ostream& out) const;

 private:
  struct Line {
    std::string label, text, note;   ///< the label is indented by its depth
    std::vector<std::string> block;  ///< lines below this one
  };

  /// A part of a value, and the same part of the unchanged value (null if there is none).
  struct Place {
    const vrntValue_t* value;
    const vrntValue_t* standard;
    vrntValueView_t view;
    std::string label;
  };

  void walk(const Place& place);
  void walkStruct(const Place& place);
  void walkArray(const Place& place);
  void walkList(const Place& place, const vrntType_t* element, std::int32_t count);
  void walkReference(const Place& place);
  void addColour(const Place& place);
  void addHeading(const Place& place);
  void dropEmptyHeading(const Place& place, std::size_t heading);
  void addLine(const Place& place, const std::string& text, const std::string& standardText);
  std::vector<std::string> elements(const Place& place, std::int32_t count) const;
  std::vector<std::string> columns(const std::vector<std::string>& texts) const;

  const std::string indent_;
  bool changedOnly_ = false;
  std::size_t depth_ = 0;
  int references_ = 0;
  std::vector<Line> lines_;
};

}  // namespace cornell_box

#endif
