// Programs of writes on a few values. The model knows nothing of blocks: it keeps a deep copy of
// each value, which only a write through that value's own handle changes. After each step the
// values must read as the model says, and each block must be counted as often as a handle or a word
// leads to it.
#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

#include "support/streams.hpp"

namespace vornath_fuzz {
namespace {

// Only void* refers here, so that any value may stand anywhere.
constexpr const char* kTypes[] = {
    "int",
    "{ int a; char b; }",
    "void*",
    "void*[3]",
    "{ void* left; int tag; void* right; }",
    "{ char[5] name; { void* p; int[2] n; }[2] items; enum { A; B; } kind; }",
    "{ void*[2,2] grid; char3 c; }[2]",
    "{ }"};
constexpr std::size_t kTypeCount = std::size(kTypes);
constexpr std::size_t kHandles = 6;
constexpr std::size_t kLargestTree = 256;
constexpr std::size_t kMostSteps = 128;

// Where a type has numbers and where it has references: offsets in bytes.
struct Places {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> numbers;  // offset, size
  std::vector<std::uint64_t> words;
  std::vector<vrntValueView_t> views;  // of every part, the whole among them
};

void addPlaces(vrntType_t* type, std::uint64_t offset, Places& places) {
  places.views.push_back({type, offset});
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_STRUCT:
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
        vrntValueView_t field;
        vrntValueStructField(&field, type, i);
        addPlaces(field.type, offset + field.offset, places);
      }
      break;
    case VRNT_DESCRIPTOR_ARRAY: {
      std::array<std::int32_t, 4> shape{1, 1, 1, 1};
      vrntTypeArrayShape(type, shape.data());
      for (std::int32_t y = 0; y < shape[1]; ++y) {
        for (std::int32_t x = 0; x < shape[0]; ++x) {
          const std::int32_t index[2] = {x, y};
          vrntValueView_t element;
          vrntValueArrayElement(&element, type, index);
          addPlaces(element.type, offset + element.offset, places);
        }
      }
      break;
    }
    case VRNT_DESCRIPTOR_REFERENCE:
      places.words.push_back(offset);
      break;
    default:
      // The fourth byte of three lanes is nobody's.
      if (const std::uint64_t size = vrntTypeSize(type); size != 0) {
        const bool threeLanes = vrntTypeVectorDimension(type) == 3;
        places.numbers.emplace_back(offset, threeLanes ? size / 4 * 3 : size);
      }
  }
}

struct Tree;
using TreePtr = std::shared_ptr<const Tree>;

struct Word {
  std::uint64_t foreign = 0;  // an odd word, or 0
  TreePtr target;             // or what a reference leads to
};

// A value as the model has it.
struct Tree {
  std::size_t type = 0;
  std::vector<std::string> numbers;
  std::vector<Word> words;
  std::size_t size = 1;  // values, each as often as it is met
};

std::uint64_t loadWord(const void* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof(word));
  return word;
}
bool isBlockWord(std::uint64_t word) { return word != 0 && word % 2 == 0; }
vrntValue_t* blockOf(std::uint64_t word) {
  return reinterpret_cast<vrntValue_t*>(static_cast<std::uintptr_t>(word) - sizeof(vrntValue_t));
}
std::uint64_t wordOf(const vrntValue_t* block) {
  return reinterpret_cast<std::uintptr_t>(vrntValueData(block));
}
const char* dataOf(const vrntValue_t* block) {
  return static_cast<const char*>(vrntValueData(block));
}

bool sameTree(const Tree& a, const Tree& b) {
  if (&a == &b) return true;
  if (a.type != b.type || a.numbers != b.numbers) return false;
  for (std::size_t i = 0; i < a.words.size(); ++i) {
    const Word& x = a.words[i];
    const Word& y = b.words[i];
    if (x.foreign != y.foreign || (x.target == nullptr) != (y.target == nullptr)) return false;
    if (x.target && !sameTree(*x.target, *y.target)) return false;
  }
  return true;
}

// The types with their places, made once: to parse them for each input would take longer than to
// run its program.
struct Kinds {
  Kinds() {
    for (std::size_t i = 0; i < kTypeCount; ++i) {
      ErrorParameter error;
      types[i] = parseType(kTypes[i], error);
      FUZZ_CHECK(types[i] != nullptr);
      addPlaces(types[i].get(), 0, places[i]);
    }
  }

