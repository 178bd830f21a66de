#!/bin/sh
# Prints a folder with the photos that the pictures here are made from, all of them free (THIRD-PARTY.md). They are
# taken out of Debian packages, once, and checked. fetch-photos.sh [FOLDER_THAT_MAY_HAVE_SOME]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder="$root/build/photos"
mkdir -p "$folder"
has() { [ -f "$1" ] && [ "$(sha256sum <"$1" | cut -d' ' -f1)" = "$2" ]; }

while read -r name sum package path; do
    has "$folder/$name" "$sum" && continue
    if [ -n "${1:-}" ] && has "$1/$name" "$sum"; then cp "$1/$name" "$folder/$name"; continue; fi
    work="$folder/packages/$package"
    if [ ! -d "$work" ]; then
        mkdir -p "$work"
        echo "Fetching $package" >&2
        (cd "$work" && apt-get download -qq "$package" >&2)
    fi
    dpkg-deb --fsys-tarfile "$work"/*.deb | tar -x -O "./usr/$path" >"$folder/$name"
    has "$folder/$name" "$sum" || { echo "fetch-photos.sh: $name is not the one expected" >&2; exit 1; }
done <<PHOTOS
launchpad_dusk.jpg c2dd0de7c538df8d111e479619b129464d0269d0ae5fd18ca91d33a7fdfea95c python3-skimage lib/python3/dist-packages/skimage/data/rocket.jpg
deep_field.jpg 3a19c5dd8a927a9334bb1229a6d63711b1c0c767fb27e2286e7c84a3e2c2f5f4 python3-skimage lib/python3/dist-packages/skimage/data/hubble_deep_field.jpg
pleiades.png 23acdce03418f08f4eb004f408272f1cbc2cc8f3fc8cedb22e32865535bb128a stellarium-data share/stellarium/nebulae/default/pleiades.png
young_cluster.png bace1bc57b214254942d1734ab6a7c936c0def4c04f67479f752a1dbc4e8f6a7 stellarium-data share/stellarium/nebulae/default/n7129.png
earth_night.jpg 7caeb19e8a1d78ea569dde2b0f960abb3ce419d26a2e96517d588eb2579e42b8 xplanet-images share/xplanet/images/night.jpg
milky_way_sea.jpg 9319dfb3651833881339a8d9b769b99efaf474969e6cd58e427eb2524aca8e8a lomiri-wallpapers-20.04 share/backgrounds/Infinite-Sea_by_Aury88.jpg
sunset.jpg 474dab6a4b9f94dc76c29dfe30e9f5db4af0fd2e33fe5d695f8152b371efca18 lomiri-wallpapers-16.04 share/backgrounds/sunset_by_Aitzol_Berasategi.jpg
dandelion.jpg a5634d1ab5e41a3568e92d4a894a500c92b891f9ff734e50bd224d6e185a605f lomiri-wallpapers-16.04 share/backgrounds/seeding_by_Clements_Engelhardt.jpg
PHOTOS
rm -rf "$folder/packages"
echo "$folder"
