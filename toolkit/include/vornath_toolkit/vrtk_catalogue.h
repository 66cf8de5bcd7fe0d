/*
 * The catalogue in several forms, and what changed since a saved catalogue. vrtk.h has the rules
 * for all functions, and docs/catalogue_forms.md describes the forms.
 *
 * The catalogue is what vornath_data tells of its classes, groups and fields at the time of the
 * call. The same library gives the same bytes on every call.
 */
#ifndef VORNATH_TOOLKIT_CATALOGUE_H
#define VORNATH_TOOLKIT_CATALOGUE_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/** Forms of the catalogue. */
enum {
  VRTK_CATALOGUE_TEXT = 0,    /**< for people, in columns of a terminal */
  VRTK_CATALOGUE_JSON = 1,    /**< for programs: everything that the library tells */
  VRTK_CATALOGUE_SCHEMA = 2,  /**< a JSON Schema (draft 2020-12) of scenes in JSON */
  VRTK_CATALOGUE_HTML = 3,    /**< one page for a browser, which fetches nothing */
  VRTK_CATALOGUE_MARKDOWN = 4 /**< the page docs/catalogue.md */
};

/**
 * Writes the catalogue in a form, VRTK_CATALOGUE_*. All forms are UTF-8 and end in a newline.
 *
 * `filter` may be null for the whole catalogue. Otherwise it is the name of a class, such as
 * "Camera", or the names of a class and of one of its groups, such as "Camera/General", as the
 * catalogue has them. "scene" stands for the settings of the whole scene. With a filter, the schema
 * is that of one object of the class, or of the group, as vrtkSceneGet() writes them.
 *
 * `*text` receives a new string; free it with vrtkStringDestroy().
 * Errors: VRTK_INVALID_ARGUMENT for another form; VRTK_CATALOGUE_UNKNOWN for a filter that names
 * nothing in the catalogue, with the nearest name in the message; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkCatalogue(uint32_t form, const char* filter, char** text, vrtkError** error);

/** A difference between a saved catalogue and that of the library. The strings belong to the list
    that the change is from. */
typedef struct vrtkCatalogueChange {
  const char* code;    /**< a stable name in capitals, such as "FIELD_REMOVED" */
  bool breaking;       /**< whether a file or a host of the saved catalogue breaks */
  const char* address; /**< what changed, such as "Camera/groups/General/near_distance"; empty for
                            the catalogue as a whole */
  const char* message; /**< what was saved and what is there now, one line */
} vrtkCatalogueChange;

/** The differences between a saved catalogue and that of the library. */
typedef struct vrtkCatalogueChanges vrtkCatalogueChanges;

/**
 * Compares a saved catalogue with that of the library. `json` is a text of `size` bytes in the form
 * VRTK_CATALOGUE_JSON. If it was written with a filter, only the part that the filter selects is
 * compared.
 *
 * A change breaks if a file or a host that was made for the saved catalogue can go wrong: a name is
 * gone, or a kind, a type, an offset, a size, an order or the version of scene files is another.
 * Additions that move nothing, and changes of labels, descriptions, defaults, limits, units and
 * flags do not break. docs/catalogue_forms.md lists the codes.
 *
 * `*changes` receives a new list; destroy it with vrtkCatalogueChangesDestroy().
 * Errors: VRTK_CATALOGUE_INVALID for a text that is no catalogue, with the place and what was
 * expected there; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkCatalogueCompare(const char* json, uint64_t size,
                                       vrtkCatalogueChanges** changes, vrtkError** error);

/** Destroys a list of changes. Does nothing for null. Errors: none. */
VRTK_API void vrtkCatalogueChangesDestroy(vrtkCatalogueChanges* changes);

/** Returns the number of changes, 0 if the catalogues are the same. Errors: none. */
VRTK_API uint64_t vrtkCatalogueChangesCount(const vrtkCatalogueChanges* changes);

/** Returns the number of changes that break. Errors: none. */
VRTK_API uint64_t vrtkCatalogueChangesBreaking(const vrtkCatalogueChanges* changes);

/**
 * Returns a change. The changes are in the order of the catalogue; what is gone stands where the
 * saved catalogue has it. Null if `index` is vrtkCatalogueChangesCount() or greater.
 * Ownership: belongs to the list and is valid as long as the list.
 * Errors: none.
 */
VRTK_API const vrtkCatalogueChange* vrtkCatalogueChangesGet(const vrtkCatalogueChanges* changes,
                                                            uint64_t index);

/**
 * Writes a list of changes as a JSON document with the members "breaking" (a count) and "changes",
 * an array of objects with the members "code", "breaking", "address" and "message". `*json`
 * receives a new string; free it with vrtkStringDestroy(). Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkCatalogueChangesJson(const vrtkCatalogueChanges* changes, char** json,
                                           vrtkError** error);

VRNT_END_DECLS

#endif