  std::array<UniqueType, kTypeCount> types;
  std::array<Places, kTypeCount> places;
};

const Kinds& kinds() {
  static const Kinds& kinds = *new Kinds;
  return kinds;
}

class Machine {
 public:
  Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  ~Machine() {
    for (Slot& slot : slots_) {
      // A block that is dropped while it is mapped would release both its words and its old ones.
      if (slot.mapped) vrntValueUnmap(slot.block, &slot.view);
      if (slot.block != nullptr) vrntValueDestroy(slot.block);
    }
  }

  void step(Program& program) {
    const std::uint8_t operation = program.byte();
    Slot& slot = slots_[program.below(kHandles)];
    Slot& other = slots_[program.below(kHandles)];
    if (slot.mapped) {
      unmap(slot, program);
      return;
    }
    if (slot.block == nullptr) {
      if (operation % 2 == 0 || !readable(other)) {
        create(slot, program.below(kTypeCount), operation / 2 % 2 == 0);
      } else {
        copy(slot, other, operation / 2, program);
      }
      return;
    }
    switch (operation % 8) {
      case 0:
        vrntValueDestroy(std::exchange(slot.block, nullptr));
        slot.tree = nullptr;
        break;
      case 1:
      case 2:
        setReference(slot, other, program);
        break;
      case 3:
      case 4:
        map(slot, program);
        break;
      case 5:
        writeNumbers(slot, program);
        break;
      case 6:
        writeWord(slot, program);
        break;
      default:
        compare(slot, other);
    }
  }

  void check() const {
    std::map<const vrntValue_t*, std::uint32_t> counts;
    for (const Slot& slot : slots_) {
      if (slot.block == nullptr) continue;
      ++counts[slot.block];
      checkValue(slot.block, *slot.tree, slot.mapped ? &slot : nullptr);
    }
    std::vector<const vrntValue_t*> open;
    for (const auto& [block, count] : counts) open.push_back(block);
    while (!open.empty()) {
      const vrntValue_t* const block = open.back();
      open.pop_back();
      for (const std::uint64_t word : heldWords(block)) {
        if (isBlockWord(word) && counts[blockOf(word)]++ == 0) open.push_back(blockOf(word));
      }
    }
    for (const auto& [block, count] : counts) FUZZ_CHECK(block->refCount == count);
  }

 private:
  struct Slot {
    vrntValue_t* block = nullptr;
    TreePtr tree;
    bool mapped = false;
    vrntValueView_t view{};
  };

  static bool readable(const Slot& slot) { return slot.block != nullptr && !slot.mapped; }

  static const Places& placesOf(std::size_t type) { return kinds().places[type]; }
  static const vrntType_t* typeAt(std::size_t type) { return kinds().types[type].get(); }

  static std::size_t typeOf(const vrntValue_t* block) {
    for (std::size_t i = 0; i < kTypeCount; ++i) {
      if (typeAt(i) == vrntValueType(block)) return i;
    }
    FUZZ_CHECK(false);
    return 0;
  }

  // Whether a place lies within a view.
  static bool within(std::uint64_t offset, const vrntValueView_t& view) {
    return offset >= view.offset && offset < view.offset + vrntTypeSize(view.type);
  }

  // The words that hold references: for what a view maps those that the map found there.
  std::vector<std::uint64_t> heldWords(const vrntValue_t* block) const {
    const Slot* mapped = nullptr;
    for (const Slot& slot : slots_) {
      if (slot.mapped && slot.block == block) mapped = &slot;
    }
    std::vector<std::uint64_t> words;
    std::size_t shadow = 0;
    for (const std::uint64_t offset : placesOf(typeOf(block)).words) {
      const bool apart = mapped != nullptr && within(offset, mapped->view);
      words.push_back(apart ? block->shadowRefs[shadow++] : loadWord(dataOf(block) + offset));
    }
    if (!words.empty()) {
      for (; shadow < words.size(); ++shadow) FUZZ_CHECK(block->shadowRefs[shadow] == 0);
    } else {
      FUZZ_CHECK(block->shadowRefs == nullptr);
    }
    return words;
  }

