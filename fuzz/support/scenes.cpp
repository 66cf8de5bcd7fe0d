#include "support/scenes.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <type_traits>

#include "vornath_data/parameters.h"

namespace vornath_fuzz {
namespace {

using vrnt::data::ClassInfo;
using vrnt::data::forEachClass;
using vrnt::data::forEachGroup;
using vrnt::data::forEachSlot;
using vrnt::data::ObjectKind;

template <typename T>
std::string rawBytes(const T& record) {
  static_assert(std::is_trivially_copyable_v<T>);
  return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

template <typename Target>
Words wordsOf(const vrnt::Ref<Target>& link) {
  return {link.index};
}
template <typename List>
Words wordsOf(const List& list) {
  return list.words;
}

template <typename Source>
ModelObject objectOf(const vrnt::data::Program<Source>& program) {
  ModelObject object;
  object.live = program.live();
  object.text = program.source();
  object.id = program.id;
  return object;
}

template <typename Desc>
ModelObject objectOf(const vrnt::data::Asset<Desc>& asset) {
  ModelObject object;
  object.live = asset.live();
  object.id = asset.id;
  object.desc = rawBytes(asset.desc);
  object.block = asset.storage.get();
  return object;
}

template <typename Desc>
ModelObject objectOf(const vrnt::data::Instance<Desc>& instance) {
  ModelObject object;
  object.live = instance.live();
  if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
    forEachGroup<Desc>([&](const auto& group, auto) {
      object.groups.push_back(rawBytes(instance.desc.groups.*group.member));
    });
    object.groupVersions.assign(instance.groupVersions.begin(), instance.groupVersions.end());
  }
  if constexpr (vrnt::data::kSlotCount<Desc> != 0) {
    forEachSlot<Desc>([&](const auto& slot, auto) {
      object.slots.push_back(wordsOf(instance.desc.*slot.member));
    });
    object.referencesVersion = instance.referencesVersion;
  }
  if constexpr (ClassInfo<Desc>::kHasValue) object.value = instance.value.get();
  object.version = instance.version;
  return object;
}

template <typename Desc>
constexpr std::size_t numberOf() {
  return static_cast<std::size_t>(ClassInfo<Desc>::kClass);
}

template <typename T>
T loadAt(const std::string& bytes, std::uint64_t offset) {
  T loaded;
  FUZZ_CHECK(offset + sizeof(T) <= bytes.size());
  std::memcpy(&loaded, bytes.data() + offset, sizeof(T));
  return loaded;
}

// A half as the number that it stands for.
double halfNumber(std::uint16_t half) {
  const int exponent = half >> 10 & 31;
  const int mantissa = half & 1023;
  const double sign = half >> 15 == 0 ? 1 : -1;
  if (exponent == 31) {
    return mantissa == 0 ? sign * std::numeric_limits<double>::infinity()
                         : std::numeric_limits<double>::quiet_NaN();
  }
  if (exponent == 0) return sign * std::ldexp(mantissa, -24);
  return sign * std::ldexp(1024 + mantissa, exponent - 25);
}

bool sameLane(std::uint32_t base, const std::string& a, const std::string& b,
              std::uint64_t offset) {
  switch (base) {
    case VRNT_BASETYPE_CHAR:
      return a[offset] == b[offset];
    case VRNT_BASETYPE_HALF:
      return halfNumber(loadAt<std::uint16_t>(a, offset)) ==
             halfNumber(loadAt<std::uint16_t>(b, offset));
    case VRNT_BASETYPE_BOOL:
      return (loadAt<std::uint32_t>(a, offset) != 0) == (loadAt<std::uint32_t>(b, offset) != 0);
    case VRNT_BASETYPE_FLOAT:
      return loadAt<float>(a, offset) == loadAt<float>(b, offset);
    default:
      return loadAt<std::uint32_t>(a, offset) == loadAt<std::uint32_t>(b, offset);
  }
}

// Whether two records of a group are the same, field by field. The types of groups nest little.
bool sameRecord(const vrntType_t* type, const std::string& a, const std::string& b,
                std::uint64_t offset) {
  const bool isStruct = vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_STRUCT ||
                        (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_BASE &&
                         vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
  if (isStruct) {
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, type, i);
      if (!sameRecord(field.type, a, b, offset + field.offset)) return false;
    }
    return true;
  }
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ARRAY: {
      const UniqueType element(vrntTypeElementType(type));
      const std::uint64_t step = vrntTypeSize(element.get());
      for (std::uint64_t at = 0; step != 0 && at < vrntTypeSize(type); at += step) {
        if (!sameRecord(element.get(), a, b, offset + at)) return false;
      }
      return true;
    }
    case VRNT_DESCRIPTOR_BASE: {
      const std::uint32_t base = vrntTypeBasetype(type);
      const std::uint64_t step = base == VRNT_BASETYPE_CHAR   ? 1
                                 : base == VRNT_BASETYPE_HALF ? 2
                                                              : 4;
      for (std::uint32_t lane = 0; lane < vrntTypeVectorDimension(type); ++lane) {
        if (!sameLane(base, a, b, offset + lane * step)) return false;
      }
      return true;
    }
    default:
      return a.compare(offset, vrntTypeSize(type), b, offset, vrntTypeSize(type)) == 0;
  }
}

