#include "json/scene_reader.hpp"

#include <fmt/format.h>

#include <limits>
#include <optional>
#include <vector>

#include "json/numbers.hpp"

namespace vrtk {
namespace {

// Takes the tokens of a document. One object, or one member of the document besides the objects, is
// put on the tape at a time and read when it is complete, so that memory is taken for the scene
// alone.
class SceneEvents {
 public:
  SceneEvents(vrdmScene_t* scene, const ReadOptions& options, std::uint64_t maxMemory,
              Problems& problems)
      : problems_(problems),
        budget_(maxMemory),
        objects_(scene, tape_, problems, budget_, catalogue_, options),
        classesSeen_(vrdmObjectTypeCount()) {}

  void value(Token token, std::uint64_t offset, std::string_view text, bool isInDocument) {
    if (skipped_ != 0) return;
    if (inUnit_) {
      addToken(tape_, token, offset, text, isInDocument);
      return;
    }
    if (token == Token::Key) {
      key(offset, text);
      return;
    }
    if (!begins(token, offset)) return;
    tape_.clear();
    addToken(tape_, token, offset, text, isInDocument);
    endUnit();
  }

  void start(Token token, std::uint64_t offset) {
    if (skipped_ != 0) {
      ++skipped_;
      return;
    }
    if (inUnit_) {
      tape_.open(token, offset);
      return;
    }
    if (level_ == Level::Outside && token == Token::Object) {
      level_ = Level::Document;
      documentOffset_ = offset;
      return;
    }
    if (level_ == Level::Document && member_ == Member::Objects && token == Token::Object) {
      level_ = Level::Objects;
      return;
    }
    if (level_ == Level::Objects && class_ && token == Token::Array) {
      level_ = Level::Class;
      return;
    }
    if (!begins(token, offset)) {
      ++skipped_;
      return;
    }
    tape_.clear();
    tape_.open(token, offset);
    inUnit_ = true;
  }

  void end(std::uint64_t parts) {
    if (skipped_ != 0) {
      --skipped_;
      return;
    }
    if (inUnit_) {
      tape_.close(parts);
      if (!tape_.isComplete()) return;
      inUnit_ = false;
      endUnit();
      return;
    }
    switch (level_) {
      case Level::Class:
        level_ = Level::Objects;
        return;
      case Level::Objects:
        level_ = Level::Document;
        return;
      default:
        level_ = Level::Outside;
    }
  }

  void finish() {
    if (!seen(Member::Format) && problems_.none()) {
      problems_.add(ProblemCode::MissingKey, documentOffset_,
                    "a scene has the member \"format\": \"vornath-scene\"");
    }
    if (!seen(Member::FormatVersion) && problems_.none()) {
      problems_.add(ProblemCode::MissingKey, documentOffset_,
                    "a scene has the member \"formatVersion\": 1");
    }
    objects_.finish();
  }

 private:
  enum class Level { Outside, Document, Objects, Class };
  enum class Member : std::uint8_t {
    Format,
    FormatVersion,
    SceneVersion,
    Id,
    Scene,
    Objects,
    None
  };

  bool seen(Member member) const { return (seen_ >> static_cast<unsigned>(member) & 1U) != 0; }

  void key(std::uint64_t offset, std::string_view text) {
    if (level_ == Level::Objects) {
      classKey(offset, text);
      return;
    }
    constexpr std::string_view kNames[] = {"format", "formatVersion", "sceneVersion",
                                           "id",     "scene",         "objects"};
    unsigned found = 0;
    while (found < std::size(kNames) && kNames[found] != text) ++found;
    member_ = static_cast<Member>(found);
    if (member_ == Member::None) {
      problems_.add(ProblemCode::UnknownKey, offset,
                    fmt::format("a scene has no member {}{}", quoted(text),
                                suggestion(text, {std::begin(kNames), std::end(kNames)})));
      return;
    }
    if (seen(member_)) {
      problems_.add(ProblemCode::DuplicateKey, offset,
                    fmt::format("the member {} is there twice", quoted(text)));
      member_ = Member::None;
      return;
    }
    seen_ |= 1U << found;
  }

