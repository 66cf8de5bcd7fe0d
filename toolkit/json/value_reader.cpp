#include "json/value_reader.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <utility>

#include "json/numbers.hpp"
#include "vornath_data/errors.h"

namespace vrtk {
namespace {

template <typename T>
void store(char* at, T value) {
  std::memcpy(at, &value, sizeof(value));
}

// Throws what the library reports, unless it is about the document.
[[noreturn]] void raise(vrntValuesError_t* error) { vrnt::detail::raiseError(error); }

const char* familyName(Part part) {
  switch (part) {
    case Part::Bool:
      return "bool";
    case Part::Int:
      return "int";
    case Part::Char:
      return "char";
    case Part::Half:
      return "half";
    default:
      return "float";
  }
}

bool isNumbers(Part part) {
  return part == Part::Bool || part == Part::Int || part == Part::Char || part == Part::Half ||
         part == Part::Float;
}

std::string oneLine(std::string text) {
  constexpr std::size_t kLongest = 400;
  std::replace(text.begin(), text.end(), '\n', ' ');
  if (text.size() > kLongest) {
    // The end says more than the start, which repeats what was given.
    text = text.substr(0, kLongest / 2) + " ... " + text.substr(text.size() - kLongest / 2);
  }
  return text;
}

}  // namespace

const char* DocumentType::defaultBytes() {
  if (!defaults) {
    vrntValuesError_t* error = nullptr;
    defaults.reset(vrntValueCreateDefault(annotated.get(), &error));
    if (!defaults) raise(error);
  }
  return static_cast<const char*>(vrntValueData(defaults.get()));
}

const char* foundWords(Token token) {
  switch (token) {
    case Token::Null:
      return "null";
    case Token::False:
      return "false";
    case Token::True:
      return "true";
    case Token::Number:
      return "a number";
    case Token::Object:
      return "an object";
    case Token::Array:
      return "an array";
    default:
      return "a string";
  }
}

std::string expectedWords(const TypeTree& tree, const TypeNode& node) {
  switch (node.part) {
    case Part::Struct:
      return "an object";
    case Part::Array:
      return fmt::format("an array of {} elements", node.count);
    case Part::Enum: {
      std::string text = "one of";
      const auto& names = tree.labels(node).names;
      constexpr std::size_t kFew = 8;
      for (std::size_t i = 0; i < std::min(kFew, names.size()); ++i) {
        text += (i == 0 ? " " : ", ") + quoted(names[i]);
      }
      return names.size() > kFew ? text + ", ..." : text;
    }
    case Part::Reference:
      return "null or an object with \"to\", \"shared\" or \"address\"";
    case Part::Function:
      return "an array of two references";
    default: {
      std::string one = node.part == Part::Bool  ? "true or false"
                        : node.part == Part::Int ? "a whole number (int)"
                        : node.part == Part::Char
                            ? "a whole number from 0 to 255 (char)"
                            : fmt::format("a number ({})", familyName(node.part));
      if (node.lanes == 1) return one;
      return fmt::format("an array of {} elements ({}{})", node.lanes, familyName(node.part),
                         node.lanes);
    }
  }
}

bool ValueReader::wrongKind(const TypeTree& tree, const TypeNode& node, const JsonNode& json) {
  std::string found = foundWords(json.token);
  if (json.token == Token::String) found = "the string " + quoted(json.view());
  if (json.token == Token::Number) found = "the number " + std::string(json.view().substr(0, 40));
  problems_.add(ProblemCode::WrongKind, json.offset,
                fmt::format("found {}; expected {}", found, expectedWords(tree, node)));
  return false;
}

bool ValueReader::readLane(const TypeTree& tree, const TypeNode& node, const JsonNode& json,
                           char* at) {
  NumberFault fault = NumberFault::WrongKind;
  switch (node.part) {
    case Part::Bool: {
      std::uint32_t word = 0;
      if (json.token == Token::True) {
        word = std::numeric_limits<std::uint32_t>::max();
      } else if (json.token != Token::False &&
                 (json.token != Token::String || !readBoolText(json.view(), word))) {
        return wrongKind(tree, node, json);
      }
      store(at, word);
      return true;
    }
    case Part::Int:
    case Part::Char: {
      const bool isInt = node.part == Part::Int;
      std::int64_t number = 0;
      if (json.token == Token::Number) {
        fault = isInt ? readInt(json.view(), std::numeric_limits<std::int32_t>::min(),
                                std::numeric_limits<std::int32_t>::max(), number)
                      : readInt(json.view(), 0, 255, number);
      }
      if (fault == NumberFault::None) {
        if (isInt) {
          store(at, static_cast<std::int32_t>(number));
        } else {
          store(at, static_cast<std::uint8_t>(number));
        }
      }
      break;
    }
    case Part::Half: {
      std::uint16_t bits = 0;
      if (json.token == Token::Number) {
        fault = readHalf(json.view(), bits);
      } else if (json.token == Token::String && readHalfText(json.view(), bits)) {
        fault = NumberFault::None;
      }
      if (fault == NumberFault::None) store(at, bits);
      break;
    }
    default: {
      std::uint32_t bits = 0;
      if (json.token == Token::Number) {
        fault = readFloat(json.view(), bits);
      } else if (json.token == Token::String && readFloatText(json.view(), bits)) {
        fault = NumberFault::None;
      }
      if (fault == NumberFault::None) store(at, bits);
    }
  }
  if (fault == NumberFault::None) return true;
  if (fault == NumberFault::WrongKind) return wrongKind(tree, node, json);
  problems_.add(ProblemCode::OutOfRange, json.offset,
                fmt::format("the number {} is out of the range of {}",
                            std::string(json.view().substr(0, 40)), familyName(node.part)));
  return false;
}

bool ValueReader::readNumbers(const TypeTree& tree, const TypeNode& node, std::uint32_t json,
                              char* at) {
  if (node.lanes == 1) return readLane(tree, node, tape_[json], at);
  const JsonNode& array = tape_[json];
  if (array.token != Token::Array) return wrongKind(tree, node, array);
  if (array.length != node.lanes) {
    problems_.add(ProblemCode::OutOfRange, array.offset,
                  fmt::format("found {} elements; expected {} ({}{})", array.length, node.lanes,
                              familyName(node.part), node.lanes));
    return false;
  }
  std::uint32_t element = json + 1;
  for (std::uint32_t i = 0; i < node.lanes; ++i) {
    TypeNode lane = node;
    lane.lanes = 1;
    readLane(tree, lane, tape_[element], at + std::size_t{i} * node.laneSize);
    element = tape_[element].next;
  }
  return true;
}

void ValueReader::readEnum(const TypeTree& tree, const TypeNode& node, std::uint32_t json,
                           char* at) {
  const EnumLabels& labels = tree.labels(node);
  const JsonNode* label = &tape_[json];
  if (label->token == Token::Number) {
    std::int64_t code = 0;
    switch (readInt(label->view(), std::numeric_limits<std::int32_t>::min(),
                    std::numeric_limits<std::int32_t>::max(), code)) {
      case NumberFault::None:
        store(at, static_cast<std::int32_t>(code));
        return;
      case NumberFault::OutOfRange:
        problems_.add(ProblemCode::OutOfRange, label->offset,
                      fmt::format("the number {} is out of the range of an enum's codes",
                                  std::string(label->view().substr(0, 40))));
        return;
      case NumberFault::WrongKind:
        wrongKind(tree, node, *label);
        return;
    }
  }
  // A constructor with fields, whose values a scene does not have.
  if (label->token == Token::Object) {
    const bool one = label->length == 1;
    if (!one || tape_[json + 2].token != Token::Array || tape_[json + 2].length != 0) {
      wrongKind(tree, node, *label);
      return;
    }
    label = &tape_[json + 1];
  } else if (label->token != Token::String) {
    wrongKind(tree, node, *label);
    return;
  }
  const auto code = labels.code(label->view());
  if (!code) {
    const std::vector<std::string_view> names(labels.names.begin(), labels.names.end());
    problems_.add(ProblemCode::UnknownLabel, label->offset,
                  fmt::format("Invalid enum constructor: {}{}", quoted(label->view()),
                              suggestion(label->view(), names)));
    return;
  }
  store(at, *code);
}

void ValueReader::openStruct(const TypeTree& tree, std::uint32_t node, std::uint32_t json,
                             char* base) {
  const TypeNode& part = tree.node(node);
  if (tape_[json].token != Token::Object) {
    wrongKind(tree, part, tape_[json]);
    return;
  }
  Frame frame{Frame::Kind::Struct};
  frame.tree = &tree;
  frame.node = node;
  frame.json = json;
  frame.next = json + 1;
  frame.child = node + 1;
  frame.base = base + part.offset;
  // What the document leaves out has the type's default. A group has those of a new object already.
  if (tape_[json].length < part.children && !openBlocks_.empty()) {
    const OpenBlock& block = openBlocks_.back();
    std::memcpy(frame.base, block.type->defaultBytes() + (frame.base - block.bytes.get()),
                part.size);
  }
  frames_.push_back(std::move(frame));
}

void ValueReader::openArray(const TypeTree& tree, std::uint32_t node, std::uint32_t json,
                            char* base) {
  const TypeNode& part = tree.node(node);
  const JsonNode& array = tape_[json];
  if (array.token != Token::Array) {
    wrongKind(tree, part, array);
    return;
  }
  if (array.length != part.count) {
    problems_.add(ProblemCode::OutOfRange, array.offset,
                  fmt::format("found {} elements; expected {}", array.length, part.count));
    return;
  }
  if (part.count == 0) return;
  char* const at = base + part.offset;
  const TypeNode& element = tree.node(node + 1);
  if (isNumbers(element.part)) {
    std::uint32_t next = json + 1;
    for (std::uint64_t i = 0; i < part.count; ++i) {
      readNumbers(tree, element, next, at + i * part.stride);
      next = tape_[next].next;
    }
    return;
  }
  Frame frame{Frame::Kind::Array};
  frame.tree = &tree;
  frame.node = node;
  frame.json = json;
  frame.next = json + 1;
  frame.base = at;
  frames_.push_back(std::move(frame));
}

// Reads a part, or opens it for run() to go on with.
void ValueReader::part(const TypeTree& tree, std::uint32_t node, std::uint32_t json, char* base) {
  const TypeNode& part = tree.node(node);
  switch (part.part) {
    case Part::Struct:
      openStruct(tree, node, json, base);
      return;
    case Part::Array:
      openArray(tree, node, json, base);
      return;
    case Part::Enum:
      readEnum(tree, part, json, base + part.offset);
      return;
    case Part::Reference:
      reference(part.target, json, base + part.offset);
      return;
    case Part::Function: {
      const JsonNode& words = tape_[json];
      if (words.token != Token::Array || words.length != 2) {
        wrongKind(tree, part, words);
        return;
      }
      Frame frame{Frame::Kind::Function};
      frame.json = json;
      frame.next = json + 1;
      frame.base = base + part.offset;
      frames_.push_back(std::move(frame));
      return;
    }
    default:
      readNumbers(tree, part, json, base + part.offset);
  }
}

void ValueReader::structStep() {
  Frame& frame = frames_.back();
  const JsonNode& object = tape_[frame.json];
  if (frame.next == object.next) {
    frames_.pop_back();
    return;
  }
  const TypeTree& tree = *frame.tree;
  const TypeNode& part = tree.node(frame.node);
  const JsonNode& key = tape_[frame.next];
  const std::uint32_t json = frame.next + 1;
  const std::uint32_t at = frame.next;
  frame.next = tape_[json].next;
  std::uint32_t child = frame.child;
  if (child >= part.end || tree.label(tree.node(child)) != key.view()) {
    child = tree.field(frame.node, key.view());
    if (child == 0) {
      std::vector<std::string_view> names;
      for (std::uint32_t i = frame.node + 1; i < part.end; i = tree.node(i).end) {
        names.push_back(tree.label(tree.node(i)));
      }
      problems_.add(ProblemCode::UnknownKey, key.offset,
                    fmt::format("Field not found in struct: {}{}", quoted(key.view()),
                                suggestion(key.view(), names)));
      return;
    }
    if (child < frame.child && !frame.seen) {
      // From here on, what came is kept.
      frame.seen = std::make_unique<std::vector<bool>>(part.end - frame.node);
      for (std::uint32_t i = frame.json + 1; i < at; i = tape_[i + 1].next) {
        const std::uint32_t earlier = tree.field(frame.node, tape_[i].view());
        if (earlier != 0) (*frame.seen)[earlier - frame.node] = true;
      }
    }
  }
  if (frame.seen) {
    if ((*frame.seen)[child - frame.node]) {
      problems_.add(ProblemCode::DuplicateKey, key.offset,
                    fmt::format("the member {} is there twice", quoted(key.view())));
      return;
    }
    (*frame.seen)[child - frame.node] = true;
  }
  frame.child = std::max(frame.child, tree.node(child).end);
  char* const base = frame.base;
  this->part(tree, child, json, base);
}

void ValueReader::arrayStep() {
  Frame& frame = frames_.back();
  const JsonNode& array = tape_[frame.json];
  if (frame.next == array.next) {
    frames_.pop_back();
    return;
  }
  const TypeNode& part = frame.tree->node(frame.node);
  const std::uint32_t json = frame.next;
  frame.next = tape_[json].next;
  char* const base = frame.base + frame.index++ * part.stride;
  this->part(*frame.tree, frame.node + 1, json, base);
}

void ValueReader::functionStep() {
  Frame& frame = frames_.back();
  if (frame.next == tape_[frame.json].next) {
    frames_.pop_back();
    return;
  }
  const std::uint32_t json = frame.next;
  frame.next = tape_[json].next;
  reference(nullptr, json, frame.base + 8 * frame.index++);
}

void ValueReader::run(std::size_t until) {
  while (frames_.size() > until) {
    switch (frames_.back().kind) {
      case Frame::Kind::Struct:
        structStep();
        break;
      case Frame::Kind::Array:
        arrayStep();
        break;
      case Frame::Kind::Function:
        functionStep();
        break;
      case Frame::Kind::Block:
        blockStep();
        break;
    }
  }
}

void ValueReader::readPart(const TypeTree& tree, std::uint32_t node, std::uint32_t json,
                           char* base) {
  frames_.clear();
  openBlocks_.clear();
  part(tree, node, json, base);
  run(0);
}

bool ValueReader::checkKeys(std::uint32_t json, const std::vector<std::string_view>& keys) {
  bool right = true;
  std::uint32_t seen = 0;
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const auto found = std::find(keys.begin(), keys.end(), tape_[i].view());
    if (found == keys.end()) {
      problems_.add(ProblemCode::UnknownKey, tape_[i].offset,
                    fmt::format("there is no member {}{}", quoted(tape_[i].view()),
                                suggestion(tape_[i].view(), keys)));
      right = false;
      continue;
    }
    const std::uint32_t bit = 1U << (found - keys.begin());
    if ((seen & bit) != 0) {
      problems_.add(ProblemCode::DuplicateKey, tape_[i].offset,
                    fmt::format("the member {} is there twice", quoted(tape_[i].view())));
      right = false;
    }
    seen |= bit;
  }
  return right;
}

