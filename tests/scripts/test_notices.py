"""Whatever other works the product includes, their notices come with the packages."""

import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
FOLDERS = ("include", "src", "platform", "tools")
NOTICES = {"boost": "Boost", "CLI": "CLI11", "rapidjson": "RapidJSON"}
OF_THE_SYSTEM = {"arpa", "net", "netinet", "sys"}


class NoticesTest(unittest.TestCase):
    def test_every_included_work_has_a_notice(self):
        sources = [path for folder in FOLDERS for path in (PROJECT / folder).rglob("*") if path.suffix in (".h", ".cpp")]
        self.assertGreater(len(sources), 100)
        works = {work for path in sources
                 for work in re.findall(r"^\s*#\s*include\s*<(\w+)/", path.read_text(encoding="utf-8"), re.MULTILINE)}
        self.assertEqual(works - OF_THE_SYSTEM, set(NOTICES))
        listed = (PROJECT / "cmake/Notices.cmake").read_text(encoding="utf-8")
        for name in NOTICES.values():
            self.assertTrue((PROJECT / "notices" / f"{name}.txt").is_file(), name)
            self.assertIn(name, re.search(r"set\(notices ([^)]*)\)", listed).group(1).split())

    def test_every_library_that_is_shipped_has_a_notice(self):
        shipped = re.search(r"foreach\(name ([^)]*)\)", (PROJECT / "cmake/Gcrypt.cmake").read_text(encoding="utf-8"))
        notice = (PROJECT / "notices/libgcrypt.txt").read_text(encoding="utf-8")
        for library in shipped.group(1).split():
            self.assertIn(library, notice)
        self.assertIn("GNU LESSER GENERAL PUBLIC LICENSE", notice)
        listed = (PROJECT / "cmake/Notices.cmake").read_text(encoding="utf-8")
        self.assertIn("libgcrypt", re.search(r"list\(APPEND notices ([^)]*)\)", listed).group(1).split())


if __name__ == "__main__":
    unittest.main()
