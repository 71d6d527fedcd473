# What every target of the project is compiled with; link to nifikral_options to get it.
add_library(nifikral_options INTERFACE)
target_include_directories(nifikral_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(
    nifikral_options
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              # Those of GCC; what they speed up is the same without them.
              $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-pragmas>
              # No contraction: the order and rounding of every floating-point step belongs to the result.
              -ffp-contract=off
              $<$<BOOL:${NIFIKRAL_WARNINGS_AS_ERRORS}>:-Werror>)
if(NIFIKRAL_HARDENING AND NOT NIFIKRAL_SANITIZE)
    # What is cheap and ends a program at a fault instead of letting it go on. The libraries are position-independent
    # as they are; programs become so by these.
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    target_compile_options(
        nifikral_options
        INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
                  $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>
                  -fstack-protector-strong
                  -fstack-clash-protection
                  $<IF:$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},aarch64>,-mbranch-protection=standard,-fcf-protection=full>)
    target_link_options(nifikral_options INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
# How the build runs a program that it has built.
set(NIFIKRAL_RUN ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 ${CMAKE_CROSSCOMPILING_EMULATOR})
if(NIFIKRAL_SANITIZE)
    target_compile_options(
        nifikral_options INTERFACE -fsanitize=${NIFIKRAL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(nifikral_options INTERFACE -fsanitize=${NIFIKRAL_SANITIZE})
    # Clang links the sanitizers' run-time into programs alone.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_link_options(nifikral_options INTERFACE -Wl,-z,undefs)
    endif()
endif()
