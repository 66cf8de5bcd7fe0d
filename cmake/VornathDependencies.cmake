# The dependencies of the library. If one is missing, the configuration stops here and names it.

# Hosts of a static library also link its dependencies, so these targets must be visible in all folders
# of a project.
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ${VORNATH_DATA_IS_STATIC})
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED)
find_package(fmt 9.1 REQUIRED)
find_package(TBB REQUIRED)
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL OFF)
find_package(FLEX 2.6 REQUIRED)
find_package(BISON 3.8 REQUIRED)

include(vornath_dataCryptopp)
if(NOT TARGET vornath_data::cryptopp)
  message(FATAL_ERROR "Crypto++ was not found: cryptopp/blake2.h and a library crypto++ or cryptopp. "
    "Set VORNATH_DATA_CRYPTOPP_INCLUDE_DIR and VORNATH_DATA_CRYPTOPP_LIBRARY to their paths.")
endif()

# Only one header of Imath is used, and no library. Imath's CMake package is not used: on Debian it refers
# to a Python library of another package, and reports an error if that package is not installed.
find_path(VORNATH_DATA_IMATH_INCLUDE_DIR Imath/half.h)
mark_as_advanced(VORNATH_DATA_IMATH_INCLUDE_DIR)
if(NOT VORNATH_DATA_IMATH_INCLUDE_DIR)
  message(FATAL_ERROR "Imath was not found: Imath/half.h. "
    "Set VORNATH_DATA_IMATH_INCLUDE_DIR to the folder that contains Imath/.")
endif()
add_library(vornath_imath INTERFACE)
target_include_directories(vornath_imath SYSTEM INTERFACE "${VORNATH_DATA_IMATH_INCLUDE_DIR}")
