#!/bin/sh
# clang-tidy and cppcheck over our own sources. Not part of ./test: it takes minutes. lint.sh [FILE...]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
cmake/install-packages.sh clang-tidy-14 cppcheck
files="${*:-$(git ls-files 'engine/*.cpp' 'render/*.cpp' 'plugin/*.cpp' 'storage/*.cpp' 'diag/*.cpp' 'host/*.cpp' 'ui/*.cpp' 'web/*.cpp')}"
gcc=/usr/lib/gcc/x86_64-w64-mingw32/12-posix
windows="--target=x86_64-w64-mingw32 -nostdinc++ -isystem $gcc/include/c++ -isystem $gcc/include/c++/x86_64-w64-mingw32
    -isystem /usr/x86_64-w64-mingw32/include -DWIN32_LEAN_AND_MEAN -DNOMINMAX -D_WIN32_WINNT=0x0601"
for file in $files; do
    case "$file" in
    engine/InitializationTask.cpp | engine/SystemThreads.cpp | plugin/* | web/* | storage/* | diag/* | host/* | ui/*) target=$windows ;;
    *) target="" ;;
    esac
    # shellcheck disable=SC2086  # lists of flags
    clang-tidy-14 --quiet --warnings-as-errors='*' "$file" -- -std=c++20 -I. -Wno-multichar $target 2>/dev/null
done
# shellcheck disable=SC2086
cppcheck --quiet --std=c++20 --language=c++ --platform=win64 --library=windows --inline-suppr --error-exitcode=1 \
    --enable=warning,performance,portability --suppress=missingIncludeSystem -I. $files
echo "lint: clean"
