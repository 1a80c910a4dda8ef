#!/usr/bin/env bash
# The long gate: everything that can be checked, before something is handed on. Installs the Debian packages that are
# missing (as root or through sudo).
#
# usage: gate.sh [STAGE...]     default: all stages, in this order; the names are those of the table below
# shellcheck disable=SC2317  # the stages are called by their names
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

stages=(tests clang format house scripts tidy cppcheck valgrind packages csharp documentation sweeps limits fuzz coverage)

sources() {
    find include src platform tools tests fuzz bench examples -name '*.h' -o -name '*.cpp' | sort
}

# All tests, natively, under the sanitizers and as Windows programs: nothing else counts while one of them fails.
stage_tests() { scripts/test.sh all; }

# Each source on its own, which has to include what it uses; the benchmarks, too, which nothing else builds.
configure_clang() {
    logged configure-clang cmake -S . -B build/clang -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DKV_JOINT_BUILD=OFF -DKV_BENCH=ON
}

# A second compiler warns of other things, and what only one compiler takes is no C++.
stage_clang() {
    configure_clang && logged build-clang cmake --build build/clang --parallel "$jobs"
}

# One layout for all, so that differences show changes only.
stage_format() {
    local files
    mapfile -t files < <(sources)
    logged format clang-format --dry-run -Werror "${files[@]}"
}

# Layering, length of functions, platform conditionals: what no compiler and no formatter knows.
stage_house() { python3 -B scripts/check_house.py; }

# Scripts and recipes have no compiler that reads them first.
stage_scripts() {
    shellcheck -x scripts/*.sh .ci/run && python3 -B examples/make_archive.py --check examples/archive
}

# Mistakes that compile: lifetimes, copies, narrowing, missed cases.
stage_tidy() {
    configure_clang &&
        logged configure-tidy cmake -S . -B build/tidy -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ \
            -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON &&
        logged tidy tidy_all
}

# Test sources are looked at several at a time, as they are compiled: most of the time goes into the headers of the test
# library. What a test does on its paths it shows itself; the analyzer's walk would take longer than everything else. Its
# macros nest deep, and sources that are put together may hide names of each other. The example in C is left out,
# although a test compiles it as C++.
tidy_all() {
    local failed=0
    tidy_files clang "$project_dir/(src|platform|tools|fuzz)/.*\\.cpp\$" || failed=1
    tidy_files tidy "(/tests/.*\\.cxx|$project_dir/tests/.*\\.cpp)\$" "-checks=-clang-analyzer-*,-bugprone-suspicious-include,-readability-function-size" -extra-arg=-Wno-shadow || failed=1
    return "$failed"
}

# tidy_files BUILD PATTERN [ARGUMENT...]
tidy_files() {
    run-clang-tidy -quiet -p "build/$1" -j "$jobs" "${@:3}" "$2" 2>&1 |
        sed -e 's/\x1b\[[0-9;]*m//g' -e '/warnings generated\.$/d'
}

# A second opinion on the same. Parameters that are moved from are passed by value on purpose; clang-tidy knows them.
stage_cppcheck() {
    local room includes=(-I include -I platform/include)
    for room in platform/emulation/*/; do
        includes+=(-I "$room")
    done
    logged cppcheck cppcheck --std=c++20 --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
        --suppress=passedByValue --quiet -j "$jobs" "${includes[@]}" src platform tools fuzz
}

# Uninitialised memory is seen by none of the sanitizers that the tests run under.
stage_valgrind() {
    build_preset release kvreflash &&
        logged valgrind python3 -B tests/sessions/run_sessions.py --tool build/release/bin/kvreflash -j "$jobs" \
            --timeout 300 --launcher "valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite"
}

