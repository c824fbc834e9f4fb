# Runs PROGRAM and compares what it prints with the file EXPECTED; then has it write the file CSV.
file(REMOVE "${CSV}")
file(READ "${EXPECTED}" expected)

execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "It printed\n${printed}\ninstead of\n${expected}")
endif()

execute_process(COMMAND "${PROGRAM}" --write "${CSV}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(READ "${CSV}" written)
if(NOT written STREQUAL "time,rad/s\n0,10\n0.02,11\n0.04,12\n")
  message(FATAL_ERROR "It wrote\n${written}")
endif()
