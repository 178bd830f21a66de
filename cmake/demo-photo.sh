#!/bin/sh
# Prints the path of the demonstration photo: a rocket on its launch pad at dusk, 640 × 427, in the public domain
# (SpaceX). It is taken out of a Debian package, once, and checked.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
photo="$root/build/demo/launchpad_dusk.jpg"
sum=c2dd0de7c538df8d111e479619b129464d0269d0ae5fd18ca91d33a7fdfea95c
right() { [ -f "$1" ] && [ "$(sha256sum <"$1" | cut -d' ' -f1)" = "$sum" ]; }

if ! right "$photo"; then
    mkdir -p "$root/build/demo/unpacked"
    cd "$root/build/demo"
    echo "Fetching the demonstration photo" >&2
    apt-get download -qq python3-skimage >&2 2>/dev/null || {
        "$root/cmake/install-packages.sh" ca-certificates || true
        if [ "$(id -u)" -eq 0 ]; then apt-get update -qq >&2; elif command -v sudo >/dev/null; then sudo apt-get update -qq >&2; fi
        apt-get download -qq python3-skimage >&2
    }
    dpkg-deb --fsys-tarfile python3-skimage_*.deb |
        tar -x -C unpacked ./usr/lib/python3/dist-packages/skimage/data/rocket.jpg
    mv unpacked/usr/lib/python3/dist-packages/skimage/data/rocket.jpg "$photo"
    rm -rf python3-skimage_*.deb unpacked
    right "$photo" || { echo "The demonstration photo is not the one expected" >&2; rm -f "$photo"; exit 1; }
fi
echo "$photo"
