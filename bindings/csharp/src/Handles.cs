using System;
using System.Runtime.InteropServices;

namespace KvReflash {
    // What the library has made and must get back. A handle that is disposed of during a call lasts until its end.

    internal sealed class SessionHandle : SafeHandle {
        private SessionHandle() : base(IntPtr.Zero, true) {}

        public override bool IsInvalid => handle == IntPtr.Zero;

        /// <summary>Lasts as long as the session, which calls it.</summary>
        internal EventFunction Function { get; set; }

        protected override bool ReleaseHandle() => Native.kvr_session_free(handle) == CallResult.Success;
    }

    internal sealed class ArchiveHandle : SafeHandle {
        private ArchiveHandle() : base(IntPtr.Zero, true) {}

        public override bool IsInvalid => handle == IntPtr.Zero;

        protected override bool ReleaseHandle() => Native.kvr_archive_free(handle) == CallResult.Success;
    }

    internal sealed class RunsHandle : SafeHandle {
        private RunsHandle() : base(IntPtr.Zero, true) {}

        public override bool IsInvalid => handle == IntPtr.Zero;

        protected override bool ReleaseHandle() => Native.kvr_runs_free(handle) == CallResult.Success;
    }
}
