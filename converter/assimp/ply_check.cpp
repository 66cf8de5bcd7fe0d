#include "assimp/ply_check.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scene_plan/notices.hpp"
#include "scene_plan/text.hpp"

namespace vrn_convert {
namespace {

constexpr std::string_view kLineEnds = "\r\n";
constexpr std::string_view kBlanks = " \t";

struct Property {
  std::size_t countSize = 0;  // of the count of a list; 0 for a number
  bool isSigned = false;      // the count
  std::size_t size = 0;
};

struct Element {
  std::string name;
  std::uint64_t count = 0;
  std::vector<Property> properties;
};

enum class Encoding : std::uint8_t { Text, LittleEndian, BigEndian };

// The size of a number of a type; 0 if the type is not known.
std::size_t sizeOf(std::string_view type) {
  for (const char* name : {"char", "uchar", "int8", "uint8"}) {
    if (type == name) return 1;
  }
  for (const char* name : {"short", "ushort", "int16", "uint16"}) {
    if (type == name) return 2;
  }
  for (const char* name : {"int", "uint", "int32", "uint32", "float", "float32"}) {
    if (type == name) return 4;
  }
  for (const char* name : {"double", "float64", "double64"}) {
    if (type == name) return 8;
  }
  return 0;
}

std::vector<std::string_view> wordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  for (std::size_t at = line.find_first_not_of(kBlanks); at != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_of(kBlanks, at), line.size());
    words.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBlanks, end);
  }
  return words;
}

class PlyCheck {
 public:
  explicit PlyCheck(std::string_view bytes) : rest_(bytes) {}

  void run() {
    const std::string_view magic = nextLine();
    if (magic != "ply" && magic != "PLY") return;
    readHeader();
    if (!isUnderstood_ || !encoding_) return;
    if (*encoding_ == Encoding::Text) {
      checkLines();
    } else {
      checkNumbers();
    }
  }

 private:
  // Returns the next line that is not empty, without the blanks around it; empty behind the last.
  std::string_view nextLine() {
    while (!rest_.empty()) {
      const std::size_t end = std::min(rest_.find_first_of(kLineEnds), rest_.size());
      const std::string_view line = rest_.substr(0, end);
      const std::size_t first = line.find_first_not_of(kBlanks);
      if (first != std::string_view::npos) {
        rest_.remove_prefix(end);
        return line.substr(first, line.find_last_not_of(kBlanks) + 1 - first);
      }
      rest_.remove_prefix(std::min(end + 1, rest_.size()));
    }
    return {};
  }

  void readHeader() {
    for (;;) {
      const std::string_view line = nextLine();
      const std::vector<std::string_view> words = wordsOf(line);
      if (words.empty()) break;
      if (words[0] == "end_header") {
        // The line ends with one of \r, \n and \r\n, and then the data begin.
        if (rest_.substr(0, 1) == "\r") rest_.remove_prefix(1);
        if (rest_.substr(0, 1) == "\n") rest_.remove_prefix(1);
        return;
      }
      if (words[0] == "format") {
        readFormat(words);
      } else if (words[0] == "element") {
        readElement(words);
      } else if (words[0] == "property") {
        readProperty(words);
      }
    }
    throw Refused("it cannot be read: its header has no line end_header; the file may be cut");
  }

  void readFormat(const std::vector<std::string_view>& words) {
    if (words.size() < 2) return;
    if (words[1] == "ascii") encoding_ = Encoding::Text;
    if (words[1] == "binary_little_endian") encoding_ = Encoding::LittleEndian;
    if (words[1] == "binary_big_endian") encoding_ = Encoding::BigEndian;
  }

  void readElement(const std::vector<std::string_view>& words) {
    if (words.size() < 3) {
      isUnderstood_ = false;
      return;
    }
    Element element;
    element.name = words[1];
    const std::string_view count = words[2];
    const auto [end, error] =
        std::from_chars(count.data(), count.data() + count.size(), element.count);
    if (error != std::errc() || end != count.data() + count.size()) isUnderstood_ = false;
    elements_.push_back(std::move(element));
  }

  void readProperty(const std::vector<std::string_view>& words) {
    const bool isList = words.size() > 1 && words[1] == "list";
    if (words.size() < (isList ? 5U : 3U) || elements_.empty()) {
      isUnderstood_ = false;
      return;
    }
    Property property;
    if (isList) {
      const bool isWhole = words[2].find("int") != std::string_view::npos ||
                           words[2].find("char") != std::string_view::npos ||
                           words[2].find("short") != std::string_view::npos;
      property.countSize = isWhole ? sizeOf(words[2]) : 0;
      property.isSigned = words[2][0] != 'u';
    }
    property.size = sizeOf(words[isList ? 3 : 1]);
    if (property.size == 0 || (isList && property.countSize == 0)) isUnderstood_ = false;
    elements_.back().properties.push_back(property);
  }

  // A text has a line for each element.
  void checkLines() {
    std::uint64_t lines = 0;
    while (!nextLine().empty()) ++lines;
    std::uint64_t left = lines;
    for (const Element& element : elements_) {
      if (element.count > left) refuse(element, left);
      left -= element.count;
    }
  }

  void checkNumbers() {
    for (const Element& element : elements_) {
      std::uint64_t whole = 0;  // the bytes of the numbers of an element
      bool hasLists = false;
      for (const Property& property : element.properties) {
        if (property.countSize == 0) whole += property.size;
        hasLists |= property.countSize != 0;
      }
      if (hasLists) {
        checkLists(element);
      } else if (whole > 0) {
        const std::uint64_t there = rest_.size() / whole;
        if (element.count > there) refuse(element, there);
        rest_.remove_prefix(static_cast<std::size_t>(whole * element.count));
      }
    }
  }

  void checkLists(const Element& element) {
    for (std::uint64_t i = 0; i < element.count; ++i) {
      for (const Property& property : element.properties) {
        std::uint64_t size = property.size;
        if (property.countSize != 0) {
          if (rest_.size() < property.countSize) refuse(element, i);
          size *= countAt(property);
          rest_.remove_prefix(property.countSize);
        }
        if (rest_.size() < size) refuse(element, i);
        rest_.remove_prefix(static_cast<std::size_t>(size));
      }
    }
  }

  // Returns the count of a list; one that is negative is more than any file has.
  std::uint64_t countAt(const Property& property) const {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < property.countSize; ++i) {
      const std::size_t at = *encoding_ == Encoding::BigEndian ? i : property.countSize - 1 - i;
      number = number << 8 | static_cast<unsigned char>(rest_[at]);
    }
    constexpr std::uint64_t kMost = std::uint64_t{1} << 48;
    const bool isNegative = property.isSigned && (number >> (8 * property.countSize - 1)) != 0;
    return isNegative ? kMost : number;
  }

  [[noreturn]] static void refuse(const Element& element, std::uint64_t there) {
    throw Refused("it cannot be read: its header tells of " + std::to_string(element.count) + " " +
                  oneLine(asUtf8(element.name)) + " elements, and there are " +
                  std::to_string(there) + "; the file may be cut");
  }

  std::string_view rest_;
  std::optional<Encoding> encoding_;
  std::vector<Element> elements_;
  bool isUnderstood_ = true;
};

}  // namespace

void checkPly(std::string_view bytes) { PlyCheck(bytes).run(); }

}  // namespace vrn_convert
