// Writes the seeds of the corpora, from the types and values that the library itself makes:
// fuzz_make_seeds FOLDER makes FOLDER/<target>/seed-<name>. The same library gives the same bytes.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <vector>

#include "support/streams.hpp"
#include "vornath_data/texture.hpp"
#include "vornath_data/unique_id.hpp"
#include "vornath_data/vrdm.h"

namespace {

using namespace vornath_fuzz;  // NOLINT(google-build-using-namespace): its own program

namespace fs = std::filesystem;

constexpr std::size_t kLongestSeed = 3072;

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
  explicit Corpus(fs::path folder) : folder_(std::move(folder)) {}

  void add(const std::string& target, const std::string& bytes) {
    if (bytes.size() > kLongestSeed || !known_.insert(target + '/' + bytes).second) return;
    std::string number = std::to_string(++counts_[target]);
    number.insert(0, number.size() < 2 ? 1 : 0, '0');
    addNamed(target, "seed-" + number, bytes);
  }

  // An input that once failed keeps a name that tells why.
  void addNamed(const std::string& target, const std::string& name, const std::string& bytes) {
    fs::create_directories(folder_ / target);
    std::ofstream(folder_ / target / name, std::ios::binary) << bytes;
  }

 private:
  fs::path folder_;
  std::set<std::string> known_;
  std::map<std::string, int> counts_;
};

std::vector<TypeHandle> allTypes() {
  std::vector<TypeHandle> types;
  for (const char* const text : kTypes) {
    ErrorLocation error;
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
    if (TypeHandle group{vrdmFieldType(objectClass, 0)}) types.push_back(std::move(group));
  }
  return types;
}

void addValue(Corpus& corpus, const vrntValue_t* value) {
  ErrorLocation error;
  const StringHandle text = print(value, 0, error);
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

// Both references of each level lead to the next one.
void addSharedOnEachLevel(Corpus& corpus) {
  ErrorLocation error;
  const TypeHandle type = parseType("{ void* a; void* b; }", error);
  ValueHandle value = parseValue("1", error);
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

void addPairs(Corpus& corpus, const std::vector<TypeHandle>& types) {
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
  const std::vector<TypeHandle> types = allTypes();
  for (const TypeHandle& type : types) {
    corpus.add("type_text", textOf(type.get()));
    ErrorLocation error;
    const ValueHandle value(vrntValueCreateDefault(type.get(), error));
    FUZZ_CHECK_NOTE(value != nullptr, textOf(type.get()));
    addValue(corpus, value.get());
  }
  for (const char* const text : kValues) {
    ErrorLocation error;
    const ValueHandle value = parseValue(text, error);
    FUZZ_CHECK_NOTE(value != nullptr, text);
    corpus.add("value_text", text);
    addValue(corpus, value.get());
  }
  addSharedOnEachLevel(corpus);
  corpus.addNamed("value_text", "regress-elements-without-bytes", "[ : int[0] | 2000000000 ]");
  addPairs(corpus, types);
  addPrograms(corpus);
  addIds(corpus);
  return 0;
}
