// Reads groups and values from JSON.
#ifndef VORNATH_TOOLKIT_JSON_VALUE_READER_HPP
#define VORNATH_TOOLKIT_JSON_VALUE_READER_HPP

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "json/problems.hpp"
#include "json/tape.hpp"
#include "json/type_tree.hpp"
#include "vornath_data/handles.hpp"

namespace vrtk {

/// What a scene may still take of memory.
class Budget {
 public:
  explicit Budget(std::uint64_t bytes) : left_(bytes) {}

  /// Returns false, and takes nothing, if there is not so much left.
  bool take(std::uint64_t bytes) {
    if (bytes > left_) return false;
    left_ -= bytes;
    return true;
  }

 private:
  std::uint64_t left_;
};

/// A type that a document names, and what values of it need.
struct DocumentType {
  vrnt::UniqueType annotated;  ///< says the defaults
  vrnt::UniqueType stripped;   ///< that of the values
  std::unique_ptr<TypeTree> tree;
  vrnt::UniqueValue defaults;  ///< made when it is first needed
  bool isConcrete = true;

  const char* defaultBytes();
};

/// The words of what a document may have for a part, such as "a number (float)".
std::string expectedWords(const TypeTree& tree, const TypeNode& node);
/// The words of what it has, such as "a string".
const char* foundWords(Token token);

class ValueReader {
 public:
  ValueReader(const Tape& tape, Problems& problems, Budget& budget)
      : tape_(tape), problems_(problems), budget_(budget) {}

  /// Reads a part of a block into its bytes. Fields that the document leaves out stay as they are.
  /// `node` is a node of the tree, and `base` is where its offset counts from. The part must hold
  /// no references.
  void readPart(const TypeTree& tree, std::uint32_t node, std::uint32_t json, char* base);

  /// Reads `{ "type": ..., "data": ... }`. Null if something is wrong with it.
  vrnt::UniqueValue readValue(std::uint32_t json);

 private:
  // What is being read.
  struct Frame {
    enum class Kind : std::uint8_t { Struct, Array, Function, Block } kind;
    const TypeTree* tree = nullptr;
    std::uint32_t node = 0;   // the part that the frame is for
    std::uint32_t json = 0;   // its object or array
    std::uint32_t next = 0;   // the next member or element in the document
    std::uint32_t child = 0;  // of a struct: the field that is expected next
    std::uint64_t index = 0;  // of an array
    char* base = nullptr;     // where the offsets of the parts count from
    // Of a struct whose members do not come in order: those that came.
    std::unique_ptr<std::vector<bool>> seen = nullptr;
  };

  // A block that is being read.
  struct OpenBlock {
    std::shared_ptr<DocumentType> type;
    std::unique_ptr<char[]> bytes;
    char* word = nullptr;  // where its address goes; null for the value itself
    const std::string* name = nullptr;
  };

  struct Named {
    vrnt::UniqueValue value;
    bool isOpen = false;
    std::uint32_t json = 0;  // where it was read
  };

  void run(std::size_t until);
  void part(const TypeTree& tree, std::uint32_t node, std::uint32_t json, char* base);
  void structStep();
  void arrayStep();
  void functionStep();
  void blockStep();
  void blockEnd();
  bool readNumbers(const TypeTree& tree, const TypeNode& node, std::uint32_t json, char* at);
  bool readLane(const TypeTree& tree, const TypeNode& node, const JsonNode& json, char* at);
  void readEnum(const TypeTree& tree, const TypeNode& node, std::uint32_t json, char* at);
  void openStruct(const TypeTree& tree, std::uint32_t node, std::uint32_t json, char* base);
  void openArray(const TypeTree& tree, std::uint32_t node, std::uint32_t json, char* base);
  void reference(const vrntType_t* declared, std::uint32_t json, char* word);
  void shared(const std::string& name, const vrntType_t* declared, std::uint32_t json, char* word);
  bool openBlock(std::shared_ptr<DocumentType> type, std::uint32_t json, char* word,
                 const std::string* name);
  std::shared_ptr<DocumentType> typeOfText(std::uint32_t json);
  std::shared_ptr<DocumentType> typeOf(const vrntType_t* declared, std::uint32_t json,
                                       std::uint32_t data);
  std::shared_ptr<DocumentType> makeType(const std::string& text, std::uint64_t offset);
  std::shared_ptr<DocumentType> makeType(vrnt::UniqueType type);
  void forgetTypes(std::size_t added);
  bool wrongKind(const TypeTree& tree, const TypeNode& node, const JsonNode& json);
  bool checkKeys(std::uint32_t json, const std::vector<std::string_view>& keys);
  void findDefinitions();

  const Tape& tape_;
  Problems& problems_;
  Budget& budget_;
  std::vector<Frame> frames_;
  std::vector<OpenBlock> openBlocks_;
  std::unordered_map<std::string, std::shared_ptr<DocumentType>> types_;
  std::unordered_map<const vrntType_t*, std::shared_ptr<DocumentType>> declaredTypes_;
  std::size_t typeBytes_ = 0;

  // Of the value that is being read.
  std::uint32_t valueJson_ = 0;
  std::vector<vrnt::UniqueValue> blocks_;
  std::map<std::string, Named> named_;
  std::map<std::string, std::uint32_t> definitions_;
  bool definitionsAreKnown_ = false;
  vrnt::UniqueValue result_;
};

}  // namespace vrtk

#endif
