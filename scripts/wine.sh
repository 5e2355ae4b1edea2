#!/usr/bin/env bash
# Runs a Windows program in Kelvaro's Wine prefix: scripts/wine.sh PROGRAM.exe [ARGUMENTS...]
# CMake and CTest use it as the emulator of the cross build. It honours WINEPREFIX, WINEDEBUG and
# WINEDLLOVERRIDES, and prepares the prefix on first use. KELVARO_COUNTERS is set by scripts/coverage.sh only.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# takeCounterFolder FOLDER: a program that counts which of its lines run writes its counters when it ends, and two that
# end at once would write the same files. So each has a folder N of its own as long as it runs; the lock goes with it.
takeCounterFolder() {
    local number slot
    for ((number = 0; ; ++number)); do
        mkdir -p "$1/$number"
        exec {slot}>"$1/$number/lock"
        if flock -n "$slot"; then
            break
        fi
        exec {slot}>&-
    done
    export GCOV_PREFIX="Z:$1/$number"
}

setWineEnvironment
prefixIsCurrent || "$KELVARO_ROOT/scripts/wine_prefix.sh"
setWineCommand
if [[ -n "${KELVARO_COUNTERS:-}" ]]; then
    takeCounterFolder "$KELVARO_COUNTERS"
fi
exec "${wineCommand[@]}" "$@"
