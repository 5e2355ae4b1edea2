#!/usr/bin/env bash
# Lets a second compiler, clang, look at the product's sources.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=clang_target.sh
source "$KELVARO_ROOT/scripts/clang_target.sh"
# shellcheck source=source_checks.sh
source "$KELVARO_ROOT/scripts/source_checks.sh"

usage() {
    cat <<TEXT
Usage: scripts/second_compiler.sh

Has clang compile app/, framework/, stats/ and pages/ for Windows, without a result, and with all of its warnings but
those that the script names with a reason. What was checked before and has not changed is not checked again.
TEXT
}

case "${1:-}" in
    '') ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

warnings=(
    -Weverything
    # Nothing here is to compile as C++98.
    -Wno-c++98-compat
    -Wno-c++98-compat-pedantic
    # Where members leave gaps is no fault; layouts that matter are asserted.
    -Wno-padded
    # Bases whose functions are all in their header are few and small: their tables may be there more than once.
    -Wno-weak-vtables
    # A float becomes a double without loss; the other way round is an error.
    -Wno-double-promotion
    # `default` stands for the other values on purpose: more than one switch is over a number from outside that may
    # have none of the enumeration's values.
    -Wno-switch-enum
    -Wno-covered-switch-default
    # From clang 18 on. A switch without `default` is over an enumeration, and -Wswitch names the values that it lacks.
    -Wno-switch-default
    # From clang 16 on: containers in place of pointers and C arrays, which Windows' functions do not take.
    -Wno-unsafe-buffer-usage
    # MinGW marks functions so that its own headers define.
    -Wno-used-but-marked-unused
)

# What is left out for single files.
compile() {
    local exceptions=()
    case "$1" in
        # The runtime calls wmain, and no header declares it.
        app/report/main.cpp) exceptions=(-Wno-missing-prototypes) ;;
    esac
    clang++ "${target[@]}" "${productOptions[@]}" "${warnings[@]}" "${exceptions[@]}" -fsyntax-only "$1"
}

cd "$KELVARO_ROOT"
mapfile -t target < <(clangArguments)
productSources
checkSources clang clang++ compile
printf '   %s\n' "${#sources[@]} files"
