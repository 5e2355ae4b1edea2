#!/usr/bin/env bash
# Runs clang-tidy over the product's sources and the stand-ins.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=clang_target.sh
source "$KELVARO_ROOT/scripts/clang_target.sh"

usage() {
    cat <<TEXT
Usage: scripts/tidy.sh [--build FOLDER] [FILE...]

Checks the given sources, or all of app/, framework/, stats/, pages/ and standins/, as they are compiled in the
build folder (default: out/build/release, which must be configured). What was checked before and has not changed
since, neither in itself nor in a header of ours, is not checked again.
TEXT
}

build="$KELVARO_ROOT/out/build/release"
files=()
while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --build)
            build="${2:-}"
            [[ -n "$build" ]] || fail "--build needs a folder"
            shift
            ;;
        -*) fail "unknown option '$1'; --help lists the options" ;;
        *)
            [[ -f "$1" ]] || fail "there is no file $1"
            files+=("$(realpath "$1")")
            ;;
    esac
    shift
done
[[ -f "$build/compile_commands.json" ]] || fail "$build has no compile_commands.json: configure it first"

cd "$KELVARO_ROOT"
if ((${#files[@]} == 0)); then
    mapfile -t files < <(find "$PWD"/{app,framework,stats,pages,standins} -name '*.cpp' | sort)
fi
((${#files[@]} > 0)) || fail "there is nothing to check"

# A file is checked again when it, any header of ours, the list of checks or the way of compiling has changed.
stamps="$build/tidy"
mkdir -p "$stamps"
common="$(find app framework stats pages standins -name '*.h' -print0 | sort -z |
    xargs -0 cat .clang-tidy scripts/tidy.sh scripts/clang_target.sh cmake/options.cmake | cksum)"

# Prints the findings of one file and fails when there are any.
checkFile() {
    local file="$1" stamp state output
    stamp="$stamps/$(cksum <<<"$file" | tr ' ' '_')"
    state="$file $common $(cksum <"$file")"
    if [[ -f "$stamp" && "$(<"$stamp")" == "$state" ]]; then
        return 0
    fi
    # What it found is on stdout; stderr counts the warnings in headers of the system that it left out.
    if ! output="$(clang-tidy -p "$build" --quiet "${arguments[@]}" "$file" 2>"$stamp.log")"; then
        printf '%s\n' "${output:-$(<"$stamp.log")}"
        return 1
    fi
    rm -f "$stamp.log"
    printf '%s\n' "$state" >"$stamp"
}

mapfile -t arguments < <(clangArguments)
arguments=("${arguments[@]/#/--extra-arg-before=}")
export build stamps common
# Two at a time: xargs starts this script again for single files.
if [[ "${KELVARO_TIDY_FILE:-}" == yes ]]; then
    checkFile "${files[0]}"
else
    printf '%s\0' "${files[@]}" |
        KELVARO_TIDY_FILE=yes xargs -0 -n 1 -P "$(nproc)" "$0" --build "$build" >&2
fi
