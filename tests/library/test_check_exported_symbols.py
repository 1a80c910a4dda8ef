"""Tests of check_exported_symbols.py."""

import unittest

import check_exported_symbols as script


class List(unittest.TestCase):
    def test_marked_symbols_are_optional_and_comments_are_not_read(self):
        required, optional = script.read_list("# all\n_Za # one\n\n? _Zb\n")
        self.assertEqual(required, {"_Za"})
        self.assertEqual(optional, {"_Zb"})


class Dll(unittest.TestCase):
    def test_names_are_those_of_the_export_table(self):
        text = "Import table\n\t[   0] _Zx\n\n[Ordinal/Name Pointer] Table\n\t[   0] _Za\n\t[  12] _Zb\n\nOther\n\t[ 1] _Zc\n"
        self.assertEqual(script.names_of_dll(text), {"_Za", "_Zb"})


class Faults(unittest.TestCase):
    def test_what_the_list_names_is_right(self):
        self.assertEqual(script.faults({"_Za", "_Zb"}, {"_Za"}, {"_Zb"}), [])

    def test_an_optional_symbol_need_not_be_there(self):
        self.assertEqual(script.faults({"_Za"}, {"_Za"}, {"_Zb"}), [])

    def test_a_missing_symbol_is_told(self):
        self.assertEqual(script.faults(set(), {"_Za"}, set()), ["missing: _Za"])

    def test_any_other_symbol_is_told(self):
        for symbol in ("_ZN12KvCReflasher3runEv", "helper", "_ZTI12KvCReflasher"):
            self.assertEqual(script.faults({symbol}, set(), set()), [f"not meant to be exported: {symbol}"])

    def test_instances_of_the_standard_library_do_not_count(self):
        standard = {"_ZNSt6vectorIiSaIiEE9push_backEOi", "_ZNKSt4hashIiEclEi", "_ZTISt18bad_variant_access",
                    "_ZTVSt18bad_variant_access", "_ZZNSt8__detail18__to_chars_10_implIjEEvPcjT_E8__digits",
                    "_ZSt4swapIiEvRT_S1_", "_ZNSs4swapERSs", "_ZN9__gnu_cxx13new_allocatorIcED2Ev"}
        self.assertEqual(script.faults(standard, set(), set()), [])


if __name__ == "__main__":
    unittest.main()
