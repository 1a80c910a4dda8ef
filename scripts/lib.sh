# Shared by the scripts of this folder: source it, do not run it.
# shellcheck shell=bash

project_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
log_dir=$project_dir/build/logs
jobs=$(nproc 2>/dev/null || echo 2)
# Precompiled headers are no reason for ccache to give up.
export CCACHE_SLOPPINESS=pch_defines,time_macros

# shellcheck disable=SC2034  # the lists are for those who source this file
# Debian packages that building needs, the test programs included.
build_packages=(cmake ninja-build g++ python3 libboost1.81-dev libcli11-dev libgcrypt20-dev rapidjson-dev libgtest-dev libgmock-dev)
# shellcheck disable=SC2034
# What running the tests natively needs besides: for documents in JSON, for packages, wheels and what is linked with
# them, and for signatures by key files, agents and tokens.
test_packages=(python3-jsonschema python3-build python3-wheel binutils patchelf dpkg-dev file pkg-config openssh-client softhsm2 opensc)
# shellcheck disable=SC2034
# What building and testing for Windows needs besides.
windows_packages=(g++-mingw-w64-x86-64-posix libgcrypt-mingw-w64-dev libgpg-error-mingw-w64-dev googletest wine wine64)
# shellcheck disable=SC2034
# What the long gate needs besides.
gate_packages=(ccache clang clang-format clang-tidy cppcheck valgrind shellcheck doxygen gcc libbenchmark-dev
    libsimdjson-dev nlohmann-json3-dev)

say() { printf '%s\n' "$*"; }
die() { printf '%s\n' "$*" >&2; exit 1; }

is_installed() { [[ $(dpkg-query -W -f '${Status}' "$1" 2>/dev/null) == "install ok installed" ]]; }

# as_root COMMAND...: runs it as root, through sudo when we are not; status 126 when there is no way to.
as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif ! command -v sudo >/dev/null; then
        return 126
    elif [[ -t 0 ]]; then
        sudo "$@"
    else
        sudo -n "$@"
    fi
}

# install_missing PACKAGE...: installs those that are missing and says which; ends the script when that is impossible.
install_missing() {
    local missing=() package
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This is no Debian system. Nothing is installed; what is needed are the equivalents of: $*"
        return
    fi
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [[ ${#missing[@]} -eq 0 ]] && return
    say "Installing Debian packages: ${missing[*]}"
    mkdir -p "$log_dir"
    if as_root true 2>/dev/null &&
        as_root apt-get update >"$log_dir/install.log" 2>&1 &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" \
            >>"$log_dir/install.log" 2>&1; then
        return
    fi
    [[ -s $log_dir/install.log ]] && tail -n 20 "$log_dir/install.log" >&2
    die "The packages could not be installed. Install them as root and run this script again:
    apt-get update && apt-get install --no-install-recommends ${missing[*]}"
}

# scratch_folder MEGABYTES: makes a folder for scratch files, in memory where there is so much room, and prints its path.
# Whoever asks for it removes it.
scratch_folder() {
    local memory=/dev/shm free place=${TMPDIR:-/tmp}
    free=$(df --output=avail --block-size=1M "$memory" 2>/dev/null | tail -n 1)
    [[ -w $memory && ${free:-0} -ge $1 ]] && place=$memory
    place=$(mktemp -d "$place/kvreflash.XXXXXX") || return
    chmod 711 "$place" # tests run the tool as other users too
    printf '%s\n' "$place"
}

# logged NAME COMMAND...: runs it with its output in build/logs/NAME.log, which is shown when it fails.
logged() {
    local log=$log_dir/$1.log
    shift
    mkdir -p "$log_dir"
    "$@" >"$log" 2>&1 </dev/null && return
    say "FAILED: $*"
    say "The end of $log:"
    tail -n 60 "$log" | cut -c 1-400
    return 1
}

# build_preset PRESET [TARGET...]: configures it in build/PRESET and builds the targets (default: all).
build_preset() {
    local preset=$1 targets=("${@:2}") options=()
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cd "$project_dir" || return 1
    say "Building $preset (log: build/logs/build-$preset.log)"
    logged "configure-$preset" cmake --preset "$preset" "${options[@]}" &&
        logged "build-$preset" cmake --build --preset "$preset" --target "${targets[@]:-all}" --parallel "$jobs"
}
