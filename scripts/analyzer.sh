#!/usr/bin/env bash
# Runs the cross compiler's own analyzer over the product's sources.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=source_checks.sh
source "$KELVARO_ROOT/scripts/source_checks.sh"

usage() {
    cat <<TEXT
Usage: scripts/analyzer.sh

Compiles app/, framework/, stats/ and pages/ with GCC's -fanalyzer, without a result. What was checked before and has not
changed is not checked again.
TEXT
}

case "${1:-}" in
    '') ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

gcc=x86_64-w64-mingw32-g++-posix
options=(
    -O1 -fanalyzer -c -o /dev/null
    # GCC 12 loses what a function returns in place, and takes it as not initialised, without a name.
    -Wno-analyzer-use-of-uninitialized-value
    # It does not see the destructors of what was made for a call or for an exception, mostly texts. Nothing here is
    # allocated but by owners.
    -Wno-analyzer-malloc-leak
    # It takes operator new for a function that may return null.
    -Wno-analyzer-possible-null-dereference
)

# What is left out for single files.
analyze() {
    local exceptions=()
    case "$1" in
        # Rows are moved when the standard library's vector grows, and it thinks that new memory may be null.
        pages/audio_device_page.cpp | pages/options_page.cpp)
            exceptions=(-Wno-analyzer-null-dereference)
            ;;
    esac
    "$gcc" "${productOptions[@]}" "${options[@]}" "${exceptions[@]}" "$1"
}

cd "$KELVARO_ROOT"
productSources
checkSources analyzer "$gcc" analyze
printf '   %s\n' "${#sources[@]} files"
