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
    ln -s ../release/bin/kvreflash "$demo_dir/kvreflash"
    say "The rack is a copy of examples/rack; what updates leave on it is kept in its folder state."
}

prepare
cd "$demo_dir"
PATH=$demo_dir:$PATH
export XDG_STATE_HOME=$demo_dir/state # nothing is written outside of build/
tool=kvreflash
show "$tool" update -a archive -t 127.0.0.1 --emulate rack
say
say "The same again: every element that was flashed is up to date now. Only network.ini is written once more, because"
say "the rack does not list that file."
show "$tool" update -a archive -t 127.0.0.1 --emulate rack
say
rm -r rack/state
say "The rack is what it was again. To go on, after: cd $demo_dir && export PATH=\$PWD:\$PATH"
go_on() { printf '  %-62s %s\n' "$1" "$2"; }
go_on "$tool --help" "what it can do"
go_on "$tool plan -a archive -t 127.0.0.1 --emulate rack" "what an update would do"
go_on "$tool update -f -a archive -t 127.0.0.1 --emulate rack" "update all again"
go_on "rm -r rack/state" "the rack as it was"
say "Put a fault into rack/target.json and see what an update makes of it: docs/rehearsing.md describes how."
