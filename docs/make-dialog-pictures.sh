#!/bin/sh
# Makes the pictures of the dialog: its states on the demonstration photo (in the public domain, SpaceX) at 100 and at
# 150 %, and on a system whose apps are dark, and the preview with each of the seven effects. Needs the test programs; uses a virtual screen and Wine
# prefixes of its own.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="${BRILLATRIX_BUILD:-$root/build/windows-x64}"
program="$build/bin/dialog_pictures.exe"
[ -f "$program" ] || { echo "make-dialog-pictures.sh: build dialog_pictures first" >&2; exit 1; }
"$root/cmake/install-packages.sh" xvfb xauth imagemagick fonts-liberation
photo=$("$root/cmake/demo-photo.sh")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# take PERCENT [dark]: runs the program on a screen of that scale, in $work/PERCENT or $work/PERCENT-dark
take() {
    name="$1${2:+-$2}"
    (
        export BRILLATRIX_WINEPREFIX="$work/wine-$name" BRILLATRIX_WINE_GRAPHICS=x11
        export WINEPREFIX="$BRILLATRIX_WINEPREFIX" WINEARCH=win64 WINEDEBUG=-all
        mkdir "$work/$name"
        cp "$photo" "$work/$name/launchpad_dusk.jpg"
        cd "$work/$name"
        sh "$root/cmake/wine-setup.sh"
        wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d $(($1 * 96 / 100)) /f
        [ -z "${2:-}" ] || wine reg add 'HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize' \
            /v AppsUseLightTheme /t REG_DWORD /d 0 /f
        wineserver -k || true
        wineserver -w
        timeout 300 "$root/cmake/wine-run.sh" "$program" || true
        wineserver -k || true
    ) </dev/null >"$work/$name.log" 2>&1
    grep -q "4 tests" "$work/$name.log" && ! grep -q FAILED "$work/$name.log" || { cat "$work/$name.log" >&2; exit 1; }
}
export root work photo program
for percent in 100 150; do
    Xvfb ":$((60 + percent))" -screen 0 2560x1600x24 -nolisten tcp >/dev/null 2>&1 &
    server=$!
    sleep 1
    DISPLAY=":$((60 + percent))" take $percent
    [ $percent -ne 100 ] || DISPLAY=":$((60 + percent))" take $percent dark
    kill $server
done

jpeg() { convert "$work/$1" -strip -sampling-factor 4:4:4 -quality "${3:-88}" "$root/docs/$2"; }
jpeg 100/building.bmp dialog-building.jpg
jpeg 100/ready.bmp dialog.jpg
jpeg 100/hidden.bmp dialog-hidden-lights.jpg
jpeg 100/minimum.bmp dialog-minimum.jpg
convert "$work/100/large.bmp" -strip -resize 50% -quality 88 "$root/docs/dialog-large.jpg"
jpeg 100-dark/ready.bmp dialog-dark.jpg
jpeg 150/minimum.bmp dialog-150-percent.jpg
set --
row=0
for effect in "Standard Star" "Hollywood Star" "Religious Cross" "Hyper Star" "North Star" "Vector Star" "Star Burst"; do
    convert "$work/100/effect-$row.bmp" -crop 400x260+60+232 +repage -gravity NorthWest \
        -font Liberation-Sans -pointsize 18 -fill white -annotate +8+6 "$effect" "$work/effect-$row.png"
    set -- "$@" "$work/effect-$row.png"
    row=$((row + 1))
done
montage "$@" -tile 3x3 -geometry +3+3 -background black -quality 82 "$root/docs/dialog-effects.jpg"
