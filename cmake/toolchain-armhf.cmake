# 32-bit ARM Linux, hard float.
set(TAVRO_SYSROOT_ARCHITECTURE armhf)
set(TAVRO_TARGET arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-arm.cmake)
