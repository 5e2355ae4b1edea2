#!/usr/bin/env bash
# Refuses an include against the direction of the layers: a folder includes only the folders named beside it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# checkFolder FOLDER ALLOWED-FOLDER...: prints the includes that are not allowed, and fails when there are any.
checkFolder() {
    local folder="$1" allowed
    shift
    [[ -d "$folder" ]] || return 1
    allowed="$(IFS='|' && printf '%s' "$*")"
    ! grep -rnE --include='*.cpp' --include='*.h' --include='*.rc' \
        '#\s*include\s*("|<(app|artwork|framework|pages|standins|stats|tests)/)' "$folder" |
        grep -vE "#\s*include\s*\"($allowed)/[a-z0-9_/]+\.(h|rc)\""
}

result=0
checkFolder framework framework || result=1
checkFolder stats framework stats || result=1
checkFolder pages framework stats pages || result=1
checkFolder app framework stats pages app artwork || result=1
checkFolder standins framework stats standins || result=1
exit "$result"