  void classKey(std::uint64_t offset, std::string_view text) {
    class_.reset();
    std::vector<std::string_view> names;
    for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
      names.emplace_back(vrdmObjectName(c));
      if (names.back() == text) class_ = c;
    }
    if (!class_) {
      problems_.add(ProblemCode::UnknownKey, offset,
                    fmt::format("there is no class {}{}", quoted(text), suggestion(text, names)));
      return;
    }
    if (classesSeen_[*class_]) {
      problems_.add(ProblemCode::DuplicateKey, offset,
                    fmt::format("the class {} is there twice", quoted(text)));
      class_.reset();
      return;
    }
    classesSeen_[*class_] = true;
  }

  // Whether a value is to be put on the tape. If not, it is skipped.
  bool begins(Token token, std::uint64_t offset) {
    switch (level_) {
      case Level::Outside:
        problems_.add(ProblemCode::WrongKind, offset,
                      fmt::format("found {}; a scene is an object", foundWords(token)));
        return false;
      case Level::Document:
        if (member_ == Member::Objects) {
          problems_.add(ProblemCode::WrongKind, offset,
                        fmt::format("found {}; expected an object with an array for each class",
                                    foundWords(token)));
        }
        return member_ != Member::None && member_ != Member::Objects;
      case Level::Objects:
        if (class_) {
          problems_.add(ProblemCode::WrongKind, offset,
                        fmt::format("found {}; expected an array of objects", foundWords(token)));
        }
        return false;
      case Level::Class:
        return true;
    }
    return false;
  }

  // The tape has a whole object or member.
  void endUnit() {
    if (level_ == Level::Class) {
      objects_.add(*class_, 0);
      return;
    }
    const JsonNode& node = tape_[0];
    switch (member_) {
      case Member::Format:
        if (node.token != Token::String || node.view() != "vornath-scene") {
          problems_.add(ProblemCode::Version, node.offset,
                        "this is no scene; expected the format \"vornath-scene\"");
          throw EnoughProblems();
        }
        return;
      case Member::FormatVersion:
        if (node.token != Token::Number || node.view() != "1") {
          problems_.add(ProblemCode::Version, node.offset,
                        "the document has another version of the format; expected 1");
          throw EnoughProblems();
        }
        return;
      case Member::SceneVersion: {
        std::uint64_t version = 0;
        if (node.token != Token::Number ||
            readUnsigned(node.view(), version) != NumberFault::None ||
            version != headerLayout().version) {
          problems_.add(ProblemCode::Version, node.offset,
                        fmt::format("the scene is of another version than the library, {}; look "
                                    "at what changed, and then leave the member out",
                                    headerLayout().version));
          throw EnoughProblems();
        }
        return;
      }
      case Member::Id:
        objects_.sceneId(0);
        return;
      case Member::Scene:
        objects_.sceneGroups(0);
        return;
      default:
        return;
    }
  }

  Problems& problems_;
  Tape tape_;
  Budget budget_;
  Catalogue catalogue_;
  ObjectReader objects_;
  Level level_ = Level::Outside;
  Member member_ = Member::None;
  std::optional<std::uint32_t> class_;
  std::vector<bool> classesSeen_;
  std::uint32_t seen_ = 0;
  std::uint64_t documentOffset_ = 0;
  std::uint64_t skipped_ = 0;  // how many objects and arrays are open that are skipped
  bool inUnit_ = false;
};

}  // namespace

vrnt::UniqueScene buildScene(std::string_view document, const ReadOptions& options,
                             std::uint64_t maxMemory, Problems& problems) {
  vrnt::UniqueScene scene(vrdmCreateScene());
  if (!scene) throw std::bad_alloc();
  try {
    SceneEvents events(scene.get(), options, maxMemory, problems);
    if (const auto fault = readJson(document, events)) {
      problems.add(ProblemCode::Syntax, fault->offset, fault->message);
    } else {
      events.finish();
    }
  } catch (const EnoughProblems&) {
  }
  return problems.none() ? std::move(scene) : nullptr;
}

}  // namespace vrtk
