/*
 * The check of scene files, and its report. vrtk.h has the rules for all functions, and
 * docs/scene_check.md lists what the check reports.
 *
 * The promise of the check, in both directions:
 *
 *  - A file without errors is read by vornath_data without a crash, a hang or an exception, with at
 *    most vrtkReportInfo.openMemory bytes of memory, and every function of vornath_data and of the
 *    toolkit can be called for the scene. Only a reference that is a foreign address (the warning
 *    VALUE_FOREIGN_ADDRESS) must not be followed with vrntValueDereference().
 *  - A file that vornath_data wrote has no errors, except for a value that no reader can take: one
 *    with a chain of more than 100,000 references, or with a text beyond all measure
 *    (VALUE_TOO_DEEP, VALUE_EXPANDS, VALUE_TYPE_TOO_LARGE).
 *
 * An error means that the file must not be read. A warning means that it can be read, but that a
 * renderer may stumble over it.
 *
 * The check reads a file from front to back through a buffer. Its own memory is bounded by 16 MiB
 * and 8 bytes for each object and each block of a value, and by what vornath_data needs to parse
 * the longest text of a type in the file.
 */
#ifndef VORNATH_TOOLKIT_CHECK_H
#define VORNATH_TOOLKIT_CHECK_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_data/scene_interface.h"
#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/** What a check may use and report. */
typedef struct vrtkLimits {
  uint64_t structSize;  /**< sizeof(vrtkLimits) */
  uint64_t maxMemory;   /**< bytes that reading the file may take, beyond which the check reports
                             MEMORY_EXCEEDED; 0 for no limit */
  uint64_t maxMessages; /**< the messages that a report keeps; all are counted */
} vrtkLimits;

/** The default limits, as in `vrtkLimits limits = VRTK_LIMITS_INIT;`. */
#define VRTK_LIMITS_INIT \
  { sizeof(vrtkLimits), 0, 100 }

/** Severities of a message. */
enum { VRTK_WARNING = 0, VRTK_ERROR = 1 };

/** The offset of a message that belongs to no place in a file. */
#define VRTK_NO_OFFSET UINT64_MAX

/** A message of a report. The strings belong to the report. */
typedef struct vrtkMessage {
  const char* code;    /**< a stable name in capitals, such as "FILE_TRUNCATED" */
  uint32_t severity;   /**< VRTK_WARNING or VRTK_ERROR */
  uint64_t offset;     /**< bytes from the start of the file, or VRTK_NO_OFFSET */
  const char* address; /**< what it is about, such as "Camera/0/groups/Transformation/matrix/x";
                            empty for the file as a whole */
  const char* message; /**< what was found and what was expected */
} vrtkMessage;

/** What a check learned about a file. After an error, what was read up to there. */
typedef struct vrtkInfo {
  uint8_t id[16];       /**< the id of the scene */
  uint32_t version;     /**< the version of the file */
  uint64_t size;        /**< bytes of the file; 0 for a scene in memory */
  uint64_t assetBytes;  /**< the bytes of all assets, without their records */
  uint64_t valueBytes;  /**< the bytes of all blocks of values, without the texts of their types */
  uint64_t valueBlocks; /**< the blocks of values */
  uint64_t openMemory;  /**< an upper bound for the memory that reading the file takes, in bytes */
} vrtkInfo;

/** The objects of a class. */
typedef struct vrtkClassInfo {
  uint32_t slots; /**< all slots, free ones included */
  uint32_t live;
} vrtkClassInfo;

/** The outcome of a check: messages and what was learned. */
typedef struct vrtkReport vrtkReport;

/**
 * Checks a scene file. `limits` may be null. Succeeds for every file that can be read to its end,
 * whatever it contains: the report says whether it is valid.
 * `*report` receives a new report; destroy it with vrtkReportDestroy().
 * Errors: VRTK_FILE_MISSING, VRTK_FILE_UNREADABLE, VRTK_FILE_IS_FOLDER, VRTK_FILE_NOT_REGULAR,
 * VRTK_FILE_CHANGED, VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkCheckFile(const char* path, const vrtkLimits* limits, vrtkReport** report,
                                vrtkError** error);

/**
 * Checks the bytes of a scene file in memory, as vrtkCheckFile() checks a file. `bytes` may be null
 * only if `size` is 0.
 * Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkCheckBytes(const void* bytes, uint64_t size, const vrtkLimits* limits,
                                 vrtkReport** report, vrtkError** error);

/**
 * Checks a scene in memory, and reports what a check of its file would warn of, and what keeps the
 * scene from being written: an object without its value (VALUE_MISSING), and an asset of fewer
 * bytes than its record says (ASSET_TOO_SHORT), which is an error. Reads the scene and changes
 * nothing. The messages have no offsets. `limits` may be null; its maxMemory is ignored.
 * Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneValidate(const vrdmScene_t* scene, const vrtkLimits* limits,
                                    vrtkReport** report, vrtkError** error);

/** Destroys a report. Does nothing for null. Errors: none. */
VRTK_API void vrtkReportDestroy(vrtkReport* report);

/** Returns whether there is no error. Errors: none. */
VRTK_API bool vrtkReportValid(const vrtkReport* report);

/** Returns the number of errors that were found. Errors: none. */
VRTK_API uint64_t vrtkReportErrorCount(const vrtkReport* report);

/** Returns the number of warnings that were found. Errors: none. */
VRTK_API uint64_t vrtkReportWarningCount(const vrtkReport* report);

/** Returns whether more was found than the report has messages for. Errors: none. */
VRTK_API bool vrtkReportTruncated(const vrtkReport* report);

/** Returns the number of messages that the report keeps. Errors: none. */
VRTK_API uint64_t vrtkReportMessageCount(const vrtkReport* report);

/**
 * Returns a message. Messages are in the order of their offsets; those of a scene in memory are in
 * the order of the catalogue. An error is kept before a warning if there is no room for both.
 * Null if `index` is vrtkReportMessageCount() or greater.
 * Ownership: belongs to the report and is valid as long as the report.
 * Errors: none.
 */
VRTK_API const vrtkMessage* vrtkReportMessage(const vrtkReport* report, uint64_t index);

/** Returns what was learned, which belongs to the report. Errors: none. */
VRTK_API const vrtkInfo* vrtkReportInfo(const vrtkReport* report);

/** Returns the objects of a class, VRDM_CLASS_*; zeros for another number. Errors: none. */
VRTK_API vrtkClassInfo vrtkReportClass(const vrtkReport* report, uint32_t objectClass);

/**
 * Writes a report as a JSON document with the members "file" (the path, or null), "size", "valid",
 * "issues" and "info", as docs/scene_check.md describes it. `*json` receives a new string; free it
 * with vrtkStringDestroy().
 * Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkReportJson(const vrtkReport* report, char** json, vrtkError** error);

/** Returns how many codes there are that a message may have. Errors: none. */
VRTK_API uint32_t vrtkCheckCodeCount(void);

/** Returns a code by its index; null if there is none. The string is static. Errors: none. */
VRTK_API const char* vrtkCheckCode(uint32_t index);

/** Returns the severity of a code by its index, VRTK_WARNING for no code. Errors: none. */
VRTK_API uint32_t vrtkCheckCodeSeverity(uint32_t index);

VRNT_END_DECLS

#endif
