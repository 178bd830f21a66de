#!/bin/sh
# Fuzzes a target: tests/fuzz/run.sh TARGET SECONDS
# Targets that need no Windows with libFuzzer under AddressSanitizer and UndefinedBehaviorSanitizer (needs clang); the
# others as seeded runs of the Windows build, in processes of 60 seconds. Goes on behind a crash or a hang; the cases that
# crashed and what was learnt are kept in build/fuzz/TARGET. A crash's case belongs into tests/fuzz/corpus/TARGET once it
# is mended. Again: build/windows-x64/bin/fuzz_TARGET.exe build/fuzz/TARGET/crashes 0
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$root"
sort() { sed -n "s/^ *brillatrix_\(windows_\)*fuzz($1 .*/\1 /p" tests/fuzz.cmake; }
[ $# -eq 2 ] && [ -n "$(sort "$1")" ] || { sed -n '2,6s/^# //p' "$0" >&2; exit 2; }
kept=build/fuzz/$1
end=$(($(date +%s) + $2))

if [ "$(sort "$1")" = " " ]; then
    [ -f build/fuzz/build.ninja ] || cmake --preset fuzz >/dev/null
    cmake --build build/fuzz --target fuzz_targets -- --quiet
    one_round() {
        build/fuzz/bin/fuzz_"$1" -seed="$first" -max_total_time="$left" -max_len=1000 -timeout=60 -rss_limit_mb=2000 \
            -print_final_stats=1 -artifact_prefix="$kept/crashes/" "$kept/corpus" "tests/fuzz/corpus/$1" || true
        first=$((first + 1))
    }
else
    [ -f build/windows-x64/build.ninja ] || cmake --preset windows-x64 >/dev/null
    cmake --build build/windows-x64 --target fuzz_"$1" -- --quiet
    sh cmake/wine-setup.sh >/dev/null 2>&1
    seeded() { BRILLATRIX_TEST_LONG=0 sh cmake/wine-run.sh "build/windows-x64/bin/fuzz_$name.exe" "tests/fuzz/corpus/$name" "$@"; }
    one_round() {
        name=$1
        seeded 1000000 "$first" $((left < 60 ? left : 60)) >"$kept/output" 2>&1 </dev/null || true
        if grep -aq 'runs held' "$kept/output"; then
            tail -1 "$kept/output"
            first=$((first + 1000000))
            return
        fi
        last=$(grep -aoE '^(run|file) [0-9]+' "$kept/output" | tail -1)
        grep -aE 'NOT SO|HANGS|Unhandled|Failure' "$kept/output" | tail -3
        echo "CRASH at ${last:-the start}"
        cp "$kept/output" "$kept/${last:-start}.txt"
        case $last in
        run*)
            seeded save "${last#run }" "$kept/crashes/${last#run }" </dev/null
            first=$((${last#run } + 1))
            ;;
        *)
            exit 1 # each round begins with the corpus
            ;;
        esac
    }
fi
mkdir -p "$kept/corpus" "$kept/crashes"
first=$(date +%s)
while left=$((end - $(date +%s))); [ "$left" -gt 0 ]; do
    echo "seed $first"
    one_round "$1"
done
found=$(find "$kept/crashes" -type f | wc -l)
echo "$found crashes in $kept/crashes"
[ "$found" -eq 0 ]
