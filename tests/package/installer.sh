#!/usr/bin/env bash
# Packs an installer and tests it end to end, in a Wine prefix of its own: tests/package/installer.sh [GTEST-OPTION...]
# What lies in out/package stays.
set -euo pipefail
# shellcheck source=../../scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"
# shellcheck source=../../scripts/build.sh
source "$KELVARO_ROOT/scripts/build.sh"
# shellcheck source=../../scripts/display.sh
source "$KELVARO_ROOT/scripts/display.sh"
# shellcheck source=../../scripts/release_files.sh
source "$KELVARO_ROOT/scripts/release_files.sh"

build="$KELVARO_ROOT/out/build/release/tests/package"
setups="$KELVARO_ROOT/out/build/installer-test"
version=''
programs=()
xvfbPid=''

cleanUp() {
    removeStage
    "$(findWineserver)" -k 2>/dev/null || true
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
    rm -rf "$WINEPREFIX"
}

windowsPath() {
    printf '%s' "Z:${1//\//\\}"
}

# The released installer, and two of the same files that say that they are of other versions.
makeSetups() {
    rm -rf "$setups"
    "$KELVARO_ROOT/package.sh" --output "$setups"
    unzip -q -j "$setups/Kelvaro-$version-x64.zip" -d "$STAGE/files"
    unset KELVARO_SIGN_CERTIFICATE
    makeSetup 1000.0.0 "$setups/KelvaroSetup-1000.0.0-x64.exe"
    # The older one has an address, and a file that the released one has no longer.
    printf 'retired' >"$STAGE/files/Retired.txt"
    KELVARO_HOME_URL=https://kelvaro.example makeSetup 0.9.0 "$setups/KelvaroSetup-0.9.0-x64.exe"
    rm "$STAGE/files/Retired.txt"
}

# The installer of the first version, with the files that it had.
makeFirstSetup() {
    local lists="$STAGE/first" name
    mkdir "$lists"
    for name in CHANGELOG.txt Kelvaro.exe KelvaroReport.exe README.txt; do
        printf 'File "%s"\n' "$STAGE/files/$name" >>"$lists/install.nsh"
        # shellcheck disable=SC2016 # $0 is one of the installer's
        printf 'Delete "$0\%s"\n' "$name" >>"$lists/uninstall.nsh"
    done
    makensis -V2 "-DVERSION=$version" "-DOUTPUT=$setups/KelvaroSetup-first-x64.exe" "-DFILES=$STAGE/files" \
        "-DLISTS=$lists" "-DICON=$KELVARO_ROOT/artwork/rendered/300_kelvaro.ico" \
        "-DFINISH_PICTURE=$STAGE/finish.bmp" -DSIZE_KB=1 "$KELVARO_ROOT/tests/package/first_version.nsi" >/dev/null
}

# Programs look for Wine's own libraries first, unless they are told otherwise: as on Windows, those beside the program
# come first, for all but the ones that Windows takes from its own folder in any case.
writeSettings() {
    local program library
    "$KELVARO_ROOT/scripts/wine.sh" reg add 'HKCU\Software\Wine' /v Version /d win10 /f >/dev/null 2>&1
    for program in careless_program.exe "KelvaroSetup-$version-x64.exe"; do
        for library in "$@"; do
            printf '[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\%s\\DllOverrides]\n"%s"="native,builtin"\n' \
                "$program" "$library"
        done
    done >"$WINEPREFIX/overrides"
    { printf 'REGEDIT4\n\n' && cat "$WINEPREFIX/overrides"; } >"$WINEPREFIX/overrides.reg"
    "$KELVARO_ROOT/scripts/wine.sh" regedit /S "$(windowsPath "$WINEPREFIX/overrides.reg")" >/dev/null 2>&1
    rm "$WINEPREFIX/overrides" "$WINEPREFIX/overrides.reg"
}

# The libraries that are planted beside the installer, as the test lists them.
plantedNames() {
    sed -n '/kNames = {/,/};/p' "$KELVARO_ROOT/tests/package/installer_test.cpp" | grep -o '"[a-z0-9]*"' | tr -d '"'
}

trapSignals
makeOutFolder
buildPreset release installer_tests
readPrograms "$KELVARO_ROOT/out/build/release/programs.txt"
setReleaseTime
export WINEPREFIX="$KELVARO_ROOT/out/wineprefix-installer"
setWineEnvironment
makeStage
trap cleanUp EXIT
makeSetups
makeFirstSetup
rm -rf "$WINEPREFIX"
"$KELVARO_ROOT/scripts/wine_prefix.sh"
# No folder of drive C: may be one of the user's own.
find "$WINEPREFIX/drive_c/users" -type l -delete
# A folder with a second name, as a link or a junction gives it, and with a drive letter, as of subst.
mkdir "$WINEPREFIX/drive_c/real folder"
ln -s 'real folder' "$WINEPREFIX/drive_c/linked folder"
ln -s '../drive_c/real folder' "$WINEPREFIX/dosdevices/s:"
startXvfb
mapfile -t names < <(plantedNames)
writeSettings "${names[@]}"
# Without a sound card the sound library complains at each start of the program.
KELVARO_SETUPS="$(windowsPath "$setups")" \
    KELVARO_SHIPPED="$(windowsPath "$STAGE/files")" \
    KELVARO_PLANTED_LIBRARY="$(windowsPath "$build/libplanted_library.dll")" \
    KELVARO_CARELESS_PROGRAM="$(windowsPath "$build/careless_program.exe")" \
    "$KELVARO_ROOT/scripts/wine.sh" "$build/installer_tests.exe" "$@" 2> >(grep -v '^ALSA lib' >&2)
