#!/usr/bin/env python3
"""Runs the commands of the documents: every block of the language sh, as a script of its own, in the project's folder;
and those of the language "console shell" one after the other, in a copy of build/demo, with what each of them prints.
The examples of the tool alone, the blocks of the language console, are tests (tests/tool/test_examples.py).

usage: documents.py [DOCUMENT...]     default: all documents

Exit code 1 when a command fails, or prints something else.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
FOLDERS = ("docs", "tests", "bench", "fuzz", "examples")
DEMO = PROJECT / "build/demo"
# Nothing waits, and nothing is written into the journal of who runs this.
ENVIRONMENT = {"KV_TIME_SCALE": "0", "XDG_STATE_HOME": str(PROJECT / "build/documents-state")}

# The language of blocks in which a document has commands of any programs, each behind a prompt.
SHELL = "console shell"
EXIT_CODE = re.compile(r"# exit code (\d+)$")

# Commands that are not run from here, and why.
NOT_RUN = {
    "scripts/test.sh": "a part of a stage of the gate",
    "scripts/test.sh all": "a stage of the gate",
    "scripts/gate.sh": "runs this script",
    "scripts/gate.sh format house tidy": "stages of the gate",
    "scripts/coverage.sh": "a stage of the gate",
    "scripts/fuzz.sh 20": "a stage of the gate",
    "scripts/fuzz.sh 900 10000000": "takes hours",
    "scripts/mutate.sh": "takes hours",
    "scripts/mutate.sh --room planning --count 50": "takes half an hour",
    "scripts/mutate.sh --report": "needs a run of scripts/mutate.sh",
    "ctest --test-dir build/release": "a stage of the gate",
    "scripts/bench.sh": "needs the machine for itself",
    "scripts/bench.sh parts": "needs the machine for itself",
    "scripts/bench.sh --charts docs/performance": "changes the project",
    "KV_LIMIT_ENTRIES=1000000 KV_LIMIT_MEGABYTES=255 python3 -B tests/tool/test_limits.py "
    "--tool build/release/bin/kvreflash --archive build/release/examples/archive --rack examples/rack":
        "a stage of the gate",
    "apt-get install ./build/packages/kvreflash_1.1.0_amd64.deb": "changes the machine; tests install it elsewhere",
    "cp -r /usr/share/doc/kvreflash/examples /tmp/kvreflash-examples": "needs the installed package",
    "cd /tmp/kvreflash-examples && kvreflash update -a archive -t 127.0.0.1 --emulate rack": "needs the installed package",
}


@dataclass
class Block:
    """A fenced block of a document."""
    document: Path
    line: int
    language: str
    text: str

    def __str__(self):
        return f"{self.document.relative_to(PROJECT)}:{self.line}"


def documents():
    """All documents of the project."""
    return [PROJECT / "README.md", PROJECT / "CHANGELOG.md",
            *(path for folder in FOLDERS for path in sorted((PROJECT / folder).rglob("*.md")))]


def blocks_of(document):
    """The fenced blocks of a document, in their order."""
    text = document.read_text(encoding="utf-8")
    return [Block(document, text.count("\n", 0, match.start()) + 1, match.group(1), match.group(2))
            for match in re.finditer(r"^```(.*)\n((?:.*\n)*?)```$", text, re.MULTILINE)]


def commands_of(block):
    """The commands of a block of the language sh, each on one line and without its comment."""
    lines = re.sub(r"\\\n\s*", "", block.text).splitlines()
    return [command for command in (re.sub(r"(^|\s+)# .*", "", line) for line in lines) if command]


def run(block):
    """Runs the block and returns whether its commands succeed; None when it has nothing to run."""
    commands = [command for command in commands_of(block) if command not in NOT_RUN]
    if not commands:
        return None
    # Not by "bash -e", for which the first half of "A && B" may fail.
    script = "\n".join(f"{{ {command}\n}} || exit 1" for command in commands)
    print(f"{block}: {'; '.join(commands)}", flush=True)
    began = time.monotonic()
    with tempfile.TemporaryFile() as output:
        done = subprocess.run(["bash", "-o", "pipefail", "-c", script], cwd=PROJECT, check=False,
                              env={**os.environ, **ENVIRONMENT}, stdin=subprocess.DEVNULL, stdout=output,
                              stderr=subprocess.STDOUT)
        print(f"  {'ok' if done.returncode == 0 else 'FAILED'}, {time.monotonic() - began:.0f} s", flush=True)
        if done.returncode != 0:
            output.seek(0)
            sys.stdout.write(output.read().decode("utf-8", "replace")[-4000:])
    return done.returncode == 0


def as_typed(document):
    """The commands of a document's examples, as somebody types them who follows it from its beginning."""
    blocks = blocks_of(document)
    begin = next(block for block in blocks if block.text.startswith("cd build/demo"))
    examples = next(block for block in blocks if block.language == "console")
    typed = [line[2:] for line in examples.text.splitlines() if line.startswith("$ ")]
    return Block(document, examples.line, "sh", begin.text + "".join(f"{line}\n" for line in typed))


def examples_of(block):
    """[(command, lines of output)] of a block with prompts."""
    examples = []
    for line in re.sub(r"\\\n\s*", "", block.text).splitlines():
        if line.startswith("$ "):
            examples.append((line[2:], []))
        else:
            examples[-1][1].append(line)
    return examples


def pattern_of(lines):
    """Matches these lines, in which "..." stands for any text, and as a line for any lines. No lines match everything."""
    if not lines:
        return re.compile(".*", re.DOTALL)
    parts = ["(?:.*\n)*?" if line == "..." else ".*".join(map(re.escape, line.rstrip().split("..."))) + "\n"
             for line in lines]
    return re.compile("".join(parts) + "\n*")


def works(command, expected, folder):
    """Whether the command, typed in this folder, ends and prints as the document says."""
    print(f"  $ {command}", flush=True)
    done = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=folder, check=False, stdin=subprocess.DEVNULL,
                          capture_output=True,
                          env={**os.environ, **ENVIRONMENT, "PATH": f"{DEMO}:{os.environ['PATH']}"})
    lines = (done.stdout + done.stderr).decode("utf-8", "replace").splitlines()
    output = "".join(f"{line.rstrip()}\n" for line in lines)
    code = EXIT_CODE.search(command)
    if done.returncode == (int(code.group(1)) if code else 0) and pattern_of(expected).fullmatch(output):
        return True
    print(f"  FAILED, exit code {done.returncode}\n{output}", flush=True)
    return False


def follow(document):
    """Types what a document has in blocks of the language SHELL, in their order, in one folder with the examples. Returns
    whether all of it works; None when there is nothing."""
    examples = [example for block in blocks_of(document) if block.language == SHELL for example in examples_of(block)]
    if not examples:
        return None
    print(f"{document.name}: {len(examples)} commands, one after the other", flush=True)
    with tempfile.TemporaryDirectory() as scratch:
        folder = Path(scratch)
        for name in ("archive", "rack"):
            shutil.copytree(DEMO / name, folder / name, ignore=shutil.ignore_patterns("state"))
        return all(works(command, expected, folder) for command, expected in examples)


def main(names):
    chosen = [Path(name).resolve() for name in names] or documents()
    results = [run(block) for document in chosen for block in blocks_of(document) if block.language == "sh"]
    readme = PROJECT / "README.md"
    if readme in chosen:
        results.append(run(as_typed(readme)))
    results += [follow(document) for document in chosen]
    failed = results.count(False)
    print(f"{results.count(True)} blocks and documents with prompts worked, {failed} failed")
    return 1 if failed or True not in results else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
