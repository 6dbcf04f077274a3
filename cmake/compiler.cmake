# How the project's own code is compiled: the language, the warnings, the hardening.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

include(CheckPIESupported)
check_pie_supported()

# For everything written here, tests included; never for generated code.
add_library(lumocmd_warnings INTERFACE)
target_compile_options(lumocmd_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wformat=2
    -Wno-format-zero-length # an empty trace mark is part of the trail
    -Wcast-align -Wcast-qual -Wundef -Wnull-dereference -Wdouble-promotion -Wvla -Werror
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond> $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches>
    $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op>)

# For what does not ship: compiled in less time rather than to run in less, its memory watched where the
# product's is, its arithmetic not.
add_library(lumocmd_quick INTERFACE)
target_compile_options(lumocmd_quick INTERFACE
    $<$<CONFIG:Release>:-O0> $<$<CONFIG:Debug>:-fno-sanitize=undefined>)

# Not on the controller: two pages of its flash for one large frame. The gap below the stack is of a
# megabyte: a touch every 64 KiB cannot miss it, and leaves the pages between to whoever needs them.
if(NOT CMAKE_CROSSCOMPILING)
    set(STACK_CLASH_PROTECTION -fstack-clash-protection
        $<$<CXX_COMPILER_ID:GNU>:--param=stack-clash-protection-guard-size=16>
        $<$<CXX_COMPILER_ID:GNU>:--param=stack-clash-protection-probe-interval=16>)
endif()

# For the program and the library under it: no run-time library beyond libc, hardened.
add_library(lumocmd_product INTERFACE)
target_compile_options(lumocmd_product INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
    "$<$<CONFIG:Release>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3>"
    $<$<CXX_COMPILER_ID:GNU>:-ftrivial-auto-var-init=zero>
    ${STACK_CLASH_PROTECTION}
    -fno-strict-overflow -fno-strict-aliasing -fno-delete-null-pointer-checks
    -ffunction-sections -fdata-sections -fstack-protector-strong)
target_link_options(lumocmd_product INTERFACE
    $<$<CONFIG:Release>:-s>
    -Wl,--gc-sections -Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack
    # No function of that name: the usual one does nothing, in a page that nothing else needs.
    -Wl,-fini=no_end_function)

# The addresses in tables, packed: a twentieth of the file. It needs glibc 2.36 at run time; the
# controller's linker cannot.
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs LINKER_PACKS_ADDRESSES)
if(LINKER_PACKS_ADDRESSES AND NOT CMAKE_CROSSCOMPILING)
    target_link_options(lumocmd_product INTERFACE -Wl,-z,pack-relative-relocs)
endif()
