#!/usr/bin/env bash
# Shows what kvreflash does: builds it, makes the example archive, and updates a copy of the example rack twice, in real
# time. Installs the Debian packages that are missing (as root or through sudo). Everything is made below build/.
set -euo pipefail

# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

demo_dir=$project_dir/build/demo

# The tool as a user would call it, with the command shown first.
show() {
    say
    say "\$ $*"
    "$@"
}

prepare() {
    install_missing "${build_packages[@]}"
    build_preset release kvreflash
    rm -rf "$demo_dir"
    mkdir -p "$demo_dir"
    python3 -B "$project_dir/examples/make_archive.py" "$project_dir/examples/archive" "$demo_dir/archive"
    cp -r "$project_dir/examples/rack" "$demo_dir/rack"
    say "The rack is a copy of examples/rack; what updates leave on it is kept in build/demo/rack/state."
}

prepare
cd "$project_dir/build"
tool=release/bin/kvreflash
show "$tool" update -a demo/archive -t 127.0.0.1 --emulate demo/rack
say
say "The same again: every element that was flashed is up to date now. Only network.ini is written once more, because"
say "the rack does not list that file."
show "$tool" update -a demo/archive -t 127.0.0.1 --emulate demo/rack
say
say "To go on, in $project_dir/build:"
go_on() { printf '  %-82s %s\n' "$1" "$2"; }
go_on "$tool --help" "what it can do"
go_on "$tool plan -a demo/archive -t 127.0.0.1 --emulate demo/rack" "what an update would do"
go_on "$tool update -f -a demo/archive -t 127.0.0.1 --emulate demo/rack" "update all again"
go_on "rm -r demo/rack/state" "the rack as it was"
say "Put a fault into demo/rack/target.json and see what an update makes of it: docs/rehearsing.md tells how."
