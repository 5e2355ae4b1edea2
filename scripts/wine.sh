#!/usr/bin/env bash
# Runs a Windows program in Kelvaro's Wine prefix: scripts/wine.sh PROGRAM.exe [ARGUMENTS...]
# CMake and CTest use it as the emulator of the cross build. It honours WINEPREFIX, WINEDEBUG and
# WINEDLLOVERRIDES, and prepares the prefix on first use.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

setWineEnvironment
prefixIsCurrent || "$KELVARO_ROOT/scripts/wine_prefix.sh"
setWineCommand
exec "${wineCommand[@]}" "$@"
