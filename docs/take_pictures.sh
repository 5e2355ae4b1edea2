#!/usr/bin/env bash
# Takes the README's pictures from the running program: docs/take_pictures.sh
# Needs what ./run.sh needs, and ImageMagick for the main page in twice its size.
set -euo pipefail
docs="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
run="$docs/../run.sh"

# takePicture FILE OPTION...: one run of the program.
takePicture() {
    local file="$1"
    shift
    "$run" --shot "$docs/$file" "$@"
}

scale=''
for candidate in convert-im6.q16 magick convert; do
    if "$candidate" -version 2>/dev/null | grep -q '^Version: ImageMagick'; then
        scale="$candidate"
        break
    fi
done
[[ -n "$scale" ]] || {
    printf '%s\n' "take_pictures.sh: ImageMagick is missing (Debian: apt-get install imagemagick)" >&2
    exit 1
}

# The graphs are full after a minute.
takePicture main-page.png --simulate --seconds 66
"$scale" "$docs/main-page.png" -filter point -resize 200% -strip "$docs/main-page.png"
takePicture audio-device-page.png --simulate --press menu
takePicture options-page.png --simulate --press menu,right
takePicture preview-window.png --desktop
