#!/bin/bash
# Makes docs/presets.jpg: each shipped parameter set on a photo. make-preset-sheet.sh [FOLDER_THAT_MAY_HAVE_SOME_PHOTOS]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/cmake/install-packages.sh" imagemagick fonts-liberation
photos=$("$root/docs/fetch-photos.sh" "${1:-}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The photos in the sizes in which the cells are cut out of them.
for photo in milky_way_sea sunset dandelion; do convert "$photos/$photo.jpg" -resize 1600x "$work/$photo.png"; done
convert "$photos/earth_night.jpg" -crop 700x455+930+90 +repage -resize 200% "$work/europe.png"
convert "$photos/earth_night.jpg" -crop 500x325+300+120 +repage -resize 250% "$work/america.png"
for photo in launchpad_dusk.jpg deep_field.jpg pleiades.png young_cluster.png; do
    convert "$photos/$photo" "$work/${photo%.*}.png"
done
cells=()
while IFS='|' read -r -u 3 name photo crop; do
    "$root/brillatrix" --silent --overwrite --preset "$name" "$work/$photo.png" "$work/out.png" </dev/null
    cell="$work/cell ${#cells[@]}.png"
    convert "$work/out.png" -crop "$crop" +repage -resize 480x320^ -gravity center -extent 480x320 -gravity NorthWest \
        -font Liberation-Sans -pointsize 18 -fill white -undercolor '#0006' -annotate +8+6 "$name" "$cell"
    cells+=("$cell")
done 3<<CELLS
Street Lamps|launchpad_dusk|400x267+30+160
Candles|launchpad_dusk|300x200+30+227
Christmas Lights|america|600x400+300+100
City from Afar|europe|750x500+0+30
Skyline|launchpad_dusk|480x320+160+107
Jewellery|dandelion|750x500+200+50
Sun on Water|sunset|750x500+500+450
Stars in the Sky|pleiades|780x520+120+120
Milky Way|milky_way_sea|750x500+450+350
Stage|launchpad_dusk|480x320+160+107
Car Lights|launchpad_dusk|480x320+80+107
Cross|young_cluster|360x240+60+150
Classic 4 Points|launchpad_dusk|400x267+30+160
Classic 6 Points|pleiades|600x400+220+200
Classic 8 Points|launchpad_dusk|400x267+240+160
Classic 14 Points|pleiades|600x400+220+200
Subtle Glow|launchpad_dusk|300x200+30+227
Rainbow|pleiades|780x520+120+120
Space Telescope|deep_field|750x500+250+0
Fairy Dust|dandelion|750x500+150+0
CELLS
[ "${#cells[@]}" -eq "$(find "$root/presets" -name '*.sss' | wc -l)" ] || { echo "a set has no cell" >&2; exit 1; }
montage "${cells[@]}" -tile 4x -geometry +3+3 -background black -strip -quality 85 "$root/docs/presets.jpg"
