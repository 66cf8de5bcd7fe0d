# What `cmake --install` puts in place: headers, library, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vornath_data")

install(TARGETS vornath_data EXPORT vornath_dataTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/vornath_data"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")

install(EXPORT vornath_dataTargets NAMESPACE vornath_data:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/vornath_dataConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/vornath_dataConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vornath_dataConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/vornath_dataConfig.cmake"
  "${PROJECT_BINARY_DIR}/vornath_dataConfigVersion.cmake"
  DESTINATION "${package_dir}")

# The prefix is told relative to the file, so that the copy can be moved, and installed to another
# prefix than the one that was configured.
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
configure_file("${CMAKE_CURRENT_LIST_DIR}/vornath_data.pc.in"
  "${PROJECT_BINARY_DIR}/vornath_data.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vornath_data.pc" DESTINATION "${pkgconfig_dir}")
