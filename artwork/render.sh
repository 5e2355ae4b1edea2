#!/bin/sh
# Renders the SVG drawings in this folder into rendered/, in the formats that the resource script expects.
set -eu

usage() {
    cat <<'TEXT'
Usage: artwork/render.sh [--output DIR]
       artwork/render.sh --help

Renders the drawings artwork/*.svg into artwork/rendered/ (or DIR):
  *.bmp  24 bits per pixel, bottom-up, 40-byte header, no palette
  *.png  8-bit RGBA, one frame, no metadata
  300_kelvaro.ico  16, 20, 24, 32, 40, 48, 64 and 256 pixels (256 as PNG)

The rendered files are part of the source tree: run this after changing a drawing and commit both.
The same drawings give the same bytes on every run with the same tool versions.
artwork/check.py verifies the result.

Needs the Debian packages librsvg2-bin (rsvg-convert), imagemagick (ImageMagick 6 or 7) and icoutils (icotool).
TEXT
}

fail() {
    printf 'render.sh: %s\n' "$1" >&2
    exit 1
}

folder=$(cd "$(dirname "$0")" && pwd)
output=$folder/rendered
while [ $# -gt 0 ]; do
    case $1 in
    --help | -h)
        usage
        exit 0
        ;;
    --output)
        [ $# -ge 2 ] || fail "--output needs a folder (see --help)"
        output=$2
        shift 2
        ;;
    *) fail "unknown argument '$1' (see --help)" ;;
    esac
done

# "convert" is the name of other programs too, so the banner decides, not the name.
find_imagemagick() {
    for tool in convert-im6.q16 convert-im6 magick convert; do
        if "$tool" -version 2>/dev/null | grep -q '^Version: ImageMagick'; then
            printf '%s\n' "$tool"
            return
        fi
    done
    return 1
}

rsvg-convert --version >/dev/null 2>&1 || fail "rsvg-convert is missing: install the package librsvg2-bin"
convert=$(find_imagemagick) || fail "ImageMagick is missing: install the package imagemagick"
icotool --version >/dev/null 2>&1 || fail "icotool is missing: install the package icoutils"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$output"

# svg_to_png SVG PNG [PIXELS]: RGBA, square of PIXELS if given. Without metadata, which would hold the time.
svg_to_png() {
    if [ $# -eq 3 ]; then
        rsvg-convert --width "$3" --height "$3" --output "$work/raw.png" "$1"
    else
        rsvg-convert --output "$work/raw.png" "$1"
    fi
    "$convert" "$work/raw.png" -strip -define png:exclude-chunks=all -define png:compression-level=9 "PNG32:$2"
}

# png_to_bmp PNG BMP: BMP3 is the 40-byte header; the drawing must be opaque.
png_to_bmp() {
    "$convert" "$1" -alpha off -strip -type TrueColor "BMP3:$2"
}

for name in 106_overlay 129_battery_wired 130_microphone_on 131_speaker_on 132_battery_empty 133_battery_full \
    134_battery_low 135_battery_medium 136_microphone_muted 137_speaker_muted; do
    svg_to_png "$folder/$name.svg" "$output/$name.png"
done

for name in 105_picture 107_shade 108_background 304_list_background; do
    svg_to_png "$folder/$name.svg" "$work/$name.png"
    png_to_bmp "$work/$name.png" "$output/$name.bmp"
done

# The mail bitmap has no transparency: the 34 x 22 pixels of the main page at (235,155) are its ground.
svg_to_png "$folder/104_mail.svg" "$work/glyph.png"
"$convert" "$work/108_background.png" "$work/107_shade.png" -compose Multiply -composite \
    "$output/106_overlay.png" -compose Over -composite -crop 34x22+235+155 +repage \
    "$work/glyph.png" -compose Over -composite "PNG32:$work/mail.png"
png_to_bmp "$work/mail.png" "$output/104_mail.bmp"

for size in 16 20 24; do
    svg_to_png "$folder/300_kelvaro_$size.svg" "$work/icon_$size.png"
done
for size in 32 40 48 64 256; do
    svg_to_png "$folder/300_kelvaro_256.svg" "$work/icon_$size.png" "$size"
done
icotool --create --output "$output/300_kelvaro.ico" \
    "$work/icon_16.png" "$work/icon_20.png" "$work/icon_24.png" "$work/icon_32.png" \
    "$work/icon_40.png" "$work/icon_48.png" "$work/icon_64.png" --raw="$work/icon_256.png"
