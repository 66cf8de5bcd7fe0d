// Streams that fail at each byte in turn: cut off, refusing by their state, or throwing. The values
// have references, lists and texts; the scene has objects of all classes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ios>
#include <istream>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "all_classes.hpp"
#include "support/allocations.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/scene.hpp"

namespace {

using namespace vornath_test;
using vrnt::ErrorCode;
using vrnt::UniqueId;
using vrnt::data::Scene;

constexpr const char* kValues[] = {
    "{ a = 1; b = [ 1.0, 2.0 ]; c = &{ d = true; e = &[ 1c, 2c ]; }; }",
    "[ &{ x = 1; }, &{ x = 2; } ]",
    "RED : enum { RED; GREEN; }",
    "{ none = $0x0000000000000000; name = [ 104c, 105c ]; deep = &&&[ 1, 2 ]; }",
};

// What a callback of a host throws, and what becomes of it.
enum class Thrown { Standard, Library, Memory, Unknown };
constexpr Thrown kThrown[] = {Thrown::Standard, Thrown::Library, Thrown::Memory, Thrown::Unknown};

[[noreturn]] void raise(Thrown thrown) {
  if (thrown == Thrown::Standard) throw std::runtime_error("the disk is gone");
  if (thrown == Thrown::Library) throw vrnt::Exception(ErrorCode::IoError, "the disk is gone");
  if (thrown == Thrown::Memory) throw std::bad_alloc();
  throw 7;
}

// A stream of a host that takes or gives `limit` bytes and then throws.
struct Limited {
  std::string bytes;
  std::size_t limit = ~std::size_t{0};
  Thrown thrown = Thrown::Standard;
  std::size_t done = 0;
  bool zeroes = false;  // it doesn't throw, and gives zeroes
};

void writeLimited(const void* bytes, std::uint64_t size, void* user) {
  auto& to = *static_cast<Limited*>(user);
  const std::size_t taken = std::min<std::size_t>(size, to.limit - to.bytes.size());
  to.bytes.append(static_cast<const char*>(bytes), taken);
  if (taken < size) raise(to.thrown);
}

void readLimited(void* bytes, std::uint64_t size, void* user) {
  auto& from = *static_cast<Limited*>(user);
  const std::size_t given =
      std::min<std::size_t>(size, std::min(from.limit, from.bytes.size()) - from.done);
  std::memcpy(bytes, from.bytes.data() + from.done, given);
  from.done += given;
  if (given == size) return;
  if (!from.zeroes) raise(from.thrown);
  std::memset(static_cast<char*>(bytes) + given, 0, size - given);
}

std::string streamOf(const ValueHandle& value) {
  Limited whole;
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(value.get(), writeLimited, &whole, &error);
  EXPECT_EQ(error, nullptr);
  return whole.bytes;
}

void expectError(vrntValuesError_t* error, std::uint32_t kind, const char* words) {
  const ErrorHandle owner(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), kind);
  EXPECT_STREQ(vrntValuesErrorMessage(error), words);
}

TEST(ValueStream, WrittenToAHostThatThrowsAtEachByte) {
  for (const char* text : kValues) {
    SCOPED_TRACE(text);
    const ValueHandle value = parseValue(text);
    const std::string whole = streamOf(value);
    const std::int64_t live = liveAllocations();
    for (std::size_t limit = 0; limit < whole.size(); ++limit) {
      for (const Thrown thrown : kThrown) {
        Limited to{"", limit, thrown};
        vrntValuesError_t* error = nullptr;
        bool passed = false;
        try {
          vrntValueSerialize(value.get(), writeLimited, &to, &error);
        } catch (int) {
          passed = true;
        }
        EXPECT_EQ(passed, thrown == Thrown::Unknown);
        if (thrown == Thrown::Memory) {
          expectError(error, VRNT_OUT_OF_MEMORY, "Out of memory.");
        } else if (thrown == Thrown::Unknown) {
          EXPECT_EQ(error, nullptr);
        } else {
          expectError(error, VRNT_OTHER_ERROR, "the disk is gone");
        }
        EXPECT_EQ(to.bytes, whole.substr(0, limit));
      }
    }
    EXPECT_EQ(liveAllocations(), live);
    EXPECT_EQ(value->refCount, 1u);
    EXPECT_EQ(textOf(value), textOf(parseValue(text)));
    EXPECT_EQ(streamOf(value), whole);
  }
}

