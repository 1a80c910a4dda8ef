using System;

namespace KvReflash.Tests {
    /// <summary>What tests state.</summary>
    internal static class Expect {
        internal static void True(bool isTrue, string what) {
            if (!isTrue) {
                throw new Exception("not so: " + what);
            }
        }

        internal static void Equal<T>(T expected, T actual) {
            if (!Equals(expected, actual)) {
                throw new Exception("expected '" + expected + "', not '" + actual + "'");
            }
        }

        internal static void Contains(string part, string whole) {
            True(whole != null && whole.Contains(part), "'" + whole + "' contains '" + part + "'");
        }

        /// <summary>Returns what the operation throws, which must be of just this type.</summary>
        internal static T Throws<T>(Action operation) where T : Exception {
            try {
                operation();
            } catch (T thrown) {
                if (thrown.GetType() == typeof(T)) {
                    return thrown;
                }
                throw;
            }
            throw new Exception("nothing was thrown");
        }

        /// <summary>Returns the failure that the operation throws, which must be of this class.</summary>
        internal static KvReflashException Fails(Failure failure, Action operation) {
            var thrown = Throws<KvReflashException>(operation);
            Equal(failure, thrown.Failure);
            True(thrown.Message.Length > 0, "the failure has a message");
            return thrown;
        }
    }
}
