#!/usr/bin/env bash
# Checks that a test which hangs is looked at before its time is over.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() {
    cat <<TEXT
Usage: scripts/check_timeouts.sh

Lets scripts/watched_ctest.py run a program of the built preset release that hangs, and whose child has the same output.
Checks that what is kept names both and the function that they hang in, that no other process is in it, and that both
go on after they were looked at. The Wine prefix is WINEPREFIX, or out/wineprefix-test when that is not set.
TEXT
}

case "${1:-}" in
    '') ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

program="$KELVARO_ROOT/out/build/release/tests/support/hanging_program.exe"
[[ -f "$program" ]] || fail "preset release is not built: cmake --build --preset release"
makeOutFolder
export WINEPREFIX="${WINEPREFIX:-$KELVARO_ROOT/out/wineprefix-test}"
folder="$(mktemp -d "$KELVARO_ROOT/out/timeout-check.XXXXXX")"
bystander=''
problems=0

cleanUp() {
    # It ends the program that hangs, if the check did not get to that.
    touch "$folder/end" 2>/dev/null || true
    if [[ -n "$bystander" ]]; then
        kill "$bystander" 2>/dev/null || true
    fi
}

problem() {
    printf '%s\n' "   wrong: $*" >&2
    problems=$((problems + 1))
}

# contains PATTERN WHAT
contains() {
    grep -E "$1" "$report" >/dev/null || problem "the report does not have $2"
}

trap cleanUp EXIT
trapSignals
printf 'hanging_program.exe||TIMEOUT|90\n' >"$folder/test_programs.txt"
cat >"$folder/CTestTestfile.cmake" <<TEXT
add_test(Hangs "$KELVARO_ROOT/scripts/wine.sh" "$program" "Z:$folder/end" --gtest_filter=Some.Test)
set_tests_properties(Hangs PROPERTIES TIMEOUT 90)
add_test(Ends true)
TEXT
sleep 3600 &
bystander=$!

# It hangs until it has been looked at. Looking takes its time on a busy machine; CTest would end the test after 90 s.
export KELVARO_TIMEOUT_MARGIN=85 KELVARO_TIMEOUTS="$folder/timeouts"
"$KELVARO_ROOT/scripts/watched_ctest.py" "$folder" --test-dir "$folder" -j2 2>&1 |
    while IFS= read -r line; do
        printf '%s\n' "$line"
        if [[ "$line" == *'about to run out of time'* ]]; then
            touch "$folder/end"
        fi
    done >"$folder/output.txt" || problem "CTest fails"
grep 'tests passed, 0 tests failed out of 2' "$folder/output.txt" >/dev/null ||
    problem "the program that was looked at does not end in good order"
report="$folder/timeouts/Some.Test.txt"
if [[ -f "$report" ]]; then
    contains 'hanging_program\.exe Z:[^ ]*end --gtest_filter' "the test's program"
    sed -n '/^Who holds/,/^Their children/p' "$report" | grep 'hanging_program\.exe.* child' >/dev/null ||
        problem "the report does not have the child among those that hold the output open"
    contains 'thread [0-9]+ hanging_program' "a thread"
    contains 'hangUntilThereIsAFile' "the function that it hangs in"
    if command -v gdb >/dev/null || command -v eu-stack >/dev/null; then
        contains '^#[0-9]+ .*(read|wait|poll|select)' "a stack of the host's functions"
    fi
    ! grep -E "^($bystander|Stacks of $bystander) " "$report" >/dev/null || problem "the report has a process of its own"
else
    problem "there is no report: $(ls "$folder")"
fi
if ((problems > 0)); then
    fail "$problems of the things above are wrong; outputs are in ${folder#"$KELVARO_ROOT"/}"
fi
cleanUp
trap - EXIT
rm -r "$folder"
