# What the toolchain files for 32-bit ARM Linux share. They set TAVRO_SYSROOT_ARCHITECTURE (Debian's
# name) and TAVRO_TARGET (the compiler's) and include this.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER ${TAVRO_TARGET}-gcc)
set(CMAKE_CXX_COMPILER ${TAVRO_TARGET}-g++)
# All is built with one compiler; how older ones passed arguments does not matter.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

# Everything but the compiler's own parts comes from the sysroot, and programs run against it.
get_filename_component(CMAKE_SYSROOT
    ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/${TAVRO_SYSROOT_ARCHITECTURE} ABSOLUTE)
if(NOT EXISTS ${CMAKE_SYSROOT}/.packages)
    message(FATAL_ERROR "${CMAKE_SYSROOT} is missing. "
        "Start scripts/sysroot ${TAVRO_SYSROOT_ARCHITECTURE} first.")
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
