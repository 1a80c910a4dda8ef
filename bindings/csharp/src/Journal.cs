using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace KvReflash {
    /// <summary>The journal of runs, as it stood when it was opened. One thread at a time uses it; a call while another
    /// thread is in one throws InvalidOperationException.</summary>
    public sealed class Journal : IDisposable {
        private readonly ExclusiveUse use = new ExclusiveUse();
        private readonly RunsHandle handle;

        /// <summary>Lists the runs of the journal in a folder: none if there is no such folder.</summary>
        public Journal(string folder) {
            Library.Require();
            uint count;
            CallResult.Judged(Native.kvr_runs_create(Utf8.Bytes(folder), out handle, out count));
            Runs = Immutable.List(count, Run);
        }

        /// <summary>The runs, from the oldest to the newest.</summary>
        public IReadOnlyList<Run> Runs { get; }

        /// <summary>Returns the document of the list, in JSON as the console tool writes it.</summary>
        public string GetDocument() => Document(null);

        /// <summary>Returns the document of a run, in JSON as the console tool writes it. Throws KvReflashException if
        /// there is no run of this id, or it cannot be read.</summary>
        public string GetDocument(string runId) {
            if (string.IsNullOrEmpty(runId)) {
                throw new ArgumentException("no run is named", "runId");
            }
            return Document(Utf8.Bytes(runId));
        }

        /// <summary>Gives the list back.</summary>
        public void Dispose() => handle.Dispose();

        /// <summary>The document of the list if `id` is null.</summary>
        private string Document(byte[] id) => use.During(() => {
            IntPtr text;
            if (CallResult.Judged(Native.kvr_runs_get_document(handle, id, out text)) != CallResult.Success) {
                throw new KvReflashException(Failure.Selection, CallResult.LastError);
            }
            return Utf8.Text(text);
        });

        private Run Run(uint index) {
            var run = new kvr_run_info {size = (uint)Marshal.SizeOf(typeof(kvr_run_info))};
            CallResult.Judged(Native.kvr_runs_get(handle, index, ref run));
            return new Run(run);
        }
    }

    /// <summary>A run, in short.</summary>
    public sealed class Run {
        internal Run(kvr_run_info run) {
            State = (RunState)run.state;
            End = Utf8.TextOrNull(run.end);
            Failure = End != null ? (Failure)run.failure : (Failure?)null;
            ExitCode = End != null ? (int)run.exit_code : (int?)null;
            IsResumable = run.resumable != 0;
            Id = Utf8.Text(run.id);
            Command = Utf8.Text(run.command);
            Begin = Utf8.Text(run.begin);
            Target = Utf8.Text(run.target);
            TargetAddress = Utf8.TextOrNull(run.target_address);
            Archive = Utf8.TextOrNull(run.archive);
            User = Utf8.TextOrNull(run.user);
            Computer = Utf8.TextOrNull(run.computer);
            Message = Utf8.TextOrNull(run.message);
            PlanId = Utf8.TextOrNull(run.plan);
            Fault = Utf8.TextOrNull(run.fault);
        }

        /// <summary>Its state.</summary>
        public RunState State { get; }

        /// <summary>The class of the failure that it has written at its end; null if it has not written its end.
        /// </summary>
        public Failure? Failure { get; }

        /// <summary>The exit code of the console tool for it; null if the run has not written its end.</summary>
        public int? ExitCode { get; }

        /// <summary>It did not come to its end, and no other run has gone on with it.</summary>
        public bool IsResumable { get; }

        /// <summary>Its id.</summary>
        public string Id { get; }

        /// <summary>"update" or "reboot".</summary>
        public string Command { get; }

        /// <summary>When it began, RFC 3339, UTC.</summary>
        public string Begin { get; }

        /// <summary>When it ended, RFC 3339, UTC; null if it has not written its end.</summary>
        public string End { get; }

        /// <summary>The target as it was given.</summary>
        public string Target { get; }

        /// <summary>IPv4 address of the target; null if it is not known.</summary>
        public string TargetAddress { get; }

        /// <summary>Path of the archive; null if there was none.</summary>
        public string Archive { get; }

        /// <summary>Who has run it; null if that is not known.</summary>
        public string User { get; }

        /// <summary>Where it has run; null if that is not known.</summary>
        public string Computer { get; }

        /// <summary>Why it failed; null otherwise.</summary>
        public string Message { get; }

        /// <summary>Id of the saved plan that it has run; null: none.</summary>
        public string PlanId { get; }

        /// <summary>Why its file is not to be trusted from some line on; null: it is whole.</summary>
        public string Fault { get; }
    }
}