std::shared_ptr<DocumentType> ValueReader::makeType(vrnt::UniqueType type) {
  auto made = std::make_shared<DocumentType>();
  made->stripped.reset(vrntTypeStripMetadata(type.get()));
  made->annotated = std::move(type);
  made->tree = std::make_unique<TypeTree>(made->stripped.get());
  if (vrntTypeDescriptor(made->stripped.get()) == VRNT_DESCRIPTOR_ARRAY) {
    std::int32_t shape[4] = {};
    vrntTypeArrayShape(made->stripped.get(), shape);
    made->isConcrete = shape[0] >= 0;
  }
  return made;
}

// Many types are forgotten again; the blocks that are open keep theirs.
void ValueReader::forgetTypes(std::size_t added) {
  constexpr std::size_t kMostBytes = std::size_t{1} << 23;
  typeBytes_ += added;
  if (typeBytes_ <= kMostBytes) return;
  types_.clear();
  declaredTypes_.clear();
  typeBytes_ = added;
}

std::shared_ptr<DocumentType> ValueReader::makeType(const std::string& text, std::uint64_t offset) {
  const auto known = types_.find(text);
  if (known != types_.end()) return known->second;
  vrntValuesError_t* error = nullptr;
  vrnt::UniqueType type(vrntTypeParse(text.c_str(), &error));
  if (!type) {
    const vrnt::UniqueError owner(error);
    if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) throw std::bad_alloc();
    problems_.add(ProblemCode::Type, offset, oneLine(vrntValuesErrorMessage(error)));
    return nullptr;
  }
  auto made = makeType(std::move(type));
  forgetTypes(text.size() + made->tree->nodes().size() * sizeof(TypeNode));
  types_.emplace(text, made);
  return made;
}

