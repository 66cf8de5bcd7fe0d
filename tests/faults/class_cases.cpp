// The exported operations of C++ classes.
#include <array>
#include <cstring>
#include <sstream>

#include "all_classes.hpp"
#include "fault_table.hpp"
#include "support/allocations.hpp"
#include "vornath_data/container_copy.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/texture.hpp"
#include "vornath_data/texture_references.hpp"
#include "vornath_data/unique_id.hpp"

namespace vornath_test {
namespace {

using vrnt::ErrorCode;
using vrnt::ErrorRecord;
using vrnt::Exception;
using vrnt::UniqueId;
using vrnt::data::Scene;

// Makes a T that lives until it was looked at.
template <typename T>
FaultCase constructing(const char* function, std::function<void(std::optional<T>&)> construct,
                       std::function<void(const T&)> right, const char* what = "") {
  return {function, what, Promise::BadAlloc, [=] {
            const auto made = std::make_shared<std::optional<T>>();
            Call call;
            call.make = [=](vrntValuesError_t**) {
              construct(*made);
              return made->has_value();
            };
            call.right = [=] {
              right(**made);
              made->reset();
            };
            call.before = [=] { made->reset(); };
            call.intact = [=] { EXPECT_FALSE(made->has_value()); };
            return call;
          }};
}

// Assigns to a T, which keeps what it had if that fails.
template <typename T>
FaultCase assigning(const char* function, const T& from, const T& to,
                    std::function<std::string(const T&)> text) {
  return {function, "", Promise::BadAlloc, [=] {
            const auto target = std::make_shared<std::optional<T>>();
            Call call;
            call.before = [=] { target->emplace(to); };
            call.make = [=](vrntValuesError_t**) {
              **target = from;
              return true;
            };
            call.right = [=] {
              EXPECT_EQ(text(**target), text(from));
              target->reset();
            };
            call.intact = [=] {
              EXPECT_EQ(text(**target), text(to));
              target->reset();
            };
            return call;
          }};
}

void addErrors(FaultCases& cases) {
  const std::string words = "words that are longer than what a string holds in place";
  const std::function<std::string(const ErrorRecord&)> recordText = [](const ErrorRecord& record) {
    return std::string(record.text());
  };
  const std::function<std::string(const Exception&)> what = [](const Exception& exception) {
    return std::string(exception.what());
  };
  const auto isText = [words](const ErrorRecord& record) { EXPECT_EQ(record.text(), words); };
  const auto isWhat = [words](const Exception& exception) { EXPECT_EQ(exception.what(), words); };

  cases.push_back(constructing<ErrorRecord>(
      "vrnt::ErrorRecord::ErrorRecord(vrnt::ErrorCode, std::basic_string_view<char, "
      "std::char_traits<char> >)",
      [words](std::optional<ErrorRecord>& made) { made.emplace(ErrorCode::IoError, words); },
      isText));
  const ErrorRecord record(ErrorCode::IoError, words);
  cases.push_back(constructing<ErrorRecord>(
      "vrnt::ErrorRecord::ErrorRecord(vrnt::ErrorRecord const&)",
      [record](std::optional<ErrorRecord>& made) { made.emplace(record); }, isText));
  cases.push_back(assigning<ErrorRecord>("vrnt::ErrorRecord::operator=(vrnt::ErrorRecord const&)",
                                         record, ErrorRecord(ErrorCode::TimedOut, "before"),
                                         recordText));
  cases.push_back(quiet("vrnt::ErrorRecord::ErrorRecord(vrnt::ErrorRecord&&)", [record, words] {
    return [held = std::make_shared<ErrorRecord>(record), words] {
      ErrorRecord moved(std::move(*held));
      const bool right = moved.text() == words && held->message() == nullptr;
      *held = std::move(moved);
      return right;
    };
  }));
  cases.push_back(quiet("vrnt::ErrorRecord::operator=(vrnt::ErrorRecord&&)", [record, words] {
    return [held = std::make_shared<ErrorRecord>(record), words] {
      ErrorRecord moved;
      moved = std::move(*held);
      const bool right = moved.text() == words;
      *held = std::move(moved);
      return right;
    };
  }));
  cases.push_back(quiet("vrnt::ErrorRecord::text() const", [record, words] {
    return [record, words] { return record.text() == words; };
  }));
  cases.push_back(quiet("vrnt::ErrorRecord::~ErrorRecord()", [record] {
    auto held = std::make_shared<std::vector<ErrorRecord>>(2, record);
    return [held] {
      held->pop_back();
      return true;
    };
  }));

  cases.push_back(constructing<Exception>(
      "vrnt::Exception::Exception(vrnt::ErrorCode, char const*)",
      [words](std::optional<Exception>& made) { made.emplace(ErrorCode::IoError, words.c_str()); },
      isWhat));
  cases.push_back(constructing<Exception>(
      "vrnt::Exception::Exception(vrnt::ErrorCode, std::basic_string_view<char, "
      "std::char_traits<char> >)",
      [words](std::optional<Exception>& made) {
        made.emplace(ErrorCode::IoError, std::string_view(words));
      },
      isWhat));
  cases.push_back(constructing<Exception>(
      "vrnt::Exception::Exception(vrnt::ErrorCode, char const*, vrnt::detail::FormatArgument "
      "const*, unsigned long)",
      [words](std::optional<Exception>& made) {
        made.emplace(ErrorCode::IoError, "{} and {}: {}", 1, 2.5, words);
      },
      [words](const Exception& exception) { EXPECT_EQ(exception.what(), "1 and 2.5: " + words); }));
  const Exception exception(ErrorCode::IoError, words.c_str());
  cases.push_back(constructing<Exception>(
      "vrnt::Exception::Exception(vrnt::Exception const&)",
      [exception](std::optional<Exception>& made) { made.emplace(exception); }, isWhat));
  cases.push_back(assigning<Exception>("vrnt::Exception::operator=(vrnt::Exception const&)",
                                       exception, Exception(ErrorCode::TimedOut, "before"), what));
  cases.push_back(quiet("vrnt::Exception::Exception(vrnt::ErrorRecord&&)", [record, words] {
    return [held = std::make_shared<std::vector<ErrorRecord>>(2, record), words] {
      const Exception taken(std::move(held->back()));
      held->pop_back();
      return taken.what() == words;
    };
  }));
  cases.push_back(quiet("vrnt::Exception::Exception(vrnt::Exception&&)", [exception, words] {
    return [held = std::make_shared<Exception>(exception), words] {
      Exception moved(std::move(*held));
      const bool right = moved.what() == words;
      *held = std::move(moved);
      return right;
    };
  }));
  cases.push_back(quiet("vrnt::Exception::operator=(vrnt::Exception&&)", [exception, words] {
    return [held = std::make_shared<std::array<Exception, 2>>(
                std::array{exception, Exception(ErrorCode::IoError)}),
            words] {
      (*held)[1] = std::move((*held)[0]);
      const bool right = (*held)[1].what() == words;
      (*held)[0] = std::move((*held)[1]);
      return right;
    };
  }));
  cases.push_back(quiet("vrnt::Exception::what() const", [exception, words] {
    return [exception, words] { return exception.what() == words; };
  }));
  cases.push_back(quiet("vrnt::Exception::~Exception()", [exception] {
    auto held = std::make_shared<std::vector<Exception>>(2, exception);
    return [held] {
      held->pop_back();
      return true;
    };
  }));
  cases.push_back(quiet("VornathValuesAssertionFailure::~VornathValuesAssertionFailure()", [] {
    return [] {
      const VornathValuesAssertionFailure failure;
      return failure.what() != nullptr;
    };
  }));
}

void addIds(FaultCases& cases) {
  const UniqueId abc = UniqueId::hash("abc");
  const auto hashing = [abc](const char* function, std::function<UniqueId()> hash) {
    return FaultCase{function, "", Promise::BadAlloc, [=] {
                       const auto id = std::make_shared<UniqueId>();
                       Call call;
                       call.make = [=](vrntValuesError_t**) {
                         *id = hash();
                         return true;
                       };
                       call.right = [=] { EXPECT_EQ(*id, abc); };
                       return call;
                     }};
  };
  cases.push_back(quiet("vrnt::UniqueId::hash(char const*)",
                        [abc] { return [abc] { return UniqueId::hash("abc") == abc; }; }));
  cases.push_back(quiet("vrnt::UniqueId::hash(char const*, unsigned long)",
                        [abc] { return [abc] { return UniqueId::hash("abcd", 3) == abc; }; }));
  cases.push_back(hashing("vrnt::UniqueId::Hasher::Hasher()", [] {
    UniqueId::Hasher hasher;
    hasher.update("abc", 3);
    return hasher.finalize();
  }));
  for (const char* function : {"vrnt::UniqueId::Hasher::update(void const*, unsigned long)",
                               "vrnt::UniqueId::Hasher::finalize()"}) {
    cases.push_back(quiet(function, [abc] {
      return [hasher = std::make_shared<UniqueId::Hasher>(), abc] {
        hasher->update("ab", 2);
        hasher->update("c", 1);
        return hasher->finalize() == abc;
      };
    }));
  }
  cases.push_back(quiet("vrnt::UniqueId::Hasher::~Hasher()", [] {
    auto hashers = std::make_shared<std::vector<std::unique_ptr<UniqueId::Hasher>>>();
    for (int i = 0; i < 2; ++i) hashers->push_back(std::make_unique<UniqueId::Hasher>());
    return [hashers] {
      hashers->pop_back();
      return true;
    };
  }));
  cases.push_back(quiet("vrnt::UniqueId::generate()", [] {
    return [] { return UniqueId::generate() != UniqueId::generate(); };
  }));
  cases.push_back(
      quiet("vrnt::UniqueId::null()", [] { return [] { return UniqueId::null().isNull(); }; }));
  cases.push_back(
      quiet("vrnt::UniqueId::isNull() const", [abc] { return [abc] { return !abc.isNull(); }; }));
  cases.push_back(
      quiet("vrnt::UniqueId::size()", [] { return [] { return UniqueId::size() == 16; }; }));
  for (const char* function : {"vrnt::UniqueId::begin()", "vrnt::UniqueId::end()"}) {
    cases.push_back(quiet(
        function, [abc] { return [id = abc]() mutable { return id.end() - id.begin() == 16; }; }));
  }
  for (const char* function : {"vrnt::UniqueId::begin() const", "vrnt::UniqueId::end() const"}) {
    cases.push_back(
        quiet(function, [abc] { return [abc] { return abc.end() - abc.begin() == 16; }; }));
  }
  cases.push_back(quiet("vrnt::UniqueId::operator=(vrnt::UniqueId const&)", [abc] {
    return [abc] {
      UniqueId id;
      id = abc;
      return id == abc;
    };
  }));
  cases.push_back(quiet("vrnt::UniqueId::operator=(vrnt::UniqueId&&)", [abc] {
    return [abc] {
      UniqueId from = abc;
      UniqueId id;
      id = std::move(from);
      return id == abc;
    };
  }));
  cases.push_back(quiet("vrnt::operator==(vrnt::UniqueId const&, vrnt::UniqueId const&)",
                        [abc] { return [abc] { return !(abc == UniqueId::null()); }; }));
  std::ostringstream text;
  text << abc;
  cases.push_back(quiet("vrnt::UniqueId::parse(char const*)", [abc, text = text.str()] {
    return [abc, text] { return *UniqueId::parse(text.c_str()) == abc; };
  }));
  // The words of a refusal need memory.
  for (const char* wrong : {"ab", "xx"}) {
    cases.push_back({"vrnt::UniqueId::parse(char const*)", "refusal", Promise::BadAlloc, [wrong] {
                       const auto result =
                           std::make_shared<std::optional<vrnt::Result<UniqueId>>>();
                       Call call;
                       call.make = [=](vrntValuesError_t**) {
                         result->emplace(UniqueId::parse(wrong));
                         return true;
                       };
                       call.right = [=] {
                         EXPECT_EQ((*result)->error().code(), ErrorCode::ParseFailed);
                         result->reset();
                       };
                       return call;
                     }});
  }
  // A stream that can't take all is left bad; no exception comes out of it unless it is asked to.
  cases.push_back({"vrnt::operator<<(std::ostream&, vrnt::UniqueId const&)", "", Promise::Failure,
                   [abc, text = text.str()] {
                     const auto stream = std::make_shared<std::optional<std::ostringstream>>();
                     Call call;
                     call.before = [=] { stream->emplace(); };
                     call.make = [=](vrntValuesError_t**) {
                       **stream << abc;
                       return !(*stream)->fail();
                     };
                     call.right = [=] {
                       EXPECT_EQ((*stream)->str(), text);
                       stream->reset();
                     };
                     call.intact = [=] {
                       EXPECT_TRUE((*stream)->bad());
                       EXPECT_EQ((*stream)->fill(), ' ');
                       EXPECT_EQ((*stream)->width(), 0);
                       stream->reset();
                     };
                     return call;
                   }});
}

void addScenes(FaultCases& cases) {
  const auto filled = [](bool gaps = true) {
    const auto scene = std::make_shared<Scene>(UniqueId::hash("a scene"));
    fillAllClasses(flat(*scene), gaps);
    return scene;
  };
  cases.push_back(
      {"vrnt::data::Scene::equivalent(vrnt::data::Scene const&, vrnt::data::Scene const&)", "",
       Promise::BadAlloc, [filled] {
         const auto answer = std::make_shared<bool>();
         const std::shared_ptr<const Scene> a = filled();
         const std::string before = dumpOf(*a);
         Call call;
         call.make = [a, b = std::shared_ptr<const Scene>(filled()), answer](vrntValuesError_t**) {
           *answer = Scene::equivalent(*a, *b);
           return true;
         };
         call.right = [=] { EXPECT_TRUE(*answer); };
         call.intact = [=] { EXPECT_EQ(dumpOf(*a), before); };
         return call;
       }});
  cases.push_back({"vrnt::data::Scene::import(vrnt::data::Scene const&)", "", Promise::BadAlloc,
                   [filled] {
                     const std::shared_ptr<const Scene> source = filled();
                     const std::string before = dumpOf(*source);
                     const auto target = std::make_shared<std::shared_ptr<Scene>>();
                     Call call;
                     call.before = [=] { *target = filled(false); };
                     call.make = [=](vrntValuesError_t**) {
                       (*target)->import(*source);
                       return true;
                     };
                     call.right = [=] {
                       EXPECT_EQ((*target)->container<vrnt::data::ShapeDesc>().size(), 4u);
                       EXPECT_EQ((*target)->container<vrnt::detail::TextureDesc>().size(), 3u);
                       EXPECT_EQ(dumpOf(*source), before);
                       target->reset();
                     };
                     // What came so far can be printed, written, added to and compared.
                     call.intact = [=] {
                       EXPECT_EQ(dumpOf(*source), before);
                       Scene& partial = **target;
                       EXPECT_FALSE(dumpOf(partial).empty());
                       EXPECT_TRUE(Scene::equivalent(partial, partial));
                       std::stringstream file;
                       Scene::serialize(partial, file);
                       const auto read = Scene::deserialize(file, UniqueId::null());
                       EXPECT_TRUE(Scene::equivalent(partial, read.value()));
                       partial.import(*source);
                       EXPECT_TRUE(vrdmValid(flat(partial), VRDM_CLASS_SHAPE, 0));
                       target->reset();
                     };
                     return call;
                   },
                   Allocations::ToTheArguments});
  // The stream has its memory: what fails is the library's.
  struct Sink : std::streambuf {
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
  };
  struct Output {
    Sink sink;
    std::ostream stream{&sink};
  };
  cases.push_back({"vrnt::data::Scene::serialize(vrnt::data::Scene const&, std::ostream&)", "",
                   Promise::BadAlloc, [filled] {
                     const auto output = std::make_shared<Output>();
                     const std::shared_ptr<const Scene> scene = filled();
                     const std::string before = dumpOf(*scene);
                     Call call;
                     call.make = [=](vrntValuesError_t**) {
                       Scene::serialize(*scene, output->stream);
                       return true;
                     };
                     call.right = [=] { EXPECT_TRUE(output->stream.good()); };
                     call.intact = [=] { EXPECT_EQ(dumpOf(*scene), before); };
                     return call;
                   }});
  cases.push_back({"vrnt::data::operator<<(std::ostream&, vrnt::data::Scene const&)", "",
                   Promise::BadAlloc, [filled] {
                     const auto output = std::make_shared<Output>();
                     Call call;
                     call.make = [output, scene = filled()](vrntValuesError_t**) {
                       output->stream << *scene;
                       return true;
                     };
                     call.right = [=] { EXPECT_TRUE(output->stream.good()); };
                     return call;
                   }});
  cases.push_back({"vrnt::data::Scene::deserialize(std::istream&, vrnt::UniqueId const&)", "",
                   Promise::BadAlloc, [filled] {
                     const std::shared_ptr<const Scene> scene = filled();
                     const auto file = std::make_shared<std::stringstream>();
                     Scene::serialize(*scene, *file);
                     const auto result = std::make_shared<std::optional<vrnt::Result<Scene>>>();
                     Call call;
                     call.before = [=] {
                       file->clear();
                       file->seekg(0);
                     };
                     call.make = [=](vrntValuesError_t**) {
                       result->emplace(Scene::deserialize(*file, UniqueId::null()));
                       return true;
                     };
                     call.right = [=] {
                       EXPECT_TRUE(Scene::equivalent((*result)->value(), *scene));
                       result->reset();
                     };
                     call.intact = [=] { EXPECT_FALSE(result->has_value()); };
                     return call;
                   }});
  cases.push_back(
      {"vrnt::data::extractTextureReferences(vrnt::Value const&)", "", Promise::BadAlloc, [] {
         const auto count = std::make_shared<std::size_t>();
         Call call;
         call.make = [count, value = vrnt::Value::adopt(
                                 parseValue("{ a = { texture_ref = 4; }; b = { c = { "
                                            "float_texture = 2; }; }; }")
                                     .release())](vrntValuesError_t**) {
           *count = vrnt::data::extractTextureReferences(value).size();
           return true;
         };
         call.right = [count] { EXPECT_EQ(*count, 2u); };
         return call;
       }});
}

void addTextures(FaultCases& cases) {
  cases.push_back(quiet("vrnt::parseTextureFormat(char const*)",
                        [] { return [] { return vrnt::parseTextureFormat("SRGB8") == 2; }; }));
  cases.push_back(quiet("vrnt::parseTextureLayout(char const*)",
                        [] { return [] { return vrnt::parseTextureLayout("no layout") == -1; }; }));
  cases.push_back(quiet("vrnt::parseTextureType(char const*)",
                        [] { return [] { return vrnt::parseTextureType("Sphere data") == 4; }; }));
  cases.push_back(quiet("vrnt::toString(vrnt::TextureFormat)", [] {
    return [] { return std::strcmp(vrnt::toString(vrnt::TextureFormat::SRGB8), "SRGB8") == 0; };
  }));
  cases.push_back(quiet("vrnt::toString(vrnt::TextureLayout)", [] {
    return [] { return std::strcmp(vrnt::toString(vrnt::TextureLayout{77}), "Unknown") == 0; };
  }));
  cases.push_back(quiet("vrnt::toString(vrnt::TextureType)", [] {
    return [] { return std::strcmp(vrnt::toString(vrnt::TextureType{77}), "Unknown") == 0; };
  }));
  cases.push_back(quiet("vrnt::detail::TextureDesc::size() const", [] {
    return [] { return vrnt::detail::TextureDesc{3, 2, 1}.size() == 6; };
  }));
}

void addCopying(FaultCases& cases) {
  constexpr const char* kCopy =
      "vrnt::data::detail::trivialContainerCopy(void*, void const*, unsigned long)";
  cases.push_back(quiet(kCopy, [] {
    const auto from = std::make_shared<std::vector<char>>(1000, 'a');
    const auto to = std::make_shared<std::vector<char>>(1000, 'b');
    return [=] {
      vrnt::data::detail::trivialContainerCopy(to->data(), from->data(), 1000);
      return *to == *from;
    };
  }));
  // Where the task scheduler has no memory to start with, the caller copies alone.
  cases.push_back({kCopy, "large", Promise::NeverFails,
                   [] {
                     constexpr std::size_t kLarge = std::size_t{8} << 20;
                     const auto from = std::make_shared<std::vector<char>>(kLarge, 'a');
                     const auto to = std::make_shared<std::vector<char>>();
                     Call call;
                     call.before = [=] { to->assign(kLarge, 'b'); };
                     call.make = [=](vrntValuesError_t**) {
                       vrnt::data::detail::trivialContainerCopy(to->data(), from->data(), kLarge);
                       return true;
                     };
                     call.right = [=] { EXPECT_TRUE(*to == *from); };
                     return call;
                   },
                   Allocations::FirstCall});
}

}  // namespace

void addClassCases(FaultCases& cases) {
  addErrors(cases);
  addIds(cases);
  addScenes(cases);
  addTextures(cases);
  addCopying(cases);
}

}  // namespace vornath_test
