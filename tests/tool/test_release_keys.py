#!/usr/bin/env python3
"""Signatures by whatever the stock tool signs with: files with keys of each kind, an agent, a software token."""

import json
import os
import re
import shlex
import shutil
import signal
import subprocess
from pathlib import Path

import tool_runs
from release_runs import NAMESPACE, ReleaseTest, fingerprint_of, keygen
from tool_runs import run

TOKEN_LIBRARY = Path("/usr/lib/softhsm/libsofthsm2.so")
PIN = "24680"


def done(*command, **options):
    """Runs a command that must succeed; returns what it prints."""
    process = subprocess.run(list(map(str, command)), capture_output=True, check=False, **options)
    assert process.returncode == 0, (command, process.stdout, process.stderr)
    return process.stdout.decode()


class KeyTest(ReleaseTest):
    """The example archive, sealed."""

    def setUp(self):
        super().setUp()
        self.seal()

    def need(self, *programs):
        missing = [program for program in programs if not shutil.which(program)]
        if missing:
            self.skipTest(f"there is no {missing[0]}")

    def sign_anew(self, key, *options):
        """The only signature is that of the key."""
        (self.archive / "manifest.json.sig").unlink(missing_ok=True)
        self.sign(key, options=options)

    def assert_installed(self, kind, fingerprint, public):
        """An update by who trusts this key, and what it says of the key; a stranger's key is called one."""
        self.allow(f"maker@korvel {public}")
        for trusts, seal, signer in ((True, "trusted", "maker@korvel"), (False, "signed-by-stranger", None)):
            report = self.scratch / "r.json"
            shutil.rmtree(self.rack / "state", ignore_errors=True)
            self.assert_updated("--report", report, trusts=trusts)
            release = json.loads(report.read_text())["release"]
            self.assertEqual((release["seal"], release["signer"], release["keyKind"], release["keyFingerprint"]),
                             (seal, signer, kind, fingerprint))

    def assert_stock_tool_agrees(self):
        """It finds the signature good, by the same file of signers."""
        with open(self.archive / "manifest.json", "rb") as text:
            keygen("-Y", "verify", "-n", NAMESPACE, "-I", "maker@korvel", "-f", self.trust / "allowed_signers", "-s",
                   self.archive / "manifest.json.sig", "-Overify-time=20260921141320Z", stdin=text)


class KeyFileTest(KeyTest):
    KINDS = {"ssh-ed25519": ("-t", "ed25519"), "ecdsa-sha2-nistp256": ("-t", "ecdsa", "-b", "256"),
             "ssh-rsa": ("-t", "rsa", "-b", "3072")}

    def test_each_kind_of_key_signs_with_each_digest(self):
        for kind, options in self.KINDS.items():
            key = self.key(kind, *options)
            for digest in ("sha512", "sha256"):
                with self.subTest(kind, digest=digest):
                    self.sign_anew(key, f"-Ohashalg={digest}")
                    self.assert_installed(kind, fingerprint_of(key), self.public(key))
                    self.assert_stock_tool_agrees()

    def test_a_long_rsa_key_signs(self):
        key = self.key("long", "-t", "rsa", "-b", "4096")
        self.sign_anew(key)
        self.assert_installed("ssh-rsa", fingerprint_of(key), self.public(key))

    def test_each_format_of_key_files_signs(self):
        for form in ("RFC4716", "PEM", "PKCS8"):
            with self.subTest(form):
                key = self.key(form, "-t", "ecdsa", "-b", "256", "-m", form)
                self.sign_anew(key)
                self.assert_installed("ecdsa-sha2-nistp256", fingerprint_of(key), self.public(key))

    def test_other_kinds_are_refused_by_their_names(self):
        rows = ((("-t", "ecdsa", "-b", "384"), "keys of the kind 'ecdsa-sha2-nistp384' are not taken"),
                (("-t", "ecdsa", "-b", "521"), "keys of the kind 'ecdsa-sha2-nistp521' are not taken"),
                (("-t", "rsa", "-b", "2048"), "RSA keys of 2048 bits are not taken: they must have 3072 to 16384"),
                (("-t", "rsa", "-b", "3064"), "RSA keys of 3064 bits are not taken: they must have 3072 to 16384"))
        for number, (options, why) in enumerate(rows):
            with self.subTest(" ".join(options)):
                key = self.key(f"other{number}", *options)
                self.sign_anew(key)
                self.allow(f"maker@korvel {self.public(key)}")
                self.assert_stock_tool_agrees()
                for trusts in (True, False):
                    self.assert_refused(f"the signature does not hold: signature 1: {why}", trusts=trusts)

    def test_a_certificate_is_not_taken_for_its_key(self):
        key, authority = self.key("maker"), self.key("authority")
        keygen("-s", authority, "-I", "maker", "-n", "maker@korvel", f"{key}.pub")
        agent = Agent(self)
        agent.add(key)
        self.sign_anew(f"{key}-cert.pub")
        self.allow(f"maker@korvel cert-authority {self.public(authority)}", f"maker@korvel {self.public(key)}")
        self.assert_stock_tool_agrees()
        for trusts in (True, False):
            self.assert_refused("the signature does not hold: signature 1: keys of the kind "
                                "'ssh-ed25519-cert-v01@openssh.com' are not taken", trusts=trusts)

    def test_the_commands_that_seal_prints_sign(self):
        printed = run("seal", self.archive).output.decode()
        first = re.search(r"^Sign with: (.*)$", printed, re.MULTILINE)[1]
        second = re.search(r"^A second signer adds a signature with: (.*)$", printed, re.MULTILINE)[1]
        keys = [self.key("first"), self.key("second")]
        for command, key in zip((first, second), keys):
            done("sh", "-c", command.replace("-f KEY", f"-f {shlex.quote(str(key))}"))
        for key in keys:
            self.allow(f"maker@korvel {self.public(key)}")
            shutil.rmtree(self.rack / "state", ignore_errors=True)
            self.assert_updated()
        self.assertEqual((self.archive / "manifest.json.sig").read_text().count("BEGIN SSH SIGNATURE"), 2)


