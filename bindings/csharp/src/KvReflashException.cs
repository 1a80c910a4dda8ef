using System;
using System.Collections.Generic;

namespace KvReflash {
    /// <summary>Something that was asked for has failed: an archive was refused, a target was not reached, an element
    /// was not updated. Its class is a value and not a type of exception, because later libraries may add classes: a
    /// filter such as <c>catch (KvReflashException fault) when (fault.Failure == Failure.Locked)</c> stays right then.
    /// A call that is wrong in itself throws ArgumentException, InvalidOperationException, ObjectDisposedException or
    /// OutOfMemoryException instead.</summary>
    public sealed class KvReflashException : Exception {
        internal KvReflashException(Failure failure, string message)
            : this(failure, message, Immutable.Empty<string>()) {}

        internal KvReflashException(Failure failure, string message, IReadOnlyList<string> faults) : base(message) {
            Failure = failure;
            ExitCode = (int)Native.kvr_exit_code((uint)failure);
            Faults = faults;
        }

        internal KvReflashException(Outcome outcome)
            : this(outcome.Failure, outcome.Message ?? string.Join(" ", outcome.Faults), outcome.Faults) {
            IsRetryable = outcome.IsRetryable;
        }

        /// <summary>The class of the failure.</summary>
        public Failure Failure { get; }

        /// <summary>The same may succeed if it is tried again.</summary>
        public bool IsRetryable { get; }

        /// <summary>The exit code of the console tool for this failure; 1 for a class that the library does not know.
        /// </summary>
        public int ExitCode { get; }

        /// <summary>Sentences on all that keeps the session from running: how a saved plan differs, or what a preflight
        /// has found. Empty for other failures.</summary>
        public IReadOnlyList<string> Faults { get; }
    }
}