std::shared_ptr<DocumentType> ValueReader::typeOfText(std::uint32_t json) {
  const JsonNode& text = tape_[json];
  if (text.token != Token::String) {
    problems_.add(ProblemCode::WrongKind, text.offset,
                  fmt::format("found {}; expected the text of a type", foundWords(text.token)));
    return nullptr;
  }
  if (text.view().find('\0') != std::string_view::npos) {
    problems_.add(ProblemCode::Type, text.offset, "the text of a type contains a NUL character");
    return nullptr;
  }
  return makeType(std::string(text.view()), text.offset);
}

// The type of a block that is referred to by a word of the declared type, without a text.
std::shared_ptr<DocumentType> ValueReader::typeOf(const vrntType_t* declared, std::uint32_t json,
                                                  std::uint32_t data) {
  if (declared == nullptr) {
    problems_.add(ProblemCode::MissingKey, tape_[json].offset,
                  "a reference to void* needs a \"type\" beside \"to\"");
    return nullptr;
  }
  auto& type = declaredTypes_[declared];
  if (!type) {
    auto made = makeType(vrnt::UniqueType(vrntTypeCopy(declared)));
    forgetTypes(made->tree->nodes().size() * sizeof(TypeNode));
    declaredTypes_[declared] = made;
    return typeOf(declared, json, data);
  }
  if (type->isConcrete) return type;
  if (vrntTypeArrayDimension(declared) != 1 || tape_[data].token != Token::Array) {
    problems_.add(ProblemCode::MissingKey, tape_[json].offset,
                  fmt::format("a reference to {} needs a \"type\" beside \"to\"",
                              oneLine(vrntTypeString(declared))));
    return nullptr;
  }
  // An array takes its extent from the document.
  const vrnt::UniqueType element(vrntTypeElementType(declared));
  const char* const elementText = vrntTypeString(element.get());
  if (elementText == nullptr) throw std::bad_alloc();
  return makeType(fmt::format("{}[{}]", elementText, tape_[data].length), tape_[json].offset);
}

