using System;
using System.Runtime.InteropServices;

namespace KvReflash {
    // The functions of kvreflash.h, under their names there. The library is found by its name "KvReflashLib": as
    // KvReflashLib.dll on Windows and as libKvReflashLib.so elsewhere.

    /// <summary>Receives events; the record is a kvr_event.</summary>
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    internal delegate void EventFunction(IntPtr record, IntPtr context);

    internal static class Native {
        private const string File = "KvReflashLib";
        private const CallingConvention Cdecl = CallingConvention.Cdecl;

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern uint kvr_abi_version();

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern IntPtr kvr_version();

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern IntPtr kvr_last_error();

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern IntPtr kvr_code(uint enumeration, uint value);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern uint kvr_exit_code(uint failure);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_create(ref kvr_session_options options, out SessionHandle session);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_free(IntPtr session);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_set_event_function(SessionHandle session, EventFunction function,
                                                                  IntPtr context);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_prepare(SessionHandle session);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_disable(SessionHandle session, byte[] element, out uint found);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_preflight(SessionHandle session);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_run(SessionHandle session);

        /// <summary>Takes the number of the handle: of a session that is gone it is refused.</summary>
        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_request_stop(IntPtr session, uint how);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_verify(SessionHandle session, uint wasRebooted);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_reboot(SessionHandle session);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_plan(SessionHandle session, ref kvr_plan plan);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_node(SessionHandle session, uint index, out uint serialNumber);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_element(SessionHandle session, uint index, ref kvr_element element);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_reason(SessionHandle session, uint element, uint index,
                                                          out uint reason);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_entry(SessionHandle session, uint index, ref kvr_entry entry);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_outcome(SessionHandle session, ref kvr_outcome outcome);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_fault(SessionHandle session, uint index, out IntPtr text);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_error(SessionHandle session, uint index, ref kvr_error error);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_result(SessionHandle session, uint element,
                                                          ref kvr_element_result result);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_element_error(SessionHandle session, uint element, uint index,
                                                                 ref kvr_error error);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_verification(SessionHandle session,
                                                                ref kvr_verification verification);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_verified(SessionHandle session, uint index,
                                                            ref kvr_verified_element verified);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_look_error(SessionHandle session, uint index, ref kvr_error error);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_session_get_document(SessionHandle session, uint kind, out IntPtr text);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_create(ref kvr_archive_options options, out ArchiveHandle archive);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_free(IntPtr archive);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_read(ArchiveHandle archive);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_get_info(ArchiveHandle archive, ref kvr_archive_info info);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_get_entry(ArchiveHandle archive, uint index, ref kvr_entry entry);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_check(ArchiveHandle archive, out uint findings);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_get_finding(ArchiveHandle archive, uint index, ref kvr_finding finding);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_compare(ArchiveHandle archive, ArchiveHandle older, out uint places);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_get_change(ArchiveHandle archive, uint index, ref kvr_change change);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_archive_get_document(ArchiveHandle archive, uint kind, out IntPtr text);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_read_saved_plan(byte[] content, ref kvr_saved_plan plan);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_runs_create(byte[] journalFolder, out RunsHandle runs, out uint count);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_runs_free(IntPtr runs);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_runs_get(RunsHandle runs, uint index, ref kvr_run_info run);

        [DllImport(File, CallingConvention = Cdecl)]
        internal static extern int kvr_runs_get_document(RunsHandle runs, byte[] id, out IntPtr text);
    }
}
