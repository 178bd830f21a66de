#!/bin/sh
# Real drags of sliders on photos of 24 and 100 megapixels, fitted and at 100 %, with few and many lights, a move
# every 8 and 16 ms. Builds what it needs; about fifteen minutes, two with --short (one slider).
#   bench/drag.sh BUILD_FOLDER [--short] [--processors N]
set -eu
build=$1
shift
slider=-1 processors=
while [ $# -gt 0 ]; do
    case $1 in
    --short) slider=2 ;;
    --processors) shift && processors=$1 ;;
    esac
    shift
done
top=$(cd "$(dirname "$0")/.." && pwd)
cmake --build "$build" --target drag_bench >/dev/null
run="$top/cmake/wine-run.sh $build/bin/drag_bench.exe"
[ -z "$processors" ] || run="taskset -c 0-$((processors - 1)) $run"
uptime
for megapixels in 24 100; do
    for lights in 50 2000; do
        for zoom in 0 100; do
            for every in 8 16; do
                $run --megapixels $megapixels --lights $lights --zoom $zoom --every $every --slider $slider </dev/null
            done
        done
    done
done
uptime
