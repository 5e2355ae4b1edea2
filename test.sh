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
# shellcheck source=scripts/wine_session.sh
source "$here/scripts/wine_session.sh"

usage() {
    cat <<TEXT
Usage: ./test.sh [--all] [--filter REGEX]
       ./test.sh --bench [--quick] [--minutes N]

Installs the packages that are missing (Debian 12 or 13) and runs, one after the other:
  format   clang-format over all sources
  layers   no include against the direction of the layers
  scripts  what the scripts leave alone, and how they end
  host     what computes without Windows, built natively under AddressSanitizer and UndefinedBehaviorSanitizer
  xinput   no test program with Wine's own XInput, whose threads can keep it from ending
  wine     all tests, cross-built, under Wine with an X server of their own
When a test is about to run out of time, out/timeouts/ gets a file that says what it hangs in.
Each of the checks counts as one test. The exit code is 0 when everything passed, and tests ran in every part. A
summary says how many seconds each part took.

  --all            the slow checks as well: the long forms of the tests that have one, and
                     tidy        clang-tidy over the sources of the program and the stand-ins
                     cppcheck    cppcheck over the same sources
                     analyzer    the compiler's own analyzer over the program
                     clang       the program compiled by a second compiler, clang, with nearly all of its warnings
                     shellcheck  all scripts
                     workflows   what continuous integration would run
                     prefixes    what ./run.sh leaves alone in a Wine prefix
                     fuzz        each libFuzzer target for 20 seconds
                     timeouts    what is kept of a test that hangs
                     package     the release files, as ./package.sh makes them
                     installer   the installer from end to end, in a Wine prefix of its own
                     signing     release files that are signed with a certificate made for it
                     bundle      the tests as they are packed for Windows, in a Wine prefix of their own
                     same bytes  the release files of two clean clones, compared
  --filter REGEX   only the tests whose names match; without the checks that are no tests
  --bench          no tests: measures the program and prints a table of figures (scripts/bench.sh, whose --help says
                   more)
  --help           print this

The Wine prefix is WINEPREFIX, or out/wineprefix-test when that is not set: tests may run beside ./run.sh. It must be
an empty folder or a prefix that these scripts have made.
TEXT
}

# What only --all runs, after everything else: part, what is said of it, script with its arguments. The long forms of
# tests see KELVARO_ALL=1.
slowChecks=(
    "tidy|Running clang-tidy|scripts/tidy.sh"
    "cppcheck|Running cppcheck|scripts/cppcheck.sh"
    "analyzer|Running the compiler's analyzer|scripts/analyzer.sh"
    "clang|Compiling with clang|scripts/second_compiler.sh"
    "shellcheck|Checking the scripts|scripts/shellcheck.sh"
    "workflows|Checking the workflows|scripts/check_workflows.py"
    "prefixes|Running ./run.sh in a Wine prefix that others use|tests/scripts/scripts_test.sh --wine"
    "fuzz|Feeding the libFuzzer targets|scripts/fuzz.sh --seconds 20"
    "timeouts|Looking at a test that hangs|scripts/check_timeouts.sh"
    "package|Making the release files|tests/package/release_files.sh"
    "installer|Installing, upgrading and uninstalling|tests/package/installer.sh"
    "signing|Signing the release files|tests/package/signing.sh"
    "bundle|Running the tests that are packed for Windows|scripts/check_test_bundle.sh"
    "same bytes|Making the release files of two clean clones|tests/package/same_bytes.sh"
)

all=0
filter=''

while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --all) all=1 ;;
        --bench) exec "$here/scripts/bench.sh" "${@:2}" ;;
        --filter)
            filter="${2:-}"
            [[ -n "$filter" ]] || fail "--filter needs a regular expression"
            shift
            ;;
        *) fail "unknown option '$1'; --help lists the options" ;;
    esac
    shift
done

unset KELVARO_ALL
if ((all)); then
    export KELVARO_ALL=1
fi

passed=0
failed=0
summary=()
part=''
partStart=0

# What follows belongs to this part, until one of the reports ends it.
beginPart() {
    part="$1"
    partStart="$SECONDS"
    say "$2"
}

reportLine() {
    summary+=("$(printf '%-11s %4d s  %s' "$part" $((SECONDS - partStart)) "$*")")
}

# How many passed and failed in the part, and what else is to be said.
report() {
    passed=$((passed + $1))
    failed=$((failed + $2))
    reportLine "$(printf '%5d passed %5d failed  %s' "$1" "$2" "${3:-}")"
}

