#!/usr/bin/env bash
# Makes or refreshes the Wine prefix that Kelvaro and its tests run in.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() {
    cat <<TEXT
Usage: scripts/wine_prefix.sh [--force]

Makes the Wine prefix in WINEPREFIX (default: out/wineprefix) and writes the settings that Kelvaro needs
there. A prefix that is already up to date is left alone, which takes a few milliseconds; a change of this
script, or --force, refreshes it. Refreshing ends the programs that run in the prefix. A folder that holds something
else than a prefix made by this script is refused.
TEXT
}

# Managed=N: hiding a window costs 2 s without a window manager when Wine leaves the frame to one.
# Fonts\Replacements: GDI+ knows no Arial here; Liberation Sans has the same metrics.
# PNG decoder 2: Wine implements it as the first decoder but does not register its class. By its full path: by its name
# alone it is not loaded for a program that has limited where libraries are looked for.
# ShowCrashDialog=0: a crash must end the process, not wait for somebody to press a button.
writeSettings() {
    local file="$1"
    cat >"$file" <<'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"Managed"="N"

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Arial"="Liberation Sans"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{E018945B-AA86-4008-9BD4-6777A1E40C11}]
@="WIC PNG Decoder V2"

[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{E018945B-AA86-4008-9BD4-6777A1E40C11}\InprocServer32]
@="C:\\windows\\system32\\windowscodecs.dll"
"ThreadingModel"="Both"
REG
}

# Wine links Documents, Desktop and so on to the user's own folders. Ours must not write there.
separateUserFolders() {
    local link
    while IFS= read -r -d '' link; do
        rm "$link"
        mkdir "$link"
    done < <(find "$WINEPREFIX/drive_c/users" -mindepth 2 -maxdepth 2 -type l -print0)
}

# Says in the stamp that the prefix is being made, before there is anything else in it. Wine cannot go on with one whose
# making was interrupted, so that one is made anew: nobody has used it yet.
beginPrefix() {
    local stamp="$WINEPREFIX/kelvaro-prefix.stamp"
    "$wineserver" -k 2>/dev/null || true
    if [[ -f "$stamp" && "$(<"$stamp")" != unfinished ]]; then
        printf 'being refreshed\n' >"$stamp"
        return
    fi
    printf 'unfinished\n' >"$stamp"
    rm -rf --one-file-system "$WINEPREFIX"/{dosdevices,drive_c,system.reg,user.reg,userdef.reg,.update-timestamp}
}

preparePrefix() {
    local settings="$WINEPREFIX/kelvaro-settings.reg"
    beginPrefix
    DISPLAY='' "${wineCommand[@]}" wineboot -i >/dev/null 2>&1 </dev/null || fail "Wine could not create the prefix $WINEPREFIX"
    writeSettings "$settings"
    DISPLAY='' "${wineCommand[@]}" regedit /S "Z:${settings//\//\\}" >/dev/null 2>&1 </dev/null ||
        fail "Wine could not write its settings into $WINEPREFIX"
    rm "$settings"
    # The fonts are read once per server, and the registry reaches the disk when the server ends.
    "$wineserver" -k || true
    "$wineserver" -w
    separateUserFolders
    wantedPrefixStamp >"$WINEPREFIX/kelvaro-prefix.stamp"
}

force=0
case "${1:-}" in
    '') ;;
    --force) force=1 ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

setWineEnvironment
setWineCommand
wineserver="$(findWineserver)" || fail "Wine's server is not installed (Debian: apt-get install wine64)"

if ((!force)) && prefixIsCurrent; then
    exit 0
fi

# Two starts at once (a build that discovers tests, and a run) must not make the prefix twice.
exec 9>"$WINEPREFIX/kelvaro-prefix.lock"
flock 9
checkPrefixFolder
if ((!force)) && prefixIsCurrent; then
    exit 0
fi
# The lock must not be inherited by Wine's server, which outlives this script.
( exec 9>&-; preparePrefix )
