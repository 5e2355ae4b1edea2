#!/usr/bin/env bash
# Builds Kelvaro and shows it on a virtual G19 keyboard.
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
Usage: ./run.sh [--shot FILE] [--seconds N] [--press LIST]

Installs the packages that are missing (Debian 12), builds out/release/Kelvaro.exe, and runs it under Wine on a
virtual G19 keyboard. Nothing is installed or built twice.

With a display, a window shows the keyboard's LCD and its buttons: click them, or use the arrow keys, Enter (OK),
Esc (CANCEL) and M (MENU). Closing the window ends Kelvaro.
Without a display (DISPLAY is not set), Kelvaro runs for some seconds and the LCD's picture goes to out/lcd.png.

  --shot FILE    no window: save the LCD's picture as FILE (PNG) and end
  --seconds N    how long Kelvaro runs before buttons are pressed and the picture is taken (default: 5)
  --press LIST   press these buttons before the picture is taken, for example menu,right,down,ok;
                 there are up, right, down, left, menu, ok, cancel
  --help         print this

The Wine prefix is WINEPREFIX, or out/wineprefix when that is not set.
TEXT
}

shotFile=''
seconds=''
presses=''

parseOptions() {
    while (($# > 0)); do
        case "$1" in
            -h | --help) usage && exit 0 ;;
            --shot | --seconds | --press)
                [[ -n "${2:-}" ]] || fail "$1 needs a value"
                setOption "$1" "$2"
                shift
                ;;
            *) fail "unknown option '$1'; --help lists the options" ;;
        esac
        shift
    done
}

setOption() {
    case "$1" in
        --shot) shotFile="$2" ;;
        --seconds)
            if [[ ! "$2" =~ ^[0-9]{1,4}$ ]] || ((10#$2 > 3600)); then
                fail "--seconds takes a whole number of seconds from 0 to 3600, not '$2'"
            fi
            seconds="$((10#$2))"
            ;;
        --press)
            local button='(up|right|down|left|menu|ok|cancel)'
            [[ "$2" =~ ^$button(,$button)*$ ]] ||
                fail "--press takes a list such as menu,right,ok of up, right, down, left, menu, ok, cancel, not '$2'"
            presses="$2"
            ;;
    esac
}

# Everything that can be known to fail is refused before the packages and the build cost minutes.
checkOptions() {
    if [[ -z "$shotFile" && -z "${DISPLAY:-}" ]]; then
        shotFile="$here/out/lcd.png"
        mkdir -p "$here/out"
    fi
    if [[ -z "$shotFile" ]]; then
        [[ -z "$seconds$presses" ]] || fail "--seconds and --press go together with --shot"
        return
    fi
    shotFile="$(realpath -m -- "$shotFile")"
    [[ ! -d "$shotFile" ]] || fail "--shot: $shotFile is a folder"
    [[ -d "$(dirname "$shotFile")" && -w "$(dirname "$shotFile")" ]] ||
        fail "--shot: $(dirname "$shotFile") is no folder that can be written to"
}

# The same file as a Windows program names it.
windowsPath() {
    printf '%s' "Z:${1//\//\\}"
}

standinFolder="$here/out/release/standins/lcd_sdk"
runLog="$here/out/run.log"
startedPids=()
xvfbPid=''

# Ends what this script has started, and nothing else: Kelvaro and the viewer by their process ids, and then
# what Wine has started for them.
cleanUp() {
    local pid
    for pid in "${startedPids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in "${startedPids[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
    if [[ -n "${WINEPREFIX:-}" && -f "$WINEPREFIX/kelvaro-prefix.stamp" ]]; then
        "$(findWineserver)" -k 2>/dev/null || true
    fi
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
}

# Whether windows get their frames and their focus from a window manager. Without one Wine has to do it itself.
# A display whose manager cannot be asked for is somebody's desktop.
hasWindowManager() {
    [[ -n "${DISPLAY:-}" ]] || return 1
    command -v xprop >/dev/null || return 0
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'
}

prepareWine() {
    setWineEnvironment
    if ! prefixIsCurrent; then
        say "Setting up the Wine prefix $WINEPREFIX"
        "$here/scripts/wine_prefix.sh"
    fi
    # Two runs in one prefix would take the keyboard from each other.
    exec {runLock}>"$WINEPREFIX/kelvaro-run.lock"
    flock -n "$runLock" || fail "Kelvaro is running in $WINEPREFIX already"
    : >"$runLog"
    trap cleanUp EXIT
    trap 'exit 130' INT TERM HUP
}

# Runs a Windows program. It does not get the lock, which Wine's server would keep beyond this script.
inWine() {
    "$here/scripts/wine.sh" "$@" {runLock}>&-
}

# The same, without waiting for its end. Its process id goes to `startedPid`, what it prints to a log: a machine
# without a sound card alone is worth a screenful of complaints.
startInWine() {
    (
        exec {runLock}>&-
        exec "$here/scripts/wine.sh" "$@" >>"$runLog" 2>&1
    ) &
    startedPid=$!
    startedPids+=("$startedPid")
}

# The registration is what makes Kelvaro find a keyboard: without it, it runs in desktop mode.
registerKeyboard() {
    local managed=N
    if hasWindowManager; then
        managed=Y
    fi
    inWine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d "$managed" /f >/dev/null 2>&1 ||
        fail "Wine does not work in $WINEPREFIX"
    inWine "$standinFolder/virtual_g19_tool.exe" --register --force >/dev/null
}

startKelvaro() {
    startInWine "$here/out/release/Kelvaro.exe"
    kelvaroPid="$startedPid"
}

takeShot() {
    local words=(--shot "$(windowsPath "$shotFile")" --seconds "${seconds:-5}")
    if [[ -n "$presses" ]]; then
        words+=(--press "$presses")
    fi
    say "Running Kelvaro for ${seconds:-5} seconds"
    startKelvaro
    inWine "$standinFolder/virtual_g19_tool.exe" "${words[@]}" || fail "there is no picture of the LCD (out/run.log has what Kelvaro printed)"
    say "The LCD's picture is in $shotFile"
}

showWindow() {
    local viewerPid code=0
    say "Showing Kelvaro on the virtual keyboard; close its window to end"
    startInWine "$standinFolder/virtual_g19.exe"
    viewerPid="$startedPid"
    startKelvaro
    # Whoever ends first: Kelvaro may be told to by its options page, and the viewer then says so.
    wait -n "$viewerPid" "$kelvaroPid" || code=$?
    if kill -0 "$viewerPid" 2>/dev/null; then
        say "Kelvaro has ended with exit code $code; close the window to end"
        code=0
        wait "$viewerPid" || code=$?
    fi
    ((code == 0)) || fail "the virtual keyboard's window has failed (is there a display at DISPLAY=$DISPLAY?)"
}

parseOptions "$@"
checkOptions
ensurePackages "${KELVARO_RUN_PACKAGES[@]}"
buildPreset release Kelvaro virtual_g19 virtual_g19_tool
prepareWine
if [[ -n "$shotFile" ]]; then
    startXvfb
    registerKeyboard
    takeShot
else
    registerKeyboard
    showWindow
fi
