"""The package mirrors kvreflash.h."""

import ctypes
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

import support
from kvreflash import _library, _records, enums

FOLDER = support.PROJECT / "include"
HEADER = re.sub(r"/\*.*?\*/", "", (FOLDER / "kvreflash.h").read_text(encoding="utf-8"), flags=re.DOTALL)

# {name in the header: its field names} of all records.
RECORDS = {name: re.findall(r"(\w+);", body)
           for name, body in re.findall(r"typedef struct (\w+) \{(.*?)\}", HEADER, re.DOTALL)}
CONSTANTS = set(re.findall(r"^ +(KVR_\w+) = ", HEADER, re.MULTILINE))

ENUMERATIONS = {
    "MODE": enums.Mode, "UNLISTED": enums.UnlistedFiles, "STOP": enums.StopRequest, "FAILURE": enums.Failure,
    "EVENT": enums.EventKind, "REASON": enums.Reason, "STAGE": enums.Stage, "RESULT": enums.Result,
    "VERIFIED": enums.Verified, "FAILED_CALL": enums.FailedCall, "SEAL": enums.Seal, "CHANGE": enums.ChangeKind,
    "RUN": enums.RunState, "DOCUMENT": list(enums.Document) + list(enums.ArchiveDocument), "CODE": enums.Code,
}
OTHERS = {"KVR_SUCCESS": 0, "KVR_FAILED": 1, "KVR_UNSUPPORTED": 2, "KVR_ERROR_ARGUMENT": -1, "KVR_ERROR_MEMORY": -2,
          "KVR_ERROR_ORDER": -3, "KVR_ERROR_VERSION": -4}

TYPES = {"uint32_t": ctypes.c_uint32, "uint32_t*": ctypes.POINTER(ctypes.c_uint32), "const char*": ctypes.c_char_p,
         "const char**": ctypes.POINTER(ctypes.c_char_p), "kvr_event_function": _library.EventFunction,
         "void*": ctypes.c_void_p}
TYPES.update({f"kvr_{name}*": ctypes.c_void_p for name in ("session", "archive", "runs")})
TYPES.update({f"kvr_{name}**": ctypes.POINTER(ctypes.c_void_p) for name in ("session", "archive", "runs")})


def class_of(record):
    """The class that mirrors a record: kvr_saved_plan is SavedPlan."""
    return getattr(_records, "".join(word.capitalize() for word in record.split("_")[1:]))


def run_c(statements):
    """What a program in C prints that includes the header."""
    compiler = os.environ["KVREFLASH_COMPILER"]
    with tempfile.TemporaryDirectory(prefix="kvpython-") as scratch:
        source, program = Path(scratch, "program.c"), Path(scratch, "program")
        source.write_text("#include <kvreflash.h>\n#include <stddef.h>\n#include <stdio.h>\nint main(void) {\n" +
                          "\n".join(statements) + "\nreturn 0;\n}\n", encoding="utf-8")
        subprocess.run([compiler, "-x", "c", f"-I{FOLDER}", source, "-o", program], check=True)
        lines = subprocess.run([program], check=True, capture_output=True, encoding="utf-8").stdout.splitlines()
    return {name: tuple(map(int, numbers.split())) for name, numbers in (line.split(" ", 1) for line in lines)}


class InterfaceTest(unittest.TestCase):
    """Records, constants and functions of the header."""

    def test_records_have_the_fields_of_the_header(self):
        self.assertGreater(len(RECORDS), 10)
        for name, fields in RECORDS.items():
            with self.subTest(record=name):
                self.assertEqual([field for field, _kind in class_of(name)._fields_], fields)

    def test_records_have_the_layout_that_a_compiler_gives_them(self):
        print_size = 'printf("{0} %zu\\n", sizeof({0}));'
        print_field = 'printf("{0}.{1} %zu %zu\\n", offsetof({0}, {1}), sizeof((({0}*)0)->{1}));'
        statements, expected = [], {}
        for name, fields in RECORDS.items():
            record = class_of(name)
            statements.append(print_size.format(name))
            expected[name] = (ctypes.sizeof(record),)
            for field in fields:
                statements.append(print_field.format(name, field))
                place = getattr(record, field)
                expected[f"{name}.{field}"] = (place.offset, place.size)
        self.assertEqual(run_c(statements), expected)

    def test_constants_have_the_values_of_the_header(self):
        expected = dict(OTHERS)
        for prefix, members in ENUMERATIONS.items():
            expected.update({f"KVR_{prefix}_{member.name}": member.value for member in members})
        expected.update({f"KVR_{flag.name}": flag.value for flag in enums.SessionFlag})
        expected.update({f"KVR_{name}": bit for name, bit in vars(_records).items() if name.startswith("KNOWS_")})
        self.assertEqual(CONSTANTS, set(expected))
        found = run_c([f'printf("{name} %d\\n", (int){name});' for name in sorted(CONSTANTS)])
        self.assertEqual({name: value for name, (value,) in found.items()}, expected)

    def test_functions_have_the_parameters_of_the_header(self):
        declared = {}
        for name, parameters in re.findall(r"\bint32_t KVR_CALL (kvr_\w+)\((.*?)\);", HEADER, re.DOTALL):
            kinds = [re.match(r"(?:const (?!char))?(.*?)\s*\w+$", part.strip()).group(1)
                     for part in parameters.split(",")]
            declared[name] = tuple(TYPES[kind] if kind in TYPES else ctypes.POINTER(class_of(kind[:-1]))
                                   for kind in kinds)
        self.assertEqual(declared, _library.PARAMETERS)
        others = set(re.findall(r"KVR_CALL (kvr_\w+)\(", HEADER)) - set(declared)
        self.assertEqual(others, set(_library.OTHER_FUNCTIONS))

    def test_the_interface_has_the_version_of_the_header(self):
        version = int(re.search(r"#define KVR_ABI_VERSION (\d+)u", HEADER).group(1))
        self.assertEqual(_library.ABI_VERSION, version)


class EnumerationTest(unittest.TestCase):
    """Values that are not known, and words."""

    def test_a_value_that_is_not_known_is_a_member(self):
        failure = enums.Failure(77)
        self.assertIsInstance(failure, enums.Failure)
        self.assertEqual((failure, failure.value, failure.name, failure.word), (77, 77, "UNKNOWN_77", ""))
        self.assertNotIn(failure, list(enums.Failure))

    def test_what_is_not_a_number_is_no_value(self):
        with self.assertRaises(ValueError):
            enums.Failure("archive")

    def test_values_have_the_words_of_documents(self):
        self.assertEqual(enums.Failure.NONE.word, "none")
        self.assertEqual(enums.Stage.PHASES_RUN.word, "phases-run")
        self.assertEqual(enums.RunState.BROKEN_OFF.word, "broken-off")
        self.assertEqual(enums.Reason.UP_TO_DATE.word, "up-to-date")
        self.assertEqual(enums.FailedCall.WRITE_FILE.word, "write-file")
        self.assertEqual(enums.Seal.NONE.word, "unsealed")
        self.assertEqual(enums.ChangeKind.REMOVED.word, "removed")
        self.assertEqual(enums.Mode.UPDATE.word, "")


if __name__ == "__main__":
    unittest.main()