bool ValueReader::openBlock(std::shared_ptr<DocumentType> type, std::uint32_t json, char* word,
                            const std::string* name) {
  if (!type->isConcrete) {
    problems_.add(ProblemCode::Type, tape_[json].offset,
                  "a value needs a type with all its extents, such as float[3]");
    return false;
  }
  const std::uint64_t size = type->tree->size();
  constexpr std::uint64_t kBlock = 2 * sizeof(vrntValue_t);
  // An array of the document has all its elements, so only what is left out can be large.
  if (!budget_.take(kBlock) || !budget_.take(2 * size)) {
    problems_.add(ProblemCode::TooLarge, tape_[json].offset,
                  fmt::format("a value of {} bytes is more than the scene may take; raise the "
                              "limit if that is intended",
                              size));
    return false;
  }
  OpenBlock block;
  block.bytes.reset(new char[std::max<std::uint64_t>(size, 1)]());
  block.type = std::move(type);
  block.word = word;
  block.name = name;
  if (name != nullptr) named_[*name].isOpen = true;
  openBlocks_.push_back(std::move(block));
  Frame frame{Frame::Kind::Block};
  frame.json = json;
  frames_.push_back(std::move(frame));
  return true;
}

void ValueReader::blockStep() {
  Frame& frame = frames_.back();
  if (frame.index++ == 0) {
    const OpenBlock& block = openBlocks_.back();
    part(*block.type->tree, 0, frame.json, block.bytes.get());
  } else {
    blockEnd();
  }
}