# The device access libraries are somebody else's: the product has to be built and tested against an installed platform
# as against the one that is built along with it, and to be built against one that cannot emulate, as theirs.
stage_packages() {
    local installed=$project_dir/build/installed-platform real=$project_dir/build/real-platform
    build_preset release && logged install-platform cmake --install build/release --prefix "$installed" &&
        build_external "$installed" build/external &&
        logged test-external ctest --test-dir build/external --parallel "$jobs" --output-on-failure &&
        logged real-platform make_real_platform "$installed" "$real" && build_external "$real" build/real &&
        python3 -B tests/packages/test_real_platform.py --tool build/real/bin/kvreflash --platform "$real"
}

# build_external PREFIX BUILD: the product against the platform that is installed there
build_external() {
    logged "configure-$(basename "$2")" cmake -S . -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DKV_PLATFORM=external "-DCMAKE_PREFIX_PATH=$1" &&
        logged "build-$(basename "$2")" cmake --build "$2" --parallel "$jobs"
}

# make_real_platform FROM TO: an installed platform as one of real targets would be, without what emulates
make_real_platform() {
    rm -rf "$2" && cp -r "$1" "$2" && rm "$2/include/KvPlatform/KvEmulation.h" &&
        sed -i '/KvPlatform_EMULATION/d' "$2"/lib*/cmake/KvPlatform/KvPlatformConfig.cmake
}

# The package for .NET has a compiler and a runtime of its own, which nothing else needs.
stage_csharp() { scripts/test_csharp.sh; }

# A document that tells a wrong command is worse than none, and the interface has no part that is not described.
stage_documentation() {
    mkdir -p build
    install_missing "${windows_packages[@]}" && logged doxygen doxygen docs/api/Doxyfile &&
        python3 -B scripts/documents.py
}

# Of the tests of the label "slow" the test command takes a sample; here every call of an update fails once, every
# allocation, and updates are killed at many moments: as shipped, and under the sanitizers, which see what is left behind.
# Through the tool all calls fail as shipped only, which takes ten minutes.
stage_sweeps() {
    build_preset release && KV_TOOL_SWEEP_SAMPLE=0 logged sweeps sweep release &&
        build_preset asan && logged sweeps-asan sweep asan
}

# sweep PRESET
sweep() {
    KV_SWEEP_STRIDE=1 KV_SWEEP_ALLOCATIONS=1000000 KV_KILL_MOMENTS=500 KV_STOP_MOMENTS=500 \
        KV_EVERY_BYTE=1 KV_EXCHANGE_MOMENTS=500 \
        ctest --test-dir "build/$1" -L slow \
            --no-tests=error --output-on-failure --timeout 3600 -j "$jobs"
}

# As much text as is read and a million entries: what the tests try is small enough to be quick.
stage_limits() {
    build_preset release &&
        logged limits env KV_LIMIT_ENTRIES=1000000 KV_LIMIT_MEGABYTES=255 python3 -B tests/tool/test_limits.py \
            "${tool_arguments[@]}"
}

# Bad input that nobody has thought of. Long runs are made by hand.
stage_fuzz() { scripts/fuzz.sh 20; }

# What no test reaches is not tested.
stage_coverage() { scripts/coverage.sh; }

tool_arguments=(--tool build/release/bin/kvreflash --archive build/release/examples/archive --rack examples/rack)
summary=()
failed=0

run_stage() {
    local began=$SECONDS verdict=ok
    say "== $1"
    "stage_$1" || { verdict=FAILED; failed=1; }
    summary+=("$(printf '%-10s %-6s %4d s' "$1" "$verdict" $((SECONDS - began)))")
}

cd "$project_dir" || exit 1
[[ $# -gt 0 ]] && stages=("$@")
for stage in "${stages[@]}"; do
    declare -F "stage_$stage" >/dev/null || die "There is no stage $stage."
done
install_missing "${build_packages[@]}" "${test_packages[@]}" "${gate_packages[@]}"
for stage in "${stages[@]}"; do
    run_stage "$stage"
done
say "== summary"
printf '%s\n' "${summary[@]}"
exit "$failed"
