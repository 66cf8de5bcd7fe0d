#include "specialization.hpp"

#include <boost/container/small_vector.hpp>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "equality.hpp"
#include "extents.hpp"
#include "make_type.hpp"
#include "pair_planner.hpp"
#include "relations.hpp"
#include "transfer.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using Part = Transfer::Part;

bool isMarked(const Type& type) { return type.metadata().count("no_specialize") != 0; }

// Works out what becomes of a value's type under the marks of an annotated one, and how the bytes
// get there. Elements all have one type, so that this is done once for all of them.
struct Outcome {
  TypePtr type;
  Part part;
};

class Planner : private PairPlanner<Planner, Outcome, std::size_t> {
 public:
  explicit Planner(Transfer& transfer) : transfer_(transfer) {}

  // The value's type is without metadata.
  Outcome plan(const Type& value, const Type& annotated) { return decide(value, annotated); }

 private:
  friend PairPlanner;

  // Decides the pair, or puts it on the stack if it has inner pairs to decide first.
  void open(const Type& value, const Type& annotated) {
    std::visit([&](const auto& desc) { open(value, annotated, desc); }, annotated.desc());
  }

  void open(const Type& value, const Type& annotated, const Type::TStruct& structure) {
    Frame frame{&value, &annotated, {}, {}, 0};
    for (std::size_t i = 0; i < structure.fields.size(); ++i) {
      const Type& field = *structure.fields[i].type;
      if (isMarked(field)) continue;
      frame.inner.emplace_back(fieldPlace(value, i).type, &field);
      frame.fields.push_back(i);
    }
    frames_.push_back(std::move(frame));
  }

  template <typename D>
  void open(const Type& value, const Type& annotated, const Type::TArrayND<D>& array) {
    const auto& own = std::get<Type::TArrayND<D>>(value.desc());
    // The elements to visit are those of the type that is passed.
    if (!array.shape || !own.shape) throw std::bad_optional_access();
    frames_.push_back({&value, &annotated, {{own.element.get(), array.element.get()}}, {}, 0});
  }

  template <typename Leaf>
  void open(const Type& value, const Type& annotated, const Leaf&) {
    outcomes_.emplace(TypePair(&value, &annotated),
                      Outcome{TypePtr(&value), transfer_.copy(value)});
  }

  Outcome close(const Frame& frame) {
    return std::visit([&](const auto& desc) { return close(frame, desc); }, frame.second->desc());
  }

  Outcome close(const Frame& frame, const Type::TStruct& structure) {
    std::vector<Type::Field> fields;
    fields.reserve(frame.fields.size());
    for (std::size_t i = 0; i < frame.fields.size(); ++i) {
      fields.emplace_back(inner(frame, i).type, structure.fields[frame.fields[i]].label);
    }
    TypePtr type = makeType(Type::TStruct(std::move(fields)));
    const auto& offsets = type->getIf<Type::TStruct>()->offsets;
    std::vector<Part> parts;
    parts.reserve(frame.fields.size());
    for (std::size_t i = 0; i < frame.fields.size(); ++i) {
      const std::uint64_t from = fieldPlace(*frame.first, frame.fields[i]).offset;
      parts.push_back(inner(frame, i).part.at(from, offsets[i]));
    }
    return {std::move(type), transfer_.sequence(parts)};
  }

  template <typename D>
  Outcome close(const Frame& frame, const Type::TArrayND<D>&) {
    const auto& own = *frame.first->getIf<Type::TArrayND<D>>();
    const Outcome& element = inner(frame, 0);
    TypePtr type = makeType(Type::TArrayND<D>(element.type, own.shape));
    const Part part = transfer_.repeat(element.part, Extents(own).elements(), own.element->size(),
                                       element.type->size());
    return {std::move(type), part};
  }

  template <typename Leaf>
  Outcome close(const Frame&, const Leaf&) {
    return {};  // never on the stack
  }

  Transfer& transfer_;
};

