using System;

namespace KvReflash {
    // The values are those of kvreflash.h. A later library may give values that are not listed here.

    /// <summary>What a session does.</summary>
    public enum SessionMode {
        /// <summary>Scans the target.</summary>
        Elements = 4,
        /// <summary>Scans the target, before a reboot.</summary>
        Connect = 5,
        /// <summary>Reads the archive, scans the target and plans.</summary>
        Plan = 6,
        /// <summary>Plans and updates.</summary>
        Update = 7
    }

    /// <summary>Which files that the inventory does not list are written.</summary>
    public enum UnlistedFiles {
        /// <summary>All of them.</summary>
        Always = 0,
        /// <summary>Those whose content differs from the one that the journal has for their place.</summary>
        Changed = 1,
        /// <summary>None of them.</summary>
        Never = 2
    }

    /// <summary>How an update is asked to end.</summary>
    public enum StopRequest {
        /// <summary>Nothing new begins; what has begun is awaited.</summary>
        Finish = 0,
        /// <summary>What has begun is not awaited either.</summary>
        GiveUp = 1
    }

    /// <summary>Classes of failures; the first one counts if several apply.</summary>
    public enum Failure {
        /// <summary>The archive was refused.</summary>
        Archive = 0,
        /// <summary>The target was not reached, or cannot be scanned.</summary>
        Target = 1,
        /// <summary>A saved plan, or a run that is to go on, does not hold any more.</summary>
        Stale = 2,
        /// <summary>The archive does not support the target.</summary>
        Unsupported = 3,
        /// <summary>A filter lets no element through, or a named element does not exist.</summary>
        Selection = 4,
        /// <summary>The target could not be locked, or its run is under way.</summary>
        Locked = 5,
        /// <summary>The session ended on request.</summary>
        Stopped = 6,
        /// <summary>An element or file failed.</summary>
        Elements = 7,
        /// <summary>Errors were reported.</summary>
        Errors = 8,
        /// <summary>The target was not rebooted.</summary>
        Reboot = 9,
        /// <summary>The target does not report what it should.</summary>
        Verification = 10,
        /// <summary>Something could not be written.</summary>
        Output = 11,
        /// <summary>Nothing has failed.</summary>
        None = 12
    }

    /// <summary>Kinds of events. Ignore those that you do not know.</summary>
    public enum EventKind {
        /// <summary>A phase begins, or the last one has ended.</summary>
        Phase = 0,
        /// <summary>The running phase has come to a percentage.</summary>
        Progress = 1,
        /// <summary>The update of an element has failed.</summary>
        ElementError = 2,
        /// <summary>The target was locked.</summary>
        Locked = 3,
        /// <summary>The lock was given back, or could not be.</summary>
        Unlocked = 4,
        /// <summary>The file of an entry was transferred, or could not be.</summary>
        Transfer = 5,
        /// <summary>The update of an element begins.</summary>
        ElementStart = 6,
        /// <summary>The update of an element has ended.</summary>
        ElementEnd = 7,
        /// <summary>Nothing new has shown for some seconds.</summary>
        Stalled = 8,
        /// <summary>A text that a console would show.</summary>
        Message = 100
    }

    /// <summary>Reasons for an update, up to <see cref="Forced"/> and <see cref="ContentDiffers"/>, and against it.
    /// </summary>
    public enum Reason {
        /// <summary>The versions differ.</summary>
        VersionDiffers = 0,
        /// <summary>The checksums differ.</summary>
        ChecksumDiffers = 1,
        /// <summary>The installed image is not valid.</summary>
        Invalid = 2,
        /// <summary>The installed image is not active.</summary>
        Inactive = 3,
        /// <summary>It is up to date, and <see cref="SessionOptions.Force"/> is given.</summary>
        Forced = 4,
        /// <summary>It is up to date.</summary>
        UpToDate = 5,
        /// <summary>A newer version is installed, and the entry is for upgrades only.</summary>
        NewerInstalled = 6,
        /// <summary>No entry matches.</summary>
        NoEntry = 7,
        /// <summary>Only an entry matches that this library must ignore.</summary>
        FeatureLevel = 8,
        /// <summary>It is a custom element, and <see cref="SessionOptions.SkipCustomElements"/> is given.</summary>
        CustomLeftOut = 9,
        /// <summary>It was left out by <see cref="Session.Disable"/>.</summary>
        Disabled = 10,
        /// <summary>Its carrier board is missing.</summary>
        CarrierBoardMissing = 11,
        /// <summary>The entry has a lower version, and <see cref="SessionOptions.NoDowngrade"/> is given.</summary>
        DowngradeLeftOut = 12,
        /// <summary>Of a file: the journal does not have this content.</summary>
        ContentDiffers = 13,
        /// <summary>It is a file that the inventory does not list; see <see cref="SessionOptions.UnlistedFiles"/>.
        /// </summary>
        UnlistedLeftOut = 14,
        /// <summary>Of a file: the journal has this content.</summary>
        WrittenBefore = 15,
        /// <summary>The run that goes on has installed it.</summary>
        DoneBefore = 16,
        /// <summary>It was in progress when that run broke off; <see cref="SessionOptions.RedoInDoubt"/> updates it
        /// again.</summary>
        InDoubt = 17
    }

