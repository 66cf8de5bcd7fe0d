/*
 * Scenes as JSON: export a scene, build one from JSON, read and write single values by their
 * address, and apply patches. vrtk.h has the rules for all functions, and docs/scene_json.md
 * describes the form.
 *
 * The form is lossless: a scene that is exported and built again is equivalent to the original, and
 * has its free slots, its ids and its value sharing. The same content gives the same bytes, with
 * one field on each line. What is not content is left out: change counters, what remains in free
 * slots, and padding.
 *
 * The sparse form leaves out each field that has the catalogue's default bit by bit, each reference
 * slot that is not set and each empty list. The full form has all of them.
 *
 * An address is a path in the form, without the "objects" around the classes: "Camera/0",
 * "Camera/0/groups/Transformation/matrix/x", "Shape/3/slots/material",
 * "LightGroup/0/slots/emitters/2", "Material/1/value/data/reflectance", "Mesh/0/desc/triangles",
 * "MaterialProgram/0/text", "scene/Raytracer/ray_epsilon", "id". An address that ends early names
 * everything below it.
 */
#ifndef VORNATH_TOOLKIT_JSON_H
#define VORNATH_TOOLKIT_JSON_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_data/scene_interface.h"
#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/* Export. */

/** How a scene is exported. */
typedef struct vrtkExportOptions {
  uint64_t structSize;     /**< sizeof(vrtkExportOptions) */
  uint32_t full;           /**< not 0: the full form, else the sparse form */
  uint32_t inlineAssets;   /**< not 0: the bytes of assets stand in the document in base64; the
                                members below are not used */
  const char* assetFolder; /**< the folder for the bytes of assets: each block becomes a file
                                "SHA256.bin" in it, once for all assets with the same bytes. It is
                                made if it does not exist and the scene has assets. Null: no file
                                is written */
  const char* assetPrefix; /**< what stands before the file's name in the document, such as
                                "box.assets/". Null: nothing if there is an asset folder; without
                                one, the document names no files, only the size and the digest of
                                each asset */
} vrtkExportOptions;

/** The default options, as in `vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;`: the sparse
    form, and assets by size and digest alone. */
#define VRTK_EXPORT_OPTIONS_INIT \
  { sizeof(vrtkExportOptions), 0, 0, 0, 0 }

/**
 * Takes the next bytes of a document. `context` is the pointer that was passed with the function.
 * Returns 0 to go on; any other number ends the export with VRTK_WRITE_STOPPED.
 */
typedef uint32_t (*vrtkWriteFunction)(const void* bytes, uint64_t size, void* context);

/**
 * Exports a scene as a JSON document in UTF-8 that ends with a line feed. Calls `write` with the
 * document in pieces, in order, so that it takes no memory for the whole. `options` may be null.
 *
 * An asset may have fewer bytes than its record says, and an object may lack its value; the
 * document shows both, but cannot be built again in the first case.
 *
 * Errors: VRTK_WRITE_STOPPED, after which pieces were written; VRTK_VALUE_CYCLE for a value whose
 * references form a cycle; the VRTK_SAVE_* codes and VRTK_FILE_NOT_REGULAR for the files of assets;
 * VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneExport(const vrdmScene_t* scene, const vrtkExportOptions* options,
                                  vrtkWriteFunction write, void* context, vrtkError** error);

/**
 * Exports a scene to a string. `*json` receives a new NUL-terminated string; free it with
 * vrtkStringDestroy(). `size` may be null; otherwise `*size` receives its length in bytes. A
 * document contains no NUL character.
 * Errors: as vrtkSceneExport().
 */
VRTK_API uint32_t vrtkSceneExportString(const vrdmScene_t* scene, const vrtkExportOptions* options,
                                        char** json, uint64_t* size, vrtkError** error);

/**
 * Exports a scene to a file, whole or not at all, as vrtkSceneSave() writes one. The bytes of
 * assets go into a folder beside it, whose name is that of the file with ".assets" in place of
 * ".json": "box.json" has "box.assets/". `options` may be null; the folder and the prefix in them
 * are not used. If the function fails, the files of assets that it has made are removed. Errors: as
 * vrtkSceneExport() and vrtkSceneSave().
 */
