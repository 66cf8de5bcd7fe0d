/*
 * Scenes: making them, filling them with objects, reading and changing these, and scene files.
 *
 * A scene is driven by three plain things: the scene's pointer, a class number as vrdmObjectName()
 * knows it (0 to 17), and a slot number in that class. An object is its slot: slots never move, a
 * removed object leaves a gap, and the next addition to the class takes the lowest gap. Objects
 * refer to each other by slot number, without any check, -1 standing for none.
 *
 * Shared by all functions here: the scene is not null. There are no error objects; a function says
 * by a neutral result (~0, null, 0, -1, false) that the class doesn't allow the call. A class
 * number past the last class gets 0, null or false: an addition then answers 0, which looks like a
 * slot number but is none, so a host doesn't pass such a class. An index is not checked by any
 * function but vrdmValid(); it is the caller's to give one below vrdmContainerSize(). Every
 * vrntValue_t that a function returns is the caller's, ended with vrntValueDestroy(); one that is
 * given to a function is not null and stays the caller's. Pointers into a scene die at the next
 * addition to the class, and with the scene.
 *
 * Errors: nothing is caught. C++ exceptions from underneath pass to the host: std::bad_alloc and
 * what a function names. vrdmCreateScene() alone answers a failed allocation with null.
 *
 * Threads: a scene has no lock and is used by one thread at a time, but functions that take a const
 * scene may run side by side. Scenes that share asset bytes or values may be used on different
 * threads.
 *
 * Counters: a scene counts its changes, as a whole, for each scene-wide group and for each class,
 * and an object counts its own. "The class rises" below means the counter of the class and that of
 * the scene.
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

/** A scene. The handle is the address of the vrnt::data::Scene itself. */
typedef vrnt::data::Scene vrdmScene_t;

/** 16 bytes that name a scene, a program or an asset. */
typedef vrnt::UniqueId vrntUniqueId_t;
#else
#include <stdbool.h>

/** A scene. It begins with the scene's id. */
typedef struct vrdmScene_t vrdmScene_t;

/** 16 bytes that name a scene, a program or an asset; all zero for none. */
typedef struct vrntUniqueId_t {
  uint8_t bytes[16];
} vrntUniqueId_t;
#endif

VRNT_BEGIN_DECLS

/* Scenes and files. */

/**
 * Makes an empty scene with a new random id and the default scene-wide groups.
 * Result: a scene that the caller ends with vrdmDestroyScene(); null if the allocation fails.
 * Errors: throws boost::uuids::entropy_error if the system has no randomness to give.
 */
VRNT_API vrdmScene_t* vrdmCreateScene(void);

/**
 * Ends a scene: its containers from the last class to the first, which drops its references on
 * asset bytes and values, and then its id. Null is allowed. Errors: none.
 */
VRNT_API void vrdmDestroyScene(vrdmScene_t* scene);

/**
 * The scene's id.
 * Ownership: belongs to the scene, valid as long as that; it is the scene's first field.
 * Errors: none.
 */
VRNT_API const vrntUniqueId_t* vrdmSceneId(const vrdmScene_t* scene);

/**
 * Writes the scene to a file, in place of one that stands there. Every live Camera, Light and
 * Material must have been given its value.
 * Argument: the path is UTF-8. A file that can't be opened or written is no error and not reported.
 * Errors: throws vrnt::Exception if a value can't be written; std::bad_alloc.
 */
VRNT_API void vrdmSerialize(const vrdmScene_t* scene, const char* path);

/**
 * Reads a scene from a file; it takes the id that stands in the file.
 * Argument: the path is UTF-8.
 * Result: a new scene that the caller ends with vrdmDestroyScene(); null if the file can't be read,
 * is no scene or is one of another version. A file that ends early gives a scene in which the rest
 * is empty.
 * Errors: throws vrnt::Exception if a stored value can't be read; std::bad_alloc, also for a
 * damaged file that asks for too much.
 */
VRNT_API vrdmScene_t* vrdmDeserialize(const char* path);

/* Scene-wide groups: 0 "Cut planes", 1 "Rasterizer", 2 "Raytracer", 3 "General". */

/**
 * A copy of a scene-wide group as a value of the type vrdmFieldType(~0, group).
 * Result: a new value; null for a group past 3.
 * Errors: std::bad_alloc.
 */
VRNT_API vrntValue_t* vrdmGetSceneDataValue(const vrdmScene_t* scene, uint32_t group);

/**
 * Writes a scene-wide group whole. The group's counter and the scene's rise.
 * Result: true if it was stored; false, with nothing changed and nothing counted, if the value's
 * type is not the group's or for a group past 3.
 * Errors: std::bad_alloc, where there is no memory for the group's type at its first use.
 */
VRNT_API bool vrdmSetSceneDataValue(vrdmScene_t* scene, uint32_t group, const vrntValue_t* value);

/* Slots. */

