#!/usr/bin/env bash
# Signs one Windows program in its place: scripts/sign.sh FILE
# KELVARO_SIGN_CERTIFICATE is a PKCS#12 file with certificate and key, KELVARO_SIGN_PASSWORD_FILE, if set, a file with
# its password, and KELVARO_SIGN_TIMESTAMP, if set, the address of a time stamp server. NSIS calls this for the
# uninstaller.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[[ $# == 1 && -f "$1" ]] || fail "needs a file to sign"
[[ -f "${KELVARO_SIGN_CERTIFICATE:-}" ]] || fail "KELVARO_SIGN_CERTIFICATE names no file"

options=(-pkcs12 "$KELVARO_SIGN_CERTIFICATE" -h sha256 -n Kelvaro)
if [[ -n "${KELVARO_SIGN_PASSWORD_FILE:-}" ]]; then
    options+=(-readpass "$KELVARO_SIGN_PASSWORD_FILE")
fi
if [[ -n "${KELVARO_SIGN_TIMESTAMP:-}" ]]; then
    options+=(-ts "$KELVARO_SIGN_TIMESTAMP")
fi

signed="$(mktemp "$1.XXXXXX")"
trap 'rm -f "$signed"' EXIT
rm "$signed"
output="$(osslsigncode sign "${options[@]}" -in "$1" -out "$signed" 2>&1)" || fail "$1 cannot be signed: $output"
# In place, so that the file keeps its mode.
cat "$signed" >"$1"
