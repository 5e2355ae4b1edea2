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
Usage: ./run.sh [--simulate] [--desktop] [--shot FILE] [--seconds N] [--press LIST]

Installs the packages that are missing (Debian 12 or 13), builds out/release/Kelvaro.exe, and runs it under Wine on a
virtual G19 keyboard. Nothing is installed or built twice.

With a display, a window shows the keyboard's LCD and its buttons: click them, or use the arrow keys, Enter (OK),
Esc (CANCEL) and M (MENU). Closing the window ends Kelvaro.
Without a display (DISPLAY is not set), Kelvaro runs for some seconds and the LCD's picture goes to out/lcd.png.

  --simulate     all figures move: sensors, graphics card, sound, mail and gamepad are stand-ins for this run
  --desktop      desktop mode: no keyboard, but a tray icon, whose menu shows the preview window and ends Kelvaro;
                 without a display the preview's picture goes to out/desktop.png
  --shot FILE    no window: save the LCD's (or the preview's) picture as FILE (PNG) and end
  --seconds N    how long Kelvaro runs before buttons are pressed and the picture is taken (default: 5)
  --press LIST   press these buttons before the picture is taken, for example menu,right,down,ok;
                 there are up, right, down, left, menu, ok, cancel
  --help         print this

The Wine prefix is WINEPREFIX, or out/wineprefix when that is not set. It must be an empty folder or a prefix that
these scripts have made.
TEXT
}

shotFile=''
seconds=''
presses=''
simulate=0
desktop=0

parseOptions() {
    while (($# > 0)); do
        case "$1" in
            -h | --help) usage && exit 0 ;;
            --simulate) simulate=1 ;;
            --desktop) desktop=1 ;;
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
    ((!desktop)) || [[ -z "$presses" ]] || fail "--press presses buttons of the keyboard, which --desktop has not"
    if [[ -z "$shotFile" && -z "${DISPLAY:-}" ]]; then
        shotFile="$here/out/lcd.png"
        ((!desktop)) || shotFile="$here/out/desktop.png"
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

standins="$here/out/release/standins"
keyboardFolder="$standins/lcd_sdk"
program="$here/out/release/Kelvaro.exe"
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
        removeSimulation || true
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
    if ! prefixIsCurrent; then
        say "Setting up the Wine prefix $WINEPREFIX"
        "$here/scripts/wine_prefix.sh"
    fi
    # Two runs in one prefix would take the keyboard from each other.
    exec {runLock}>"$WINEPREFIX/kelvaro-run.lock"
    flock -n "$runLock" || fail "Kelvaro is running in $WINEPREFIX already"
    : >"$runLog"
    trap cleanUp EXIT
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

# Frames and focus of windows: see hasWindowManager.
setWindowFrames() {
    local managed=N
    if hasWindowManager; then
        managed=Y
    fi
    inWine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d "$managed" /f >/dev/null 2>&1 ||
        fail "Wine does not work in $WINEPREFIX"
}

# The registration is what makes Kelvaro find a keyboard: without it, it runs in desktop mode.
chooseMode() {
    local action=--register
    if ((desktop)); then
        action=--unregister
    fi
    inWine "$keyboardFolder/virtual_g19_tool.exe" "$action" --force >/dev/null
}

driverOfSimulation() {
    printf '%s' "$WINEPREFIX/drive_c/windows/system32/nvapi64.dll"
}

audioOfSimulation() {
    windowsPath "$standins/core_audio/core_audio_standin.dll"
}

# Says in the prefix which file installSimulation has put in the driver's place, by its sum.
recordOfSimulation() {
    printf '%s' "$WINEPREFIX/kelvaro-simulation.sum"
}

driverIsOurs() {
    [[ -f "$(driverOfSimulation)" && "$(sha256sum <"$(driverOfSimulation)")" == "$(<"$(recordOfSimulation)")" ]]
}