// All parts of a block have been read.
void ValueReader::blockEnd() {
  const OpenBlock block = std::move(openBlocks_.back());
  openBlocks_.pop_back();
  frames_.pop_back();
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(block.type->stripped.get(), &error);
  if (value == nullptr) raise(error);
  vrnt::UniqueValue owner(value);
  const std::uint64_t size = block.type->tree->size();
  if (size != 0) {
    static_cast<void>(owner.release());
    vrntValueWrite(&value, 0, block.bytes.get(), size, &error);
    owner.reset(value);
    if (error != nullptr) raise(error);
  }
  if (block.word != nullptr) {
    const void* const data = vrntValueData(value);
    std::memcpy(block.word, &data, sizeof(data));
  }
  if (block.name != nullptr) {
    Named& named = named_[*block.name];
    named.isOpen = false;
    named.value.reset(vrntValueCopy(value));
  }
  if (block.word != nullptr) {
    blocks_.push_back(std::move(owner));
  } else {
    result_ = std::move(owner);
  }
}

void ValueReader::reference(const vrntType_t* declared, std::uint32_t json, char* word) {
  const std::uint64_t null = 0;
  std::memcpy(word, &null, sizeof(null));
  const JsonNode& node = tape_[json];
  if (node.token == Token::Null) return;
  if (node.token != Token::Object) {
    problems_.add(ProblemCode::WrongKind, node.offset,
                  fmt::format("found {}; expected null or an object with \"to\", \"shared\" or "
                              "\"address\"",
                              foundWords(node.token)));
    return;
  }
  if (!checkKeys(json, {"type", "shared", "to", "address"})) return;
  const auto to = tape_.member(json, "to");
  const auto name = tape_.member(json, "shared");
  if (const auto address = tape_.member(json, "address")) {
    const JsonNode& text = tape_[*address];
    std::uint64_t number = 0;
    const std::string_view digits = text.view();
    bool right = text.token == Token::String && node.length == 1 && digits.size() > 2 &&
                 digits.substr(0, 2) == "0x";
    if (right) {
      const auto read =
          std::from_chars(digits.data() + 2, digits.data() + digits.size(), number, 16);
      right =
          read.ec == std::errc() && read.ptr == digits.data() + digits.size() && number >> 63U == 0;
    }
    if (!right) {
      problems_.add(ProblemCode::WrongKind, text.offset,
                    "expected a foreign address of at most 63 bits alone, such as \"0x7f00\"");
      return;
    }
    const std::uint64_t foreign = number << 1U | 1U;
    std::memcpy(word, &foreign, sizeof(foreign));
    return;
  }
  const std::string* kept = nullptr;
  if (name) {
    if (tape_[*name].token != Token::String) {
      problems_.add(
          ProblemCode::WrongKind, tape_[*name].offset,
          fmt::format("found {}; expected a name in quotes", foundWords(tape_[*name].token)));
      return;
    }
    const std::string text(tape_[*name].view());
    const auto known = named_.find(text);
    if (!to) {
      if (const auto type = tape_.member(json, "type")) {
        problems_.add(ProblemCode::Shared, tape_[*type].offset,
                      "a \"type\" stands only where the shared block is, beside \"to\"");
        return;
      }
      shared(text, declared, json, word);
      return;
    }
    if (known != named_.end() && known->second.json != json) {
      problems_.add(ProblemCode::Shared, tape_[*name].offset,
                    fmt::format("there are two shared blocks {}; the value has one of each name",
                                quoted(text)));
      return;
    }
    if (known != named_.end()) {
      // It was read where it is referred to first.
      if (known->second.isOpen) {
        problems_.add(ProblemCode::Shared, tape_[*name].offset,
                      fmt::format("the shared block {} contains itself", quoted(text)));
      } else if (known->second.value) {
        if (!tape_.member(json, "type") && vrntValueType(known->second.value.get()) != declared) {
          problems_.add(ProblemCode::Shared, tape_[*name].offset,
                        fmt::format("the shared block {} needs a \"type\" beside \"to\", since it "
                                    "is referred to further up",
                                    quoted(text)));
        }
        const void* const data = vrntValueData(known->second.value.get());
        std::memcpy(word, &data, sizeof(data));
      }
      return;
    }
    const auto added = named_.emplace(text, Named{}).first;
    added->second.json = json;
    kept = &added->first;
  }
  if (!to) {
    problems_.add(ProblemCode::MissingKey, node.offset,
                  "expected a member \"to\", \"shared\" or \"address\"");
    return;
  }
  const auto text = tape_.member(json, "type");
  auto type = text ? typeOfText(*text) : typeOf(declared, json, *to);
  if (!type) return;
  openBlock(std::move(type), *to, word, kept);
}

