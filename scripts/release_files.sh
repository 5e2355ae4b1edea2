# Sourced after common.sh: makes the release files. The same commit makes the same bytes, on every machine with the
# same tools: files are taken in the order of their names, with the commit's time and with modes of their own.
# shellcheck shell=bash disable=SC2034 # version and programs are for the script that sources this

# Sets STAGE, a folder for what is made on the way: files/ is what is installed, symbols/ what is not. It goes with the
# script, whose own clean-up therefore calls removeStage.
makeStage() {
    mkdir -p "$KELVARO_ROOT/out/build"
    STAGE="$(mktemp -d "$KELVARO_ROOT/out/build/package.XXXXXX")"
    mkdir -p "$STAGE/files" "$STAGE/symbols"
    trap removeStage EXIT
}

removeStage() {
    rm -rf "$STAGE"
}

# readPrograms FILE: what CMake wrote there, as `version` and `programs`.
readPrograms() {
    read -ra programs <"$1"
    version="${programs[0]}"
    programs=("${programs[@]:1}")
}

# Sets SOURCE_DATE_EPOCH, unless the caller has: seconds since 1970, the time that all files have.
setReleaseTime() {
    local problem
    export TZ=UTC LC_ALL=C.UTF-8
    if [[ -z "${SOURCE_DATE_EPOCH:-}" ]]; then
        problem="$(git -C "$KELVARO_ROOT" log -1 --format=%ct 2>&1 >/dev/null)" ||
            fail "set SOURCE_DATE_EPOCH to the time that the files shall have, since git does not tell it: $problem"
        SOURCE_DATE_EPOCH="$(git -C "$KELVARO_ROOT" log -1 --format=%ct 2>/dev/null)"
    fi
    [[ "$SOURCE_DATE_EPOCH" =~ ^[0-9]+$ ]] || fail "SOURCE_DATE_EPOCH is no number of seconds: '$SOURCE_DATE_EPOCH'"
    export SOURCE_DATE_EPOCH
}

giveReleaseTime() {
    touch -d "@$SOURCE_DATE_EPOCH" "$@"
}

# stageDocument NAME: NAME.md as a text that Windows opens by a click, without what only a browser shows. The other
# documents that are shipped are texts as well.
stageDocument() {
    local source="$KELVARO_ROOT/$1.md"
    if [[ -f "$source" ]]; then
        sed -e '/!\[/d' -e 's/\(README\|SECURITY\|CHANGELOG\)\.md/\1.txt/g' -e 's/$/\r/' "$source" >"$STAGE/files/$1.txt"
        chmod 0644 "$STAGE/files/$1.txt"
    fi
}

# stageFiles PROGRAM...: what was built, and the documents, in folders that hold nothing else.
stageFiles() {
    local program built="$KELVARO_ROOT/out/release"
    for program in "$@"; do
        install -m 0644 "$built/$program.exe" "$STAGE/files/"
        install -m 0644 "$built/symbols/$program.exe.debug" "$STAGE/symbols/"
    done
    stageDocument README
    stageDocument CHANGELOG
    stageDocument SECURITY
}

# makeZip ZIP FOLDER NAME: the files of a folder, in a folder of that name.
makeZip() {
    local zip="$1" folder="$2" root="$STAGE/zip"
    rm -rf "$root" "$zip"
    mkdir -p "$root"
    cp -rp "$folder" "$root/$3"
    (
        cd "$root" || exit
        find . -type f -printf '%P\n' | LC_ALL=C sort | tee "$STAGE/zip.list" | xargs -d '\n' touch -d "@$SOURCE_DATE_EPOCH"
        zip -q -X -9 "$zip" -@ <"$STAGE/zip.list"
    )
    rm -rf "$root" "$STAGE/zip.list"
}

