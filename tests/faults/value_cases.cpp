// Values.
#include <array>
#include <cstring>

#include "fault_table.hpp"
#include "types/type.hpp"

namespace vornath_test {
namespace {

constexpr std::array<const char*, 6> kValues = {
    "{ a = 1; b = [ 1.0, 2.0 ]; c = &{ d = true; }; }",
    "[ 1, 2, 3, 4 | 2, 2 ]",
    "RED : enum { RED; GREEN; BLUE; }",
    "$(0x0000000000000010:{ float f; })",
    "&&[ : float[3] | 2 ]",
    "[ { s = &[ 1c, 2c ]; h = 0.5h; }, { s = &[ 3c, 4c ]; h = 1.5h; } ]",
};

// A block as its count and text tell it.
struct Seen {
  explicit Seen(const SharedValue& value)
      : count(vrntValueBinary(value.get())->refCount), text(textOf(value.get())) {}
  bool operator==(const Seen& other) const = default;

  std::uint32_t count;
  std::string text;
};

// A call that must leave a value alone.
Call leaving(const SharedValue& value, Call call) {
  call.intact = [value, before = Seen(value), intact = call.intact] {
    EXPECT_TRUE(Seen(value) == before);
    intact();
  };
  call.right = [value, before = Seen(value), right = call.right] {
    right();
    EXPECT_TRUE(Seen(value) == before);
  };
  return call;
}

struct Bytes {
  std::string written;
  std::size_t read = 0;
};

void append(const void* bytes, std::uint64_t size, void* user) {
  static_cast<Bytes*>(user)->written.append(static_cast<const char*>(bytes), size);
}
void take(void* bytes, std::uint64_t size, void* user) {
  auto& from = *static_cast<Bytes*>(user);
  std::memcpy(bytes, from.written.data() + from.read, size);
  from.read += size;
}
void drop(const void*, std::uint64_t, void*) {}

std::shared_ptr<Bytes> streamOf(const char* text) {
  auto bytes = std::make_shared<Bytes>();
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(parseValue(text).get(), append, bytes.get(), &error);
  EXPECT_EQ(error, nullptr);
  return bytes;
}

void addMaking(FaultCases& cases) {
  for (const char* text : {"int[2,3]", "{ void*[100] a; int* b; }", "{ }"}) {
    cases.push_back({"vrntValueCreate", text, Promise::ErrorObject, [text] {
                       const SharedType type = sharedType(text);
                       vrntValuesError_t* error = nullptr;
                       return makingValue(
                           [type](vrntValuesError_t** location) {
                             return vrntValueCreate(type.get(), location);
                           },
                           textOf(ValueHandle(vrntValueCreate(type.get(), &error))));
                     }});
  }
  cases.push_back(
      {"vrntValueCreateDefault", "", Promise::ErrorObject, [] {
         return makingValue(
             [type = sharedType("{ int @default=3 @min=0 @max=9 n; { float4 "
                                "@default=float4(1.0, 0.0, 0.0, 0.0) x; } @a m; }[2]")](
                 vrntValuesError_t** error) { return vrntValueCreateDefault(type.get(), error); },
             "[ { n = 3; m = { x = float4(1.0, 0.0, 0.0, 0.0); }; }, { n = 3; m = { x "
             "= float4(1.0, 0.0, 0.0, 0.0); }; } ]");
       }});
  cases.push_back(
      {"vrntValueCreateDefault", "spectra", Promise::ErrorObject, [] {
         return makingValue(
             [type = sharedType("{ { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* "
                                "spectrum; }[2] s; int @default=3 n; }")](
                 vrntValuesError_t** error) { return vrntValueCreateDefault(type.get(), error); },
             "{ s = [ { encoding = LUMINANCE : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ "
             "0.0 ]; }, { encoding = LUMINANCE : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ "
             "0.0 ]; } : { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } ]; n "
             "= 3; }");
       }});
  for (const char* text : kValues) {
    cases.push_back(
        {"vrntValueParse", "", Promise::ErrorObject, [text] {
           return makingValue(
               [text](vrntValuesError_t** error) { return vrntValueParse(text, error); },
               textOf(parseValue(text)));
         }});
  }
  // Numbers that are read by a stream, which keeps a lack of memory to itself.
  for (const char* text : {"[ 1e99, -1e99 ]", "{ a = 1e-99; b = 2e; }"}) {
    cases.push_back(
        {"vrntValueParse", "number", Promise::ErrorObject, [text] {
           return makingValue(
               [text](vrntValuesError_t** error) { return vrntValueParse(text, error); },
               textOf(parseValue(text)));
         }});
  }
  cases.push_back(quiet("vrntValueParse", [] {
    return [block = sharedValue("[ 1, 2 ]")] {
      vrntValuesError_t* error = nullptr;
      vrntValue_t* const shared = vrntValueParse(block.get(), &error);
      const bool right = shared == block.get() && block->refCount == 2;
      vrntValueDestroy(shared);
      return right;
    };
  }));
  cases.push_back({"vrntValueFromView", "", Promise::ErrorObject, [] {
                     const SharedValue value = sharedValue("{ a = 1; b = { c = &[ 2.0 ]; }; }");
                     return leaving(
                         value, makingValue(
                                    [value](vrntValuesError_t** error) {
                                      vrntValueView_t view{};
                                      vrntValueStructField(&view, vrntValueType(value.get()), 1);
                                      return vrntValueFromView(value.get(), &view, error);
                                    },
                                    "{ c = &[ 2.0 ]; }"));
                   }});
  for (const char* text : kValues) {
    cases.push_back({"vrntValueDeserialize", "", Promise::ErrorObject, [text] {
                       const std::shared_ptr<Bytes> bytes = streamOf(text);
                       return makingValue(
                           [bytes](vrntValuesError_t** error) {
                             bytes->read = 0;
                             return vrntValueDeserialize(take, bytes.get(), error);
                           },
                           textOf(parseValue(text)));
                     }});
  }
  cases.push_back(
      {"vrntCoerce", "", Promise::ErrorObject, [] {
         const SharedValue source = sharedValue(
             "{ a = 1; c = &[ 1.0, 2.0 ]; e = B : enum { A; B; }; l = [ { x = 1; y = 2; } ]; }");
         return leaving(
             source,
             makingValue(
                 [source, target = sharedType("{ int @default=9 z; enum { B; A; } e; float[]* c; { "
                                              "int y; int w; }[3] l; int a; }")](
                     vrntValuesError_t** error) {
                   return vrntCoerce(target.get(), source.get(), error);
                 },
                 "{ z = 9; e = B : enum { B; A; }; c = &[ 1.0, 2.0 ]; l = [ { y = 2; w = 0; }, { y "
                 "= 0; w = 0; }, { y = 0; w = 0; } ]; a = 1; }"));
       }});
  cases.push_back(
      {"vrntBuildSpecializationParameters", "", Promise::ErrorObject, [] {
         const SharedValue source = sharedValue(
             "{ a = 1; b = &[ 1.0 ]; l = [ { x = 1; y = 2.0; }, { x = 3; y = 4.0; } ]; }");
         return leaving(source,
                        makingValue(
                            [source, type = sharedType("{ int @no_specialize a; float[]* b; { int "
                                                       "@no_specialize x; float y; }[2] l; }")](
                                vrntValuesError_t** error) {
                              return vrntBuildSpecializationParameters(type.get(), source.get(),
                                                                       error);
                            },
                            "{ b = &[ 1.0 ]; l = [ { y = 2.0; }, { y = 4.0; } ]; }"));
       }});
}

void addReading(FaultCases& cases) {
  const auto nested = [] { return sharedValue("{ a = 1; b = &[ 1, 2 ]; }"); };
  cases.push_back(quiet("vrntValueCopy", [nested] {
    return [value = nested()] {
      const bool same = vrntValueCopy(value.get()) == value.get() && value->refCount == 2;
      vrntValueDestroy(value.get());
      return same;
    };
  }));
  cases.push_back(quiet("vrntValueDestroy", [] {
    auto values = std::make_shared<std::vector<ValueHandle>>();
    for (const char* text : {kValues[0], kValues[5]}) values->push_back(parseValue(text));
    return [values] {
      values->pop_back();
      return true;
    };
  }));
  cases.push_back(quiet("vrntValueType", [nested] {
    return [value = nested()] { return vrntTypeFieldCount(vrntValueType(value.get())) == 2; };
  }));
  cases.push_back(quiet("vrntValueBinary", [nested] {
    return [value = nested()] { return vrntValueBinary(value.get()) == value.get(); };
  }));
  cases.push_back(quiet("vrntValueData", [nested] {
    return [value = nested()] {
      return *static_cast<const std::int32_t*>(vrntValueData(value.get())) == 1;
    };
  }));
  cases.push_back(quiet("vrntValueStructField", [nested] {
    return [value = nested()] {
      vrntValueView_t view{};
      return vrntValueStructField(&view, vrntValueType(value.get()), 1) == &view &&
             view.offset == 8;
    };
  }));
  cases.push_back(quiet("vrntValueArrayElement", [] {
    return [type = sharedType("int[2,3]")] {
      vrntValueView_t view{};
      const std::int32_t index[2]{1, 2};
      return vrntValueArrayElement(&view, type.get(), index) == &view && view.offset == 20;
    };
  }));
  cases.push_back(quiet("vrntValueDereference", [] {
    return [value = sharedValue("&[ 1, 2 ]")] {
      const vrntValueView_t view = wholeOf(value.get());
      vrntValue_t* const target = vrntValueDereference(value.get(), &view);
      const bool right = target->refCount == 2;
      vrntValueDestroy(target);
      return right;
    };
  }));
  // A chain of references that is too long for all its types to have their texts: behind its first
  // word stands one that has, and behind the next word one that hasn't.
  const auto longChain = [](auto call) {
    return [call] {
      const auto value = std::make_shared<SharedValue>();
      Call made = making<ValueHandle>(
          [value, call](vrntValuesError_t** error) { return call(value->get(), error); },
          [](vrntValue_t* target) {
            EXPECT_EQ(target->refCount, 2u);
            EXPECT_EQ(referencedBlock(target)->typeText,
                      "{ int " + std::string(5000, 'x') + "; }" + std::string(198, '*'));
          });
      made.intact = [value] { EXPECT_EQ(referencedBlock(value->get())->refCount, 1u); };
      made.before = [value] {
        value->reset();
        const std::string text = std::string(200, '&') + "{ " + std::string(5000, 'x') + " = 1; }";
        *value = sharedValue(text.c_str());
        EXPECT_EQ(referencedBlock(referencedBlock(value->get()))->typeText, nullptr);
      };
      return made;
    };
  };
  cases.push_back({"vrntValueDereference", "long", Promise::BadAlloc,
                   longChain([](const vrntValue_t* value, vrntValuesError_t**) {
                     const vrntValueView_t view = wholeOf(value);
                     return vrntValueDereference(value, &view);
                   })});
  cases.push_back({"vrntValueParse", "block", Promise::ErrorObject,
                   longChain([](const vrntValue_t* value, vrntValuesError_t** error) {
                     return vrntValueParse(referencedBlock(value), error);
                   })});
  cases.push_back({"vrntValueDereference", "foreign", Promise::BadAlloc, [] {
                     const auto foreign = std::make_shared<std::array<std::int32_t, 2>>();
                     *foreign = {7, 8};
                     const SharedValue value = sharedValue("$(0x0000000000000000:int[2])");
                     const std::uint64_t word =
                         reinterpret_cast<std::uintptr_t>(foreign->data()) * 2 + 1;
                     std::memcpy(reinterpret_cast<char*>(value.get()) + sizeof(vrntValue_t), &word,
                                 sizeof(word));
                     return makingValue(
                         [value, foreign](vrntValuesError_t**) {
                           const vrntValueView_t view = wholeOf(value.get());
                           return vrntValueDereference(value.get(), &view);
                         },
                         "[ 7, 8 ]");
                   }});
}

// A handle that shares its block with another one, so that a write moves it to a copy.
struct Written {
  explicit Written(const char* text) : other(parseValue(text)) {}
  ~Written() { end(); }
  void end() {
    if (handle != nullptr) vrntValueDestroy(std::exchange(handle, nullptr));
  }
  void begin() {
    end();
    handle = vrntValueCopy(other.get());
  }
  // Nothing happened: the same block, held twice, with the same bytes.
  void expectUntouched(const std::string& text) const {
    EXPECT_EQ(handle, other.get());
    EXPECT_EQ(other->refCount, 2u);
    EXPECT_EQ(textOf(other), text);
  }

