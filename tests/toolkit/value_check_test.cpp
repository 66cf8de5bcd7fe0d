// The check of values in files: types, blocks and references.
#include <cmath>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

// The record of a block in a stream.
std::string record(const std::string& type, std::uint64_t id, const std::string& data) {
  const std::uint64_t length = type.size();
  std::string bytes(reinterpret_cast<const char*>(&length), 8);
  bytes += type;
  bytes.append(reinterpret_cast<const char*>(&id), 8);
  return bytes + data;
}

std::string words(std::initializer_list<std::uint64_t> numbers) {
  std::string bytes;
  for (const std::uint64_t number : numbers) {
    bytes.append(reinterpret_cast<const char*>(&number), 8);
  }
  return bytes;
}

constexpr std::size_t kMaterials = 348 + 4 * VRDM_CLASS_MATERIAL;
constexpr std::size_t kStream = kMaterials + 4 + 1 + 12;

// A file with one material, whose value is the stream.
std::string fileWith(const std::string& stream) {
  const SceneHandle scene(vrdmCreateScene());
  std::string bytes = bytesOf(scene.get());
  std::string material(std::size_t{1}, '\1');
  material.append(8, '\xFF');
  material.append(4, '\0');
  put<std::uint32_t>(bytes, kMaterials, 1);
  return bytes.insert(kMaterials + 4, material + stream);
}

// What is read has no error, and can be read.
void expectReads(const std::string& bytes) {
  vrdmScene_t* scene = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &scene, nullptr, &error),
            VRTK_OK);
  const ToolkitError owner(error);
  const SceneHandle sceneOwner(scene);
  EXPECT_EQ(error, nullptr) << vrtkErrorMessage(error);
}

TEST(vrtkCheckBytes, TakesValuesOfAllKinds) {
  for (const char* const text :
       {"{ a = 1; }", "{ }", "[ 1.0, 2.0 ]", "&[ 1, 2 ]", "{ p = &&{ x = true; }; }", "3.5h", "'a'",
        "ON : enum { OFF; ON; }", "float3(1.0, 2.0, 3.0)", "[ : int ]", "$0x10",
        "{ r = [ &1, &2, &3 ]; }"}) {
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueParse(text, &error));
    const ErrorHandle owner(error);
    if (!value) continue;  // not every text is a value of the language
    const SceneHandle scene(vrdmCreateScene());
    vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
    vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
    const std::string bytes = bytesOf(scene.get());
    const ReportHandle report = check(bytes);
    EXPECT_TRUE(vrtkReportValid(report.get())) << text << "\n" << textOf(report.get());
    expectReads(bytes);
  }
}

TEST(vrtkCheckBytes, TakesSharedBlocks) {
  const std::string bytes = fileWith(record("{ int* a; int* b; }", 16, words({32, 32})) +
                                     record("int", 32, std::string(4, '\1')));
  const ReportHandle report = check(bytes);
  EXPECT_EQ(textOf(report.get()), "");
  EXPECT_EQ(vrtkReportInfo(report.get())->valueBlocks, 2U);
  EXPECT_EQ(vrtkReportInfo(report.get())->valueBytes, 20U);
  expectReads(bytes);
}

TEST(vrtkCheckBytes, ReportsATypeThatDoesNotParse) {
  const ReportHandle report = check(fileWith(record("flot", 16, "abcd")));
  expectMessage(report.get(), "VALUE_TYPE_INVALID", kStream + 8, "Material/0/value/data");
  for (const std::string& text : {std::string(), std::string("int\0x", 5), std::string("{ int a }"),
                                  std::string("{ int a; float a; }")}) {
    expectMessage(check(fileWith(record(text, 16, "abcd"))).get(), "VALUE_TYPE_INVALID",
                  kStream + 8, "Material/0/value/data");
  }
}

TEST(vrtkCheckBytes, ReportsATypeThatTheLibraryWritesInAnotherWay) {
  for (const char* const text : {"{ int a;}", " int", "{ int @min=1 a; }", "int @name=\"x\"",
                                 "{int a; }", "enum { A @name=\"x\"; }"}) {
    const ReportHandle report = check(fileWith(record(text, 16, "abcd")));
    EXPECT_NE(find(report.get(), "VALUE_TYPE_NOT_CANONICAL"), nullptr) << text << "\n"
                                                                       << textOf(report.get());
  }
}

