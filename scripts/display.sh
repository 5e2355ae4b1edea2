# Sourced after common.sh: an X server of the script's own.
# shellcheck shell=bash disable=SC2034 # xvfbPid is for the script that sources this

# Starts Xvfb on a free display, sets DISPLAY and `xvfbPid`. The caller ends it.
startXvfb() {
    local number=''
    exec {displayNumber}< <(exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>/dev/null)
    xvfbPid=$!
    read -r -t 30 number <&"$displayNumber" || true
    [[ -n "$number" ]] || fail "Xvfb, the X server without a screen, does not start"
    export DISPLAY=":$number"
}
