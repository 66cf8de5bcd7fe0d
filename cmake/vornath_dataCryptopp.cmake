# Finds Crypto++, which has a pkg-config file but no CMake package, and creates the target
# vornath_data::cryptopp. If Crypto++ is not found, the target does not exist. The build uses this file, and
# so does the package of a static library.
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