checkFormat() {
    local files
    beginPart format "Checking the format of all sources"
    mapfile -t files < <(find "$here" \( -path "$here/out" -o -name '.*' -type d ! -path "$here" \) -prune \
        -o \( -name '*.cpp' -o -name '*.h' \) -print | sort)
    if ((${#files[@]} > 0)) && clang-format --dry-run -Werror "${files[@]}"; then
        report 1 0 "${#files[@]} files"
    else
        report 0 1 "clang-format -i puts it right"
    fi
}

# checkByScript PART WHAT SCRIPT [ARGUMENT...]: a check that a script makes, and that passes with exit code 0.
checkByScript() {
    beginPart "$1" "$2"
    if "$here/$3" "${@:4}"; then
        report 1 0
    else
        report 0 1 "see the findings above"
    fi
}

# Tests that run again in them do so in their usual forms.
runSlowChecks() {
    local check part what command words
    unset KELVARO_ALL
    for check in "${slowChecks[@]}"; do
        IFS='|' read -r part what command <<<"$check"
        read -ra words <<<"$command"
        checkByScript "$part" "$what" "${words[@]}"
    done
}

# buildPart NAME PRESET
buildPart() {
    beginPart "$1 build" "Building for the $1 tests"
    if (buildPreset "$2"); then
        reportLine
    else
        report 0 1 "the build failed"
        return 1
    fi
}

# runTests NAME PRESET [CTEST-OPTION...]
runTests() {
    local name="$1" preset="$2" results="$here/out/$1-tests.xml" whole="$here/out/build/$2/results" code=0
    shift 2
    beginPart "$name tests" "Running the $name tests"
    rm -rf "$results" "$whole"
    # A program that runs as a whole contains its single tests; a filter wants those.
    if [[ -n "$filter" ]]; then
        set -- "$@" -R "$filter" -LE whole --no-tests=ignore
    else
        set -- "$@" -LE single
    fi
    (cd "$here" && scripts/watched_ctest.py "out/build/$preset" --preset "$preset" --output-junit "$results" "$@") || code=$?
    countTests "$results" "$whole" "$code"
}

# Prints the value of an attribute of the outermost element in a JUnit file of CTest or GoogleTest.
suiteValue() {
    sed -n "/<testsuites\{0,1\} /,/>/ s/.*[[:space:]]$1=\"\([0-9]*\)\".*/\1/p" "$2" | head -1
}

# A test that CTest could not run, or that skipped itself, has failed as well.
countTests() {
    local results="$1" whole="$2" code="$3" tests=0 bad=0
    if [[ -f "$results" ]]; then
        tests="$(suiteValue tests "$results")"
        bad=$(($(suiteValue failures "$results") + $(suiteValue disabled "$results") + \
            $(suiteValue skipped "$results")))
        countWholePrograms "$results" "$whole"
    fi
    if ((tests == 0)) && [[ -n "$filter" ]] && ((code == 0)); then
        report 0 0 "nothing matches '$filter'"
    elif ((tests == 0)); then
        report 0 1 "no test ran"
    elif ((code != 0 && bad == 0)); then
        report "$tests" 1 "CTest ended with code $code"
    else
        report $((tests - bad)) "$bad"
    fi
}

# To CTest a program that runs as a whole is one test, whose name has no dot: puts the tests in it into `tests` and
# `bad` in its place. A program that ended before it could say what became of them stays one test, a failed one.
countWholePrograms() {
    local results="$1" whole="$2" program status file failures
    while read -r program status; do
        file="$whole/$program.xml"
        if [[ -f "$file" ]]; then
            failures="$(suiteValue failures "$file")"
            tests=$((tests - 1 + $(suiteValue tests "$file")))
            bad=$((bad + failures + $(suiteValue disabled "$file") + $(grep -c 'result="skipped"' "$file" || true)))
            if ((failures > 0)); then
                bad=$((bad - 1))
            fi
        elif [[ "$status" == run ]]; then
            say "$program ended before its tests did"
            bad=$((bad + 1))
        fi
    done < <(sed -n 's/.*<testcase name="\([^".]*\)".* status="\([a-z]*\)".*/\1 \2/p' "$results")
}

openWineSession() {
    beginPart "wine prefix" "Wine prefix $WINEPREFIX"
    startWineSession "$here/out/build/release/tests/support/wine_session.exe"
    reportLine
}

# Every build of this run, those of the scripts that it starts included: a warning is an error.
export KELVARO_WERROR=ON
trapSignals
makeOutFolder
rm -rf "$here/out/timeouts"
export WINEPREFIX="${WINEPREFIX:-$here/out/wineprefix-test}"
setWineEnvironment
trap endWineSession EXIT
beginPart packages "Looking for the packages"
packages=("${KELVARO_RUN_PACKAGES[@]}" "${KELVARO_TEST_PACKAGES[@]}")
if ((all)); then
    packages+=("${KELVARO_CHECK_PACKAGES[@]}" "${KELVARO_PACKAGE_PACKAGES[@]}" "${KELVARO_SIGN_PACKAGES[@]}"
        "${KELVARO_PACKAGE_TEST_PACKAGES[@]}" "${KELVARO_BUNDLE_PACKAGES[@]}")
fi
ensurePackages "${packages[@]}"
reportLine

if [[ -z "$filter" ]]; then
    checkFormat
    checkByScript layers "Checking the direction of the includes" scripts/check_layers.sh
    checkByScript scripts "Testing the scripts" tests/scripts/scripts_test.sh
fi
if buildPart host host; then
    runTests host host
fi
if buildPart wine release; then
    if [[ -z "$filter" ]]; then
        checkByScript xinput "Looking for test programs that would get Wine's own XInput" scripts/check_xinput.sh
    fi
    openWineSession
    # Twice as many as there are processors: most of these tests wait for a window, a frame or a period.
    runTests wine release -j"$((2 * $(nproc)))"
fi
if ((all)) && [[ -z "$filter" ]]; then
    runSlowChecks
fi

say "Summary after $((SECONDS / 60)) min $((SECONDS % 60)) s"
printf '   %s\n' "${summary[@]}"
printf '%d passed, %d failed\n' "$passed" "$failed"
((failed == 0 && passed > 0))
