# Fails if the output of PROGRAM with ARGUMENTS differs from the file EXPECTED in any byte.
execute_process(COMMAND "${PROGRAM}" ${ARGUMENTS} OUTPUT_VARIABLE printed RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${result}")
endif()
file(READ "${EXPECTED}" expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "${EXPECTED} is out of date: scripts/write_catalogue.py writes it")
endif()
