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
not_started() { [ "$status" -gt 7 ] && [ "$status" -lt 128 ] || [ "$status" -eq 1 ]; }
run_again() {
    run "$@"
    while not_started; do
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
readers="" running=""
trap '[ -z "$running" ] || kill "$running" 2>/dev/null; rm -rf "$written"' EXIT
: >"$written/out" >"$written/err"
# What is said is passed on while the program runs, and to the end when it has ended.
pass_on() { tail -q -c +1 -f -s 0.02 --pid="$running" "$written/$1" 3<&- & readers="$readers $!"; }
sleep 2147483647 >/dev/null 2>&1 3<&- &
running=$!
pass_on out
pass_on err >&2
run_again "$@" >>"$written/out" 2>>"$written/err"
if not_started && [ ! -s "$written/out" ] && [ ! -s "$written/err" ]; then
    run_again "$@" >>"$written/out" 2>>"$written/err"
fi
kill "$running"
running=""
wait $readers || :
exit "$status"
