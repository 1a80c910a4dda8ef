using System;
using System.Runtime.InteropServices;

namespace KvReflash {
    /// <summary>Something that happens while an operation of a session goes on.</summary>
    public sealed class UpdateEvent : EventArgs {
        private const uint None = 0xFFFFFFFF;

        internal UpdateEvent(IntPtr record) {
            var happened = (kvr_event)Marshal.PtrToStructure(record, typeof(kvr_event));
            Kind = (EventKind)happened.kind;
            Value = HasValue(Kind) && happened.value != None ? happened.value : (uint?)null;
            Succeeded = happened.succeeded != 0;
            Text = Utf8.Text(happened.text);
        }

        /// <summary>The kind of the event.</summary>
        public EventKind Kind { get; }

        /// <summary>Phase: its number, from 0, and null after the last one. Progress: the percentage of the running
        /// phase. ElementError, ElementStart and ElementEnd: the index of the element. Transfer: the index of the
        /// entry. Stalled: the seconds without news. Null for locks and messages.</summary>
        public uint? Value { get; }

        /// <summary>False if what has ended has failed.</summary>
        public bool Succeeded { get; }

        /// <summary>What a console would show, line ends included; empty but for messages.</summary>
        public string Text { get; }

        private static bool HasValue(EventKind kind) =>
            kind != EventKind.Locked && kind != EventKind.Unlocked && kind != EventKind.Message;
    }
}
