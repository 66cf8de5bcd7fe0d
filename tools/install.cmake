# What `cmake --install` installs of vrn: the program, its manual pages, and its completions for bash, zsh
# and fish, each where its shell looks.
include(GNUInstallDirs)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(vrn PROPERTIES INSTALL_RPATH "${CMAKE_INSTALL_LIBDIR}")
else()
  file(RELATIVE_PATH to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(vrn PROPERTIES INSTALL_RPATH "$ORIGIN/${to_libraries}")
endif()
install(TARGETS vrn RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(FILES ${VORNATH_VRN_PAGES} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
set(completions "${CMAKE_CURRENT_BINARY_DIR}/completions")
install(FILES "${completions}/vrn.bash" RENAME vrn
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES "${completions}/_vrn" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
install(FILES "${completions}/vrn.fish"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