  void checkValue(const vrntValue_t* block, const Tree& tree, const Slot* mapped) const {
    FUZZ_CHECK(typeOf(block) == tree.type);
    FUZZ_CHECK(std::strcmp(block->typeText, vrntTypeString(block->type)) == 0);
    const Places& places = placesOf(tree.type);
    for (std::size_t i = 0; i < places.numbers.size(); ++i) {
      const auto& [offset, size] = places.numbers[i];
      FUZZ_CHECK(tree.numbers[i] == std::string(dataOf(block) + offset, size));
    }
    for (std::size_t i = 0; i < places.words.size(); ++i) {
      const std::uint64_t word = loadWord(dataOf(block) + places.words[i]);
      if (tree.words[i].target == nullptr) {
        FUZZ_CHECK(word == tree.words[i].foreign);
      } else {
        FUZZ_CHECK(isBlockWord(word));
        checkValue(blockOf(word), *tree.words[i].target, nullptr);
      }
    }
    if (mapped != nullptr) FUZZ_CHECK(block->refCount == 1);
  }

  // The tree with sizes put right, or null if it has become too large for a model like this.
  static TreePtr sized(Tree tree) {
    tree.size = 1;
    for (const Word& word : tree.words) tree.size += word.target ? word.target->size : 0;
    return tree.size <= kLargestTree ? std::make_shared<const Tree>(std::move(tree)) : nullptr;
  }

  void create(Slot& slot, std::size_t type, bool asDefault) {
    ErrorParameter error;
    vrntValue_t* const block = asDefault ? vrntValueCreateDefault(typeAt(type), error)
                                         : vrntValueCreate(typeAt(type), error);
    error.check(block != nullptr);
    if (block == nullptr) throw std::bad_alloc();
    slot.block = block;
    Tree tree;
    tree.type = type;
    for (const auto& [offset, size] : placesOf(type).numbers) {
      tree.numbers.push_back(std::string(size, '\0'));
    }
    tree.words.resize(placesOf(type).words.size());
    slot.tree = sized(std::move(tree));
  }

  void copy(Slot& slot, const Slot& from, unsigned how, Program& program) {
    const std::size_t type = from.tree->type;
    ErrorParameter error;
    switch (how % 4) {
      case 0:
        slot.block = vrntValueCopy(from.block);
        FUZZ_CHECK(slot.block == from.block);
        slot.tree = from.tree;
        break;
      case 1: {
        slot.block = vrntValueFromView(from.block, &placesOf(type).views[0], error);
        error.check(slot.block != nullptr);
        if (slot.block == nullptr) throw std::bad_alloc();
        FUZZ_CHECK(slot.block != from.block);
        slot.tree = from.tree;
        break;
      }
      case 2: {
        const std::string stream = writeStream(from.block);
        StreamReader reader{stream};
        slot.block = readStream(reader, error).release();
        if (slot.block == nullptr) throw std::bad_alloc();
        slot.tree = from.tree;
        break;
      }
      default: {
        const auto& words = placesOf(type).words;
        if (words.empty()) return;
        const std::size_t word = program.below(words.size());
        if (from.tree->words[word].foreign != 0) return;  // nobody's address
        const vrntValueView_t view = wordView(type, word);
        slot.block = vrntValueDereference(from.block, &view);
        slot.tree = from.tree->words[word].target;
        FUZZ_CHECK((slot.block == nullptr) == (slot.tree == nullptr));
      }
    }
  }

  static vrntValueView_t wordView(std::size_t type, std::size_t word) {
    const Places& places = placesOf(type);
    return *std::find_if(places.views.begin(), places.views.end(), [&](const vrntValueView_t& v) {
      return v.offset == places.words[word] &&
             vrntTypeDescriptor(v.type) == VRNT_DESCRIPTOR_REFERENCE;
    });
  }

  void setReference(Slot& slot, const Slot& target, Program& program) {
    const std::size_t type = slot.tree->type;
    if (placesOf(type).words.empty() || !readable(target)) return;
    const std::size_t word = program.below(placesOf(type).words.size());
    Tree tree = *slot.tree;
    tree.words[word] = {0, target.tree};
    TreePtr next = sized(std::move(tree));
    if (!next) return;
    const vrntValueView_t view = wordView(type, word);
    ErrorParameter error;
    vrntValueSetReference(&slot.block, &view, target.block, error);
    error.check(!error.outOfMemory());
    if (error.outOfMemory()) throw std::bad_alloc();
    slot.tree = std::move(next);
  }

