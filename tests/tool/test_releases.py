#!/usr/bin/env python3
"""Releases from a folder of files to the target: sealed, signed with the stock tool, packed, verified before anything is
used, and refused for whatever is not as its maker has released it."""

import hashlib
import json
import os
import shutil
import subprocess
import threading

import tool_runs
from release_runs import NAMESPACE, ReleaseTest, fingerprint_of, unless_launched
from tool_runs import arguments, in_posix_quotes, run


class SealTest(ReleaseTest):
    def test_the_manifest_lists_every_file(self):
        (self.archive / "sub").mkdir()
        (self.archive / "sub" / "notes.txt").write_text("notes")
        done = self.seal()
        manifest = json.loads((self.archive / "manifest.json").read_text())
        files = {path.relative_to(self.archive).as_posix(): path for path in self.archive.rglob("*")
                 if path.is_file() and path.name != "manifest.json"}
        self.assertEqual([file["name"] for file in manifest["files"]], sorted(files))
        for file in manifest["files"]:
            content = files[file["name"]].read_bytes()
            self.assertEqual((file["size"], file["sha256"]), (len(content), hashlib.sha256(content).hexdigest()))
        self.assertEqual(manifest["created"], "2026-09-21T14:13:20Z")
        self.assertEqual(manifest["archive"]["productName"], "Korvel QB line")
        digest = hashlib.sha256((self.archive / "manifest.json").read_bytes()).hexdigest()
        self.assertIn(f"manifest SHA-256 {digest}.\nSign with: ssh-keygen -Y sign -n {NAMESPACE} -f KEY ",
                      done.output.decode())

    def test_sealing_again_leaves_what_has_not_changed(self):
        self.seal()
        self.sign()
        before = (self.archive / "manifest.json").read_bytes()
        os.environ["SOURCE_DATE_EPOCH"] = "1800000000"
        self.assertTrue(self.seal().output.startswith(b"Sealed already: "))
        self.assertEqual((self.archive / "manifest.json").read_bytes(), before)

    def test_sealing_what_was_signed_and_has_changed_is_refused(self):
        self.seal()
        self.sign()
        before = (self.archive / "manifest.json").read_bytes()
        (self.archive / "network.ini").write_text("changed")
        done = self.seal(code=1)
        self.assertIn("manifest.json.sig' signs another manifest: remove it, seal again, and sign anew",
                      in_posix_quotes(done.errors.decode()))
        self.assertEqual((self.archive / "manifest.json").read_bytes(), before)
        (self.archive / "manifest.json.sig").unlink()
        self.seal()

    @unless_launched
    def test_what_cannot_be_released_is_named_at_once(self):
        (self.archive / "link").symlink_to("network.ini")
        (self.archive / "NETWORK.INI").write_text("")
        (self.archive / "nul.txt").write_text("")
        (self.archive / ("x" * 101)).write_text("")
        with open(self.archive / "large", "wb") as large:
            large.truncate(8 << 30)
        done = self.seal(code=3)
        errors = done.errors.decode()
        for fault in ("'link' is not a regular file", "the names 'NETWORK.INI' and 'network.ini' differ only in case",
                      "the name 'nul.txt' is not safe: Windows takes 'nul.txt' for a device",
                      f"the name '{'x' * 101}' is longer than 100 bytes", "the file 'large' has 8 GiB or more"):
            self.assertIn(f"kvreflash: {fault}\n", errors)
        self.assertFalse((self.archive / "manifest.json").exists())

    def test_a_description_that_is_refused_is_not_sealed(self):
        (self.archive / "archive.json").write_text("{")
        self.seal(code=3)
        self.assertFalse((self.archive / "manifest.json").exists())

    def test_a_time_that_is_none_is_refused(self):
        for text in ("", "now", "1.5", "99999999999999999999"):
            os.environ["SOURCE_DATE_EPOCH"] = text
            self.assertIn(b"SOURCE_DATE_EPOCH is not a number of seconds since 1970", self.seal(code=3).errors)
        for text in ("-1", "8589934592", "253402300800"):
            os.environ["SOURCE_DATE_EPOCH"] = text
            self.assertIn(b"its time is not from 1970 to 2242-03-16T12:56:31Z", self.seal(code=3).errors)

    def test_a_package_is_an_archive_that_tar_lists(self):
        self.seal()
        self.sign()
        package = self.pack()
        listed = subprocess.run(["tar", "tf", package], capture_output=True, check=True).stdout.decode().split()
        manifest = json.loads((self.archive / "manifest.json").read_text())
        self.assertEqual(listed, ["manifest.json", "manifest.json.sig", *(file["name"] for file in manifest["files"])])
        out = self.scratch / "out"
        out.mkdir()
        subprocess.run(["tar", "xf", package, "-C", out], check=True)
        self.assertEqual({path.name: path.read_bytes() for path in out.iterdir()},
                         {path.name: path.read_bytes() for path in self.archive.iterdir()})

    def test_what_is_not_as_sealed_is_not_packed(self):
        package = self.scratch / "release.kva"
        package.write_text("earlier")
        done = run("pack", self.archive, package)
        self.assertEqual((done.code, done.errors), (3, b"kvreflash: it is not sealed\nkvreflash: the archive cannot be "
                                                       b"packed: it is not sealed\n"))
        self.seal()
        (self.archive / "network.ini").write_bytes((self.archive / "network.ini").read_bytes()[::-1])
        done = run("pack", self.archive, package)
        self.assertEqual(done.code, 3)
        self.assertIn(b"'network.ini' was changed", done.errors)
        self.assertEqual(package.read_text(), "earlier")
        self.assertEqual(sorted(path.name for path in self.scratch.glob("*.kva*")), ["release.kva"])
        self.assertEqual(run("pack", self.archive, self.scratch / "release.tar").code, 64)

    def test_a_package_is_not_made_inside_its_archive(self):
        self.seal()
        (self.archive / "sub").mkdir()
        for place in (self.archive, self.archive / "sub", self.archive / "sub" / ".."):
            done = run("pack", self.archive, place / "release.kva")
            self.assertEqual((done.code, done.errors),
                             (1, b"kvreflash: the package must not be in the archive folder\n"))
        self.assertEqual(run("pack", self.archive, self.archive / ".." / "release.kva").code, 0)

    def test_a_draft_is_of_a_folder_with_files_that_can_be_read(self):
        done = run("new", self.scratch / "nowhere")
        self.assertEqual((done.code, done.errors.splitlines()[-1]),
                         (3, b"kvreflash: nothing was drafted: the folder cannot be listed"))
        empty = self.scratch / "empty"
        empty.mkdir()
        self.assertEqual(run("new", empty).code, 3)
        self.assertEqual(list(empty.iterdir()), [])
        existing = (self.archive / "archive.json").read_bytes()
        self.assertEqual(run("new", self.archive).code, 1)
        self.assertEqual((self.archive / "archive.json").read_bytes(), existing)

    def test_a_comparison_names_the_archive_that_is_refused(self):
        self.release()
        other = self.scratch / "other"
        shutil.copytree(self.archive, other)
        (other / "network.ini").write_text("")
        for line, code in (((self.archive, other), 3), ((other, self.archive), 3), ((self.archive, self.archive), 0)):
            done = run("compare", *line, "--trust", self.trust)
            self.assertEqual(done.code, code, done.errors)
            if code:
                self.assertRegex(done.errors.decode().splitlines()[-1],
                                 r"other.*: the firmware archive is not accepted: 'network.ini' has 0 bytes and not")


