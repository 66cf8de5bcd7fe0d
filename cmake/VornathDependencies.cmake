# Everything outside the project that the library is built with. A missing one stops here, by name.

# The hosts of a static library link what it uses, in whatever folder of a project they are.
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
  message(FATAL_ERROR "Crypto++ isn't there: cryptopp/blake2.h and a library crypto++ or cryptopp. "
    "VORNATH_DATA_CRYPTOPP_INCLUDE_DIR and VORNATH_DATA_CRYPTOPP_LIBRARY tell where they are.")
endif()

# One header of Imath's is used, and no library. Imath's CMake package isn't asked: on Debian it names
# a library for Python that another package brings, and tells everyone that it isn't there.
find_path(VORNATH_DATA_IMATH_INCLUDE_DIR Imath/half.h)
mark_as_advanced(VORNATH_DATA_IMATH_INCLUDE_DIR)
if(NOT VORNATH_DATA_IMATH_INCLUDE_DIR)
  message(FATAL_ERROR "Imath isn't there: Imath/half.h. "
    "VORNATH_DATA_IMATH_INCLUDE_DIR tells which folder holds Imath/.")
endif()
add_library(vornath_imath INTERFACE)
target_include_directories(vornath_imath SYSTEM INTERFACE "${VORNATH_DATA_IMATH_INCLUDE_DIR}")