// Finds the places of all shared blocks of the value.
void ValueReader::findDefinitions() {
  if (definitionsAreKnown_) return;
  definitionsAreKnown_ = true;
  for (std::uint32_t i = valueJson_; i < tape_[valueJson_].next; ++i) {
    if (tape_[i].token != Token::Object) continue;
    const auto name = tape_.member(i, "shared");
    if (name && tape_[*name].token == Token::String && tape_.member(i, "to")) {
      definitions_.emplace(tape_[*name].view(), i);
    }
  }
}

void ValueReader::shared(const std::string& name, const vrntType_t* declared, std::uint32_t json,
                         char* word) {
  const auto known = named_.find(name);
  if (known != named_.end()) {
    if (known->second.isOpen) {
      problems_.add(ProblemCode::Shared, tape_[json].offset,
                    fmt::format("the shared block {} contains itself", quoted(name)));
    } else if (known->second.value) {
      const void* const data = vrntValueData(known->second.value.get());
      std::memcpy(word, &data, sizeof(data));
    }
    return;  // otherwise something is wrong with it, which was told
  }
  findDefinitions();
  const auto definition = definitions_.find(name);
  if (definition == definitions_.end()) {
    std::vector<std::string_view> names;
    for (const auto& each : definitions_) names.push_back(each.first);
    problems_.add(
        ProblemCode::Shared, tape_[json].offset,
        fmt::format("the value has no shared block {}{}", quoted(name), suggestion(name, names)));
    return;
  }
  // It stands further down: a tool has sorted the keys. It is read here.
  reference(declared, definition->second, word);
}

