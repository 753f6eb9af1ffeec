# Debian's arm64: ARMv8, 64 bits.
set(cross_arch arm64)
set(cross_processor aarch64)
set(cross_qemu qemu-aarch64)
set(cross_triplet aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian-sysroot.cmake)
