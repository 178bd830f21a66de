#!/bin/sh
# Makes preview.jpg: the preview display on the demonstration photo (in the public domain, SpaceX) at three zooms,
# with the stars, with the lights marked by the Hide Effects tool, and with them hidden.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
program="${BRILLATRIX_BUILD:-$root/build/windows-x64}/bin/dialog_pictures.exe"
[ -f "$program" ] || { echo "make-preview-pictures.sh: build the tests first" >&2; exit 1; }
"$root/cmake/install-packages.sh" imagemagick fonts-liberation
photo=$("$root/cmake/demo-photo.sh")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$photo" "$work/launchpad_dusk.jpg"
(cd "$work" && "$root/cmake/wine-run.sh" "$program" '--gtest_filter=*Preview' </dev/null)
set --
for shot in 12-stars 100-stars 400-stars 12-marked 100-marked 400-marked 12-hidden 100-hidden 400-hidden; do
    zoom=${shot%%-*} what=${shot#*-}
    case $what in
    stars) what="stars" ;;
    marked) what="about to hide the lights" ;;
    hidden) what="lights hidden" ;;
    esac
    convert "$work/preview-$shot.bmp" -gravity NorthWest -font Liberation-Sans -pointsize 16 \
        -fill white -annotate +10+8 "$zoom %%, $what" "$work/$shot.png"
    set -- "$@" "$work/$shot.png"
done
montage "$@" -tile 3x3 -geometry +3+3 -background black -quality 85 "$root/docs/preview.jpg"
