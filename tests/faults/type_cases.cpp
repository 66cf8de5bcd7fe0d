// Types, their metadata, and error objects.
#include <string_view>

#include "fault_table.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/type_library.hpp"

namespace vornath_test {
namespace {

constexpr const char* kStruct = "{ float @default=0.25 @name=\"Share\" @x share; int[2,3] grid; }";

// With the twin of each `part` left open at every level, more pairs than fit on the stack.
std::string nested(const std::string& part) {
  std::string text = "{ float q; }";
  for (int level = 0; level < 40; ++level) text = "{ " + part + " a; " + text + " b; }";
  return text;
}

// The inner struct comes first, so that what compares two of these keeps each level open.
std::string nestedFirst(const std::string& part) {
  std::string text = "{ float q; }";
  for (int level = 0; level < 40; ++level) text = "{ " + text + " b; " + part + " a; }";
  return text;
}

FaultCase quietType(const char* function, const char* text,
                    std::function<bool(const vrntType_t*)> check) {
  return quiet(function,
               [=] { return [type = sharedType(text), check] { return check(type.get()); }; });
}

bool endsAs(vrntType_t* type, const vrntType_t* expected) {
  vrntTypeDestroy(type);
  return type == expected;
}

void addParsing(FaultCases& cases) {
  // An array of floats needs no memory of its own beside that of its type.
  cases.push_back(quiet("vrntTypeParse", [] {
    return [element = sharedType("float")] {
      const TypeHandle type(vrntTypeParse("float  [ 7 ]", nullptr));
      return std::string_view(vrntTypeString(type.get())) == "float[7]";
    };
  }));
  for (const char* text : {
           "float  [ 14,  3 ]",
           "{ float @default=0.25 @name=\"Share\" share; int[2,3] grid; float[]* list; void* any; "
           "}",
           "enum { ALPHA @name=\"Alpha\"; BETA( int x, float y ); }  @alias=\"letters\"",
           "((float, int2) => { half h; })",
           "{ { float4 @default=float4(1.0, 0.5, 0.0, 0.0) x; } @a m; float @min=1e- f; }",
       }) {
    cases.push_back({"vrntTypeParse", "", Promise::ErrorObject, [text] {
                       return makingType(
                           [text](vrntValuesError_t** error) { return vrntTypeParse(text, error); },
                           canonical(text));
                     }});
  }
  // The words of a refusal need memory too; the exception itself has some put by.
  for (const char* text : {"{ int a; int a; }", "{ int a", "{ int ? }", "enum { }"}) {
    cases.push_back({"vrntTypeParse", "refusal", Promise::ErrorObject,
                     [text] {
                       const auto refusal = std::make_shared<vrntValuesError_t*>();
                       Call call;
                       call.make = [=](vrntValuesError_t** error) {
                         if (vrntTypeParse(text, error) != nullptr) return true;
                         if (vrntValuesErrorCode(*error) != VRNT_LIBRARY_ERROR) return false;
                         *refusal = std::exchange(*error, nullptr);
                         return true;
                       };
                       call.right = [=] {
                         ASSERT_NE(*refusal, nullptr);
                         EXPECT_EQ(vrntValuesErrorMessage(*refusal), typeFailure(text)->message);
                         vrntValuesErrorDestroy(std::exchange(*refusal, nullptr));
                       };
                       return call;
                     },
                     Allocations::Dispensable});
  }
}

void addRelations(FaultCases& cases) {
  struct Relation {
    const char* function;
    std::int32_t (*call)(const vrntType_t*, const vrntType_t*);
    std::int32_t deep;
  };
  for (const Relation relation : {Relation{"vrntTypeIsSubType", vrntTypeIsSubType, 1},
                                  Relation{"vrntTypeIsEqual", vrntTypeIsEqual, 0}}) {
    cases.push_back({relation.function, "deep", Promise::BadAlloc, [relation] {
                       const auto answer = std::make_shared<std::int32_t>();
                       Call call;
                       call.make = [a = sharedType(nestedFirst("int[3]*")),
                                    b = sharedType(nestedFirst("int[]*")), relation,
                                    answer](vrntValuesError_t**) {
                         *answer = relation.call(a.get(), b.get());
                         return true;
                       };
                       call.right = [=] { EXPECT_EQ(*answer, relation.deep); };
                       return call;
                     }});
    cases.push_back(quiet(relation.function, [relation] {
      return [a = sharedType("{ int a; { float[3] @x b; }[2] c; }"),
              b = sharedType("{ int a; { float[3] b; }[2] c; }"),
              relation] { return relation.call(a.get(), b.get()) == 1; };
    }));
  }
  cases.push_back(
      {"vrntTypeCheckSubType", "", Promise::ErrorObject, [] {
         return making<StringHandle>(
             [a = sharedType("{ int x; { float y; } z; }"),
              b = sharedType("{ int x; { float2 y; } z; }")](vrntValuesError_t** error) {
               return vrntTypeCheckSubType(a.get(), b.get(), error);
             },
             [](char* reason) {
               EXPECT_NE(std::string(reason).find("float2"), std::string::npos) << reason;
             });
       }});
  cases.push_back(
      {"vrntTypeCheckSubType", "deep", Promise::ErrorObject, [] {
         return making<StringHandle>(
             [a = sharedType(nested("int[3]*")),
              b = sharedType(nested("int[4]*"))](vrntValuesError_t** error) {
               return vrntTypeCheckSubType(a.get(), b.get(), error);
             },
             [](char* reason) {
               EXPECT_NE(std::string(reason).find("array of size: 4"), std::string::npos) << reason;
             });
       }});
}

void addReading(FaultCases& cases) {
  cases.push_back(quietType("vrntTypeCopy", "{ int a; }", [](const vrntType_t* type) {
    return endsAs(vrntTypeCopy(type), type);
  }));
  // The last handle goes, and the type with it.
  cases.push_back(quiet("vrntTypeDestroy", [] {
    auto types = std::make_shared<std::vector<TypeHandle>>();
    types->push_back(parseType("{ { int[9]* b; }[3] @x a; int c; }"));
    types->push_back(parseType("enum { ONE @d=2; TWO; }[77]"));
    return [types] {
      types->pop_back();
      return true;
    };
  }));
  cases.push_back(quietType("vrntTypeSize", "{ int a; float4 b; }",
                            [](const vrntType_t* type) { return vrntTypeSize(type) == 32; }));
  cases.push_back(quietType("vrntTypeAlignment", "{ int a; float4 b; }",
                            [](const vrntType_t* type) { return vrntTypeAlignment(type) == 16; }));
  cases.push_back(quietType("vrntTypeString", "{ int   a; }", [](const vrntType_t* type) {
    return std::strcmp(vrntTypeString(type), "{ int a; }") == 0;
  }));
  // The text of a part is put together when it is asked for, and kept.
  cases.push_back({"vrntTypeString", "long", Promise::Failure, [] {
                     const std::string part = "{ int " + std::string(5000, 'x') + "; }";
                     const auto whole = std::make_shared<SharedType>();
                     Call call;
                     call.before = [whole, part] {
                       whole->reset();
                       *whole = sharedType(part + "*");
                     };
                     const auto text = std::make_shared<const char*>();
                     call.make = [whole, text](vrntValuesError_t**) {
                       vrntType_t* const target = vrntTypeReferencedType(whole->get());
                       *text = vrntTypeString(target);
                       vrntTypeDestroy(target);
                       return *text != nullptr;
                     };
                     call.right = [text, part] { EXPECT_EQ(*text, part); };
                     return call;
                   }});
  cases.push_back(quiet("vrntTypeStripMetadata", [] {
    return [type = sharedType(kStruct), plain = sharedType("{ float share; int[2,3] grid; }")] {
      return endsAs(vrntTypeStripMetadata(type.get()), plain.get());
    };
  }));
  cases.push_back(quietType("vrntTypeBasetype", "half3", [](const vrntType_t* type) {
    return vrntTypeBasetype(type) == VRNT_BASETYPE_HALF;
  }));
  cases.push_back(quietType("vrntTypeDescriptor", "int[]*", [](const vrntType_t* type) {
    return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_REFERENCE;
  }));
  cases.push_back(quietType("vrntTypeVectorDimension", "half3", [](const vrntType_t* type) {
    return vrntTypeVectorDimension(type) == 3;
  }));
  cases.push_back(quietType("vrntTypeArrayDimension", "int[2,3]", [](const vrntType_t* type) {
    return vrntTypeArrayDimension(type) == 2;
  }));
  cases.push_back(quietType("vrntTypeArrayShape", "int[2,3]", [](const vrntType_t* type) {
    std::int32_t shape[2];
    vrntTypeArrayShape(type, shape);
    return shape[0] == 2 && shape[1] == 3;
  }));
  for (const auto& [function, call] : {Named{"vrntTypeElementType", vrntTypeElementType},
                                       Named{"vrntTypeReferencedType", vrntTypeReferencedType}}) {
    cases.push_back(quiet(function, [call = call] {
      return [type = sharedType("{ int q; }[4]"), element = sharedType("{ int q; }"), call] {
        return endsAs(call(type.get()), element.get());
      };
    }));
  }
  for (const auto& [function, call] :
       {Named{"vrntTypeFieldCount", vrntTypeFieldCount},
        Named{"vrntTypeConstructorCount", vrntTypeConstructorCount}}) {
    cases.push_back(quietType(function, kStruct,
                              [call = call](const vrntType_t* type) { return call(type) == 2; }));
  }
  for (const auto& [function, call] : {Named{"vrntTypeFieldLabel", vrntTypeFieldLabel},
                                       Named{"vrntTypeConstructorName", vrntTypeConstructorName}}) {
    cases.push_back(quietType(function, kStruct, [call = call](const vrntType_t* type) {
      return std::strcmp(call(type, 1), "grid") == 0;
    }));
  }
  cases.push_back(quiet("vrntTypeFieldType", [] {
    return [type = sharedType(kStruct), field = sharedType("int[2,3]")] {
      return endsAs(vrntTypeFieldType(type.get(), 1), field.get());
    };
  }));
  cases.push_back({"vrtnTypeFloatArray", "", Promise::BadAlloc, [] {
                     return makingType([](vrntValuesError_t**) { return vrtnTypeFloatArray(29); },
                                       "float[29]");
                   }});
}

void addMetadata(FaultCases& cases) {
  constexpr const char* kText = "float @default=0.25 @name=\"Share\" @x";
  cases.push_back(quietType("vrntMetadataSize", kText,
                            [](const vrntType_t* type) { return vrntMetadataSize(type) == 3; }));
  cases.push_back(quietType("vrntMetadataName", kText, [](const vrntType_t* type) {
    return std::strcmp(vrntMetadataName(type, 2), "x") == 0 && !vrntMetadataName(type, 3);
  }));
  cases.push_back(quietType("vrntMetadataExists", kText, [](const vrntType_t* type) {
    return vrntMetadataExists(type, "a key that is longer than what a string holds in place") == 0;
  }));
  cases.push_back(quietType("vrntMetadataType", kText, [](const vrntType_t* type) {
    return vrntMetadataType(type, "name") == VRNT_METADATA_TEXT;
  }));
  cases.push_back(quietType("vrntMetadataString", kText, [](const vrntType_t* type) {
    return std::strcmp(vrntMetadataString(type, "name"), "Share") == 0;
  }));
  cases.push_back(quietType("vrntMetadataValue", kText, [](const vrntType_t* type) {
    vrntValue_t* const value = vrntMetadataValue(type, "default");
    const float number = *static_cast<const float*>(vrntValueData(value));
    vrntValueDestroy(value);
    return number == 0.25F;
  }));
  // Nobody has asked for the text of the value's type before.
  cases.push_back(
      {"vrntMetadataValue", "long", Promise::BadAlloc, [] {
         const std::string label(5000, 'x');
         const auto type = std::make_shared<SharedType>();
         Call call = making<ValueHandle>(
             [type](vrntValuesError_t**) { return vrntMetadataValue(type->get(), "default"); },
             [type, label](vrntValue_t* value) {
               EXPECT_EQ(value->refCount, 2u);
               const ValueHandle again(vrntMetadataValue(type->get(), "default"));
               EXPECT_EQ(again->typeText, "{ int " + label + "; }");
             });
         call.before = [type, label] {
           type->reset();
           *type = sharedType("void* @default={ " + label + " = 1; }");
         };
         return call;
       }});
}

void addErrors(FaultCases& cases) {
  const auto error = [] {
    vrntValuesError_t* made = nullptr;
    EXPECT_EQ(vrntTypeParse("{ int a; int a; }", &made), nullptr);
    return std::shared_ptr<vrntValuesError_t>(ErrorHandle(made));
  };
  cases.push_back(quiet("vrntValuesErrorCode", [error] {
    return [held = error()] { return vrntValuesErrorCode(held.get()) == VRNT_LIBRARY_ERROR; };
  }));
  cases.push_back(quiet("vrntValuesErrorMessage", [error] {
    return [held = error()] {
      return std::strcmp(vrntValuesErrorMessage(held.get()), "Duplicate struct field: a.") == 0;
    };
  }));
  cases.push_back(quiet("vrntValuesErrorDestroy", [error] {
    auto held = std::make_shared<std::shared_ptr<vrntValuesError_t>>(error());
    return [held] {
      vrntValuesErrorDestroy(nullptr);
      held->reset();
      return true;
    };
  }));
  cases.push_back(quiet("vrntDestroyString", [] {
    vrntValuesError_t* made = nullptr;
    auto held = std::make_shared<StringHandle>(
        vrntTypeCheckSubType(parseType("int").get(), parseType("float").get(), &made));
    EXPECT_NE(*held, nullptr);
    return [held] {
      held->reset();
      vrntDestroyString(nullptr);
      return true;
    };
  }));
}

}  // namespace

void addTypeCases(FaultCases& cases) {
  addParsing(cases);
  addRelations(cases);
  addReading(cases);
  addMetadata(cases);
  addErrors(cases);
  cases.push_back(quiet("qex::vornath::allocateType(qex::vornath::Type const&)", [] {
    return [type = sharedType("{ int a; }")] {
      return endsAs(
          qex::vornath::allocateType(*reinterpret_cast<const qex::vornath::Type*>(type.get())),
          type.get());
    };
  }));
}

}  // namespace vornath_test
