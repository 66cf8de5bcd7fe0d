/* The export macro of the toolkit. */
#ifndef VORNATH_TOOLKIT_API_H
#define VORNATH_TOOLKIT_API_H

#include "vornath_data/api.h"

/* The toolkit is static where vornath_data is: its hosts then define VORNATH_DATA_STATIC. */
#if defined(VORNATH_DATA_STATIC) && defined(VORNATH_TOOLKIT_BUILD) && !defined(_WIN32)
#define VRTK_API __attribute__((visibility("hidden")))
#elif defined(VORNATH_DATA_STATIC)
#define VRTK_API
#elif defined(_WIN32)
#if defined(VORNATH_TOOLKIT_BUILD)
#define VRTK_API __declspec(dllexport)
#else
#define VRTK_API __declspec(dllimport)
#endif
#else
#define VRTK_API __attribute__((visibility("default")))
#endif

#endif
