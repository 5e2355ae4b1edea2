#!/usr/bin/env bash
# Tests the scripts themselves: tests/scripts/scripts_test.sh [--wine]
# Without an option it takes some seconds. With --wine it makes a Wine prefix of its own instead, and
# starts ./run.sh in it, which takes about half a minute.
set -euo pipefail
# shellcheck source=../../scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

makeOutFolder
work="$(mktemp -d "$KELVARO_ROOT/out/scripts-test.XXXXXX")"
foreign="$work/foreign"
fakes="$work/fakes"
serverPid=''
problems=0

cleanUp() {
    if [[ -n "$serverPid" ]]; then
        kill "$serverPid" 2>/dev/null || true
    fi
    if [[ -d "$work/ours" ]]; then
        WINEPREFIX="$work/ours" "$(findWineserver)" -k 2>/dev/null || true
    fi
    rm -rf "$work"
}

problem() {
    printf '%s\n' "   wrong: $*" >&2
    problems=$((problems + 1))
}

# makeFake NAME: reads its commands from the standard input.
makeFake() {
    mkdir -p "$fakes"
    { printf '#!/bin/bash\n' && cat; } >"$fakes/$1"
    chmod +x "$fakes/$1"
}

# A prefix as a user has it: his documents by a link, a driver's library that he has put there, a program that runs.
makeForeignPrefix() {
    local system="$foreign/drive_c/windows/system32"
    mkdir -p "$system" "$foreign/drive_c/users/somebody" "$foreign/dosdevices" "$work/documents"
    ln -s "$work/documents" "$foreign/drive_c/users/somebody/Documents"
    ln -s "$work/documents" "$foreign/drive_c/users/somebody/Desktop"
    printf 'somebody else'\''s\n' | tee "$system/nvapi64.dll" >"$work/documents/letter.txt"
    printf 'WINE REGISTRY Version 2\n' | tee "$foreign/system.reg" "$foreign/user.reg" >"$foreign/userdef.reg"
    WINEPREFIX="$foreign" "$(findWineserver)" -f -p >/dev/null 2>&1 &
    serverPid=$!
}

# Every file of the user's, with type, target and contents, but for those that the prefix's own server writes.
listing() {
    find "$foreign" "$work/documents" "$work/home" ! -path "$foreign/wineserver" ! -path "$foreign/*.reg" \
        -printf '%y %p %l\n' -type f -exec cksum {} \; | LC_ALL=C sort
}

# ./test.sh is given a filter, so that it does not run this script.
# expectRefusal PREFIX SCRIPT [ARGUMENT...]: one sentence with the prefix, nothing changed, nothing built.
expectRefusal() {
    local prefix="$1" name="${2#"$KELVARO_ROOT"/}" code=0
    shift
    rm -f "$work/built"
    listing >"$work/before"
    WINEPREFIX="$prefix" HOME="$work/home" DISPLAY='' PATH="$fakes:$PATH" "$@" >"$work/output" 2>"$work/errors" </dev/null ||
        code=$?
    listing >"$work/after"
    ((code == 1)) || problem "$name ends with $code in $prefix"
    [[ "$(wc -l <"$work/errors")" == 1 && "$(<"$work/errors")" == *WINEPREFIX*"$prefix"* ]] ||
        problem "$name does not say why it refuses $prefix: $(head -3 "$work/errors")"
    diff "$work/before" "$work/after" >"$work/difference" || problem "$name has changed $prefix: $(head -5 "$work/difference")"
    kill -0 "$serverPid" 2>/dev/null || problem "$name has ended a program in $prefix"
    [[ ! -e "$work/built" ]] || problem "$name builds before it refuses $prefix"
}

checkForeignPrefixes() {
    local command words
    say "Prefixes that are not the scripts' own"
    makeForeignPrefix
    mkdir -p "$work/home"
    printf 'a file\n' >"$work/home/.profile"
    makeFake cmake <<<"touch '$work/built'; exit 1"
    for command in "run.sh --seconds 1 --shot $work/shot.png" "run.sh --simulate --seconds 1 --shot $work/shot.png" \
        "test.sh --filter None" "scripts/wine.sh winver.exe" scripts/wine_prefix.sh "scripts/wine_prefix.sh --force" \
        scripts/soak.sh scripts/bench.sh scripts/coverage.sh; do
        read -ra words <<<"$command"
        expectRefusal "$foreign" "$KELVARO_ROOT/${words[0]}" "${words[@]:1}"
    done
    expectRefusal "$work/home" "$KELVARO_ROOT/run.sh"
    expectRefusal "$work/home" "$KELVARO_ROOT/test.sh" --filter None
    expectRefusal foreign "$KELVARO_ROOT/run.sh"
    kill "$serverPid"
    wait "$serverPid" 2>/dev/null || true
    serverPid=''
}

