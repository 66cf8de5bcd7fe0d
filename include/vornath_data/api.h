/* The export macro and the C linkage blocks of the flat headers. */
#ifndef VORNATH_DATA_API_H
#define VORNATH_DATA_API_H

/* A static library and its hosts define VORNATH_DATA_STATIC. The functions are hidden then, so that
   a shared library or program that links the static library does not export them. */
#if defined(VORNATH_DATA_STATIC) && defined(VORNATH_DATA_BUILD) && !defined(_WIN32)
#define VRNT_API __attribute__((visibility("hidden")))
#elif defined(VORNATH_DATA_STATIC)
#define VRNT_API
#elif defined(_WIN32)
#if defined(VORNATH_DATA_BUILD)
#define VRNT_API __declspec(dllexport)
#else
#define VRNT_API __declspec(dllimport)
#endif
#else
#define VRNT_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define VRNT_BEGIN_DECLS extern "C" {
#define VRNT_END_DECLS }
#else
#define VRNT_BEGIN_DECLS
#define VRNT_END_DECLS
#endif

#endif
