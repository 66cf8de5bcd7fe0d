// The texts of identifiers and the names of textures against the rules by which they are read.
#include <algorithm>
#include <iomanip>
#include <limits>
#include <optional>
#include <sstream>

#include "support/target.hpp"
#include "vornath_data/texture.hpp"
#include "vornath_data/unique_id.hpp"

namespace vornath_fuzz {
namespace {

using vrnt::UniqueId;

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// A pair of characters as a number in base 16: blanks, then a sign, then digits as far as they go.
std::optional<int> pairNumber(char first, char second) {
  if (digit(first) >= 0) {
    return digit(second) >= 0 ? digit(first) * 16 + digit(second) : digit(first);
  }
  if (digit(second) < 0) return std::nullopt;
  if (isBlank(first) || first == '+') return digit(second);
  if (first == '-') return (256 - digit(second)) % 256;
  return std::nullopt;
}

std::string printed(const UniqueId& id) {
  std::ostringstream stream;
  stream << id;
  return stream.str();
}

void checkParse(const std::string& text) {
  const vrnt::Result<UniqueId> result = UniqueId::parse(text.c_str());
  std::string bytes;
  std::string failure;
  for (std::size_t i = 0; i < 32 && failure.empty(); i += 2) {
    if (i + 1 >= text.size()) {
      failure = "cannot parse unique ID: unexpected end of string";
    } else if (const auto number = pairNumber(text[i], text[i + 1])) {
      bytes += static_cast<char>(*number);
    } else {
      failure = "cannot parse unique id: contains non-hex numbers";
    }
  }
  FUZZ_CHECK_NOTE(result.hasValue() == failure.empty(), text);
  if (!result.hasValue()) {
    FUZZ_CHECK_NOTE(result.error().code() == vrnt::ErrorCode::ParseFailed, text);
    FUZZ_CHECK_NOTE(result.error().text() == failure, text);
    return;
  }
  const UniqueId& id = result.value();
  FUZZ_CHECK_NOTE(
      std::equal(id.begin(), id.end(), bytes.begin(), bytes.end(),
                 [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); }),
      text);
}

void checkPrint(const UniqueId& id) {
  const std::string text = printed(id);
  FUZZ_CHECK(text.size() == 32 && text.find_first_not_of("0123456789abcdef") == std::string::npos);
  const vrnt::Result<UniqueId> back = UniqueId::parse(text.c_str());
  FUZZ_CHECK(back.hasValue() && back.value() == id && !(back.value() != id));
  FUZZ_CHECK(id.isNull() == (text == std::string(32, '0')));
  FUZZ_CHECK(id.isNull() == (id == UniqueId::null()));

  std::ostringstream stream;
  stream << std::uppercase << std::oct << std::setfill('*') << std::setw(5);
  stream << id;
  FUZZ_CHECK(stream.width() == 5 && stream.fill() == '*');
  FUZZ_CHECK((stream.flags() & std::ios_base::basefield) == std::ios_base::oct);
  const vrnt::Result<UniqueId> upper = UniqueId::parse(stream.str().c_str());
  FUZZ_CHECK(upper.hasValue() && upper.value() == id);

  UniqueId copy;
  copy = id;
  UniqueId moved(std::move(copy));
  FUZZ_CHECK(moved == id);
}

void checkHash(std::string_view bytes, Program program) {
  const UniqueId whole = UniqueId::hash(bytes.data(), bytes.size());
  UniqueId::Hasher hasher;
  for (std::size_t position = 0; position < bytes.size();) {
    const std::size_t piece = std::min(bytes.size() - position, program.below(64) + 1);
    hasher.update(bytes.data() + position, piece);
    position += piece;
  }
  FUZZ_CHECK(hasher.finalize() == whole);
  FUZZ_CHECK(hasher.finalize() == UniqueId::hash(""));
  const std::string text(bytes.substr(0, bytes.find('\0')));
  FUZZ_CHECK(UniqueId::hash(text.c_str()) == UniqueId::hash(text.data(), text.size()));
  checkPrint(whole);
}

template <typename Enum>
void checkName(std::int32_t number, std::int32_t (*parse)(const char*)) {
  const std::string name = vrnt::toString(static_cast<Enum>(number));
  FUZZ_CHECK(parse(name.c_str()) == (name == "Unknown" ? -1 : number));
}

template <typename Enum>
void checkNames(const std::string& text, std::int32_t number, std::int32_t (*parse)(const char*)) {
  checkName<Enum>(number, parse);
  checkName<Enum>(number & 0x7F, parse);
  if (const std::int32_t found = parse(text.c_str()); found != -1) {
    FUZZ_CHECK_NOTE(vrnt::toString(static_cast<Enum>(found)) == text, text);
  }
}

// The size of a chain of images is the sum of theirs, where nothing runs over and pixels stand on
// their own.
void checkSize(Program program) {
  vrnt::detail::TextureDesc desc;
  desc.width = static_cast<std::int32_t>(program.word());
  desc.height = static_cast<std::int32_t>(program.word());
  desc.depth = static_cast<std::int32_t>(program.word());
  desc.format = static_cast<vrnt::TextureFormat>(program.word() & 0x7F);
  desc.layout = static_cast<vrnt::TextureLayout>(program.word());
  const std::size_t size = desc.size();
  if (desc.depth <= 0) FUZZ_CHECK(size == 0);

  constexpr std::int32_t kMipmapped = 0x8000;
  const auto layout = static_cast<std::int32_t>(desc.layout);
  const auto small = [](std::int32_t extent) { return extent > 0 && extent < 1 << 10; };
  if ((layout & kMipmapped) == 0 || !small(desc.width) || !small(desc.height) ||
      !small(desc.depth) || static_cast<std::int32_t>(desc.format) > 35) {
    return;
  }
  std::size_t sum = 0;
  for (std::int32_t w = desc.width, h = desc.height;;
       w = std::max(w / 2, 1), h = std::max(h / 2, 1)) {
    vrnt::detail::TextureDesc level = desc;
    level.width = w;
    level.height = h;
    level.layout = static_cast<vrnt::TextureLayout>(layout & ~kMipmapped);
    sum += level.size();
    if (w == 1 && h == 1) break;
  }
  FUZZ_CHECK(size == sum);
}

}  // namespace

void runInput(std::string_view bytes) {
  const std::string text(bytes.substr(0, bytes.find('\0')));
  checkParse(text);
  checkHash(bytes, Program(bytes));
  if (bytes.size() >= 16) {
    UniqueId id;
    std::memcpy(id.begin(), bytes.data(), 16);
    checkPrint(id);
  }
  const auto number = static_cast<std::int32_t>(Program(bytes).word());
  checkNames<vrnt::TextureFormat>(text, number, &vrnt::parseTextureFormat);
  checkNames<vrnt::TextureLayout>(text, number, &vrnt::parseTextureLayout);
  checkNames<vrnt::TextureType>(text, number, &vrnt::parseTextureType);
  checkSize(Program(bytes));
}

}  // namespace vornath_fuzz
