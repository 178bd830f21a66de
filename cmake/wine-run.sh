#!/bin/sh
# Runs a Windows program. On Linux through Wine, in the prefix that wine-setup.sh makes in the build folder.
build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX="${BRILLATRIX_WINEPREFIX:-$build/wine}" WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}"
[ -f "$WINEPREFIX/.ready" ] || { echo "wine-run.sh: no prefix; run cmake/wine-setup.sh first" >&2; exit 125; }
[ -f "$1" ] || { echo "wine-run.sh: $1: no such program" >&2; exit 127; }
[ -p /dev/stdout ] || [ -p /dev/stderr ] || exec wine "$@"
# Wine's desktop process inherits what the first program with a window writes to, and lives as long as any other program
# with a window: whoever reads from a pipe would wait for it too.
written=$(mktemp -d)
trap 'rm -rf "$written"' EXIT
status=0
wine "$@" >"$written/out" 2>"$written/err" || status=$?
cat "$written/out"
cat "$written/err" >&2
exit $status
