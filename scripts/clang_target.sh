# Sourced after common.sh: clang in the place of the cross compiler.
# shellcheck shell=bash

# Prints, one per line, what makes clang compile for the same target and with the same C++ library, but with clang's own
# intrinsics.
clangArguments() {
    local gcc=x86_64-w64-mingw32-g++-posix version includes
    version="$("$gcc" -dumpfullversion)"
    includes="$(dirname "$("$gcc" -print-libgcc-file-name)")/include/c++"
    [[ -d "$includes" ]] || fail "the headers of $gcc $version are not in $includes"
    printf '%s\n' \
        --target=x86_64-w64-mingw32 \
        -nostdinc++ \
        -isystem "$includes" \
        -isystem "$includes/x86_64-w64-mingw32" \
        -isystem /usr/x86_64-w64-mingw32/include \
        -Wno-unknown-warning-option
}