class Agent:
    """An agent of its own, to which the programs that a test runs talk. It ends with the test."""

    def __init__(self, test):
        test.need("ssh-agent", "ssh-add")
        started = done("ssh-agent", "-s", "-a", test.scratch / "agent")
        test.addCleanup(os.kill, int(re.search(r"SSH_AGENT_PID=(\d+)", started)[1]), signal.SIGTERM)
        test.set_environment(SSH_AUTH_SOCK=test.scratch / "agent")

    def add(self, key):
        """From now on the agent alone has the key."""
        done("ssh-add", "-q", key)
        Path(key).unlink()

    def add_token(self, test):
        """Whatever keys are in the token."""
        ask = test.scratch / "ask"
        ask.write_text(f"#!/bin/sh\necho {PIN}\n")
        ask.chmod(0o700)
        done("ssh-add", "-q", "-s", TOKEN_LIBRARY,
             env={**os.environ, "SSH_ASKPASS": str(ask), "SSH_ASKPASS_REQUIRE": "force"})


class AgentTest(KeyTest):
    def test_an_agent_signs_with_each_kind_of_key(self):
        agent = Agent(self)
        for kind, options in KeyFileTest.KINDS.items():
            with self.subTest(kind):
                key = self.key(kind, *options)
                agent.add(key)
                self.sign_anew(f"{key}.pub")
                self.assert_installed(kind, fingerprint_of(key), self.public(key))
                self.assert_stock_tool_agrees()


class TokenTest(KeyTest):
    """A token in software, whose keys are made in it and never leave it."""

    def setUp(self):
        super().setUp()
        self.need("softhsm2-util", "pkcs11-tool")
        if not TOKEN_LIBRARY.exists():
            self.skipTest(f"there is no {TOKEN_LIBRARY}")
        tokens = self.scratch / "tokens"
        tokens.mkdir()
        configuration = self.scratch / "softhsm2.conf"
        configuration.write_text(f"directories.tokendir = {tokens}\nobjectstore.backend = file\nlog.level = ERROR\n")
        self.set_environment(SOFTHSM2_CONF=configuration)
        done("softhsm2-util", "--init-token", "--free", "--label", "release", "--pin", PIN, "--so-pin", PIN)

    def make_key(self, number, kind):
        done("pkcs11-tool", "--module", TOKEN_LIBRARY, "--token-label", "release", "--login", "--pin", PIN,
             "--keypairgen", "--key-type", kind, "--id", number, "--label", f"key{number}")

    def test_a_token_signs_through_an_agent(self):
        self.make_key("01", "rsa:3072")
        self.make_key("02", "EC:prime256v1")
        agent = Agent(self)
        agent.add_token(self)
        publics = keygen("-D", TOKEN_LIBRARY, "-e").decode().splitlines()
        self.assertEqual(sorted(public.split()[0] for public in publics), ["ecdsa-sha2-nistp256", "ssh-rsa"])
        for public in publics:
            kind = public.split()[0]
            with self.subTest(kind):
                key = self.scratch / f"token-{kind}"
                Path(f"{key}.pub").write_text(public + "\n")
                self.sign_anew(f"{key}.pub")
                self.assert_installed(kind, fingerprint_of(key), self.public(key))
                self.assert_stock_tool_agrees()


if __name__ == "__main__":
    tool_runs.main()
