#!/usr/bin/env bash
# Checks and tests everything; the last line says how many passed and failed.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=scripts/common.sh
source "$here/scripts/common.sh"
# shellcheck source=scripts/packages.sh
source "$here/scripts/packages.sh"
# shellcheck source=scripts/build.sh
source "$here/scripts/build.sh"
# shellcheck source=scripts/display.sh
source "$here/scripts/display.sh"

usage() {
    cat <<TEXT
Usage: ./test.sh [--quick] [--filter REGEX]

Installs the packages that are missing (Debian 12) and runs, one after the other:
  format   clang-format over all sources
  host     what computes without Windows, built natively under AddressSanitizer and UndefinedBehaviorSanitizer
  wine     all tests, cross-built, under Wine with an X server of their own
  tidy     clang-tidy over the sources of the program and the stand-ins
Format and tidy count as one test each. The exit code is 0 when everything passed, and tests ran in every part.

  --quick          without tidy
  --filter REGEX   only the tests whose names match; without format and tidy
  --help           print this

The Wine prefix is WINEPREFIX, or out/wineprefix-test when that is not set: tests may run beside ./run.sh.
TEXT
}

quick=0
filter=''

while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --quick) quick=1 ;;
        --filter)
            filter="${2:-}"
            [[ -n "$filter" ]] || fail "--filter needs a regular expression"
            shift
            ;;
        *) fail "unknown option '$1'; --help lists the options" ;;
    esac
    shift
done

passed=0
failed=0
summary=()

# What happened in one part: its name, how many passed and failed, and what else is to be said.
report() {
    passed=$((passed + $2))
    failed=$((failed + $3))
    summary+=("$(printf '%-7s %5d passed %5d failed  %s' "$1" "$2" "$3" "${4:-}")")
}

checkFormat() {
    local files
    say "Checking the format of all sources"
    mapfile -t files < <(find "$here" \( -path "$here/out" -o -name '.*' -type d ! -path "$here" \) -prune \
        -o \( -name '*.cpp' -o -name '*.h' \) -print | sort)
    if ((${#files[@]} > 0)) && clang-format --dry-run -Werror "${files[@]}"; then
        report format 1 0 "${#files[@]} files"
    else
        report format 0 1 "clang-format -i puts it right"
    fi
}

checkTidy() {
    say "Running clang-tidy"
    if "$here/scripts/tidy.sh"; then
        report tidy 1 0
    else
        report tidy 0 1 "see the findings above"
    fi
}

# Prints the value of an attribute of the test suite in CTest's JUnit file.
suiteValue() {
    sed -n "/<testsuite /,/>/ s/.*[[:space:]]$1=\"\([0-9]*\)\".*/\1/p" "$2" | head -1
}

# runTests NAME PRESET [CTEST-OPTION...]
runTests() {
    local name="$1" preset="$2" results="$here/out/$1-tests.xml" code=0
    shift 2
    say "Running the $name tests"
    rm -f "$results"
    if [[ -n "$filter" ]]; then
        set -- "$@" -R "$filter" --no-tests=ignore
    fi
    (cd "$here" && ctest --preset "$preset" --output-junit "$results" "$@") || code=$?
    countTests "$name" "$results" "$code"
}

# A test that CTest could not run, or that skipped itself, has failed as well.
countTests() {
    local name="$1" results="$2" code="$3" tests=0 bad=0
    if [[ -f "$results" ]]; then
        tests="$(suiteValue tests "$results")"
        bad=$(($(suiteValue failures "$results") + $(suiteValue disabled "$results") + \
            $(suiteValue skipped "$results")))
    fi
    if ((tests == 0)) && [[ -n "$filter" ]] && ((code == 0)); then
        report "$name" 0 0 "nothing matches '$filter'"
    elif ((tests == 0)); then
        report "$name" 0 1 "no test ran"
    elif ((code != 0 && bad == 0)); then
        report "$name" "$tests" 1 "CTest ended with code $code"
    else
        report "$name" $((tests - bad)) "$bad"
    fi
}

xvfbPid=''
sessionInput=''

cleanUp() {
    if [[ -n "$sessionInput" ]]; then
        "$(findWineserver)" -k 2>/dev/null || true
    fi
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
}

# One server and one session for all tests. What starts them hands its output on to them, so it must not be
# CTest's: CTest would wait for the session's end.
openWineSession() {
    local ready
    ready="$(mktemp -u "$here/out/session.XXXXXX")"
    export WINEPREFIX="${WINEPREFIX:-$here/out/wineprefix-test}"
    setWineEnvironment
    if ! prefixIsCurrent; then
        say "Setting up the Wine prefix $WINEPREFIX"
        "$here/scripts/wine_prefix.sh"
    fi
    startXvfb
    "$(findWineserver)" -p >/dev/null 2>&1
    exec {sessionInput}> >(exec "$here/scripts/wine.sh" \
        "$here/out/build/release/tests/support/wine_session.exe" "Z:${ready//\//\\}" >/dev/null 2>&1)
    local tenths
    for ((tenths = 0; tenths < 600; ++tenths)); do
        if [[ -f "$ready" ]]; then
            rm -f "$ready"
            return
        fi
        sleep 0.1
    done
    fail "Wine does not start in $WINEPREFIX"
}

testOnHost() {
    if (buildPreset host); then
        runTests host host
    else
        report host 0 1 "the build failed"
    fi
}

testUnderWine() {
    if (buildPreset release); then
        openWineSession
        runTests wine release -j2
    else
        report wine 0 1 "the build failed"
    fi
}

makeOutFolder
trap cleanUp EXIT
trap 'exit 130' INT TERM HUP
ensurePackages "${KELVARO_RUN_PACKAGES[@]}" "${KELVARO_TEST_PACKAGES[@]}"

if [[ -z "$filter" ]]; then
    checkFormat
fi
testOnHost
testUnderWine
if [[ -z "$filter" ]] && ((!quick)); then
    checkTidy
fi

say "Summary after $((SECONDS / 60)) min $((SECONDS % 60)) s"
printf '   %s\n' "${summary[@]}"
printf '%d passed, %d failed\n' "$passed" "$failed"
((failed == 0 && passed > 0))
