# The files that `cmake --install` installs: headers, library, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vornath_data")

install(TARGETS vornath_data EXPORT vornath_dataTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/vornath_data"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp" PATTERN "*.def" PATTERN "*.inc")

# The component embed: the headers of the layers and the static library.
if(VORNATH_DATA_BUILD_EMBED)
  set(embed_headers "${CMAKE_INSTALL_INCLUDEDIR}/vornath_data_embed")
  install(TARGETS vornath_data_embed EXPORT vornath_dataEmbedTargets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" "${embed_headers}")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/" DESTINATION "${embed_headers}"
    FILES_MATCHING PATTERN "*.hpp")
  install(EXPORT vornath_dataEmbedTargets NAMESPACE vornath_data:: DESTINATION "${package_dir}")
endif()

# The libraries that a C++ compiler links by itself and a C compiler does not.
set(VORNATH_CXX_RUNTIME ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_ITEM VORNATH_CXX_RUNTIME ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_DUPLICATES VORNATH_CXX_RUNTIME)

install(EXPORT vornath_dataTargets NAMESPACE vornath_data:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/vornath_dataConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/vornath_dataConfig.cmake" INSTALL_DESTINATION "${package_dir}"
  NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vornath_dataConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/vornath_dataConfig.cmake"
  "${PROJECT_BINARY_DIR}/vornath_dataConfigVersion.cmake"
  DESTINATION "${package_dir}")
if(VORNATH_DATA_IS_STATIC OR VORNATH_DATA_BUILD_EMBED)
  install(FILES "${CMAKE_CURRENT_LIST_DIR}/vornath_dataCryptopp.cmake" DESTINATION "${package_dir}")
endif()

# The pkg-config file has the prefix relative to itself, so that an installed copy can be moved, and can
# be installed under another prefix than the configured one.
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
if(IS_ABSOLUTE "${pkgconfig_dir}")
  set(VORNATH_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH up "/${pkgconfig_dir}" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(VORNATH_PC_PREFIX "\${pcfiledir}/${up}")
endif()
cmake_path(APPEND VORNATH_PC_LIBDIR "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND VORNATH_PC_INCLUDEDIR "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
set(VORNATH_PC_CFLAGS "-I\${includedir}")
set(VORNATH_PC_STATIC "")
if(VORNATH_DATA_IS_STATIC)
  string(APPEND VORNATH_PC_CFLAGS " -DVORNATH_DATA_STATIC")
  list(TRANSFORM VORNATH_CXX_RUNTIME PREPEND "-l" OUTPUT_VARIABLE libs_private)
  list(PREPEND libs_private ${CMAKE_THREAD_LIBS_INIT})
  list(JOIN libs_private " " libs_private)
  string(CONCAT VORNATH_PC_STATIC
    "Requires.private: fmt >= 9.1, tbb, libcrypto++\n"
    "Libs.private: ${libs_private}\n")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/vornath_data.pc.in"
  "${PROJECT_BINARY_DIR}/vornath_data.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vornath_data.pc" DESTINATION "${pkgconfig_dir}")

if(TARGET vornath_toolkit)
  include("${PROJECT_SOURCE_DIR}/toolkit/install.cmake")
endif()
