#!/bin/sh
# Makes preview.jpg: the preview display on the demonstration photo (in the public domain, SpaceX) at three zooms,
# with the stars, with every light hidden, and with one light marked by the Hide Effects tool.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
program="${BRILLATRIX_BUILD:-$root/build/windows-x64}/bin/live_view_tests.exe"
[ -f "$program" ] || { echo "make-preview-pictures.sh: build the tests first" >&2; exit 1; }
"$root/cmake/install-packages.sh" imagemagick fonts-liberation
"$root/cmake/demo-photo.sh" >/dev/null
"$root/cmake/wine-run.sh" "$program" '--gtest_filter=*HiddenLights*:*OneClick*' </dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
set --
for shot in 16-stars 100-stars 400-stars 16-hidden 100-hidden 400-hidden 100-marked 100-one-hidden 400-marked; do
    zoom=${shot%%-*} what=${shot#*-}
    case $what in
    stars) what="stars" ;;
    hidden) what="all lights hidden" ;;
    marked) what="about to hide one light" ;;
    one-hidden) what="one light hidden" ;;
    esac
    convert "$(dirname "$program")/preview-$shot.bmp" -gravity NorthWest -font Liberation-Sans -pointsize 16 \
        -fill white -annotate +10+8 "$zoom %%, $what" "$work/$shot.png"
    set -- "$@" "$work/$shot.png"
done
montage "$@" -tile 3x3 -geometry +3+3 -background black -quality 85 "$root/docs/preview.jpg"