    /// <summary>How far a session came. Each value includes those before it.</summary>
    public enum Stage {
        /// <summary>It was created.</summary>
        Created = 0,
        /// <summary>The archive was read.</summary>
        ArchiveRead = 1,
        /// <summary>The target was found.</summary>
        TargetFound = 2,
        /// <summary>The target was scanned.</summary>
        TargetScanned = 3,
        /// <summary>It is ready to run.</summary>
        Prepared = 4,
        /// <summary>The target was locked.</summary>
        Locked = 5,
        /// <summary>All phases have run.</summary>
        PhasesRun = 6,
        /// <summary>The update has ended.</summary>
        Ended = 7,
        /// <summary>The target was rebooted.</summary>
        Rebooted = 8
    }

    /// <summary>Results of elements.</summary>
    public enum ElementResult {
        /// <summary>No update was planned.</summary>
        NotPlanned = 0,
        /// <summary>Its update was not started.</summary>
        NotStarted = 1,
        /// <summary>Its update file was missing when its phase began.</summary>
        FileMissing = 2,
        /// <summary>An earlier update on the same board has failed.</summary>
        Cancelled = 3,
        /// <summary>Its update has failed.</summary>
        Failed = 4,
        /// <summary>It was updated.</summary>
        Updated = 5,
        /// <summary>The session ended while its update was under way.</summary>
        InProgress = 6
    }

    /// <summary>Calls of the device access libraries that make an element fail.</summary>
    public enum FailedCall {
        /// <summary>None has failed.</summary>
        None = 0,
        /// <summary>transferFile: the target did not take the update file.</summary>
        TransferFile = 1,
        /// <summary>update2: the update was not begun.</summary>
        Update2 = 2,
        /// <summary>updateStatus2: the state of the update cannot be read, or it is that of a failure.</summary>
        UpdateStatus2 = 3,
        /// <summary>updateErrors2: the target has reported errors of the update, or they cannot be read.</summary>
        UpdateErrors2 = 4,
        /// <summary>The file was not written.</summary>
        WriteFile = 5
    }

    /// <summary>Judgements on elements, from what the target reports.</summary>
    public enum VerifiedResult {
        /// <summary>It is a file that the inventory does not list.</summary>
        NotListed = 0,
        /// <summary>The target does not list it any more.</summary>
        Gone = 1,
        /// <summary>It is as expected.</summary>
        AsExpected = 2,
        /// <summary>Neither version nor checksum can be compared.</summary>
        NotJudged = 3,
        /// <summary>It reports what it reported before; it may change at a reboot.</summary>
        Unchanged = 4,
        /// <summary>It differs from what was expected.</summary>
        Differs = 5
    }

    /// <summary>Documents of a session, in JSON.</summary>
    public enum DocumentKind {
        /// <summary>The plan.</summary>
        Plan = 0,
        /// <summary>The update and its results.</summary>
        Update = 1,
        /// <summary>The verification.</summary>
        Verify = 2,
        /// <summary>The reboot.</summary>
        Reboot = 3,
        /// <summary>The elements of the target.</summary>
        Elements = 4,
        /// <summary>Why each element is or is not updated, with the entries that were tried.</summary>
        Explain = 5,
        /// <summary>The plan to be kept, for <see cref="SessionOptions.SavedPlan"/>.</summary>
        SavedPlan = 6
    }

    /// <summary>Documents of an archive, in JSON.</summary>
    public enum ArchiveDocumentKind {
        /// <summary>The content, after <see cref="Archive.Read"/>.</summary>
        Content = 0,
        /// <summary>The findings, after <see cref="Archive.Check"/>.</summary>
        Check = 1,
        /// <summary>The changes, after <see cref="Archive.Compare"/>.</summary>
        Compare = 2
    }

    /// <summary>How far the content of an archive is vouched for.</summary>
    public enum Seal {
        /// <summary>It has no manifest.</summary>
        None = 0,
        /// <summary>It is what its manifest says; nobody has signed that.</summary>
        Sealed = 1,
        /// <summary>It is signed by a key that is not trusted here.</summary>
        SignedByStranger = 2,
        /// <summary>It is signed by somebody who is trusted.</summary>
        Trusted = 3
    }

    /// <summary>Changes from an older archive.</summary>
    public enum ChangeKind {
        /// <summary>Nothing differs.</summary>
        Same = 0,
        /// <summary>Only the newer archive has an entry.</summary>
        Added = 1,
        /// <summary>Only the older archive has an entry.</summary>
        Removed = 2,
        /// <summary>The version is higher.</summary>
        Up = 3,
        /// <summary>The version is lower.</summary>
        Down = 4,
        /// <summary>The versions are equal or not known, and something else differs.</summary>
        Changed = 5
    }

    /// <summary>States of runs.</summary>
    public enum RunState {
        /// <summary>It is under way.</summary>
        Running = 0,
        /// <summary>It has come to its end, whatever its result.</summary>
        Complete = 1,
        /// <summary>It was ended on request.</summary>
        Stopped = 2,
        /// <summary>Its process has ended in the middle.</summary>
        BrokenOff = 3
    }

    [Flags]
    internal enum SessionFlags : uint {
        Force = 1,
        Verbose = 2,
        Configuration = 4,
        SkipCustom = 8,
        NoDowngrade = 16,
        WatchFiles = 32,
        Release = 64,
        AcceptUnsealed = 128,
        JournalRequired = 256,
        Redo = 512
    }

    [Flags]
    internal enum Knows : uint {
        Version = 1,
        Checksum = 2,
        Valid = 4,
        Active = 8,
        Entry = 16,
        Phase = 32,
        State = 64
    }

    /// <summary>Enumerations whose values have words.</summary>
    internal enum Code : uint {
        Failure = 0,
        Stage = 1,
        Reason = 2,
        Result = 3,
        Verified = 4,
        FailedCall = 5,
        Severity = 6,
        Seal = 7,
        Change = 8,
        RunState = 9
    }
}