class AcceptedTest(ReleaseTest):
    def test_a_trusted_release_is_installed_and_said_to_be(self):
        self.release()
        report, events = self.scratch / "r.json", self.scratch / "events"
        self.assert_updated("--report", report, "--events", events)
        manifest = (self.archive / "manifest.json").read_bytes()
        fingerprint = fingerprint_of(self.key())
        expected = {"seal": "trusted", "manifestSha256": hashlib.sha256(manifest).hexdigest(),
                    "created": "2026-09-21T14:13:20Z", "signer": "release@korvel", "keyKind": "ssh-ed25519",
                    "keyFingerprint": fingerprint, "trustFolder": str(self.trust), "unsealedAccepted": False}
        self.assertEqual(json.loads(report.read_text())["release"], expected)
        plans = [event for event in map(json.loads, events.read_text().splitlines()) if event["event"] == "plan"]
        self.assertEqual([plan["release"] for plan in plans], [expected])

    def test_each_kind_of_key_may_sign(self):
        for kind in (("-t", "ed25519"), ("-t", "ecdsa", "-b", "256"), ("-t", "rsa", "-b", "3072"),
                     ("-t", "rsa", "-b", "4096")):
            with self.subTest(" ".join(kind)):
                key = self.key("-".join(kind[1::2]), *kind)
                self.seal()
                (self.archive / "manifest.json.sig").unlink(missing_ok=True)
                self.sign(key)
                self.allow(f"me {self.public(key)}")
                done = run("plan", "-a", self.archive, *self.target, "--trust", self.trust, "--json")
                self.assertEqual(json.loads(done.output)["release"]["seal"], "trusted")

    def test_one_of_several_signers_is_enough(self):
        self.seal()
        self.sign(self.key("stranger"))
        self.sign(self.key("second"))
        self.allow(f"second@korvel {self.public(self.key('second'))}")
        self.assert_updated()

    def test_without_trust_in_anybody_a_stranger_may_have_signed(self):
        self.release()
        report = self.scratch / "r.json"
        self.assert_updated("--report", report, trusts=False)
        release = json.loads(report.read_text())["release"]
        self.assertEqual((release["seal"], release["signer"], release["trustFolder"]),
                         ("signed-by-stranger", None, None))

    def test_what_is_not_sealed_may_be_accepted(self):
        self.allow(f"release@korvel {self.public(self.key())}")
        report = self.scratch / "r.json"
        self.assert_updated("--unsealed", "--report", report)
        release = json.loads(report.read_text())["release"]
        self.assertEqual((release["seal"], release["unsealedAccepted"]), ("unsealed", True))

    def test_a_package_is_taken_wherever_a_folder_is(self):
        self.release()
        package = self.pack()
        for command in ("archive-version", "content", "dump", "check"):
            of_folder = run(command, "-a", self.archive, "--trust", self.trust)
            of_package = run(command, "-a", package, "--trust", self.trust)
            self.assertEqual((of_package.code, of_package.output, of_package.errors),
                             (of_folder.code, of_folder.output, of_folder.errors), command)
        for command in ("plan", "verify"):
            of_folder = run(command, "-a", self.archive, *self.target, "--trust", self.trust)
            of_package = run(command, "-a", package, *self.target, "--trust", self.trust)
            self.assertEqual((of_package.code, of_package.output), (of_folder.code, of_folder.output), command)
        self.assertEqual(self.private_copies(), [])
        self.assert_updated("--preflight", "--strict", archive=package)

    def test_messages_name_the_archive_as_it_was_given(self):
        self.release()
        for archive in (self.archive, self.pack()):
            with self.subTest(archive.name):
                done = self.update("-v", archive=archive)
                self.assertNotIn(str(self.temporary).encode(), done.output + done.errors)
                self.assertEqual(self.private_copies(), [])


