#!/bin/sh
# Makes the pictures of this folder: the contact sheet (all seven effects on three photos) and the read-me's picture.
# make-pictures.sh PHOTO_FOLDER: a folder with launchpad_dusk.jpg, earth_night.jpg and deep_field.jpg, all of them in
# the public domain (SpaceX; NASA Visible Earth; NASA/ESA).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
photos=$(cd "$1" && pwd)
"$root/cmake/install-packages.sh" imagemagick fonts-liberation
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for effect in "Standard Star" "Hollywood Star" "Religious Cross" "Hyper Star" "North Star" "Vector Star" "Star Burst"; do
    case $effect in
    Hollywood* | Religious* | North*) points=4 ;;
    Hyper* | *Burst) points=14 ;;
    Vector*) points=8 ;;
    *) points=6 ;;
    esac
    for photo in launchpad_dusk deep_field earth_night; do
        "$root/brillatrix" --quiet --overwrite --effect "$effect" --points $points --length 65 "$photos/$photo.jpg" "$work/out.png"
        case $photo in
        launchpad_dusk) crop=400x260+60+167 ;;
        deep_field) crop=500x325+400+0 ;;
        earth_night) crop=600x390+950+60 ;;
        esac
        convert "$work/out.png" -crop $crop +repage -resize 400x260! "$work/cell.png"
        convert "$work/cell.png" -gravity NorthWest -font Liberation-Sans -pointsize 18 -fill white \
            -annotate +8+6 "$effect, $points points" "$work/$photo-$effect.png"
    done
done
set --
for effect in "Standard Star" "Hollywood Star" "Religious Cross" "Hyper Star" "North Star" "Vector Star" "Star Burst"; do
    for photo in launchpad_dusk deep_field earth_night; do set -- "$@" "$work/$photo-$effect.png"; done
done
montage "$@" -tile 3x7 -geometry +3+3 -background black -quality 88 "$root/docs/contact-sheet.jpg"
"$root/brillatrix" --quiet --overwrite --length 60 "$photos/launchpad_dusk.jpg" "$work/demo.png"
convert "$work/demo.png" -quality 90 "$root/docs/launchpad_dusk_stars.jpg"
