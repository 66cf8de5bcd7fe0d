# Functions that the scripts of this folder share.

# Runs a command. If it fails, stops and prints the command.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed (${result}): ${command}")
  endif()
endfunction()

# Stores the output of pkg-config, as a list of words, in the variable `result`.
function(ask_pkg_config result)
  execute_process(COMMAND "${PKG_CONFIG}" ${ARGN} vornath_data
    OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(words UNIX_COMMAND "${output}")
  set(${result} "${words}" PARENT_SCOPE)
endfunction()
