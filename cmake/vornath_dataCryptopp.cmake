# Crypto++ comes with a pkg-config file and no CMake package, so it is found here, by the build and by
# the package of a static library: the target vornath_data::cryptopp, which isn't there if it wasn't
# found.
if(NOT TARGET vornath_data::cryptopp)
  find_path(VORNATH_DATA_CRYPTOPP_INCLUDE_DIR cryptopp/blake2.h)
  find_library(VORNATH_DATA_CRYPTOPP_LIBRARY NAMES crypto++ cryptopp)
  mark_as_advanced(VORNATH_DATA_CRYPTOPP_INCLUDE_DIR VORNATH_DATA_CRYPTOPP_LIBRARY)
  if(VORNATH_DATA_CRYPTOPP_INCLUDE_DIR AND VORNATH_DATA_CRYPTOPP_LIBRARY)
    add_library(vornath_data::cryptopp UNKNOWN IMPORTED GLOBAL)
    set_target_properties(vornath_data::cryptopp PROPERTIES
      IMPORTED_LOCATION "${VORNATH_DATA_CRYPTOPP_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${VORNATH_DATA_CRYPTOPP_INCLUDE_DIR}")
  endif()
endif()