UniqueType groupType(std::uint32_t objectClass, std::size_t group) {
  return UniqueType(vrdmFieldType(objectClass, static_cast<std::uint32_t>(group)));
}

bool sameRecords(std::uint32_t objectClass, const std::vector<std::string>& a,
                 const std::vector<std::string>& b) {
  FUZZ_CHECK(a.size() == b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!sameRecord(groupType(objectClass, i).get(), a[i], b[i], 0)) return false;
  }
  return true;
}

std::optional<std::string> printed(const vrntValue_t* value) {
  ErrorParameter error;
  const UniqueString text = print(value, 0, error);
  if (error.outOfMemory()) throw std::bad_alloc();
  return text ? std::optional<std::string>(text.get()) : std::nullopt;
}

bool arePrintable(std::uint32_t objectClass, const std::vector<std::string>& groups) {
  for (std::size_t i = 0; i < groups.size(); ++i) {
    ErrorParameter error;
    vrntValue_t* block = vrntValueCreate(groupType(objectClass, i).get(), error);
    if (block == nullptr) throw std::bad_alloc();
    vrntValueWrite(&block, 0, groups[i].data(), groups[i].size(), error);
    error.check(true);
    const UniqueValue value(block);
    if (!printed(value.get())) return false;
  }
  return true;
}

void checkSameGroups(const std::vector<std::string>& expected,
                     const std::vector<std::string>& actual) {
  FUZZ_CHECK(expected.size() == actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const auto [at, other] =
        std::mismatch(expected[i].begin(), expected[i].end(), actual[i].begin(), actual[i].end());
    FUZZ_CHECK_NOTE(
        at == expected[i].end() && other == actual[i].end(),
        "group " + std::to_string(i) + " at byte " + std::to_string(at - expected[i].begin()));
  }
}

void checkSameValue(const vrntValue_t* expected, const vrntValue_t* actual) {
  FUZZ_CHECK((expected == nullptr) == (actual == nullptr));
  if (expected == nullptr) return;
  FUZZ_CHECK(renamed(writeStream(expected)) == renamed(writeStream(actual)));
}

using Pairs = std::vector<std::pair<std::int32_t, std::int32_t>>;

std::int32_t lookup(const Pairs& pairs, std::int32_t source) {
  for (const auto& [from, to] : pairs) {
    if (from == source) return to;
  }
  return -1;
}

std::size_t lowestGap(const std::vector<ModelObject>& objects) {
  std::size_t index = 0;
  while (index < objects.size() && objects[index].live) ++index;
  return index;
}

void put(std::vector<ModelObject>& objects, std::size_t index, ModelObject object) {
  if (index == objects.size()) objects.emplace_back();
  objects[index] = std::move(object);
}

