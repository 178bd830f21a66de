#!/bin/bash
# install.sh ROOT BIN: the packages are made twice and are the same; the ZIP file runs where it is unpacked; the installer
# finds the hosts' folders, the filter runs from there, a second run repairs, and uninstalling leaves nothing but what
# the user made.
set -euo pipefail
root=$1 bin=$2
work=$(mktemp -d)
export BRILLATRIX_WINEPREFIX="$work/wine" WINEPREFIX="$work/wine" WINEARCH=win64 WINEDEBUG=-all
trap 'wineserver -k || true; rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; exit 1; }
say() { echo "-- $*"; }
drive="$work/wine/drive_c" own='C:\Own\Filters'
run() { "$root/cmake/wine-run.sh" "$@" </dev/null; }
registry() { wine reg "$@" </dev/null 2>/dev/null | tr -d '\r'; }
user_path() { registry query 'HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment' /v Path; }
# All files and folders but the system's own and the user's: sets, settings, logs and the command line's last run, which the
# guide says are left.
listing() {
    (cd "$drive" && find . -path ./windows -prune -o -path '*/Nexorvanta/Brillatrix' -prune -o -path '*/BrillatrixHost' -prune \
        -o -path '*/Temp/*' -prune -o -print | grep -v '/Nexorvanta$' | sort)
}

"$root/cmake/package.sh" --built "$bin" --out "$work/one"
sleep 1
"$root/cmake/package.sh" --built "$bin" --out "$work/two" >/dev/null
diff -r "$work/one" "$work/two" && say "made twice, the same bytes"
sh "$root/cmake/wine-setup.sh" >/dev/null 2>&1 || sh "$root/cmake/wine-setup.sh" >/dev/null 2>&1 || fail "no Wine prefix"

cd "$work"
unzip -q one/*.zip
zip=$(echo Brillatrix-Pro-*/)
(cd "$zip" && sha256sum --quiet -c SHA256SUMS.txt && [ "$(find . -type f | wc -l)" -eq "$(($(wc -l <SHA256SUMS.txt) + 1))" ]) ||
    fail "checksums in the ZIP file"
LC_ALL=C awk 'BEGIN { printf "P5 400 300 255\n"; for (y = 0; y < 300; y++) for (x = 0; x < 400; x++)
    printf "%c", 10 + 240 * exp(-((x - 150) ^ 2 + (y - 140) ^ 2) / 3) }' >photo.pgm
run "$zip/brillatrix.exe" --quiet --preset Cross --threshold 100 photo.pgm first.pgm
sets="$drive/users/$(id -un)/AppData/Local/Nexorvanta/Brillatrix/Parameters"
[ "$(find "$sets" -name '*.sss' | wc -l)" -eq "$(find "$root/presets" -name '*.sss' | wc -l)" ] || fail "no sets at the first opening"
[ "$(tail -c 120000 first.pgm | tr -d "\12" | wc -c)" -gt 1000 ] || fail "no star"
rm "$sets/Skyline.sss"
cp "$sets/Cross.sss" "$sets/Candles.sss"
run "$zip/brillatrix.exe" --quiet --preset Cross --threshold 100 photo.pgm again.pgm
if [ -f "$sets/Skyline.sss" ] || ! cmp -s "$sets/Cross.sss" "$sets/Candles.sss"; then fail "the user's sets were changed"; fi
say "unpacked, a star drawn, the sets offered once"

photoshop="$drive/Program Files/Adobe/Adobe Photoshop 2025/Plug-ins"
mkdir -p "$photoshop" "$drive/Own" "$drive/ProgramData/Affinity/Photo/2.0/Plugins" "$drive/Viewers/XnView/Plugins" "$drive/Photoshop CS6/Filters"
registry add 'HKLM\Software\Microsoft\Windows\CurrentVersion\App Paths\xnviewmp.exe' /ve /d 'C:\Viewers\XnView\xnviewmp.exe' /f >/dev/null
registry add 'HKLM\Software\Adobe\Photoshop\60.0' /v PluginPath /d 'C:\Photoshop CS6\Filters' /f >/dev/null
# Longer than the installer's own texts can be
registry add 'HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment' /v Path /t REG_EXPAND_SZ /f \
    /d "%SystemRoot%\\system32;%SystemRoot%;C:\\Stars at home$(printf ';C:\\Folder %04d' $(seq 300))" >/dev/null
listing >before.txt
user_path >path-before.txt
install() { run one/*-setup.exe /S /AllUsers /Path "/PluginFolder=$own" "/D=${1:-C:\\Stars}"; }
check_installed() {
    local places=("$photoshop" "$drive/ProgramData/Affinity/Photo/2.0/Plugins" "$drive/Viewers/XnView/Plugins"
        "$drive/Photoshop CS6/Filters" "$drive/Own/Filters" "$drive/Stars")
    for place in "${places[@]}"; do cmp "$zip/BrillatrixX64.8bf" "$place/BrillatrixX64.8bf" || fail "$1: $place"; done
    (cd "$drive/Stars" && sha256sum --quiet -c SHA256SUMS.txt) || fail "$1: the files are not those of the package"
    [ "$(user_path | grep -oE 'C:.(Stars|Older)(;|$)' | wc -l)" -eq 1 ] || fail "$1: the path"
    rm -f third.pgm
    run "$drive/Stars/brillatrix.exe" --quiet --plugin "$photoshop/BrillatrixX64.8bf" --preset Cross --threshold 100 photo.pgm third.pgm
    cmp first.pgm third.pgm || fail "$1: another picture"
}
install 'C:\Older'
echo dropped >"$drive/Older/dropped.txt" # is not the installer's
install
check_installed "installed"
[ "$(ls -A "$drive/Older")" = dropped.txt ] || fail "the older folder is left"
user_path | grep -q 'REG_EXPAND_SZ.*C:.Stars at home.*C:.Folder 0300;C:.Stars$' || fail "the path is another"
rm -r "$drive/Older"
say "installed in five plug-in folders and run from one"
echo broken >"$photoshop/BrillatrixX64.8bf"
rm "$drive/Stars/guide/"*.html
install
check_installed "repaired"
say "installed over it: repaired"

uninstall() {
    run "$1" /S
    for _ in $(seq 100); do [ -f "$1" ] || break; sleep 0.2; done
    sleep 1
}
uninstall "$drive/Stars/Uninstall.exe"
listing | diff before.txt - || fail "something is left, or missing"
user_path | diff path-before.txt - || fail "the path is another"
for key in 'Nexorvanta' 'Microsoft\Windows\CurrentVersion\Uninstall\Brillatrix'; do
    if registry query "HKLM\\Software\\$key" | grep -q .; then fail "$key is left in the registry"; fi
done
[ -f "$sets/Cross.sss" ] || fail "the user's sets are gone"
say "uninstalled: nothing left but the user's sets and settings"

mkdir -p "$drive/Taken/brillatrix.exe"
run one/*-setup.exe /S /AllUsers /NoHosts '/D=C:\Taken' && fail "a file could not be written" || [ $? -eq 3 ] || fail "its status"
uninstall "$drive/Taken/Uninstall.exe"
rm -r "$drive/Taken"

run one/*-setup.exe /S /CurrentUser /NoHosts
mine="$drive/users/$(id -un)/AppData/Local/Programs/Brillatrix Pro"
[ -f "$mine/brillatrix.exe" ] && [ ! -f "$photoshop/BrillatrixX64.8bf" ] || fail "installed for one user"
uninstall "$mine/Uninstall.exe"
listing | grep -v '/AppData/Local/Programs$' | diff before.txt - || fail "one user's installation left something"
say "for one user alone, and away again"
