#!/usr/bin/env bash
# Raises the version in a clone of HEAD, and runs the tests and packs there: tests/package/raised_version.sh [REGEX]
# Only the tests whose names match, when there is a REGEX. The clone has to be built as a whole.
set -euo pipefail
# shellcheck source=../../scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

raised=987.65.43
folder="$(mktemp -d "${TMPDIR:-/tmp}/kelvaro-raised.XXXXXX")"
clone="$folder/clone"
trap 'rm -rf "$folder"' EXIT
# The clone's own prefix, not the caller's.
unset WINEPREFIX

git clone -q "$KELVARO_ROOT" "$clone"
cd "$clone"
version="$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)"
[[ -n "$version" ]] || fail "CMakeLists.txt names no version"
places="$(git grep -lF "$version" | grep -vxE 'CMakeLists.txt|CHANGELOG.md' || true)"
[[ -z "$places" ]] || fail "the version $version stands in: $places"
sed -i "s/^\(project(.* VERSION \)$version/\1$raised/" CMakeLists.txt

./package.sh >"$folder/log" 2>&1 && fail "packs a version that CHANGELOG.md does not know"
grep -qF "CHANGELOG.md has no section [$raised]" "$folder/log" || {
    cat "$folder/log" >&2
    fail "does not say that CHANGELOG.md lacks the version"
}
sed -i "0,/^## \[$version\]/s//## [$raised]\n\n&/" CHANGELOG.md
./package.sh
[[ -f "out/package/KelvaroSetup-$raised-x64.exe" ]] || fail "the installer has not the raised version"
./test.sh ${1:+--filter "$1"}