TEST(vrtkCheckBytes, TakesAnEnumAsAnotherProcessMayHaveWrittenIt) {
  // Of two enums that differ in what their constructors carry, this process knows the first.
  const TypeHandle first = parseType("enum { A( int x, float y ); B; }");
  for (const char* const text :
       {"enum { A; B; }", "enum { A( int y ); B( { int a; } s ); }", "{ enum { A; B; } e; }"}) {
    const std::string bytes = fileWith(record(text, 16, std::string(4, '\0')));
    const ReportHandle report = check(bytes);
    EXPECT_EQ(textOf(report.get()), "") << text;
    expectReads(bytes);
  }
  const ReportHandle report = check(fileWith(record("enum { A; B;}", 16, std::string(4, '\0'))));
  EXPECT_NE(find(report.get(), "VALUE_TYPE_NOT_CANONICAL"), nullptr) << textOf(report.get());
}

TEST(vrtkCheckBytes, ReportsATypeWithoutASize) {
  expectMessage(check(fileWith(record("float[]", 16, ""))).get(), "VALUE_TYPE_UNSIZED", kStream + 8,
                "Material/0/value/data");
}

TEST(vrtkCheckBytes, DoesNotBelieveTheLengthOfATypesText) {
  std::string bytes = fileWith(record("int", 16, "abcd"));
  put<std::uint64_t>(bytes, kStream, UINT64_MAX);
  expectMessage(check(bytes).get(), "SIZE_TOO_LARGE", kStream + 8, "Material/0/value/data");
  put<std::uint64_t>(bytes, kStream, 300);
  expectMessage(check(bytes).get(), "FILE_TRUNCATED", kStream + 8, "Material/0/value/data");
}

TEST(vrtkCheckBytes, DoesNotBelieveTheSizeOfAType) {
  for (const char* const text :
       {"float[2147483647]", "{ int[2147483647][2147483647] a; }", "float[46341,46341]"}) {
    const ReportHandle report = check(fileWith(record(text, 16, "abcd")));
    EXPECT_NE(find(report.get(), "SIZE_TOO_LARGE"), nullptr) << textOf(report.get());
  }
  const ReportHandle report =
      check(fileWith(record("void*[2147483647][2147483647][2147483647]", 16, "")));
  EXPECT_FALSE(vrtkReportValid(report.get())) << textOf(report.get());
}

TEST(vrtkCheckBytes, ReportsAReferenceToABlockThatIsNotThere) {
  const std::string root = record("{ int* a; }", 16, words({32}));
  const ReportHandle report = check(fileWith(root + record("int", 48, "abcd")));
  expectMessage(report.get(), "VALUE_REFERENCE_MISSING", kStream + root.size() + 8 + 3,
                "Material/0/value/data/a");
}

TEST(vrtkCheckBytes, ReportsReferencesInACycle) {
  expectMessage(check(fileWith(record("{ void* a; }", 16, words({16})))).get(), "VALUE_CYCLE",
                kStream + 8 + 12 + 8, "Material/0/value/data/a");
  const std::string root = record("{ void* a; }", 16, words({32}));
  expectMessage(check(fileWith(root + record("{ int x; void* b; }", 32, words({0, 32})))).get(),
                "VALUE_CYCLE", kStream + root.size() + 8 + 19 + 8 + 8,
                "Material/0/value/data/a/to/b");
}

// A chain of references.
std::string chain(std::uint64_t references) {
  std::string stream;
  for (std::uint64_t i = 0; i < references; ++i) {
    stream += record("void*", 16 * (i + 1), words({16 * (i + 2)}));
  }
  return stream + record("int", 16 * (references + 1), "abcd");
}

TEST(vrtkCheckBytes, TakesAChainOf100000ReferencesAndNotOneMore) {
  const std::string bytes = fileWith(chain(100000));
  EXPECT_EQ(textOf(check(bytes).get()), "");
  expectReads(bytes);
  const ReportHandle report = check(fileWith(chain(100001)));
  EXPECT_EQ(vrtkReportErrorCount(report.get()), 1U);
  EXPECT_NE(find(report.get(), "VALUE_TOO_DEEP"), nullptr) << textOf(report.get());
  EXPECT_LT(std::strlen(find(report.get(), "VALUE_TOO_DEEP")->address), 1000U);
}

// Blocks of two references each to the next one: each level doubles the text.
std::string doubling(std::uint64_t levels) {
  std::string stream;
  for (std::uint64_t i = 0; i < levels; ++i) {
    stream += record("{ void* a; void* b; }", 16 * (i + 1), words({16 * (i + 2), 16 * (i + 2)}));
  }
  return stream + record("int", 16 * (levels + 1), "abcd");
}

