"""What the tests of releases share: an archive that is sealed and signed with the stock tool, whoever is trusted, what
is expected of an update that is made or refused, and the messages of SSH (RFC 4251) that keys and signatures are."""

import base64
import hashlib
import json
import os
import shutil
import subprocess
from pathlib import Path
from typing import NamedTuple

from tool_runs import ScratchTest, arguments, run

SEALED_AT = "1790000000"
NAMESPACE = "kvreflash-archive"


def keygen(*arguments, **options):
    """Runs ssh-keygen; returns what it prints."""
    done = subprocess.run(["ssh-keygen", "-q", *map(str, arguments)], capture_output=True, check=False, **options)
    assert done.returncode == 0, done.stderr
    return done.stdout


def fingerprint_of(key):
    """The fingerprint of a private key's public half, as tools for keys show it."""
    return keygen("-l", "-f", f"{key}.pub").decode().split()[1]


def field(content):
    """A field of an SSH message: its length and the content."""
    return len(content).to_bytes(4, "big") + content


def mpint(value):
    """A field with a number that is not negative, as short as it can be."""
    return field(value.to_bytes(value.bit_length() // 8 + 1, "big") if value else b"")


def fields(message):
    """The fields of an SSH message."""
    found = []
    while message:
        size = int.from_bytes(message[:4], "big")
        found.append(message[4:4 + size])
        message = message[4 + size:]
    return found


def block(content):
    """A block as ssh-keygen writes it."""
    text = base64.b64encode(content).decode()
    lines = [text[begin:begin + 70] for begin in range(0, len(text), 70)]
    return "\n".join(["-----BEGIN SSH SIGNATURE-----", *lines, "-----END SSH SIGNATURE-----", ""]).encode()


def content_of(signatures):
    """What the only block has."""
    return base64.b64decode(b"".join(signatures.split(b"\n")[1:-2]))


class Signature(NamedTuple):
    """The parts of a signature."""
    key: bytes
    purpose: bytes
    reserved: bytes
    digest: bytes
    value: bytes

    MAGIC = b"SSHSIG\0\0\0\1"

    @classmethod
    def read(cls, signatures):
        content = content_of(signatures)
        assert content.startswith(cls.MAGIC)
        return cls(*fields(content[len(cls.MAGIC):]))

    def block(self, **parts):
        """The signature as a block, with other parts."""
        return block(self.MAGIC + b"".join(map(field, self._replace(**parts))))


def key_content(key):
    """What the file with the public half of a private key has in base64."""
    return base64.b64decode(Path(f"{key}.pub").read_text().split()[1])


def key_line(content):
    """A key as key files write it."""
    return f"{fields(content)[0].decode()} {base64.b64encode(content).decode()}"


def key_fingerprint(content):
    """As tools for keys show it."""
    return "SHA256:" + base64.b64encode(hashlib.sha256(content).digest()).decode().rstrip("=")


def unless_launched(test):
    """Of a test of what only files of the system itself can be, and of where it has them."""
    def wrapper(self):
        if arguments.launcher:
            self.skipTest("this is about the files of another system")
        test(self)
    return wrapper


def set_variable(name, value):
    """Sets a variable of the environment; None removes it."""
    if value is None:
        os.environ.pop(name, None)
    else:
        os.environ[name] = value


class ReleaseTest(ScratchTest):
    """A sealed and signed copy of the example archive, whose signer is trusted."""

    def setUp(self):
        if not shutil.which("ssh-keygen"):
            self.skipTest("there is no ssh-keygen")
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.trust = self.scratch / "trust"
        self.trust.mkdir()
        self.target = ["-t", "127.0.0.1", "--emulate", self.rack]
        self.temporary = self.scratch / "temporary"
        self.temporary.mkdir()
        self.set_environment(SOURCE_DATE_EPOCH=SEALED_AT)
        if not arguments.launcher:  # which may have its own services there
            self.set_environment(TMPDIR=self.temporary)

    def set_environment(self, **variables):
        """Sets variables of the environment until the test ends."""
        for name, value in variables.items():
            self.addCleanup(set_variable, name, os.environ.get(name))
            set_variable(name, str(value))

    def key(self, name="release", *kind):
        """The path of a private key of this name."""
        path = self.scratch / f"{name}.key"
        if not path.exists():
            keygen(*(kind or ("-t", "ed25519")), "-N", "", "-C", name, "-f", path)
        return path

    def public(self, key):
        return " ".join(Path(f"{key}.pub").read_text().split()[:2])

    def seal(self, code=0):
        done = run("seal", self.archive)
        self.assertEqual(done.code, code, done.errors)
        return done

    def sign(self, key=None, namespace=NAMESPACE, options=()):
        """Adds a signature to those that are there."""
        manifest = self.archive / "manifest.json"
        with open(manifest, "rb") as text:
            block = keygen("-Y", "sign", "-n", namespace, *options, "-f", key or self.key(), stdin=text)
        with open(f"{manifest}.sig", "ab") as signatures:
            signatures.write(block)

    def allow(self, *lines):
        (self.trust / "allowed_signers").write_text("".join(f"{line}\n" for line in lines))

    def release(self):
        self.seal()
        self.sign()
        self.allow(f"release@korvel {self.public(self.key())}")

    def pack(self):
        package = self.scratch / "release.kva"
        done = run("pack", self.archive, package)
        self.assertEqual((done.code, done.errors), (0, b""))
        return package

    def private_copies(self):
        """The names of those that are there, as far as the test knows where they would be."""
        return [path.name for path in self.temporary.glob("kvreflash-archive-*")]

    def update(self, *more, archive=None, trusts=True):
        trust = ["--trust", self.trust] if trusts else []
        return run("update", "-a", archive or self.archive, *self.target, *trust, *more)

    def assert_refused(self, why, *more, archive=None, trusts=True):
        """Every view says the same, and nothing was touched."""
        report, events = self.scratch / "r.json", self.scratch / "events"
        done = self.update("--preflight", "--verify", "--report", report, "--events", events, *more, archive=archive,
                           trusts=trusts)
        message = f"the firmware archive is not accepted: {why}"
        self.assertEqual(done.code, 3, done.errors)
        self.assertEqual(done.errors.decode().splitlines()[-1], f"kvreflash: {message}")
        self.assertIn(b"ERROR: The firmware archive is not accepted:\n", done.output)
        document = json.loads(report.read_text())
        self.assertEqual((document["failure"], document["message"]), ("archive", message))
        self.assertEqual(json.loads(events.read_text().splitlines()[-1])["message"], message)
        self.assertFalse((self.rack / "state").exists())
        self.assertEqual(self.private_copies(), [])

    def assert_updated(self, *more, archive=None, trusts=True):
        done = self.update("--verify", *more, archive=archive, trusts=trusts)
        self.assertEqual(done.code, 0, done.errors + done.output)
        self.assertTrue((self.rack / "state").exists())
        self.assertEqual(self.private_copies(), [])
        return done
