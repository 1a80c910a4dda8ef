using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text;

namespace KvReflash {
    /// <summary>Texts as the library takes and gives them: UTF-8 with a zero byte at the end.</summary>
    internal static class Utf8 {
        private static readonly Encoding Strict = new UTF8Encoding(false, true);

        /// <summary>Returns a text that the library has given; empty for null. Bytes that are not UTF-8 become U+FFFD.
        /// </summary>
        internal static string Text(IntPtr text) {
            if (text == IntPtr.Zero) {
                return "";
            }
            int length = 0;
            while (Marshal.ReadByte(text, length) != 0) {
                ++length;
            }
            byte[] bytes = new byte[length];
            Marshal.Copy(text, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }

        /// <summary>Returns a text that the library has given; null if it is empty.</summary>
        internal static string TextOrNull(IntPtr text) {
            string value = Text(text);
            return value.Length == 0 ? null : value;
        }

        /// <summary>Returns the bytes of a text for the library; null for null. Throws ArgumentException if it holds a
        /// zero, at which it would be cut off, or is not Unicode.</summary>
        internal static byte[] Bytes(string text) {
            if (text == null) {
                return null;
            }
            if (text.IndexOf('\0') >= 0) {
                throw new ArgumentException("a text must not hold the character U+0000");
            }
            byte[] bytes = new byte[Strict.GetByteCount(text) + 1];
            Strict.GetBytes(text, 0, text.Length, bytes, 0);
            return bytes;
        }
    }

    /// <summary>Texts of a record that is given to the library. They last until this object is disposed of.</summary>
    internal sealed class GivenTexts : IDisposable {
        private readonly List<IntPtr> texts = new List<IntPtr>();

        internal IntPtr Add(string text) {
            byte[] bytes = Utf8.Bytes(text);
            if (bytes == null) {
                return IntPtr.Zero;
            }
            IntPtr copy = Marshal.AllocHGlobal(bytes.Length);
            texts.Add(copy);
            Marshal.Copy(bytes, 0, copy, bytes.Length);
            return copy;
        }

        public void Dispose() {
            foreach (IntPtr text in texts) {
                Marshal.FreeHGlobal(text);
            }
            texts.Clear();
        }
    }
}
