# 32-bit ARM Linux, soft float.
set(TAVRO_SYSROOT_ARCHITECTURE armel)
set(TAVRO_TARGET arm-linux-gnueabi)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-arm.cmake)
