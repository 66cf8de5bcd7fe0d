#include "values/stream.hpp"

#include <stdexcept>

#include "values/equality.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

// What a writer was given, call by call.
struct Written {
  std::vector<std::string> calls;

  std::string bytes() const {
    std::string all;
    for (const std::string& call : calls) all += call;
    return all;
  }
};

Written write(const DynamicValue& v) {
  Written written;
  serializeValue(
      v,
      [](const void* bytes, std::uint64_t size, void* user) {
        static_cast<Written*>(user)->calls.emplace_back(static_cast<const char*>(bytes), size);
      },
      &written);
  return written;
}

// Gives the bytes of a string, and throws behind its end.
struct Reader {
  std::string bytes;
  std::size_t position = 0;

  void operator()(void* to, std::uint64_t size) {
    if (size > bytes.size() - position) throw std::runtime_error("no more bytes");
    std::memcpy(to, bytes.data() + position, size);
    position += size;
  }
};

DynamicValue read(Reader& reader) {
  DynamicValue::StreamMap map;
  return DynamicValue::deserialize(reader, map);
}
DynamicValue read(const std::string& bytes) {
  Reader reader{bytes};
  return read(reader);
}

std::string word(std::uint64_t number) {
  std::string bytes(8, '\0');
  std::memcpy(bytes.data(), &number, 8);
  return bytes;
}

TEST(SerializeValue, WritesFourCallsARecord) {
  const DynamicValue v = value("[ 1, 2 ]");
  const Written written = write(v);
  ASSERT_EQ(written.calls.size(), 4u);
  EXPECT_EQ(written.calls[0], word(6));
  EXPECT_EQ(written.calls[1], "int[2]");
  EXPECT_EQ(written.calls[2], word(reinterpret_cast<std::uintptr_t>(v.data())));
  EXPECT_EQ(written.calls[3], std::string("\1\0\0\0\2\0\0\0", 8));
}

TEST(SerializeValue, WritesEachBlockOnceInSlotOrderDepthFirst) {
  const DynamicValue shared = value("1");
  const DynamicValue inner = DynamicValue::reference(shared);
  const DynamicValue other = value("2.0");
  const DynamicValue v = DynamicValue::structure({{"a", DynamicValue::reference(inner)},
                                                  {"b", value("$0x000000000000000f")},
                                                  {"c", DynamicValue::reference(other)},
                                                  {"d", DynamicValue(type("int*"))},
                                                  {"e", DynamicValue::reference(shared)}});
  const Written written = write(v);
  ASSERT_EQ(written.calls.size(), 16u);
  EXPECT_EQ(written.calls[1], v.typeOf().text());
  EXPECT_EQ(written.calls[5], "int*");
  EXPECT_EQ(written.calls[9], "int");
  EXPECT_EQ(written.calls[13], "float");
}

TEST(SerializeValue, WritesAnEmptyValueWithNoData) {
  const Written written = write(DynamicValue(type("float[0]")));
  ASSERT_EQ(written.calls.size(), 4u);
  EXPECT_EQ(written.calls[3], "");
}

TEST(SerializeValue, EndsOnACycle) {
  DynamicValue v(type("void*"));
  storeWord(blockData(v.block()), wordOfBlock(v.block()));
  EXPECT_EQ(write(v).calls.size(), 4u);
  storeWord(blockData(v.block()), 0);
}

TEST(SerializeValue, PassesOnWhatTheWriterThrows) {
  EXPECT_THROW(
      serializeValue(
          value("1"), [](const void*, std::uint64_t, void*) { throw std::runtime_error("full"); },
          nullptr),
      std::runtime_error);
}

TEST(DeserializeValue, GivesWhatWasWritten) {
  for (const char* t :
       {"1", "{ a = 1; b = float3(1.0, 2.0, 3.0); }", "&&&1", "[ : int ]", "{ }", "[ &1, &2 ]",
        "B : enum { A; B; }", "{ a = &[ 1.0, 2.0 ]; b = &{ c = &3; }; }"}) {
    const DynamicValue v = value(t);
    const DynamicValue back = read(write(v).bytes());
    EXPECT_EQ(back.type(), v.type()) << t;
    EXPECT_EQ(text(back), text(v)) << t;
    EXPECT_EQ(count(back), 1u);
  }
}

TEST(DeserializeValue, KeepsSharing) {
  const DynamicValue target = value("5");
  const DynamicValue v = DynamicValue::structure(
      {{"a", DynamicValue::reference(target)}, {"b", DynamicValue::reference(target)}});
  const Written written = write(v);
  EXPECT_EQ(written.calls.size(), 8u);
  const DynamicValue back = read(written.bytes());
  const auto first = at<std::uint64_t>(back, 0);
  EXPECT_EQ(at<std::uint64_t>(back, 8), first);
  EXPECT_NE(first, wordOfBlock(target.block()));
  EXPECT_EQ(blockOfWord(first)->refCount, 2u);
}

