using System.Collections.Generic;

namespace KvReflash {
    /// <summary>The plan of a session, as it stood when it was asked for.</summary>
    public sealed class Plan {
        internal Plan(kvr_plan plan, IReadOnlyList<Element> elements, IReadOnlyList<ArchiveEntry> entries,
                      IReadOnlyList<uint> nodes) {
            Elements = elements;
            Entries = entries;
            NodeSerialNumbers = nodes;
            ChangeCount = (int)plan.changes;
            PhaseCount = (int)plan.phases;
            IsSupported = plan.supported != 0;
            TargetAddress = Utf8.Text(plan.target_address);
            ArchiveName = Utf8.TextOrNull(plan.archive_name);
            ArchiveVersion = Utf8.TextOrNull(plan.archive_version);
            ProductName = Utf8.TextOrNull(plan.product_name);
            ArchiveVariant = Utf8.TextOrNull(plan.archive_variant);
        }

        /// <summary>The elements of the target.</summary>
        public IReadOnlyList<Element> Elements { get; }

        /// <summary>The accepted entries of the archive; empty without an archive.</summary>
        public IReadOnlyList<ArchiveEntry> Entries { get; }

        /// <summary>The serial numbers of processor nodes, as far as they are known.</summary>
        public IReadOnlyList<uint> NodeSerialNumbers { get; }

        /// <summary>Number of elements that an update changes.</summary>
        public int ChangeCount { get; }

        /// <summary>Number of phases of the update.</summary>
        public int PhaseCount { get; }

        /// <summary>False if the archive does not support the target.</summary>
        public bool IsSupported { get; }

        /// <summary>IPv4 address of the target, in dotted form.</summary>
        public string TargetAddress { get; }

        /// <summary>Name of the archive; null if there is none.</summary>
        public string ArchiveName { get; }

        /// <summary>Version of the archive; null if there is none.</summary>
        public string ArchiveVersion { get; }

        /// <summary>Product that the archive is for; null if there is none.</summary>
        public string ProductName { get; }

        /// <summary>Variant of the archive; null if there is none.</summary>
        public string ArchiveVariant { get; }
    }
}
