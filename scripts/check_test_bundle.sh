#!/usr/bin/env bash
# Runs the packed tests as they are run on Windows, under Wine.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=packages.sh
source "$(dirname "${BASH_SOURCE[0]}")/packages.sh"
# shellcheck source=display.sh
source "$(dirname "${BASH_SOURCE[0]}")/display.sh"

usage() {
    cat <<TEXT
Usage: scripts/check_test_bundle.sh [--quick]

Packs the tests of the built preset release, unpacks them and runs them through Windows' command processor in a Wine
prefix of their own, out/wineprefix-bundle. Checks that
  - every suite passes, none is skipped, and all tests of CTest are among them;
  - who does not agree is not disturbed;
  - a test that fails shows in the exit code and in its suite's line;
  - the registry and the system folder are what they were, also after a run that is interrupted, and after one that is
    killed and put back;
  - what only Wine can show is skipped elsewhere, by name and counted.
  --quick   without the run of all tests
TEXT
}

quick=0
case "${1:-}" in
    '') ;;
    --quick) quick=1 ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

place="$KELVARO_ROOT/out/bundle-check"
folder=''
# From the start on: cleanUp() ends what runs in it, and must reach nobody else's.
export WINEPREFIX="$KELVARO_ROOT/out/wineprefix-bundle"
xvfbPid=''
runPid=''
problems=0

cleanUp() {
    if [[ -n "$runPid" ]]; then
        kill -KILL "$runPid" 2>/dev/null || true
    fi
    "$(findWineserver)" -k 2>/dev/null || true
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
}

problem() {
    printf '%s\n' "   wrong: $*" >&2
    problems=$((problems + 1))
}

# A blank and a letter beyond ASCII are in many people's paths.
packAndUnpack() {
    local around="$place/Kelvaro prüfen" version
    read -r version _ <"$KELVARO_ROOT/out/build/release/programs.txt"
    rm -rf "$place"
    mkdir -p "$around"
    "$KELVARO_ROOT/scripts/test_bundle.sh" --output "$place"
    unzip -q "$place/KelvaroTests-$version-x64.zip" -d "$around"
    folder="$around/KelvaroTests-$version"
}

# What CTest gives to single programs this prefix gives to all: under Wine a program cannot choose for those that it
# starts. A library beside a program is taken, elsewhere nothing changes. So can none choose the system's time zone.
openPrefix() {
    local names
    names="$(grep -o 'WINEDLLOVERRIDES=[^|=]*' "$folder/build/release/test_programs.txt" | sed 's/.*=//' | sort -u |
        paste -sd,)"
    export WINEDLLOVERRIDES="$names=n,b" LC_ALL=C.UTF-8
    TZ="$(sed -n 's/.*TZ=set:\([^|]*\).*/\1/p' "$folder/build/release/test_programs.txt" | head -1)"
    export TZ
    setWineEnvironment
    startXvfb
    "$KELVARO_ROOT/scripts/wine_prefix.sh"
}

wine() {
    "$KELVARO_ROOT/scripts/wine.sh" "$@" </dev/null 2>/dev/null
}

# runTests OPTION...: as a user does. Output in $place/output.txt; returns the exit code.
runTests() {
    (cd "$folder" && wine cmd.exe /c run-tests.cmd /yes "$@" | tr -d '\r') >"$place/output.txt"
}

# The sums of the line that begins with these words: passed, failed and skipped.
sumsOf() {
    sed -n "s/^$1 .* \([0-9]*\) passed *\([0-9]*\) failed *\([0-9]*\) skipped .*/\1 \2 \3/p" "$place/output.txt"
}

# machineTo FILE: all that tests could have changed: the registry, but for what Wine keeps there of its own and for the
# list of sound devices, which the system makes when it is first asked for them, and the names of the system's files and
# of those that are kept for restoring.
machineTo() {
    local root
    for root in HKEY_LOCAL_MACHINE HKEY_CURRENT_USER; do
        wine regedit /E "Z:${place//\//\\}\\dump.reg" "$root\\Software"
        iconv -f UTF-16 -t UTF-8 "$place/dump.reg" | tr -d '\r'
    done | awk '/^\[/ { skip = /\\Software\\(Wine|Microsoft\\Windows\\CurrentVersion\\MMDevices)[\\\]]/ } !skip' >"$1"
    (cd "$WINEPREFIX/drive_c" && find windows/system32 ProgramData -print | LC_ALL=C sort) >>"$1"
}

# expectUntouched WHAT
expectUntouched() {
    machineTo "$place/after.txt"
    diff "$place/before.txt" "$place/after.txt" >"$place/difference.txt" ||
        problem "the machine is not what it was after $1: $(head -5 "$place/difference.txt")"
}