VRTK_API uint32_t vrtkSceneExportFile(const vrdmScene_t* scene, const char* path,
                                      const vrtkExportOptions* options, vrtkError** error);

/* What is wrong with a document. */

/** A message about a document. The strings belong to the report. */
typedef struct vrtkJsonMessage {
  const char* code; /**< a stable name in capitals, such as "JSON_UNKNOWN_KEY" */
  uint64_t line;    /**< 1 for the first; 0 if the place is unknown */
  uint64_t column;  /**< 1 for the first; counts characters, not bytes; 0 if the place is unknown */
  uint64_t offset;  /**< bytes from the start of the document; VRTK_JSON_NO_OFFSET if unknown */
  const char* pointer; /**< the place as a JSON pointer (RFC 6901), such as
                            "/objects/Camera/0/groups/General"; empty for the whole document */
  const char*
      message; /**< what was found, what was expected, and the nearest name if one is near */
} vrtkJsonMessage;

/** The offset of a message without a place in the document. */
#define VRTK_JSON_NO_OFFSET UINT64_MAX

/** The messages about a document. */
typedef struct vrtkJsonReport vrtkJsonReport;

/** Destroys a report. Does nothing for null. Errors: none. */
VRTK_API void vrtkJsonReportDestroy(vrtkJsonReport* report);

/** Returns the number of messages that the report keeps, in the order of the document. Errors:
    none. */
VRTK_API uint64_t vrtkJsonReportCount(const vrtkJsonReport* report);

/** Returns whether there were more messages than the report keeps. Errors: none. */
VRTK_API bool vrtkJsonReportTruncated(const vrtkJsonReport* report);

/**
 * Returns a message, which belongs to the report and is valid as long as the report. Null if
 * `index` is vrtkJsonReportCount() or greater.
 * Errors: none.
 */
VRTK_API const vrtkJsonMessage* vrtkJsonReportMessage(const vrtkJsonReport* report, uint64_t index);

/**
 * Writes a report as a JSON document: { "valid": bool, "errors": n, "truncated": bool, "messages":
 * [ { "code", "line", "column", "offset", "pointer", "message" } ] }, with null for a place that is
 * unknown. `*json` receives a new string; free it with vrtkStringDestroy().
 * Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkJsonReportJson(const vrtkJsonReport* report, char** json, vrtkError** error);

/* Build. */

/** How a scene is built. */
typedef struct vrtkBuildOptions {
  uint64_t structSize;     /**< sizeof(vrtkBuildOptions) */
  const char* assetFolder; /**< the folder that the files of assets are named from. A name that
                                leads out of it is an error. Null: a file is an error */
  uint64_t maxMemory;      /**< bytes that the scene may take without its assets. 0: a GiB and 64
                                bytes for each byte of the document. UINT64_MAX: no limit */
  uint64_t maxMessages;    /**< the messages after which building ends; at least 1 */
} vrtkBuildOptions;

/** The default options, as in `vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;`. */
#define VRTK_BUILD_OPTIONS_INIT \
  { sizeof(vrtkBuildOptions), 0, 0, 20 }

/**
 * Builds a scene from a JSON document of `size` bytes in UTF-8, sparse or full. The document may
 * leave out everything but "format" and "formatVersion": what is left out has its default, a scene
 * without an "id" gets a random one, and so does an asset; a Camera, Light or Material without a
 * "value" gets the value of an empty struct. `options` may be null. `json` may be null only if
 * `size` is 0.
 *
 * `*scene` receives a new scene that the caller owns; destroy it with vrdmDestroyScene(). `report`
 * may be null; otherwise `*report` receives a new report if the function fails with
 * VRTK_JSON_INVALID; destroy it with vrtkJsonReportDestroy().
 *
 * Errors: VRTK_JSON_INVALID if something is wrong with the document, with the first message and the
 * number of the others; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneBuild(const char* json, uint64_t size, const vrtkBuildOptions* options,
                                 vrdmScene_t** scene, vrtkJsonReport** report, vrtkError** error);

/**
 * Builds a scene from a JSON file, as vrtkSceneBuild() does. If the options name no asset folder,
 * it is the folder of the file.
 * Errors: as vrtkSceneBuild(); VRTK_FILE_MISSING, VRTK_FILE_UNREADABLE, VRTK_FILE_IS_FOLDER,
 * VRTK_FILE_NOT_REGULAR, VRTK_FILE_CHANGED.
 */
