#!/bin/bash
# Writes the parameter sets of presets.txt beside it, with the program: make-presets.sh. They are saved in a Wine prefix
# of their own, so that the user's stay as they are.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
export BRILLATRIX_WINEPREFIX="$work/wine"
trap 'WINEPREFIX="$BRILLATRIX_WINEPREFIX" wineserver -k || true; rm -rf "$work"' EXIT
rm -f "$root"/presets/*.sss
while IFS='|' read -r -u 3 name effect options; do
    case $name in '#'* | '') continue ;; esac
    # shellcheck disable=SC2086  # a list of options
    "$root/brillatrix" --overwrite --effect "$effect" $options --save-preset "$name" </dev/null
done 3<"$root/presets/presets.txt"
cp "$work"/wine/drive_c/users/*/AppData/Local/Nexorvanta/Brillatrix/Parameters/*.sss "$root/presets/"
