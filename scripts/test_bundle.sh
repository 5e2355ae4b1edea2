#!/usr/bin/env bash
# Packs all tests for a machine with Windows.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=packages.sh
source "$(dirname "${BASH_SOURCE[0]}")/packages.sh"

usage() {
    cat <<TEXT
Usage: scripts/test_bundle.sh

Packs all test programs, the stand-ins and the program, as the preset release has built them, into
out/package/KelvaroTests-VERSION-x64.zip. On Windows, unpacked anywhere: run-tests.cmd /help.
The same build gives the same bytes; all times in it are SOURCE_DATE_EPOCH, or the last commit's time.
TEXT
}

case "${1:-}" in
    '') ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

build="$KELVARO_ROOT/out/build/release"

# Prints the programs and libraries of the build, not what earlier builds left, as paths below out/.
builtFiles() {
    local file
    ninja -C "$build" -t targets all | sed -n -e '/: phony$/d' -e 's/^\(.*\.\(exe\|dll\)\): .*/\1/p' | sort -u |
        while IFS= read -r file; do
            [[ "$file" == /* ]] || file="$build/$file"
            [[ -f "$file" ]] || fail "${file#"$KELVARO_ROOT"/} is not built: cmake --build --preset release"
            printf '%s\n' "${file#"$KELVARO_ROOT"/out/}"
            librariesBeside "$file"
        done | sort -u
}

# A test program that has a folder of its own may have libraries copied to it.
librariesBeside() {
    local library
    [[ "$1" == *.exe ]] || return 0
    for library in "${1%/*}"/*.dll; do
        [[ ! -f "$library" ]] || printf '%s\n' "${library#"$KELVARO_ROOT"/out/}"
    done
}

version() {
    sed -n 's/^project(Kelvaro VERSION \([0-9.]*\).*/\1/p' "$KELVARO_ROOT/CMakeLists.txt"
}

# fill FOLDER: what the bundle is made of. The places of the files among each other are those of out/, since the
# tests know no others. Symbols are left out: they are the larger part.
fill() {
    local folder="$1" file
    builtFiles >"$folder.list"
    while IFS= read -r file; do
        mkdir -p "$folder/$(dirname "$file")"
        printf '%s\0' "$file"
    done <"$folder.list" |
        xargs -0 -P "$(nproc)" -I '{}' x86_64-w64-mingw32-strip -o "$folder/{}" "$KELVARO_ROOT/out/{}"
    # What ships is tested as it is.
    cp "$KELVARO_ROOT/out/release/Kelvaro.exe" "$folder/release/"
    cp "$build/test_programs.txt" "$folder/build/release/"
    # Windows' command processor wants its own line ends.
    sed 's/$/\r/' "$KELVARO_ROOT/tests/bundle/run-tests.cmd" >"$folder/run-tests.cmd"
}

# zipFolder FOLDER FILE: entries in a fixed order, with the same time and no owner.
zipFolder() {
    local epoch="${SOURCE_DATE_EPOCH:-$(git -C "$KELVARO_ROOT" log -1 --format=%ct)}"
    find "$1" -exec touch -h -d "@$epoch" {} +
    (cd "$1" && find . -type f | sed 's|^\./||' | LC_ALL=C sort | TZ=UTC zip -q -9 -X -@ "$2")
}

makeOutFolder
ensurePackages "${KELVARO_BUNDLE_PACKAGES[@]}"
[[ -f "$build/test_programs.txt" ]] || fail "preset release is not built: cmake --build --preset release"
package="$KELVARO_ROOT/out/package/KelvaroTests-$(version)-x64.zip"
work="$(mktemp -d "$KELVARO_ROOT/out/bundle.XXXXXX")"
trap 'rm -rf "$work"' EXIT
fill "$work/files"
mkdir -p "$KELVARO_ROOT/out/package"
zipFolder "$work/files" "$work/tests.zip"
mv "$work/tests.zip" "$package"
say "${package#"$KELVARO_ROOT"/} $(stat -c %s "$package") bytes"
