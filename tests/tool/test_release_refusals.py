#!/usr/bin/env python3
"""What an attacker, or a slip, makes of a release: whatever is not exactly what a trusted signer has released is
refused in words of its own, and nothing of it is used."""

import base64
import hashlib
import json
import os
import random
import re
import shutil
import socket
import subprocess
import time
from pathlib import Path

import tool_runs
from release_runs import (NAMESPACE, SEALED_AT, ReleaseTest, Signature, block, content_of, field, fields,
                          fingerprint_of, key_content, key_fingerprint, key_line, mpint, unless_launched)
from tool_runs import arguments, command_of, run

# Draws what is drawn.
SEED = int(os.environ.get("KV_EXCHANGE_SEED", "1"))
NOBODY = 65534
NETWORK = "network.ini"


def tried(ways):
    """All of them, unless starting the tool takes long: then the first."""
    return ways[:1] if arguments.launcher else ways


def sample_of(rows):
    """All of them, unless starting the tool takes long: then one in three."""
    return random.Random(SEED).sample(rows, (len(rows) + 2) // 3) if arguments.launcher else rows


class RefusalTest(ReleaseTest):
    """A release that is trusted, until somebody changes it."""

    # By whom everything is refused whose manifest or signature does not hold: more options, and whether there is trust.
    EVERYBODY = (((), True), (("--unsealed",), True), ((), False))
    TRUSTING = EVERYBODY[:2]
    # The files that tests of the class change; None: any.
    CHANGED = None

    def setUp(self):
        super().setUp()
        self.release()
        self.manifest = self.archive / "manifest.json"
        self.signature = self.archive / "manifest.json.sig"
        self.kept = self.scratch / "kept"
        shutil.copytree(self.archive, self.kept)

    def restore(self):
        """Undoes what was done to the archive."""
        if self.CHANGED is None:
            shutil.rmtree(self.archive)
            shutil.copytree(self.kept, self.archive)
        for name in self.CHANGED or ():
            shutil.copy(self.kept / name, self.archive)

    def assert_all_refused(self, rows, everybody=EVERYBODY):
        """Rows of a name, what is done to the archive, and why it is refused then."""
        for name, change, why in sample_of(rows):
            change()
            for more, trusts in tried(everybody):
                with self.subTest(name, more=more, trusts=trusts):
                    self.assert_refused(why, *more, trusts=trusts)
            self.restore()

    def assert_accepted(self, *more, archive=None):
        done = run("plan", "-a", archive or self.archive, *self.target, "--trust", self.trust, "--json", *more)
        self.assertEqual(done.code, 0, done.errors)
        release = json.loads(done.output)["release"]
        self.assertEqual(release["seal"], "trusted")
        return release


def reverse(path):
    """Another content of the same length."""
    path.write_bytes(path.read_bytes()[::-1])


class FolderTest(RefusalTest):
    """What lies in the folder of the archive."""

    def in_place_of(self, name, make):
        """What puts something else in the place of a file."""
        def change():
            (self.archive / name).unlink()
            make(self.archive / name)
        return change

    def test_what_the_manifest_does_not_list_is_refused(self):
        def beside(name):
            path = self.archive / name
            path.parent.mkdir(exist_ok=True)
            path.write_text("")
        rows = [(name, lambda name=name: beside(name), f"'{name}' is additional")
                for name in ("more.kfw", ".hidden", "sub/more.kfw", "manifest.json.sig.old", "manifest.json.asc",
                             "archive.json~")]
        rows.append(("several", lambda: [beside(name) for name in ("b", "sub/a", "a")],
                     "'a' is additional; 'b' is additional; 'sub/a' is additional"))
        self.assert_all_refused(rows)

    @unless_launched
    def test_links_and_what_is_not_a_file_are_refused(self):
        (self.scratch / "elsewhere").mkdir()
        (self.scratch / "elsewhere" / "x").write_text("")
        def moved(path):
            shutil.copy(self.kept / path.name, self.scratch / "elsewhere")
            path.symlink_to(self.scratch / "elsewhere" / path.name)
        def bound(path):
            with socket.socket(socket.AF_UNIX) as end:
                end.bind(str(path))
        other = self.archive / "x"
        rows = (("a link", lambda: other.symlink_to("archive.json"), "'x' is additional"),
                ("a link to nowhere", lambda: other.symlink_to("nowhere"), "'x' is additional"),
                ("a link to a folder", lambda: other.symlink_to(self.scratch / "elsewhere"), "'x' is additional"),
                ("a link to its folder", lambda: other.symlink_to("."), "'x' is additional"),
                ("a pipe", lambda: os.mkfifo(other), "'x' is additional"),
                ("a link in place", self.in_place_of(NETWORK, moved), f"'{NETWORK}' is not a regular file"),
                ("a pipe in place", self.in_place_of(NETWORK, os.mkfifo), f"'{NETWORK}' is not a regular file"),
                ("a socket in place", self.in_place_of(NETWORK, bound), f"'{NETWORK}' is not a regular file"),
                ("a folder in place", self.in_place_of(NETWORK, Path.mkdir), f"'{NETWORK}' is missing"))
        self.assert_all_refused(rows)

    @unless_launched
    def test_names_in_other_words_are_other_files(self):
        """On systems that take them for the same, they are one file, which is the one that the manifest lists."""
        rows = [(name, lambda name=name: (self.archive / name).write_text(""), f"'{name}' is additional")
                for name in ("NETWORK.INI", "MANIFEST.JSON", "Manifest.json.sig", "network.ini.", "network.ini ")]
        self.assert_all_refused(rows)
        (self.archive / "e\u0301.txt").write_text("")
        (self.archive / "manifest.json.sig").unlink()
        self.release()
        (self.archive / "e\u0301.txt").rename(self.archive / "\u00e9.txt")
        self.assert_refused("'\u00e9.txt' is additional; 'e\u0301.txt' is missing")

    @unless_launched
    def test_a_folder_below_that_has_become_a_link_is_not_followed(self):
        (self.archive / "sub").mkdir()
        (self.archive / "sub" / "x").write_text("")
        self.signature.unlink()
        self.release()
        (self.archive / "sub").rename(self.scratch / "moved")
        (self.archive / "sub").symlink_to(self.scratch / "moved")
        self.assert_refused("'sub' is additional; 'sub/x' is missing")

    def test_all_that_was_changed_is_named_at_once(self):
        def reverse_two():
            reverse(self.archive / NETWORK)
            reverse(self.archive / "startup.cfg")
        def change_names_and_sizes():
            (self.archive / NETWORK).unlink()
            (self.archive / "x").write_text("")
            (self.archive / "startup.cfg").write_text("")
        def change_names_sizes_and_contents():
            change_names_and_sizes()
            reverse(self.archive / "qb4120-ipl.kfw")
        def change_the_description_too():
            reverse(self.archive / "archive.json")
            reverse(self.archive / NETWORK)
        names_and_sizes = f"'startup.cfg' has 0 bytes and not 92; 'x' is additional; '{NETWORK}' is missing"
        rows = (("contents", reverse_two, f"'{NETWORK}' was changed; 'startup.cfg' was changed"),
                ("names and sizes", change_names_and_sizes, names_and_sizes),
                ("all", change_names_sizes_and_contents, names_and_sizes + "; 'qb4120-ipl.kfw' was changed"),
                ("the description", change_the_description_too,
                 f"'archive.json' was changed; '{NETWORK}' was changed"))
        self.assert_all_refused(rows)

    @unless_launched
    def test_a_manifest_or_signature_that_cannot_be_read_is_not_one_that_is_missing(self):
        unread = "it cannot be read, or is larger than anything that is read"
        def moved(path):
            shutil.copy(self.kept / path.name, self.scratch / "moved")
            path.symlink_to(self.scratch / "moved")
        rows = []
        for name, called in (("manifest.json", "the manifest"), ("manifest.json.sig", "the signature")):
            rows += [(f"{name} a folder", self.in_place_of(name, Path.mkdir),
                      f"{called} cannot be read: it is a folder, not a regular file"),
                     (f"{name} a pipe", self.in_place_of(name, os.mkfifo),
                      f"{called} cannot be read: it is a pipe, not a regular file"),
                     (f"{name} a link", self.in_place_of(name, moved),
                      f"{called} cannot be read: it is a link, not a regular file"),
                     (f"{name} a link to nowhere", self.in_place_of(name, lambda path: path.symlink_to("nowhere")),
                      f"{called} cannot be read: it is a link, not a regular file"),
                     (f"{name} too large", lambda name=name: os.truncate(self.archive / name, (256 << 20) + 1),
                      f"{called} cannot be read: {unread}")]
        self.assert_all_refused(rows)

    def test_what_is_not_an_archive_is_refused(self):
        self.manifest.unlink()
        for more, trusts in self.EVERYBODY:
            self.assert_refused("it has signatures and no manifest", *more, trusts=trusts)
        self.signature.unlink()
        self.assert_refused("it is not sealed, and only archives of signers who are trusted are accepted")
        self.assert_refused("there is no such folder or package", archive=self.scratch / "nothing")

    @unless_launched
    def test_what_is_neither_a_folder_nor_a_package_is_refused(self):
        os.mkfifo(self.scratch / "pipe")
        for more, trusts in self.EVERYBODY:
            self.assert_refused("the archive cannot be read: it is a pipe, neither a folder nor a package", *more,
                                archive=self.scratch / "pipe", trusts=trusts)


class DescriptionTest(RefusalTest):
    """Descriptions that lead to what nobody has sealed, which lies where they lead to."""

    def setUp(self):
        super().setUp()
        for folder in (self.temporary, self.scratch, self.archive.parent):
            (folder / "outside.ini").write_text("evil")
            shutil.copy(self.kept / "archive.json", folder / "outside.json")

    def sign_again(self):
        """As somebody does who makes manifests with other tools."""
        document = json.loads(self.manifest.read_text())
        for file in document["files"]:
            content = (self.archive / file["name"]).read_bytes()
            file.update(size=len(content), sha256=hashlib.sha256(content).hexdigest())
        self.manifest.write_text(json.dumps(document))
        self.signature.unlink()
        self.sign()

    def test_an_update_file_that_is_not_sealed_is_refused(self):
        path = self.archive / "archive.json"
        for name in ("more.ini", "../outside.ini", "../../outside.ini", "..\\..\\outside.ini", "../../../outside.ini",
                     "/outside.ini", "./network.ini", "x/../network.ini", "NETWORK.INI", "network.ini.", "",
                     "manifest.json", "manifest.json.sig"):
            with self.subTest(name):
                description = json.loads((self.kept / "archive.json").read_text())
                next(file for file in description["files"] if file["name"] == NETWORK)["name"] = name
                path.write_text(json.dumps(description))
                self.sign_again()
                for more, _ in tried(self.TRUSTING):
                    self.assert_refused(f"'{name}' is not in its manifest", *more)
                self.restore()

    def test_a_description_that_is_not_sealed_is_refused(self):
        package = self.pack()
        for name in ("more.json", "../outside.json", "../../outside.json", "./archive.json", "x/../archive.json",
                     "/archive.json", "ARCHIVE.JSON", "manifest.json"):
            for archive in (self.archive, package):
                with self.subTest(name, archive=archive.name):
                    self.assert_refused(f"'{name}' is not in its manifest", "-d", name, archive=archive)


class ManifestTest(RefusalTest):
    """Manifests that a trusted signer has signed all the same."""

    CHANGED = ("manifest.json", "manifest.json.sig")

    def setUp(self):
        super().setUp()
        self.text = self.manifest.read_text()

    def changed(self, change):
        """The text of the manifest after a change of the document."""
        document = json.loads(self.text)
        change(document)
        return json.dumps(document)

    def with_first(self, **members):
        return self.changed(lambda document: document["files"][0].update(members))

    def with_files(self, *names):
        more = [{"name": name, "size": 1, "sha256": "0" * 64} for name in names]
        return self.changed(lambda document: document["files"].extend(more))

    def put(self, text):
        self.manifest.write_bytes(text if isinstance(text, bytes) else text.encode())
        self.signature.unlink()
        self.sign()

    def assert_texts_refused(self, rows, prefix="the manifest is not valid: "):
        self.assert_all_refused([(repr(text[:60]), lambda text=text: self.put(text), prefix + why)
                                 for text, why in rows], self.TRUSTING)

    def test_what_is_not_json_is_refused(self):
        no_json, ends = "This is not JSON syntax.", "The text ends before its value is complete."
        goes_on, deep = "The text goes on after its value.", "Arrays and objects are nested deeper than 256 levels."
        text = self.text
        nested = "[" * 300 + "]" * 300
        rows = [("", ends), (" \n", ends), (text.rstrip()[:-1], ends), (text + "x", goes_on), (text + "\0", goes_on),
                (text + text, goes_on), (nested, deep), (text.replace('"files"', f'"x": {nested}, "files"'), deep),
                (text.replace('"version": 1', '"version": 1' + "0" * 400), "The number is out of range.")]
        rows += [(text.replace('"version": 1', f'"version": {version}'), no_json)
                 for version in ("NaN", "01", "+1", "0x1")]
        rows += [(text.encode().replace(b"network.ini", name), no_json) for name in (
            b"net\xff.ini", b"net\xc0\xaf.ini", b"net\xed\xa0\x80.ini", b"net\\ud800.ini", b"net\twork.ini")]
        rows += [(other, no_json) for other in (
            "// from the maker\n" + text, text.replace("{", "{/**/", 1), text.replace("}\n    ]", "},\n    ]"),
            text.replace('"', "'"), "\ufeff\ufeff" + text, text.encode("utf-16"), text.encode("utf-16-le"))]
        self.assert_texts_refused(rows, "the manifest is not valid: it is not valid JSON: ")

    def test_a_sealed_description_that_is_not_one_is_refused(self):
        content = b'{"files": []}'
        (self.archive / "archive.json").write_bytes(content)
        self.put(self.with_first(size=len(content), sha256=hashlib.sha256(content).hexdigest()))
        for archive in (self.archive, self.pack()):
            with self.subTest(archive=archive.name):
                done = self.update("--preflight", "--verify", archive=archive)
                self.assertEqual((done.code, done.errors.decode().splitlines()[-1]), (
                    3, 'kvreflash: The archive description file is corrupt. Property "info" is missing or invalid.'))
                self.assertFalse((self.rack / "state").exists())
                self.assertEqual(self.private_copies(), [])

    def test_documents_of_other_kinds_and_versions_are_refused(self):
        other_version = "its format has another version than 1"
        other_format = "its format is not 'kvreflash.manifest'"
        rows = [(document, other_format) for document in ("[]", "{}", "null", '"manifest"', "1")]
        rows += [(self.changed(lambda document, name=name: document["format"].update(name=name)), other_format)
                 for name in ("kvreflash.plan", "KVREFLASH.MANIFEST", "")]
        rows += [(self.text.replace('"version": 1', f'"version": {version}'), other_version)
                 for version in (2, 0, -1, "1.0", "1e0", '"1"', "true", "null", 2 ** 32 + 1, 2 ** 64 + 1)]
        self.assert_texts_refused(rows)

    def test_members_that_are_missing_or_of_another_kind_are_refused(self):
        rows = [(self.changed(lambda document: document.pop("archive")), "its member 'archiveName' is not a text"),
                (self.changed(lambda document: document["archive"].update(productName=5)),
                 "its member 'productName' is not a text"),
                (self.changed(lambda document: document.pop("files")), "its member 'files' is not an array"),
                (self.changed(lambda document: document.update(files={})), "its member 'files' is not an array"),
                (self.changed(lambda document: document.update(files=[[]])), "its member 'name' is not a text"),
                (self.changed(lambda document: document.pop("created")), "its member 'created' is not a text"),
                (self.changed(lambda document: document.update(created=1790000000)),
                 "its member 'created' is not a text")]
        rows += [(self.changed(lambda document, time=time: document.update(created=time)),
                  "its member 'created' is not a time from 1970 to 2242-03-16T12:56:31Z")
                 for time in ("", "today", "2026-09-21T14:13:20", "2026-09-21T14:13:20+00:00", "2026-09-21t14:13:20z",
                              "2026-09-21T14:13:20.5Z", " 2026-09-21T14:13:20Z", "2026-02-30T00:00:00Z",
                              "2026-09-21T24:00:00Z", "2026-09-21T14:13:60Z", "2026-13-01T00:00:00Z", "1969-12-31T23:59:59Z",
                              "2242-03-16T12:56:32Z", "0000-01-01T00:00:00Z")]
        self.assert_texts_refused(rows)

    def test_sizes_that_are_none_are_refused(self):
        size = (self.archive / "archive.json").stat().st_size
        rows = [(self.text.replace(f'"size": {size}', f'"size": {other}', 1),
                 "the size of 'archive.json' is not a number")
                for other in (-1, -size, f"{size}.0", f"{size}e0", f'"{size}"', "null", "true", "[]", 2 ** 64)]
        rows += [(self.with_first(size=other), "the file 'archive.json' has 8 GiB or more")
                 for other in (2 ** 33, 2 ** 63, 2 ** 64 - 1)]
        self.assert_texts_refused(rows)
        self.assert_texts_refused([(self.with_first(size=other), f"'archive.json' has {size} bytes and not {other}")
                                   for other in (0, size - 1, size + 1, 2 ** 32 + size, 2 ** 33 - 1)], "")

    def test_digests_that_are_none_are_refused(self):
        digest = json.loads(self.text)["files"][0]["sha256"]
        rows = [(self.with_first(sha256=other), "the SHA-256 of 'archive.json' is not one")
                for other in (digest.upper(), digest[:-1], digest + "0", "", digest[:-1] + "g", digest[:-1] + " ",
                              "0x" + digest[2:], "sha256:" + digest)]
        rows += [(self.with_first(sha256=other), "its member 'sha256' is not a text") for other in (None, 0, [digest])]
        rows.append((self.text.replace('"sha256"', '"SHA256"'), "its member 'sha256' is not a text"))
        self.assert_texts_refused(rows)
        self.assert_texts_refused([(self.with_first(sha256=other), "'archive.json' was changed")
                                   for other in ("0" * 64, hashlib.sha256(b"").hexdigest(), digest[::-1])], "")

    def test_names_that_lead_elsewhere_are_refused(self):
        parent, here, unnamed = "it has the folder '..'", "it has the folder '.'", "it has a folder without a name"
        rows = [(name, parent) for name in ("..", "../x", "a/../../x", "a/..")]
        rows += [(name, here) for name in (".", "./x", "a/./x")]
        rows += [(name, unnamed) for name in ("", "/etc/passwd", "//server/share/x", "a//x", "a/")]
        rows += [(name, r'it has a "\"') for name in ("a\\x", "..\\x", "C:\\x", "\\\\server\\share\\x", "\\x")]
        rows += [(name, f"Windows cannot have a file called '{name.split('/')[0]}'") for name in (
            "C:x", "C:/x", "x:stream", "network.ini::$DATA", "x.", "x ", "x. ", "...", "a./x", "a /x", "x*", "x?", 'x"',
            "x<", "x>", "x|")]
        rows += [(name, f"Windows takes '{name.rsplit('/', maxsplit=1)[-1]}' for a device")
                 for name in ("nul", "NUL.txt", "Con.tar.gz", "aux", "prn .txt", "com1", "COM9.kfw", "lpt1", "sub/con",
                              "conin$", "CONOUT$", "CLOCK$", "con ", "com\u00b9", "LPT\u00b3.txt")]
        rows += [(name, f"it has the character U+{ord(name[1]):04X}, which does not show as what it is")
                 for name in ("x\u007f", "x\u202ey", "x\u2066y", "x\u200b", "x\ufeff")]
        self.assert_texts_refused([
            (self.with_files(name), f"the name '{name if name.isprintable() else shown(name)}' is not safe: {why}")
            for name, why in rows])

    def test_names_with_control_characters_make_no_lines(self):
        self.assert_texts_refused([
            (self.with_files(f"x{character}y"), f"the name 'x{shown(character)}y' is not safe: it has the character "
                                                f"U+{ord(character):04X}, which does not show as what it is")
            for character in ("\0", "\t", "\n", "\r", "\x1b")])

    def test_names_of_files_that_cannot_be_together_are_refused(self):
        rows = [(self.with_files(NETWORK), f"the names '{NETWORK}' and '{NETWORK}' are the same"),
                (self.with_files("Network.ini"), f"the names '{NETWORK}' and 'Network.ini' differ only in case"),
                (self.with_files("a/x", "A/X"), "the names 'a/x' and 'A/X' differ only in case"),
                (self.with_files("manifest.json"), "the names 'manifest.json' and 'manifest.json' are the same"),
                (self.with_files("MANIFEST.json"), "the names 'manifest.json' and 'MANIFEST.json' differ only in case"),
                (self.with_files("manifest.json.sig"),
                 "the names 'manifest.json.sig' and 'manifest.json.sig' are the same"),
                (self.with_files("x", "x/y"), "the name 'x' is that of a folder, too"),
                (self.with_files("X/y", "x"), "the name 'x' is that of a folder, too"),
                (self.with_files("network.ini/x"), f"the name '{NETWORK}' is that of a folder, too"),
                (self.with_files("x" * 101), f"the name '{'x' * 101}' is longer than 100 bytes"),
                (self.with_files("\u00e9" * 51), f"the name '{chr(0xe9) * 51}' is longer than 100 bytes"),
                (self.with_files("a/" * 50 + "x"), f"the name '{'a/' * 50}x' is longer than 100 bytes")]
        self.assert_texts_refused(rows)

    def test_members_for_later_and_another_order_are_no_fault(self):
        for text in (self.changed(lambda document: document.update(lowestVersion="1.0")), self.with_first(note="x"),
                     self.changed(lambda document: document["files"].reverse()), self.text.replace("\n", "\r\n"),
                     self.changed(lambda document: None)):
            self.put(text)
            self.assert_accepted()


def shown(text):
    """A name with characters that do not show as what they are: bytes that are not printable ASCII, escaped."""
    return "".join(chr(byte) if 0x20 <= byte <= 0x7E else f"\\x{byte:02X}" for byte in text.encode())


class BlockTest(RefusalTest):
    """The parts of the genuine signature, to be put together in another way."""

    CHANGED = ("manifest.json", "manifest.json.sig")

    def setUp(self):
        super().setUp()
        self.genuine = self.signature.read_bytes()
        self.parts = Signature.read(self.genuine)
        self.assertEqual(self.parts.block(), self.genuine)

    def not_mine(self, key=None):
        """Why a signature is refused that is not this key's; without a key, that of the genuine signature."""
        return f"the key {key_fingerprint(key or self.parts.key)} has not signed this manifest"

    def assert_blocks_refused(self, rows, prefix="the signature does not hold: signature 1: "):
        self.assert_all_refused([(f"{why}: {text[:40]}", lambda text=text: self.signature.write_bytes(text),
                                  prefix + why) for text, why in rows])


class SignatureTest(BlockTest):
    """Files of signatures that are none, whoever is trusted."""

    def test_no_signature_is_not_a_good_one(self):
        self.assert_blocks_refused([(b"", "the signature does not hold: it is empty")], "")
        begin, end = b"-----BEGIN SSH SIGNATURE-----\n", b"-----END SSH SIGNATURE-----\n"
        no_block = "it is not a block of an SSH signature and nothing else"
        rows = [(text, no_block) for text in (
            b"\n", b" ", b" \t\r\n\n", b"\0", begin, end, begin + begin, begin + b"\n" + end, begin + b" \n" + end,
            begin + b"====\n" + end, begin + b"AAAA", begin + b"AAAA" + end, end + begin)]
        rows += [(begin + end, "it is not an SSH signature"), (block(b"SSHSI"), "it is not an SSH signature"),
                 (block(b"SSHSIG"), "its format has another version than 1"),
                 (block(Signature.MAGIC), "it ends too early"),
                 (Signature(b"", b"", b"", b"", b"").block(), f"it was made for '' and not for '{NAMESPACE}'"),
                 (Signature(b"", NAMESPACE.encode(), b"", b"", b"").block(), "it is not a key"),
                 (self.parts.block(value=b""), self.not_mine())]
        self.assert_blocks_refused(rows)

    def test_nothing_stands_before_between_or_behind_blocks(self):
        genuine = self.genuine
        no_block = "it is not a block of an SSH signature and nothing else"
        self.assert_blocks_refused([(text, no_block) for text in (
            b"\n" + genuine, b"from the maker\n" + genuine, b"\xef\xbb\xbf" + genuine, genuine[:-1],
            genuine.replace(b"\n", b"\r\n"), genuine.replace(b"\n", b"\r"), genuine.decode().encode("utf-16"),
            genuine.replace(b"SSH SIGNATURE", b"PGP SIGNATURE"), genuine.replace(b"BEGIN", b"Begin"),
            genuine.replace(b"U1NI", b"U1 NI"), genuine.replace(b"U1NI", b"U1NI\n"), genuine.replace(b"=", b"==", 1),
            b"".join(block(content_of(genuine)).split(b"\n")))])
        self.assert_blocks_refused([(genuine + more, no_block) for more in (
            b"\n", b" ", b"\0", b"x", b"# mine\n" + genuine, b"\n" + genuine, genuine[:-1],
            b"-----END SSH SIGNATURE-----\n")], "the signature does not hold: signature 2: ")

    def test_bytes_within_a_block_are_those_of_one_signature(self):
        content = content_of(self.genuine)
        self.assert_blocks_refused([
            (block(content + b"\0"), "bytes follow it"), (block(content + content), "bytes follow it"),
            (block(content[:-1]), "it ends too early"), (block(content[:40]), "it ends too early"),
            (block(b"SSHSIX" + content[6:]), "it is not an SSH signature"),
            (block(b"SSHSIG\0\0\0\0" + content[10:]), "its format has another version than 1"),
            (block(b"SSHSIG\0\0\0\2" + content[10:]), "its format has another version than 1"),
            (block(b"SSHSIG\1\0\0\0" + content[10:]), "its format has another version than 1"),
            (block(Signature.MAGIC + b"\xff\xff\xff\xff" + content[14:]), "it ends too early")])

    def test_a_signature_for_another_purpose_is_refused(self):
        for purpose in ("file", "email", "kvreflash-archive2", "kvreflash", "KVREFLASH-ARCHIVE", "kvreflash-archive "):
            with self.subTest(purpose):
                self.signature.unlink()
                self.sign(namespace=purpose)
                for more, trusts in self.EVERYBODY:
                    self.assert_refused("the signature does not hold: signature 1: it was made for "
                                        f"'{purpose}' and not for '{NAMESPACE}'", *more, trusts=trusts)
        # Who says afterwards that it was for this purpose has not signed that.
        renamed = Signature.read(self.signature.read_bytes()).block(purpose=NAMESPACE.encode())
        self.assert_blocks_refused([(renamed, self.not_mine())])

    def test_other_digests_are_refused(self):
        rows = [(self.parts.block(digest=digest.encode()), f"its digest '{digest}' is not taken")
                for digest in ("", "md5", "sha1", "sha384", "SHA512", "sha512-256", "none")]
        self.assert_blocks_refused([*rows, (self.parts.block(digest=b"sha256"), self.not_mine())])

    def test_a_signature_of_something_else_is_refused(self):
        self.signature.unlink()
        self.sign(self.key("other"))
        others = Signature.read(self.signature.read_bytes())
        self.restore()
        self.assert_blocks_refused([(others.block(key=self.parts.key), self.not_mine())])
        # Whoever trusts others asks for the key first.
        self.signature.write_bytes(self.parts.block(key=others.key))
        self.assert_refused(f"the signature does not hold: signature 1: {self.not_mine(others.key)}", trusts=False)
        for more in ((), ("--unsealed",)):
            self.assert_refused("it is not signed by anybody who is trusted: the signer "
                                f"{key_fingerprint(others.key)} is not among the allowed signers", *more)
        self.restore()
        # That of an earlier release stays that of the earlier release.
        self.manifest.write_text(self.manifest.read_text() + " ")
        for more, trusts in self.EVERYBODY:
            self.assert_refused(f"the signature does not hold: signature 1: {self.not_mine()}", *more, trusts=trusts)

    def test_every_block_has_to_hold(self):
        bad = self.parts.block(digest=b"sha1")
        self.assert_blocks_refused([(self.genuine + bad, "its digest 'sha1' is not taken"),
                                    (self.genuine + bad + self.genuine, "its digest 'sha1' is not taken")],
                                   "the signature does not hold: signature 2: ")
        self.assert_blocks_refused([(bad + self.genuine, "its digest 'sha1' is not taken"),
                                    (self.parts.block(reserved=b"x"), "its reserved field is not empty")])

    def test_what_a_stranger_has_written_makes_no_line_of_the_tool(self):
        self.signature.write_bytes(self.parts.block(purpose="\x1b[2J\nkvreflash: fine".encode()))
        self.assertEqual(self.update().errors.decode().splitlines(), [
            "kvreflash: the firmware archive is not accepted: the signature does not hold: signature 1: it was made "
            r"for '\x1B[2J\x0Akvreflash: fine' and not for 'kvreflash-archive'"])


class ForgedSignatureTest(BlockTest):
    """Signatures that come close to a good one. The key is trusted."""

    def signed_with(self, *kind):
        """The parts of a signature by a key of this kind, which is trusted, and the key."""
        key = self.key("forged", *kind)
        self.signature.unlink()
        self.sign(key)
        self.allow(f"maker@korvel {self.public(key)}")
        return Signature.read(self.signature.read_bytes()), key

    def assert_values_refused(self, parts, values):
        """None of these is the key's signature."""
        self.assert_blocks_refused([(parts.block(value=value), self.not_mine(parts.key)) for value in values])

    def test_of_ed25519(self):
        kind, value = fields(self.parts.value)
        half = len(value) // 2
        values = [bytes(64), b"\xff" * 64, b"\1" + bytes(63), bytes(half) + value[half:], value[:half] + bytes(half),
                  value[half:] + value[:half], value[::-1], value[:-1], value + b"\0", b""]
        # The same number, but for the order of the curve.
        s = int.from_bytes(value[half:], "little")
        values += [value[:half] + (s + times * ED25519_ORDER).to_bytes(half, "little") for times in range(1, 16)
                   if s + times * ED25519_ORDER < 2 ** 256]
        self.assert_values_refused(self.parts, [
            *[field(kind) + field(other) for other in values], field(kind) + field(value) + b"\0", value,
            *[field(other) + field(value) for other in (b"", b"ssh-ed448", b"ssh-rsa", b"SSH-ED25519")]])

    def test_of_ecdsa(self):
        parts, _ = self.signed_with("-t", "ecdsa", "-b", "256")
        kind, value = fields(parts.value)
        r, s = (int.from_bytes(part, "big") for part in fields(value))
        def padded(value):
            return field(bytes(1) + fields(mpint(value))[0])
        order = P256_ORDER
        pairs = [(0, 0), (0, s), (r, 0), (s, r), (1, 1), (order, s), (r, order), (r + order, s), (r, s + order),
                 (order - 1, order - 1), (r + 2 ** 256, s), (r, s + 2 ** 4096)]
        values = [mpint(first) + mpint(second) for first, second in pairs]
        values += [padded(r) + mpint(s), mpint(r) + padded(s), field(b"\0") + mpint(s), mpint(r) + field(b"\x80"),
                   mpint(r), mpint(r) + mpint(s) + mpint(1), mpint(r) + mpint(s) + b"\0", b"",
                   r.to_bytes(32, "big") + s.to_bytes(32, "big")]
        values = [field(kind) + field(other) for other in values]
        values += [field(b"ecdsa-sha2-nistp384") + field(value), field(b"ssh-ed25519") + field(value)]
        self.assert_values_refused(parts, values)

    def test_of_rsa(self):
        parts, key = self.signed_with("-t", "rsa", "-b", "3072", "-m", "PEM")
        modulus, private = private_numbers(key)
        size = 384
        message = b"SSHSIG" + field(NAMESPACE.encode()) + field(b"") + field(b"sha512") + \
            field(hashlib.sha512(self.manifest.read_bytes()).digest())

        def value(content, kind=b"rsa-sha2-512"):
            signature = pow(int.from_bytes(content, "big"), private, modulus)
            return field(kind) + field(signature.to_bytes(size, "big"))

        def content(digest, begin=b"\0\1", fill=b"\xff", information=None, behind=0):
            prefix = bytes.fromhex(PREFIXES[digest]) if information is None else information
            end = b"\0" + prefix + hashlib.new(digest, message).digest()
            return begin + fill * (size - len(begin) - len(end) - behind) + end + bytes(behind)

        self.signature.write_bytes(parts.block(value=value(content("sha512"))))
        self.assert_accepted()
        without_null = bytes.fromhex("304f300b06096086480165030402030440")
        values = [value(content("sha256"), b"rsa-sha2-256"), value(content("sha1"), b"ssh-rsa"),
                  value(content("sha512"), b"ssh-rsa"), value(content("sha512"), b"rsa-sha2-256")]
        values += [value(other) for other in (
            content("sha256"), content("sha1"), content("md5"), content("sha512", begin=b"\0\2"),
            content("sha512", begin=b"\0\0"), content("sha512", fill=b"\0"), content("sha512", fill=b"\xfe"),
            content("sha512", behind=300), content("sha512", behind=1), content("sha512", information=b""),
            content("sha512", information=without_null))]
        values += [field(b"rsa-sha2-512") + field(signature.to_bytes(size, "big"))
                   for signature in (0, 1, modulus - 1, modulus)]
        genuine = pow(int.from_bytes(content("sha512"), "big"), private, modulus)
        values += [field(b"rsa-sha2-512") + field(signature) for signature in (
            b"", b"\1", bytes(size), b"\xff" * size, genuine.to_bytes(size + 1, "big"),
            (genuine + modulus).to_bytes(size + 1, "big"), (genuine + (modulus << 40)).to_bytes(size + 6, "big"))]
        self.assert_values_refused(parts, values)


ED25519_ORDER = 2 ** 252 + 27742317777372353535851937790883648493
P256_ORDER = 0xffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551
PREFIXES = {"md5": "3020300c06082a864886f70d020505000410", "sha1": "3021300906052b0e03021a05000414",
            "sha256": "3031300d060960864801650304020105000420", "sha512": "3051300d060960864801650304020305000440"}


def private_numbers(key):
    """The modulus and the private exponent of an RSA key in a file of the format PEM."""
    content = base64.b64decode("".join(Path(key).read_text().splitlines()[1:-1]))

    def length(position):
        size = content[position]
        if size < 0x80:
            return size, position + 1
        end = position + 1 + (size & 0x7f)
        return int.from_bytes(content[position + 1:end], "big"), end

    _, position = length(1)
    numbers = []
    while position < len(content):
        size, begin = length(position + 1)
        numbers.append(int.from_bytes(content[begin:begin + size], "big"))
        position = begin + size
    return numbers[1], numbers[3]


class KeyKindTest(BlockTest):
    """Signatures by keys of other kinds, and by what is not a key; they are refused before anybody asks who it is."""

    def assert_keys_refused(self, keys):
        self.assert_blocks_refused([(self.parts.block(key=key), why) for key, why in keys])

    def test_other_kinds_are_refused_by_their_names(self):
        kinds = ("ssh-dss", "ecdsa-sha2-nistp384", "ecdsa-sha2-nistp521", "ssh-ed448", "rsa-sha2-512", "x509v3-ssh-rsa",
                 "sk-ssh-ed25519@openssh.com", "sk-ecdsa-sha2-nistp256@openssh.com", "ssh-ed25519-cert-v01@openssh.com",
                 "ecdsa-sha2-nistp256-cert-v01@openssh.com", "ssh-rsa-cert-v01@openssh.com", "SSH-ED25519", "")
        point = fields(self.parts.key)[1]
        self.assert_keys_refused([(field(kind.encode()) + field(point), f"keys of the kind '{kind}' are not taken")
                                  for kind in kinds])

    def test_what_is_not_a_key_is_refused(self):
        key = self.parts.key
        not_ed25519, not_rsa = "it is not a key of the kind 'ssh-ed25519'", "it is not a key of the kind 'ssh-rsa'"
        not_ecdsa = "it is not a key of the kind 'ecdsa-sha2-nistp256'"
        ed25519, curve, rsa = field(b"ssh-ed25519"), field(b"ecdsa-sha2-nistp256"), field(b"ssh-rsa")
        p256, point = field(b"nistp256"), fields(key)[1]
        modulus = fields(mpint((1 << 3071) + 1))[0]
        self.assert_keys_refused([
            *[(other, "it is not a key") for other in (b"", b"\0\0\0", b"\xff" * 20)],
            *[(other, not_ed25519) for other in (key + b"\0", key[:-1], ed25519, ed25519 + field(point + b"\0"),
                                                 ed25519 + field(b""))],
            *[(curve + p256 + field(other), not_ecdsa) for other in (b"\2" + bytes(32), b"\6" + bytes(64), b"\0", b"",
                                                                     b"\4" + bytes(65), b"\4" + bytes(63))],
            (curve + field(b"nistp384") + field(b"\4" + bytes(64)), not_ecdsa), (curve + field(point), not_ecdsa),
            *[(rsa + mpint(65537) + other, not_rsa) for other in (b"", field(b""), field(b"\0" + modulus),
                                                                   field(modulus[1:]), field(modulus) + mpint(1))],
            *[(rsa + exponent + field(modulus), not_rsa) for exponent in (
                mpint(0), mpint(1), mpint(2), mpint(65536), mpint(2 ** 64 + 1), mpint(2 ** 300000 + 1), field(b"\0\3"),
                field(b"\x83"))]])

    def test_short_and_long_rsa_keys_are_refused(self):
        self.assert_keys_refused([
            (field(b"ssh-rsa") + mpint(65537) + mpint((1 << bits - 1) + 1),
             f"RSA keys of {bits} bits are not taken: they must have 3072 to 16384")
            for bits in (16, 1024, 2048, 3071, 16385, 300000)])

    def test_points_that_anybody_can_sign_for_have_signed_nothing(self):
        """Nor those that are none, or that are written in another way, or that a library may stumble over."""
        p = 2 ** 255 - 19
        eighth = int.from_bytes(bytes.fromhex("26e8958fc2b227b045c3f489f2ef98f0d5dfac05d3c63339b13802886d53fc05"),
                                "little")  # of order 8
        half = [0, 1, p - 1, p, p + 1, eighth, p - eighth, 2, 3, 2 ** 192 - 1, 2 ** 255 - 1]
        kind = field(b"ssh-ed25519")
        keys = [(kind + field(number.to_bytes(32, "little")), kind + field(r + bytes(32)))
                for number in half + [number + 2 ** 255 for number in half]
                for r in (b"\1" + bytes(31), bytes(32))]
        # Those of which x is 2, and nearly 2 ** 192.
        keys += [(kind + field(bytes.fromhex(y)), kind + field(bytes(64))) for y in (
            "3126711e11ef574692935381d2cd2bbab5dd113c4010f91fd7c4dd7b12bf431a",
            "64f71413b1de0a3d7dc3fd0adf699031b75a404a2b8820bea51bf69638e075cb")]
        kind = field(b"ecdsa-sha2-nistp256")
        keys += [(kind + field(b"nistp256") + field(b"\4" + coordinate * 2), kind + field(mpint(1) + mpint(1)))
                 for coordinate in (bytes(32), bytes(31) + b"\1", b"\xff" * 32)]
        for key, value in keys:
            self.allow(f"maker@korvel {key_line(key)}")
            self.assert_blocks_refused([(self.parts.block(key=key, value=value), self.not_mine(key))])


class AllowedSignersTest(RefusalTest):
    """Lines of allowed_signers, and what the stock tool says of the same file when it is asked for "me"."""

    def setUp(self):
        super().setUp()
        self.public_key = self.public(self.key())
        self.kind, self.base64 = self.public_key.split()

    def is_good_for_the_stock_tool(self):
        with open(self.manifest, "rb") as text:
            done = subprocess.run(["ssh-keygen", "-Y", "verify", "-n", NAMESPACE, "-I", "me", "-f",
                                   self.trust / "allowed_signers", "-s", self.signature,
                                   "-Overify-time=20260921141320Z"], stdin=text, capture_output=True, check=False)
        return done.returncode == 0

    def put(self, text):
        (self.trust / "allowed_signers").write_bytes(text if isinstance(text, bytes) else text.encode())

    def assert_trusted(self, text, principals="me", agrees=True):
        with self.subTest(text[:80]):
            self.put(text)
            self.assertEqual(self.assert_accepted()["signer"], principals)
            self.assertEqual(self.is_good_for_the_stock_tool(), agrees)

    def assert_not_trusted(self, text, why="is not among the allowed signers", agrees=True):
        with self.subTest(text[:80]):
            self.put(text)
            for more, _ in tried(self.TRUSTING):
                self.assert_refused("it is not signed by anybody who is trusted: the signer "
                                    f"{fingerprint_of(self.key())} {why}", *more)
            self.assertEqual(self.is_good_for_the_stock_tool(), not agrees)

    def assert_line_refused(self, line, why, agrees=True):
        self.assert_not_trusted(line, f"is not among the allowed signers; allowed_signers, line 1: {why}", agrees)

    def test_a_key_is_trusted_however_its_line_is_written(self):
        key = self.public_key
        for text in (f"me {key}", f"me {key}\n", f"me {key}\r\n", f"\t me \t{self.kind}\t{self.base64}\ta comment\n",
                     f"# who\n\n \nme {key}\n", f"you {self.public(self.key('you'))}\nme {key}\n"):
            self.assert_trusted(text)
        self.assert_trusted(f"me,you {key}", "me,you")
        self.assert_trusted(f"m? {key}", "m?")
        self.assert_trusted(f"* {key}", "*")

    def test_principals_are_names_that_are_shown(self):
        """The stock tool has to be asked for somebody; whoever has a line may release archives."""
        for name in ("release@korvel", "a@korvel,b@korvel", "\u00fc", "-"):
            self.assert_trusted(f"{name} {self.public_key}", name, agrees=False)
        self.assert_trusted(f'"some body" {self.public_key}', "some body", agrees=False)

    def test_nobody_is_trusted_without_a_line(self):
        for text in ("", "\n", "# nobody\n", f"#me {self.public_key}", f"you {self.public(self.key('you'))}\n"):
            self.assert_not_trusted(text)

    def test_options_are_obeyed(self):
        for namespaces in ("kvreflash-archive", "file,kvreflash-archive", "*", "kv*", "kvreflash-archiv?", "!file,*"):
            self.assert_trusted(f'me namespaces="{namespaces}" {self.public_key}')
        for options in ('NameSpaces="*"', 'valid-after="20200101"', 'valid-before="20300101Z"',
                        'valid-after="202001010000"', 'valid-after="20200101000000Z",valid-before="20300101"',
                        'valid-before="20300101",namespaces="kv*"'):
            self.assert_trusted(f"me {options} {self.public_key}")
        for namespaces in ("", "file", "KVREFLASH-ARCHIVE", " kvreflash-archive", "file, kvreflash-archive",
                           "kvreflash-archive2", "!kv*,*", "*,!kvreflash-archive", "!*", "[k]*", "\\*"):
            self.assert_not_trusted(f'me namespaces="{namespaces}" {self.public_key}',
                                    "(me) may not sign for 'kvreflash-archive'")

    def test_a_key_counts_at_the_time_of_the_manifest_alone(self):
        """It was sealed at 14:13:20."""
        for options in ('valid-after="20260921141320Z"', 'valid-before="20260921141320Z"'):
            self.assert_trusted(f"me {options} {self.public_key}")
        for options, why in (('valid-after="20260921141321Z"', "after 2026-09-21T14:13:21Z"),
                             ('valid-before="20260921141319Z"', "before 2026-09-21T14:13:19Z"),
                             ('valid-before="20200101Z"', "before 2020-01-01T00:00:00Z"),
                             ('valid-after="20260101Z",valid-before="20260201Z"', "before 2026-02-01T00:00:00Z")):
            self.assert_not_trusted(f"me {options} {self.public_key}", f"(me) may sign {why} only")

    def test_any_line_of_a_key_counts(self):
        self.assert_trusted(f'old valid-before="20200101Z" {self.public_key}\nnew {self.public_key}\n', "new",
                            agrees=False)

    def test_options_that_are_not_understood_let_nobody_sign(self):
        unknown = "is not known, stands twice or has no value in quotes"
        for option in ('no-such="x"', 'from="*"', 'expiry-time="20300101"', "namespaces=*", "namespaces=",
                       "valid-after=20200101", 'namespaces="*"x', 'x=""'):
            self.assert_line_refused(f"me {option} {self.public_key}", f"its option '{option}' {unknown}")
        for options, named in (('namespaces="*",namespaces="*"', 'namespaces="*"'),
                               ('valid-before="20200101Z",valid-before="20300101Z"', 'valid-before="20300101Z"'),
                               ('namespaces="*","x"', '"x"'), ('namespaces="*",', "")):
            self.assert_line_refused(f"me {options} {self.public_key}", f"its option '{named}' {unknown}")
        for time in ("", "never", "-1", "2020", "2020010100000"):
            self.assert_line_refused(f'me valid-before="{time}" {self.public_key}',
                                     f"'{time}' is not a time for valid-before")
        for time in ("20200230", "20200101z"):
            self.assert_line_refused(f'me valid-after="{time}" {self.public_key}',
                                     f"'{time}' is not a time for valid-after", agrees=False)
        for word in ("no-touch-required", "verify-required", "restrict", "namespaces", 'namespaces = "*"',
                     'namespaces="*" valid-before="20200101Z"'):
            self.assert_line_refused(f"me {word} {self.public_key}", "the key is not base64")
        for word in ("cert-authority", "CERT-AUTHORITY", 'cert-authority,namespaces="*"',
                     'namespaces="*",cert-authority'):
            self.assert_line_refused(f"me {word} {self.public_key}", "keys of certificate authorities are not taken")

    def test_patterns_that_leave_somebody_out_let_nobody_sign(self):
        for principals in ("!me", "*,!me", "!*", "me,!you"):
            # The last one is that of "me" for the stock tool.
            self.assert_line_refused(f"{principals} {self.public_key}",
                                     "its signers hold a '!', which leaves nobody out here",
                                     agrees=principals != "me,!you")

    def test_control_characters_let_nobody_sign(self):
        for principals in ("me\x1b[2J", "me\0", "me\x7f"):
            self.assert_line_refused(f"{principals} {self.public_key}", "it has a control character")

    def test_lines_that_are_none_let_nobody_sign(self):
        no_list = "it is not a list of signers, a kind of key and a key"
        not_this_kind = "it is not a key of the kind 'ssh-ed25519'"
        content = key_content(self.key())
        encoded = {name: base64.b64encode(bytes_).decode() for name, bytes_ in (
            ("longer", content + b"\0"), ("shorter", content[:-1]))}
        for line, why in ((f"{self.public_key}", "it has no key"), (f'"" {self.public_key}', "it names nobody"),
                          ("me", no_list), (f'me "{self.public_key}', no_list),
                          (f'me namespaces="* {self.public_key}', no_list), (f"me {self.kind}", "it has no key"),
                          (f"me\u00a0{self.public_key}", "it has no key"),
                          (f"me {self.kind} {self.base64[:-1]}!", "the key is not base64"),
                          (f"me {self.kind} {self.base64[:-2]}", "the key is not base64"),
                          (f"me {self.kind} {encoded['longer']}", not_this_kind),
                          (f"me {self.kind} {encoded['shorter']}", not_this_kind),
                          (f"me {self.kind} {self.base64[:20]} {self.base64[20:]}", not_this_kind),
                          (f"me ssh-rsa {self.base64}", "the key is not of the kind 'ssh-rsa'")):
            self.assert_line_refused(line, why)
        for kind in ("sk-ssh-ed25519@openssh.com", "ssh-ed25519-cert-v01@openssh.com"):
            line = key_line(field(kind.encode()) + field(fields(content)[1]))
            self.assert_line_refused(f"me {line}", f"keys of the kind '{kind}' are not taken")
        self.assert_line_refused(f"me {self.public_key}".encode("utf-16"), "it has a control character")


class TrustFolderTest(RefusalTest):
    """What is revoked, and trust folders that cannot be used: nothing passes."""

    def setUp(self):
        super().setUp()
        self.public_key = self.public(self.key())
        self.allowed, self.revoked = self.trust / "allowed_signers", self.trust / "revoked"

    def assert_unusable(self, why, folder=None):
        for more, _ in tried(self.TRUSTING):
            with self.subTest(why, more=more):
                self.assert_refused(f"the trust folder '{folder or self.trust}' cannot be used: {why}", *more)

    def test_what_is_revoked_in_whatever_words_is_refused(self):
        mine = fingerprint_of(self.key())
        digest = hashlib.sha256(self.manifest.read_bytes()).hexdigest()
        not_mine = f"it is not signed by anybody who is trusted: the signer {mine} was revoked"
        rows = [(text, not_mine) for text in (self.public_key, f"{self.public_key} stolen", mine, f"{mine}\tstolen",
                                              f"  {mine}  \r\n", f"# stolen\n\n{mine}",
                                              f"{fingerprint_of(self.key('other'))}\n{mine}")]
        rows += [(text, "its manifest was revoked") for text in (digest, digest.upper(), f"{digest}  manifest.json\n")]
        for text, why in rows:
            self.revoked.write_text(text)
            for more, _ in tried(self.TRUSTING):
                with self.subTest(text, more=more):
                    self.assert_refused(why, *more)
        self.revoked.write_text("# nobody\n" + fingerprint_of(self.key("other")) + "\n")
        self.assert_accepted()

    def test_a_revoked_signer_does_not_spoil_another_one(self):
        self.sign(self.key("second"))
        self.allow(f"release@korvel {self.public_key}", f"second@korvel {self.public(self.key('second'))}")
        self.revoked.write_text(self.public_key)
        self.assertEqual(self.assert_accepted()["signer"], "second@korvel")
        self.revoked.write_text(f"{self.public_key}\n{self.public(self.key('second'))}\n")
        self.assert_refused("it is not signed by anybody who is trusted: " + "; ".join(
            f"the signer {fingerprint_of(key)} was revoked" for key in (self.key(), self.key("second"))))

    def test_revocations_that_are_not_understood_refuse_everything(self):
        mine = fingerprint_of(self.key())
        digest = hashlib.sha256(self.manifest.read_bytes()).hexdigest()
        none = "it is neither a public key nor a fingerprint nor the SHA-256 of a manifest"
        no_key, no_base64 = "it is not a key", "the key is not base64"
        for text, why in ((mine[:-1], no_key), (mine + "=", no_key), (mine[:-1] + "!", no_key),
                          (mine.lower(), no_key), ("MD5:00:11:22", no_key),
                          (digest[:-1], no_key), (f"sha256:{digest}", no_key), (f"\ufeff{mine}", no_key),
                          ("SSHKRL\n", no_key), (self.public_key[:-2], no_base64),
                          (f"release@korvel {self.public_key}", no_base64), (f"256 {mine} me (ED25519)", no_base64),
                          (f'namespaces="*" {self.public_key}', no_base64)):
            self.revoked.write_text(f"# first\n{text}")
            self.assert_unusable(f"its file revoked is not understood, line 2: {none}: {why}")
        for text in (f"{fingerprint_of(self.key('other'))}\r{mine}", f"{mine}\0"):
            self.revoked.write_bytes(text.encode())
            self.assert_unusable("its file revoked is not understood, line 1: it has a control character")

    def test_a_folder_that_is_none_refuses_everything(self):
        shutil.rmtree(self.trust)
        cannot_be_read = "its file allowed_signers cannot be read"
        self.assert_unusable(cannot_be_read)
        self.trust.write_text("")
        self.assert_unusable(cannot_be_read)
        self.trust.unlink()
        self.trust.mkdir()
        self.assert_unusable(cannot_be_read)
        done = self.update("--trust", "", trusts=False)
        self.assertEqual((done.code, done.errors.splitlines()[0][:46]),
                         (64, b"kvreflash: --trust: the folder has no name; ru"))

    def test_a_file_that_cannot_be_read_refuses_everything(self):
        for path in (self.allowed, self.revoked):
            cannot_be_read = f"its file {path.name} cannot be read"
            path.unlink(missing_ok=True)
            path.mkdir()
            self.assert_unusable(cannot_be_read)
            path.rmdir()
            path.write_text(f"# {' ' * (1 << 20)}\n")
            self.assert_unusable(cannot_be_read)
            path.unlink()
            if path == self.allowed:
                self.assert_unusable(cannot_be_read)
                self.allow(f"release@korvel {self.public_key}")
        self.assert_accepted()

    @unless_launched
    def test_a_file_of_another_kind_refuses_everything(self):
        for path in (self.allowed, self.revoked):
            for make in (os.mkfifo, lambda path: path.symlink_to("nowhere"), lambda path: path.symlink_to("/dev/zero"),
                         lambda path: path.symlink_to(path.name)):
                path.unlink(missing_ok=True)
                make(path)
                self.assert_unusable(f"its file {path.name} cannot be read")
            path.unlink()
            self.allow(f"release@korvel {self.public_key}")
        self.allowed.rename(self.scratch / "elsewhere")
        self.allowed.symlink_to(self.scratch / "elsewhere")
        self.assert_accepted()

    @unless_launched
    def test_a_file_without_rights_refuses_everything(self):
        if os.geteuid() != 0:
            self.skipTest("only root can run the tool as somebody else")
        if "KV_MEASURES_COVERAGE" in os.environ:
            self.skipTest("the tool cannot write its counters as somebody else")
        self.scratch.chmod(0o755)
        for path in (self.allowed, self.revoked, self.trust):
            self.revoked.touch()
            mode = path.stat().st_mode
            path.chmod(0)
            done = run("archive-version", "-a", self.archive, "--trust", self.trust, "--unsealed", user=NOBODY,
                       group=NOBODY, extra_groups=())
            name = "revoked" if path == self.revoked else "allowed_signers"
            self.assertEqual((done.code, done.errors.decode()), (
                3, "kvreflash: the firmware archive is not accepted: the trust folder "
                f"'{self.trust}' cannot be used: its file {name} cannot be read\n"))
            path.chmod(mode)


class UnsealedTest(RefusalTest):
    """What `--unsealed` accepts: nothing but what has no manifest, or no signature."""

    def test_an_archive_without_signature_still_has_to_be_what_its_manifest_says(self):
        self.signature.unlink()
        self.assert_refused("it is not signed, and only archives of signers who are trusted are accepted")
        reverse(self.archive / NETWORK)
        self.assert_refused(f"'{NETWORK}' was changed", "--unsealed")
        shutil.copy(self.kept / NETWORK, self.archive)
        (self.archive / "x").write_text("")
        self.assert_refused("'x' is additional", "--unsealed")
        (self.archive / "x").unlink()
        self.assert_updated("--unsealed")

    def test_a_manifest_without_signature_still_has_to_be_one(self):
        self.signature.unlink()
        for text, why in (("", "it is not valid JSON: The text ends before its value is complete."),
                          ("{}", "its format is not 'kvreflash.manifest'"),
                          (self.manifest.read_text().replace('"name": "network.ini"', '"name": "../network.ini"'),
                           "the name '../network.ini' is not safe: it has the folder '..'")):
            self.manifest.write_text(text)
            self.assert_refused(f"the manifest is not valid: {why}", "--unsealed")
            self.assert_refused(f"the manifest is not valid: {why}", trusts=False)

    def test_what_a_stranger_has_written_is_not_looked_into(self):
        """Whether it is a manifest is known to those alone who trust nobody."""
        self.manifest.write_text("{")
        self.signature.unlink()
        self.assert_refused("it is not signed, and only archives of signers who are trusted are accepted")
        self.sign(self.key("stranger"))
        not_json = "the manifest is not valid: it is not valid JSON: The text ends before its value is complete."
        self.assert_refused("it is not signed by anybody who is trusted: the signer "
                            f"{fingerprint_of(self.key('stranger'))} is not among the allowed signers")
        self.assert_refused(not_json, trusts=False)
        self.sign()
        self.assert_refused(not_json)

    def test_a_revoked_manifest_is_refused_without_signature_too(self):
        self.signature.unlink()
        (self.trust / "revoked").write_text(hashlib.sha256(self.manifest.read_bytes()).hexdigest())
        self.assert_refused("its manifest was revoked", "--unsealed")


def header(name, size, *, kind=b"0", link=b"", mode=0o644, user=0, time=SEALED_AT, size_text=None, magic=b"ustar\00000",
           user_name=b"", prefix=b"", checksum="{:06o}\0 "):
    """A header of a ustar archive: that of a package, but for what is given."""
    numbers = b"%07o\0%07o\0%07o\0" % (mode, user, user) + (size_text or b"%011o\0" % size) + b"%011o\0" % int(time)
    begin = name.encode().ljust(100, b"\0") + numbers
    end = kind + link.ljust(100, b"\0") + magic + user_name.ljust(32, b"\0") + bytes(32) + b"0000000\0" * 2 + prefix
    end = end.ljust(512 - len(begin) - 8, b"\0")
    return begin + checksum.format(sum(begin + b" " * 8 + end)).encode() + end


def member(name, content, behind=b"\0", **fields_of_header):
    return header(name, len(content), **fields_of_header) + content + behind * (-len(content) % 512)


class PackageTest(RefusalTest):
    """Packages that are written in another way, and such that would lead out of their folder."""

    END = bytes(1024)

    def setUp(self):
        super().setUp()
        names = [file["name"] for file in json.loads(self.manifest.read_text())["files"]]
        self.files = {name: (self.archive / name).read_bytes()
                      for name in ("manifest.json", "manifest.json.sig", *names)}
        self.members = [member(name, content) for name, content in self.files.items()]
        self.place = list(self.files).index(NETWORK)
        self.package = self.scratch / "other.kva"
        self.assertEqual(b"".join(self.members) + self.END, self.pack().read_bytes())

    def assert_packages_refused(self, rows):
        """Rows of what is in a package, and why it is refused."""
        before = sorted(self.scratch.iterdir())
        for number, (content, why) in enumerate(sample_of(rows)):
            self.package.write_bytes(content)
            for more, _ in tried(self.TRUSTING):
                with self.subTest(why, row=number, more=more):
                    self.assert_refused(why, *more, archive=self.package)
            for left in ("r.json", "events"):
                (self.scratch / left).unlink()
        self.assertEqual(sorted(self.scratch.iterdir()), sorted({*before, self.package}))

    def with_member(self, *content, at=None, instead=0):
        """The package with these members at a place, in place of so many."""
        place = self.place if at is None else at
        return b"".join([*self.members[:place], *content, *self.members[place + instead:]]) + self.END

    def in_place_of_network(self, **fields_of_header):
        content = fields_of_header.pop("content", self.files[NETWORK])
        name = fields_of_header.pop("name", NETWORK)
        return self.with_member(member(name, content, **fields_of_header), instead=1)

    def test_members_that_are_not_plain_files_are_refused(self):
        not_here = f"'{NETWORK}' is not where the manifest has it"
        kinds = [self.in_place_of_network(kind=bytes([kind])) for kind in b"\0" b"1234567xgLKSDMNVA"]
        others = [header(NETWORK, 0, kind=b"2", link=b"/etc/passwd"),
                  header(NETWORK, 0, kind=b"1", link=b"archive.json"), header("sub/", 0, kind=b"5", mode=0o755),
                  member(f"PaxHeaders/{NETWORK}", b"19 path=../../x.ini\n", kind=b"x"),
                  member("././@LongLink", b"../../x.ini\0", kind=b"L"),
                  member("././@LongLink", b"/etc/passwd\0", kind=b"K"), bytes(512), self.END]
        self.assert_packages_refused([(content, not_here) for content in kinds] +
                                     [(self.with_member(other), not_here) for other in others] +
                                     [(self.with_member(other, instead=1), not_here) for other in others])

    def test_a_package_begins_with_its_manifest(self):
        no_manifest = "the manifest cannot be read: the package does not begin with the header of 'manifest.json'"
        manifest, signature = self.files["manifest.json"], self.files["manifest.json.sig"]
        pax = member("pax_global_header", b"52 comment=0123456789012345678901234567890123456789\n", kind=b"g")
        cut_off = "the manifest cannot be read: it is cut off, or not followed by zeros"
        large = "the manifest cannot be read: it is larger than anything that is read"
        whole = b"".join(self.members) + self.END
        rows = [(content, no_manifest) for content in (
            b"", b"x", bytes(10240), manifest, whole[:511], bytes(512) + whole, b"\x1f\x8b" + whole, b"PK\3\4" + whole,
            b"".join(self.members[1:]) + self.END, b"".join(self.members[2:]) + self.END, self.with_member(pax, at=0),
            self.with_member(header("./", 0, kind=b"5"), at=0), self.with_member(self.members[1], at=0),
            self.with_member(member("./manifest.json", manifest), at=0, instead=1),
            self.with_member(member("MANIFEST.JSON", manifest), at=0, instead=1),
            self.with_member(member("manifest.json", manifest, magic=b"ustar  \0"), at=0, instead=1))]
        rows += [(content, cut_off) for content in (
            whole[:512], whole[:1024], whole[:len(self.members[0]) - 1], header("manifest.json", 1 << 24) + whole[512:],
            self.with_member(member("manifest.json", manifest, b"\1"), at=0, instead=1))]
        rows += [(header("manifest.json", size) + whole[512:], large) for size in ((32 << 20) + 1, 8 ** 11 - 1)]
        rows += [(self.with_member(header("manifest.json.sig", size), at=1, instead=1),
                  "the signature cannot be read: it is larger than anything that is read")
                 for size in (65537, 8 ** 11 - 1)]
        rows += [(self.with_member(member("manifest.json.sig", signature, b"\1"), at=1, instead=1),
                  "the signature cannot be read: it is cut off, or not followed by zeros"),
                 (self.with_member(member("manifest.json.sig", b""), at=1, instead=1),
                  "the signature does not hold: it is empty"),
                 (self.with_member(member("manifest.json.sig", signature + b"\n"), at=1, instead=1),
                  "the signature does not hold: signature 2: it is not a block of an SSH signature and nothing else")]
        self.assert_packages_refused(rows)

    def test_a_signature_elsewhere_is_not_one(self):
        """A package without a signature is not one that is trusted; and what would be one is not where a file is."""
        others = [self.with_member(member("x", b""), at=1), self.with_member(self.members[0], at=1),
                  self.with_member(member("MANIFEST.JSON.SIG", self.files["manifest.json.sig"]), at=1, instead=1),
                  b"".join([self.members[0], *self.members[2:], self.members[1]]) + self.END]
        for content in others:
            self.package.write_bytes(content)
            self.assert_refused("it is not signed, and only archives of signers who are trusted are accepted",
                                archive=self.package)
        for content in others:
            why = ("the package does not end behind its last file" if content == others[-1] else
                   "'archive.json' is not where the manifest has it")
            self.package.write_bytes(content)
            self.assert_refused(why, "--unsealed", archive=self.package)
            self.assert_refused(why, archive=self.package, trusts=False)

    def test_headers_are_written_in_one_way(self):
        not_here = f"'{NETWORK}' is not where the manifest has it"
        size = len(self.files[NETWORK])
        fields_of_headers = [
            {"name": name} for name in ("../network.ini", "./network.ini", "/network.ini", "NETWORK.INI",
                                        "network.ini/", "x", "")]
        fields_of_headers += [
            {"prefix": b".."}, {"mode": 0o755}, {"mode": 0o4755}, {"user": 1000}, {"user_name": b"root"}, {"time": 0},
            {"time": int(SEALED_AT) + 1}, {"magic": b"ustar  \0"}, {"magic": bytes(8)}, {"link": b"x"},
            {"checksum": "000000\0 "}, {"checksum": "{:07o}\0"}, {"checksum": "{:6o}\0 "}, {"checksum": "{:06o} \0"}]
        fields_of_headers += [{"size_text": text} for text in (
            b"%011o\0" % (size + 1), b"%011o\0" % (size - 1), b"%011o\0" % 0, b"7" * 11 + b"\0", b"%012o" % size,
            b"%11o\0" % size, b"%011o " % size, b"%010o\0\0" % size, b"0o%09o\0" % size, b"0000000008\0\0",
            b"-0000000001\0", b"\x80" + size.to_bytes(11, "big"), b"\xff" * 12, bytes(12))]
        self.assert_packages_refused([(self.in_place_of_network(**other), not_here) for other in fields_of_headers])

    def test_files_stand_where_the_manifest_has_them(self):
        place, members = self.place, self.members
        not_here = f"'{NETWORK}' is not where the manifest has it"
        next_name = list(self.files)[place + 1]
        no_end = "the package does not end behind its last file"
        rows = [(self.with_member(instead=1), not_here),
                (self.with_member(members[place + 1], members[place], instead=2), not_here),
                (self.with_member(members[place]), f"'{next_name}' is not where the manifest has it"),
                (self.with_member(member("x", b"x")), not_here),
                (self.with_member(self.members[1], at=2), "'archive.json' is not where the manifest has it"),
                (self.with_member(members[place], at=len(members)), no_end),
                (self.with_member(member("x", b"x"), at=len(members)), no_end),
                (self.in_place_of_network(behind=b"\1"), f"'{NETWORK}' is cut off, or not followed by zeros"),
                (self.in_place_of_network(content=self.files[NETWORK][::-1]), f"'{NETWORK}' was changed")]
        self.assert_packages_refused(rows)

    def test_nothing_stands_behind_the_end_and_nothing_of_it_is_missing(self):
        whole = b"".join(self.members) + self.END
        last = list(self.files)[-1]
        no_end = "the package does not end behind its last file"
        rows = [(content, no_end) for content in (
            whole + b"x", whole + b"\0", whole + bytes(512), whole + bytes(-len(whole) % 10240), whole + whole,
            whole[:-1], whole[:-512], whole[:-1024], whole[:-1] + b"\1", whole[:-1024] + b"\1" + whole[-1023:])]
        rows += [(whole[:-1025], f"'{last}' is cut off, or not followed by zeros"),
                 (whole[:-1024 - 512], f"'{last}' is cut off, or not followed by zeros"),
                 (whole[:-1024 - 1024], f"'{last}' is not where the manifest has it")]
        self.assert_packages_refused(rows)

    def test_all_headers_have_the_time_of_the_manifest(self):
        all_later = [member(name, content, time=int(SEALED_AT) + 1) for name, content in self.files.items()]
        signature = "the signature cannot be read: it was packed at another time than the manifest"
        self.assert_packages_refused([
            (b"".join(all_later) + self.END, "the package was packed at another time than its manifest says"),
            (self.with_member(all_later[0], at=0, instead=1), signature),
            (self.with_member(all_later[1], at=1, instead=1), signature)])

    def test_a_stock_archive_is_not_a_package(self):
        subprocess.run(["tar", "cf", self.package, "--format=ustar", *self.files], cwd=self.archive, check=True)
        self.assert_refused("the manifest cannot be read: the package does not begin with the header of "
                            "'manifest.json'", archive=self.package)

    def test_a_package_does_not_leave_its_folder(self):
        """Even if whom one trusts has signed it."""
        for name, why in (("../x", "it has the folder '..'"), ("/x", "it has a folder without a name"),
                          ("sub/../../x", "it has the folder '..'"), ("C:x", "Windows cannot have a file called 'C:x'"),
                          ("..\\x", r'it has a "\"'), ("nul", "Windows takes 'nul' for a device"),
                          ("x.", "Windows cannot have a file called 'x.'")):
            document = json.loads(self.files["manifest.json"])
            document["files"].append({"name": name, "size": 4, "sha256": hashlib.sha256(b"evil").hexdigest()})
            self.manifest.write_text(json.dumps(document))
            self.signature.unlink()
            self.sign()
            members = [member("manifest.json", self.manifest.read_bytes()),
                       member("manifest.json.sig", self.signature.read_bytes()), *self.members[2:],
                       member(name, b"evil")]
            self.assert_packages_refused([(b"".join(members) + self.END,
                                           f"the manifest is not valid: the name '{name}' is not safe: {why}")])


class PrivateCopyTest(RefusalTest):
    """Places for the private copy that are none: nothing is used without a copy."""

    @unless_launched
    def test_without_a_place_for_the_copy_nothing_is_accepted(self):
        (self.scratch / "file").write_text("")
        for name in ("nowhere", "file"):
            self.set_environment(TMPDIR=self.scratch / name)
            for archive in (self.archive, self.pack()):
                self.assert_refused("it cannot be copied to a private folder: there is no folder for temporary files",
                                    archive=archive)

    @unless_launched
    def test_a_place_that_is_too_small_is_said_before_the_target_is_looked_for(self):
        if os.geteuid() != 0 or not shutil.which("mount"):
            self.skipTest("only root can mount a small disk")
        small = self.scratch / "small"
        small.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=256k", "none", small], capture_output=True,
                          check=False).returncode != 0:
            self.skipTest("nothing can be mounted here")
        self.addCleanup(subprocess.run, ["umount", small], check=False)
        self.set_environment(TMPDIR=small)
        sizes = {file["name"]: file["size"] for file in json.loads(self.manifest.read_text())["files"]}
        # The description is copied first. The example names all other files.
        description = sizes.pop("archive.json")
        left = (256 << 10) - -(-description // 4096) * 4096
        for archive in (self.archive, self.pack()):
            self.assert_refused(f"its private copy needs {sum(sizes.values())} bytes, and only {left} are free",
                                archive=archive)
            self.assertEqual(list(small.iterdir()), [])


# So many moments, each for files of a folder, whole folders, and packages.
MOMENTS = int(os.environ.get("KV_EXCHANGE_MOMENTS", "25"))
# Pauses that make the update last several times as long as the reading.
TIME_SCALE = "0.002"
# A later moment than that is after the end.
MARGIN = 1.05


def forge(name, content):
    """Another file that an update would take, of the same length and, if a header states it, with another checksum."""
    if name == "archive.json":
        return content.replace(b"config/net/network.ini", b"config/net/forged-.ini")
    if name.endswith(".kit"):
        return re.sub(rb'(checksum_?crc32": \d*)(\d)', lambda found: found[1] + bytes([found[2][0] ^ 1]), content,
                      flags=re.IGNORECASE)
    place = {".kfw": 63, ".kbs": 91}.get(name[-4:], 0)
    return content[:place] + bytes([content[place] ^ 1]) + content[place + 1:]


class ExchangeTest(RefusalTest):
    """Somebody exchanges what an update is reading, or has read."""

    def setUp(self):
        super().setUp()
        # What takes long to read, before, between and behind the others, and is never used.
        for name in ("b.bin", "p.bin", "z.bin"):
            with open(self.archive / name, "wb") as file:
                file.truncate(8 << 20)
        self.signature.unlink()
        self.release()
        self.other = self.scratch / "other"
        self.names = sorted(path.name for path in self.archive.iterdir() if path.suffix != ".bin")
        self.genuine = {name: (self.archive / name).read_bytes() for name in self.names}
        self.forged = self.forge_release()
        self.spare = self.scratch / "spare"
        self.moments = random.Random(SEED)

    def forge_release(self):
        """The files of a release of a stranger, in a folder of their own. It is as whole as the genuine one."""
        shutil.copytree(self.archive, self.other)
        for name in ("manifest.json", "manifest.json.sig"):
            (self.other / name).unlink()
        for name in self.names:
            if not name.startswith("manifest"):
                (self.other / name).write_bytes(forge(name, self.genuine[name]))
        self.assertEqual(run("seal", self.other).code, 0)
        genuine, self.archive = self.archive, self.other
        self.sign(self.key("stranger"))
        self.archive = genuine
        return {name: (self.other / name).read_bytes() for name in self.names}

    def start(self, command, archive):
        environment = {**os.environ, "KV_TIME_SCALE": TIME_SCALE}
        return subprocess.Popen(command_of(command, "-a", archive, *self.target, "--trust", self.trust),
                                env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT)

    def seconds_of(self, command, archive):
        """The least of some: whatever else the machine does makes them longer."""
        seconds = []
        for _ in range(3):
            shutil.rmtree(self.rack / "state", ignore_errors=True)
            began = time.monotonic()
            with self.start(command, archive) as process:
                output = process.communicate()[0]
            self.assertEqual(process.returncode, 0, output)
            seconds.append(time.monotonic() - began)
        return min(seconds)

    def installed(self):
        """What the target has, and shows of it."""
        state = self.rack / "state"
        return {str(path.relative_to(state)): path.read_bytes() for folder in ("elements", "cfdrive")
                for path in sorted((state / folder).rglob("*")) if path.is_file()}

    def sweep(self, archive, make_exchange):
        """Makes an exchange during each of some updates: nothing but the genuine files is ever installed, all or none.
        make_exchange() returns what exchanges something, and what brings back what was there."""
        reading, whole = self.seconds_of("plan", archive), self.seconds_of("update", archive)
        genuine = self.installed()
        codes = []
        for number in range(MOMENTS + 1):
            exchange, bring_back = make_exchange()
            # Two in three while the archive is read; the first before that.
            latest = self.moments.choice((reading, reading, whole * MARGIN))
            seconds = self.moments.uniform(0, latest) if number > 0 else None
            with self.subTest(number=number, exchange=exchange.__qualname__, seconds=seconds):
                codes.append(self.update_during(archive, seconds, exchange, genuine))
            bring_back()
        self.assertEqual(codes[0], 3)
        print(f"{MOMENTS} moments of seed {SEED}, {codes[1:].count(3)} updates were refused")

    def update_during(self, archive, seconds, exchange, genuine):
        """The exit code of an update. The exchange is made so many seconds after its beginning; None: before it."""
        shutil.rmtree(self.rack / "state", ignore_errors=True)
        if seconds is None:
            exchange()
        with self.start("update", archive) as process:
            if seconds is not None:
                time.sleep(seconds)
                exchange()
            output = process.communicate(timeout=300)[0]
        self.assertIn(process.returncode, (0, 3), output)
        self.assertEqual(self.installed(), genuine if process.returncode == 0 else {}, output)
        self.assertEqual(self.private_copies(), [])
        return process.returncode

    def exchange_of(self, path, forged):
        """A way to exchange a file."""
        def replace():
            os.replace(self.spare, path)
        def write_over():
            with open(path, "r+b") as file:
                file.write(forged)
        def cut():
            os.truncate(path, len(forged) // 2)
        def remove():
            path.unlink()
        def link():
            path.unlink()
            path.symlink_to(self.spare)
        self.spare.write_bytes(forged)
        return self.moments.choice((replace, write_over, cut, remove) if arguments.launcher else
                                   (replace, write_over, cut, remove, link))

    def test_forged_files_would_be_seen_on_the_target(self):
        """Otherwise nothing of what follows could fail."""
        self.assertEqual(self.update().code, 0)
        genuine = self.installed()
        for name in ("manifest.json", "manifest.json.sig"):
            (self.archive / name).unlink()
        unseen = []
        for name in self.names:
            if not name.startswith("manifest"):
                self.assertEqual(len(self.forged[name]), len(self.genuine[name]))
                (self.archive / name).write_bytes(self.forged[name])
                shutil.rmtree(self.rack / "state")
                self.assertEqual(self.update(trusts=False).code, 0, name)
                unseen += [name] if self.installed() == genuine else []
                (self.archive / name).write_bytes(self.genuine[name])
        # The target has these already, or takes them only if it is asked to.
        self.assertEqual(unseen, ["qb4120-cpld.kfw", "qb4120-settings.cfg", "qbx86-ipl.kfw"])
        shutil.rmtree(self.rack / "state")
        self.assertEqual(self.update(archive=self.other, trusts=False).code, 0)
        self.assertNotEqual(self.installed(), genuine)

    def test_a_file_that_is_exchanged_is_never_installed(self):
        def make_exchange():
            name = self.moments.choice(self.names)
            path = self.archive / name
            def bring_back():
                path.unlink(missing_ok=True)
                path.write_bytes(self.genuine[name])
            return self.exchange_of(path, self.forged[name]), bring_back
        self.sweep(self.archive, make_exchange)

    @unless_launched
    def test_a_folder_that_is_exchanged_is_never_installed(self):
        """Another folder that is as whole, in one moment."""
        way = self.scratch / "way"
        way.symlink_to(self.archive)
        def lead_to(folder):
            (self.scratch / "new way").symlink_to(folder)
            os.replace(self.scratch / "new way", way)
        self.sweep(way, lambda: (lambda: lead_to(self.other), lambda: lead_to(self.archive)))

    def test_a_package_that_is_exchanged_is_never_installed(self):
        package = self.pack()
        genuine, self.archive = package.read_bytes(), self.other
        forged = self.pack().read_bytes()
        # The files alone, under the genuine manifest and signature.
        end = genuine.index(b"archive.json\0")
        partly_forged = genuine[:end] + forged[end:]
        self.assertEqual(len(partly_forged), len(genuine))
        def make_exchange():
            package.unlink(missing_ok=True)
            package.write_bytes(genuine)
            return self.exchange_of(package, self.moments.choice((forged, partly_forged))), lambda: None
        package.write_bytes(genuine)
        self.sweep(package, make_exchange)


if __name__ == "__main__":
    tool_runs.main()
