#!/usr/bin/env bash
# Builds the project and runs its tests. Installs the Debian packages that are missing (as root or through sudo). The
# last line is "N passed, N failed", the sum over the runs; a build that fails counts as one failure. Exit code 0 only
# when tests ran and all of them passed.
#
# usage: test.sh            all tests, natively
#        test.sh ROOM...    those of some folders of tests/, or of fuzz, natively; builds only what they need
#        test.sh all        all tests natively, under the sanitizers, and as Windows programs under Wine
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

passed=0
failed=0
native_packages=("${build_packages[@]}" "${test_packages[@]}")

# All that have tests of their own: what the others share, in tests/support, has none.
list_rooms() {
    local file
    for file in "$project_dir"/tests/*/CMakeLists.txt; do
        basename "$(dirname "$file")"
    done | grep -vx support
    echo fuzz
}

# folder_of ROOM: where the build folder has what belongs to it
folder_of() {
    [[ $1 == fuzz ]] && echo fuzz || echo "tests/$1"
}

check_rooms() {
    local room rooms
    mapfile -t rooms < <(list_rooms)
    for room in "$@"; do
        [[ " ${rooms[*]} " == *" $room "* ]] && continue
        die "There is no room $room. The rooms are: ${rooms[*]}
Without a room all tests run natively; \"all\" alone stands for all tests in every way."
    done
}

# prepared COMMAND...: what fails before there are tests to run counts as one failure.
prepared() {
    "$@" && return
    failed=$((failed + 1))
    return 1
}

# Not in this shell, which install_missing ends when it fails.
install_packages() { (install_missing "$@"); }

# run_tests NAME PRESET FOLDER [LAUNCHER...]: runs the tests of a folder of the build and adds the results to the sums.
# The launcher runs ctest.
run_tests() {
    local name=$1 build=$project_dir/build/$2 folder=$3 launcher=("${@:4}") results counts=(0 1)
    local report=$log_dir/test-$name.xml
    say "Testing $name (log: build/logs/test-$name.log)"
    rm -rf "$report" "$build/reports"
    "${launcher[@]}" ctest --test-dir "$build/$folder" --output-on-failure --timeout 300 -j "$jobs" \
        --output-junit "$report" >"$log_dir/test-$name.log" 2>&1 </dev/null
    results=$(python3 -B "$project_dir/scripts/test_report.py" "$report" "$build/reports")
    say "$results"
    [[ $results =~ ([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]] && counts=("${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}")
    passed=$((passed + counts[0]))
    failed=$((failed + counts[1]))
}

# test_preset PRESET [LAUNCHER...]
test_preset() {
    prepared build_preset "$1" && run_tests "$1" "$1" . "${@:2}"
}

# test_rooms ROOM...
test_rooms() {
    local room targets=()
    for room in "$@"; do
        targets+=("$(folder_of "$room")/all")
    done
    prepared build_preset release "${targets[@]}" || return
    for room in "$@"; do
        run_tests "$room" release "$(folder_of "$room")"
    done
}

# What starts Wine. Where the heap happens to lie on an address that Wine needs, which is so once in some thousand starts,
# a program ends with 1 and without a word; without random addresses it never lies there.
wine_runs=
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
    wine_runs=yes
}

clean_up() {
    [[ -z $wine_runs ]] || wineserver -k
    rm -rf "$TMPDIR"
}

test_in_every_way() {
    test_preset release
    test_preset asan
    prepared prepare_wine && test_preset windows "${steady[@]}"
}

# On a disk much of the time goes into what tests write and throw away. What they leave behind goes too.
TMPDIR=$(scratch_folder 1024) || exit 1
export TMPDIR
trap clean_up EXIT
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1
if [[ $* == all ]]; then
    # Who tests in every way does so again and again: what has not changed need not be compiled each time.
    prepared install_packages "${native_packages[@]}" "${windows_packages[@]}" ccache && test_in_every_way
elif [[ $# -gt 0 ]]; then
    check_rooms "$@"
    prepared install_packages "${native_packages[@]}" && test_rooms "$@"
else
    prepared install_packages "${native_packages[@]}" && test_preset release
fi
say "$passed passed, $failed failed"
[[ $failed -eq 0 && $passed -gt 0 ]]
