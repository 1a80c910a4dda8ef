using System;
using System.Runtime.InteropServices;

namespace KvReflash {
    /// <summary>Options of a session. A text that is null or empty is not given.</summary>
    public sealed class SessionOptions {
        /// <summary>What the session does: an update unless stated otherwise.</summary>
        public SessionMode Mode { get; set; } = SessionMode.Update;

        /// <summary>IPv4 address or name of the target.</summary>
        public string Target { get; set; }

        /// <summary>Folder or package of the archive.</summary>
        public string Archive { get; set; }

        /// <summary>File name of the archive's description; "archive.json" if it is not given.</summary>
        public string Description { get; set; }

        /// <summary>Filter: board types, separated by commas or blanks.</summary>
        public string BoardTypes { get; set; }

        /// <summary>Filter: serial numbers, separated by commas or blanks.</summary>
        public string SerialNumbers { get; set; }

        /// <summary>Filter: names of elements, separated by commas or blanks.</summary>
        public string ElementNames { get; set; }

        /// <summary>Updates elements that are up to date, too.</summary>
        public bool Force { get; set; }

        /// <summary>Messages have details.</summary>
        public bool Verbose { get; set; }

        /// <summary>Looks at configuration elements instead of the others.</summary>
        public bool ConfigurationElements { get; set; }

        /// <summary>Leaves custom elements out.</summary>
        public bool SkipCustomElements { get; set; }

        /// <summary>Leaves out elements for which the archive has a lower version.</summary>
        public bool NoDowngrade { get; set; }

        /// <summary>Notices update files that change while they are used.</summary>
        public bool WatchFiles { get; set; }

        /// <summary>Which files that the inventory does not list are written.</summary>
        public UnlistedFiles UnlistedFiles { get; set; }

        /// <summary>Gives up when nothing new shows for so long, in whole seconds; zero: never.</summary>
        public TimeSpan StallLimit { get; set; }

        /// <summary>Obeys the archive's manifest and verifies its signatures, as a trust folder does.</summary>
        public bool RequireRelease { get; set; }

        /// <summary>With a trust folder: accepts archives that are not sealed or signed.</summary>
        public bool AcceptUnsealed { get; set; }

        /// <summary>Folder that lists who is trusted; nobody is if it is not given.</summary>
        public string TrustFolder { get; set; }

        /// <summary>Folder of the journal; there is no journal if it is not given.</summary>
        public string JournalFolder { get; set; }

        /// <summary>Names the target beside its address and serial numbers: the folder of an emulated one.</summary>
        public string JournalPlace { get; set; }

        /// <summary>Nothing begins that cannot be written into the journal.</summary>
        public bool RequireJournal { get; set; }

        /// <summary>Content of a saved plan: the session does exactly that. Target, filters and what decides come from
        /// the plan, the archive too unless it is given here.</summary>
        public string SavedPlan { get; set; }

        /// <summary>Id of a run in <see cref="JournalFolder"/>: the session goes on with it, in the same way. Not
        /// together with <see cref="SavedPlan"/>.</summary>
        public string ResumedRun { get; set; }

        /// <summary>A run that goes on updates elements in doubt again.</summary>
        public bool RedoInDoubt { get; set; }

        /// <summary>The record for the library; its texts last as long as `texts`.</summary>
        internal kvr_session_options Record(GivenTexts texts) => new kvr_session_options {
            size = (uint)Marshal.SizeOf(typeof(kvr_session_options)),
            mode = (uint)Mode,
            flags = (uint)Flags,
            unlisted_files = (uint)UnlistedFiles,
            stall_limit = Seconds(StallLimit),
            target = texts.Add(Target),
            archive = texts.Add(Archive),
            description = texts.Add(Description),
            board_types = texts.Add(BoardTypes),
            serial_numbers = texts.Add(SerialNumbers),
            element_names = texts.Add(ElementNames),
            trust_folder = texts.Add(TrustFolder),
            journal_folder = texts.Add(JournalFolder),
            journal_place = texts.Add(JournalPlace),
            saved_plan = texts.Add(SavedPlan),
            resumed_run = texts.Add(ResumedRun)
        };

        private SessionFlags Flags =>
            If(Force, SessionFlags.Force) | If(Verbose, SessionFlags.Verbose) |
            If(ConfigurationElements, SessionFlags.Configuration) | If(SkipCustomElements, SessionFlags.SkipCustom) |
            If(NoDowngrade, SessionFlags.NoDowngrade) | If(WatchFiles, SessionFlags.WatchFiles) |
            If(RequireRelease, SessionFlags.Release) | If(AcceptUnsealed, SessionFlags.AcceptUnsealed) |
            If(RequireJournal, SessionFlags.JournalRequired) | If(RedoInDoubt, SessionFlags.Redo);

        private static SessionFlags If(bool isWanted, SessionFlags flag) => isWanted ? flag : 0;

        private static uint Seconds(TimeSpan time) {
            double seconds = time.TotalSeconds;
            if (seconds < 0 || seconds > uint.MaxValue || seconds != Math.Floor(seconds)) {
                throw new ArgumentException("the stall limit must be a number of whole seconds, and not negative");
            }
            return (uint)seconds;
        }
    }
}
