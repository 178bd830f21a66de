#!/bin/sh
# versions.sh ROOT BIN: the version in VERSION is the one that the modules, the command line and the history say, and
# every part of the picture library is named with its version among the parts of others.
set -eu
root=$1 bin=$2
fail() { echo "versions.sh: $*"; failed=1; }
failed=""
version=$(cat "$root/VERSION")
said=$("$root/cmake/wine-run.sh" "$bin/brillatrix.exe" --version </dev/null | tr -d '\r')
[ "$said" = "brillatrix $version" ] || fail "the command line says $said"
for module in BrillatrixX64.8bf brillatrix.exe; do
    [ "$(strings -el "$bin/$module" | grep -A1 -xE 'FileVersion|ProductVersion' | grep -cFx "$version")" -eq 2 ] ||
        fail "$module has another version"
done
[ "$(sed -n 's/^## //p' "$root/CHANGELOG.md" | head -n 1)" = "$version" ] || fail "CHANGELOG.md begins with another version"
[ "$(wc -l <"$bin/libvips-parts.json")" -gt 20 ] || fail "no list of the picture library's parts"
sed -n 's/^ *"\(.*\)": "\(.*\)",*$/| \1 | \2 |/p' "$bin/libvips-parts.json" | while read -r part; do
    grep -qF "$part" "$root/THIRD-PARTY.md" || { echo "THIRD-PARTY.md lacks $part"; exit 1; }
done || failed=1
[ -z "$failed" ]
