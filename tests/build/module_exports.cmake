# Fails unless the shared library MODULE defines the one dynamic symbol CreateVideoProc, as an ordinary function.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${NM} -D --defined-only ${MODULE} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES "^[0-9a-f]+ T CreateVideoProc\n$")
    message(FATAL_ERROR "${MODULE} exports\n${symbols}instead of CreateVideoProc alone")
endif()
