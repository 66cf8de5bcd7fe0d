#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include "foundation/boundary.hpp"
#include "types/parts.hpp"
#include "types/type_handle.hpp"
#include "types/wrong_kind.hpp"
#include "values/bounds.hpp"
#include "values/coercion.hpp"
#include "values/dynamic_value.hpp"
#include "values/equality.hpp"
#include "values/specialization.hpp"
#include "values/stream.hpp"
#include "values/value_parser.hpp"
#include "values/value_text.hpp"
#include "values/write_protocol.hpp"
#include "vornath_data/values.h"

namespace qex::vornath {
namespace {

// The flat functions don't change what a const handle leads to, a count excepted.
vrntValue_t* blockOf(const vrntValue_t* value) { return const_cast<vrntValue_t*>(value); }

const char* dataAt(const vrntValue_t* value, const vrntValueView_t* view) {
  return blockData(value) + view->offset;
}

vrntValueView_t* fill(vrntValueView_t* out, const Part& place) {
  *out = {typeHandle(*place.type), place.offset};
  return out;
}

// Passes a new value to the host.
vrntValue_t* handOut(BlockPtr block) {
  exposeToHost(block.get());
  return block.detach();
}

char* duplicate(const std::string& text) {
  char* const copy = ::strdup(text.c_str());
  if (copy == nullptr) throw std::bad_alloc();
  return copy;
}

}  // namespace
}  // namespace qex::vornath

using namespace qex::vornath;  // NOLINT(google-build-using-namespace): the file is its flat face

extern "C" {

vrntValue_t* vrntValueCreate(const vrntType_t* type, vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] {
    return handOut(BlockPtr::first(allocateBlock(typeOf(type), Fill::Zero)));
  });
}

vrntValue_t* vrntValueCreateDefault(const vrntType_t* type, vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] { return handOut(makeDefaultBlock(typeOf(type))); });
}

vrntValue_t* vrntValueParse(const void* textOrBlock, vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] {
    if (textOrBlock == nullptr) throw std::invalid_argument("No text.");
    if (isBlock(textOrBlock)) {
      auto* const block = blockOf(static_cast<const vrntValue_t*>(textOrBlock));
      reexposeToHost(block);
      return vrntValueCopy(block);
    }
    return allocateValue(parseValue(static_cast<const char*>(textOrBlock)));
  });
}

vrntValue_t* vrntValueFromView(const vrntValue_t* value, const vrntValueView_t* view,
                               vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] {
    return handOut(copyToBlock(typeOf(view->type), dataAt(value, view)));
  });
}

vrntValue_t* vrntValueDeserialize(vrntReadFn read, void* user, vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] {
    DynamicValue::StreamMap map;
    return handOut(deserializeBlock(read, user, map));
  });
}

vrntValue_t* vrntCoerce(const vrntType_t* type, const vrntValue_t* value,
                        vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] {
    return handOut(coerceToBlock(blockType(value), blockData(value), typeOf(type), true));
  });
}

vrntValue_t* vrntBuildSpecializationParameters(const vrntType_t* type, const vrntValue_t* value,
                                               vrntValuesError_t** error) {
  return reportEveryError(error, nullptr, [&] {
    requireAssignable(blockType(value), typeOf(type));
    return handOut(buildSpecializedBlock(blockType(value), blockData(value), typeOf(type)));
  });
}

vrntValue_t* vrntValueCopy(const vrntValue_t* value) {
  tryReexposeToHost(blockOf(value));
  retainBlock(blockOf(value));
  return blockOf(value);
}

void vrntValueDestroy(vrntValue_t* value) { releaseBlock(value); }

vrntType_t* vrntValueType(const vrntValue_t* value) { return value->type; }

vrntValue_t* vrntValueBinary(const vrntValue_t* value) {
  tryReexposeToHost(blockOf(value));
  return blockOf(value);
}

void* vrntValueData(const vrntValue_t* value) { return blockData(const_cast<vrntValue_t*>(value)); }

