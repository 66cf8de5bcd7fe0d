// Writes the seeds of the corpora, from the types and values that the library itself makes:
// fuzz_make_seeds FOLDER makes FOLDER/<target>/seed-<name>, in place of the seeds that FOLDER has.
// The same library gives the same bytes.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <vector>

#include "support/scenes.hpp"
#include "vornath_data/texture.hpp"
#include "vornath_data/unique_id.hpp"
#include "vornath_data/vrdm.h"

namespace {

using namespace vornath_fuzz;  // NOLINT(google-build-using-namespace): its own program

namespace fs = std::filesystem;

constexpr std::size_t kLongestSeed = 3072;
constexpr std::size_t kLongestScene = 8192;

// Types that no catalogue holds.
constexpr const char* kTypes[] = {
    "bool",
    "half3",
    "void*",
    "float[,,]*[2]",
    "int[2,3,4,5]",
    "{ }",
    "{ int[3] n; char4 @hide c; (() => int) f; }",
    "enum { POINT; AREA( float width, float height ) @name=\"An area\"; }",
    "((float, int[2,2]) => half4)",
    "{ float @default=1.0 @no_specialize x; { int @min=0 @max=9 n; }[2] parts; }",
    "enum { LOW; HIGH; } @default=HIGH : enum { LOW; HIGH; }",
    "{ { float3 @default=float3(0.0, 0.0, 1.0) up; } @default={ up = float3(0.0, 1.0, 0.0); } f; }",
    "float[]* @default=&[ 1.0, 2.0 ]"};

constexpr const char* kValues[] = {"true",
                                   "int4(1, -2, 3, 2147483647)",
                                   "float3(0.25, -inf, NaN)",
                                   "half2(1.0h, 0x3c00.)",
                                   "char3(0c, 65c, 0xff)",
                                   "1.e-45",
                                   "0x7fc00001.",
                                   "[ 1, 2, 3, 4 | 2, 2 ]",
                                   "[ : { int a; } | 2, 1, 3 ]",
                                   "[ : float ]",
                                   "[ 1, 2 : float | 9 ]",
                                   "[ &1, &2.0 : void* ]",
                                   "HIGH : enum { LOW; HIGH; }",
                                   "$0x0000000000000000",
                                   "$(0x0000000012345678:float[])",
                                   "&&&[ &{ a = 1; } ]",
                                   "{ a = { b = [ { c = 1h; }, { c = 2h; } ]; }; d = &{ }; }",
                                   "{ tag = [ 65c, 66c ]; spectrum = &[ 0.0, 0.0, 400.0, 0.3 ]; }"};

class Corpus {
 public:
  explicit Corpus(fs::path folder) : folder_(std::move(folder)) {
    fs::create_directories(folder_);
    std::vector<fs::path> old;
    for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
      if (entry.path().filename().string().rfind("seed-", 0) == 0) old.push_back(entry.path());
    }
    for (const fs::path& seed : old) fs::remove(seed);
  }

  void add(const std::string& target, const std::string& bytes,
           std::size_t longest = kLongestSeed) {
    if (bytes.size() > longest || !known_.insert(target + '/' + bytes).second) return;
    std::string number = std::to_string(++counts_[target]);
    number.insert(0, number.size() < 2 ? 1 : 0, '0');
    addNamed(target, "seed-" + number, bytes);
  }

  // An input that once failed keeps a name that tells why.
  void addNamed(const std::string& target, const std::string& name, const std::string& bytes) {
    fs::create_directories(folder_ / target);
    std::ofstream file(folder_ / target / name, std::ios::binary);
    file << bytes;
    file.close();
    FUZZ_CHECK_NOTE(file.good(), name.c_str());
  }

 private:
  fs::path folder_;
  std::set<std::string> known_;
  std::map<std::string, int> counts_;
};

