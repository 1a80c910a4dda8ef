#!/usr/bin/env bash
# Checks the tests by mutation of src/: how many small changes do they notice? Installs the Debian packages that are
# missing (as root or through sudo). A full run takes hours; it goes on where an earlier one was interrupted.
#
# usage: mutate.sh [--count N] [--seed S] [--room ROOM]... [--only ID]... [--jobs J] [--list] [--report] [--again]
#        mutate.sh --help explains the options
set -uo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

cd "$project_dir" || exit 1
install_missing "${build_packages[@]}" ccache lld
exec python3 -B scripts/mutate.py "$@"
