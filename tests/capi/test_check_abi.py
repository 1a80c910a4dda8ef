"""Tests which changes of an interface in C pass."""

import os
import tempfile
import unittest
from pathlib import Path

import check_abi

HEADER = """
#include <stdint.h>
enum { KVR_A = 0, /* first */
       KVR_B = 1 };
typedef struct kvr_thing {
    uint32_t size;
    uint32_t count; /* of things */
    const char* name;
} kvr_thing;
typedef void(KVR_CALL* kvr_function)(const kvr_thing* thing, void* context);
KVR_API int32_t KVR_CALL kvr_get(uint32_t index,
                                 kvr_thing* thing);
"""
MACROS = "#define KVR_CALL\n#define KVR_API\n"


def facts_of(text):
    with tempfile.TemporaryDirectory() as scratch:
        header = Path(scratch, "header.h")
        header.write_text(MACROS + text, encoding="ascii")
        return check_abi.facts_of(header, os.environ.get("CC", "gcc"))


class CheckAbiTest(unittest.TestCase):
    """A header beside the one that was kept."""

    def faults(self, old, new):
        self.assertIn(old, HEADER)
        return check_abi.faults_of(facts_of(HEADER), facts_of(HEADER.replace(old, new)))

    def test_facts_are_those_of_a_compiler(self):
        self.assertEqual(facts_of(HEADER), [
            "record kvr_thing 16", "field kvr_thing 0 size 0 4", "field kvr_thing 1 count 4 4",
            "field kvr_thing 2 name 8 8", "constant KVR_A 0", "constant KVR_B 1",
            "function kvr_get int32_t(uint32_t index, kvr_thing* thing)",
            "function kvr_function void(const kvr_thing* thing, void* context)"])

    def test_the_same_passes(self):
        self.assertEqual(self.faults("count", "count"), [])

    def test_what_is_added_passes(self):
        self.assertEqual(self.faults("} kvr_thing;", "    uint32_t more;\n} kvr_thing;"), [])
        self.assertEqual(self.faults("KVR_B = 1", "KVR_B = 1, KVR_C = 2"), [])
        self.assertEqual(self.faults("typedef void", "KVR_API void KVR_CALL kvr_more(void);\ntypedef void"), [])

    def test_what_is_gone_fails(self):
        self.assertEqual(self.faults("KVR_API int32_t KVR_CALL kvr_get", "int32_t kvr_get"),
                         ["function kvr_get: it is gone"])
        self.assertIn("field kvr_thing 2: it is gone", self.faults("    const char* name;\n", ""))

    def test_what_is_changed_fails(self):
        self.assertEqual(self.faults("KVR_B = 1", "KVR_B = 2"), ["constant KVR_B: it was '1', and is '2'"])
        self.assertEqual(self.faults("uint32_t index,", "uint64_t index,"), [
            "function kvr_get: it was 'int32_t(uint32_t index, kvr_thing* thing)', "
            "and is 'int32_t(uint64_t index, kvr_thing* thing)'"])
        self.assertIn("field kvr_thing 1: it was 'count 4 4', and is 'number 4 4'",
                      self.faults("uint32_t count", "uint32_t number"))
        self.assertIn("field kvr_thing 1: it was 'count 4 4', and is 'count 8 8'",
                      self.faults("uint32_t count", "uint64_t count"))
        self.assertEqual(self.faults("const kvr_thing* thing, void*", "kvr_thing* thing, void*"), [
            "function kvr_function: it was 'void(const kvr_thing* thing, void* context)', "
            "and is 'void(kvr_thing* thing, void* context)'"])

    def test_a_field_within_the_bytes_of_a_record_fails(self):
        old = HEADER.replace("uint32_t count; /* of things */", "").replace("const char* name;",
                                                                            "const char* name; uint32_t last;")
        new = old.replace("uint32_t last;", "uint32_t last; uint32_t more;")
        self.assertEqual(check_abi.faults_of(facts_of(old), facts_of(new)),
                         ["field kvr_thing 3: it is within the bytes that the record had"])


if __name__ == "__main__":
    unittest.main()