TEST(DeserializeValue, KeepsForeignAndNullWords) {
  const DynamicValue v = value(
      "{ a = $0x00000000deadbeef; b = $(0x0000000000000000:int); c = $(0x0000000000000001:int); }");
  const DynamicValue back = read(write(v).bytes());
  EXPECT_EQ(std::memcmp(back.data(), v.data(), 24), 0);
}

TEST(DeserializeValue, TakesTheDeclaredLength) {
  DynamicValue v = value("[ 1, 2, 3 ]");
  v.setLength(1);
  const DynamicValue back = read(write(v).bytes());
  EXPECT_EQ(back.block()->length, 3u);
  EXPECT_EQ(back.length(), 3);
}

TEST(DeserializeValue, StopsBehindTheLastRecord) {
  Reader reader{write(value("{ a = &1; }")).bytes() + write(value("2.0")).bytes() + "tail"};
  EXPECT_EQ(text(read(reader)), "{ a = &1; }");
  EXPECT_EQ(text(read(reader)), "2.0");
  EXPECT_EQ(reader.bytes.substr(reader.position), "tail");
}

TEST(DeserializeValue, ReadsAForeignStreamOfItsOwnWords) {
  // The identities mean nothing; only the reference words do, here 2 and 4.
  const std::string stream = word(12) + "{ int* a; }*" + word(99) + word(2) +  //
                             word(11) + "{ int* a; }" + word(98) + word(4) +   //
                             word(3) + "int" + word(97) + std::string("\7\0\0\0", 4);
  EXPECT_EQ(text(read(stream)), "&{ a = &7; }");
}

TEST(DeserializeValue, OfAnnotatedTypeTextGivesTheStrippedType) {
  const std::string t = "int @name=\"x\"";
  EXPECT_EQ(read(word(t.size()) + t + word(0) + std::string(4, '\0')).typeOf().text(), "int");
}

TEST(DeserializeValue, ReportsATypeThatDoesNotParse) {
  try {
    read(word(5) + "inta!" + word(0));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const vrnt::Exception& failure) {
    EXPECT_EQ(std::string(failure.what()).rfind("Unable to parse type: inta!.\n", 0), 0u);
    EXPECT_EQ(failure.code(), vrnt::ErrorCode::ParseFailed);
  }
}

TEST(DeserializeValue, ReleasesEverythingWhereverTheStreamEnds) {
  const DynamicValue shared = value("{ x = &1; y = 2; }");
  const DynamicValue v = DynamicValue::structure(
      {{"a", DynamicValue::reference(shared)},
       {"b",
        DynamicValue::array({DynamicValue::reference(shared), DynamicValue::reference(shared)}, 2)},
       {"c", value("&&[ 1.0, 2.0 ]")}});
  const std::string bytes = write(v).bytes();
  const std::size_t types = Type::get_factory(true)->liveTypes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_THROW(read(bytes.substr(0, length)), std::runtime_error) << length;
  }
  EXPECT_EQ(Type::get_factory(true)->liveTypes(), types);
  EXPECT_EQ(text(read(bytes)), text(v));
}

// A callback must fill all bytes. One that cannot is not noticed, but nothing else is taken for
// them.
TEST(DeserializeValue, TakesNoOtherBytesForThoseOfATypeTextThatAreMissing) {
  struct Short {
    std::string bytes;
    std::size_t position = 0;

    void operator()(void* to, std::uint64_t size) {
      const std::size_t count = std::min<std::size_t>(size, bytes.size() - position);
      std::memcpy(to, bytes.data() + position, count);
      position += count;
    }
  };
  const std::string longLabel(5000, 'x');
  for (const std::string& label : {std::string("label"), longLabel}) {
    const std::string bytes = write(value("{ " + label + " = 1; b = &2; }")).bytes();
    const std::size_t typeText = value("{ " + label + " = 1; b = &2; }").typeOf().text().size();
    for (const std::size_t cut : {std::size_t{8}, std::size_t{12}, 8 + typeText - 1}) {
      read(bytes);  // leaves the text where the next call may find it
      Short stream{bytes.substr(0, cut)};
      DynamicValue::StreamMap map;
      EXPECT_THROW(DynamicValue::deserialize(stream, map), vrnt::Exception) << cut;
    }
  }
}

TEST(DeserializeValue, CannotReadACycle) {
  // The back reference isn't known yet: another record is expected.
  const std::string stream = word(5) + "void*" + word(2) + word(2);
  EXPECT_THROW(read(stream), std::runtime_error);
}

TEST(DeserializeValue, GivesTheMapAllButTheOutermostValue) {
  Reader reader{write(value("{ a = &1; b = &2; }")).bytes()};
  DynamicValue::StreamMap map;
  {
    const DynamicValue v = DynamicValue::deserialize(reader, map);
    EXPECT_EQ(map.size(), 2u);
  }
  for (const auto& [key, reference] : map) EXPECT_EQ(blockOfWord(reference.word())->refCount, 1u);
}

}  // namespace
}  // namespace qex::vornath::test