  void map(Slot& slot, Program& program) {
    const auto& views = placesOf(slot.tree->type).views;
    slot.view = views[program.below(views.size())];
    ErrorParameter error;
    void* const at = vrntValueMap(&slot.block, &slot.view, error);
    error.check(at != nullptr);
    if (at == nullptr) throw std::bad_alloc();
    FUZZ_CHECK(at == dataOf(slot.block) + slot.view.offset);
    slot.mapped = true;
  }

  // The word that a host would write, and what it means. The slot's own block is left out: a block
  // that is exclusive would come to refer to itself.
  std::pair<std::uint64_t, Word> chosenWord(const Slot& slot, Program& program) const {
    const std::uint8_t choice = program.byte();
    const Slot& target = slots_[choice % kHandles];
    if (choice < 128 && readable(target) && target.block != slot.block) {
      return {wordOf(target.block), {0, target.tree}};
    }
    const std::uint64_t foreign = choice % 2 == 0 ? 0 : std::uint64_t{choice} * 2 + 1;
    return {foreign, {foreign, nullptr}};
  }

  // What is written takes place at the end of the map: a word that leads to a block counts from
  // then on, and until then that block could come to its end.
  void unmap(Slot& slot, Program& program) {
    const Places& places = placesOf(slot.tree->type);
    auto* const data = static_cast<char*>(const_cast<void*>(vrntValueData(slot.block)));
    Tree tree = *slot.tree;
    for (std::size_t i = 0; i < places.numbers.size(); ++i) {
      const auto& [offset, size] = places.numbers[i];
      if (!within(offset, slot.view) || program.byte() % 2 == 0) continue;
      tree.numbers[i] = std::string(size, static_cast<char>(program.byte()));
      std::memcpy(data + offset, tree.numbers[i].data(), size);
    }
    for (std::size_t i = 0; i < places.words.size(); ++i) {
      if (!within(places.words[i], slot.view) || program.byte() % 2 == 0) continue;
      const auto [word, meaning] = chosenWord(slot, program);
      Tree changed = tree;
      changed.words[i] = meaning;
      if (!sized(changed)) continue;
      tree = std::move(changed);
      std::memcpy(data + places.words[i], &word, sizeof(word));
    }
    slot.tree = sized(std::move(tree));
    vrntValueUnmap(slot.block, &slot.view);
    slot.mapped = false;
  }

  void writeNumbers(Slot& slot, Program& program) {
    const auto& numbers = placesOf(slot.tree->type).numbers;
    if (numbers.empty()) return;
    const std::size_t i = program.below(numbers.size());
    const auto& [offset, size] = numbers[i];
    Tree tree = *slot.tree;
    tree.numbers[i] = std::string(size, static_cast<char>(program.byte()));
    ErrorParameter error;
    vrntValueWrite(&slot.block, offset, tree.numbers[i].data(), size, error);
    if (error.outOfMemory()) throw std::bad_alloc();
    error.check(true);
    slot.tree = sized(std::move(tree));
  }

  void writeWord(Slot& slot, Program& program) {
    const auto& words = placesOf(slot.tree->type).words;
    if (words.empty()) return;
    const std::size_t i = program.below(words.size());
    const auto [word, meaning] = chosenWord(slot, program);
    Tree tree = *slot.tree;
    tree.words[i] = meaning;
    TreePtr next = sized(std::move(tree));
    if (!next) return;
    ErrorParameter error;
    vrntValueWrite(&slot.block, words[i], &word, sizeof(word), error);
    if (error.outOfMemory()) throw std::bad_alloc();
    error.check(true);
    slot.tree = std::move(next);
  }

  static void compare(const Slot& slot, const Slot& other) {
    if (!readable(other)) return;
    FUZZ_CHECK(equal(slot.block, other.block) == sameTree(*slot.tree, *other.tree));
  }

  std::array<Slot, kHandles> slots_;
};

}  // namespace

void runInput(std::string_view bytes) {
  Program program(bytes);
  Machine machine;
  for (std::size_t steps = 0; steps < kMostSteps && !program.atEnd(); ++steps) {
    machine.step(program);
    machine.check();
  }
}

}  // namespace vornath_fuzz
