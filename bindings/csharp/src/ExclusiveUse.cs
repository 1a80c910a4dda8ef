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
            return Entered(operation);
        }

        /// <summary>Does something with the handle, as soon as no other thread does.</summary>
        internal T After<T>(Func<T> operation) {
            Monitor.Enter(gate);
            return Entered(operation);
        }

        private T Entered<T>(Func<T> operation) {
            try {
                return operation();
            } finally {
                Monitor.Exit(gate);
            }
        }
    }
}