# Puts the stand-ins of the vendor libraries where Kelvaro looks for them, and starts what moves their figures.
installSimulation() {
    local folder="$here/out/simulate" driver tenths
    driver="$(driverOfSimulation)"
    [[ ! -e "$driver" && ! -L "$driver" ]] ||
        fail "--simulate would replace $driver, which is not one that it has put there; move it away first"
    say "Setting up the simulated machine"
    mkdir -p "$folder"
    cp "$program" "$standins/core_temp/GetCoreTempInfo.dll" "$standins/xinput/XINPUT1_4.dll" "$folder/"
    program="$folder/Kelvaro.exe"
    export WINEDLLOVERRIDES="xinput1_4=n,b;$WINEDLLOVERRIDES"
    sha256sum <"$standins/nvapi/nvapi64.dll" >"$(recordOfSimulation)"
    # Whole or not at all: a part of it would not have the sum.
    cp "$standins/nvapi/nvapi64.dll" "$driver.new"
    mv "$driver.new" "$driver"
    inWine regsvr32 /s "$(audioOfSimulation)" >>"$runLog" 2>&1 || fail "the simulated sound system cannot be registered"
    startInWine "$standins/simulator/simulator.exe"
    for ((tenths = 0; tenths < 300; ++tenths)); do
        if grep -q '^ready' "$runLog"; then
            return
        fi
        sleep 0.1
    done
    fail "the simulated machine does not start (out/run.log)"
}

# Takes back what installSimulation did, also in a run that could not. The record comes first and goes last, so
# it tells whether there is anything to take back. A driver that somebody else has put there meanwhile stays.
removeSimulation() {
    if [[ ! -e "$(recordOfSimulation)" ]]; then
        return
    fi
    inWine regsvr32 /u /s "$(audioOfSimulation)" >>"$runLog" 2>&1 || say "the simulated sound system stays registered"
    inWine "$standins/simulator/simulator.exe" --forget >>"$runLog" 2>&1 || say "the simulated mail stays"
    if driverIsOurs; then
        rm -f "$(driverOfSimulation)"
    fi
    rm -f "$(driverOfSimulation).new" "$(recordOfSimulation)"
}

startKelvaro() {
    startInWine "$program"
    kelvaroPid="$startedPid"
}

takePreviewShot() {
    say "Running Kelvaro in desktop mode for ${seconds:-5} seconds"
    startKelvaro
    inWine "$standins/desktop/preview_shot.exe" "$(windowsPath "$shotFile")" "${seconds:-5}" ||
        fail "there is no picture of the preview window (out/run.log has what Kelvaro printed)"
    say "The preview window's picture is in $shotFile"
}

runDesktop() {
    say "Kelvaro runs in desktop mode: its icon is in the notification area, its menu has Show and Exit"
    startKelvaro
    wait "$kelvaroPid" ||
        fail "Kelvaro has ended with exit code $? (is there a display at DISPLAY=$DISPLAY? out/run.log has what it printed)"
}

takeShot() {
    local words=(--shot "$(windowsPath "$shotFile")" --seconds "${seconds:-5}")
    if [[ -n "$presses" ]]; then
        words+=(--press "$presses")
    fi
    say "Running Kelvaro for ${seconds:-5} seconds"
    startKelvaro
    inWine "$keyboardFolder/virtual_g19_tool.exe" "${words[@]}" || fail "there is no picture of the LCD (out/run.log has what Kelvaro printed)"
    say "The LCD's picture is in $shotFile"
}

showWindow() {
    local viewerPid code=0
    say "Showing Kelvaro on the virtual keyboard; close its window to end"
    startInWine "$keyboardFolder/virtual_g19.exe"
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

trapSignals
parseOptions "$@"
makeOutFolder
checkOptions
setWineEnvironment
ensurePackages "${KELVARO_RUN_PACKAGES[@]}"
targets=(Kelvaro virtual_g19 virtual_g19_tool simulator)
if ((desktop)); then
    targets+=(preview_shot)
fi
buildPreset release "${targets[@]}"
prepareWine
if [[ -n "$shotFile" ]]; then
    startXvfb
fi
setWindowFrames
chooseMode
removeSimulation
if ((simulate)); then
    installSimulation
fi
case "$desktop:${shotFile:+shot}" in
    0:shot) takeShot ;;
    1:shot) takePreviewShot ;;
    0:) showWindow ;;
    1:) runDesktop ;;
esac
