# Fails if the shared library MODULE imports a function of the C library's mathematics whose result is not exact: libraries
# and processors round those in different ways.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${NM} -D --undefined-only ${MODULE} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(CONCAT inexact "a?(sin|cos|tan)h?|sincos|atan2|pow|exp|exp2|exp10|expm1|log|log2|log10|log1p|cbrt|hypot|"
              "erfc?|[lt]gamma|j[01n]|y[01n]")
string(REGEX MATCHALL "[ _](${inexact})[fl]?(_finite)?(@[^\n]*)?\n" found "${symbols}")
if(found)
    message(FATAL_ERROR "${MODULE} imports\n${found}which effects/base/correct_rounding.h replaces")
endif()
