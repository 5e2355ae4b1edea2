# Sourced after common.sh and display.sh: one Wine server and one session for all that a script runs.
# shellcheck shell=bash

sessionInput=''

# startWineSession PROGRAM: starts an X server, Wine's server and wine_session.exe, which is PROGRAM and keeps the session
# open. What starts them hands its output on to them, so it must not be CTest's: CTest would wait for the session's end.
startWineSession() {
    local ready tenths
    ready="$(mktemp -u "$KELVARO_ROOT/out/session.XXXXXX")"
    if ! prefixIsCurrent; then
        say "Setting up $WINEPREFIX"
        "$KELVARO_ROOT/scripts/wine_prefix.sh"
    fi
    startXvfb
    "$(findWineserver)" -p >/dev/null 2>&1 || fail "other programs run in the Wine prefix $WINEPREFIX"
    exec {sessionInput}> >(exec "$KELVARO_ROOT/scripts/wine.sh" "$1" "Z:${ready//\//\\}" >/dev/null 2>&1)
    for ((tenths = 0; tenths < 600; ++tenths)); do
        if [[ -f "$ready" ]]; then
            rm -f "$ready"
            return
        fi
        sleep 0.1
    done
    fail "Wine does not start in $WINEPREFIX"
}

# Ends what startWineSession has started.
endWineSession() {
    if [[ -n "$sessionInput" ]]; then
        "$(findWineserver)" -k 2>/dev/null || true
    fi
    if [[ -n "${xvfbPid:-}" ]]; then
        kill "$xvfbPid" 2>/dev/null || true
    fi
}
