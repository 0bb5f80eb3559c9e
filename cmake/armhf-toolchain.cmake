# Cross-builds for the controller's 32-bit ARM (arm-linux-gnueabihf) with
# Debian's g++-arm-linux-gnueabihf, against a sysroot of Debian's armhf
# packages (scripts/cross-armhf assembles it and passes ORV3_ARMHF_SYSROOT).
# Programs built here run under qemu-arm-static with that sysroot.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

if(NOT ORV3_ARMHF_SYSROOT)
  set(ORV3_ARMHF_SYSROOT "$ENV{ORV3_ARMHF_SYSROOT}")
endif()
if(NOT IS_DIRECTORY "${ORV3_ARMHF_SYSROOT}")
  message(FATAL_ERROR "ORV3_ARMHF_SYSROOT must name the armhf sysroot (scripts/cross-armhf makes one)")
endif()
set(ORV3_ARMHF_SYSROOT "${ORV3_ARMHF_SYSROOT}" CACHE PATH "The armhf sysroot")
# try_compile projects read the toolchain file again: hand them the sysroot.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORV3_ARMHF_SYSROOT)
set(CMAKE_SYSROOT "${ORV3_ARMHF_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH "${ORV3_ARMHF_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L "${ORV3_ARMHF_SYSROOT}")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${ORV3_ARMHF_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${ORV3_ARMHF_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${ORV3_ARMHF_SYSROOT}/usr/share/pkgconfig")
# GCC notes that the argument passing of some standard-library types changed
# in GCC 7.1 on ARM: nothing here mixes code built before that.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")
