# What scripts/lint asks of every file and scripts/check-changes of the changed ones: for each check the
# files it is for, as git's patterns, and a function that reads names from standard input, each ended
# by a zero byte.
# shellcheck shell=sh disable=SC2034 # the lists are for those who read this file

formatted_files='*.cpp *.h *.c'
product_sources='front/*.cpp fsmcore/*.cpp gateways/*.cpp webservice/*.cpp'
# The test cases are left out: analysing what their macros become takes longer than everything else.
other_sources='*.cpp :!front :!fsmcore :!gateways :!webservice :!tests/*_test.cpp'

check_format() {
    xargs -0 -r clang-format --dry-run -Werror
}

# Both read the flags of a build whose sources are compiled one by one, without what GCC has precompiled.
# The compiler's own warnings are GCC's; clang does not know all of their names, and wants a word of its
# own for zeroed variables.
clang_tidy() {
    cmake --preset release -B build/lint -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DLUMOSIM_IN_PIECES=OFF </dev/null >/dev/null || return 1
    cmake --build build/lint --target lumows_client </dev/null >/dev/null || return 1
    xargs -0 -r -n 4 -P "$(nproc)" clang-tidy -p build/lint --quiet "$@" \
        --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-unused-command-line-argument \
        --extra-arg=-enable-trivial-auto-var-init-zero-knowing-it-will-be-removed-from-clang 2>/dev/null
}

# What ships to controllers is followed along its paths, by clang's analyzer and by GCC's. GCC 12 takes a
# lambda that becomes a function pointer for one without its object, hence the warning that is off.
check_product() {
    sources=$(mktemp)
    cat >"$sources"
    result=0
    clang_tidy <"$sources" || result=1
    xargs -0 -r -n 1 -P "$(nproc)" g++ -std=c++20 -fno-exceptions -fanalyzer \
        -Wno-analyzer-null-argument -Werror -I . -isystem build/lint/generated -c -o /dev/null <"$sources" || result=1
    rm "$sources"
    return "$result"
}

# The analyzer would follow the standard library's containers, most of the time of a run.
check_sources() {
    clang_tidy --checks=-clang-analyzer-*
}

# Takes any files and looks at the shell scripts among them.
check_scripts() {
    xargs -0 -r awk 'FNR == 1 && (/^#!\/bin\/sh/ || FILENAME ~ /\.sh$/) { printf "%s%c", FILENAME, 0 }' |
        xargs -0 -r shellcheck -x
}
