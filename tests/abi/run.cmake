# What the scripts of this folder share.

# Runs a command, and stops in words if it fails.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed (${result}): ${command}")
  endif()
endfunction()

# The words that pkg-config answers, as a list.
function(ask_pkg_config result)
  execute_process(COMMAND "${PKG_CONFIG}" ${ARGN} vornath_data
    OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(words UNIX_COMMAND "${output}")
  set(${result} "${words}" PARENT_SCOPE)
endfunction()