// The walk over two values at once.
class Difference {
 public:
  bool found(const ConstView& a, const ConstView& b, const Type& annotated) {
    if (differAt(a, b, annotated)) return true;
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.count) {
        frames_.pop_back();
        continue;
      }
      const std::size_t i = frame.next++;
      if (const auto* structure = frame.annotated->getIf<Type::TStruct>()) {
        const Type& field = *structure->fields[i].type;
        if (isMarked(field)) continue;
        if (differAt(frame.a.field(i), frame.b.field(i), field)) return true;
      } else {
        const Type& element = *frame.element;
        if (differAt(elementOf(frame.a, i), elementOf(frame.b, i), element)) return true;
      }
    }
    return false;
  }

 private:
  struct Frame {
    ConstView a, b;
    const Type* annotated;
    const Type* element;  // of the annotated type, if that is an array
    std::size_t count;
    std::size_t next;
  };

  static ConstView elementOf(const ConstView& array, std::size_t i) {
    const Type* const element = arrayElements(*array.type).element;
    return {element, array.offset + i * element->size(), array.owner};
  }

  // Compares values without parts; with parts they become the topmost frame.
  bool differAt(const ConstView& a, const ConstView& b, const Type& annotated) {
    return std::visit([&](const auto& desc) { return begin(a, b, annotated, desc); },
                      annotated.desc());
  }

  bool begin(const ConstView& a, const ConstView& b, const Type& annotated,
             const Type::TStruct& structure) {
    frames_.push_back({a, b, &annotated, nullptr, structure.fields.size(), 0});
    return false;
  }

  template <typename D>
  bool begin(const ConstView& a, const ConstView& b, const Type& annotated,
             const Type::TArrayND<D>& array) {
    const D& extents = std::get<Type::TArrayND<D>>(a.type->desc()).shape.value();
    if (!(extents == std::get<Type::TArrayND<D>>(b.type->desc()).shape.value())) return true;
    const std::size_t count = Extents(extents).elements();
    if (count == 0) return false;
    // Elements without parts are compared all at once, which says the same.
    if (!hasParts(*array.element)) return !valuesEqual(a, b, 0);
    frames_.push_back({a, b, &annotated, array.element.get(), count, 0});
    return false;
  }

  template <typename Leaf>
  bool begin(const ConstView& a, const ConstView& b, const Type&, const Leaf&) {
    return !valuesEqual(a, b, 0);
  }

  static bool hasParts(const Type& type) {
    return type.getIf<Type::TBasetype>() == nullptr && type.getIf<Type::TEnum>() == nullptr &&
           type.getIf<Type::TRef>() == nullptr && type.getIf<Type::TFun>() == nullptr;
  }

  boost::container::small_vector<Frame, 16> frames_;  // on the stack as long as they are few
};

// What of one type another doesn't cover.
class Remainder {
 public:
  // The other has something that the type lacks.
  struct Exception {};

  Remainder() : empty_(makeType(Type::TStruct())) {}

  TypePtr of(const Type& full, const Type& covered) {
    TypePtr result = begin(full, covered);
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      const auto& fields = frame.full->getIf<Type::TStruct>()->fields;
      if (result) {
        // That of the field that the frame waits for.
        if (result != empty_) frame.kept.emplace_back(result, fields[frame.next].label);
        result = nullptr;
        ++frame.next;
        continue;
      }
      if (frame.next == fields.size()) {
        result = frame.kept.empty()
                     ? empty_
                     : makeType(Type::TStruct(std::move(frame.kept)), frame.full->metadata());
        frames_.pop_back();
        continue;
      }
      const Type::Field& field = fields[frame.next];
      if (const auto found = frame.covered.find(field.label); found != frame.covered.end()) {
        result = begin(*field.type, *found->second);
      } else {
        frame.kept.push_back(field);
        ++frame.next;
      }
    }
    return result;
  }

 private:
  struct Frame {
    const Type* full;
    std::unordered_map<std::string_view, const Type*> covered;
    std::vector<Type::Field> kept;
    std::size_t next = 0;
  };

  // The result, or null with a new frame. That one struct relates to another needs no question:
  // then no field of it leaves anything over.
  TypePtr begin(const Type& full, const Type& covered) {
    const auto* const all = full.getIf<Type::TStruct>();
    const auto* const some = covered.getIf<Type::TStruct>();
    if (all == nullptr || some == nullptr) {
      if (isSubType(covered, full)) return empty_;
      throw Exception();
    }
    if (&full.stripped() == &covered.stripped()) return empty_;

    Frame frame{&full, {}, {}, 0};
    frame.covered.reserve(some->fields.size());
    for (const Type::Field& field : some->fields) {
      frame.covered.emplace(field.label, field.type.get());
    }
    std::size_t common = 0;
    for (const Type::Field& field : all->fields) common += frame.covered.count(field.label);
    if (common != some->fields.size()) throw Exception();
    frames_.push_back(std::move(frame));
    return nullptr;
  }

  TypePtr empty_;
  std::vector<Frame> frames_;
};

}  // namespace

DynamicValue buildSpecialization(const ConstView& value, const Type& annotated) {
  Transfer transfer;
  const auto [type, part] = Planner(transfer).plan(value.type->stripped(), annotated);
  DynamicValue result{type};
  transfer.run(part, value.data(), blockData(result.block()));
  return result;
}

bool specializationDiffers(const ConstView& a, const ConstView& b, const Type& annotated) {
  return !isMarked(annotated) && Difference().found(a, b, annotated);
}

TypePtr specializationRemainder(const Type& full, const Type& specialized) {
  try {
    return Remainder().of(full, specialized);
  } catch (const Remainder::Exception&) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments,
                          "Incompatible type for specialization: {}",
                          checkSubType(specialized, full).value_or(std::string()));
  }
}

}  // namespace qex::vornath
