# Read by CPack before it makes packages for 64-bit ARM.
set(SHLIBDEPS_EXECUTABLE ${CMAKE_CURRENT_LIST_DIR}/../scripts/arm64_shlibdeps.sh)