# makeSetup VERSION SETUP: the installer of what is staged.
makeSetup() {
    local lists="$STAGE/lists" log="$STAGE/makensis.log" name options=()
    rm -rf "$lists"
    mkdir -p "$lists"
    (cd "$STAGE/files" && printf '%s\n' *) >"$lists/names"
    sed "s|.*|File \"$STAGE/files/&\"|" "$lists/names" >"$lists/install.nsh"
    while IFS= read -r name; do
        printf '%s|%s\r\n' "$name" "$(fingerprint "$STAGE/files/$name")"
    done <"$lists/names" >"$lists/list.txt"
    # The installer takes the picture along as a file, with its time.
    install -m 0644 "$KELVARO_ROOT/packaging/finish.bmp" "$STAGE/finish.bmp"
    giveReleaseTime "$STAGE"/files/* "$STAGE/finish.bmp" "$lists/list.txt"
    if signing; then
        options+=("-DSIGN=$KELVARO_ROOT/scripts/sign.sh")
    fi
    if [[ -n "${KELVARO_HOME_URL:-}" ]]; then
        [[ "$KELVARO_HOME_URL" =~ ^https?://[^[:space:]\"\$]+$ ]] || fail "KELVARO_HOME_URL is no address: '$KELVARO_HOME_URL'"
        options+=("-DHOME_URL=$KELVARO_HOME_URL")
    fi
    makensis -V2 -WX "-DVERSION=$1" "-DOUTPUT=$2" "-DFILES=$STAGE/files" "-DLISTS=$lists" \
        "-DICON=$KELVARO_ROOT/artwork/rendered/300_kelvaro.ico" \
        "-DFINISH_PICTURE=$STAGE/finish.bmp" "${options[@]}" \
        "-DSIZE_KB=$(installedKilobytes)" "$KELVARO_ROOT/packaging/setup.nsi" >"$log" 2>&1 || {
        cat "$log" >&2
        fail "the installer cannot be made"
    }
    signFile "$2"
    giveReleaseTime "$2"
}

# fingerprint FILE: prints its size and, as a signed number, its CRC-32: gzip ends with that and the size.
fingerprint() {
    printf '%d %d' "$(stat -c %s "$1")" "$(gzip -1 -c "$1" | tail -c 8 | od -An -td4 -N4 --endian=little)"
}

# Without the uninstaller, whose size is not known before it is there: it has some 80 KiB.
installedKilobytes() {
    local bytes
    bytes="$(find "$STAGE/files" -type f -printf '%s\n' | awk '{sum += $1} END {print sum}')"
    printf '%d' $((bytes / 1024 + 80))
}

# Whether a certificate was named to sign with.
signing() {
    [[ -n "${KELVARO_SIGN_CERTIFICATE:-}" ]]
}

# Signs the file if there is a certificate.
signFile() {
    if signing; then
        "$KELVARO_ROOT/scripts/sign.sh" "$1"
    fi
}

# makeWinget VERSION SETUP FOLDER: the package manager's manifest of the installer.
makeWinget() {
    local template sum url="${KELVARO_RELEASE_URL:-https://example.com/kelvaro/releases/$1}"
    [[ "$url" =~ ^https?://[^[:space:]|\&]+$ ]] || fail "KELVARO_RELEASE_URL is no address: '$url'"
    sum="$(sha256sum "$2")"
    sum="${sum%% *}"
    mkdir -p "$3"
    for template in "$KELVARO_ROOT"/packaging/winget/*.yaml; do
        sed -e "s|@VERSION@|$1|" -e "s|@DATE@|$(date -u -d "@$SOURCE_DATE_EPOCH" +%F)|" -e "s|@URL@|${url%/}|" \
            -e "s|@SHA256@|${sum^^}|" "$template" >"$3/${template##*/}"
        giveReleaseTime "$3/${template##*/}"
    done
}

# makeSums FOLDER VERSION: of the files that are downloaded.
makeSums() {
    (cd "$1" && releaseNames "$2" | grep -E '\.(exe|zip)$' | xargs -d '\n' sha256sum -- >SHA256SUMS)
    giveReleaseTime "$1/SHA256SUMS"
}

# releaseNames VERSION: prints the names of the version's release files that the current folder has.
releaseNames() {
    local name
    for name in "KelvaroSetup-$1-x64.exe" "Kelvaro-$1-symbols.zip" "Kelvaro-$1-x64.zip" "KelvaroTests-$1-x64.zip" \
        SHA256SUMS; do
        [[ ! -f "$name" ]] || printf '%s\n' "$name"
    done
    for name in "$KELVARO_ROOT"/packaging/winget/*.yaml; do
        name="winget/${name##*/}"
        [[ ! -f "$name" ]] || printf '%s\n' "$name"
    done
}

# removeRelease FOLDER VERSION: the folder may be one with files of the user's.
removeRelease() {
    (cd "$1" && releaseNames "$2" | xargs -r -d '\n' rm -f --)
}

# refuseOtherSums FOLDER: ends when the folder has sums of other files than a release's, which would be replaced.
refuseOtherSums() {
    local sums="$1/SHA256SUMS"
    [[ ! -e "$sums" ]] || ! grep -qvE '^[0-9a-f]{64}  Kelvaro(Setup|Tests)?-[^/]*$' "$sums" ||
        fail "--output: $sums is of other files than a release's; choose another folder"
}