TEST(ValueStream, ReadFromAHostThatThrowsAtEachByte) {
  for (const char* text : kValues) {
    SCOPED_TRACE(text);
    const ValueHandle value = parseValue(text);
    const std::string whole = streamOf(value);
    const std::int64_t live = liveAllocations();
    for (std::size_t limit = 0; limit < whole.size(); ++limit) {
      for (const Thrown thrown : kThrown) {
        Limited from{whole, limit, thrown};
        vrntValuesError_t* error = nullptr;
        EXPECT_EQ(vrntValueDeserialize(readLimited, &from, &error), nullptr);
        switch (thrown) {
          case Thrown::Standard:
            expectError(error, VRNT_OTHER_ERROR, "the disk is gone");
            break;
          case Thrown::Library:
            expectError(error, VRNT_LIBRARY_ERROR, "the disk is gone");
            break;
          case Thrown::Memory:
            expectError(error, VRNT_OUT_OF_MEMORY, "Out of memory.");
            break;
          case Thrown::Unknown:
            expectError(error, VRNT_OTHER_ERROR, "Unknown error.");
            break;
        }
      }
    }
    EXPECT_EQ(liveAllocations(), live);
    Limited from{whole};
    vrntValuesError_t* error = nullptr;
    const ValueHandle read(vrntValueDeserialize(readLimited, &from, &error));
    EXPECT_EQ(textOf(read), textOf(value));
  }
}

// A short read isn't detected: what the host fills in goes for what the stream had.
TEST(ValueStream, CutOffAtEachByteAndFilledWithZeroes) {
  for (const char* text : kValues) {
    SCOPED_TRACE(text);
    const ValueHandle value = parseValue(text);
    const std::string whole = streamOf(value);
    std::uint64_t textLength;
    std::memcpy(&textLength, whole.data(), sizeof(textLength));
    const std::size_t typeEnd = sizeof(textLength) + textLength;
    for (std::size_t limit = 0; limit < whole.size(); ++limit) {
      Limited from{whole, limit};
      from.zeroes = true;
      vrntValuesError_t* error = nullptr;
      const ValueHandle read(vrntValueDeserialize(readLimited, &from, &error));
      const ErrorHandle owner(error);
      EXPECT_NE(read == nullptr, error == nullptr) << limit;
      if (limit < typeEnd) {
        ASSERT_NE(error, nullptr) << limit;
        EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_LIBRARY_ERROR}) << limit;
        EXPECT_EQ(std::string(vrntValuesErrorMessage(error)).find("Unable to parse type: "), 0u)
            << limit;
      }
      if (read) {
        EXPECT_EQ(read->refCount, 1u);
        EXPECT_EQ(typeTextOf(read), typeTextOf(value));
        EXPECT_FALSE(textOf(read).empty());
      }
    }
  }
}

// Scenes.

enum class Failing { State, Throwing };

struct DiskGone : std::runtime_error {
  DiskGone() : std::runtime_error("the disk is gone") {}
};

// Takes `limit` bytes and then refuses, by its answer or by an exception.
class LimitedSink : public std::streambuf {
 public:
  LimitedSink(std::size_t limit, Failing failing) : left_(limit), failing_(failing) {
    bytes.reserve(1 << 16);
  }

  std::string bytes;

 protected:
  std::streamsize xsputn(const char* from, std::streamsize size) override {
    const auto taken = static_cast<std::streamsize>(
        std::min(left_, static_cast<std::size_t>(std::max<std::streamsize>(size, 0))));
    bytes.append(from, static_cast<std::size_t>(taken));
    left_ -= static_cast<std::size_t>(taken);
    if (taken < size && failing_ == Failing::Throwing) throw DiskGone();
    return taken;
  }
  int_type overflow(int_type c) override {
    const char byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? traits_type::not_eof(c) : traits_type::eof();
  }

