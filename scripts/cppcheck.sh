#!/usr/bin/env bash
# Runs cppcheck over the product's sources and the stand-ins.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() {
    cat <<TEXT
Usage: scripts/cppcheck.sh [--build FOLDER]

Checks app/, framework/, stats/, pages/ and standins/ as they are compiled in the build folder (default:
out/build/release, which must be configured). What is not followed stands with its reason in .cppcheck-suppressions.
TEXT
}

build=out/build/release
while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --build)
            [[ -n "${2:-}" ]] || fail "--build needs a folder"
            build="$(realpath "$2")"
            shift
            ;;
        *) fail "unknown option '$1'; --help lists the options" ;;
    esac
    shift
done
# It knows files by their path from here.
cd "$KELVARO_ROOT"
[[ -f "$build/compile_commands.json" ]] || fail "$build has no compile_commands.json: configure it first"

# The macro declares an interface's identifier, in the system's headers, which it does not read.
cppcheck --project="$build/compile_commands.json" \
    --file-filter='app/*' --file-filter='framework/*' --file-filter='stats/*' --file-filter='pages/*' \
    --file-filter='standins/*' \
    --enable=warning,performance,portability,style \
    --platform=win64 --std=c++20 --library=windows -D_WIN32 '-D__CRT_UUID_DECL(...)=' \
    --suppressions-list=.cppcheck-suppressions --error-exitcode=1 --quiet -j "$(nproc)" \
    --template='{file}:{line}: {severity}: {message} [{id}]'
