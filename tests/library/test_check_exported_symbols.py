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
        for symbol in ("_ZN12KvCReflasher3runEv", "helper", "_ZTISt18bad_variant_access"):
            self.assertEqual(script.faults({symbol}, set(), set()), [f"not meant to be exported: {symbol}"])


if __name__ == "__main__":
    unittest.main()
