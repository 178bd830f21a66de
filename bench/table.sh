#!/bin/sh
# Measures everything that bench/README.md tells, in one run, and prints it as tables.
#
#   bench/table.sh BUILD_FOLDER            the Windows build (cmake --preset windows-x64), through Wine on Linux
#   bench/table.sh --native BUILD_FOLDER   a native release build: renderer and detection only
#
# The targets are built first. COPY is a plain copy of the same image, PF the plain form (bench/plain);
# "portable" is the renderer without AVX2 and AVX-512. Takes about ten minutes with nothing else running, most of it PF, and 2 GB.
set -eu
native=no
[ "${1:-}" = --native ] && { native=yes; shift; }
[ $# -eq 1 ] && [ -f "$1/CMakeCache.txt" ] || { echo "usage: $0 [--native] BUILD_FOLDER" >&2; exit 2; }
build=$(cd "$1" && pwd)
root=$(cd "$(dirname "$0")/.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

if [ $native = yes ]; then
    cmake --build "$build" --target render_bench detect_bench >/dev/null
    run() { program=$1; shift; "$build/bin/$program" "$@"; }
else
    cmake --build "$build" --target render_bench detect_bench host_bench preview_bench BrillatrixX64 >/dev/null
    run() { program=$1; shift; "$root/cmake/wine-run.sh" "$build/bin/$program.exe" "$@" </dev/null; }
fi

echo "Measured $(date -u '+%Y-%m-%d %H:%M') UTC, $(nproc) processors, load before: $(cut -d' ' -f1 /proc/loadavg)"
echo
run render_bench --cases 24-50,24-500,24-long,100-50,strip-1024,24-flare,24-sharp20,24-worst >"$scratch/render"
run render_bench --portable --no-plain --cases 24-50,24-500,24-long,100-50 >"$scratch/portable"
head -n 1 "$scratch/render"
echo
echo "| case | COPY | PF | now, 1 thread | now | PF / now | portable | PF / portable | beyond the image |"
echo "|---|---|---|---|---|---|---|---|---|"
tr -d '\r' <"$scratch/portable" | awk 'NR > 2 { print $1, $5 }' >"$scratch/slow"
tr -d '\r' <"$scratch/render" | awk -v slow="$scratch/slow" '
    BEGIN { while ((getline line < slow) > 0) { split(line, field, " "); portable[field[1]] = field[2] } }
    function ratio(a, b) { return a > 0 && b > 0 ? sprintf("%.1f", a / b) : "" }
    NR > 2 {
        plain = $3 > 0 ? $3 " s" : "not run"
        other = $1 in portable ? portable[$1] " s" : ""
        printf "| %s | %s s | %s | %s s | %s s | %s | %s | %s | %s MB%s |\n", $1, $2, plain, $4, $5, ratio($3, $5), other,
            ratio($3, portable[$1]), $7, $9 == "" ? "" : ", " $9
    }'
echo
run render_bench --workers 1 --cases preview | tail -n +3
run render_bench --cases first | tail -n +3
run render_bench --cases cancel | tail -n +3
echo
run detect_bench --repeat 9 --plain "$([ $native = yes ] && echo 1 || echo 0)"

if [ $native = yes ]; then
    echo
    echo "worst parameters with 1.5 GB of address space:"
    (ulimit -v 1500000; run render_bench --no-plain --cases 24-worst | tail -n 1)
    exit 0
fi
# shellcheck disable=SC1003  # a backslash
module=$(echo "Z:$build/bin/BrillatrixX64.8bf" | tr / '\\')
echo
for case in "24 50 15" "24 500 5" "100 50 7"; do
    # shellcheck disable=SC2086  # megapixels, lights, runs
    set -- $case
    run host_bench "$module" --megapixels "$1" --lights "$2" --repeat "$3" --phases 1
done
run host_bench "$module" --startup 9
run preview_bench
