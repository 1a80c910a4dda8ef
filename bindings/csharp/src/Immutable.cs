using System;
using System.Collections.Generic;
using System.Collections.ObjectModel;

namespace KvReflash {
    /// <summary>Lists that nobody changes.</summary>
    internal static class Immutable {
        internal static IReadOnlyList<T> Empty<T>() => new ReadOnlyCollection<T>(new T[0]);

        /// <summary>Returns a list of `count` items, each asked for by its index.</summary>
        internal static IReadOnlyList<T> List<T>(uint count, Func<uint, T> item) {
            T[] items = new T[count];
            for (uint index = 0; index < count; ++index) {
                items[index] = item(index);
            }
            return new ReadOnlyCollection<T>(items);
        }
    }
}