std::vector<UniqueType> allTypes() {
  std::vector<UniqueType> types;
  for (const char* const text : kTypes) {
    ErrorParameter error;
    types.push_back(parseType(text, error));
    FUZZ_CHECK_NOTE(types.back() != nullptr, text);
  }
  types.emplace_back(vrntTypeSpectrum());
  types.emplace_back(vrntTypeLightUnit());
  types.emplace_back(vrntTypeEmission());
  types.emplace_back(vrntTypeWrapmode());
  types.emplace_back(vrntTypeTexture());
  types.emplace_back(vrntTypeUVTransformation());
  types.emplace_back(vrntTypeMaterialParam(0));
  types.emplace_back(vrntTypeSampler(0));
  for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
    // One group of each class: all of them have much in common.
    if (UniqueType group{vrdmFieldType(objectClass, 0)}) types.push_back(std::move(group));
  }
  return types;
}

void addValue(Corpus& corpus, const vrntValue_t* value) {
  ErrorParameter error;
  const UniqueString text = print(value, 0, error);
  if (text && std::strstr(text.get(), "<<function>>") == nullptr) {
    corpus.add("value_text", text.get());
  }
  corpus.add("value_stream", renamed(writeStream(value)));
}

// Programs of the write protocol: each step is an operation, two handles, and what it takes.
void addPrograms(Corpus& corpus) {
  const auto program = [&](std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes) text += static_cast<char>(byte);
    corpus.add("write_protocol", text);
  };
  program({0, 0, 0, 0, 5, 0, 0, 0, 7, 0, 0, 0});                             // create, write, end
  program({0, 0, 0, 2, 0, 1, 1, 1, 1, 0, 1, 0, 1, 2, 0, 3, 2, 1, 1});        // refer, share, clone
  program({0, 0, 0, 4, 0, 1, 1, 0, 3, 0, 0, 0, 0, 0, 0, 1, 9, 1, 1, 1});     // map and unmap
  program({0, 0, 0, 3, 1, 0, 0, 0, 1, 1, 0, 1, 1, 0, 1, 2, 7, 0, 1});        // itself
  program({0, 0, 0, 6, 0, 1, 1, 5, 6, 0, 1, 2, 1, 6, 0, 1, 3, 129});         // words by hand
  program({0, 0, 0, 4, 1, 0, 0, 0, 1, 0, 0, 1, 5, 1, 0, 7, 2, 0, 0, 1, 0});  // a copy by stream
  program({0, 0, 0, 2, 0, 1, 1, 5, 1, 0, 1, 0, 0, 1, 0, 7, 2, 0, 0, 0, 0, 0});  // follow
}

// The file of a scene, in which the blocks of values stand under the same names on each run, and
// the scene and its assets under the same ids.
void addScene(Corpus& corpus, Scene scene) {
  scene.id = vrnt::UniqueId::hash("scene");
  for (auto& mesh : scene.container<vrnt::detail::MeshDesc>().slots) {
    mesh.id = vrnt::UniqueId::hash("mesh");
  }
  for (auto& texture : scene.container<vrnt::detail::TextureDesc>().slots) {
    texture.id = vrnt::UniqueId::hash("texture");
  }
  for (auto& graph : scene.container<vrnt::data::MaterialGraphDesc>().slots) {
    graph.id = vrnt::UniqueId::hash("graph");
  }
  std::string bytes = write(scene);
  const auto rename = [&](const auto& container) {
    for (const auto& object : container.slots) {
      if (!object.live()) continue;
      const std::string stream = writeStream(object.value.get());
      const std::size_t place = bytes.find(stream);
      FUZZ_CHECK(place != std::string::npos);
      bytes.replace(place, stream.size(), renamed(stream));
    }
  };
  rename(scene.container<vrnt::data::CameraDesc>());
  rename(scene.container<vrnt::data::LightDesc>());
  rename(scene.container<vrnt::data::MaterialDesc>());
  corpus.add("scene_file", bytes, kLongestScene);
  corpus.add("scene_check", bytes, kLongestScene);
}