/** The number of the class's slots, free ones included; it never falls. Errors: none. */
VRNT_API uint32_t vrdmContainerSize(const vrdmScene_t* scene, uint32_t objectClass);

/** Whether there is a live object at the index: any index is allowed. Errors: none. */
VRNT_API bool vrdmValid(const vrdmScene_t* scene, uint32_t objectClass, int32_t index);

/**
 * The id of a program (a hash of its text; null in a free slot) or of an asset (random; it stays in
 * a free slot); null pointer for all other classes.
 * Ownership: belongs to the scene, valid until the next addition to the class. Errors: none.
 */
VRNT_API const vrntUniqueId_t* vrdmGetUniqueId(const vrdmScene_t* scene, uint32_t objectClass,
                                               int32_t index);

/**
 * Frees a slot; freeing a free one is harmless. The class rises. A program loses its id, an asset
 * its reference to the bytes; all else that the slot holds stays, and so do references to the
 * object.
 * Result: true; false past the last class.
 * Errors: none. To take note of the slot a few bytes may be allocated; if they can't, the next
 * addition looks for it.
 */
VRNT_API bool vrdmRemove(vrdmScene_t* scene, uint32_t objectClass, int32_t index);

/**
 * Counts the slots and list elements of live objects that refer to an object. Coded lists (the
 * emitters of light groups, the decals of decal lists) are not counted, so a Light or a Decal
 * always has 0 and a Shape only its uses in bake tasks. For an index of -1 the required slots that
 * are unset count, the optional ones don't.
 * Cost: the first call for a class reads all objects that can refer to it. The scene then keeps the
 * counts, about four bytes for each object that is referred to and each slot that refers to it, and
 * every function that changes references keeps them in step, so that later calls take as long in a
 * large scene as in a small one. What can change without a call is read each time: a list whose
 * elements vrdmModifyReferenceList() handed out, at least until its class is added to; and all
 * objects of a class whose container C++ code took for writing (Scene::container()). So are the
 * objects of a class that has thousands of different words in a slot that are no slot numbers.
 * Errors: none. Without the memory to keep counts, the objects are read.
 */
VRNT_API uint32_t vrdmCountReferences(const vrdmScene_t* scene, uint32_t objectClass,
                                      int32_t index);

/* Programs: CameraProgram, MaterialProgram, LightProgram. */

/**
 * Adds a program. The class rises.
 * Argument: a NUL-terminated text, which is copied.
 * Result: the slot; ~0 for a class of assets or instances; 0 past the last class.
 * Errors: std::bad_alloc.
 */
VRNT_API uint32_t vrdmAddProgram(vrdmScene_t* scene, uint32_t objectClass, const char* text);

/**
 * The text of a program, empty if there is none; that of a removed program is still there until the
 * slot is used again.
 * Result: NUL-terminated, never null for a program; null for other classes.
 * Ownership: belongs to the scene, valid until the next addition to the class. Errors: none.
 */
VRNT_API const char* vrdmGetProgramSource(const vrdmScene_t* scene, uint32_t objectClass,
                                          int32_t index);

/* Assets: Mesh, Texture, MaterialGraph. */

/**
 * Adds an asset with a new random id. The class rises.
 * Arguments: `desc` is the class's record, vrdmMeshDesc (16 bytes), vrdmTextureDesc (20) or
 * vrdmMaterialGraphDesc (24) of asset_records.h; `storage` points to a handle on the bytes, to which
 * the scene adds a reference of its own. The block must hold as many bytes as the desc says: that
 * isn't checked.
 * Result: the slot; ~0 for a class of programs or instances; 0 past the last class.
 * Errors: boost::uuids::entropy_error; std::bad_alloc.
 */
VRNT_API uint32_t vrdmAddAsset(vrdmScene_t* scene, uint32_t objectClass, const void* desc,
                               AssetStorage* const* storage);

/**
 * Reads an asset: copies its record to `desc` (16, 20 or 24 bytes; left alone for other classes and
 * if null) and returns the place of its handle, which holds null in a removed slot. A block without
 * data makes a slot free as well; of one that loses its data later, by a host that holds it, the
 * next addition need not know before vrdmRemove() was called for it.
 * Result: null for other classes.
 * Ownership: the handle belongs to the scene and is valid until the next addition to the class; a
 * host that keeps the bytes longer adds a reference of its own with vrdmAssetStorageRetain().
 * Errors: none.
 */
VRNT_API AssetStorage** vrdmGetAssetStorage(const vrdmScene_t* scene, uint32_t objectClass,
                                            int32_t index, void* desc);

/**
 * Replaces an asset's record and bytes in place; its id and the references to it stay. As many
 * bytes as `desc` says are copied from `bytes` into a new block. The class rises. The slot is not
 * checked for being live: a free one comes to life, and the next addition may take it all the same.
 * Result: true for a class of assets, else false.
 * Errors: std::bad_alloc, with nothing changed.
 */
VRNT_API bool vrdmUpdateAsset(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                              const void* desc, const void* bytes);

