using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

namespace KvReflash.Tests {
    /// <summary>What the assembly declares, against what the compiler for C makes of the header.</summary>
    public static class InterfaceTests {
        private const BindingFlags All =
            BindingFlags.Instance | BindingFlags.Static | BindingFlags.Public | BindingFlags.NonPublic;

        // The enumerations, by what the names of their constants begin with in the header.
        private static readonly Dictionary<string, string[]> Enumerations = new Dictionary<string, string[]> {
            {"KVR_FAILURE_", new[] {"Failure"}},
            {"KVR_MODE_", new[] {"SessionMode"}},
            {"KVR_UNLISTED_", new[] {"UnlistedFiles"}},
            {"KVR_EVENT_", new[] {"EventKind"}},
            {"KVR_STOP_", new[] {"StopRequest"}},
            {"KVR_KNOWS_", new[] {"Knows"}},
            {"KVR_REASON_", new[] {"Reason"}},
            {"KVR_STAGE_", new[] {"Stage"}},
            {"KVR_RESULT_", new[] {"ElementResult"}},
            {"KVR_FAILED_CALL_", new[] {"FailedCall"}},
            {"KVR_VERIFIED_", new[] {"VerifiedResult"}},
            {"KVR_DOCUMENT_", new[] {"DocumentKind", "ArchiveDocumentKind"}},
            {"KVR_SEAL_", new[] {"Seal"}},
            {"KVR_CHANGE_", new[] {"ChangeKind"}},
            {"KVR_CODE_", new[] {"Code"}},
            {"KVR_RUN_", new[] {"RunState"}},
            {"KVR_", new[] {"SessionFlags"}}
        };

        public static void RecordsHaveTheFieldsAndSizesOfTheHeader() {
            var records = Facts("record").ToDictionary(fact => fact[0], fact => int.Parse(fact[1]));
            Expect.True(records.Count > 10, "the header has records");
            foreach (var record in records) {
                Expect.Equal(record.Key + " " + record.Value, record.Key + " " + Marshal.SizeOf(TypeOf(record.Key)));
            }
            var fields = Facts("field").ToList();
            foreach (string[] field in fields) {
                int offset = (int)Marshal.OffsetOf(TypeOf(field[0]), field[1]);
                Expect.Equal(string.Join(" ", field.Take(3)), field[0] + " " + field[1] + " " + offset);
                Type type = TypeOf(field[0]).GetField(field[1], All).FieldType;
                Expect.Equal(field[1] + " " + field[3], field[1] + " " + Marshal.SizeOf(type));
            }
            Expect.Equal(fields.Count, records.Keys.Sum(name => TypeOf(name).GetFields(All).Length));
        }

        public static void FunctionsAreThoseOfTheHeader() {
            var declared = TypeOf("Native").GetMethods(All | BindingFlags.DeclaredOnly)
                               .Where(method => method.IsStatic)
                               .ToDictionary(method => method.Name, method => method.GetParameters().Length.ToString());
            var functions = Facts("function").ToDictionary(fact => fact[0], fact => fact[1]);
            Expect.Equal(Sorted(functions), Sorted(declared));
        }

        public static void EnumerationsHaveTheValuesOfTheHeader() {
            var expected = new SortedSet<string>();
            var actual = new SortedSet<string>();
            foreach (string[] constant in Facts("constant")) {
                string prefix = Enumerations.Keys.First(constant[0].StartsWith);
                Expect.True(expected.Add(prefix + NameOf(constant[0].Substring(prefix.Length)) + " " + constant[1]),
                            "each constant stands once in the header");
            }
            foreach (var enumeration in Enumerations) {
                foreach (Type type in enumeration.Value.Select(TypeOf)) {
                    foreach (object value in Enum.GetValues(type)) {
                        actual.Add(enumeration.Key + value + " " + Convert.ToInt64(value));
                    }
                }
            }
            Expect.True(expected.Count > 50, "the header has constants");
            Expect.Equal(string.Join("\n", expected), string.Join("\n", actual));
        }

        public static void ValuesHaveTheWordsOfDocuments() {
            Expect.Equal("archive", Failure.Archive.Word());
            Expect.Equal("rebooted", Stage.Rebooted.Word());
            Expect.Equal("up-to-date", Reason.UpToDate.Word());
            Expect.Equal("in-progress", ElementResult.InProgress.Word());
            Expect.Equal("differs", VerifiedResult.Differs.Word());
            Expect.Equal("write-file", FailedCall.WriteFile.Word());
            Expect.Equal("unsealed", Seal.None.Word());
            Expect.Equal("removed", ChangeKind.Removed.Word());
            Expect.Equal("broken-off", RunState.BrokenOff.Word());
        }

        public static void ValuesOfALaterLibraryAreKeptAndHaveNoWord() {
            const uint later = 77;
            var element = (Element)Made("Element", Record("kvr_element"), new[] {(Reason)later});
            Expect.Equal((Reason)later, element.Reasons.Single());
            object result = Record("kvr_element_result", "failed_call", later);
            var outcome = (ElementOutcome)Made("ElementOutcome", result, null);
            Expect.Equal((FailedCall)later, outcome.FailedCall);
            var content = (ArchiveContent)Made("ArchiveContent", Record("kvr_archive_info", "seal", later), null);
            Expect.Equal((Seal)later, content.Seal);
            var change = (ArchiveChange)Made("ArchiveChange", Record("kvr_change", "change", later));
            Expect.Equal((ChangeKind)later, change.Change);
            var fault = (KvReflashException)Made("KvReflashException", (Failure)later, "new");
            Expect.Equal((Failure)later, fault.Failure);
            Expect.Equal(1, fault.ExitCode);
            Expect.Equal("", element.Reasons.Single().Word());
            Expect.Equal("77", fault.Failure.ToString());
        }

        public static void TheLibraryHasTheVersionOfTheAssembly() {
            Expect.Equal(typeof(Library).Assembly.GetName().Version.ToString(2), Library.Version);
            Expect.True(Library.InterfaceVersion >= 1, "the C interface has a version");
        }

        private static string Sorted(Dictionary<string, string> functions) =>
            string.Join("\n", functions.Select(function => function.Key + "/" + function.Value).OrderBy(text => text));

        /// <summary>The words of each line of the facts that begins with `kind`, without it.</summary>
        private static IEnumerable<string[]> Facts(string kind) =>
            File.ReadAllLines(Given.Facts).Select(line => line.Split(' ')).Where(words => words[0] == kind)
                .Select(words => words.Skip(1).ToArray());

        /// <summary>Returns what a constructor of the assembly makes.</summary>
        private static object Made(string type, params object[] arguments) =>
            Activator.CreateInstance(TypeOf(type), All, null, arguments, null);

        /// <summary>Returns a record of the assembly, with a value in one of its fields.</summary>
        private static object Record(string type, string field = "size", uint value = 0) {
            object record = Made(type);
            TypeOf(type).GetField(field, All).SetValue(record, value);
            return record;
        }

        private static Type TypeOf(string name) => typeof(Session).Assembly.GetType("KvReflash." + name, true);

        /// <summary>"BROKEN_OFF" becomes "BrokenOff".</summary>
        private static string NameOf(string constant) =>
            string.Concat(constant.Split('_').Select(word => word[0] + word.Substring(1).ToLowerInvariant()));
    }
}
