# Sourced by the project's scripts: where things are, how Wine is reached, how messages look.
# Defines functions and variables only; runs nothing, so that sourcing it costs nothing.
# shellcheck shell=bash

KELVARO_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export KELVARO_ROOT

# Progress goes to stdout, one line per step; failures are one line on stderr.
say() {
    printf '%s\n' "-- $*"
}

fail() {
    printf '%s\n' "$(basename "$0"): $*" >&2
    exit 1
}

# Has the signals that end a script give the exit codes that they usually have; what the script set for EXIT runs first.
trapSignals() {
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# Makes out/, where everything goes that the scripts make. In a checkout of somebody else's it cannot be made or
# written to, and that is known before the packages and the build cost minutes.
makeOutFolder() {
    local folder="$KELVARO_ROOT/out"
    mkdir -p "$folder" 2>/dev/null || fail "the folder $folder cannot be made"
    [[ -w "$folder" ]] || fail "the folder $folder cannot be written to"
}

# Sets `wineCommand` to the words that start a Windows program.
setWineCommand() {
    local candidate
    wineCommand=()
    # Debian's `wine` wrapper complains about a missing 32-bit Wine, so the 64-bit loader itself comes first.
    for candidate in /usr/lib/wine/wine64 wine64 wine; do
        if command -v "$candidate" >/dev/null; then
            wineCommand=("$candidate")
            break
        fi
    done
    ((${#wineCommand[@]} > 0)) || fail "Wine is not installed (Debian: apt-get install wine64)"
    # The kernel puts a program's heap anywhere within 1 GiB behind it. About one start in 5,000 it lands where
    # Wine must map a page of its own, and Wine gives up ("failed to map the shared user data"). Without randomised
    # addresses that cannot happen; where a sandbox forbids the switch, the risk stays.
    if setarch -R true 2>/dev/null; then
        wineCommand=(setarch -R "${wineCommand[@]}")
    fi
}

# Prints the path of the server that belongs to the loader found above. Debian's wine64 package has no
# `wineserver` on the PATH, only beside the loader.
findWineserver() {
    local candidate
    for candidate in /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver wineserver64 wineserver; do
        if command -v "$candidate"; then
            return 0
        fi
    done
    return 1
}

# Sets the environment that every Wine process of the project runs in. What the caller has set stays:
# WINEPREFIX, WINEDEBUG, and WINEDLLOVERRIDES in front of our own entries.
setWineEnvironment() {
    export WINEPREFIX="${WINEPREFIX:-$KELVARO_ROOT/out/wineprefix}"
    checkPrefixFolder
    export WINEDEBUG="${WINEDEBUG:--all}"
    export WINEARCH=win64
    # Without menu entries, .NET and the HTML engine a new prefix is made quickly and asks nothing.
    local ours='winemenubuilder.exe=;mscoree=;mshtml='
    case "${WINEDLLOVERRIDES:-}" in
        *"$ours"*) ;;
        *) export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:+$WINEDLLOVERRIDES;}$ours" ;;
    esac
}

# Wine takes no prefix by a relative path, and none in a folder that belongs to another user. The scripts end programs
# in the prefix and change its settings and folders, so it must be one that they have made.
checkPrefixFolder() {
    [[ "$WINEPREFIX" == /* ]] || fail "WINEPREFIX must be a whole path, from / on, and not '$WINEPREFIX'"
    [[ -d "$WINEPREFIX" ]] || mkdir -p "$WINEPREFIX" 2>/dev/null || fail "the Wine prefix $WINEPREFIX cannot be made"
    [[ -O "$WINEPREFIX" && -w "$WINEPREFIX" ]] || fail "the Wine prefix $WINEPREFIX belongs to somebody else"
    prefixIsOurs ||
        fail "WINEPREFIX must be an empty folder, or a prefix that Kelvaro's scripts have made, which $WINEPREFIX is not"
}

# True when WINEPREFIX carries the stamp, of whatever version of the scripts, or may get it, since there is nothing in
# it but perhaps the lock under which the stamp is written. The stamp is the first thing that a prefix gets.
prefixIsOurs() {
    local others
    [[ ! -f "$WINEPREFIX/kelvaro-prefix.stamp" ]] || return 0
    others="$(find "$WINEPREFIX/" -mindepth 1 -maxdepth 1 ! -name kelvaro-prefix.lock -print -quit)" && [[ -z "$others" ]]
}

# The text that a prepared prefix carries in its stamp file; it changes whenever the script that prepares
# prefixes changes.
wantedPrefixStamp() {
    cksum <"$KELVARO_ROOT/scripts/wine_prefix.sh"
}

# True when WINEPREFIX was prepared by the present wine_prefix.sh.
prefixIsCurrent() {
    local stamp="$WINEPREFIX/kelvaro-prefix.stamp"
    [[ -f "$stamp" && "$(<"$stamp")" == "$(wantedPrefixStamp)" ]]
}
