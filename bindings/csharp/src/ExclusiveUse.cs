using System;
using System.Threading;

namespace KvReflash {
    /// <summary>Lets one thread at a time use a handle, and callbacks of that thread.</summary>
    internal sealed class ExclusiveUse {
        private readonly object gate = new object();

        /// <summary>Does something with the handle. Throws InvalidOperationException if another thread does.</summary>
        internal T During<T>(Func<T> operation) {
            if (!Monitor.TryEnter(gate)) {
                throw new InvalidOperationException("another thread uses this object");
            }
            try {
                return operation();
            } finally {
                Monitor.Exit(gate);
            }
        }
    }
}