 private:
  std::size_t left_;
  Failing failing_;
};

// Gives the first `limit` bytes and then ends, or throws.
class LimitedSource : public std::streambuf {
 public:
  LimitedSource(const std::string& bytes, std::size_t limit, Failing failing)
      : bytes_(bytes.substr(0, limit)), failing_(failing) {
    setg(bytes_.data(), bytes_.data(), bytes_.data() + bytes_.size());
  }

 protected:
  int_type underflow() override {
    if (failing_ == Failing::Throwing) throw DiskGone();
    return traits_type::eof();
  }

 private:
  std::string bytes_;
  Failing failing_;
};

Scene filled() {
  Scene scene(UniqueId::hash("a scene"));
  fillAllClasses(flat(scene));
  return scene;
}

std::string fileOf(const Scene& scene) {
  std::ostringstream file;
  Scene::serialize(scene, file);
  return file.str();
}

// First byte and the one behind the last.
using Places = std::vector<std::pair<std::size_t, std::size_t>>;

// Where the values stand in the file. With their objects each begins behind the flag that says that
// there is one: from there on a value is due.
Places valuesIn(const std::string& file, Scene& scene, bool withObjects) {
  using namespace vrnt::data;
  Places places;
  const auto add = [&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    const auto objectClass = static_cast<std::uint32_t>(ClassInfo<Desc>::kClass);
    const std::string bytes =
        streamOf(ValueHandle(vrdmGetInstanceValue(flat(scene), objectClass, 0)));
    const std::size_t at = file.find(bytes);
    EXPECT_NE(at, std::string::npos);
    std::size_t before = 0;
    if constexpr (kGroupCount<Desc> != 0) before += sizeof(typename Desc::Groups);
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
      const bool list = vrdmReferenceType(objectClass, slot).kind >= VRDM_REFERENCE_LIST;
      before += list ? 4 * sizeof(std::int32_t) : sizeof(std::int32_t);
    }
    EXPECT_EQ(file[at - before - 1], 1) << "the flag";
    places.emplace_back(withObjects ? at - before : at, at + bytes.size());
  };
  add(ClassTag<CameraDesc>{});
  add(ClassTag<LightDesc>{});
  add(ClassTag<MaterialDesc>{});
  return places;
}

bool within(const Places& places, std::size_t at) {
  return std::any_of(places.begin(), places.end(),
                     [at](const auto& place) { return place.first <= at && at < place.second; });
}

// What left a call.
enum class Ending { Returned, StreamFailure, Disk, Library };

template <typename Work>
Ending endingOf(Work work) {
  try {
    work();
    return Ending::Returned;
  } catch (const std::ios_base::failure&) {
    return Ending::StreamFailure;
  } catch (const DiskGone&) {
    return Ending::Disk;
  } catch (const vrnt::Exception& exception) {
    EXPECT_EQ(exception.code(), ErrorCode::UnknownError);
    return Ending::Library;
  }
}

// Without exceptions of the stream a failure is its state; with them it is what it throws, but for
// one within a value, which the value layer reports in its own way.
Ending expectedEnding(bool exceptions, Failing failing, bool inValue) {
  if (!exceptions) return Ending::Returned;
  if (inValue) return Ending::Library;
  return failing == Failing::State ? Ending::StreamFailure : Ending::Disk;
}

