#include "colour/universal_spectrum.hpp"

#include <optional>
#include <vector>

#include "colour/type_construction.hpp"
#include "types/bottom_up.hpp"
#include "types/fixed_struct_types.hpp"

namespace qex::vornath {
namespace {

using Array = Type::TArrayND<int>;
using TStruct = Type::TStruct;

// Returns the universal spectrum that replaces a compact one.
TypePtr universalFor(const InternedType& compact) {
  const InternedType& universal = spectrumType();
  if (compact.metadata().empty()) return TypePtr(&universal);
  Metadata metadata = compact.metadata();
  metadata.insert(universal.metadata().begin(), universal.metadata().end());
  return makeType(universal.desc(), metadata);
}

class Rebuild : public BottomUp<Rebuild, const InternedType*, TypePtr> {
 public:
  TypePtr run(const InternedType& root) { return outcomeOf(&root); }

  std::optional<TypePtr> open(Task& task) {
    const InternedType& type = *task.key;
    if (const auto* array = type.getIf<Array>()) {
      task.inner.push_back(array->element.get());
      return std::nullopt;
    }
    const auto* structure = type.getIf<TStruct>();
    if (structure == nullptr) return TypePtr(&type);
    if (isSameType(type, compactSpectrumType())) return universalFor(type);
    for (const Type::Field& field : structure->fields) task.inner.push_back(field.type.get());
    return std::nullopt;
  }

  // A type whose parts are as they were is returned itself: a copy of a value in its metadata would
  // make it another type.
  TypePtr close(const Task& task) {
    const InternedType& type = *task.key;
    if (const auto* array = type.getIf<Array>()) {
      const TypePtr& element = outcome(task, 0);
      if (element == array->element) return TypePtr(&type);
      return makeType(Array(element, array->shape), type.metadata());
    }
    const std::vector<Type::Field>& fields = type.getIf<TStruct>()->fields;
    std::vector<Type::Field> rebuilt;
    rebuilt.reserve(fields.size());
    bool changed = false;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      rebuilt.emplace_back(outcome(task, i), fields[i].label);
      changed = changed || rebuilt.back().type != fields[i].type;
    }
    return changed ? makeStruct(std::move(rebuilt), type.metadata()) : TypePtr(&type);
  }
};

}  // namespace

const InternedType& compactSpectrumType() {
  static const InternedType& type = permanentType(InternedType::parse("{ float3 spectrum; }"));
  return type;
}

TypePtr toUniversalSpectrum(const InternedType& type) { return Rebuild().run(type); }

}  // namespace qex::vornath
