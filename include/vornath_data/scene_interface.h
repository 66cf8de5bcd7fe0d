/*
 * Scenes: create a scene, add objects, read and change them, and write and read scene files.
 *
 * An object is identified by its scene, its class and its index. The class is given by its code,
 * VRDM_CLASS_* (catalogue.h). The index is that of the object's slot in the class. Slots never
 * move: an object that is removed leaves a free slot, and the next addition to the class uses the
 * free slot with the lowest index.
 *
 * Objects refer to each other by index; -1 stands for none. Nothing checks that the target exists.
 * A reference slot is a place in an object for one index or for a list of them. `slot` and `group`
 * are indices of reference slots and of groups, in the order of the catalogue.
 *
 * These rules hold for all functions in this header, unless a function says otherwise:
 *
 *  - The scene must not be null.
 *  - There are no error out-parameters. If the class does not allow the call, the result is ~0,
 *    null, 0, -1 or false, as each function says.
 *  - For an invalid class code, the result is 0, null or false. An addition then adds nothing, but
 *    its result 0 looks like an index: do not pass an invalid code to an addition.
 *  - The index of an object must be less than vrdmContainerSize(). Only vrdmValid() checks it.
 *  - A returned vrntValue_t* is a new reference. The caller owns it and releases it with
 *    vrntValueDestroy(). A value argument must not be null, and stays the caller's.
 *  - A pointer into a scene is valid until the next addition to the class, and not longer than the
 *    scene.
 *
 * Errors: C++ exceptions pass through to the host. Each function lists those that it can throw.
 * Only vrdmCreateScene() returns null for a failed allocation.
 *
 * Threads: a scene has no lock. One thread at a time may use a scene, except that functions that
 * take a const scene may run at the same time. Different threads may use different scenes at the
 * same time, even if these share asset bytes or values.
 *
 * Change counters: a scene counts the changes of the whole scene, of each scene-wide group and of
 * each class. An object counts its own changes, those of its reference slots and those of each of
 * its groups. "The class and scene change counters" are the counter of the object's class and that
 * of the whole scene.
 */
#ifndef VORNATH_DATA_SCENE_INTERFACE_H
#define VORNATH_DATA_SCENE_INTERFACE_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/asset_storage.h"
#include "vornath_data/values.h"

#ifdef __cplusplus
#include "vornath_data/detail/unique_id_class.hpp"

namespace vrnt::data {
class Scene;
}

/** A scene. The handle is the address of the vrnt::data::Scene object. */
typedef vrnt::data::Scene vrdmScene_t;

/** A unique id, 16 bytes, of a scene, a program or an asset. */
typedef vrnt::UniqueId vrntUniqueId_t;
#else
#include <stdbool.h>

/** A scene. Its first bytes are its unique id. */
typedef struct vrdmScene_t vrdmScene_t;

/** A unique id, 16 bytes, of a scene, a program or an asset; all bytes are zero for none. */
typedef struct vrntUniqueId_t {
  uint8_t bytes[16];
} vrntUniqueId_t;
#endif

VRNT_BEGIN_DECLS

/* Scenes and files. */

/**
 * Creates an empty scene with a new random id and the default scene-wide groups.
 * Returns a scene that the caller owns; destroy it with vrdmDestroyScene().
 * Errors: null if the allocation fails. Throws boost::uuids::entropy_error if the system cannot
 * provide random bytes.
 */
VRNT_API vrdmScene_t* vrdmCreateScene(void);

/**
 * Destroys a scene: its containers, from the last class to the first, and then its id. This
 * releases the scene's references to asset bytes and values. Does nothing for null.
 * Errors: none.
 */
VRNT_API void vrdmDestroyScene(vrdmScene_t* scene);

/**
 * Returns the scene's id.
 * Ownership: belongs to the scene and is valid as long as the scene. It is the first member of the
 * scene.
 * Errors: none.
 */
VRNT_API const vrntUniqueId_t* vrdmSceneId(const vrdmScene_t* scene);

/**
 * Writes a scene to a file, and replaces a file that already exists. Every live Camera, Light and
 * Material must have a value. `path` is a NUL-terminated UTF-8 string.
 * Errors: a file that cannot be opened or written is not reported. Throws vrnt::Exception if a
 * value cannot be written, and std::bad_alloc.
 */