TEST(SceneStream, WrittenToAStreamThatFailsAtEachByte) {
  Scene scene = filled();
  const std::string before = dumpOf(scene);
  const std::string whole = fileOf(scene);
  const Places values = valuesIn(whole, scene, false);
  const std::int64_t live = liveAllocations();
  for (std::size_t limit = 0; limit < whole.size(); ++limit) {
    for (const Failing failing : {Failing::State, Failing::Throwing}) {
      for (const bool exceptions : {false, true}) {
        LimitedSink sink(limit, failing);
        std::ostream stream(&sink);
        if (exceptions) stream.exceptions(std::ios::badbit | std::ios::failbit);
        const Ending ending = endingOf([&] { Scene::serialize(scene, stream); });
        EXPECT_EQ(ending, expectedEnding(exceptions, failing, within(values, limit))) << limit;
        EXPECT_TRUE(stream.bad()) << limit;
        EXPECT_TRUE(sink.bytes == whole.substr(0, limit)) << limit;
      }
    }
  }
  EXPECT_EQ(liveAllocations(), live);
  EXPECT_EQ(dumpOf(scene), before);
  EXPECT_EQ(fileOf(scene), whole);
}

TEST(SceneStream, PrintedToAStreamThatFailsAtEachByte) {
  const Scene scene = filled();
  const std::string whole = dumpOf(scene);
  const std::int64_t live = liveAllocations();
  for (std::size_t limit = 0; limit < whole.size(); limit += 7) {
    for (const Failing failing : {Failing::State, Failing::Throwing}) {
      for (const bool exceptions : {false, true}) {
        LimitedSink sink(limit, failing);
        std::ostream stream(&sink);
        if (exceptions) stream.exceptions(std::ios::badbit | std::ios::failbit);
        const Ending ending = endingOf([&] { stream << scene; });
        EXPECT_EQ(ending, expectedEnding(exceptions, failing, false)) << limit;
        EXPECT_TRUE(stream.fail()) << limit;
        EXPECT_TRUE(sink.bytes == whole.substr(0, limit)) << limit;
      }
    }
  }
  EXPECT_EQ(liveAllocations(), live);
}

// The live objects of a scene.
std::uint32_t liveObjects(Scene& scene) {
  std::uint32_t count = 0;
  for (std::uint32_t objectClass = 0; objectClass < kClasses; ++objectClass) {
    const auto size = static_cast<std::int32_t>(vrdmContainerSize(flat(scene), objectClass));
    for (std::int32_t i = 0; i < size; ++i) count += vrdmValid(flat(scene), objectClass, i) ? 1 : 0;
  }
  return count;
}

constexpr std::size_t kMagicEnd = 8;
// The number of the version fits its first byte, and the others are zero.
constexpr std::size_t kVersionKnown = 9;

TEST(SceneStream, ReadFromAStreamThatEndsAtEachByte) {
  Scene scene = filled();
  const std::string whole = fileOf(scene);
  const Places due = valuesIn(whole, scene, true);
  // Without the length of its type's text a value can't be read in any case.
  Places certain;
  for (const auto& place : valuesIn(whole, scene, false)) {
    certain.emplace_back(due[certain.size()].first, place.first + sizeof(std::uint64_t));
  }
  std::uint32_t objects = 0;
  std::int64_t live = 0;
  // The first round makes what the library keeps.
  for (int round = 0; round < 2; ++round) {
    live = liveAllocations();
    objects = 0;
    for (std::size_t limit = 0; limit <= whole.size(); ++limit) {
      for (const Failing failing : {Failing::State, Failing::Throwing}) {
        LimitedSource source(whole, limit, failing);
        std::istream stream(&source);
        std::optional<vrnt::Result<Scene>> result;
        const Ending ending =
            endingOf([&] { result.emplace(Scene::deserialize(stream, UniqueId::null())); });
        EXPECT_EQ(stream.fail(), limit < whole.size()) << limit;
        EXPECT_EQ(stream.bad(), limit < whole.size() && failing == Failing::Throwing) << limit;
        if (ending != Ending::Returned) {
          EXPECT_EQ(ending, Ending::Library) << limit;
          EXPECT_TRUE(within(due, limit)) << limit;
          continue;
        }
        EXPECT_FALSE(within(certain, limit)) << limit;
        if (limit < kMagicEnd) {
          EXPECT_EQ(result->error().code(), ErrorCode::IoError) << limit;
          EXPECT_EQ(result->error().message(), nullptr);
          continue;
        }
        if (limit < kVersionKnown) {
          EXPECT_EQ(result->error().code(), ErrorCode::VersionMismatch) << limit;
          continue;
        }
        ASSERT_TRUE(result->hasValue()) << limit;
        Scene& read = **result;
        const std::uint32_t found = liveObjects(read);
        EXPECT_GE(found, objects) << limit;
        objects = found;
        if (limit == whole.size()) {
          EXPECT_TRUE(Scene::equivalent(read, scene));
        }
        // A scene that came in part can be used like any other.
        if (limit % 64 == 0 && !within(due, limit)) {
          EXPECT_FALSE(dumpOf(read).empty());
          vrdmCreateInstance(flat(read), VRDM_CLASS_SHAPE);
          EXPECT_EQ(liveObjects(read), found + 1);
        }
      }
    }
  }
  EXPECT_EQ(liveAllocations(), live);
  EXPECT_EQ(objects, kClasses);
}