/* Instances: all other classes. */

/**
 * Adds an object with unset slots, empty lists and default groups. Its counters and the class rise.
 * A slot that was in use before keeps its counts, and its value until a new one is set.
 * Result: the slot; ~0 for a class of programs or assets; 0 past the last class.
 * Errors: std::bad_alloc.
 */
VRNT_API uint32_t vrdmCreateInstance(vrdmScene_t* scene, uint32_t objectClass);

/**
 * A copy of an object's group as a value of the type vrdmFieldType(objectClass, group).
 * Result: a new value; null if the class has no such group.
 * Errors: std::bad_alloc.
 */
VRNT_API vrntValue_t* vrdmGetDataValue(const vrdmScene_t* scene, uint32_t objectClass,
                                       int32_t index, uint32_t group);

/**
 * Writes an object's group whole. For instances the class rises in any case, the group's and the
 * object's counters only if the value is stored.
 * Result: true if it was stored; false if the value's type is not the group's, or the class has no
 * such group.
 * Errors: std::bad_alloc, where there is no memory for the group's type at its first use.
 */
VRNT_API bool vrdmSetDataValue(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                               uint32_t group, const vrntValue_t* value);

/**
 * The value of a Camera, Light or Material.
 * Result: a new reference; null for other classes, and for an object that was never given one.
 * Errors: none.
 */
VRNT_API vrntValue_t* vrdmGetInstanceValue(const vrdmScene_t* scene, uint32_t objectClass,
                                           int32_t index);

/**
 * Gives a Camera, Light or Material its value, shared with the caller and not copied. The class and
 * the object's counter rise. Any type is taken.
 * Result: true, for other instances too, which it leaves alone; false for programs, assets and past
 * the last class.
 * Errors: none.
 */
VRNT_API bool vrdmSetInstanceValue(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                   const vrntValue_t* value);

/* References. A slot is single or a list, as vrdmReferenceType() tells. */

/**
 * The slot number in a single slot, -1 if it is unset; the number of elements of a list.
 * Result: 0 for a slot that the class lacks, and past the last class; -1 for programs and assets.
 * Errors: none.
 */
VRNT_API int32_t vrdmGetReference(const vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                  uint32_t slot);

/** vrdmGetReference() under a second name: the kind of slot decides, not the name. */
VRNT_API int32_t vrdmGetReferenceCount(const vrdmScene_t* scene, uint32_t objectClass,
                                       int32_t index, uint32_t slot);

/**
 * Stores the word in a single slot as it stands, or makes a list that many elements long: cut at
 * its end, or lengthened by -1 (by 0x80000000, no target, where the elements are coded). For
 * instances the class rises in any case, the object's two counters only if it has the slot.
 * Result: true if the class has the slot, else false.
 * Errors: std::bad_alloc.
 */
VRNT_API bool vrdmSetReference(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                               uint32_t slot, uint32_t word);

/** vrdmSetReference() under a second name: the kind of slot decides, not the name. */
VRNT_API bool vrdmSetReferenceCount(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                    uint32_t slot, uint32_t word);

/**
 * The elements of a list, vrdmGetReferenceCount() of them.
 * Result: null for an empty list, a single slot, a slot that the class lacks, and other classes.
 * Ownership: belongs to the scene, valid until the list's length changes or the class is added to.
 * Errors: none.
 */
VRNT_API const int32_t* vrdmGetReferenceList(const vrdmScene_t* scene, uint32_t objectClass,
                                             int32_t index, uint32_t slot);

/**
 * The elements of a list, for writing. This counts as a change: for instances the class rises, and
 * if the class has the slot, single or not, the object's two counters; so a host may call it on a
 * single slot just to record one.
 * Result and ownership: as vrdmGetReferenceList(). What is written later is seen by all functions
 * here, vrdmCountReferences() too, as long as the pointer is valid.
 * Errors: none.
 */
VRNT_API int32_t* vrdmModifyReferenceList(vrdmScene_t* scene, uint32_t objectClass, int32_t index,
                                          uint32_t slot);

/**
 * To be called when texture references inside an object's value have changed: replaces the list
 * "textures" of a Light or Material by the textures that its value names, in the order of the
 * value's fields, each as often as it is named. A texture is named by a struct of one int field
 * that is called `texture_ref`, `spectrum_texture`, `spectrum_sphere_texture`, `normal_texture`,
 * `float_texture` or `float_sphere_texture`, at any depth of structs in structs; a negative number
 * names none. Arrays aren't looked into, nor is the value of a Camera. An object that was never
 * given a value names none.
 * For every instance the class rises, and if the class has slots the object's two counters.
 * Programs and assets are left alone, and nothing happens past the last class.
 * Errors: std::bad_alloc.
 */
VRNT_API void vrdmUpdateTextureReferences(vrdmScene_t* scene, uint32_t objectClass, int32_t index);

VRNT_END_DECLS

#endif
