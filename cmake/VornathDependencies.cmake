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

# The shared library takes the few functions of Crypto++ that it uses from its archive, if that contains
# position-independent code, as Debian's does: loading all of Crypto++ takes five times as long as loading
# the rest. Its symbols stay inside.
add_library(vornath_cryptopp_inside INTERFACE)
if(VORNATH_DATA_LINK_CRYPTOPP_ARCHIVE AND NOT VORNATH_DATA_IS_STATIC)
  find_library(VORNATH_DATA_CRYPTOPP_ARCHIVE NAMES libcrypto++.a libcryptopp.a)
  mark_as_advanced(VORNATH_DATA_CRYPTOPP_ARCHIVE)
  if(VORNATH_DATA_CRYPTOPP_ARCHIVE AND NOT DEFINED VORNATH_DATA_CRYPTOPP_ARCHIVE_FITS)
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/cryptopp_archive/digest.cpp" "
      #include <cryptopp/blake2.h>
      #include <cryptopp/sha.h>
      void digest(CryptoPP::byte* out) {
        CryptoPP::BLAKE2b(false, 16).Final(out);
        CryptoPP::SHA256().Final(out);
      }
    ")
    try_compile(VORNATH_DATA_CRYPTOPP_ARCHIVE_FITS
      "${CMAKE_CURRENT_BINARY_DIR}/cryptopp_archive/build" "${CMAKE_CURRENT_BINARY_DIR}/cryptopp_archive/digest.cpp"
      CMAKE_FLAGS "-DINCLUDE_DIRECTORIES=${VORNATH_DATA_CRYPTOPP_INCLUDE_DIR}"
      COMPILE_DEFINITIONS -fPIC
      LINK_OPTIONS -shared
      LINK_LIBRARIES "${VORNATH_DATA_CRYPTOPP_ARCHIVE}")
  endif()
  mark_as_advanced(VORNATH_DATA_CRYPTOPP_ARCHIVE_FITS)
endif()
if(VORNATH_DATA_CRYPTOPP_ARCHIVE_FITS AND VORNATH_DATA_LINK_CRYPTOPP_ARCHIVE)
  target_link_libraries(vornath_cryptopp_inside INTERFACE "${VORNATH_DATA_CRYPTOPP_ARCHIVE}")
else()
  target_link_libraries(vornath_cryptopp_inside INTERFACE vornath_data::cryptopp)
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
