"""What a case leaves behind: on its target, and of what the tool has taken from the service."""

import fcntl
import json

# What takes something, and what gives it back.
RELEASES = {
    "KvHIM_createFilter": "KvHIM_deleteFilter",
    "KvHIM_createDeviceHandle": "KvHIM_deleteDeviceHandle",
    "KvHIM_createFTClientHandle": "KvHIM_deleteFTClientHandle",
    "createRootHandleByIpAddressList": "deleteRootHandle",
    "lock": "unlock",
    "transferFile": "deleteRemoteFile",
}


def unreleased(trace):
    """The calls of a run's trace whose yield was not given back: each as often as that is so."""
    calls = [json.loads(line) for line in trace.splitlines()]
    done = [call["call"] for call in calls if not call.get("errors") and not call.get("status")]
    return [take for take, release in RELEASES.items() for _ in range(done.count(take) - done.count(release))]


def is_locked(path):
    """True when a process, of this system at least, holds the file's lock."""
    if not path.exists():
        return False
    with open(path, "rb") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            return True
    return False


def on_target(rack):
    """What no session may leave in the folder of a target."""
    files = [path for path in (rack / "state" / "transferred").rglob("*") if path.is_file()]
    return ["state/transferred"] * bool(files) + ["state/lock"] * is_locked(rack / "state" / "lock")
