# 64-bit RISC-V; Debian has the runtime for it from release 13 on.

set(CMAKE_SYSTEM_PROCESSOR riscv64)
set(TRIPLET riscv64-linux-gnu)
set(QEMU qemu-riscv64-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