VRTK_API uint32_t vrtkSceneBuildFile(const char* path, const vrtkBuildOptions* options,
                                     vrdmScene_t** scene, vrtkJsonReport** report,
                                     vrtkError** error);

/* Single values. */

/**
 * Returns what an address names, as JSON in the full form, without a line feed at its end. The
 * bytes of assets are given by their size and digest; vrtkSceneGetBytes() returns them. `*json`
 * receives a new string; free it with vrtkStringDestroy(). Errors: VRTK_ADDRESS_UNKNOWN with the
 * part of the address that names nothing, and the nearest name; VRTK_VALUE_CYCLE;
 * VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneGet(const vrdmScene_t* scene, const char* address, char** json,
                               vrtkError** error);

/**
 * Returns the bytes that an address names: those of an asset ("Mesh/0/bytes") or of the text of a
 * program ("LightProgram/0/text"). `*bytes` and `*size` receive the bytes, which belong to the
 * scene; they are valid until the next addition to the class, and not longer than the asset or the
 * text stays.
 * Errors: VRTK_ADDRESS_UNKNOWN for another address.
 */
VRTK_API uint32_t vrtkSceneGetBytes(const vrdmScene_t* scene, const char* address,
                                    const void** bytes, uint64_t* size, vrtkError** error);

/** How a value is set or a patch is applied. */
typedef struct vrtkSetOptions {
  uint64_t structSize;     /**< sizeof(vrtkSetOptions) */
  uint32_t enforceLimits;  /**< not 0: a number outside the limits of its field (`@min`, `@max`) is
                                refused */
  const char* assetFolder; /**< as in vrtkBuildOptions */
} vrtkSetOptions;

/** The default options, as in `vrtkSetOptions options = VRTK_SET_OPTIONS_INIT;`. */
#define VRTK_SET_OPTIONS_INIT \
  { sizeof(vrtkSetOptions), 0, 0 }

/**
 * Replaces what an address names by `json`, a NUL-terminated JSON text of the same form. What is
 * left out of a struct, of the groups or of the slots has its default afterwards. Only what the
 * address names is written: an object, a group, a field, a lane of a vector, a slot or an element
 * of its list, the value of an object or a part of it, the text of a program, the record or the
 * bytes of an asset, an id. null for a whole object removes it.
 *
 * Counters: as the functions of vornath_data count such a change. A part of a value is replaced by
 * way of a new value, whose blocks are new.
 *
 * `options` may be null.
 *
 * Errors: VRTK_ADDRESS_UNKNOWN as vrtkSceneGet(); VRTK_JSON_INVALID with the line, the column and
 * the reason for a text that is no JSON or does not fit: a wrong kind, an unknown label, a number
 * out of range or, if they are enforced, outside the limits; VRTK_OUT_OF_MEMORY. The scene is then
 * as it was.
 */
VRTK_API uint32_t vrtkSceneSet(vrdmScene_t* scene, const char* address, const char* json,
                               const vrtkSetOptions* options, vrtkError** error);

/**
 * Applies a JSON patch (RFC 6902) of `size` bytes to the full form of a scene: a list of the
 * operations "add", "remove", "replace", "move", "copy" and "test", with paths such as
 * "/objects/Shape/3/slots/material". The result must be a document that can be built. Objects that
 * no operation touches are taken over as they are, and share their values and their bytes with the
 * original. Bytes of an asset that the patch names by their digest alone are found among those of
 * the scene. `options` may be null.
 *
 * The original is not changed. `*newScene` receives a new scene that the caller owns; destroy it
 * with vrdmDestroyScene(). `report` is as for vrtkSceneBuild(); a message about an operation has
 * its place in the patch and a pointer such as "/2/path", and one about the result has a pointer in
 * the full form and no place.
 *
 * Errors: VRTK_JSON_INVALID if the patch is no JSON or no patch, or if the result cannot be built;
 * VRTK_PATCH_FAILED if a path leads nowhere or a "test" fails; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkScenePatch(const vrdmScene_t* scene, const char* patchJson, uint64_t size,
                                 const vrtkSetOptions* options, vrdmScene_t** newScene,
                                 vrtkJsonReport** report, vrtkError** error);

VRNT_END_DECLS

#endif
