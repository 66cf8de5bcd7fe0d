#include "language/plan_parser.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#include "language/lexer.hpp"
#include "types/base_types.hpp"
#include "types/extents.hpp"

namespace qex::vornath {
namespace {

// Bytes of lanes are at most four times those of the text, and a step has 32 bits for their number.
constexpr std::size_t kMaxPlannedLength = std::numeric_limits<std::uint32_t>::max() / 4;

// Each member function that reads a part of a rule returns what to read next. What a rule goes on
// with when a part of it is complete stands in a frame, so that depth costs no stack.
class PlanParser {
 public:
  PlanParser(BuildPlan& plan, const std::string& text) : plan_(plan), lexer_(text) {
    constexpr std::size_t kTextPerStep = 8;  // bytes, of a text with few annotations
    constexpr std::size_t kMaxReserved = 4096;
    plan_.steps.reserve(std::min(text.size() / kTextPerStep + 8, kMaxReserved));
  }

  bool parse(Scan::Language language) {
    const bool isType = language == Scan::Language::Type;
    open(isType ? Frame::WholeType : Frame::WholeValue);
    next();
    for (State state = isType ? State::Type : State::Value;;) {
      switch (state) {
        case State::Type:
          state = type();
          break;
        case State::Suffixes:
          state = annotations();
          break;
        case State::TypeEnd:
          state = typeEnd();
          break;
        case State::StructField:
          state = structField();
          break;
        case State::PayloadField:
          state = payloadField();
          break;
        case State::Constructor:
          state = constructor();
          break;
        case State::Value:
          state = value();
          break;
        case State::ValueField:
          state = valueField();
          break;
        case State::ValueEnd:
          state = valueEnd();
          break;
        case State::Complete:
          return true;
        case State::NotOfTheLanguage:
          return false;
      }
    }
  }

 private:
  enum class State : std::uint8_t {
    Type,          // before a type
    Suffixes,      // behind a description or an annotation
    TypeEnd,       // behind a type with all its annotations and suffixes
    StructField,   // before a field of a struct type, or its end
    PayloadField,  // before a field of a constructor, or their end
    Constructor,   // before a constructor
    Value,         // before a value
    ValueField,    // before a field of a struct value, or its end
    ValueEnd,      // behind a value
    Complete,
    NotOfTheLanguage
  };

  // What waits for its next part.
  struct Frame {
    enum Kind : std::uint8_t {
      WholeType,
      WholeValue,
      StructType,
      FunctionDomain,
      FunctionCodomain,
      EnumType,
      EnumValue,
      Payload,
      AnnotatedConstructor,
      Annotation,
      StructValue,
      ArrayValue,
      ArrayElementType,
      Reference,
      ForeignTarget
    };

    Kind kind;
    bool hasFields = false;       // of a constructor
    bool hasAnnotations = false;  // likewise
    std::uint32_t begin = 0;      // the step to which the number of parts goes
    std::uint32_t count = 0;      // parts
    TextSpan name{};              // a constructor, a key, or the label of the current field
    std::uint64_t address = 0;
  };

  Frame& frame() { return frames_.back(); }
  Frame& open(Frame::Kind kind) { return frames_.emplace_back(Frame{kind}); }
  void close() { frames_.pop_back(); }

  // Opens a frame for what the step begins.
  Frame& open(Frame::Kind kind, Action begin) {
    Frame& opened = open(kind);
    opened.begin = static_cast<std::uint32_t>(plan_.steps.size());
    add(begin);
    return opened;
  }
  void storeCount() { plan_.steps[frame().begin].count = frame().count; }

  Step& add(Action action) {
    Step& step = plan_.steps.emplace_back();
    step.action = action;
    return step;
  }

  bool at(Token token) const { return lexer_.token() == token; }
  void next() { lexer_.advance(); }
  bool take(Token token) {
    if (!at(token)) return false;
    next();
    return true;
  }
  TextSpan span() const {
    return {lexer_.textOffset(), static_cast<std::uint32_t>(lexer_.text().size())};
  }

  // Types.

  State type() {
    switch (lexer_.token()) {
      case Token::Base:
        return baseType();
      case Token::LeftBrace:
        open(Frame::StructType, Action::BeginFields);
        next();
        return State::StructField;
      case Token::Enum:
        return beginEnum(Frame::EnumType, {});
      case Token::Void:
        next();
        if (!take(Token::Star)) return State::NotOfTheLanguage;
        add(Action::VoidReference);
        return State::Suffixes;
      case Token::LeftParenthesis:
        return beginFunction();
      default:
        return State::NotOfTheLanguage;
    }
  }

