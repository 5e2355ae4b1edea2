#!/usr/bin/env bash
# Measures the program and prints one table of figures.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$here/scripts/common.sh"
# shellcheck source=packages.sh
source "$here/scripts/packages.sh"
# shellcheck source=build.sh
source "$here/scripts/build.sh"
# shellcheck source=display.sh
source "$here/scripts/display.sh"

usage() {
    cat <<TEXT
Usage: scripts/bench.sh [--quick] [--minutes N]

Installs the packages that are missing (Debian 12 or 13), builds the program and its benchmarks, and prints one table:
frames and their steps against the same calls issued bare, allocations, one sampling pass by source, start, pace,
memory, processor time of a pass, size and imports. Times are medians; each ratio is taken in turns in one run. A figure
beyond its limit is marked with EXCEEDS and fails nothing, since other programs share the machine: how busy it was
stands above the table. It takes some minutes more than the program runs for its memory. ./test.sh --bench is the same.

  --quick      the program runs for 1 minute instead of 10 before its memory is looked at; fewer starts
  --minutes N  it runs for N minutes
  --help       print this

The table also goes to out/bench.txt. The Wine prefix is WINEPREFIX, or out/wineprefix-bench when that is not set.
TEXT
}

minutes=10
starts=15

parseOptions() {
    while (($# > 0)); do
        case "$1" in
            -h | --help) usage && exit 0 ;;
            --quick)
                minutes=1
                starts=5
                ;;
            --minutes)
                [[ "${2:-}" =~ ^[0-9]{1,4}$ ]] || fail "--minutes takes a whole number, not '${2:-}'"
                minutes="$((10#$2))"
                shift
                ;;
            *) fail "unknown option '$1'; --help lists the options" ;;
        esac
        shift
    done
}

xvfbPid=''

cleanUp() {
    "$(findWineserver)" -k 2>/dev/null || true
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
}

# In the form of the benchmarks' own lines (tests/benchmark/figures.h).
printFigure() {
    printf '  %-54s %14s  %s\n' "$1" "$2" "${3:-}"
}

load() {
    cut -d ' ' -f 1 /proc/loadavg
}

printMachine() {
    printf 'Figures of %s, %s processors, load %s at the start%s\n' "$(date -u '+%Y-%m-%d %H:%M UTC')" "$(nproc)" \
        "$(load)" "$(busyWarning)"
    ((minutes >= 10)) || printf 'Short form: memory after %d min instead of 10\n' "$minutes"
}

busyWarning() {
    if awk -v load="$(load)" 'BEGIN { exit !(load > 0.7) }'; then
        printf ': taken under load, times say little'
    fi
}

programLimit=1572864

printProgram() {
    local program="$here/out/release/Kelvaro.exe" size note="limit below $programLimit"
    size="$(stat -c %s "$program")"
    ((size < programLimit)) || note+='  EXCEEDS'
    printf 'The file Kelvaro.exe\n'
    printFigure 'size in bytes' "$size" "$note"
    importsOf "$program" | sort -f | paste -sd ' ' | fold -s -w 100 | sed 's/^/  imports: /'
}

importsOf() {
    x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/^\tDLL Name: //p'
}

inWine() {
    "$here/scripts/wine.sh" "$here/out/build/release/tests/benchmark/$1" "${@:2}" 2>/dev/null | tr -d '\r'
}

trapSignals
parseOptions "$@"
makeOutFolder
export WINEPREFIX="${WINEPREFIX:-$here/out/wineprefix-bench}"
setWineEnvironment
ensurePackages "${KELVARO_RUN_PACKAGES[@]}"
buildPreset release Kelvaro page_benchmark sampling_benchmark program_benchmark
export WINEDLLOVERRIDES="xinput1_4=n,b;$WINEDLLOVERRIDES"
prefixIsCurrent || "$here/scripts/wine_prefix.sh"
trap cleanUp EXIT
startXvfb

{
    printMachine
    printProgram
    inWine page_benchmark.exe
    inWine sampling_benchmark/sampling_benchmark.exe
    inWine program_benchmark.exe --starts "$starts" --minutes "$minutes"
    printf 'Load %s at the end\n' "$(load)"
} | tee "$here/out/bench.txt"
