# Debian's armhf: ARMv7 with hardware floating point.
set(cross_arch armhf)
set(cross_processor armv7l)
set(cross_qemu qemu-arm)
set(cross_triplet arm-linux-gnueabihf)
# Notes about an interface that changed with GCC 7; all of the sysroot is newer.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
include(${CMAKE_CURRENT_LIST_DIR}/debian-sysroot.cmake)