  State baseType() {
    const auto base = static_cast<std::uint8_t>(lexer_.base());
    next();
    Step& step = add(Action::BaseType);
    step.detail = base;
    if (!at(Token::Key)) return suffix();
    step.flag = true;
    return State::Suffixes;
  }

  State beginFunction() {
    next();
    if (!take(Token::LeftParenthesis)) return State::NotOfTheLanguage;
    open(Frame::FunctionDomain, Action::BeginDomain);
    return at(Token::RightParenthesis) ? codomain() : State::Type;
  }

  State codomain() {
    next();
    if (!take(Token::Arrow)) return State::NotOfTheLanguage;
    storeCount();
    frame().kind = Frame::FunctionCodomain;
    return State::Type;
  }

  // The annotations behind a description, behind a constructor, or behind one of their annotations.
  State annotations() {
    if (frame().kind == Frame::AnnotatedConstructor) return constructorAnnotations();
    if (at(Token::Key)) {
      add(Action::BeginMetadata);
      return moreAnnotations();
    }
    add(Action::MakeType);
    return suffix();
  }

  State constructorAnnotations() {
    if (!at(Token::Key)) return constructorEnd();
    frame().hasAnnotations = true;
    add(Action::BeginMetadata);
    return moreAnnotations();
  }

  State moreAnnotations() {
    while (at(Token::Key)) {
      const TextSpan key = span();
      next();
      if (!take(Token::Equals)) {
        add(Action::Flag).setText(key);
      } else if (at(Token::Quoted)) {
        Step& step = add(Action::Text);
        step.setText(key);
        step.setContent(span());
        next();
      } else {
        open(Frame::Annotation).name = key;
        return State::Value;
      }
    }
    if (frame().kind == Frame::AnnotatedConstructor) return constructorEnd();
    add(Action::MakeAnnotated);
    return suffix();
  }

  State suffix() {
    if (take(Token::Star)) {
      add(Action::Reference);
      return State::Suffixes;
    }
    if (!at(Token::LeftBracket)) return State::TypeEnd;
    next();
    Step& step = add(Action::Array);
    if (at(Token::Int)) {
      step.flag = true;
      if (!extents(step)) return State::NotOfTheLanguage;
    } else {
      step.detail = 1;
      while (take(Token::Comma)) {
        if (++step.detail > Extents::kMaxRank) return State::NotOfTheLanguage;
      }
    }
    return take(Token::RightBracket) ? State::Suffixes : State::NotOfTheLanguage;
  }

  // Reads one to four numbers: the rank and the extents of the step.
  bool extents(Step& step) {
    do {
      if (!at(Token::Int) || step.detail == Extents::kMaxRank) return false;
      step.words[step.detail++] = static_cast<std::uint32_t>(lexer_.bits());
      next();
    } while (take(Token::Comma));
    return true;
  }

  State typeEnd() {
    switch (frame().kind) {
      case Frame::WholeType:
        return at(Token::End) ? State::Complete : State::NotOfTheLanguage;
      case Frame::StructType:
        if (!field() || !take(Token::Semicolon)) return State::NotOfTheLanguage;
        return State::StructField;
      case Frame::Payload:
        if (!field()) return State::NotOfTheLanguage;
        take(Token::Comma);
        return State::PayloadField;
      case Frame::FunctionDomain:
        add(Action::DomainType);
        ++frame().count;
        if (take(Token::Comma)) return State::Type;
        return at(Token::RightParenthesis) ? codomain() : State::NotOfTheLanguage;
      case Frame::FunctionCodomain:
        if (!take(Token::RightParenthesis)) return State::NotOfTheLanguage;
        add(Action::Function);
        close();
        return State::Suffixes;
      case Frame::ArrayElementType:
        return arrayEnd();
      case Frame::ForeignTarget:
        return foreignEnd();
      default:
        return State::NotOfTheLanguage;  // no other frame waits for a type
    }
  }

  bool field() {
    if (!at(Token::Label)) return false;
    add(Action::Field).setText(span());
    ++frame().count;
    next();
    return true;
  }

  State structField() {
    if (!take(Token::RightBrace)) return State::Type;
    storeCount();
    close();
    add(Action::Struct);
    return State::Suffixes;
  }

  State payloadField() {
    if (!take(Token::RightParenthesis)) return State::Type;
    storeCount();
    frame().kind = Frame::AnnotatedConstructor;
    return constructorAnnotations();
  }

  // At the keyword, for a type or for a value of that name.
  State beginEnum(Frame::Kind kind, TextSpan name) {
    next();
    if (!take(Token::LeftBrace)) return State::NotOfTheLanguage;
    open(kind, Action::BeginEnum).name = name;
    return State::Constructor;
  }

