using System.Runtime.InteropServices;

namespace KvReflash {
    /// <summary>A saved plan, in short.</summary>
    public sealed class SavedPlan {
        private SavedPlan(kvr_saved_plan plan) {
            ChangeCount = (int)plan.changes;
            Id = Utf8.Text(plan.id);
            Time = Utf8.Text(plan.time);
            Target = Utf8.Text(plan.target);
            TargetAddress = Utf8.Text(plan.target_address);
            Archive = Utf8.Text(plan.archive);
            ToolVersion = Utf8.Text(plan.tool_version);
        }

        /// <summary>Reads the content of a saved plan. Throws KvReflashException if it is not one or was changed.
        /// </summary>
        public static SavedPlan Read(string content) {
            Library.Require();
            var plan = new kvr_saved_plan {size = (uint)Marshal.SizeOf(typeof(kvr_saved_plan))};
            byte[] bytes = Utf8.Bytes(content);
            if (CallResult.Judged(Native.kvr_read_saved_plan(bytes, ref plan)) != CallResult.Success) {
                throw new KvReflashException(Failure.Stale, CallResult.LastError);
            }
            return new SavedPlan(plan);
        }

        /// <summary>Number of elements and files that it changes.</summary>
        public int ChangeCount { get; }

        /// <summary>Its id.</summary>
        public string Id { get; }

        /// <summary>When it was planned, RFC 3339.</summary>
        public string Time { get; }

        /// <summary>The target as it was given.</summary>
        public string Target { get; }

        /// <summary>IPv4 address of the target.</summary>
        public string TargetAddress { get; }

        /// <summary>Where the archive was.</summary>
        public string Archive { get; }

        /// <summary>Version of the tool that has saved it.</summary>
        public string ToolVersion { get; }
    }
}
