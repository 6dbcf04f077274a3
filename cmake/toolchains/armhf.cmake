# 32-bit ARM, hard float: every ARMv7 with a floating-point unit.

set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(TRIPLET arm-linux-gnueabihf)
set(QEMU qemu-arm-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfpu=vfpv3-d16 -mfloat-abi=hard -mthumb")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")