std::int32_t translated(std::uint32_t targetClass, bool coded, std::int32_t word,
                        const std::array<Pairs, kClasses>& maps) {
  if (!coded) return lookup(maps[targetClass], word);
  std::uint32_t nonNegative = targetClass;
  std::uint32_t negative = targetClass;
  if (targetClass == VRDM_TARGET_EMITTER) {
    nonNegative = VRDM_CLASS_SHAPE;
    negative = VRDM_CLASS_LIGHT;
  }
  return word >= 0 ? lookup(maps[nonNegative], word) : ~lookup(maps[negative], ~word);
}

// Where a value has numbers of textures that an import changes. Types may nest as deep as a text.
std::vector<std::uint64_t> texturePlaces(const vrntType_t* whole) {
  const UniqueType texture(vrntTypeTexture());
  std::vector<std::uint64_t> places;
  std::vector<vrntValueView_t> open{{const_cast<vrntType_t*>(whole), 0}};
  while (!open.empty()) {
    const vrntValueView_t view = open.back();
    open.pop_back();
    if (vrntTypeDescriptor(view.type) != VRNT_DESCRIPTOR_STRUCT) continue;
    if (vrntTypeIsEqual(view.type, texture.get()) != 0 || vrntTypeSamplerType(view.type) != -1) {
      // The number is the first thing in both.
      places.push_back(view.offset);
      continue;
    }
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(view.type); ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, view.type, i);
      open.push_back({field.type, view.offset + field.offset});
    }
  }
  return places;
}

// The value that an import has put in place of another.
void checkImportedValue(const vrntValue_t* source, const vrntValue_t* target,
                        const Pairs& textures) {
  FUZZ_CHECK((source == nullptr) == (target == nullptr));
  if (source == nullptr) return;
  FUZZ_CHECK(vrntValueType(source) == vrntValueType(target));
  std::string expected(bytesOf(source));
  bool named = false;
  for (const std::uint64_t place : texturePlaces(vrntValueType(source))) {
    const auto word = loadAt<std::int32_t>(expected, place);
    if (word < 0) continue;
    named = true;
    const std::int32_t number = lookup(textures, word);
    std::memcpy(expected.data() + place, &number, sizeof(number));
  }
  FUZZ_CHECK((source == target) == !named);
  FUZZ_CHECK(bytesOf(target) == expected);
}

}  // namespace

std::string ModelObject::bytes() const {
  FUZZ_CHECK(live);
  return std::string(static_cast<const char*>(block->data), block->size);
}

bool isList(std::uint32_t objectClass, std::uint32_t slot) {
  return vrdmReferenceType(objectClass, slot).kind >= VRDM_REFERENCE_LIST;
}

std::vector<std::uint64_t> singleInts(const vrntType_t* type,
                                      const std::vector<std::string>& labels) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_STRUCT) return {};
  std::vector<std::uint64_t> places;
  const std::uint32_t count = vrntTypeFieldCount(type);
  for (std::uint32_t i = 0; i < count; ++i) {
    vrntValueView_t field{};
    vrntValueStructField(&field, type, i);
    const bool isInt = vrntTypeDescriptor(field.type) == VRNT_DESCRIPTOR_BASE &&
                       vrntTypeBasetype(field.type) == VRNT_BASETYPE_INT &&
                       vrntTypeVectorDimension(field.type) == 1;
    if (count == 1 && isInt &&
        std::find(labels.begin(), labels.end(), vrntTypeFieldLabel(type, i)) != labels.end()) {
      places.push_back(field.offset);
    }
    for (const std::uint64_t place : singleInts(field.type, labels)) {
      places.push_back(field.offset + place);
    }
  }
  return places;
}

ModelScene modelOf(const Scene& scene) {
  ModelScene model;
  model.id = scene.id;
  forEachGroup<vrnt::data::SceneData>(
      [&](const auto& group, auto) { model.groups.push_back(rawBytes(scene.data.*group.member)); });
  model.version = scene.versions.version;
  model.groupVersions = scene.versions.groups;
  model.classVersions = scene.versions.classes;
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    for (const auto& element : scene.container<Desc>().slots) {
      model.classes[numberOf<Desc>()].push_back(objectOf(element));
    }
  });
  return model;
}

