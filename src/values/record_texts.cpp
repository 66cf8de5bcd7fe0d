#include "values/record_texts.hpp"

#include <cstring>
#include <utility>

#include "types/extents.hpp"
#include "types/type_text.hpp"
#include "types/walk.hpp"

namespace qex::vornath {
namespace {

// Visits the type and the types nested in it that have a long text, with this text as a part of the
// outermost one's. `add` returns whether the text was new to it; if not, the types nested in that
// one are passed over.
template <typename Add>
class NestedTexts {
 public:
  struct Node {
    const InternedType* type;
    std::size_t start;  // of a struct's: of its next field's text, less the width of its bracket
    const Type::TStruct* structure = nullptr;
  };

  // `text` is the type's. The type is without metadata.
  NestedTexts(std::string_view text, Add add) : text_(text), add_(std::move(add)) {}

  void visit(const InternedType& type) { Walk<Node, false>().run(*this, {&type, 0}); }

  Visit enter(Node& node) {
    const InternedType& type = *node.type;
    if (!type.hasLongText() || !add_(type, text_.substr(node.start, lengthOf(type)))) {
      return Visit::leaf();
    }
    node.structure = type.getIf<Type::TStruct>();
    if (node.structure != nullptr) return Visit::parts(node.structure->fields.size());
    return innerOf(type) != nullptr ? Visit::parts(1) : Visit::leaf();
  }

  // A struct's text is "{ int a; int b; }".
  Node part(Node& node, std::size_t i) {
    if (node.structure == nullptr) return {innerOf(*node.type), node.start};
    const Type::Field& field = node.structure->fields[i];
    const std::size_t start = node.start + std::strlen("{ ");
    node.start += lengthOf(*field.type) + std::strlen(" ") + field.label.size() + std::strlen("; ");
    return {field.type.get(), start};
  }

 private:
  static std::size_t lengthOf(const InternedType& type) {
    return type.hasLongText() ? type.textFingerprint().length : type.text().size();
  }

  // The type with whose text that of an array or a reference starts, or null.
  static const InternedType* innerOf(const InternedType& type) {
    if (const auto* const reference = type.getIf<Type::TRef>()) return reference->target.get();
    const auto array = arrayDesc(type.desc());
    return array ? array->element->get() : nullptr;
  }

  std::string_view text_;
  Add add_;
};

}  // namespace

std::string_view TextsByType::textOf(const InternedType& type) {
  if (const std::string* const known = type.knownText()) return *known;
  if (const auto found = byType_.find(&type); found != byType_.end()) return found->second;
  std::string& text = texts_.emplace_front();
  appendText(text, type);
  NestedTexts(text, [this](const InternedType& part, std::string_view its) {
    return byType_.try_emplace(&part, its).second;
  }).visit(type);
  return text;
}

TypesByText::Sample::Sample(std::string_view text) : length(text.size()) {
  const std::size_t step = (length - sizeof(words[0])) / (words.size() - 1);
  for (std::size_t i = 0; i < words.size(); ++i) {
    std::memcpy(&words[i], text.data() + i * step, sizeof(words[i]));
  }
}

std::size_t TypesByText::SampleHash::operator()(const Sample& sample) const noexcept {
  std::uint64_t digest = sample.length;
  for (const std::uint64_t word : sample.words) {
    digest = (digest ^ word) * 0x9E3779B97F4A7C15U;
    digest ^= digest >> 29;
  }
  return digest;
}

TypePtr TypesByText::typeOf(std::string_view text) {
  if (text.size() <= kMaxShortTextLength) return InternedType::parse(text);
  const auto known = bySample_.find(Sample(text));
  if (known == bySample_.end()) {
    TypePtr type = InternedType::parse(text);
    learn(*type, text);
    return type;
  }
  if (known->second.text == text) return TypePtr(known->second.type);
  return InternedType::parse(text);
}

// The texts of the nested types are parts of this text only if it is the canonical one.
void TypesByText::learn(const InternedType& type, std::string_view text) {
  if (&type.stripped() != &type || type.referenceDepth() == 0) return;
  if (!type.hasLongText() || type.textFingerprint().length != text.size()) return;
  std::string own;
  appendText(own, type);
  if (own != text) return;
  texts_.push_front(std::move(own));
  types_.emplace_back(&type);
  NestedTexts(texts_.front(), [this](const InternedType& part, std::string_view its) {
    return bySample_.try_emplace(Sample(its), Known{its, &part}).second;
  }).visit(type);
}

}  // namespace qex::vornath
