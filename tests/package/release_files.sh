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
# The texts point at each other.
for name in README SECURITY CHANGELOG; do
    text="$(unzip -p "$downloads"/Kelvaro-[1-9]*-x64.zip "*/$name.txt")" || fail "$name.txt is not shipped"
    ! grep -E '(README|SECURITY|CHANGELOG)\.md' <<<"$text" || fail "$name.txt names a text that is not shipped so"
done
rm "$downloads/KelvaroSetup-0.9.0-x64.exe"
"$KELVARO_ROOT/scripts/check_winget.py" "$downloads"

printf '%064d  debian.iso\n' 0 >"$downloads/SHA256SUMS"
! pack || fail "packing replaced the SHA256SUMS of other files"
grep -q debian.iso "$downloads/SHA256SUMS" || fail "packing replaced the SHA256SUMS of other files"

# What git says when it refuses a folder is passed on.
mkdir "$folder/bin"
printf '#!/bin/sh\necho "fatal: detected dubious ownership" >&2\nexit 128\n' >"$folder/bin/git"
chmod +x "$folder/bin/git"
rm "$downloads/SHA256SUMS"
! PATH="$folder/bin:$PATH" SOURCE_DATE_EPOCH='' pack || fail "packs without a time"
grep -q 'set SOURCE_DATE_EPOCH .*: fatal: detected dubious ownership' "$log" || fail "does not say why git fails"
# Where git is missing it is installed first; here that fails.
printf '#!/bin/sh\nexit 127\n' >"$folder/bin/git"
printf '#!/bin/sh\n/usr/bin/dpkg-query "$@" | grep -v "^git "\n' >"$folder/bin/dpkg-query"
printf '#!/bin/sh\nexit 1\n' >"$folder/bin/apt-get"
chmod +x "$folder/bin/dpkg-query" "$folder/bin/apt-get"
! PATH="$folder/bin:$PATH" SOURCE_DATE_EPOCH='' pack || fail "packs without git"
grep -q 'could not install: git' "$log" || fail "does not try to install git"
