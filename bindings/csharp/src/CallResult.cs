using System;

namespace KvReflash {
    /// <summary>What a function of the library returns.</summary>
    internal static class CallResult {
        internal const int Success = 0;
        internal const int Failed = 1;

        private const int ErrorArgument = -1;
        private const int ErrorMemory = -2;

        /// <summary>Why the last call of this thread has failed; the header states for which results it is there.
        /// </summary>
        internal static string LastError => Utf8.Text(Native.kvr_last_error());

        /// <summary>Returns the result of a call on this thread; throws if the call itself has failed.</summary>
        internal static int Judged(int result) {
            if (result >= Success) {
                return result;
            }
            string message = LastError;
            switch (result) {
            case ErrorArgument:
                throw new ArgumentException(message);
            case ErrorMemory:
                throw new OutOfMemoryException(message);
            default:
                throw new InvalidOperationException(message);
            }
        }
    }
}
