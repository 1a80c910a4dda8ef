#!/usr/bin/env python3
"""Checks an archive, plans, updates a target with progress and verifies it.

usage: update.py ARCHIVE HOST [EMULATED_TARGET]

With a folder of an emulated target HOST is its address. Ctrl-C asks the update to end.
"""

import sys

import kvreflash
from kvreflash import EventKind


def check(folder):
    """Prints what is wrong with an archive; false if it is refused."""
    with kvreflash.Archive(folder) as archive:
        findings = archive.check()
    for finding in findings:
        print(f"{finding.severity.word}: {finding.message}")
    return not any(finding.severity == kvreflash.Severity.ERROR for finding in findings)


def show_plan(plan):
    print(f"{len(plan.changes)} of {len(plan.elements)} elements are updated")
    for element in plan.changes:
        print(f"  {element.display_name}: {element.version} -> {element.available_version}")


def show_event(event):
    if event.kind == EventKind.PHASE and event.value != kvreflash.NO_PHASE:
        print(f"Phase {event.value}", flush=True)
    elif event.kind == EventKind.PROGRESS:
        print(f"  {event.value} %", flush=True)


def update(archive, host):
    with kvreflash.Session(archive=archive, target=host, watch_files=True, on_event=show_event) as session:
        show_plan(session.prepare())
        session.preflight()
        session.run()
        verification = session.verify()
        print(f"Verified: {'yes' if verification.succeeded else 'no'}")
        verification.raise_for_failure()


def main(arguments):
    if len(arguments) not in (2, 3):
        print(__doc__.split("\n")[2], file=sys.stderr)
        return 64
    archive, host = arguments[:2]
    try:
        if len(arguments) > 2:
            kvreflash.emulation.serve(arguments[2])
        if not check(archive):
            return 3
        update(archive, host)
    except kvreflash.OperationFailed as failure:
        print(f"{failure.failure.word}: {failure.message}", file=sys.stderr)
        return failure.exit_code
    except kvreflash.KvReflashError as error:
        print(error.message, file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("ended on request", file=sys.stderr)
        return 7
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
