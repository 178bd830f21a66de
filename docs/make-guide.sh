#!/bin/bash
# Makes the guide's pictures, with the program: make-guide.sh [FOLDER_THAT_MAY_HAVE_SOME_PHOTOS]. The dialog's pictures are
# those of make-dialog-pictures.sh, the sheet of sets that of make-preset-sheet.sh. package.sh makes the guide's one HTML
# file.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/cmake/install-packages.sh" imagemagick fonts-liberation librsvg2-bin
photos=$("$root/docs/fetch-photos.sh" "${1:-}")
pictures="$root/docs/guide/pictures"
mkdir -p "$pictures"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$photos/pleiades.png" "$work/sky.png"
convert "$photos/launchpad_dusk.jpg" "$work/lamps.png"
convert "$photos/dandelion.jpg" -resize 1600x -crop 1200x800+100+0 +repage "$work/dandelion.png"
stars() { "$root/brillatrix" --silent --overwrite "$@" </dev/null; }
# cell FILE TEXT [CROP]: a part of FILE as one of a row's cells
cell() {
    convert "$1" -crop "${3:-420x290+430+215}" +repage -resize 420x290! -gravity NorthWest -font Liberation-Sans -pointsize 17 \
        -fill white -undercolor '#0008' -annotate +7+5 "$2" "$1.cell.png"
    cells+=("$1.cell.png")
}
row() { montage "${cells[@]}" -tile "$2" -geometry +2+2 -background black -strip -quality 84 "$pictures/$1.jpg"; cells=(); }
cells=()

base=(--threshold 30 --intensity 85 --length 60 --points 6 --sharpness 45 --saturation 20 --rainbow 20 --secondary 0 --flare 20)
while read -r -u 3 name parameter low middle high unit; do
    extra=()
    [ "$name" != rainbow-frequency ] || extra=(--rainbow 100)
    [ "$name" != secondary ] || extra=(--length 45)
    [ "$name" != flare ] || extra=(--intensity 40 --length 30)
    for value in "$low" "$middle" "$high"; do
        stars "${base[@]}" "${extra[@]}" "--$parameter" "$value" "$work/sky.png" "$work/$name$value.png"
        cell "$work/$name$value.png" "$name $value${unit:-}"
    done
    row "$name" 3x
done 3<<PARAMETERS
threshold threshold 10 40 80
intensity intensity 10 50 100
length length 15 50 90
angle angle 0 20 45 °
points points 4 8 18
sharpness sharpness 5 50 95
saturation saturation -100 0 100
rainbow rainbow 0 50 100
rainbow-frequency rainbow-frequency 10 50 100
secondary secondary 0 30 80
flare flare 0 40 90
PARAMETERS

while IFS='|' read -r -u 3 type points; do
    stars "${base[@]}" --length 60 --effect "$type" --points "$points" "$work/sky.png" "$work/type.png"
    cp "$work/type.png" "$work/type $type.png"
    cell "$work/type $type.png" "$type, $points points"
done 3<"$root/docs/effect-types.list"
row types 3x

stars --preset "Fairy Dust" "$work/dandelion.png" "$work/dust.png"
convert "$work/dandelion.png" "$work/dust.png" -resize 800x +append -strip -quality 86 "$pictures/before-after.jpg"
stars --preset "Street Lamps" "$work/lamps.png" "$work/first.png"
convert "$work/lamps.png" "$work/first.png" -crop 480x320+20+107 +repage +append -strip -quality 88 "$pictures/first-star.jpg"

# The lights that were found, from the drawing that the program makes of them.
stars --threshold 40 --lights-svg "$work/lights.svg" "$work/lamps.png" "$work/found.png"
rsvg-convert "$work/lights.svg" -o "$work/rings.png"
convert "$work/lamps.png" "$work/rings.png" -composite "$work/ringed.png"
cell "$work/ringed.png" "what was found" 300x207+30+220
cell "$work/found.png" "threshold 40" 300x207+30+220
row lights 2x
stars --preset "Classic 6 Points" --effects-only "$work/sky.png" "$work/alone.png"
stars --preset "Classic 6 Points" "$work/sky.png" "$work/whole.png"
cell "$work/sky.png" "the photo"
cell "$work/alone.png" "the effect alone"
cell "$work/whole.png" "both"
row effect-only 3x