ModelObject newInstance(std::uint32_t objectClass) {
  ModelObject object;
  object.live = true;
  for (std::uint32_t i = 0; i < vrdmFieldCount(objectClass); ++i) {
    ErrorParameter error;
    const UniqueValue value(vrntValueCreateDefault(groupType(objectClass, i).get(), error));
    if (!value) throw std::bad_alloc();
    object.groups.emplace_back(bytesOf(value.get()));
    // Textures, for which the types know no default.
    for (const std::uint64_t place : singleInts(vrntValueType(value.get()), {"index"})) {
      constexpr std::int32_t kNone = -1;
      std::memcpy(object.groups.back().data() + place, &kNone, sizeof(kNone));
    }
  }
  for (std::uint32_t i = 0; i < vrdmReferenceCount(objectClass); ++i) {
    object.slots.push_back(isList(objectClass, i) ? Words() : Words{-1});
  }
  object.groupVersions.resize(object.groups.size());
  return object;
}

void checkSame(const ModelObject& expected, const ModelObject& actual) {
  FUZZ_CHECK(expected.live == actual.live);
  FUZZ_CHECK(expected.text == actual.text);
  FUZZ_CHECK(expected.id == actual.id);
  FUZZ_CHECK(expected.desc == actual.desc);
  FUZZ_CHECK(expected.block == actual.block);
  checkSameGroups(expected.groups, actual.groups);
  FUZZ_CHECK(expected.slots == actual.slots);
  FUZZ_CHECK(expected.value == actual.value);
  FUZZ_CHECK(expected.version == actual.version);
  FUZZ_CHECK(expected.referencesVersion == actual.referencesVersion);
  FUZZ_CHECK(expected.groupVersions == actual.groupVersions);
}

void checkSame(const ModelScene& expected, const ModelScene& actual) {
  FUZZ_CHECK(expected.id == actual.id);
  checkSameGroups(expected.groups, actual.groups);
  FUZZ_CHECK(expected.version == actual.version);
  FUZZ_CHECK(expected.groupVersions == actual.groupVersions);
  FUZZ_CHECK(expected.classVersions == actual.classVersions);
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    FUZZ_CHECK(expected.classes[c].size() == actual.classes[c].size());
    for (std::size_t i = 0; i < expected.classes[c].size(); ++i) {
      checkSame(expected.classes[c][i], actual.classes[c][i]);
    }
  }
}

void checkSameContent(const ModelScene& expected, const ModelScene& actual) {
  FUZZ_CHECK(expected.id == actual.id);
  checkSameGroups(expected.groups, actual.groups);
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    const bool isAsset = vrdmObjectClass(c) == VRDM_KIND_ASSET;
    FUZZ_CHECK(expected.classes[c].size() == actual.classes[c].size());
    for (std::size_t i = 0; i < expected.classes[c].size(); ++i) {
      const ModelObject& a = expected.classes[c][i];
      const ModelObject& b = actual.classes[c][i];
      FUZZ_CHECK(a.live == b.live);
      if (!a.live) continue;
      FUZZ_CHECK(a.text == b.text);
      if (isAsset) FUZZ_CHECK(a.id == b.id && a.desc == b.desc && a.bytes() == b.bytes());
      checkSameGroups(a.groups, b.groups);
      FUZZ_CHECK(a.slots == b.slots);
      checkSameValue(a.value, b.value);
    }
  }
}