  ValueHandle other;
  vrntValue_t* handle = nullptr;
};

Call writing(const char* text, std::function<bool(Written&, vrntValuesError_t**)> write,
             const char* changed) {
  const auto written = std::make_shared<Written>(text);
  const std::string unchanged = textOf(written->other);
  Call call;
  call.before = [written] { written->begin(); };
  call.make = [=](vrntValuesError_t** error) { return write(*written, error); };
  call.right = [=] {
    EXPECT_NE(written->handle, written->other.get());
    EXPECT_EQ(textOf(written->handle), changed);
    EXPECT_EQ(written->handle->refCount, 1u);
    EXPECT_EQ(textOf(written->other), unchanged);
    EXPECT_EQ(written->other->refCount, 1u);
    written->end();
  };
  call.intact = [=] { written->expectUntouched(unchanged); };
  return call;
}

void addWriting(FaultCases& cases) {
  constexpr const char* kBefore = "{ a = 1; b = &[ 1, 2 ]; }";
  cases.push_back({"vrntValueMap", "", Promise::ErrorObject, [] {
                     return writing(
                         kBefore,
                         [](Written& written, vrntValuesError_t** error) {
                           const vrntValueView_t view = wholeOf(written.handle);
                           void* const place = vrntValueMap(&written.handle, &view, error);
                           if (place == nullptr) return false;
                           const std::int32_t five = 5;
                           std::memcpy(place, &five, sizeof(five));
                           vrntValueUnmap(written.handle, &view);
                           return true;
                         },
                         "{ a = 5; b = &[ 1, 2 ]; }");
                   }});
  // The list of the references of a part is made when the part is first written.
  cases.push_back({"vrntValueMap", "of a part with many references", Promise::ErrorObject,
                   [] {
                     struct State {
                       SharedValue other;
                       vrntValue_t* handle = nullptr;
                     };
                     const auto state = std::make_shared<State>();
                     Call call;
                     call.before = [state] {
                       state->other.reset();
                       const TypeHandle type = parseType("{ int n; void*[100] @part p; }");
                       vrntValuesError_t* error = nullptr;
                       state->other = ValueHandle(vrntValueCreate(type.get(), &error));
                       state->handle = vrntValueCopy(state->other.get());
                     };
                     call.make = [state](vrntValuesError_t** error) {
                       vrntValueView_t view{};
                       vrntValueStructField(&view, vrntValueType(state->handle), 1);
                       if (vrntValueMap(&state->handle, &view, error) == nullptr) return false;
                       vrntValueUnmap(state->handle, &view);
                       return true;
                     };
                     call.right = [state] {
                       EXPECT_NE(state->handle, state->other.get());
                       vrntValueDestroy(state->handle);
                       state->other.reset();
                     };
                     call.intact = [state] {
                       EXPECT_EQ(state->handle, state->other.get());
                       EXPECT_EQ(state->other->refCount, 2u);
                       vrntValueDestroy(state->handle);
                     };
                     return call;
                   },
                   Allocations::ToTheArguments});
  cases.push_back(quiet("vrntValueMap", [] {
    return [value = sharedValue(kBefore)] {
      vrntValue_t* handle = value.get();
      vrntValuesError_t* error = nullptr;
      const vrntValueView_t view = wholeOf(handle);
      void* const place = vrntValueMap(&handle, &view, &error);
      vrntValueUnmap(handle, &view);
      return place == vrntValueData(value.get()) && handle == value.get();
    };
  }));
  // What the write lets go ends with the unmapping.
  cases.push_back(quiet("vrntValueUnmap", [] {
    vrntValue_t* handle = parseValue(kBefore).release();
    vrntValuesError_t* error = nullptr;
    const vrntValueView_t view = wholeOf(handle);
    auto* const place = static_cast<char*>(vrntValueMap(&handle, &view, &error));
    std::memset(place + 8, 0, 8);
    const auto owner = std::make_shared<ValueHandle>(handle);
    return [owner, mapped = true]() mutable {
      const vrntValueView_t whole = wholeOf(owner->get());
      if (std::exchange(mapped, false)) vrntValueUnmap(owner->get(), &whole);
      return readAt<std::uint64_t>(*owner, 8) == 0;
    };
  }));
  cases.push_back({"vrntValueWrite", "", Promise::ErrorObject, [] {
                     return writing(
                         kBefore,
                         [](Written& written, vrntValuesError_t** error) {
                           const std::int32_t five = 5;
                           vrntValueWrite(&written.handle, 0, &five, sizeof(five), error);
                           return *error == nullptr;
                         },
                         "{ a = 5; b = &[ 1, 2 ]; }");
                   }});
  cases.push_back({"vrntValueSetReference", "", Promise::ErrorObject, [] {
                     const SharedValue target = sharedValue("[ 8, 9 ]");
                     Call call = writing(
                         kBefore,
                         [target](Written& written, vrntValuesError_t** error) {
                           vrntValueView_t view{};
                           vrntValueStructField(&view, vrntValueType(written.handle), 1);
                           vrntValueSetReference(&written.handle, &view, target.get(), error);
                           return *error == nullptr;
                         },
                         "{ a = 1; b = &[ 8, 9 ]; }");
                     call.intact = [target, intact = call.intact] {
                       EXPECT_EQ(target->refCount, 1u);
                       intact();
                     };
                     call.right = [target, right = call.right] {
                       EXPECT_EQ(target->refCount, 2u);
                       right();
                       EXPECT_EQ(target->refCount, 1u);
                     };
                     return call;
                   }});
}

void addComparing(FaultCases& cases) {
  const auto equal = [](const SharedValue& a, const SharedValue& b, char** reason) {
    const vrntValueView_t viewA = wholeOf(a.get());
    const vrntValueView_t viewB = wholeOf(b.get());
    return vrntValueEqual(a.get(), &viewA, b.get(), &viewB, 0, reason);
  };
  cases.push_back(quiet("vrntValueEqual", [equal] {
    return [equal, a = sharedValue(kValues[5]), b = sharedValue(kValues[5])] {
      return equal(a, b, nullptr) == 1;
    };
  }));
  cases.push_back({"vrntValueEqual", "reason", Promise::BadAlloc, [equal] {
                     const auto reason = std::make_shared<char*>();
                     const auto answer = std::make_shared<std::int32_t>();
                     const SharedValue a = sharedValue("{ first = [ { b = 1; }, { b = 2; } ]; }");
                     Call call;
                     call.before = [reason] { *reason = nullptr; };
                     call.make = [=, b = sharedValue("{ first = [ { b = 1; }, { b = 3; } ]; }")](
                                     vrntValuesError_t**) {
                       *answer = equal(a, b, reason.get());
                       return true;
                     };
                     call.right = [=] {
                       const StringHandle owner(*reason);
                       EXPECT_EQ(*answer, 0);
                       EXPECT_STREQ(*reason, ".first[1].b: 2 != 3");
                     };
                     call.intact = [=] { EXPECT_EQ(*reason, nullptr); };
                     return leaving(a, call);
                   }});
  cases.push_back({"vrntValueEqual", "shared", Promise::BadAlloc, [equal] {
                     // Blocks that are shared and refer to others are noted down.
                     const auto answer = std::make_shared<std::int32_t>();
                     const SharedValue a = sharedValue("{ p = &&[ 1 ]; q = &&[ 2 ]; }");
                     const SharedValue b = sharedValue("{ p = &&[ 1 ]; q = &&[ 2 ]; }");
                     const vrntValueView_t first{vrntTypeFieldType(vrntValueType(a.get()), 0), 0};
                     const SharedType owner = TypeHandle(first.type);
                     const SharedValue held = ValueHandle(vrntValueDereference(a.get(), &first));
                     Call call;
                     call.make = [=](vrntValuesError_t**) {
                       static_cast<void>(owner);
                       static_cast<void>(held);
                       *answer = equal(a, b, nullptr);
                       return true;
                     };
                     call.right = [answer] { EXPECT_EQ(*answer, 1); };
                     return leaving(a, call);
                   }});
  for (const char* text : kValues) {
    cases.push_back({"vrntValueString", "", Promise::ErrorObject, [text] {
                       const SharedValue value = sharedValue(text);
                       return leaving(value,
                                      making<StringHandle>(
                                          [value](vrntValuesError_t** error) {
                                            const vrntValueView_t view = wholeOf(value.get());
                                            return vrntValueString(value.get(), &view, 0, error);
                                          },
                                          [expected = textOf(value.get())](char* string) {
                                            EXPECT_EQ(string, expected);
                                          }));
                     }});
  }
  cases.push_back({"vrntValueSerialize", "", Promise::ErrorObject, [] {
                     const SharedValue value = sharedValue(kValues[0]);
                     Call call;
                     call.make = [value](vrntValuesError_t** error) {
                       vrntValueSerialize(value.get(), drop, nullptr, error);
                       return *error == nullptr;
                     };
                     return leaving(value, call);
                   }});
  cases.push_back(quiet("vrntValueSerialize", [] {
    return [value = sharedValue(kValues[1])] {
      vrntValuesError_t* error = nullptr;
      vrntValueSerialize(value.get(), drop, nullptr, &error);
      return error == nullptr;
    };
  }));
}

}  // namespace

void addValueCases(FaultCases& cases) {
  addMaking(cases);
  addReading(cases);
  addWriting(cases);
  addComparing(cases);
  using namespace qex::vornath;
  cases.push_back(quiet("qex::vornath::allocateValue(qex::vornath::DynamicValue const&)", [] {
    return [type = sharedType("float @default=0.25")] {
      // The only DynamicValue within a host's reach; its inline reads need no symbol of the
      // library.
      const auto& metadata = reinterpret_cast<const InternedType*>(type.get())->metadata();
      const auto& entry = metadata.find(std::string_view("default"))->second;
      vrntValue_t* const value = allocateValue(*std::get<HeapValue<DynamicValue>>(entry));
      const bool right = value->refCount == 2;
      vrntValueDestroy(value);
      return right;
    };
  }));
}

}  // namespace vornath_test