# accepts PREFIX
accepts() {
    WINEPREFIX="$1" bash -c 'source "$KELVARO_ROOT/scripts/common.sh" && checkPrefixFolder' 2>/dev/null
}

checkAcceptedPrefixes() {
    local folder="$work/folder"
    say "Folders that may become a prefix"
    ! accepts / || problem "the root of the file system is taken for a prefix"
    accepts "$folder" || problem "a folder that does not exist is refused"
    accepts "$folder" || problem "an empty folder is refused"
    touch "$folder/kelvaro-prefix.lock"
    accepts "$folder" || problem "a prefix is refused of which another start has just the lock"
    mkdir "$folder/drive_c"
    ! accepts "$folder" || problem "a prefix with the lock and without the stamp is accepted"
    printf 'unfinished\n' >"$folder/kelvaro-prefix.stamp"
    accepts "$folder" || problem "a prefix is refused whose making was interrupted"
    printf '1 1\n' >"$folder/kelvaro-prefix.stamp"
    accepts "$folder" || problem "a prefix of an earlier version is refused"
}

checkPackages() {
    local missing
    say "Packages"
    makeFake dpkg-query <<'FAKE'
printf '%s\n' 'cmake ii ' 'wine64 hi ' 'zip rc ' 'unzip un ' 'g++ iU '
exit 1
FAKE
    missing="$(PATH="$fakes:$PATH" bash -c 'source "$KELVARO_ROOT/scripts/packages.sh" &&
        missingPackages cmake wine64 zip unzip g++ git')"
    [[ "$missing" == "zip unzip g++ git" ]] || problem "these packages are missing, and not 'zip unzip g++ git': $missing"
    rm "$fakes/dpkg-query"
}

# expectExitCode CODE SIGNAL PROGRAM COMMAND: when the signal comes while the script waits for the program.
expectExitCode() {
    local expected="$1" signal="$2" program="$3" script="$4" words code=0 pid tenths
    read -ra words <<<"$script"
    rm -f "$work/waits" "$work/goes-on"
    makeFake "$program" <<FAKE
touch '$work/waits'
until [[ -e '$work/goes-on' ]]; do sleep 0.02; done
exit 1
FAKE
    # A program that is started in the background would otherwise not see SIGINT.
    WINEPREFIX="$work/empty" DISPLAY='' PATH="$fakes:$PATH" env --default-signal=INT,HUP "$KELVARO_ROOT/${words[0]}" \
        "${words[@]:1}" >"$work/output" 2>&1 </dev/null &
    pid=$!
    for ((tenths = 0; tenths < 300; ++tenths)); do
        [[ ! -e "$work/waits" ]] || break
        sleep 0.1
    done
    [[ -e "$work/waits" ]] || problem "$script does not start $program"
    kill "-$signal" "$pid"
    touch "$work/goes-on"
    wait "$pid" || code=$?
    ((code == expected)) || problem "SIG$signal ends $script with $code and not with $expected"
    rm "$fakes/$program"
}

checkSignals() {
    local script
    say "Signals"
    for script in run.sh "test.sh --filter None" scripts/soak.sh scripts/bench.sh scripts/coverage.sh \
        scripts/check_test_bundle.sh; do
        expectExitCode 143 TERM dpkg-query "$script"
    done
    expectExitCode 143 TERM cmake tests/package/installer.sh
    expectExitCode 143 TERM openssl tests/package/signing.sh
    for script in run.sh "test.sh --filter None"; do
        expectExitCode 130 INT dpkg-query "$script"
        expectExitCode 129 HUP dpkg-query "$script"
    done
}

# As when the machine goes down while Wine makes the prefix: the next start makes it anew.
checkInterruptedPrefix() {
    local hundredths pid
    say "A prefix whose making is interrupted"
    setsid "$KELVARO_ROOT/scripts/wine_prefix.sh" >/dev/null 2>&1 &
    pid=$!
    # From this file on Wine takes the prefix for a finished one.
    for ((hundredths = 0; hundredths < 6000; ++hundredths)); do
        [[ ! -f "$WINEPREFIX/.update-timestamp" ]] || break
        sleep 0.01
    done
    kill -KILL -- "-$pid"
    "$(findWineserver)" -k || true
    wait "$pid" 2>/dev/null || true
    ! prefixIsCurrent || problem "the prefix is finished although its making was interrupted"
    "$KELVARO_ROOT/scripts/wine_prefix.sh" || problem "the interrupted prefix is not made"
    prefixIsCurrent || problem "the prefix has no stamp"
    inPrefix reg query 'HKCU\Software\Wine\Fonts\Replacements' /v Arial >/dev/null || problem "the prefix has no settings"
}

