// Tables of comma-separated text with a header line.
#ifndef CORNELL_BOX_CSV_HPP
#define CORNELL_BOX_CSV_HPP

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace cornell_box {

/// A table that was read whole. Cells are found by their column's name, so that a column more or
/// another order of columns does no harm. Every error is a std::runtime_error that begins with the
/// file's path, and where there is one with the line.
class Csv {
 public:
  /// Reads a file that must have these columns and at least one row.
  Csv(std::string path, const std::vector<std::string>& columns);

  std::size_t rows() const { return rows_.size(); }
  bool hasColumn(const std::string& column) const { return columns_.count(column) != 0; }

  /// The cell as it stands in the file.
  const std::string& text(std::size_t row, const std::string& column) const;

  /// The cell as a finite number, and as the single that is nearest to it.
  double number(std::size_t row, const std::string& column) const;
  float single(std::size_t row, const std::string& column) const;

  /// Raises an error about a row.
  [[noreturn]] void fail(std::size_t row, const std::string& message) const;

 private:
  struct Row {
    std::size_t line;
    std::vector<std::string> cells;
  };
  std::string path_;
  std::map<std::string, std::size_t> columns_;
  std::vector<Row> rows_;
};

}  // namespace cornell_box

#endif
