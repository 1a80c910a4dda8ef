#!/usr/bin/env bash
# Looks for inputs that break what the fuzzers of fuzz/ check. Builds them with clang in build/fuzz and runs them, two at
# a time at most. What they learn is kept in build/fuzz/corpus, and each input that breaks something in
# build/fuzz/artifacts. Exit code 1 when there is one.
#
# usage: fuzz.sh SECONDS [RUNS [FUZZER...]]     a fuzzer ends after SECONDS or RUNS executions (default: no limit);
#                                               FUZZER: archive_description, plan, ... (default: all)
# environment: KV_FUZZ_JOBS     how many run at a time (default: 2, or 1 on a single core)
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

build_dir=$project_dir/build/fuzz

# Longest input of a fuzzer in bytes: longer ones say nothing new.
longest_input() {
    case $1 in
    error_report) echo 300 ;;
    filter_list | text_conversion | version_text) echo 128 ;;
    bitstream_header) echo 256 ;;
    image_header) echo 1100 ;;
    plan | archive_description | package | run_journal | saved_plan) echo 8192 ;;
    target_description) echo 32768 ;;
    *) echo 4096 ;;
    esac
}

build_fuzzers() {
    local options=()
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    say "Building the fuzzers (log: build/logs/build-fuzz.log)"
    logged configure-fuzz cmake -S "$project_dir" -B "$build_dir" -G Ninja -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O2 -g1" -DKV_FUZZ=ON -DKV_TESTS=OFF "${options[@]}" &&
        logged build-fuzz cmake --build "$build_dir" --target fuzzers --parallel "$jobs"
}

# collect_inputs FUZZER: what is kept in the project joins what earlier runs have learnt.
collect_inputs() {
    local corpus=$build_dir/corpus/$1 seed number=0
    mkdir -p "$corpus" "$build_dir/artifacts"
    cp -u "$project_dir/fuzz/corpus/$1/"* "$corpus/"
    while IFS= read -r seed; do
        [[ -n $seed ]] && cp -u "$project_dir/$seed" "$corpus/seed-$((++number))"
    done <"$build_dir/fuzz/$1.seeds"
}

# run_fuzzer NAME: leaves its output in build/logs/fuzz-NAME.log and a line of the table in build/fuzz/NAME.row.
run_fuzzer() {
    local name=$1 log=$log_dir/fuzz-$1.log verdict=ok
    collect_inputs "$name"
    "$build_dir/bin/${name}_fuzzer" -max_total_time="$seconds" -runs="$runs" -timeout=10 -rss_limit_mb=2048 \
        -entropic=0 -max_len="$(longest_input "$name")" -dict="$project_dir/fuzz/dictionaries/$name.dict" -print_final_stats=1 \
        -artifact_prefix="$build_dir/artifacts/$name-" "$build_dir/corpus/$name" >"$log" 2>&1 </dev/null ||
        verdict=FAILED
    write_row "$name" "$verdict" "$log" >"$build_dir/$name.row"
}

# write_row NAME VERDICT LOG
write_row() {
    local executed rate took features
    executed=$(sed -n 's/^stat::number_of_executed_units: *//p' "$3")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$3")
    took=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$3")
    features=$(sed -n 's/.* ft: \([0-9]*\) .*/\1/p' "$3" | tail -n 1)
    # A run without executions has looked at nothing.
    [[ $2 == ok && ${executed:-0} -gt 0 ]] || set -- "$1" FAILED "$3"
    printf '%-20s %12s %8s %8s %9s  %s\n' "$1" "${executed:--}" "${took:--}" "${rate:--}" "${features:--}" "$2"
}

report() {
    local name failed=0
    printf '%-20s %12s %8s %8s %9s  %s\n' fuzzer executions seconds "per s" features result
    for name in "$@"; do
        cat "$build_dir/$name.row"
        grep -q ' ok$' "$build_dir/$name.row" && continue
        failed=1
        say "    From build/logs/fuzz-$name.log:"
        grep -E '^(Broken property|==[0-9]+==|SUMMARY|artifact_prefix|    #[0-9]+ )|runtime error|: No such file' \
            "$log_dir/fuzz-$name.log" | head -n 30 | cut -c 1-200 | sed 's/^ */    /'
    done
    return "$failed"
}

[[ ${1:-} =~ ^[0-9]+$ && ${2:-1} =~ ^-?[0-9]+$ ]] || die "usage: fuzz.sh SECONDS [RUNS [FUZZER...]]"
seconds=$1
runs=${2:--1}
fuzzers=("${@:3}")
install_missing "${build_packages[@]}" clang libclang-rt-14-dev
if [[ ${#fuzzers[@]} -eq 0 ]]; then
    mapfile -t fuzzers < <(basename -s .dict -a "$project_dir"/fuzz/dictionaries/*.dict)
fi
for name in "${fuzzers[@]}"; do
    [[ -f $project_dir/fuzz/dictionaries/$name.dict ]] || die "There is no fuzzer $name."
done
build_fuzzers || exit 1

# Scratch files that a broken run leaves go too.
TMPDIR=$(scratch_folder 16) || exit 1
trap 'rm -rf "$TMPDIR"' EXIT
export TMPDIR KV_TIME_SCALE=0 UBSAN_OPTIONS=print_stacktrace=1
# Little memory is held back from being used again: new pages cost more than most executions.
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:quarantine_size_mb=8:malloc_context_size=8

at_once=${KV_FUZZ_JOBS:-$((jobs < 2 ? jobs : 2))}
rm -f "$build_dir"/*.row
say "Fuzzing for $seconds s each (logs: build/logs/fuzz-*.log)"
for name in "${fuzzers[@]}"; do
    while [[ $(jobs -rp | wc -l) -ge $at_once ]]; do
        wait -n
    done
    run_fuzzer "$name" &
done
wait
report "${fuzzers[@]}"