void importInto(ModelScene& target, const ModelScene& source,
                const vrnt::data::detail::TupleOfClass<vrnt::data::RefMap>& maps,
                const ModelScene& actual) {
  std::array<Pairs, kClasses> pairs;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    std::vector<ModelObject>& objects = target.classes[c];
    const std::uint32_t kind = vrdmObjectClass(c);
    const std::size_t before = objects.size();
    for (std::size_t i = 0; i < source.classes[c].size(); ++i) {
      const ModelObject& object = source.classes[c][i];
      if (!object.live) continue;
      std::size_t place = lowestGap(objects);
      if (kind == VRDM_KIND_INSTANCE) {
        place = objects.size();
        put(objects, place, object);
      } else if (kind == VRDM_KIND_ASSET) {
        put(objects, place, object);
      } else {
        std::size_t known = 0;
        while (known < objects.size() && !(objects[known].live && objects[known].id == object.id)) {
          ++known;
        }
        if (known < objects.size()) {
          place = known;
        } else {
          ModelObject added = object;
          added.id = vrnt::UniqueId::hash(object.text.c_str());
          put(objects, place, std::move(added));
        }
      }
      pairs[c].emplace_back(static_cast<std::int32_t>(i), static_cast<std::int32_t>(place));
    }
    if (kind != VRDM_KIND_INSTANCE) continue;
    ModelObject free = newInstance(c);
    free.live = false;
    objects.resize(before + source.classes[c].size(), free);
  }
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    FUZZ_CHECK(maps.template get<Desc>().pairs() == pairs[numberOf<Desc>()]);
  });

  for (std::uint32_t c = 0; c < kClasses; ++c) {
    FUZZ_CHECK(actual.classes[c].size() == target.classes[c].size());
    if (vrdmObjectClass(c) != VRDM_KIND_INSTANCE) continue;
    for (const auto& [from, to] : pairs[c]) {
      ModelObject& object = target.classes[c][static_cast<std::size_t>(to)];
      for (std::uint32_t s = 0; s < object.slots.size(); ++s) {
        const vrdmReferenceInfo info = vrdmReferenceType(c, s);
        const bool coded =
            info.kind == VRDM_REFERENCE_ORDERED_DECAL || info.kind == VRDM_REFERENCE_EMITTER;
        for (std::int32_t& word : object.slots[s]) {
          word = translated(info.targetClass, coded, word, pairs);
        }
      }
      const vrntValue_t* const value = actual.classes[c][static_cast<std::size_t>(to)].value;
      checkImportedValue(source.classes[c][static_cast<std::size_t>(from)].value, value,
                         pairs[VRDM_CLASS_TEXTURE]);
      object.value = value;
    }
  }

  target.version = actual.version;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    FUZZ_CHECK(actual.groupVersions == target.groupVersions);
    // Something came, or nothing did.
    const bool program = vrdmObjectClass(c) == VRDM_KIND_PROGRAM;
    const bool changed = actual.classVersions[c] != target.classVersions[c];
    FUZZ_CHECK(program || changed == !pairs[c].empty());
    target.classVersions[c] = actual.classVersions[c];
    if (vrdmObjectClass(c) != VRDM_KIND_INSTANCE) continue;
    for (std::size_t i = 0; i < target.classes[c].size(); ++i) {
      const std::size_t old = target.classes[c].size() - source.classes[c].size();
      if (i < old) continue;
      ModelObject& object = target.classes[c][i];
      const ModelObject& now = actual.classes[c][i];
      object.version = now.version;
      object.referencesVersion = now.referencesVersion;
      object.groupVersions = now.groupVersions;
    }
  }
}

bool isComplete(const ModelScene& scene) {
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    if (!vrdmHasValue(c)) continue;
    for (const ModelObject& object : scene.classes[c]) {
      if (object.live && object.value == nullptr) return false;
    }
  }
  return true;
}