class RefusedTest(ReleaseTest):
    def test_what_is_not_released_is_refused_under_trust(self):
        self.allow(f"release@korvel {self.public(self.key())}")
        self.assert_refused("it is not sealed, and only archives of signers who are trusted are accepted")
        self.seal()
        self.assert_refused("it is not signed, and only archives of signers who are trusted are accepted")

    def test_what_is_not_what_the_manifest_says_is_refused_with_and_without_trust(self):
        self.release()
        def cut(path):
            path.write_bytes(path.read_bytes()[:120])
        def flip(path):
            content = bytearray(path.read_bytes())
            content[-1] ^= 1
            path.write_bytes(content)
        def remove(path):
            path.unlink()
        def empty(path):
            path.write_bytes(b"")
        def link(path):
            path.rename(self.scratch / "elsewhere")
            path.symlink_to(self.scratch / "elsewhere")
        rows = ((cut, "'qb4120-firmware.kfw' has 120 bytes and not 65900"),
                (flip, "'qb4120-firmware.kfw' was changed"), (remove, "'qb4120-firmware.kfw' is missing"),
                (empty, "'qb4120-firmware.kfw' has 0 bytes and not 65900"),
                (link, "'qb4120-firmware.kfw' is not a regular file"))
        path = self.archive / "qb4120-firmware.kfw"
        content = path.read_bytes()
        for change, why in rows[:-1] if arguments.launcher else rows:
            change(path)
            for trusts in (True, False):
                with self.subTest(change.__name__, trusts=trusts):
                    self.assert_refused(why, trusts=trusts)
            path.unlink(missing_ok=True)
            path.write_bytes(content)
        (self.archive / "more.kfw").write_text("more")
        self.assert_refused("'more.kfw' is additional")

    def test_a_changed_description_is_refused_before_it_is_obeyed(self):
        self.release()
        description = self.archive / "archive.json"
        description.write_bytes(description.read_bytes().replace(b"23.2.1", b"23.2.2"))
        self.assert_refused("'archive.json' was changed")

    def test_signers_who_are_not_trusted_are_refused(self):
        self.release()
        fingerprint = fingerprint_of(self.key())
        public = self.public(self.key())
        not_trusted = "it is not signed by anybody who is trusted: the signer " + fingerprint
        rows = ((f"other {self.public(self.key('other'))}", " is not among the allowed signers"),
                (f"me namespaces=\"file\" {public}", f" (me) may not sign for '{NAMESPACE}'"),
                (f"me valid-before=\"20260101Z\" {public}", " (me) may sign before 2026-01-01T00:00:00Z only"),
                (f"me valid-after=\"20270101Z\" {public}", " (me) may sign after 2027-01-01T00:00:00Z only"),
                (f"me no-such-option=\"1\" {public}", " is not among the allowed signers; allowed_signers, line 1: its "
                                                      "option 'no-such-option=\"1\"' is not known, stands twice or has "
                                                      "no value in quotes"))
        for line, why in rows:
            with self.subTest(line):
                self.allow(line)
                self.assert_refused(not_trusted + why)
                self.assert_refused(not_trusted + why, "--unsealed")

    def test_what_was_revoked_is_refused(self):
        self.release()
        fingerprint = fingerprint_of(self.key())
        digest = hashlib.sha256((self.archive / "manifest.json").read_bytes()).hexdigest()
        revoked = f"it is not signed by anybody who is trusted: the signer {fingerprint} was revoked"
        for line, why in ((self.public(self.key()), revoked), (fingerprint, revoked),
                          (digest, "its manifest was revoked")):
            with self.subTest(line):
                (self.trust / "revoked").write_text(line + "\n")
                self.assert_refused(why)

    def test_a_broken_trust_folder_refuses_everything(self):
        self.release()
        rows = ((lambda: (self.trust / "allowed_signers").unlink(), "its file allowed_signers cannot be read"),
                (lambda: shutil.rmtree(self.trust), "its file allowed_signers cannot be read"))
        for change, why in rows:
            change()
            self.assert_refused(f"the trust folder '{self.trust}' cannot be used: {why}", "--unsealed")

    def test_a_signature_for_another_purpose_is_refused_by_everybody(self):
        self.seal()
        self.sign(namespace="file")
        self.allow(f"release@korvel {self.public(self.key())}")
        for trusts in (True, False):
            self.assert_refused("the signature does not hold: signature 1: it was made for 'file' and not for "
                                f"'{NAMESPACE}'", trusts=trusts)

    def test_the_commands_that_only_look_refuse_the_same(self):
        self.release()
        (self.archive / "network.ini").write_text("x")
        why = "the firmware archive is not accepted: 'network.ini' has 1 bytes and not 42"
        for command in ("archive-version", "content", "dump"):
            done = run(command, "-a", self.archive)
            self.assertEqual((done.code, done.errors.decode()), (3, f"kvreflash: {why}\n"), command)
        done = run("check", "-a", self.archive)
        self.assertEqual(done.code, 3)
        self.assertIn(b"The archive is not accepted: 'network.ini' has 1 bytes and not 42.", done.output)
        done = run("plan", "-a", self.archive, *self.target)
        self.assertEqual((done.code, done.errors.decode()), (3, f"kvreflash: {why}\n"))