# What a user has put into a finished prefix outlives a refresh.
checkRefreshedPrefix() {
    say "A prefix that is refreshed"
    printf 'mine\n' >"$WINEPREFIX/drive_c/mine.txt"
    printf '1 1\n' >"$WINEPREFIX/kelvaro-prefix.stamp"
    "$KELVARO_ROOT/scripts/wine_prefix.sh" || problem "the prefix is not refreshed"
    prefixIsCurrent || problem "the refreshed prefix has no stamp"
    [[ -f "$WINEPREFIX/drive_c/mine.txt" ]] || problem "refreshing has removed a file"
}

inPrefix() {
    "$KELVARO_ROOT/scripts/wine.sh" "$@" 2>/dev/null
}

# runs OPTION...: ./run.sh, for a second.
runs() {
    DISPLAY='' "$KELVARO_ROOT/run.sh" --seconds 1 --shot "$work/shot.png" "$@" >"$work/output" 2>&1 </dev/null
}

checkSimulation() {
    local driver="$WINEPREFIX/drive_c/windows/system32/nvapi64.dll" record="$WINEPREFIX/kelvaro-simulation.sum"
    local standin="$KELVARO_ROOT/out/release/standins/nvapi/nvapi64.dll"
    say "A graphics driver's library that is not the simulation's"
    printf 'somebody else'\''s\n' | tee "$work/driver" >"$driver"
    runs || problem "./run.sh fails beside another driver: $(tail -1 "$work/output")"
    cmp -s "$work/driver" "$driver" || problem "./run.sh has removed or changed another driver"
    ! runs --simulate || problem "./run.sh --simulate replaces another driver"
    grep -q "which is not one that it has put there" "$work/output" || problem "it does not say why: $(tail -1 "$work/output")"
    cmp -s "$work/driver" "$driver" || problem "./run.sh --simulate has removed or changed another driver"
    rm -f "$driver"

    say "The simulation's own"
    runs --simulate || problem "./run.sh --simulate fails: $(tail -1 "$work/output")"
    [[ ! -e "$driver" && ! -e "$record" ]] || problem "./run.sh --simulate leaves its driver"
    # As after a run that was killed.
    cp "$standin" "$driver"
    sha256sum <"$standin" >"$record"
    runs || problem "./run.sh fails after a simulation that was killed: $(tail -1 "$work/output")"
    [[ ! -e "$driver" && ! -e "$record" ]] || problem "./run.sh does not take back a simulation that was killed"
    # The same, and somebody has put another one in its place since.
    cp "$work/driver" "$driver"
    sha256sum <"$standin" >"$record"
    runs || problem "./run.sh fails beside a driver that has come later: $(tail -1 "$work/output")"
    cmp -s "$work/driver" "$driver" || problem "./run.sh has removed or changed a driver that has come later"
}

# expectDebianFails MESSAGE ARGUMENT...: scripts/debian.sh fails with this message.
expectDebianFails() {
    local message="$1"
    shift
    ! KELVARO_DEBIAN_ROOTS="$work/roots" PATH="$fakes:$PATH" "$KELVARO_ROOT/scripts/debian.sh" "$@" >"$work/output" 2>&1 ||
        problem "debian.sh $* does not fail"
    grep -q "$message" "$work/output" || problem "debian.sh $* does not say '$message': $(tail -1 "$work/output")"
}

