#include "universal_spectrum.hpp"

#include <optional>
#include <vector>

#include "bottom_up.hpp"
#include "fixed_struct_types.hpp"
#include "type_making.hpp"

namespace qex::vornath {
namespace {

using Array = Type::TArrayND<int>;
using TStruct = Type::TStruct;

// The universal spectrum in the place of a compact one.
TypePtr universalFor(const Type& compact) {
  const Type& universal = spectrumType();
  if (compact.metadata().empty()) return TypePtr(&universal);
  Metadata metadata = compact.metadata();
  metadata.insert(universal.metadata().begin(), universal.metadata().end());
  return makeType(universal.desc(), metadata);
}

class Rebuild : public BottomUp<Rebuild, const Type*, TypePtr> {
 public:
  TypePtr run(const Type& root) { return outcomeOf(&root); }

  std::optional<TypePtr> open(Task& task) {
    const Type& type = *task.key;
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
    const Type& type = *task.key;
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

const Type& compactSpectrumType() {
  static const Type& type = permanentType(Type::parse("{ float3 spectrum; }"));
  return type;
}

TypePtr toUniversalSpectrum(const Type& type) { return Rebuild().run(type); }

}  // namespace qex::vornath
