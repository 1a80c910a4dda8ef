namespace KvReflash {
    /// <summary>An accepted entry of an archive.</summary>
    public sealed class ArchiveEntry {
        internal ArchiveEntry(kvr_entry entry) {
            var known = (Knows)entry.known;
            Index = (int)entry.index;
            DescriptionIndex = (int)entry.description_index;
            Checksum = (known & Knows.Checksum) != 0 ? entry.checksum : (uint?)null;
            Version = (known & Knows.Version) != 0 ? Utf8.Text(entry.version) : null;
            Sequence = entry.sequence;
            IsUpgradeOnly = entry.upgrade_only != 0;
            FileName = Utf8.Text(entry.file_name);
        }

        /// <summary>Index among the accepted entries.</summary>
        public int Index { get; }

        /// <summary>Index in "files" of the description.</summary>
        public int DescriptionIndex { get; }

        /// <summary>CRC-32 of the contents; null if the entry states none.</summary>
        public uint? Checksum { get; }

        /// <summary>Version; null if the entry states none.</summary>
        public string Version { get; }

        /// <summary>Lower ones are installed in an earlier phase.</summary>
        public uint Sequence { get; }

        /// <summary>Only greater versions are installed.</summary>
        public bool IsUpgradeOnly { get; }

        /// <summary>Name of the update file, relative to the archive.</summary>
        public string FileName { get; }
    }
}
