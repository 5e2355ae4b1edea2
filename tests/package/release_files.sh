#!/usr/bin/env bash
# Makes the release files, in a folder that has other files as well, and looks whether these are untouched, whether the
# sums are right, and the winget manifest, whose installer has one of them.
set -euo pipefail
# shellcheck source=../../scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

folder="$(mktemp -d "${TMPDIR:-/tmp}/kelvaro-release.XXXXXX")"
trap 'rm -rf "$folder"' EXIT
log="$folder/log"
downloads="$folder/my downloads"
# Names as a folder with downloads has them, an earlier release among them.
others=(holiday.jpg Kelvaro-0.9.0-x64.zip KelvaroSetup-0.9.0-x64.exe other.zip setup.exe winget/notes.txt)

pack() {
    "$KELVARO_ROOT/package.sh" --output "$downloads" >"$log" 2>&1
}

packOrFail() {
    pack || {
        cat "$log" >&2
        fail "nothing was packed"
    }
}

# A second time the release's files are there already.
mkdir -p "$downloads/winget"
(cd "$downloads" && for name in "${others[@]}"; do printf 'own %s' "$name" >"$name"; done)
touch -d 2001-01-01 "$downloads/other.zip"
packOrFail
packOrFail
for name in "${others[@]}"; do
    [[ "$(cat "$downloads/$name" 2>/dev/null)" == "own $name" ]] || fail "packing replaced or removed $name"
done
[[ "$(date -r "$downloads/other.zip" +%F)" == 2001-01-01 ]] || fail "packing changed the time of other.zip"
(cd "$downloads" && sha256sum --quiet -c SHA256SUMS)
[[ "$(wc -l <"$downloads/SHA256SUMS")" == 3 ]] || fail "SHA256SUMS lists other files than the release's"
rm "$downloads/KelvaroSetup-0.9.0-x64.exe"
"$KELVARO_ROOT/scripts/check_winget.py" "$downloads"

printf '%064d  debian.iso\n' 0 >"$downloads/SHA256SUMS"
! pack || fail "packing replaced the SHA256SUMS of other files"
grep -q debian.iso "$downloads/SHA256SUMS" || fail "packing replaced the SHA256SUMS of other files"
