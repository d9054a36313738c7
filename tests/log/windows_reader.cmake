# The reader for Windows makes the same table of a log as the one for this system:
# cmake -DRUN=… -DREADER=… -DLOG=… -DEXPECTED=… -P windows_reader.cmake
execute_process(COMMAND "${RUN}" "${READER}" "Z:${LOG}" OUTPUT_VARIABLE shown RESULT_VARIABLE status)
file(READ "${EXPECTED}" expected)
if(NOT shown STREQUAL expected)
  message(FATAL_ERROR "exit status ${status}; shown:\n${shown}\nexpected:\n${expected}")
endif()
if(NOT status MATCHES "^[01]$")
  message(FATAL_ERROR "exit status ${status}")
endif()
