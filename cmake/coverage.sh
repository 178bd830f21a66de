#!/bin/sh
# Lines and branches of each room that the tests reach: cmake/coverage.sh. Takes an hour.
# Builds both forms with counters in build/coverage-*, runs every test program whole, one at a time (Windows programs write
# their counters without a lock), and prints a table; build/coverage/index.html shows the lines. Tests that fail are named,
# and make the status 1; those that measure time are named alone.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
cmake/install-packages.sh wine wine64 fonts-wine fonts-liberation g++-mingw-w64-x86-64 g++ cmake ninja-build googletest gcovr
sh cmake/wine-setup.sh >/dev/null 2>&1
export BRILLATRIX_TEST_PATIENCE=10 # counters make everything slow
timed='ProxyUpdateTask.DraftsOfTheWholeViewFollowADrag|ProgramTest.CtrlCCancelsWithinATileAndLeavesNothing'
failed=
build() { # form cmake-option...
    form=$1
    shift
    cmake -B "build/coverage-$form" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_FLAGS=--coverage \
        -DCMAKE_CXX_FLAGS="--coverage -O1 -fprofile-update=atomic" -DCMAKE_EXE_LINKER_FLAGS=--coverage \
        -DCMAKE_SHARED_LINKER_FLAGS=--coverage -DCMAKE_MODULE_LINKER_FLAGS=--coverage "$@" >/dev/null
    cmake --build "build/coverage-$form" -- --quiet
    find "build/coverage-$form" -name '*.gcda' -delete
}
run() { # command...: what it says is kept in build/coverage-FORM/NAME.txt
    log=build/coverage-$form/$(basename "$1").txt
    [ "$1" != sh ] || log=build/coverage-$form/$(basename "$3").txt
    "$@" </dev/null >"$log" 2>&1 && return
    tests=$(sed -n 's/^\[  FAILED  \] \([^ ,]*\)[^ (]*$/\1/p' "$log" | tr -d '\r' | sort -u)
    echo "failed, see $log:" $tests
    [ -n "$tests" ] && ! echo "$tests" | grep -vxqE "$timed" || failed=1
}
count() { # gcov-program
    (cd "build/coverage-$form" && ctest -R '[.]fuzz[.]' --output-on-failure </dev/null) || failed=1
    gcovr -r . -f '(host|plugin|ui|render|web|engine|storage|diag)/' --gcov-executable "$1" --exclude-throw-branches \
        --json "build/coverage-$form.json" "build/coverage-$form"
    # gcovr does not join functions that begin at different lines in the two forms; lines are what counts here.
    python3 -c 'import json, sys; path = sys.argv[1]; told = json.load(open(path))
for file in told["files"]: file["functions"] = []
json.dump(told, open(path, "w"))' "build/coverage-$form.json"
}
build native
for program in build/coverage-native/bin/*_tests build/coverage-native/bin/preview_threads; do run "$program"; done
count gcov
build windows -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake"
for program in build/coverage-windows/bin/*_tests.exe; do run sh cmake/wine-run.sh "$program"; done
count x86_64-w64-mingw32-gcov

mkdir -p build/coverage
gcovr -r . -a build/coverage-native.json -a build/coverage-windows.json --html-details build/coverage/index.html \
    --csv build/coverage/files.csv
awk -F, '
    NR > 1 { split($1, part, "/"); room = part[1]; lines[room] += $2; reached[room] += $3; branches[room] += $5; taken[room] += $6 }
    END {
        for (room in lines)
            printf "%-8s %6d lines, %5.1f %% reached; %6d branches, %5.1f %% taken\n", room, lines[room],
                100 * reached[room] / lines[room], branches[room], branches[room] ? 100 * taken[room] / branches[room] : 100
    }' build/coverage/files.csv | sort
[ -z "$failed" ]
