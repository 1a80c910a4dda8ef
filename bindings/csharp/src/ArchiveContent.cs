using System.Collections.Generic;

namespace KvReflash {
    /// <summary>The content of an archive.</summary>
    public sealed class ArchiveContent {
        internal ArchiveContent(kvr_archive_info info, IReadOnlyList<ArchiveEntry> entries) {
            Failure = (Failure)info.failure;
            Message = Utf8.Text(info.message);
            Entries = entries;
            ArchiveName = Utf8.Text(info.archive_name);
            ArchiveVersion = Utf8.Text(info.archive_version);
            ProductName = Utf8.Text(info.product_name);
            FormatVersion = Utf8.Text(info.format_version);
            ArchiveVariant = Utf8.Text(info.archive_variant);
            Seal = (Seal)info.seal;
            ManifestDigest = Utf8.TextOrNull(info.manifest_digest);
            Created = Utf8.TextOrNull(info.created);
            Signer = Utf8.TextOrNull(info.signer);
            KeyFingerprint = Utf8.TextOrNull(info.key_fingerprint);
        }

        internal Failure Failure { get; }

        internal string Message { get; }

        /// <summary>The accepted entries.</summary>
        public IReadOnlyList<ArchiveEntry> Entries { get; }

        /// <summary>Name of the archive.</summary>
        public string ArchiveName { get; }

        /// <summary>Version of the archive.</summary>
        public string ArchiveVersion { get; }

        /// <summary>Product that it is for.</summary>
        public string ProductName { get; }

        /// <summary>Version of its format.</summary>
        public string FormatVersion { get; }

        /// <summary>Its variant.</summary>
        public string ArchiveVariant { get; }

        /// <summary>How far its content is vouched for. It is looked at only with
        /// <see cref="ArchiveOptions.RequireRelease"/> or a trust folder; otherwise it is
        /// <see cref="KvReflash.Seal.None"/>.</summary>
        public Seal Seal { get; }

        /// <summary>SHA-256 of the manifest in hexadecimal digits; null if it was not looked at or is not sealed.
        /// </summary>
        public string ManifestDigest { get; }

        /// <summary>When it was sealed, RFC 3339; null if that is not known.</summary>
        public string Created { get; }

        /// <summary>Who has signed it, as the trust folder calls them; null if that is not known.</summary>
        public string Signer { get; }

        /// <summary>Fingerprint of the key that counts; null if there is none.</summary>
        public string KeyFingerprint { get; }
    }

    /// <summary>Something that is to be said about an archive.</summary>
    public sealed class Finding {
        private const uint Error = 0;

        internal Finding(kvr_finding finding) {
            IsError = finding.severity == Error;
            Line = (int)finding.line;
            Column = (int)finding.column;
            Code = Utf8.Text(finding.code);
            Path = Utf8.Text(finding.path);
            Message = Utf8.Text(finding.message);
            Hint = Utf8.TextOrNull(finding.hint);
        }

        /// <summary>True for an error, for which the archive is refused; false for a warning.</summary>
        public bool IsError { get; }

        /// <summary>Line in the description, from 1.</summary>
        public int Line { get; }

        /// <summary>Column in the description, from 1.</summary>
        public int Column { get; }

        /// <summary>Kind of finding.</summary>
        public string Code { get; }

        /// <summary>JSON path of the value.</summary>
        public string Path { get; }

        /// <summary>What was found.</summary>
        public string Message { get; }

        /// <summary>Advice; null if there is none.</summary>
        public string Hint { get; }
    }

    /// <summary>A place, on boards of a type, for which one of two archives has an entry.</summary>
    public sealed class ArchiveChange {
        internal ArchiveChange(kvr_change change) {
            Change = (ChangeKind)change.change;
            ElementId = change.element_id != 0 ? change.element_id : (uint?)null;
            IsContentChanged = change.content_changed != 0;
            AreRulesChanged = change.rules_changed != 0;
            IsSequenceChanged = change.sequence_changed != 0;
            BoardType = Utf8.Text(change.board_type);
            TargetPath = Utf8.TextOrNull(change.target_path);
            VersionBefore = Utf8.TextOrNull(change.version_before);
            VersionAfter = Utf8.TextOrNull(change.version_after);
        }

        /// <summary>How the newer archive differs at this place.</summary>
        public ChangeKind Change { get; }

        /// <summary>Number of the element; null for a file.</summary>
        public uint? ElementId { get; }

        /// <summary>The checksums differ, or are not known.</summary>
        public bool IsContentChanged { get; }

        /// <summary>The entries are for other boards or elements.</summary>
        public bool AreRulesChanged { get; }

        /// <summary>The entries are of another phase.</summary>
        public bool IsSequenceChanged { get; }

        /// <summary>Type of the boards.</summary>
        public string BoardType { get; }

        /// <summary>Path of a file on the target; null for other elements.</summary>
        public string TargetPath { get; }

        /// <summary>Version in the older archive; null without an entry, or if it states none.</summary>
        public string VersionBefore { get; }

        /// <summary>Version in the newer archive; null without an entry, or if it states none.</summary>
        public string VersionAfter { get; }
    }
}
