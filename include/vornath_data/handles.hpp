/// Owners for the handles of the flat functions, for C++ hosts that call these functions directly.
/// Each is a std::unique_ptr that releases its handle by the flat function of its kind:
///
///     vrntValuesError_t* error = nullptr;
///     const vrnt::UniqueType type(vrntTypeParse("{ float gloss; }", &error));
///     const vrnt::UniqueError owner(error);
///     if (!type) std::puts(vrntValuesErrorMessage(error));
///
/// An owner holds one reference. Call get() to pass the handle to a function that borrows it, and
/// release() to give the reference away. To copy a handle, make a second owner of the result of
/// vrntTypeCopy(), vrntValueCopy() or vrdmAssetStorageRetain(). Destroy all owners before you call
/// vrntValuesShutdown().
///
/// vrnt::TypeHandle and vrnt::Value (value.hpp), vrnt::data::AssetHandle (asset_handle.hpp) and
/// vrnt::host::Scene (host.hpp) own the same handles, and add copies and member functions.
#ifndef VORNATH_DATA_HANDLES_HPP
#define VORNATH_DATA_HANDLES_HPP

#include <memory>

#include "vornath_data/asset_storage.h"
#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/errors.h"
#include "vornath_data/scene_interface.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrnt {

namespace detail {

struct TypeDeleter {
  void operator()(vrntType_t* type) const noexcept { vrntTypeDestroy(type); }
};
struct ValueDeleter {
  void operator()(vrntValue_t* value) const noexcept { vrntValueDestroy(value); }
};
struct SceneDeleter {
  void operator()(vrdmScene_t* scene) const noexcept { vrdmDestroyScene(scene); }
};
struct AssetDeleter {
  void operator()(AssetStorage* storage) const noexcept { vrdmAssetStorageRelease(storage); }
};

}  // namespace detail

/// Owns a reference on a type. Calls vrntTypeDestroy().
using UniqueType = std::unique_ptr<vrntType_t, detail::TypeDeleter>;

/// Owns a reference on a value. Calls vrntValueDestroy(). A function that writes to a value may
/// replace its handle: pass the handle by release(), and take the new one by reset().
using UniqueValue = std::unique_ptr<vrntValue_t, detail::ValueDeleter>;

/// Owns an error object. Calls vrntValuesErrorDestroy().
using UniqueError = std::unique_ptr<vrntValuesError_t, detail::ErrorDeleter>;

/// Owns a string that a flat function returned. Calls vrntDestroyString().
using UniqueString = std::unique_ptr<char, detail::StringDeleter>;

/// Owns a scene. Calls vrdmDestroyScene().
using UniqueScene = std::unique_ptr<vrdmScene_t, detail::SceneDeleter>;

/// Owns a reference on the bytes of an asset. Calls vrdmAssetStorageRelease().
using UniqueAsset = std::unique_ptr<AssetStorage, detail::AssetDeleter>;

}  // namespace vrnt

#endif
