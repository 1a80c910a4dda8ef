#!/usr/bin/env bash
# Measures speed and memory: builds everything for release in build/bench, makes archives, racks and releases in
# build/bench/data (half a gigabyte for 100,000 entries, two for releases), runs kvreflash and what it is compared with
# in turn on one core, and prints the medians and how they stand to the goals. All samples go to
# build/bench/results.json. Exit code 0 only when every goal is met. The machine should have nothing else to do.
#
# usage: bench.sh [--sizes N,N,...] [--rounds R] [--charts FOLDER]     (default: 1,1000,10000,100000 and 7; no charts)
#        bench.sh parts [OPTION...]     times the parts of the library instead; options are those of Google Benchmark
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

build_dir=$project_dir/build/bench

build_bench() {
    local options=()
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    say "Building (log: build/logs/build-bench.log)"
    logged configure-bench cmake -S "$project_dir" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DKV_BENCH=ON -DKV_TESTS=OFF "${options[@]}" &&
        logged build-bench cmake --build "$build_dir" --target "$@" --parallel "$jobs"
}

install_missing "${build_packages[@]}" gcc libbenchmark-dev nlohmann-json3-dev libsimdjson-dev jq openssh-client \
    util-linux
if [[ ${1:-} == parts ]]; then
    build_bench kv_bench || exit 1
    exec taskset -c 0 "$build_dir/bin/kv_bench" "${@:2}"
fi
build_bench kvreflash references || exit 1
exec taskset -c 0 python3 -B "$project_dir/bench/measure.py" "$build_dir/bin" "$build_dir/data" \
    --results "$build_dir/results.json" "$@"
