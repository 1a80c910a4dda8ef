using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

namespace KvReflash {
    /// <summary>Emulated targets, served in this process: a front end is tested without a rack. With device access
    /// libraries that do not emulate, the calls throw DllNotFoundException or EntryPointNotFoundException.</summary>
    public static class Emulation {
        private const int AddressSize = 16;

        /// <summary>Serves the emulated target in a folder from now on, beside those that are served already. Returns
        /// its first IPv4 address, which is empty if it has none. Throws IOException if it cannot be served.</summary>
        public static string Serve(string folder) {
            if (folder == null) {
                throw new ArgumentNullException("folder");
            }
            byte[] path = Utf8.Bytes(folder);
            byte[] address = new byte[AddressSize];
            Require(IsWindows ? Windows.kvr_emulation_serve(path, address, AddressSize)
                              : Others.kvr_emulation_serve(path, address, AddressSize));
            return Encoding.ASCII.GetString(address).TrimEnd('\0');
        }

        /// <summary>Serves no target any more. Not while a session is open.</summary>
        public static void Reset() {
            Require(IsWindows ? Windows.kvr_emulation_reset() : Others.kvr_emulation_reset());
        }

        private static bool IsWindows => Environment.OSVersion.Platform == PlatformID.Win32NT;

        private static void Require(int result) {
            if (result == CallResult.Success) {
                return;
            }
            IntPtr reason = IsWindows ? Windows.kvr_emulation_last_error() : Others.kvr_emulation_last_error();
            throw new IOException(Utf8.Text(reason));
        }

        // Outside of Windows the library has the name under which KvReflashLib loads it: a copy of its file under
        // another name would be a second library, whose targets no session sees.

        private static class Windows {
            private const string File = "KvPlatform";

            [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
            internal static extern int kvr_emulation_serve(byte[] folder, byte[] address, uint addressSize);

            [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
            internal static extern int kvr_emulation_reset();

            [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
            internal static extern IntPtr kvr_emulation_last_error();
        }

        private static class Others {
            private const string File = "libKvPlatform.so.1";

            [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
            internal static extern int kvr_emulation_serve(byte[] folder, byte[] address, uint addressSize);

            [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
            internal static extern int kvr_emulation_reset();

            [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
            internal static extern IntPtr kvr_emulation_last_error();
        }
    }
}