std::int32_t addObject(Scene& scene, std::uint32_t objectClass) {
  const std::string bytes(3 * 4 + 11 * 4, 'b');
  const auto asset = [&](const auto& desc) {
    FUZZ_CHECK(desc.size() <= bytes.size());
    AssetStorage* storage = vrdmAssetStorageCopy(bytes.data(), desc.size());
    const std::uint32_t index = vrdmAddAsset(&scene, objectClass, &desc, &storage);
    vrdmAssetStorageRelease(storage);
    return index;
  };
  std::uint32_t index = 0;
  switch (objectClass) {
    case VRDM_CLASS_CAMERA_PROGRAM:
    case VRDM_CLASS_MATERIAL_PROGRAM:
    case VRDM_CLASS_LIGHT_PROGRAM:
      index = vrdmAddProgram(&scene, objectClass, "a program");
      break;
    case VRDM_CLASS_MESH:
      index = asset(vrnt::detail::MeshDesc{1, 1, 0, 0});
      break;
    case VRDM_CLASS_TEXTURE:
      index = asset(vrnt::detail::TextureDesc{3, 2, 1, vrnt::TextureFormat::SL8,
                                              vrnt::TextureLayout::FlatMipmap});
      break;
    case VRDM_CLASS_MATERIAL_GRAPH:
      index = asset(vrnt::data::MaterialGraphDesc{5, 0, 2});
      break;
    default:
      index = vrdmCreateInstance(&scene, objectClass);
  }
  const auto number = static_cast<std::int32_t>(index);
  for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
    const bool list = isList(objectClass, slot);
    vrdmSetReference(&scene, objectClass, number, slot, list ? 4 : 0);
    if (!list) continue;
    std::int32_t* const words = vrdmModifyReferenceList(&scene, objectClass, number, slot);
    for (const std::int32_t i : {0, 1, 2}) words[i] = i == 2 ? ~0 : i;
  }
  if (vrdmHasValue(objectClass)) {
    ErrorParameter error;
    const char* const text = objectClass == VRDM_CLASS_LIGHT
                                 ? "{ t = { texture_ref = 0; }; r = &[ 1, 2 : int | 2 ]; }"
                                 : "{ a = 1; b = { texture_ref = 1; }; c = float2(1.0, -0.0); }";
    const UniqueValue value = parseValue(text, error);
    FUZZ_CHECK(value != nullptr);
    vrdmSetInstanceValue(&scene, objectClass, number, value.get());
  }
  return number;
}

// Scenes of each class alone, with a gap in it, and of all classes.
void addScenes(Corpus& corpus) {
  addScene(corpus, Scene());
  Scene all;
  for (std::uint32_t objectClass = 0; objectClass < kClasses; ++objectClass) {
    Scene one;
    addObject(one, objectClass);
    vrdmRemove(&one, objectClass, addObject(one, objectClass));
    addObject(all, objectClass);
    addScene(corpus, std::move(one));
  }
  addScene(corpus, std::move(all));
}

// Programs of calls on scenes: each step is an operation, a scene, a class, then mostly a slot, and
// what the operation takes.
void addSceneCalls(Corpus& corpus) {
  const auto add = [&](std::initializer_list<int> bytes, std::string program = {}) {
    for (const int byte : bytes) program += static_cast<char>(byte);
    corpus.add("scene_calls", program);
    return program;
  };
  std::string all;  // an object of each class, with values and words
  for (int c = 0; c < 18; ++c) {
    all += {0, 0, static_cast<char>(c)};
    if (c < 6) all += {static_cast<char>(37 * c + 30)};
    if (c >= 3 && c < 6) all += 'b';
    if (c == 8 || c == 11 || c == 12)
      all += {7, 0, static_cast<char>(c), 0, static_cast<char>(c % 5)};
  }
  add({15, 0, 8, 0}, all);                                            // queries
  add({11, 1, 0, 11, 1, 0, 13, 1, 0}, all);                           // import twice, compare
  add({139, 0, 0, 12, 0, 0, 140, 1, 0, 13, 0, 0}, all);               // itself, files, compare
  add({9, 0, 12, 0, 9, 0, 11, 0, 9, 0, 8, 0, 11, 1, 0}, all);         // textures of values
  add({3, 0, 8, 0, 3, 0, 4, 0, 0, 0, 8, 0, 0, 4, 30, 'c'}, all);      // remove, add again
  add({8, 0, 3, 0, 40, 'd', 8, 0, 8, 0, 14, 0, 4, 0, 20, 'e'}, all);  // update assets
  add({4, 0, 15, 0, 3, 0, 5, 9, 4, 0, 16, 0, 20, 1, 3, 0, 10, 0, 0, 2, 0, 3, 1}, all);  // groups
  add({5, 0, 10, 0, 0, 0, 44, 6, 0, 10, 0, 0, 40, 41, 42, 43, 11, 1, 0}, all);          // lists
  add({5, 0, 15, 0, 0, 1, 40, 5, 0, 15, 0, 0, 4, 30, 15, 0, 15, 0, 2, 0, 3, 2, 0, 9}, all);
  add({0, 0, 250, 2, 1, 251, 15, 0, 252});  // no classes
}

