// A writer of JSON documents that people read: two blanks a level, and what is small on one line.
#ifndef VORNATH_TOOLKIT_CATALOGUE_JSON_WRITER_HPP
#define VORNATH_TOOLKIT_CATALOGUE_JSON_WRITER_HPP

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "json/text.hpp"

namespace vrtk {

class JsonWriter {
 public:
  enum class Lines : std::uint8_t { One, Many };

  explicit JsonWriter(std::string& out) : out_(&out) {}

  void beginObject(Lines lines = Lines::Many) { begin('{', lines); }
  void endObject() { end('}'); }
  void beginArray(Lines lines = Lines::Many) { begin('[', lines); }
  void endArray() { end(']'); }

  void key(std::string_view name) {
    separate();
    appendJsonString(*out_, name);
    *out_ += ": ";
    afterKey_ = true;
  }

  /// Writes a text that is JSON.
  void json(std::string_view text) {
    separate();
    *out_ += text;
  }
  void string(std::string_view text) {
    separate();
    appendJsonString(*out_, text);
  }
  void number(std::uint64_t number) { json(std::to_string(number)); }
  void boolean(bool value) { json(value ? "true" : "false"); }

  void member(std::string_view name, std::string_view text) {
    key(name);
    string(text);
  }
  void member(std::string_view name, const char* text) { member(name, std::string_view(text)); }
  void member(std::string_view name, bool value) {
    key(name);
    boolean(value);
  }
  void member(std::string_view name, std::uint64_t value) {
    key(name);
    number(value);
  }
  void jsonMember(std::string_view name, std::string_view text) {
    key(name);
    json(text);
  }

 private:
  struct Level {
    Lines lines;
    bool isEmpty;
  };

  void begin(char bracket, Lines lines) {
    separate();
    *out_ += bracket;
    // What is inside of something on one line is on that line.
    const bool oneLine = !levels_.empty() && levels_.back().lines == Lines::One;
    levels_.push_back({oneLine ? Lines::One : lines, true});
  }

  void end(char bracket) {
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.isEmpty) {
      if (level.lines == Lines::Many) {
        newLine();
      } else if (bracket == '}') {
        *out_ += ' ';
      }
    }
    *out_ += bracket;
  }

  // Writes what stands between the text before and what comes next.
  void separate() {
    if (afterKey_) {
      afterKey_ = false;
      return;
    }
    if (levels_.empty()) return;
    Level& level = levels_.back();
    if (!level.isEmpty) *out_ += ',';
    if (level.lines == Lines::Many) {
      newLine();
    } else if (!level.isEmpty || out_->back() == '{') {
      *out_ += ' ';
    }
    level.isEmpty = false;
  }

  void newLine() {
    *out_ += '\n';
    out_->append(2 * levels_.size(), ' ');
  }

  std::string* out_;
  std::vector<Level> levels_;
  bool afterKey_ = false;
};

}  // namespace vrtk

#endif
