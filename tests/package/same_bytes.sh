#!/usr/bin/env bash
# Packs two clean clones of HEAD, in folders of different depth, compiling everything, and compares each release file;
# then whether the symbols are the programs'. About two minutes.
set -euo pipefail
# shellcheck source=../../scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

folder="$(mktemp -d "${TMPDIR:-/tmp}/kelvaro-clones.XXXXXX")"
trap 'rm -rf "$folder"' EXIT
first="$folder/one"
second="$folder/the other/one, with blanks, and deeper"

# packClone SOURCE CLONE: as a user does, whose warnings are no errors.
packClone() {
    git clone -q "$1" "$2"
    (cd "$2" && unset KELVARO_WERROR && CCACHE_DISABLE=1 ./package.sh >"$folder/log" 2>&1) || {
        cat "$folder/log" >&2
        fail "$2 cannot be packed"
    }
}

# Each file below FOLDER by its path.
filesIn() {
    (cd "$1" && find . -type f | LC_ALL=C sort)
}

compareFiles() {
    local file
    diff <(filesIn "$first/out/package") <(filesIn "$second/out/package") || fail "the two clones make other files"
    while IFS= read -r file; do
        cmp "$first/out/package/$file" "$second/out/package/$file" || fail "$file is not the same from both clones"
        say "the same bytes: ${file#./}"
    done < <(filesIn "$first/out/package")
}

# Also in the form that tools make symbols' names of. The archives hide their contents, so these are looked at as well;
# the installer's are those of an archive.
refuseFolders() {
    local clone archive found=0 path=(-e "$folder" -e "${folder//[^A-Za-z0-9]/_}")
    for clone in "$first" "$second"; do
        ! LC_ALL=C grep -rlaF "${path[@]}" "$clone/out/package" || found=1
        for archive in "$clone"/out/package/*.zip; do
            # Whole, so that unzip is not cut off.
            [[ "$(unzip -p "$archive" | LC_ALL=C grep -caF "${path[@]}")" == 0 ]] || { say "$archive" && found=1; }
        done
    done
    ((!found)) || fail "the files above hold the path of the folder that they were made in"
}

# The tests run what is in out/release.
compareWithTested() {
    local program
    if [[ -n "$(git -C "$KELVARO_ROOT" status --porcelain)" ]]; then
        say "The checkout has changes that are not committed: the clones are without them"
        return
    fi
    for program in "$first"/out/release/*.exe; do
        program="${program##*/}"
        cmp "$KELVARO_ROOT/out/release/$program" "$first/out/release/$program" ||
            fail "the tested $program is another one than the packed one"
        say "as tested: $program"
    done
}

# The program finds the symbols by its own link to them: an address has a name and a line again.
resolveSymbol() {
    local address found symbols="$folder/symbols"
    mkdir "$symbols"
    unzip -q -j "$first/out/package/"Kelvaro-*-symbols.zip -d "$symbols"
    unzip -q -j "$first/out/package/"Kelvaro-*-x64.zip -d "$symbols"
    address="$(x86_64-w64-mingw32-nm -C "$symbols/Kelvaro.exe.debug" | sed -n 's/ T startKelvaro(.*//p')"
    found="$(x86_64-w64-mingw32-addr2line -f -C -e "$symbols/Kelvaro.exe" "0x$address")"
    [[ "$found" == startKelvaro\(*/kelvaro/app/start.cpp:* ]] || fail "the symbols do not resolve startKelvaro: $found"
    say "resolved by the symbols: ${found//$'\n'/ at }"
}

# What must not matter is another one for the second clone. It is of the first one: HEAD may move meanwhile.
packClone "$KELVARO_ROOT" "$first"
(umask 077 && TZ=America/St_Johns LC_ALL=C packClone "$first" "$second")
compareFiles
refuseFolders
compareWithTested
resolveSymbol