# startAndWait: a run in the background whose tests have just put their drivers among the system's.
startAndWait() {
    local tenths driver="$WINEPREFIX/drive_c/windows/system32/nvapi64.dll"
    (cd "$folder" && exec "$KELVARO_ROOT/scripts/wine.sh" build/release/tests/bundle/run_tests.exe /yes \
        /filter 'Lifecycle*' >"$place/output.txt" 2>/dev/null </dev/null) &
    runPid=$!
    for ((tenths = 0; tenths < 1200; ++tenths)); do
        [[ ! -f "$driver" ]] || return 0
        sleep 0.1
    done
    problem "the run does not get to its tests"
}

checkInterrupted() {
    say "A run that is interrupted"
    startAndWait
    # Wine makes it Ctrl+C.
    kill -INT "$runPid"
    wait "$runPid" && problem "an interrupted run ends with code 0"
    runPid=''
    grep -q 'of the tests did not run' "$place/output.txt" || problem "an interrupted run does not say so"
    expectUntouched "an interrupted run"
}

checkKilled() {
    say "A run that is killed, and put back"
    startAndWait
    kill -KILL "$runPid"
    wait "$runPid" 2>/dev/null || true
    runPid=''
    machineTo "$place/killed.txt"
    ! cmp -s "$place/before.txt" "$place/killed.txt" || problem "the killed run had changed nothing"
    (cd "$folder" && wine cmd.exe /c run-tests.cmd /restore) >"$place/output.txt" || problem "/restore fails"
    expectUntouched "/restore"
}

checkFailure() {
    local library="$folder/release/standins/nvapi/nvapi64.dll" code=0
    say "A test that fails"
    mv "$library" "$place/nvapi64.dll"
    runTests /filter 'GpuNvidiaDriver.*' || code=$?
    mv "$place/nvapi64.dll" "$library"
    ((code == 1)) || problem "the exit code is $code and not 1"
    [[ "$(sumsOf 'GpuNvidiaDriver (stats_tests)')" =~ ^0\ [1-9][0-9]*\ 0$ ]] || problem "the suite's line does not count it"
    grep -q '^FAILED  GpuNvidiaDriver\.' "$place/output.txt" || problem "it is not named"
    grep -q 'FAILED' "$folder/run-tests.log" || problem "the log has no output of it"
}

checkRefused() {
    local code=0
    say "A user who does not agree"
    (cd "$folder" && printf 'n\n' | "$KELVARO_ROOT/scripts/wine.sh" cmd.exe /c run-tests.cmd /filter 'LocalTime.*') \
        >"$place/output.txt" 2>/dev/null || code=$?
    ((code == 2)) || problem "the exit code is $code and not 2"
    grep -q 'only on a machine that you can throw away' -i "$place/output.txt" || problem "he was not asked"
    ! grep -q 'passed' "$place/output.txt" || problem "tests were run"
}

checkSkipped() {
    say "What only Wine can show"
    KELVARO_AS_ON_WINDOWS=1 runTests /filter 'LocalTime.*' || problem "tests that are skipped have failed"
    [[ "$(sumsOf Total)" =~ ^0\ 0\ [1-9][0-9]*$ ]] || problem "they are not counted as skipped: $(sumsOf Total)"
    grep -q '^SKIPPED LocalTime\..*: its C runtime' "$place/output.txt" || problem "they are not named with the reason"
}

# Natively as in the bundle, the tests of one process count as single ones.
testsOfCTest() {
    (cd "$KELVARO_ROOT" && unset TZ WINEPREFIX WINEDLLOVERRIDES && ctest --preset release -N -LE whole) |
        sed -n 's/^Total Tests: //p'
}

checkAll() {
    local wanted code=0
    say "All tests"
    # As many at a time as ./test.sh runs.
    runTests /jobs "$((2 * $(nproc)))" || code=$?
    grep -E '^(FAILED|SKIPPED|Total)' "$place/output.txt" || true
    ((code == 0)) || problem "the exit code is $code"
    wanted="$(testsOfCTest)"
    [[ "$(sumsOf Total)" == "$wanted 0 0" ]] || problem "passed, failed, skipped: $(sumsOf Total), and CTest has $wanted"
    expectUntouched "all tests"
}

trapSignals
unset KELVARO_ALL
makeOutFolder
ensurePackages "${KELVARO_RUN_PACKAGES[@]}" "${KELVARO_BUNDLE_PACKAGES[@]}"
trap cleanUp EXIT
packAndUnpack
openPrefix
# What the first run of a prefix makes is no change of the tests'.
checkSkipped
machineTo "$place/before.txt"
checkRefused
checkFailure
checkInterrupted
checkKilled
if ((!quick)); then
    checkAll
fi
((problems == 0)) || fail "$problems of the things above are wrong; outputs are in ${place#"$KELVARO_ROOT"/}"
