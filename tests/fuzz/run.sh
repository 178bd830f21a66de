#!/bin/sh
# Fuzzes a target with libFuzzer under AddressSanitizer and UndefinedBehaviorSanitizer: tests/fuzz/run.sh TARGET SECONDS
# TARGET: detection, render or metadata. Needs clang. Goes on behind a crash; crashes and what was learnt are kept in
# build/fuzz/TARGET. A crash's case belongs into tests/fuzz/corpus/TARGET once it is mended.
set -eu
[ $# -eq 2 ] || { sed -n '2,4s/^# //p' "$0" >&2; exit 2; }
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$root"
[ -f build/fuzz/build.ninja ] || cmake --preset fuzz >/dev/null
cmake --build build/fuzz --target fuzz_targets -- --quiet
kept=build/fuzz/$1
mkdir -p "$kept/corpus" "$kept/crashes"
end=$(($(date +%s) + $2))
seed=$(date +%s)
while left=$((end - $(date +%s))); [ "$left" -gt 0 ]; do
    echo "seed $seed"
    build/fuzz/bin/fuzz_"$1" -seed="$seed" -max_total_time="$left" -max_len=1000 -timeout=60 -rss_limit_mb=2000 \
        -print_final_stats=1 -artifact_prefix="$kept/crashes/" "$kept/corpus" "tests/fuzz/corpus/$1" || true
    seed=$((seed + 1))
done
found=$(find "$kept/crashes" -type f | wc -l)
echo "$found crashes in $kept/crashes"
[ "$found" -eq 0 ]
