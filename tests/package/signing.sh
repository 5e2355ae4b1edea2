#!/usr/bin/env bash
# Packs with a certificate that is made for it and thrown away, and looks whether everything that Windows runs is signed
# with it: programs, uninstaller, installer.
set -euo pipefail
# shellcheck source=../../scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"
# shellcheck source=../../scripts/display.sh
source "$KELVARO_ROOT/scripts/display.sh"
# shellcheck source=../../scripts/release_files.sh
source "$KELVARO_ROOT/scripts/release_files.sh"

folder="$(mktemp -d "${TMPDIR:-/tmp}/kelvaro-signing.XXXXXX")"
package="$folder/package"
export WINEPREFIX="$folder/prefix"
xvfbPid=''

cleanUp() {
    "$(findWineserver)" -k 2>/dev/null || true
    if [[ -n "$xvfbPid" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
    rm -rf "$folder"
}

# makeCertificate NAME: NAME.p12, whose password is in NAME.password, and NAME.pem, the certificate alone.
makeCertificate() {
    local name="$folder/$1"
    printf 'not secret' >"$name.password"
    openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=$1" -addext extendedKeyUsage=codeSigning \
        -keyout "$name.key" -out "$name.pem" 2>/dev/null
    openssl pkcs12 -export -inkey "$name.key" -in "$name.pem" -passout "file:$name.password" -out "$name.p12"
}

verifies() {
    osslsigncode verify -CAfile "$folder/$1.pem" -in "$2" >"$folder/log" 2>&1
}

expectSigned() {
    local file
    for file in "$@"; do
        verifies signer "$file" || {
            cat "$folder/log" >&2
            fail "${file##*/} is not signed"
        }
        say "signed: ${file##*/}"
    done
}

# A copy with one byte in the middle changed.
expectAlteredFileFails() {
    local size altered="$folder/altered.exe"
    cp "$1" "$altered"
    size="$(stat -c %s "$altered")"
    printf '\x5a\xa5' | dd of="$altered" bs=1 seek=$((size / 2)) conv=notrunc status=none
    ! verifies signer "$altered" || fail "${1##*/} verifies although it was altered"
    ! verifies stranger "$1" || fail "${1##*/} verifies with a certificate that it was not signed with"
}

# The uninstaller comes out of the installer only.
installQuietly() {
    setWineEnvironment
    "$KELVARO_ROOT/scripts/wine_prefix.sh"
    startXvfb
    "$KELVARO_ROOT/scripts/wine.sh" reg add 'HKCU\Software\Wine' /v Version /d win10 /f >/dev/null 2>&1
    "$KELVARO_ROOT/scripts/wine.sh" "$1" /S '/D=C:\signed' || fail "the signed installer does not install"
}

# NSIS starts the signing script for the uninstaller, by a path that has a blank here.
packInFolderWithBlank() {
    local version programs
    ln -s "$KELVARO_ROOT" "$folder/a checkout"
    KELVARO_ROOT="$folder/a checkout"
    export KELVARO_SIGN_CERTIFICATE="$folder/signer.p12" KELVARO_SIGN_PASSWORD_FILE="$folder/signer.password"
    setReleaseTime
    readPrograms "$KELVARO_ROOT/out/build/release/programs.txt"
    makeStage
    stageFiles "${programs[@]}"
    makeSetup "$version" "$folder/blank.exe"
}

trapSignals
trap cleanUp EXIT
makeCertificate signer
makeCertificate stranger
"$KELVARO_ROOT/package.sh" --output "$package" --sign-with "$folder/signer.p12" --password-file "$folder/signer.password" \
    >"$folder/log" 2>&1 || {
    cat "$folder/log" >&2
    fail "nothing was packed"
}
(cd "$package" && sha256sum --quiet -c SHA256SUMS)
unzip -q -j "$package"/Kelvaro-*-x64.zip '*.exe' -d "$folder/programs"
installQuietly "$package"/KelvaroSetup-*.exe
expectSigned "$folder"/programs/*.exe "$package"/KelvaroSetup-*.exe "$WINEPREFIX/drive_c/signed/Uninstall.exe"
cmp "$folder/programs/Kelvaro.exe" "$WINEPREFIX/drive_c/signed/Kelvaro.exe"
expectAlteredFileFails "$folder/programs/Kelvaro.exe"
expectAlteredFileFails "$package"/KelvaroSetup-*.exe
! "$KELVARO_ROOT/package.sh" --output "$folder/none" --sign-with "$folder/signer.p12" --password-file \
    "$folder/signer.pem" >"$folder/log" 2>&1 || fail "a wrong password goes unnoticed"
(packInFolderWithBlank) || fail "nothing is signed in a checkout whose path has a blank"
expectSigned "$folder/blank.exe"
