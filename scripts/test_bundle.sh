#!/usr/bin/env bash
# Packs all tests for a machine with Windows.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=packages.sh
source "$(dirname "${BASH_SOURCE[0]}")/packages.sh"
# shellcheck source=release_files.sh
source "$(dirname "${BASH_SOURCE[0]}")/release_files.sh"

usage() {
    cat <<TEXT
Usage: scripts/test_bundle.sh [--output FOLDER]

Packs all test programs, the stand-ins and the programs that are shipped, as the preset release has built them, into
out/package/KelvaroTests-VERSION-x64.zip, or into FOLDER. On Windows, unpacked anywhere: run-tests.cmd /help.
The files' time is the commit's, or SOURCE_DATE_EPOCH.
TEXT
}

output="$KELVARO_ROOT/out/package"
case "${1:-}" in
    '') ;;
    -h | --help) usage && exit 0 ;;
    --output)
        [[ -n "${2:-}" ]] || fail "--output needs a folder"
        output="$(realpath -m -- "$2")"
        ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

build="$KELVARO_ROOT/out/build/release"

# Prints the programs and libraries of the build, not what earlier builds left, as paths below out/.
builtFiles() {
    local file
    ninja -C "$build" -t targets all | sed -n -e '/: phony$/d' -e 's/^\(.*\.\(exe\|dll\)\): .*/\1/p' | sort -u |
        while IFS= read -r file; do
            [[ "$file" == /* ]] || file="$build/$file"
            [[ -f "$file" ]] || fail "${file#"$KELVARO_ROOT"/} is not built: ./package.sh --tests builds everything"
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

# fill FOLDER: what the bundle is made of. The places of the files among each other are those of out/, since the
# tests know no others. Symbols are left out: they are the larger part.
fill() {
    local folder="$1" file
    builtFiles >"$STAGE/files.list"
    while IFS= read -r file; do
        mkdir -p "$folder/$(dirname "$file")"
        printf '%s\0' "$file"
    done <"$STAGE/files.list" |
        xargs -0 -P "$(nproc)" -I '{}' x86_64-w64-mingw32-strip -o "$folder/{}" "$KELVARO_ROOT/out/{}"
    # What ships is tested as it is.
    for file in "${programs[@]}"; do
        cp "$KELVARO_ROOT/out/release/$file.exe" "$folder/release/"
    done
    cp "$build/test_programs.txt" "$folder/build/release/"
    # Windows' command processor wants its own line ends.
    sed 's/$/\r/' "$KELVARO_ROOT/tests/bundle/run-tests.cmd" >"$folder/run-tests.cmd"
}

makeOutFolder
ensurePackages "${KELVARO_BUNDLE_PACKAGES[@]}"
[[ -f "$build/test_programs.txt" ]] || fail "preset release is not built: cmake --build --preset release"
readPrograms "$build/programs.txt"
setReleaseTime
STAGE="$(mktemp -d "$KELVARO_ROOT/out/bundle.XXXXXX")"
trap 'rm -rf "$STAGE"' EXIT
package="$output/KelvaroTests-$version-x64.zip"
mkdir -p "$output"
fill "$STAGE/files"
makeZip "$package" "$STAGE/files" "KelvaroTests-$version"
giveReleaseTime "$package"
say "${package#"$KELVARO_ROOT"/} $(stat -c %s "$package") bytes"