  State constructor() {
    if (!at(Token::Name)) return State::NotOfTheLanguage;
    Frame& opened = open(Frame::AnnotatedConstructor);
    opened.name = span();
    next();
    if (!at(Token::LeftParenthesis)) return constructorAnnotations();
    next();
    opened.kind = Frame::Payload;
    opened.hasFields = true;
    opened.begin = static_cast<std::uint32_t>(plan_.steps.size());
    add(Action::BeginFields);
    return State::PayloadField;
  }

  State constructorEnd() {
    if (!take(Token::Semicolon)) return State::NotOfTheLanguage;
    Step& step = add(Action::Constructor);
    step.setText(frame().name);
    step.flag = frame().hasFields;
    step.detail = frame().hasAnnotations ? 1 : 0;
    close();
    ++frame().count;
    if (!take(Token::RightBrace)) return State::Constructor;
    storeCount();
    const Frame enumeration = frame();
    close();
    if (enumeration.kind == Frame::EnumType) {
      add(Action::Enum);
      return State::Suffixes;
    }
    add(Action::Enumerator).setText(enumeration.name);
    return State::ValueEnd;
  }

  // Values.

  State value() {
    switch (lexer_.token()) {
      case Token::Bool:
        return scalar(Type::TBasetype::Bool);
      case Token::Char:
        return scalar(Type::TBasetype::Char);
      case Token::Int:
        return scalar(Type::TBasetype::Int);
      case Token::Half:
        return scalar(Type::TBasetype::Half);
      case Token::Float:
        return scalar(Type::TBasetype::Float);
      case Token::Base:
        return vector();
      case Token::LeftBrace:
        next();
        open(Frame::StructValue);
        return State::ValueField;
      case Token::LeftBracket:
        next();
        if (take(Token::Colon)) {
          open(Frame::ArrayElementType);
          return State::Type;
        }
        open(Frame::ArrayValue);
        return State::Value;
      case Token::Dollar:
        return foreign();
      case Token::Ampersand:
        next();
        open(Frame::Reference);
        return State::Value;
      case Token::Name:
        return enumerator();
      default:
        return State::NotOfTheLanguage;
    }
  }

  State scalar(Type::TBasetype base) {
    const Token token = lexer_.token();
    appendLane(base);
    addLanes(base);
    if (frame().kind != Frame::ArrayValue) return State::ValueEnd;
    // The elements of a long array, without a turn of the states for each.
    while (take(Token::Comma)) {
      if (!at(token)) {
        ++frame().count;
        return State::Value;
      }
      appendLane(base);
      ++plan_.steps.back().count;
    }
    return State::ValueEnd;
  }

  State vector() {
    const Type::TBasetype base = lexer_.base();
    const BaseTypeInfo& info = baseTypeInfo(base);
    if (info.lanes == 1) return State::NotOfTheLanguage;
    const auto scalar =
        static_cast<Type::TBasetype>(static_cast<std::uint32_t>(base) + 1 - info.lanes);
    next();
    if (!take(Token::LeftParenthesis)) return State::NotOfTheLanguage;
    for (std::uint32_t lane = 0; lane < info.lanes; ++lane) {
      if (lane != 0 && !take(Token::Comma)) return State::NotOfTheLanguage;
      if (!at(laneToken(scalar))) return State::NotOfTheLanguage;
      appendLane(scalar);
    }
    if (!take(Token::RightParenthesis)) return State::NotOfTheLanguage;
    // Three lanes take the room of four.
    plan_.usedLanes += info.size - info.lanes * info.laneSize;
    addLanes(base);
    return State::ValueEnd;
  }

  static Token laneToken(Type::TBasetype scalar) {
    switch (baseTypeInfo(scalar).family) {
      case BaseFamily::Bool:
        return Token::Bool;
      case BaseFamily::Int:
        return Token::Int;
      case BaseFamily::Char:
        return Token::Char;
      case BaseFamily::Half:
        return Token::Half;
      case BaseFamily::Float:
        return Token::Float;
    }
    return Token::Other;
  }

  // Appends the bytes of the literal and passes it.
  void appendLane(Type::TBasetype scalar) {
    constexpr std::size_t kLargestValue = 16;
    if (plan_.lanes.size() - plan_.usedLanes < kLargestValue) {
      plan_.lanes.resize(2 * plan_.lanes.size() + 4 * kLargestValue);
    }
    // The low bytes of the bits, however the machine orders them.
    const std::uint64_t bits = lexer_.bits();
    switch (scalar) {
      case Type::TBasetype::Char:
        store(static_cast<std::uint8_t>(bits));
        break;
      case Type::TBasetype::Half:
        store(static_cast<std::uint16_t>(bits));
        break;
      default:
        store(static_cast<std::uint32_t>(bits));
        break;
    }
    next();
  }

