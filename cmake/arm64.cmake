# Toolchain for 64-bit ARM: Debian's cross compiler, the libraries in the folder that scripts/arm64_sysroot.sh makes, and
# qemu for what the build runs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
set(libraries ${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu)
# Libraries of libraries that packages choose among when they are installed, which those of the folder are not.
set(alternatives ${libraries}/blas:${libraries}/lapack)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64;-L;${CMAKE_SYSROOT};-E;LD_LIBRARY_PATH=${alternatives})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${libraries}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,${alternatives})
set(CMAKE_SHARED_LINKER_FLAGS_INIT ${CMAKE_EXE_LINKER_FLAGS_INIT})
set(CMAKE_MODULE_LINKER_FLAGS_INIT ${CMAKE_EXE_LINKER_FLAGS_INIT})
# That of this system runs the build; extensions are compiled for the other one.
file(GLOB Python3_INCLUDE_DIR ${CMAKE_SYSROOT}/usr/include/python3.*)
