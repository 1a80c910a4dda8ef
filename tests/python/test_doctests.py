"""The examples of the package's docstrings. Each begins with `archive`, a copy of the example `rack`, and a `journal`
that does not exist yet."""

import doctest
import pkgutil
import shutil
import tempfile
from pathlib import Path

import kvreflash
import support


def set_up(test):
    scratch = Path(tempfile.mkdtemp(prefix="kvpython-"))
    test.globs.update(archive=support.ARCHIVE, rack=support.copy_rack(scratch), journal=scratch / "journal",
                      scratch=scratch)


def tear_down(test):
    kvreflash.emulation.reset()
    shutil.rmtree(test.globs["scratch"])


def load_tests(_loader, tests, _pattern):
    names = ["kvreflash"] + [f"kvreflash.{module.name}" for module in pkgutil.iter_modules(kvreflash.__path__)]
    for name in names:
        tests.addTests(doctest.DocTestSuite(name, setUp=set_up, tearDown=tear_down))
    return tests
