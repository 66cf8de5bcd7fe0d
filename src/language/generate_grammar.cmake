# Runs bison and mends one thing in what it writes: its parser's stack allocates in a constructor
# that it declares noexcept, so that a failed allocation would end the host's process. Stops if that
# place isn't found, so that another bison can't bring the fault back.
#   cmake -D BISON=... -D GRAMMAR=... -D SOURCE=... -D HEADER=... -P generate_grammar.cmake
execute_process(COMMAND "${BISON}" -Werror "--header=${HEADER}" -o "${SOURCE}" "${GRAMMAR}"
                COMMAND_ERROR_IS_FATAL ANY)
file(READ "${HEADER}" header)
string(REPLACE "stack (size_type n = 200) YY_NOEXCEPT" "stack (size_type n = 200)" mended "${header}")
if(mended STREQUAL header)
  message(FATAL_ERROR "The constructor of the parser's stack is not where it was: ${HEADER}")
endif()
file(WRITE "${HEADER}" "${mended}")