TEST(SceneStream, ReadFromAStreamWithExceptionsThatEndsAtEachByte) {
  Scene scene = filled();
  const std::string whole = fileOf(scene);
  const Places values = valuesIn(whole, scene, false);
  std::int64_t live = 0;
  for (int round = 0; round < 2; ++round) {
    live = liveAllocations();
    for (std::size_t limit = 0; limit < whole.size(); ++limit) {
      for (const Failing failing : {Failing::State, Failing::Throwing}) {
        LimitedSource source(whole, limit, failing);
        std::istream stream(&source);
        stream.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
        const Ending ending = endingOf([&] { Scene::deserialize(stream, UniqueId::null()); });
        EXPECT_EQ(ending, expectedEnding(true, failing, within(values, limit))) << limit;
      }
    }
  }
  EXPECT_EQ(liveAllocations(), live);
  LimitedSource source(whole, whole.size(), Failing::Throwing);
  std::istream stream(&source);
  stream.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
  const auto read = Scene::deserialize(stream, UniqueId::null());
  EXPECT_TRUE(Scene::equivalent(read.value(), scene));
}

// It can't go back to where it stood.
TEST(SceneStream, OfAnotherKindThatHasNoPositions) {
  LimitedSource source("eight bytes and more", 20, Failing::State);
  std::istream stream(&source);
  const auto read = Scene::deserialize(stream, UniqueId::null());
  EXPECT_EQ(read.error().code(), ErrorCode::InvalidArguments);
  EXPECT_STREQ(read.error().message(), "Bad header: this is not a Vornath scene binary.");
  EXPECT_TRUE(stream.fail());
}

// A device without room takes nothing, and the call returns as for a file that can't be opened.
TEST(SceneStream, OnADeviceWithoutRoom) {
  Scene scene = filled();
  const std::string before = dumpOf(scene);
  vrdmSerialize(flat(scene), "/dev/full");
  vrdmSerialize(flat(scene), "/no such folder/scene.vrnscene");
  EXPECT_EQ(dumpOf(scene), before);
  EXPECT_EQ(vrdmDeserialize("/"), nullptr);
}

TEST(IdStream, PrintedToAStreamThatFailsAtEachByte) {
  const UniqueId id = UniqueId::hash("abc");
  for (std::size_t limit = 0; limit < 32; ++limit) {
    for (const Failing failing : {Failing::State, Failing::Throwing}) {
      for (const bool exceptions : {false, true}) {
        LimitedSink sink(limit, failing);
        std::ostream stream(&sink);
        if (exceptions) stream.exceptions(std::ios::badbit | std::ios::failbit);
        const Ending ending = endingOf([&] { stream << id; });
        EXPECT_EQ(ending, expectedEnding(exceptions, failing, false)) << limit;
        EXPECT_TRUE(stream.fail());
        EXPECT_EQ(sink.bytes.size(), limit);
        EXPECT_EQ(stream.fill(), ' ');
        EXPECT_EQ(stream.width(), 0);
        EXPECT_EQ(stream.flags() & std::ios::basefield, std::ios::dec);
      }
    }
  }
}

}  // namespace
