using System;

namespace KvReflash {
    /// <summary>The library KvReflashLib that this package calls.</summary>
    public static class Library {
        /// <summary>The version of the C interface that this package needs.</summary>
        private const uint NeededInterface = 1;

        /// <summary>The version of the library, such as "1.1" or "1.1.2".</summary>
        public static string Version => Utf8.Text(Native.kvr_version());

        /// <summary>The version of the C interface that the library has.</summary>
        public static int InterfaceVersion => (int)Native.kvr_abi_version();

        /// <summary>Throws NotSupportedException if the library is too old for this package.</summary>
        internal static void Require() {
            uint version = Native.kvr_abi_version();
            if (version < NeededInterface) {
                throw new NotSupportedException("KvReflashLib has version " + version + " of its C interface; " +
                                                NeededInterface + " is needed");
            }
        }
    }
}
