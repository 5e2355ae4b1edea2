#!/usr/bin/env bash
# Runs the endurance test in its long form.
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
Usage: scripts/soak.sh [--passes N] [--seed S]

Installs the packages that are missing (Debian 12 or 13), builds the program with all stand-ins attached into a test,
and lets it make N passes at full speed under Wine: time is virtual; figures, devices, notices, buttons, dialogs and
clocks change in random order. Then everything comes to rest, and the last frames must be those of a process that has
seen nothing of it. A line now and then tells how far it is, and how much memory the process has for itself. The exit
code is 0 when all went well. ./test.sh runs the same with fewer passes.

  --passes N   how many passes (default: 1000000)
  --seed S     a whole number that repeats the random order (default: another one each time); it is printed
  --help       print this

The Wine prefix is WINEPREFIX, or out/wineprefix-soak when that is not set: the run may go on beside others.
TEXT
}

passes=1000000
seed="$(od -An -N4 -tu4 /dev/urandom | tr -d ' ')"

parseOptions() {
    while (($# > 0)); do
        case "$1" in
            -h | --help) usage && exit 0 ;;
            --passes | --seed)
                if [[ ! "${2:-}" =~ ^[0-9]{1,10}$ ]] || ((10#$2 > 4294967295)); then
                    fail "$1 takes a whole number of at most 4294967295, not '${2:-}'"
                fi
                setOption "$1" "$((10#$2))"
                shift
                ;;
            *) fail "unknown option '$1'; --help lists the options" ;;
        esac
        shift
    done
}

setOption() {
    case "$1" in
        --passes) passes="$2" ;;
        --seed) seed="$2" ;;
    esac
}

xvfbPid=''

cleanUp() {
    "$(findWineserver)" -k 2>/dev/null || true
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
}

trapSignals
parseOptions "$@"
((passes >= 1000)) || fail "--passes takes at least 1000"
makeOutFolder
export WINEPREFIX="${WINEPREFIX:-$here/out/wineprefix-soak}"
setWineEnvironment
ensurePackages "${KELVARO_RUN_PACKAGES[@]}"
buildPreset release soak_tests
export WINEDLLOVERRIDES="xinput1_4=n,b;$WINEDLLOVERRIDES"
prefixIsCurrent || "$here/scripts/wine_prefix.sh"
# What a run that was killed has left would be in the way of one with the same process id.
rm -rf "$WINEPREFIX"/drive_c/users/*/{Temp,AppData/Local/Temp}/[kK]elvaro*
trap cleanUp EXIT
startXvfb

# A copy runs, so that a build meanwhile does not disturb it. It lies in the build's folder, from which the test finds
# the stand-ins.
built="$here/out/build/release/tests/endurance/soak_tests"
copy="$built-running"
rm -rf "$copy"
cp -r "$built" "$copy"
say "$passes passes, seed $seed"
KELVARO_PASSES="$passes" KELVARO_SEED="$seed" "$here/scripts/wine.sh" "$copy/soak_tests.exe" \
    --gtest_filter='Soak.After*'
