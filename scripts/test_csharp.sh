#!/usr/bin/env bash
# Builds the libraries and the .NET package, and tests the package with mono. Installs the Debian packages that are
# missing (as root or through sudo). The last line is "N passed, N failed"; a build that fails counts as one failure.
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# mono-mcs compiles, and patchelf lets the packed libraries find each other.
csharp_packages=(mono-mcs mono-runtime patchelf)

install_missing "${build_packages[@]}" "${csharp_packages[@]}"
if ! build_preset release KvReflashLib KvPlatform example_archive; then
    say "0 passed, 1 failed"
    exit 1
fi
python3 -B tests/csharp/run_tests.py --build build/release
