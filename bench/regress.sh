#!/bin/sh
# Counts the instructions of three fixed cases under callgrind and compares them with bench/baseline.txt.
#
#   bench/regress.sh BUILD_FOLDER           compares; status 1 when a count has grown by more than 3 %
#   bench/regress.sh BUILD_FOLDER --write   makes the counts of now the baseline
#
# BUILD_FOLDER is a native release build without sanitizers (cmake -DCMAKE_BUILD_TYPE=Release); the target is built
# here. Only what happens inside detection and inside the renderer counts, not the making of the pictures. Counts
# depend on the compiler and its library: write a baseline of your own before comparing on another machine.
set -eu
if [ $# -lt 1 ] || [ $# -gt 2 ] || [ "${2:---write}" != --write ]; then
    echo "usage: $0 BUILD_FOLDER [--write]" >&2
    exit 2
fi
build=$1
mode=${2:-compare}
here=$(cd "$(dirname "$0")" && pwd)
baseline=$here/baseline.txt
grep -q '^CMAKE_BUILD_TYPE:[A-Z]*=Release$' "$build/CMakeCache.txt" || { echo "$build is no release build" >&2; exit 2; }
cmake --build "$build" --target regress_cases >/dev/null
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# count CASE FUNCTION: instructions inside FUNCTION
count() {
    valgrind --tool=callgrind --callgrind-out-file="$scratch/$1.out" --collect-atstart=no "--toggle-collect=$2(*" \
        "$build/bin/regress_cases" "$1" >"$scratch/$1.log" 2>&1 || { cat "$scratch/$1.log" >&2; return 1; }
    sed -n 's/^summary: *\([0-9]*\).*/\1/p; s/^totals: *\([0-9]*\).*/\1/p' "$scratch/$1.out" | tail -n 1
}

status=0
for entry in detect:BuildLightSourceTable stars:RenderEffect flare:RenderEffect; do
    name=${entry%%:*}
    now=$(count "$name" "${entry#*:}")
    if [ "${now:-0}" -eq 0 ]; then
        echo "$name: nothing was counted" >&2
        exit 1
    fi
    if [ "$mode" = --write ]; then
        echo "$name $now" | tee -a "$scratch/baseline"
        continue
    fi
    before=$(sed -n "s/^$name \([0-9]*\)$/\1/p" "$baseline")
    if [ -z "$before" ]; then
        echo "$name: no baseline" >&2
        exit 2
    fi
    verdict=ok
    if [ $((now * 100)) -gt $((before * 103)) ]; then
        verdict="GROWN by more than 3 %"
        status=1
    fi
    awk -v n="$name" -v b="$before" -v a="$now" -v v="$verdict" \
        'BEGIN { printf "%-8s %14d before %14d now %+7.2f %%  %s\n", n, b, a, (a - b) * 100 / b, v }'
done
if [ "$mode" = --write ]; then
    cp "$scratch/baseline" "$baseline"
fi
exit $status