std::uint64_t weightOf(const Scene& scene) {
  std::uint64_t bytes = 0;
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    const auto& container = scene.container<Desc>();
    bytes += container.size() * sizeof(*container.slots.begin());
    if (bytes > kHeavyScene) return;
    for (const auto& element : container.slots) {
      if (!element.live()) continue;
      if constexpr (ClassInfo<Desc>::kKind == ObjectKind::Asset) {
        bytes += element.storage.get()->size;
      } else if constexpr (ClassInfo<Desc>::kKind == ObjectKind::Instance) {
        forEachSlot<Desc>([&](const auto& slot, auto) {
          using Link = typename std::decay_t<decltype(slot)>::Member;
          if constexpr (!std::is_same_v<Link, vrnt::Ref<typename Link::Target>>) {
            bytes += (element.desc.*slot.member).words.size() * std::uint64_t{16};
          }
        });
        if constexpr (ClassInfo<Desc>::kHasValue) {
          if (!element.value) continue;
          const std::uint64_t parts = partsOf(element.value.get());
          bytes += parts == kManyParts ? kLightScene + 1 : parts * 16;
          bytes += vrntTypeSize(element.value.type());
        }
      }
    }
  });
  return bytes;
}

std::optional<bool> naiveEquivalence(const ModelScene& a, const ModelScene& b) {
  bool same = sameRecords(VRDM_CLASS_SCENE_DATA, a.groups, b.groups);
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    const auto& first = a.classes[c];
    const auto& second = b.classes[c];
    if (first.size() != second.size()) same = false;
    for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
      const ModelObject& x = first[i];
      const ModelObject& y = second[i];
      if (x.live != y.live) same = false;
      if (!x.live || !y.live) continue;
      same = same && x.text == y.text && x.desc == y.desc && x.slots == y.slots;
      same = same && (vrdmObjectClass(c) != VRDM_KIND_ASSET || x.bytes() == y.bytes());
      same = same && sameRecords(c, x.groups, y.groups);
      if (x.value == nullptr || y.value == nullptr) continue;
      const auto text = printed(x.value);
      const auto other = printed(y.value);
      if (!text || !other) return std::nullopt;
      same = same && *text == *other;
    }
  }
  return same;
}

bool isPrintable(const ModelScene& scene) {
  if (!arePrintable(VRDM_CLASS_SCENE_DATA, scene.groups)) return false;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    for (const ModelObject& object : scene.classes[c]) {
      if (!object.live) continue;
      if (!arePrintable(c, object.groups)) return false;
      if (object.value != nullptr && !printed(object.value)) return false;
    }
  }
  return true;
}

namespace {

// Nothing for what the library raises on purpose, but for want of memory.
template <typename Call>
auto caught(Call&& call) -> std::optional<decltype(call())> {
  try {
    return call();
  } catch (const vrnt::Exception& exception) {
    if (exception.code() == vrnt::ErrorCode::MemoryAllocationFailure) throw std::bad_alloc();
    FUZZ_CHECK(std::strcmp(exception.what(), "") != 0);
    return std::nullopt;
  }
}

}  // namespace

std::optional<bool> equivalent(const Scene& a, const Scene& b) {
  return caught([&] { return Scene::equivalent(a, b); });
}

std::optional<std::string> dump(const Scene& scene) {
  return caught([&] {
    std::ostringstream stream;
    stream << scene;
    return stream.str();
  });
}

std::string withoutAddresses(const std::string& dump) {
  constexpr std::string_view kAddress = "[v0x";
  std::string text;
  std::size_t at = 0;
  while (true) {
    const std::size_t found = dump.find(kAddress, at);
    text += dump.substr(at, found - at);
    if (found == std::string::npos) return text;
    at = dump.find_first_not_of("0123456789abcdef", found + kAddress.size());
    text += kAddress;
  }
}

std::string write(const Scene& scene) {
  std::ostringstream stream;
  Scene::serialize(scene, stream);
  // A buffer that couldn't grow leaves the stream bad.
  if (!stream) throw std::bad_alloc();
  return stream.str();
}

Scene readBack(const std::string& bytes) {
  std::istringstream stream(bytes);
  auto read = Scene::deserialize(stream, vrnt::UniqueId::null());
  FUZZ_CHECK(read.hasValue());
  FUZZ_CHECK(stream.good());
  FUZZ_CHECK(static_cast<std::size_t>(stream.tellg()) == bytes.size());
  return std::move(*read);
}

}  // namespace vornath_fuzz