// Both references of each level lead to the next one.
void addSharedOnEachLevel(Corpus& corpus) {
  ErrorParameter error;
  const UniqueType type = parseType("{ void* a; void* b; }", error);
  UniqueValue value = parseValue("1", error);
  for (int level = 0; level < 40; ++level) {
    vrntValue_t* pair = vrntValueCreate(type.get(), error);
    for (const std::uint32_t i : {0U, 1U}) {
      vrntValueView_t field;
      vrntValueSetReference(&pair, vrntValueStructField(&field, type.get(), i), value.get(), error);
    }
    value.reset(pair);
  }
  corpus.addNamed("value_stream", "regress-shared-on-each-level",
                  renamed(writeStream(value.get())));
}

void addIds(Corpus& corpus) {
  const std::string target = "unique_id_and_texture";
  corpus.add(target, "00112233445566778899aabbccddeeff");
  corpus.add(target, "FFEEDDCCBBAA99887766554433221100 and more");
  corpus.add(target, "-1+a 0 f0x0Xa-1 \t1\n22334455667788");
  corpus.add(target, "0011");
  for (std::int32_t number = 0; number < 128; number += 8) {
    corpus.add(target, vrnt::toString(static_cast<vrnt::TextureFormat>(number)));
  }
  for (const std::int32_t number : {0, 1, 0x4002, 0x8001, 0xC002, 0x10000, 0x28000}) {
    const auto layout = static_cast<vrnt::TextureLayout>(number);
    corpus.add(target, vrnt::toString(layout));
    const vrnt::detail::TextureDesc desc{100, 60, 2, vrnt::TextureFormat::RGB16, layout};
    corpus.add(target, std::string(reinterpret_cast<const char*>(&desc), sizeof(desc)));
  }
  corpus.add(target, vrnt::toString(vrnt::TextureType::SphereData));
}

void addPairs(Corpus& corpus, const std::vector<UniqueType>& types) {
  const std::string target = "coercion";
  for (std::size_t i = 0; i + 1 < types.size(); i += 2) {
    const std::string first = textOf(types[i].get());
    corpus.add(target, first + '\n' + textOf(types[i + 1].get()) + '\n');
    corpus.add(target, first + "\n~" + "\1\2\5\4\6\1" + '\n' + "\1\0\2");
  }
  corpus.add(target, "{ int a; float b; }[3]\n{ float b; int c; int a; }[5]\nbytes of a value");
  corpus.add(target, "enum { A; B; C; }[4]\nenum { C; A; }[4]\n" + std::string("\1\0\0\0", 4));
  corpus.add(target, "{ int a; int b; }\n{ int a; int @no_specialize b; }\nab");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 1;
  }
  Corpus corpus(argv[1]);
  const std::vector<UniqueType> types = allTypes();
  for (const UniqueType& type : types) {
    corpus.add("type_text", textOf(type.get()));
    ErrorParameter error;
    const UniqueValue value(vrntValueCreateDefault(type.get(), error));
    FUZZ_CHECK_NOTE(value != nullptr, textOf(type.get()));
    addValue(corpus, value.get());
  }
  for (const char* const text : kValues) {
    ErrorParameter error;
    const UniqueValue value = parseValue(text, error);
    FUZZ_CHECK_NOTE(value != nullptr, text);
    corpus.add("value_text", text);
    addValue(corpus, value.get());
  }
  addSharedOnEachLevel(corpus);
  corpus.addNamed("value_text", "regress-elements-without-bytes", "[ : int[0] | 2000000000 ]");
  addPairs(corpus, types);
  addPrograms(corpus);
  addIds(corpus);
  addScenes(corpus);
  addSceneCalls(corpus);
  return 0;
}
