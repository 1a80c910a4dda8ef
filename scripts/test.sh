#!/usr/bin/env bash
# Builds the project and runs all its tests: natively, under the sanitizers, and as Windows programs under Wine. Installs
# the Debian packages that are missing (as root or through sudo). The last line is "N passed, N failed", the sum over the
# runs; a build that fails counts as one failure. Exit code 0 only when tests ran and all of them passed.
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

passed=0
failed=0

# run_tests PRESET [LAUNCHER...]: adds its results to the sums. The launcher runs ctest.
run_tests() {
    local preset=$1 launcher=("${@:2}") report=$log_dir/test-$1.xml reports=$project_dir/build/$1/reports results counts=(0 1)
    if ! build_preset "$preset"; then
        failed=$((failed + 1))
        return
    fi
    say "Testing $preset (log: build/logs/test-$preset.log)"
    rm -rf "$report" "$reports"
    "${launcher[@]}" ctest --test-dir "$project_dir/build/$preset" --output-on-failure --timeout 300 -j "$jobs" --output-junit "$report" \
        >"$log_dir/test-$preset.log" 2>&1 </dev/null
    results=$(python3 -B "$project_dir/scripts/test_report.py" "$report" "$reports")
    say "$results"
    [[ $results =~ ([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]] && counts=("${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}")
    passed=$((passed + counts[0]))
    failed=$((failed + counts[1]))
}

# What starts Wine. Where the heap happens to lie on an address that Wine needs, which is so once in some thousand starts,
# a program ends with 1 and without a word; without random addresses it never lies there.
steady=()
setarch --addr-no-randomize true 2>/dev/null && steady=(setarch --addr-no-randomize)

# Wine without a display, without messages of its own, and without the user's settings. A program that waits for input
# until the end keeps its services running: the first of the tests would otherwise start them with its own standard
# error, which then stays open until they end, and a program that starts while they end fails.
prepare_wine() {
    export WINEDEBUG=-all WINEPREFIX=$project_dir/build/wine
    local input=$WINEPREFIX/input
    mkdir -p "$WINEPREFIX"
    logged wine env DISPLAY= "${steady[@]}" wineboot --init || return 1
    rm -f "$input"
    mkfifo "$input"
    "${steady[@]}" wine cmd <>"$input" >/dev/null 2>&1 &
    trap 'wineserver -k' EXIT
}

install_missing "${build_packages[@]}" "${windows_packages[@]}"
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1
run_tests release
run_tests asan
if prepare_wine; then
    run_tests windows "${steady[@]}"
else
    failed=$((failed + 1))
fi
say "$passed passed, $failed failed"
[[ $failed -eq 0 && $passed -gt 0 ]]
