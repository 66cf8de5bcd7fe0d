#include "foundation/failure.hpp"

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

#include "vornath_data/errors.h"
#include "vornath_data/result.hpp"
#include "vornath_toolkit/version.h"

struct vrtkError {
  std::uint32_t status;
  const char* message;
  std::optional<vrtkTextPlace> place;
};

namespace vrtk {
namespace {

// Reporting that there is no memory must not need any. Never freed.
vrtkError outOfMemory = {VRTK_OUT_OF_MEMORY,
                         "there is not enough memory; free some, or work on a smaller scene",
                         std::nullopt};

std::uint32_t store(vrtkError** error, std::uint32_t status, const char* message,
                    const std::optional<vrtkTextPlace>& place = {}) noexcept {
  if (error == nullptr) return status;
  const std::size_t length = std::strlen(message);
  auto* const block = static_cast<char*>(std::malloc(sizeof(vrtkError) + length + 1));
  if (block == nullptr) {
    *error = &outOfMemory;
    return VRTK_OUT_OF_MEMORY;
  }
  char* const text = block + sizeof(vrtkError);
  std::memcpy(text, message, length + 1);
  *error = new (block) vrtkError{status, text, place};
  return status;
}

struct Named {
  std::uint32_t status;
  const char* name;
};

constexpr Named kNames[] = {
    {VRTK_OK, "OK"},
    {VRTK_INVALID_ARGUMENT, "INVALID_ARGUMENT"},
    {VRTK_OUT_OF_MEMORY, "OUT_OF_MEMORY"},
    {VRTK_LIBRARY_ERROR, "LIBRARY_ERROR"},
    {VRTK_INTERNAL_ERROR, "INTERNAL_ERROR"},
    {VRTK_FILE_MISSING, "FILE_MISSING"},
    {VRTK_FILE_UNREADABLE, "FILE_UNREADABLE"},
    {VRTK_FILE_IS_FOLDER, "FILE_IS_FOLDER"},
    {VRTK_FILE_NOT_REGULAR, "FILE_NOT_REGULAR"},
    {VRTK_FILE_NO_SCENE, "FILE_NO_SCENE"},
    {VRTK_FILE_VERSION, "FILE_VERSION"},
    {VRTK_FILE_DAMAGED, "FILE_DAMAGED"},
    {VRTK_FILE_TOO_LARGE, "FILE_TOO_LARGE"},
    {VRTK_FILE_CHANGED, "FILE_CHANGED"},
    {VRTK_SAVE_NO_FOLDER, "SAVE_NO_FOLDER"},
    {VRTK_SAVE_DENIED, "SAVE_DENIED"},
    {VRTK_SAVE_NO_SPACE, "SAVE_NO_SPACE"},
    {VRTK_SAVE_FAILED, "SAVE_FAILED"},
    {VRTK_SCENE_INCOMPLETE, "SCENE_INCOMPLETE"},
    {VRTK_CATALOGUE_UNKNOWN, "CATALOGUE_UNKNOWN"},
    {VRTK_CATALOGUE_INVALID, "CATALOGUE_INVALID"},
    {VRTK_JSON_INVALID, "JSON_INVALID"},
    {VRTK_ADDRESS_UNKNOWN, "ADDRESS_UNKNOWN"},
    {VRTK_PATCH_FAILED, "PATCH_FAILED"},
    {VRTK_WRITE_STOPPED, "WRITE_STOPPED"},
    {VRTK_VALUE_CYCLE, "VALUE_CYCLE"},
    {VRTK_TEXT_INVALID, "TEXT_INVALID"},
    {VRTK_VALUE_TYPE, "VALUE_TYPE"},
};

#define VRTK_TEXT_OF(number) VRTK_TEXT_OF_VALUE(number)
#define VRTK_TEXT_OF_VALUE(number) #number
constexpr char kVersion[] = VRTK_TEXT_OF(VORNATH_TOOLKIT_VERSION_MAJOR) "." VRTK_TEXT_OF(
    VORNATH_TOOLKIT_VERSION_MINOR) "." VRTK_TEXT_OF(VORNATH_TOOLKIT_VERSION_PATCH);

}  // namespace

std::uint32_t reportCaught(vrtkError** error) noexcept {
  try {
    throw;
  } catch (const Failure& caught) {
    return store(error, caught.status(), caught.what(), caught.place());
  } catch (const std::bad_alloc&) {
    if (error != nullptr) *error = &outOfMemory;
    return VRTK_OUT_OF_MEMORY;
  } catch (const vrnt::Exception& caught) {
    const bool memory = caught.code() == vrnt::ErrorCode::MemoryAllocationFailure;
    return store(error, memory ? VRTK_OUT_OF_MEMORY : VRTK_LIBRARY_ERROR, caught.what());
  } catch (const VornathValuesAssertionFailure& caught) {
    return store(error, VRTK_LIBRARY_ERROR, caught.what());
  } catch (const std::length_error&) {
    // A size that no container can have is more memory than there is.
    if (error != nullptr) *error = &outOfMemory;
    return VRTK_OUT_OF_MEMORY;
  } catch (const std::exception& caught) {
    return store(error, VRTK_INTERNAL_ERROR, caught.what());
  } catch (...) {
    return store(error, VRTK_INTERNAL_ERROR, "unknown error");
  }
}

vrtkTextPlace placeIn(std::string_view text, std::size_t offset) {
  vrtkTextPlace place{1, 1, offset};
  for (const char c : text.substr(0, offset)) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      ++place.line;
      place.column = 1;
    } else if ((byte & 0xC0U) != 0x80U) {
      // A character counts by its first byte.
      ++place.column;
    }
  }
  return place;
}

void requireArgument(const void* pointer, const char* function, const char* name) {
  if (pointer != nullptr) return;
  throw Failure(VRTK_INVALID_ARGUMENT,
                std::string(function) + ": the argument '" + name + "' must not be null");
}

char* copyString(const std::string& text) {
  auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

}  // namespace vrtk

std::uint32_t vrtkErrorCode(const vrtkError* error) { return error->status; }
const char* vrtkErrorMessage(const vrtkError* error) { return error->message; }

bool vrtkErrorPlace(const vrtkError* error, vrtkTextPlace* place) {
  if (!error->place) return false;
  if (place != nullptr) *place = *error->place;
  return true;
}

void vrtkErrorDestroy(vrtkError* error) {
  if (error != &vrtk::outOfMemory) std::free(error);
}

const char* vrtkStatusName(std::uint32_t status) {
  for (const vrtk::Named& named : vrtk::kNames) {
    if (named.status == status) return named.name;
  }
  return nullptr;
}

void vrtkStringDestroy(char* string) { std::free(string); }
void vrtkBytesDestroy(void* bytes) { std::free(bytes); }
const char* vrtkVersion() { return vrtk::kVersion; }
