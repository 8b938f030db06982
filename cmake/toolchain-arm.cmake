# What the toolchain files for 32-bit ARM Linux share. They set TAVRO_TARGET, the compiler's name of
# the machine, and include this. For Debian's compilers and libraries they set
# TAVRO_SYSROOT_ARCHITECTURE, Debian's name of the machine, too; for a device's own (see
# docs/porting.md) CMAKE_SYSROOT, CMAKE_C_COMPILER and CMAKE_CXX_COMPILER instead.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_C_COMPILER ${TAVRO_TARGET}-gcc)
    set(CMAKE_CXX_COMPILER ${TAVRO_TARGET}-g++)
endif()
set(CMAKE_C_COMPILER_TARGET ${TAVRO_TARGET})  # Clang is one compiler for all machines
set(CMAKE_CXX_COMPILER_TARGET ${TAVRO_TARGET})
# All is built with one compiler; how older ones passed arguments does not matter.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

# Everything but the compiler's own parts comes from the sysroot, and programs run against it.
if(NOT CMAKE_SYSROOT)
    get_filename_component(CMAKE_SYSROOT
        ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/${TAVRO_SYSROOT_ARCHITECTURE} ABSOLUTE)
    if(NOT EXISTS ${CMAKE_SYSROOT}/.packages)
        message(FATAL_ERROR "${CMAKE_SYSROOT} is missing. "
            "Start scripts/sysroot ${TAVRO_SYSROOT_ARCHITECTURE} first.")
    endif()
endif()
set(CMAKE_LIBRARY_ARCHITECTURE ${TAVRO_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/${TAVRO_TARGET}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
