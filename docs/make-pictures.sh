#!/bin/bash
# Makes the pictures of this folder: the contact sheet (all seven effects on three photos), pairs of before and after, and
# the rocket with stars. make-pictures.sh [FOLDER_THAT_MAY_HAVE_SOME_PHOTOS]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/cmake/install-packages.sh" imagemagick fonts-liberation
photos=$("$root/docs/fetch-photos.sh" "${1:-}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stars() { "$root/brillatrix" --silent --overwrite "$@" </dev/null; }
# label FILE TEXT
label() {
    convert "$1" -gravity NorthWest -font Liberation-Sans -pointsize 18 -fill white -undercolor '#0008' -annotate +8+6 "$2" "$1"
}
convert "$photos/earth_night.jpg" -crop 700x455+930+90 +repage -resize 200% "$work/europe.png"

cells=()
while IFS='|' read -r -u 3 effect points; do
    for photo in launchpad_dusk deep_field europe; do
        # What suits the photo: lamps bright and few; stars fine; cities many, small and nearly white.
        case $photo in
        launchpad_dusk) crop=400x260+60+167 settings=(--threshold 28 --intensity 80 --length 62) input=$photos/$photo.jpg ;;
        deep_field) crop=500x325+400+0 settings=(--threshold 35 --intensity 85 --length 65) input=$photos/$photo.jpg ;;
        europe) crop=800x520+0+20 input=$work/europe.png
            settings=(--threshold 66 --intensity 85 --length 38 --saturation -45 --rainbow 15 --flare 10) ;;
        esac
        stars --effect "$effect" --points "$points" "${settings[@]}" "$input" "$work/out.png"
        cell="$work/cell ${#cells[@]}.png"
        convert "$work/out.png" -crop $crop +repage -resize 400x260! "$cell"
        label "$cell" "$effect, $points points"
        cells+=("$cell")
    done
done 3<"$root/docs/effect-types.list"
montage "${cells[@]}" -tile 3x7 -geometry +3+3 -background black -strip -quality 86 "$root/docs/contact-sheet.jpg"

pairs=()
while IFS='|' read -r -u 3 photo resize preset crop; do
    convert "$photo" $resize "$work/photo.png"
    stars --preset "$preset" "$work/photo.png" "$work/out.png"
    pair="$work/pair ${#pairs[@]}.png"
    convert "$work/photo.png" "$work/out.png" -crop "$crop" +repage -resize 600x400! +append "$pair"
    label "$pair" "$preset"
    pairs+=("$pair")
done 3<<PAIRS
$photos/dandelion.jpg|-resize 1600x|Fairy Dust|900x600+150+0
$photos/pleiades.png||Stars in the Sky|780x520+120+120
$photos/launchpad_dusk.jpg||Street Lamps|400x267+30+160
$photos/young_cluster.png||Cross|360x240+60+150
$work/europe.png||City from Afar|750x500+0+30
PAIRS
montage "${pairs[@]}" -tile 1x -geometry +3+3 -background black -strip -quality 84 "$root/docs/before-after.jpg"

stars --preset "Street Lamps" "$photos/launchpad_dusk.jpg" "$work/demo.png"
convert "$work/demo.png" -strip -quality 90 "$root/docs/launchpad_dusk_stars.jpg"
