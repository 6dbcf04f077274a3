# How the project's own code is compiled: the language, the warnings, the hardening.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

# A static program runs on any C library. It is position-independent where the toolchain has -static-pie;
# CMake's own property would add -pie, which undoes that.
option(LUMOCMD_STATIC "Link the program statically" OFF)
set(LUMOCMD_LIBC "" CACHE PATH "Where the static C library is, when not the toolchain's own")
add_library(lumocmd_linkage INTERFACE)
if(LUMOCMD_STATIC)
    if(LUMOCMD_LIBC)
        # For its start files as well.
        set(libc_search -B${LUMOCMD_LIBC} -L${LUMOCMD_LIBC})
    endif()
    set(CMAKE_REQUIRED_LINK_OPTIONS ${libc_search} -static-pie)
    check_cxx_source_compiles("int main() { return 0; }" LUMOCMD_STATIC_PIE)
    unset(CMAKE_REQUIRED_LINK_OPTIONS)
    if(LUMOCMD_STATIC_PIE)
        add_compile_options(-fPIE)
        target_link_options(lumocmd_linkage INTERFACE -static-pie)
    else()
        add_compile_options(-fno-pie)
        add_link_options(-no-pie)
        target_link_options(lumocmd_linkage INTERFACE -static)
    endif()
    # Keeps glibc's version text in the file, which is all that a controller has.
    target_link_options(lumocmd_linkage INTERFACE ${libc_search} -Wl,--undefined=gnu_get_libc_version)
else()
    if(NOT DEFINED CMAKE_POSITION_INDEPENDENT_CODE)
        set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    endif()
    check_pie_supported()
endif()

option(LUMOCMD_WERROR "Take warnings for errors; for developers, as another compiler has other warnings" OFF)

# For the project's own code and tests, not for generated code.
add_library(lumocmd_warnings INTERFACE)
target_compile_options(lumocmd_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wformat=2
    -Wno-format-zero-length # an empty trace mark is part of the trail
    -Wcast-align -Wcast-qual -Wundef -Wnull-dereference -Wdouble-promotion -Wvla
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond> $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches>
    $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op>
    $<$<BOOL:${LUMOCMD_WERROR}>:-Werror>)

# Tests and tools: -O0; ASan but not UBSan in sanitizer builds.
add_library(lumocmd_quick INTERFACE)
target_compile_options(lumocmd_quick INTERFACE
    $<$<CONFIG:Release>:-O0> $<$<CONFIG:Debug>:-fno-sanitize=undefined>)

# A level of _FORTIFY_SOURCE in the builder's flags, or built into the compiler, wins.
set(CMAKE_TRY_COMPILE_CONFIGURATION ${CMAKE_BUILD_TYPE})
check_cxx_source_compiles("
    #ifdef _FORTIFY_SOURCE
    #error its level is chosen
    #endif
    int main() { return 0; }" LUMOCMD_CHOOSES_FORTIFY_LEVEL)
unset(CMAKE_TRY_COMPILE_CONFIGURATION)
add_library(lumocmd_fortified INTERFACE)
if(LUMOCMD_CHOOSES_FORTIFY_LEVEL)
    # Without optimisation it has no effect but a warning.
    target_compile_definitions(lumocmd_fortified INTERFACE
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=3>)
endif()

# Before the builder's own flags, so that those win. Flags that the compiler does not know are left out.
set(HARDENING -fstack-protector-strong -fno-strict-overflow -fno-strict-aliasing
    -fno-delete-null-pointer-checks -ftrivial-auto-var-init=zero)
# Not on 32-bit ARM: it would cost two pages of the controller's flash, for one large stack frame.
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    list(APPEND HARDENING -fstack-clash-protection)
endif()
set(hardening)
foreach(flag IN LISTS HARDENING)
    string(MAKE_C_IDENTIFIER "LUMOCMD_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
        string(APPEND hardening "${flag} ")
    endif()
endforeach()
string(PREPEND CMAKE_C_FLAGS "${hardening}")
string(PREPEND CMAKE_CXX_FLAGS "${hardening}")

# For the program and its library: small, and no run-time library but libc.
add_library(lumocmd_product INTERFACE)
target_compile_options(lumocmd_product INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
    -ffunction-sections -fdata-sections)
target_link_libraries(lumocmd_product INTERFACE lumocmd_fortified)
target_link_options(lumocmd_product INTERFACE
    -Wl,--gc-sections -Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