vrnt::UniqueValue ValueReader::readValue(std::uint32_t json) {
  frames_.clear();
  openBlocks_.clear();
  blocks_.clear();
  named_.clear();
  definitions_.clear();
  definitionsAreKnown_ = false;
  result_.reset();
  valueJson_ = json;
  if (tape_[json].token != Token::Object) {
    problems_.add(ProblemCode::WrongKind, tape_[json].offset,
                  fmt::format("found {}; expected null or an object with \"type\" and \"data\"",
                              foundWords(tape_[json].token)));
    return nullptr;
  }
  if (!checkKeys(json, {"type", "data"})) return nullptr;
  const auto text = tape_.member(json, "type");
  if (!text) {
    problems_.add(ProblemCode::MissingKey, tape_[json].offset,
                  "a value needs a \"type\" with its text");
    return nullptr;
  }
  auto type = typeOfText(*text);
  if (!type) return nullptr;
  const auto data = tape_.member(json, "data");
  if (!data) {
    // All of it has the type's defaults, if it has any parts to have them.
    if (!type->isConcrete) {
      problems_.add(ProblemCode::Type, tape_[*text].offset,
                    "a value needs a type with all its extents, such as float[3]");
      return nullptr;
    }
    if (!budget_.take(2 * type->tree->size())) {
      problems_.add(ProblemCode::TooLarge, tape_[*text].offset,
                    "the value is more than the scene may take; raise the limit if that is "
                    "intended");
      return nullptr;
    }
    type->defaultBytes();
    return vrnt::UniqueValue(vrntValueCopy(type->defaults.get()));
  }
  const bool opened = openBlock(std::move(type), *data, nullptr, nullptr);
  if (opened) run(0);
  blocks_.clear();
  named_.clear();
  return std::move(result_);
}

}  // namespace vrtk