VRNT_API void vrdmSerialize(const vrdmScene_t* scene, const char* path);

/**
 * Reads a scene from a file. The scene has the id that is stored in the file. `path` is a
 * NUL-terminated UTF-8 string.
 * Returns a new scene that the caller owns; destroy it with vrdmDestroyScene(). Null if the file
 * cannot be read, is not a scene file, or has another version. If the file ends early, the rest of
 * the scene is empty.
 * Errors: throws vrnt::Exception if a stored value cannot be read, and std::bad_alloc. A damaged
 * file may ask for more memory than there is.
 */
VRNT_API vrdmScene_t* vrdmDeserialize(const char* path);

/* Scene-wide groups: 0 "Cut planes", 1 "Rasterizer", 2 "Raytracer", 3 "General". */

/**
 * Returns a copy of a scene-wide group: a new value of the type
 * vrdmFieldType(VRDM_CLASS_SCENE_DATA, group). Null for a group greater than 3.
 * Errors: throws std::bad_alloc.
 */
VRNT_API vrntValue_t* vrdmGetSceneDataValue(const vrdmScene_t* scene, uint32_t group);

/**
 * Replaces a scene-wide group by a copy of the value's bytes. Increments the change counters of the
 * group and of the scene.
 * Returns true if the value was stored. Returns false, and changes nothing and no counter, if the
 * value's type is not that of the group, or for a group greater than 3.
 * Errors: throws std::bad_alloc if there is no memory for the group's type at its first use.
 */
VRNT_API bool vrdmSetSceneDataValue(vrdmScene_t* scene, uint32_t group, const vrntValue_t* value);

/* Slots. */

/**
 * Returns the number of slots of a class, including free slots. It never decreases.
 * Errors: none.
 */
VRNT_API uint32_t vrdmContainerSize(const vrdmScene_t* scene, uint32_t objectClass);

/** Returns whether there is a live object at an index. Any index is allowed. Errors: none. */
VRNT_API bool vrdmValid(const vrdmScene_t* scene, uint32_t objectClass, int32_t index);

/**
 * Returns the id of a program or an asset; null for other classes. The id of a program is a hash of
 * its text, and is all zero in a free slot. The id of an asset is random, and stays in a free slot.
 * Ownership: belongs to the scene and is valid until the next addition to the class.
 * Errors: none.
 */
VRNT_API const vrntUniqueId_t* vrdmGetUniqueId(const vrdmScene_t* scene, uint32_t objectClass,
                                               int32_t index);

/**
 * Removes an object and frees its slot. Increments the class and scene change counters. The slot
 * may already be free.
 *
 * A program loses its id, and an asset releases its storage block. Everything else in the slot
 * stays, and references to the object are not changed.
 *
 * Returns true; false for an invalid code.
 * Errors: none. The function may allocate a few bytes to remember the slot. If that fails, the next
 * addition searches for the slot.
 */
VRNT_API bool vrdmRemove(vrdmScene_t* scene, uint32_t objectClass, int32_t index);

/**
 * Returns the number of references to an object: those in single reference slots and in the lists
 * of live objects. References in the emitters of a LightGroup and the decals of a DecalList are not
 * counted. So the result for a Light or a Decal is always 0, and for a Shape it counts the
 * references from bake tasks only. For the index -1, the result is the number of required slots
 * that are not set; optional slots are not counted.
 *
 * Cost: the first call for a class reads all objects that can refer to it. The scene then keeps the
 * counts, in about four bytes for each object that is referred to and for each reference slot that
 * refers to it. Every function that changes references updates the counts, so later calls take as
 * long in a large scene as in a small one. Some objects can change without a call, so each call
 * reads these again:
 *
 *  - A list whose elements vrdmModifyReferenceList() returned, at least until the next addition to
 *    its class.
 *  - All objects of a class whose container C++ code took for writing (Scene::container()).
 *  - All objects of a class that has thousands of different words in a reference slot that are not
 *    valid indices.
 *
 * Errors: none. If there is no memory to keep the counts, each call reads the objects.
 */
VRNT_API uint32_t vrdmCountReferences(const vrdmScene_t* scene, uint32_t objectClass,
                                      int32_t index);

/* Programs: CameraProgram, MaterialProgram, LightProgram. */

