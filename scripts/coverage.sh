#!/usr/bin/env bash
# Measures how much of src/ the tests reach: builds with counters in build/coverage, runs all tests natively, and prints
# the coverage of each file and every line that no test reaches, with the reason that uncovered-lines.txt gives for it.
# Branches that only exceptions take do not count. Exit code 0 only when the tests pass, at least 98 % of the lines and
# 90 % of the branches are reached, and every line that is not has a reason.
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

build=$project_dir/build/coverage

configure() {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKV_COVERAGE=ON -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
}

# Notes of sources that are gone make gcovr fail, or wait for ever.
remove_old_notes() {
    find "$build" -name '*.gcno' | while read -r notes; do
        [[ -e ${notes%.gcno}.gcda ]] || rm "$notes"
    done
}

# Processes whose files must not grow cannot write their counters and spoil them for all others. What a test runs as
# another user cannot write them, and says so: KV_MEASURES_COVERAGE lets such a test be skipped.
run_tests() {
    find "$build" -name '*.gcda' -delete
    KV_MEASURES_COVERAGE=1 KV_SWEEP_STRIDE=8 ctest --test-dir "$build" --timeout 600 -j "$jobs" --output-on-failure -E '^tool\.(interrupt|outgoing-files|process)$'
}

measure() {
    remove_old_notes
    gcovr --root "$project_dir" --filter 'src/' --exclude-unreachable-branches \
        -j "$jobs" --json "$build/coverage.json" "$build"
}

install_missing "${build_packages[@]}" "${test_packages[@]}" ccache gcovr
cd "$project_dir" || exit 1
logged coverage-configure configure && logged coverage-build cmake --build "$build" --parallel "$jobs" &&
    logged coverage-tests run_tests && logged coverage-measure measure || exit 1
python3 -B scripts/coverage_report.py "$build/coverage.json" scripts/uncovered-lines.txt