# shellcheck disable=SC2016 # other shells expand it
checkDebianRoots() {
    local root="$work/roots/trixie"
    say "Roots of other Debians"
    expectDebianFails "there is no 'sid'" sid true
    expectDebianFails 'a command are needed' 13
    if (($(id -u) != 0)); then
        expectDebianFails 'only root' 13 true
        return
    fi
    makeFake debootstrap <<<'mkdir -p "$3" && touch "$3/begun" && echo "$2" >>"$3/../made" && exit 1'
    mkdir -p "$root/etc"
    expectDebianFails 'was not made by this script' --new 13 true
    expectDebianFails 'was not made by this script' trixie true
    [[ -d "$root/etc" && ! -e "$work/roots/made" ]] || problem "debian.sh has removed a root that it has not made"
    rm -r "$root"
    ln -s "$work/home" "$root"
    printf 'finished\n' >"$work/roots/trixie.state"
    expectDebianFails 'was not made by this script' --new 13 true
    [[ -f "$work/home/.profile" && -L "$root" ]] || problem "debian.sh has removed what a link leads to"
    rm "$root" "$work/roots/trixie.state"
    # The fake leaves a root whose making was interrupted.
    expectDebianFails 'debootstrap has failed' 13 true
    touch "$root/left"
    expectDebianFails 'debootstrap has failed' 13 true
    [[ -e "$root/begun" && ! -e "$root/left" ]] || problem "debian.sh goes on with a root whose making was interrupted"
    rm "$fakes/debootstrap"
    if ! unshare --mount true 2>/dev/null; then
        say "Nothing can be mounted here: that debian.sh removes nothing through a mount is not tested"
        return
    fi
    makeFake debootstrap <<<'exit 1'
    mkdir "$root/mounted"
    printf 'finished\n' >"$work/roots/trixie.state"
    if ! unshare --mount /bin/bash -c 'mount --bind "$1" "$2" && "${@:3}"' mounted "$work/home" "$root/mounted" \
        env "KELVARO_DEBIAN_ROOTS=$work/roots" "PATH=$fakes:$PATH" "$KELVARO_ROOT/scripts/debian.sh" --new 13 true \
        >"$work/output" 2>&1; then
        grep -q 'something is mounted below' "$work/output" || problem "debian.sh says: $(tail -1 "$work/output")"
    else
        problem "debian.sh makes a root anew that something is mounted in"
    fi
    [[ -f "$work/home/.profile" ]] || problem "debian.sh has removed files through a mount"
    rm "$fakes/debootstrap"
}

# builds [KELVARO_WERROR=ON]: a small program with the real options, through scripts/build.sh.
# shellcheck disable=SC2016 # the inner shell expands it
builds() {
    env "$@" bash -c 'source "$KELVARO_ROOT/scripts/common.sh" && source "$KELVARO_ROOT/scripts/build.sh" &&
        KELVARO_ROOT="$1" && buildPreset small' builds "$work/small" >"$work/output" 2>&1
}

checkWarnings() {
    local source="$work/small/small.cpp"
    say "Warnings"
    unset KELVARO_WERROR
    mkdir -p "$work/small"
    cat >"$work/small/CMakePresets.json" <<'JSON'
{"version": 6, "configurePresets": [
    {"name": "small", "generator": "Ninja", "binaryDir": "${sourceDir}/out/build/small"}]}
JSON
    {
        printf 'cmake_minimum_required(VERSION 3.25)\nproject(small LANGUAGES CXX)\n'
        grep '^option(KELVARO_WERROR ' "$KELVARO_ROOT/CMakeLists.txt"
        printf 'include("%s")\n' "$KELVARO_ROOT/cmake/options.cmake"
        printf 'add_executable(small small.cpp)\ntarget_link_libraries(small PRIVATE kelvaro_options)\n'
    } >"$work/small/CMakeLists.txt"
    printf 'int main() { int unused; }\n' >"$source"
    builds || problem "a warning fails a user's build: $(tail -1 "$work/output")"
    ! builds KELVARO_WERROR=ON || problem "what a user has built with a warning passes the tests' build"
    builds || problem "a warning fails a user's build after it has failed the tests' build"
    printf 'int main() {}\n' >"$source"
    builds KELVARO_WERROR=ON || problem "a source without a warning fails: $(tail -1 "$work/output")"
    builds || problem "a source without a warning fails after it has passed the tests' build"
    grep -q 'no work to do' "$work/output" || problem "a user's build compiles again what the tests' build has compiled"
    printf 'int main() { int unused; }\n' >"$source"
    ! builds || problem "the tests' build does not keep warnings errors"
    grep -q -e '-DKELVARO_WERROR=OFF' "$work/output" || problem "it does not say how warnings pass: $(tail -1 "$work/output")"
}

trapSignals
trap cleanUp EXIT
case "${1:-}" in
    '')
        checkForeignPrefixes
        checkAcceptedPrefixes
        checkPackages
        checkWarnings
        checkDebianRoots
        checkSignals
        ;;
    --wine)
        export WINEPREFIX="$work/ours"
        setWineEnvironment
        checkInterruptedPrefix
        checkRefreshedPrefix
        checkSimulation
        ;;
    *) fail "unknown option '$1'" ;;
esac
((problems == 0)) || fail "$problems of the things above are wrong"