/**
 * Adds a program. Increments the class and scene change counters. `text` is a NUL-terminated
 * string; the scene copies it.
 * Returns the index of the program; ~0 for a class of assets or instances; 0 for an invalid code.
 * Errors: throws std::bad_alloc.
 */
VRNT_API uint32_t vrdmAddProgram(vrdmScene_t* scene, uint32_t objectClass, const char* text);

/**
 * Returns the text of a program, a NUL-terminated string: empty, but never null, if the program has
 * no text. Null for other classes. The text of a removed program remains until the slot is used
 * again.
 * Ownership: belongs to the scene and is valid until the next addition to the class.
 * Errors: none.
 */
VRNT_API const char* vrdmGetProgramSource(const vrdmScene_t* scene, uint32_t objectClass,
                                          int32_t index);

/* Assets: Mesh, Texture, MaterialGraph. */

/**
 * Adds an asset with a new random id. Increments the class and scene change counters.
 *
 * `desc` is the record of the class: vrdmMeshDesc (16 bytes), vrdmTextureDesc (20 bytes) or
 * vrdmMaterialGraphDesc (24 bytes) of asset_records.h. The scene copies it. `storage` points to a
 * handle to the bytes. The scene adds its own reference to the block; the caller's reference stays
 * the caller's. The block must hold as many bytes as the record says; this is not checked.
 *
 * Returns the index of the asset; ~0 for a class of programs or instances; 0 for an invalid code.
 * Errors: throws boost::uuids::entropy_error and std::bad_alloc.
 */
VRNT_API uint32_t vrdmAddAsset(vrdmScene_t* scene, uint32_t objectClass, const void* desc,
                               AssetStorage* const* storage);

/**
 * Reads an asset. Copies its record to `desc` (16, 20 or 24 bytes), unless `desc` is null, and
 * returns the address of the scene's handle to the bytes. For other classes, returns null and
 * leaves `desc` unchanged.
 *
 * The handle is null in the slot of a removed asset. A slot is also free if the data of its block
 * is null. If a host that shares the block sets the data to null later, additions may miss the
 * slot until vrdmRemove() is called for it.
 *
 * Ownership: the handle belongs to the scene and is valid until the next addition to the class. To
 * keep the bytes longer, add a reference with vrdmAssetStorageRetain().
 * Errors: none.
 */
VRNT_API AssetStorage** vrdmGetAssetStorage(const vrdmScene_t* scene, uint32_t objectClass,
                                            int32_t index, void* desc);

/**
 * Replaces the record and the bytes of an asset. Its id and the references to it stay. Copies the
 * record from `desc`, and as many bytes as it says from `bytes` into a new block. A block that
 * others share is not changed. Increments the class and scene change counters.
 *
 * The function does not check that the slot is live: a free slot becomes live, but the next
 * addition may use it nevertheless.
 *
 * Returns true for a class of assets, else false.
 * Errors: throws std::bad_alloc; nothing is changed.
 */
VRNT_API bool vrdmUpdateAsset(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                              const void* desc, const void* bytes);

/* Instances: all other classes. */

/**
 * Adds an object with unset reference slots, empty lists and default groups. Increments all change
 * counters of the object, and the class and scene change counters. In a slot that was used before,
 * the counters continue from their last values, and the former value stays until a new one is set.
 * Returns the index of the object; ~0 for a class of programs or assets; 0 for an invalid code.
 * Errors: throws std::bad_alloc.
 */
VRNT_API uint32_t vrdmCreateInstance(vrdmScene_t* scene, uint32_t objectClass);

/**
 * Returns a copy of an object's group: a new value of the type vrdmFieldType(objectClass, group).
 * Null if the class has no such group.
 * Errors: throws std::bad_alloc.
 */
VRNT_API vrntValue_t* vrdmGetDataValue(const vrdmScene_t* scene, uint32_t objectClass,
                                       int32_t index, uint32_t group);

/**
 * Replaces an object's group by a copy of the value's bytes. For every class of instances, it
 * increments the class and scene change counters, even if the value is refused. If the value is
 * stored, it also increments the counters of the group and of the object.
 * Returns true if the value was stored; false if its type is not that of the group, or if the class
 * has no such group.
 * Errors: throws std::bad_alloc if there is no memory for the group's type at its first use.
 */
VRNT_API bool vrdmSetDataValue(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                               uint32_t group, const vrntValue_t* value);