  template <typename Lane>
  void store(Lane lane) {
    std::memcpy(plan_.lanes.data() + plan_.usedLanes, &lane, sizeof(lane));
    plan_.usedLanes += sizeof(lane);
  }

  // Adds a value whose lanes were appended. An element of an array joins the step of the one before
  // it if that is of the same type.
  void addLanes(Type::TBasetype base) {
    const auto detail = static_cast<std::uint8_t>(base);
    if (frame().kind == Frame::ArrayValue && frame().count != 0) {
      Step& last = plan_.steps.back();
      if (last.action == Action::Lanes && last.detail == detail) {
        ++last.count;
        --frame().count;  // the end of the value counts it again
        return;
      }
    }
    Step& step = add(Action::Lanes);
    step.detail = detail;
    step.count = 1;
    step.setNumber(plan_.usedLanes - kBaseTypes[detail].size);
  }

  State foreign() {
    next();
    if (at(Token::Address) || at(Token::Int)) {
      add(Action::Foreign).setNumber(address());
      next();
      return State::ValueEnd;
    }
    if (!take(Token::LeftParenthesis)) return State::NotOfTheLanguage;
    if (!at(Token::Address) && !at(Token::Int)) return State::NotOfTheLanguage;
    open(Frame::ForeignTarget).address = address();
    next();
    return take(Token::Colon) ? State::Type : State::NotOfTheLanguage;
  }

  // A small address is read as a signed integer.
  std::uint64_t address() const {
    if (at(Token::Address)) return lexer_.bits();
    const auto number = static_cast<std::int32_t>(static_cast<std::uint32_t>(lexer_.bits()));
    return static_cast<std::uint64_t>(std::int64_t{number});
  }

  State foreignEnd() {
    if (!take(Token::RightParenthesis)) return State::NotOfTheLanguage;
    Step& step = add(Action::Foreign);
    step.flag = true;
    step.setNumber(frame().address);
    close();
    return State::ValueEnd;
  }

  State enumerator() {
    const TextSpan name = span();
    next();
    if (!take(Token::Colon) || !at(Token::Enum)) return State::NotOfTheLanguage;
    return beginEnum(Frame::EnumValue, name);
  }

  State valueField() {
    if (at(Token::Label)) {
      frame().name = span();
      next();
      return take(Token::Equals) ? State::Value : State::NotOfTheLanguage;
    }
    if (!take(Token::RightBrace)) return State::NotOfTheLanguage;
    add(Action::StructValue).count = frame().count;
    close();
    return State::ValueEnd;
  }

  State valueEnd() {
    switch (frame().kind) {
      case Frame::WholeValue:
        return at(Token::End) ? State::Complete : State::NotOfTheLanguage;
      case Frame::Annotation:
        add(Action::Value).setText(frame().name);
        close();
        return moreAnnotations();
      case Frame::StructValue:
        if (!take(Token::Semicolon)) return State::NotOfTheLanguage;
        add(Action::FieldLabel).setText(frame().name);
        ++frame().count;
        return State::ValueField;
      case Frame::ArrayValue:
        ++frame().count;
        if (take(Token::Comma)) return State::Value;
        if (!take(Token::Colon)) return arrayEnd();
        frame().kind = Frame::ArrayElementType;
        return State::Type;
      case Frame::Reference:
        add(Action::ReferenceValue);
        close();
        return State::ValueEnd;
      default:
        return State::NotOfTheLanguage;  // no other frame waits for a value
    }
  }

  // Behind the values of an array, or behind the type that follows them.
  State arrayEnd() {
    Step& step = add(Action::ArrayValue);
    step.flag = frame().kind == Frame::ArrayElementType;
    step.count = frame().count;
    if (take(Token::Bar) && !extents(step)) return State::NotOfTheLanguage;
    close();
    return take(Token::RightBracket) ? State::ValueEnd : State::NotOfTheLanguage;
  }

  BuildPlan& plan_;
  Lexer lexer_;
  boost::container::small_vector<Frame, 16> frames_;
};

}  // namespace

bool planBuild(BuildPlan& plan, const std::string& text, Scan::Language language) {
  if (text.size() > kMaxPlannedLength) return false;
  if (text.find('\0') != std::string::npos) return false;
  return PlanParser(plan, text).parse(language);
}

}  // namespace qex::vornath