TEST(vrtkCheckBytes, ReportsAValueWhoseTextGrowsBeyondAllMeasure) {
  EXPECT_EQ(textOf(check(fileWith(doubling(16))).get()), "");
  for (const std::string& stream :
       {doubling(40), doubling(5000), record("float[0][2000000000]", 16, ""),
        record("{ float[0][3][2000000000] a; }", 16, "")}) {
    const ReportHandle report =
        check(fileWith(stream + std::string(stream.size() < 60 ? 4 : 0, 'x')));
    const bool expands = find(report.get(), "VALUE_EXPANDS") != nullptr;
    EXPECT_TRUE(expands) << textOf(report.get());
  }
}

TEST(vrtkCheckBytes, WarnsOfABlockOfAnotherTypeThanTheReferenceSays) {
  const std::string root = record("{ float[]* a; }", 16, words({32}));
  const std::string right = fileWith(root + record("float[2]", 32, std::string(8, '\0')));
  EXPECT_EQ(textOf(check(right).get()), "");
  const std::string bytes = fileWith(root + record("int", 32, std::string(4, '\0')));
  const ReportHandle report = check(bytes);
  EXPECT_TRUE(vrtkReportValid(report.get()));
  expectMessage(report.get(), "VALUE_REFERENCE_TYPE", kStream + root.size() + 8,
                "Material/0/value/data/a");
  expectReads(bytes);
}

TEST(vrtkCheckBytes, WarnsOfForeignAddresses) {
  const std::string bytes = fileWith(record("{ int* a; }", 16, words({0x2001})));
  const ReportHandle report = check(bytes);
  EXPECT_TRUE(vrtkReportValid(report.get()));
  expectMessage(report.get(), "VALUE_FOREIGN_ADDRESS", kStream + 8 + 11 + 8,
                "Material/0/value/data/a");
  EXPECT_NE(std::string_view(find(report.get(), "VALUE_FOREIGN_ADDRESS")->message).find("0x1000"),
            std::string_view::npos);
  expectReads(bytes);
}

TEST(vrtkCheckBytes, LooksAtTheBytesOfAllBlocks) {
  const auto floats = [](std::initializer_list<float> numbers) {
    return std::string(reinterpret_cast<const char*>(numbers.begin()), numbers.size() * 4);
  };
  const std::string root =
      record("{ bool b; enum { A; B; } e; { int texture_ref; } t; float[]*[2] f; }", 16,
             std::string("\1\0\0\0\7\0\0\0\5\0\0\0\0\0\0\0", 16) + words({32, 48}));
  const std::string bytes = fileWith(root + record("float[2]", 32, floats({1.0F, 2.0F})) +
                                     record("float[3]", 48, floats({1.0F, -INFINITY, NAN})));
  const ReportHandle report = check(bytes);
  EXPECT_TRUE(vrtkReportValid(report.get()));
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 4U) << textOf(report.get());
  EXPECT_STREQ(find(report.get(), "BOOL_NOT_CANONICAL")->address, "Material/0/value/data/b");
  EXPECT_STREQ(find(report.get(), "ENUM_CODE_UNNAMED")->address, "Material/0/value/data/e");
  EXPECT_STREQ(find(report.get(), "TEXTURE_REFERENCE_INVALID")->address,
               "Material/0/value/data/t/texture_ref");
  expectMessage(report.get(), "NUMBER_NOT_FINITE", bytes.size() - 20 - 4,
                "Material/0/value/data/f/1/to/2");
  expectReads(bytes);
}

TEST(vrtkCheckBytes, ReadsFilesThroughItsWindowAsItReadsMemory) {
  // Many blocks around a block that is larger than the window, with references at its end.
  const std::size_t count = 400000;
  std::string data;
  std::string blocks;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t word = i % 100 == 0 ? 16 * (i + 2) : 0;
    data.append(reinterpret_cast<const char*>(&word), 8);
    if (word != 0) blocks += record("{ bool b; int* next; }", word, words({2, 0}));
  }
  const std::string bytes =
      fileWith(record("int*[" + std::to_string(count) + "]", 16, data) + blocks);
  const ReportHandle expected = check(bytes);
  EXPECT_TRUE(vrtkReportValid(expected.get())) << textOf(expected.get());
  EXPECT_EQ(vrtkReportWarningCount(expected.get()), 2 * count / 100);

  const TemporaryFolder folder;
  writeFile(folder.file("scene"), bytes);
  vrtkReport* report = nullptr;
  ASSERT_EQ(vrtkCheckFile(folder.file("scene").c_str(), nullptr, &report, nullptr), VRTK_OK);
  const ReportHandle owner(report);
  EXPECT_EQ(textOf(report), textOf(expected.get()));
  EXPECT_EQ(vrtkReportWarningCount(report), 2 * count / 100);
}

}  // namespace
}  // namespace vornath_test