/**
 * Returns the value of a Camera, Light or Material, shared with the scene, as a new reference. Null
 * for other classes and for an object that was never given a value.
 * Errors: none.
 */
VRNT_API vrntValue_t* vrdmGetInstanceValue(const vrdmScene_t* scene, uint32_t objectClass,
                                           int32_t index);

/**
 * Sets the value of a Camera, Light or Material. The scene adds its own reference; nothing is
 * copied. A value of any type is accepted. Increments the change counter of the object, and the
 * class and scene change counters.
 * Returns true for every class of instances; for those without a value, nothing is changed. Returns
 * false for programs, assets and an invalid code.
 * Errors: none.
 */
VRNT_API bool vrdmSetInstanceValue(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                   const vrntValue_t* value);

/* References. A reference slot is single or a list, as vrdmReferenceType() says. */

/**
 * Returns the index in a single reference slot, or -1 if it is not set; for a list, returns the
 * number of its elements.
 * Returns 0 for a reference slot that the class does not have and for an invalid code, and
 * -1 for programs and assets.
 * Errors: none.
 */
VRNT_API int32_t vrdmGetReference(const vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                  uint32_t slot);

/** Another name for vrdmGetReference(): the kind of the slot decides what is returned. */
VRNT_API int32_t vrdmGetReferenceCount(const vrdmScene_t* scene, uint32_t objectClass,
                                       int32_t index, uint32_t slot);

/**
 * Stores `word` in a single reference slot, without any check; for a list, sets the number of its
 * elements to `word`. A shorter list loses its last elements. A longer list receives elements -1,
 * or 0x80000000 (none) in the emitters of a LightGroup and the decals of a DecalList.
 *
 * For every class of instances, it increments the class and scene change counters. If the class has
 * the slot, it also increments the object's counters for references and for the whole object.
 *
 * Returns true if the class has the slot, else false.
 * Errors: throws std::bad_alloc; the slot is not changed.
 */
VRNT_API bool vrdmSetReference(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                               uint32_t slot, uint32_t word);

/** Another name for vrdmSetReference(): the kind of the slot decides what is set. */
VRNT_API bool vrdmSetReferenceCount(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                    uint32_t slot, uint32_t word);

/**
 * Returns the elements of a list, vrdmGetReferenceCount() of them. Null for an empty list, a single
 * reference slot, a reference slot that the class does not have, and other classes.
 * Ownership: belongs to the scene and is valid until the length of the list changes, until
 * vrdmUpdateTextureReferences() replaces the list, or until the next addition to the class.
 * Errors: none.
 */
VRNT_API const int32_t* vrdmGetReferenceList(const vrdmScene_t* scene, uint32_t objectClass,
                                             int32_t index, uint32_t slot);

/**
 * Returns the elements of a list for writing. The call itself counts as a change: for every class
 * of instances, it increments the class and scene change counters, and if the class has the slot,
 * the object's counters for references and for the whole object. A host may therefore call it for a
 * single reference slot, where it returns null, to record a change.
 * Result and ownership: as vrdmGetReferenceList(). All functions, including vrdmCountReferences(),
 * see what the host writes as long as the pointer is valid.
 * Errors: none.
 */
VRNT_API int32_t* vrdmModifyReferenceList(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                          uint32_t slot);

/**
 * Updates the list "textures" of a Light or Material from its value. Call it after texture
 * references in the value have changed. The new list contains the textures that the value names, in
 * the order of the value's fields, each as often as it is named. The list is empty if the object
 * was never given a value. Pointers to the elements of the old list become invalid.
 *
 * A value names a texture by a struct with one int field that is called `texture_ref`,
 * `spectrum_texture`, `spectrum_sphere_texture`, `normal_texture`, `float_texture` or
 * `float_sphere_texture`, in structs at any depth. A negative number names no texture. The function
 * does not look into arrays, and not into the value of a Camera.
 *
 * For every class of instances, it increments the class and scene change counters, and if the class
 * has reference slots, the object's counters for references and for the whole object. It does
 * nothing for programs, for assets and for an invalid code.
 * Errors: throws std::bad_alloc.
 */
VRNT_API void vrdmUpdateTextureReferences(vrdmScene_t* scene, uint32_t objectClass, int32_t index);

VRNT_END_DECLS

#endif
