// Runs all tests: the public operations of the classes whose names end with "Tests". A line "ok NAME" or "FAILED NAME:
// REASON" for each.
//
// usage: Tests.exe FACTS ARCHIVE RACK [NAME...]
//
// FACTS is what run_tests.py has read from the header, ARCHIVE the example archive, RACK the example rack, of which
// copies are used.

using System;
using System.Linq;
using System.Reflection;

namespace KvReflash.Tests {
    internal static class Program {
        private const int UsageError = 64;

        private static int Main(string[] arguments) {
            if (arguments.Length < 3) {
                Console.Error.WriteLine("usage: Tests.exe FACTS ARCHIVE RACK [NAME...]");
                return UsageError;
            }
            Given.Facts = arguments[0];
            Given.Archive = arguments[1];
            Given.Rack = arguments[2];
            var wanted = arguments.Skip(3).ToList();
            var tests = from type in Assembly.GetExecutingAssembly().GetTypes()
                        where type.Name.EndsWith("Tests")
                        orderby type.Name
                        from test in type.GetMethods(BindingFlags.Static | BindingFlags.Public)
                        where wanted.Count == 0 || wanted.Contains(test.Name)
                        select test;
            return tests.ToList().Count(test => !Passes(test)) == 0 ? 0 : 1;
        }

        private static bool Passes(MethodInfo test) {
            string name = test.DeclaringType.Name + "." + test.Name;
            try {
                test.Invoke(null, null);
                Console.WriteLine("ok " + name);
                return true;
            } catch (TargetInvocationException fault) {
                Console.WriteLine("FAILED " + name + ": " + fault.InnerException);
                return false;
            }
        }
    }
}