class BytesTest(ReleaseTest):
    """Each byte of what vouches for an archive counts. KV_EVERY_BYTE: not only a sample of them."""

    @staticmethod
    def step(size, count):
        """From byte to byte, so that about `count` of them are tried; fewer if starting the tool takes long."""
        return 1 if os.environ.get("KV_EVERY_BYTE") else max(1, size // (count // 4 if arguments.launcher else count))

    def variants(self, content):
        for index in range(0, len(content), self.step(len(content), 40)):
            yield f"{index} changed", content[:index] + bytes([content[index] ^ 1]) + content[index + 1:]
            yield f"{index} removed", content[:index] + content[index + 1:]
            yield f"{index} doubled", content[:index + 1] + content[index:]

    def assert_all_refused(self, path, archive, content):
        for name, variant in self.variants(content):
            path.write_bytes(variant)
            done = run("plan", "-a", archive, *self.target, "--trust", self.trust)
            self.assertEqual(done.code, 3, (name, done.errors))
            self.assertTrue(done.errors.startswith(b"kvreflash: the firmware archive is not accepted: "), name)

    def test_of_the_manifest_and_its_signature(self):
        self.release()
        for name in ("manifest.json", "manifest.json.sig"):
            path = self.archive / name
            content = path.read_bytes()
            self.assert_all_refused(path, self.archive, content)
            path.write_bytes(content)

    def test_of_the_headers_of_a_package(self):
        self.release()
        package = self.pack()
        content = package.read_bytes()
        sizes = [len((self.archive / "manifest.json").read_bytes()),
                 len((self.archive / "manifest.json.sig").read_bytes())]
        offsets = [0, 512 + (sizes[0] + 511) // 512 * 512]
        offsets.append(offsets[1] + 512 + (sizes[1] + 511) // 512 * 512)
        for offset in offsets:
            for index in range(offset, offset + 512, self.step(512, 30)):
                for variant in (content[:index] + bytes([content[index] ^ 1]) + content[index + 1:],
                                content[:index] + content[index + 1:], content[:index + 1] + content[index:]):
                    package.write_bytes(variant)
                    done = run("plan", "-a", package, *self.target, "--trust", self.trust)
                    self.assertEqual(done.code, 3, (index, done.errors))

    def test_of_the_end_of_a_package(self):
        self.release()
        package = self.pack()
        content = package.read_bytes()
        for variant in (content[:-1], content[:-512], content[:-1024], content + b"\0", content + bytes(512),
                        content + content, content[:-1] + b"\1", content[:100], b"", content[:512]):
            package.write_bytes(variant)
            self.assertEqual(run("plan", "-a", package, *self.target).code, 3, len(variant))


class ExchangedTest(ReleaseTest):
    def test_what_is_exchanged_while_it_is_read_is_never_installed(self):
        self.release()
        genuine = {path.name: path.read_bytes() for path in self.archive.iterdir()}
        stop = threading.Event()
        name = "qb4120-settings.cfg"

        def exchange():
            other = self.scratch / "other"
            while not stop.is_set():
                for content in (b"forged " * 6, genuine[name]):
                    other.write_bytes(content[:len(genuine[name])])
                    os.replace(other, self.archive / name)

        thread = threading.Thread(target=exchange)
        thread.start()
        try:
            codes = []
            for _ in range(12):
                shutil.rmtree(self.rack / "state", ignore_errors=True)
                codes.append(self.update().code)
                written = [path for path in (self.rack / "state").rglob("*")
                           if path.is_file() and b"forged" in path.read_bytes()]
                self.assertEqual(written, [])
                self.assertIn(codes[-1], (0, 3))
        finally:
            stop.set()
            thread.join()
        self.assertEqual(self.private_copies(), [])

    @unless_launched
    def test_a_copy_that_a_killed_session_has_left_is_removed_by_the_next_one(self):
        self.release()
        left = self.temporary / "kvreflash-archive-0123456789abcdef"
        (left / "archive").mkdir(parents=True)
        (left / "archive" / "a.kfw").write_text("left")
        (left / "lock").write_text("")
        left.chmod(0o700)
        elsewhere = self.scratch / "elsewhere"
        elsewhere.mkdir()
        (elsewhere / "lock").write_text("")
        (self.temporary / "kvreflash-archive-fedcba9876543210").symlink_to(elsewhere)
        done = self.update()
        self.assertEqual(done.code, 0, done.errors)
        self.assertEqual(self.private_copies(), ["kvreflash-archive-fedcba9876543210"])
        self.assertTrue((elsewhere / "lock").exists())


if __name__ == "__main__":
    tool_runs.main()
