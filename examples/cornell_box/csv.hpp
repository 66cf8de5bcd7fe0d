// A reader for tables of comma-separated text with a header line.
#ifndef CORNELL_BOX_CSV_HPP
#define CORNELL_BOX_CSV_HPP

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace cornell_box {

/// A table in memory. Cells are found by the name of their column, so that extra columns and
/// another order of columns are allowed. Every error is a std::runtime_error whose message starts
/// with the path of the file and, if it concerns a line, the line number.
class Csv {
 public:
  /// Reads a file. It must have these columns and at least one row.
  Csv(std::string path, const std::vector<std::string>& columns);

  std::size_t rows() const { return rows_.size(); }
  bool hasColumn(const std::string& column) const { return columns_.count(column) != 0; }

  /// Returns the text of a cell.
  const std::string& text(std::size_t row, const std::string& column) const;

  /// Return the cell as a finite number, in double or in single precision, correctly rounded.
  double number(std::size_t row, const std::string& column) const;
  float single(std::size_t row, const std::string& column) const;

  /// Throws an error about a row.
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
