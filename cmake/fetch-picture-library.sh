#!/bin/sh
# Fetches the picture library that the command line loads, once: libvips for 64-bit Windows, one DLL, in a pinned
# version and checked. fetch-picture-library.sh FOLDER: leaves libvips-42.dll, the terms and the list of its parts there.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$1
package=@img/sharp-win32-x64 version=0.35.5
sum=16a804181ddd258ca6fe7079b2faa0c0356654c9db3d93ab0a80ec5e5161c3d4
[ "$(cat "$folder/.version" 2>/dev/null)" = "$version" ] && [ -f "$folder/libvips-terms.md" ] && exit 0
if ! command -v npm >/dev/null; then
    "$root/cmake/install-packages.sh" npm
fi
mkdir -p "$folder"
work=$(mktemp -d "$folder/fetch.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
echo "Fetching the picture library" >&2
tries=3
until npm pack --silent "$package@$version" >/dev/null 2>npm.log; do
    tries=$((tries - 1))
    [ $tries -gt 0 ] || { cat npm.log >&2; echo "The picture library could not be fetched" >&2; exit 1; }
    sleep 2
done
archive=$(ls ./*.tgz)
[ "$(sha256sum <"$archive" | cut -d' ' -f1)" = "$sum" ] || {
    echo "The picture library is not the one expected" >&2
    exit 1
}
tar -xzf "$archive" package/lib/libvips-42.dll package/README.md package/versions.json
mv package/lib/libvips-42.dll ../libvips-42.dll
sed -n '/^This software contains/,$p' package/README.md >../libvips-terms.md
rm -f ../libvips-licence.txt
mv package/versions.json ../libvips-parts.json
echo "$version" >../.version
cd ..
