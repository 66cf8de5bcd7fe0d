#include "core/chars.hpp"

#include <vornath_data/vrdm.h>
#include <vornath_data/vrnt.h>

#include <charconv>
#include <cstring>
#include <vector>
#include <vornath_data/handles.hpp>

#include "core/parts.hpp"
#include "core/text.hpp"
#include "core/trouble.hpp"

namespace vrn {
namespace {

std::vector<std::string> split(std::string_view address) {
  std::vector<std::string> segments;
  for (std::size_t start = 0; start <= address.size();) {
    const std::size_t end = std::min(address.find('/', start), address.size());
    segments.emplace_back(address.substr(start, end - start));
    start = end + 1;
  }
  return segments;
}

// Follows labels into a type. Returns false if they do not lead to a field that holds a text.
bool follow(const vrntType_t* type, const std::vector<std::string>& segments, std::size_t next,
            CharsField& field) {
  if (next == segments.size()) {
    field.size = vrntTypeSize(type);
    return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY &&
           vrntMetadataExists(type, "string") != 0;
  }
  if (!isStruct(type)) return false;
  for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
    if (segments[next] != vrntTypeFieldLabel(type, i)) continue;
    const vrnt::UniqueType member(vrntTypeFieldType(type, i));
    vrntValueView_t view;
    vrntValueStructField(&view, type, i);
    field.offset += view.offset;
    return follow(member.get(), segments, next + 1, field);
  }
  return false;
}

[[noreturn]] void fail(const char* what) {
  throw Trouble(std::string("JSON: ") + what + "; correct the string");
}

unsigned hexOf(std::string_view text) {
  unsigned code = 0;
  if (text.size() < 4 ||
      std::from_chars(text.data(), text.data() + 4, code, 16).ptr != text.data() + 4) {
    fail("\\u takes four hexadecimal digits");
  }
  return code;
}

void appendUtf8(std::string& out, unsigned code) {
  const auto tail = [&](unsigned shift) {
    out += static_cast<char>(0x80U | (code >> shift & 0x3FU));
  };
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0U | code >> 6U);
    tail(0);
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0U | code >> 12U);
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0U | code >> 18U);
    tail(12);
    tail(6);
    tail(0);
  }
}

// Reads what stands between the quotes of a JSON string.
std::string unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (static_cast<unsigned char>(text[i]) < 0x20 || text[i] == '"') {
      fail("a control character or a quote needs an escape");
    }
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i == text.size()) fail("an escape ends early");
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    const std::size_t letter = kLetters.find(text[i]);
    if (letter != std::string_view::npos) {
      out += kMeanings[letter];
      continue;
    }
    if (text[i] != 'u') fail("there is an unknown escape");
    unsigned code = hexOf(text.substr(i + 1));
    i += 4;
    if (code >= 0xD800 && code < 0xDC00 && text.substr(i + 1, 2) == "\\u") {
      const unsigned low = hexOf(text.substr(i + 3));
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10U) + (low - 0xDC00);
        i += 6;
      }
    }
    if (code >= 0xD800 && code < 0xE000) fail("half of a surrogate pair is no character");
    appendUtf8(out, code);
  }
  return out;
}

}  // namespace

std::optional<CharsField> charsFieldAt(std::string_view address) {
  const std::vector<std::string> segments = split(address);
  CharsField field{VRDM_CLASS_SCENE_DATA, 0, 0, 0, 0};
  std::size_t group = 1;
  if (segments[0] != "scene") {
    if (segments.size() < 5 || segments[2] != "groups") return std::nullopt;
    group = 3;
    field.objectClass = 0;
    while (field.objectClass < vrdmObjectTypeCount() &&
           segments[0] != vrdmObjectName(field.objectClass)) {
      ++field.objectClass;
    }
    if (field.objectClass == vrdmObjectTypeCount()) return std::nullopt;
    const std::string& index = segments[1];
    const char* const end = index.data() + index.size();
    const auto [read, error] = std::from_chars(index.data(), end, field.index);
    if (error != std::errc() || read != end || field.index < 0) return std::nullopt;
  }
  if (segments.size() < group + 2) return std::nullopt;
  while (field.group < vrdmFieldCount(field.objectClass) &&
         segments[group] != vrdmFieldName(field.objectClass, field.group)) {
    ++field.group;
  }
  if (field.group == vrdmFieldCount(field.objectClass)) return std::nullopt;
  const vrnt::UniqueType type(vrdmFieldType(field.objectClass, field.group));
  if (!follow(type.get(), segments, group + 1, field)) return std::nullopt;
  return field;
}

std::string charsText(const vrdmScene_t* scene, const CharsField& field) {
  const vrnt::UniqueValue value(
      field.objectClass == VRDM_CLASS_SCENE_DATA
          ? vrdmGetSceneDataValue(scene, field.group)
          : vrdmGetDataValue(scene, field.objectClass, field.index, field.group));
  return charsText(static_cast<const char*>(vrntValueData(value.get())) + field.offset,
                   static_cast<std::size_t>(field.size));
}

std::optional<std::string> charsJson(std::string_view json, const CharsField& field) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = json.find_first_not_of(kSpace);
  if (first == std::string_view::npos || json[first] != '"') return std::nullopt;
  const std::size_t last = json.find_last_not_of(kSpace);
  if (last == first || json[last] != '"') return std::nullopt;
  const std::string text = unescaped(json.substr(first + 1, last - first - 1));
  if (text.size() > field.size) {
    throw Trouble("JSON: the string takes " + counted(text.size(), "byte") +
                  ", but the field has room for " + std::to_string(field.size) +
                  "; shorten the string");
  }
  std::string array = "[";
  for (std::uint64_t i = 0; i < field.size; ++i) {
    const unsigned byte = i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
    array += (i == 0 ? "" : ", ") + std::to_string(byte);
  }
  return array + "]";
}

}  // namespace vrn
