# 64-bit ARM.

set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(TRIPLET aarch64-linux-gnu)
set(QEMU qemu-aarch64-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
