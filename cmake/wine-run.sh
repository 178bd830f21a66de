#!/bin/sh
# Runs a Windows program. On Linux through Wine, in the prefix that wine-setup.sh makes in the build folder.
[ "$(uname -o)" != Msys ] || exec "$@"
build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX="${BRILLATRIX_WINEPREFIX:-$build/wine}" WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}"
[ -f "$WINEPREFIX/.ready" ] || { echo "wine-run.sh: no prefix; run cmake/wine-setup.sh first" >&2; exit 125; }
[ -f "$1" ] || { echo "wine-run.sh: $1: no such program" >&2; exit 127; }
: "${BRILLATRIX_WINE_RETRIES:=0}"

# The program hears of a wish to end as of Ctrl+C, and tidies up. Ctrl+C itself it hears from the terminal.
child=""
trap '[ -z "$child" ] || kill -INT "$child"' TERM
trap '[ -z "$child" ] || { kill -INT "$child"; sleep 0.2; kill -INT "$child"; }' HUP
trap : INT
run() {
    wine "$@" <&3 &
    child=$!
    status=0
    while :; do
        wait "$child" && status=0 || status=$?
        kill -0 "$child" 2>/dev/null || break
    done
    child=""
}
# Once in some hundred times Wine does not start: none of the program's own statuses (below 8), nor a signal's.
run_again() {
    run "$@"
    while [ "$status" -gt 7 ] && [ "$status" -lt 128 ] || [ "$status" -eq 1 ]; do
        [ "${BRILLATRIX_WINE_RETRIES:-0}" -gt 0 ] || break
        BRILLATRIX_WINE_RETRIES=$((BRILLATRIX_WINE_RETRIES - 1))
        sleep 0.5
        run "$@"
    done
}
exec 3<&0
if [ ! -p /dev/stdout ] && [ ! -p /dev/stderr ]; then
    run_again "$@"
    exit "$status"
fi
# Wine's desktop process inherits what the first program with a window writes to, and lives as long as any other program
# with a window: whoever reads from a pipe would wait for it too.
written=$(mktemp -d)
trap 'rm -rf "$written"' EXIT
run_again "$@" >"$written/out" 2>"$written/err"
# Now and then Wine fails to start a program at all: it has said nothing then.
if [ "$status" -ne 0 ] && [ ! -s "$written/out" ] && [ ! -s "$written/err" ]; then
    run_again "$@" >"$written/out" 2>"$written/err"
fi
cat "$written/out"
cat "$written/err" >&2
exit "$status"
