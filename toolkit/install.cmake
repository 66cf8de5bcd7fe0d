# What `cmake --install` installs of the toolkit. Uses the folders and the prefix of VornathInstall.cmake.
install(TARGETS vornath_toolkit EXPORT vornath_dataToolkitTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/toolkit/include/vornath_toolkit"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h")
install(EXPORT vornath_dataToolkitTargets NAMESPACE vornath_data:: DESTINATION "${package_dir}")

set(VORNATH_TOOLKIT_PC_STATIC "")
if(VORNATH_DATA_IS_STATIC)
  set(VORNATH_TOOLKIT_PC_STATIC "Requires.private: fmt >= 9.1\n")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/vornath_toolkit.pc.in"
  "${PROJECT_BINARY_DIR}/vornath_toolkit.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vornath_toolkit.pc" DESTINATION "${pkgconfig_dir}")
