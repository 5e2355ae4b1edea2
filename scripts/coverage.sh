#!/usr/bin/env bash
# Measures which lines and branches of the program the tests run.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=packages.sh
source "$KELVARO_ROOT/scripts/packages.sh"
# shellcheck source=build.sh
source "$KELVARO_ROOT/scripts/build.sh"
# shellcheck source=display.sh
source "$KELVARO_ROOT/scripts/display.sh"
# shellcheck source=wine_session.sh
source "$KELVARO_ROOT/scripts/wine_session.sh"

usage() {
    cat <<TEXT
Usage: scripts/coverage.sh [--report-only] [--filter REGEX]

Builds program and tests in out/build/coverage with counters in app/, framework/, stats/ and pages/, runs all tests under
Wine and reports which lines and branches have run. Takes some minutes for the build and as long as the tests do.

  --report-only    the report over the counters of the last run
  --filter REGEX   only the tests whose names match
  --help           print this

The report is in out/coverage/report/index.html, one line per file in out/coverage/report/summary.txt, the lines that have not run in
out/coverage/report/uncovered.txt; totals per folder are printed. Code of headers counts where the program uses it.

Counters are written by a program that ends in good order. What a process does that is ended from outside, or that ends
itself without clearing up, is not counted: those are tests that end Kelvaro.exe by force or see it fail on purpose.
The Wine prefix is WINEPREFIX, or out/wineprefix-test when that is not set.
TEXT
}

reportOnly=0
filter=()
while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --report-only) reportOnly=1 ;;
        --filter)
            [[ -n "${2:-}" ]] || fail "--filter needs a regular expression"
            filter=(-R "$2")
            shift
            ;;
        *) fail "unknown option '$1'; --help lists the options" ;;
    esac
    shift
done

cd "$KELVARO_ROOT"
build="$KELVARO_ROOT/out/build/coverage"
counters="$build/counters"
results="$KELVARO_ROOT/out/coverage/report"

runTests() {
    local code=0
    trap endWineSession EXIT
    startWineSession "$build/tests/support/wine_session.exe"
    rm -rf "$counters"
    say "Running the tests"
    KELVARO_COUNTERS="$counters" scripts/watched_ctest.py "$build" --preset coverage -j"$((2 * $(nproc)))" -LE single "${filter[@]}" \
        >"$results/tests.log" 2>&1 || code=$?
    sed -n '/tests passed/,$p' "$results/tests.log"
    ((code == 0)) || say "Not all tests passed (out/coverage/report/tests.log); what they ran counts all the same"
}

# Adds the counters of all folders up, and puts the sum beside the object files, where gcov looks for it.
mergeCounters() {
    local folder sum="$build/counted" next="$build/counted-next"
    rm -rf "$sum" "$next"
    for folder in "$counters"/*/"$KELVARO_ROOT/out/build/coverage"; do
        if [[ ! -d "$folder" ]]; then
            continue
        elif [[ ! -d "$sum" ]]; then
            cp -r "$folder" "$sum"
        else
            # It makes no folders within the one that it writes to.
            (cd "$folder" && find . -type d -print0) | (mkdir "$next" && cd "$next" && xargs -0 mkdir -p)
            (cd "$sum" && find . -type d -print0) | (cd "$next" && xargs -0 mkdir -p)
            x86_64-w64-mingw32-gcov-tool-posix merge -o "$next" "$sum" "$folder" >"$results/merge.log" 2>&1 ||
                fail "the counters cannot be added up (out/coverage/report/merge.log)"
            rm -rf "$sum"
            mv "$next" "$sum"
        fi
    done
    [[ -d "$sum" ]] || fail "no program has written counters"
    find "$build" -path "$counters" -prune -o -path "$sum" -prune -o -name '*.gcda' -exec rm {} +
    cp -r "$sum/." "$build"
}

writeReport() {
    local folder report=(gcovr --root "$KELVARO_ROOT" --gcov-executable x86_64-w64-mingw32-gcov-posix
        --filter '(app|framework|stats|pages)/' --object-directory "$build"
        --exclude-throw-branches --exclude-unreachable-branches --print-summary)
    say "Writing the report"
    "${report[@]}" --html-details "$results/index.html" --json "$results/counts.json" --txt "$results/summary.txt" \
        "$build/app" "$build/framework" "$build/pages" "$build/stats" >"$results/total.txt" 2>"$results/gcovr.log" ||
        fail "gcovr cannot read the counters (out/coverage/report/gcovr.log)"
    "$KELVARO_ROOT/scripts/coverage_summary.py" "$results/counts.json" "$results/uncovered.txt"
}

trapSignals
export WINEPREFIX="${WINEPREFIX:-$KELVARO_ROOT/out/wineprefix-test}"
setWineEnvironment
ensurePackages "${KELVARO_RUN_PACKAGES[@]}" "${KELVARO_TEST_PACKAGES[@]}" "${KELVARO_COVERAGE_PACKAGES[@]}"
mkdir -p "$results"
if ((!reportOnly)); then
    buildPreset coverage
    runTests
    mergeCounters
fi
writeReport
