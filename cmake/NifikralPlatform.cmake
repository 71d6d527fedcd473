# Pixels are read as words of 32 bits whose lowest byte comes first, and sizes of planes are counted in 64 bits.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8 OR NOT CMAKE_CXX_BYTE_ORDER STREQUAL LITTLE_ENDIAN)
    math(EXPR bits "8 * ${CMAKE_SIZEOF_VOID_P}")
    message(FATAL_ERROR "Nifikral needs a 64-bit little-endian processor, such as x86-64 or 64-bit ARM; "
                        "${CMAKE_CXX_COMPILER} makes ${bits}-bit ${CMAKE_CXX_BYTE_ORDER} programs")
endif()
