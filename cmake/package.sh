#!/bin/bash
# Builds what is shipped, from the commit that is checked out: a ZIP file and an installer in build/packages, with their
# checksums. The same commit gives the same bytes, on any day and in any folder.
# package.sh [--built FOLDER] [--out FOLDER]: --built takes what a build left in its bin folder, instead of building.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bin="" out="$root/build/packages"
while [ $# -gt 0 ]; do
    case $1 in
    --built) bin=$(cd "$2" && pwd) ;;
    --out) mkdir -p "$2"; out=$(cd "$2" && pwd) ;;
    *) echo "package.sh: what is $1?" >&2; exit 2 ;;
    esac
    shift 2
done
if [ "$(uname -o)" != Msys ]; then
    "$root/cmake/install-packages.sh" g++-mingw-w64-x86-64 cmake ninja-build googletest nsis zip python3 git
fi
if [ -z "$bin" ]; then
    [ -f "$root/build/windows-x64/build.ninja" ] || (cd "$root" && cmake --preset windows-x64 >/dev/null)
    cmake --build "$root/build/windows-x64" --target brillatrix BrillatrixX64 >&2
    bin="$root/build/windows-x64/bin"
fi
export TZ=UTC LC_ALL=C
version=$(cat "$root/VERSION")
if SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct 2>/dev/null); then
    [ -z "$(git -C "$root" status --porcelain -uno)" ] || echo "package.sh: there are changes that no commit has" >&2
else
    SOURCE_DATE_EPOCH=$(stat -c %Y "$root/VERSION")
    echo "package.sh: no commit is known here; the files get the time of VERSION" >&2
fi
export SOURCE_DATE_EPOCH

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
name="Brillatrix-Pro-$version-windows-x64"
files="$work/$name"
mkdir -p "$files/presets" "$files/guide" "$files/licences"
strip=x86_64-w64-mingw32-strip
command -v $strip >/dev/null || strip=strip
for module in BrillatrixX64.8bf brillatrix.exe; do $strip -s -o "$files/$module" "$bin/$module"; done
cp "$bin/libvips-42.dll" "$files/"
cp "$root"/presets/*.sss "$files/presets/"
python3 "$root/docs/guide-to-html.py" "$files/guide/Brillatrix Pro Guide.html" "$root"/docs/guide/[0-9]*.md
# Notepad of older Windows versions knows no bare line feeds.
for text in LICENSE THIRD-PARTY.md CHANGELOG.md; do
    sed 's/$/\r/' "$root/$text" >"$files/${text%.md}.txt"
done
sed -e "s/@VERSION@/$version/" -e 's/$/\r/' "$root/cmake/package/readme.txt" >"$files/README.txt"
cp "$bin/libvips-terms.md" "$bin/libvips-parts.json" "$files/licences/"
cp "$root"/cmake/package/licences/*.txt "$files/licences/"
(cd "$files" && find . -type f ! -name SHA256SUMS.txt | sort | sed 's|^\./||' | tr '\n' '\0' | xargs -0 sha256sum >SHA256SUMS.txt)
find "$files" -type d -exec chmod 755 {} + -o -type f -exec chmod 644 {} +
find "$files" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +

# The installer's maker is a Windows program where this runs in a Windows shell.
native() { if command -v cygpath >/dev/null; then cygpath -m "$1"; else echo "$1"; fi; }
packed=$(native "$files")
# What the installer packs and the uninstaller removes, file by file.
{
    echo "!define SIZE_KB $(($(find "$files" -type f -printf '%s\n' | paste -sd+ -) / 1024))"
    cd "$files"
    echo '!macro InstallFiles'
    find . -type f | sed 's|^\./||' | sort | while read -r file; do
        folder=$(dirname "$file")
        [ "$folder" != . ] && folder="\\$folder" || folder=""
        printf '    SetOutPath "$INSTDIR%s"\n    File "%s/%s"\n' "$folder" "$packed" "$file"
    done
    printf '!macroend\n!macro UninstallFiles\n'
    find . -type f | sed 's|^\./||; s|/|\\|g' | sort | sed 's|.*|    Delete "$INSTDIR\\&"|'
    find . -mindepth 1 -type d | sed 's|^\./||' | sort -r | sed 's|.*|    RMDir "$INSTDIR\\&"|'
    echo '!macroend'
} >"$work/lists.nsh"

mkdir -p "$out"
rm -f "$out/$name.zip" "$out/$name-setup.exe"
(cd "$work" && find "$name" -type f | sort | zip -X -9 -q "$out/$name.zip" -@)
makensis -V2 -NOCD "-DVERSION=$version" "-DFILES=$packed" "-DLISTS=$(native "$work/lists.nsh")" \
    "-DOUT=$(native "$out/$name-setup.exe")" "$(native "$root/cmake/package/installer.nsi")" >&2
(cd "$out" && sha256sum "$name.zip" "$name-setup.exe" >"$name.sha256")
ls -l "$out/$name".zip "$out/$name-setup.exe"