vrntValue_t* vrntValueDereference(const vrntValue_t* value, const vrntValueView_t* view) {
  const std::uint64_t word = loadWord(dataAt(value, view));
  if (word == 0) return nullptr;
  if (isBlockWord(word)) {
    vrntValue_t* const target = blockOfWord(word);
    reexposeToHost(target);
    return vrntValueCopy(target);
  }
  const TypePtr& target = std::get<Type::TRef>(typeOf(view->type).desc()).target;
  if (!target) {
    raiseWrongKind("vrntValueDereference", "a reference with a target, for a foreign address",
                   typeOf(view->type));
  }
  const auto* const foreign = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(word >> 1));
  return allocateValue(DynamicValue(target, foreign));
}

vrntValueView_t* vrntValueStructField(vrntValueView_t* out, const vrntType_t* structType,
                                      uint32_t field) {
  const auto* const structure = typeOf(structType).getIf<Type::TStruct>();
  if (structure == nullptr) {
    raiseWrongKind("vrntValueStructField", "a struct", typeOf(structType));
  }
  return fill(out, {structure->fields[field].type.get(), structure->offsets[field]});
}

vrntValueView_t* vrntValueArrayElement(vrntValueView_t* out, const vrntType_t* arrayType,
                                       const int32_t* index) {
  const InternedType& type = typeOf(arrayType);
  const auto place = elementPartIfArray(type, index);
  if (!place) raiseWrongKind("vrntValueArrayElement", "an array", type);
  return fill(out, *place);
}

void* vrntValueMap(vrntValue_t** value, const vrntValueView_t* view, vrntValuesError_t** error) {
  return reportOutOfMemoryOrOther(error, nullptr, [&]() -> void* {
    reexposeToHost(*value);  // a copy that the handle moves to then has it from the start
    return prepareWrite(*value, typeOf(view->type), view->offset);
  });
}

void vrntValueUnmap(vrntValue_t* value, const vrntValueView_t* view) {
  commitWrite(value, typeOf(view->type), view->offset);
}

void vrntValueWrite(vrntValue_t** value, uint64_t offset, const void* source, uint64_t size,
                    vrntValuesError_t** error) {
  reportOutOfMemoryOrOther(error, [&] {
    reexposeToHost(*value);
    writeBytes(*value, offset, source, size);
  });
}

void vrntValueSetReference(vrntValue_t** value, const vrntValueView_t* view, vrntValue_t* target,
                           vrntValuesError_t** error) {
  // With a reference of its own, a value that is made to refer to itself becomes a copy that refers
  // to the original, not a circle.
  const BlockPtr held(target);
  void* const word = vrntValueMap(value, view, error);
  if (word == nullptr) return;
  storeWord(word, target != nullptr ? wordOfBlock(target) : 0);
  vrntValueUnmap(*value, view);
}

int32_t vrntValueEqual(const vrntValue_t* a, const vrntValueView_t* viewA, const vrntValue_t* b,
                       const vrntValueView_t* viewB, float tolerance, char** reason) {
  const DynamicValue valueA(blockOf(a));
  const DynamicValue valueB(blockOf(b));
  std::string text;
  const bool equal = valuesEqual({&typeOf(viewA->type), viewA->offset, &valueA},
                                 {&typeOf(viewB->type), viewB->offset, &valueB}, tolerance,
                                 reason != nullptr ? &text : nullptr);
  if (reason != nullptr && !text.empty()) *reason = duplicate(text);
  return equal ? 1 : 0;
}

char* vrntValueString(const vrntValue_t* value, const vrntValueView_t* view, uint32_t flags,
                      vrntValuesError_t** error) {
  return reportOutOfMemoryOrOther(error, nullptr, [&] {
    return newValueText(typeOf(view->type), dataAt(value, view), (flags & VRNT_STRING_EXACT) != 0,
                        (flags & VRNT_STRING_MULTILINE) != 0);
  });
}

void vrntValueSerialize(const vrntValue_t* value, vrntWriteFn write, void* user,
                        vrntValuesError_t** error) {
  reportOutOfMemoryOrOther(error, [&] {
    // With a second reference held, a callback that writes to the value moves to a copy.
    const DynamicValue held(blockOf(value));
    serializeValue(held, write, user);
  });
}

}  // extern "C"
