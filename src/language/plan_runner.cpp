#include "language/plan_runner.hpp"

#include <array>
#include <tuple>
#include <utility>

#include "language/type_builder.hpp"
#include "language/value_assembly.hpp"
#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/metadata.hpp"

namespace qex::vornath {
namespace {

// The lists of what is being built around the last step: the innermost one is the last.
template <typename Item>
class Lists {
 public:
  void begin(std::size_t count) { lists_.emplace_back().reserve(count); }
  std::vector<Item>& last() { return lists_.back(); }
  std::vector<Item> end() {
    std::vector<Item> list = std::move(lists_.back());
    lists_.pop_back();
    return list;
  }

 private:
  std::vector<std::vector<Item>> lists_;
};

class PlanRunner {
 public:
  PlanRunner(const BuildPlan& plan, const char* text)
      : plan_(plan), text_(text), values_(plan.lanes.data()) {}

  void run() {
    for (const Step& step : plan_.steps) perform(step);
  }

  TypePtr takeType() { return std::move(type_); }
  DynamicValue takeValue() { return values_.take(); }

 private:
  using Base = Type::TBasetype;

  // A description, or a constructor, whose annotations are being built.
  struct Annotated {
    TypeDesc desc;
    Metadata metadata{};
  };

  void perform(const Step& step) {
    switch (step.action) {
      case Action::BaseType:
        if (step.flag) {
          pending_ = static_cast<Base>(step.detail);
        } else {
          type_ = baseType(static_cast<Base>(step.detail));
        }
        return;
      case Action::VoidReference:
        pending_ = build::reference(nullptr);
        return;
      case Action::Reference:
        pending_ = build::reference(std::move(type_));
        return;
      case Action::Array:
        pending_ = build::array(std::move(type_),
                                step.flag ? extentsOf(step) : Extents::unknown(step.detail));
        return;
      case Action::BeginFields:
        fields_.begin(step.count);
        return;
      case Action::Field:
        fields_.last().emplace_back(std::move(type_), textOf(step));
        return;
      case Action::Struct:
        pending_ = build::structure(fields_.end());
        return;
      case Action::BeginDomain:
        domains_.begin(step.count);
        return;
      case Action::DomainType:
        domains_.last().push_back(std::move(type_));
        return;
      case Action::Function:
        pending_ = build::function(domains_.end(), std::move(type_));
        return;
      case Action::BeginEnum:
        constructors_.begin(step.count);
        return;
      case Action::Constructor:
        addConstructor(step);
        return;
      case Action::Enum:
        pending_ = *build::enumeration(constructors_.end());
        return;
      case Action::MakeType:
        type_ = build::type(std::move(pending_), {});
        return;
      case Action::BeginMetadata:
        annotated_.push_back({std::move(pending_)});
        return;
      case Action::Flag:
        annotate<std::monostate>(step);
        return;
      case Action::Text:
        annotate<std::string>(step, step.content().of(text_));
        return;
      case Action::Value:
        annotate<HeapValue<DynamicValue>>(step, values_.take());
        return;
      case Action::MakeAnnotated:
        type_ =
            build::type(std::move(annotated_.back().desc), std::move(annotated_.back().metadata));
        annotated_.pop_back();
        return;
      case Action::Lanes:
        values_.addLanes(static_cast<Base>(step.detail), step.count, step.number());
        return;
      case Action::FieldLabel:
        values_.label(step.text().of(text_));
        return;
      case Action::StructValue:
        values_.makeStruct(step.count);
        return;
      case Action::ArrayValue:
        makeArray(step);
        return;
      case Action::Foreign:
        values_.addForeign(
            build::type(build::reference(step.flag ? std::move(type_) : TypePtr()), {}),
            step.number());
        return;
      case Action::ReferenceValue:
        values_.refer();
        return;
      case Action::Enumerator:
        values_.addEnumerator(build::type(*build::enumeration(constructors_.end()), {}),
                              step.text().of(text_));
        return;
    }
  }

  std::string textOf(const Step& step) const { return std::string(step.text().of(text_)); }

  // A type that this parse has made stays the one of its description while it is held.
  const TypePtr& baseType(Base base) {
    TypePtr& type = baseTypes_[static_cast<std::size_t>(base)];
    if (!type) type = build::type(base, {});
    return type;
  }

  static Extents extentsOf(const Step& step) {
    switch (step.detail) {
      case 1:
        return {step.extent(0)};
      case 2:
        return {step.extent(0), step.extent(1)};
      case 3:
        return {step.extent(0), step.extent(1), step.extent(2)};
      default:
        return {step.extent(0), step.extent(1), step.extent(2), step.extent(3)};
    }
  }

  void addConstructor(const Step& step) {
    Metadata metadata;
    if (step.detail != 0) {
      metadata = std::move(annotated_.back().metadata);
      annotated_.pop_back();
    }
    build::Fields payload = step.flag ? fields_.end() : build::Fields();
    constructors_.last().push_back(
        build::constructor(textOf(step), std::move(payload), std::move(metadata)));
  }

  template <typename Kind, typename... Arguments>
  void annotate(const Step& step, Arguments&&... arguments) {
    Metadata& metadata = annotated_.back().metadata;
    const std::string_view key = step.text().of(text_);
    // The keys of a canonical text are in their order.
    if (metadata.empty() || metadata.rbegin()->first.compare(key) < 0) {
      metadata.emplace_hint(metadata.end(), std::piecewise_construct, std::tuple(key),
                            std::tuple<std::in_place_type_t<Kind>, Arguments&&...>(
                                std::in_place_type<Kind>, std::forward<Arguments>(arguments)...));
    } else {
      setMetadata(metadata, std::string(key),
                  MetadataEntry(std::in_place_type<Kind>, std::forward<Arguments>(arguments)...));
    }
  }

  void makeArray(const Step& step) {
    TypePtr element = std::move(type_);
    // Behind values, a type with a count is ignored, and so is the count.
    const bool ignored = step.flag && step.count != 0 && step.detail == 1;
    if (ignored) element = nullptr;
    if (ignored || step.detail == 0) {
      values_.makeArray(step.count, nullptr, element);
    } else {
      const Extents extents = extentsOf(step);
      values_.makeArray(step.count, &extents, element);
    }
  }

  const BuildPlan& plan_;
  const char* const text_;
  TypeDesc pending_;
  TypePtr type_;
  std::array<TypePtr, kBaseTypes.size()> baseTypes_;
  std::vector<Annotated> annotated_;
  Lists<Type::Field> fields_;
  Lists<TypePtr> domains_;
  Lists<Type::Constructor> constructors_;
  ValueAssembly values_;
};

}  // namespace

TypePtr buildType(const BuildPlan& plan, const std::string& text) {
  PlanRunner runner(plan, text.data());
  runner.run();
  return runner.takeType();
}

DynamicValue buildValue(const BuildPlan& plan, const std::string& text) {
  PlanRunner runner(plan, text.data());
  runner.run();
  return runner.takeValue();
}

}  // namespace qex::vornath
