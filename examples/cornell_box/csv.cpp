#include "csv.hpp"

#include <charconv>
#include <cmath>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace cornell_box {
namespace {

std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> cells(1);
  for (const char c : line) {
    if (c == ',') {
      cells.emplace_back();
    } else {
      cells.back() += c;
    }
  }
  return cells;
}

// std::from_chars does not depend on the locale and returns the nearest number.
template <typename Number>
bool read(const std::string& cell, Number& number) {
  const char* const end = cell.data() + cell.size();
  const auto [stop, error] = std::from_chars(cell.data(), end, number);
  return error == std::errc() && stop == end && std::isfinite(number);
}

}  // namespace

Csv::Csv(std::string path, const std::vector<std::string>& columns) : path_(std::move(path)) {
  std::ifstream file(path_, std::ios::binary);
  if (!file) throw std::runtime_error(path_ + ": cannot open the file");
  std::size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    std::vector<std::string> cells = split(line);
    if (columns_.empty()) {
      for (std::size_t i = 0; i < cells.size(); ++i) columns_[cells[i]] = i;
      for (const std::string& column : columns) {
        if (!hasColumn(column)) {
          throw std::runtime_error(path_ + ": there is no column '" + column + "'");
        }
      }
      continue;
    }
    rows_.push_back({number, std::move(cells)});
    if (rows_.back().cells.size() != columns_.size()) {
      fail(rows_.size() - 1, std::to_string(rows_.back().cells.size()) +
                                 " cells where the header has " + std::to_string(columns_.size()));
    }
  }
  if (file.bad()) throw std::runtime_error(path_ + ": cannot read the file");
  if (rows_.empty()) throw std::runtime_error(path_ + ": there are no rows");
}

const std::string& Csv::text(std::size_t row, const std::string& column) const {
  return rows_.at(row).cells[columns_.at(column)];
}

double Csv::number(std::size_t row, const std::string& column) const {
  double number = 0;
  if (!read(text(row, column), number)) {
    fail(row, column + " is no number: '" + text(row, column) + "'");
  }
  return number;
}

float Csv::single(std::size_t row, const std::string& column) const {
  float number = 0;
  if (!read(text(row, column), number)) {
    fail(row, column + " is no number: '" + text(row, column) + "'");
  }
  return number;
}

void Csv::fail(std::size_t row, const std::string& message) const {
  throw std::runtime_error(path_ + ":" + std::to_string(rows_.at(row).line) + ": " + message);
}

}  // namespace cornell_box
