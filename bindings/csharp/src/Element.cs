using System.Collections.Generic;

namespace KvReflash {
    /// <summary>An element of a target, and what an update does to it.</summary>
    public sealed class Element {
        internal Element(kvr_element element, IReadOnlyList<Reason> reasons) {
            var known = (Knows)element.known;
            bool hasEntry = (known & Knows.Entry) != 0;
            Index = (int)element.index;
            IsUpdated = element.updated != 0;
            IsDisabled = element.disabled != 0;
            IsUpToDate = element.up_to_date != 0;
            IsDowngrade = element.downgrade != 0;
            IsCustom = element.custom != 0;
            Phase = (known & Knows.Phase) != 0 ? (int)element.phase : (int?)null;
            EntryIndex = hasEntry ? (int)element.entry : (int?)null;
            ElementId = element.element_id != 0 ? element.element_id : (uint?)null;
            SerialNumber = element.serial_number;
            Slot = element.slot_count != 0 ? element.slot : (uint?)null;
            SlotCount = element.slot_count;
            BoardId = element.board_id;
            Checksum = (known & Knows.Checksum) != 0 ? element.checksum : (uint?)null;
            IsValid = (known & Knows.Valid) != 0 ? element.valid != 0 : (bool?)null;
            IsActive = (known & Knows.Active) != 0 ? element.active != 0 : (bool?)null;
            Reasons = reasons;
            DisplayName = Utf8.Text(element.display_name);
            TypeName = Utf8.Text(element.type_name);
            Name = Utf8.Text(element.name);
            Address = Utf8.TextOrNull(element.address);
            TargetPath = Utf8.TextOrNull(element.target_path);
            BoardType = Utf8.Text(element.board_type);
            BoardVariant = Utf8.TextOrNull(element.board_variant);
            BoardName = Utf8.TextOrNull(element.board_name);
            UnitPath = Utf8.TextOrNull(element.unit_path);
            Version = (known & Knows.Version) != 0 ? Utf8.Text(element.version) : null;
            AvailableVersion = hasEntry ? Utf8.TextOrNull(element.available_version) : null;
            AvailableChecksum = hasEntry && element.available_checksum != 0 ? element.available_checksum : (uint?)null;
        }

        /// <summary>The "No." of the plan, from 0.</summary>
        public int Index { get; }

        /// <summary>It takes part in the update.</summary>
        public bool IsUpdated { get; }

        /// <summary>It takes no part in the update, because it is up to date or was left out. An element without an
        /// entry need not be disabled.</summary>
        public bool IsDisabled { get; }

        /// <summary>The archive has nothing else for it.</summary>
        public bool IsUpToDate { get; }

        /// <summary>The archive has a lower version than is installed.</summary>
        public bool IsDowngrade { get; }

        /// <summary>It is a custom element.</summary>
        public bool IsCustom { get; }

        /// <summary>The phase of its update, from 0; null if it is not updated.</summary>
        public int? Phase { get; }

        /// <summary>Index of the entry that matches it; null if none does.</summary>
        public int? EntryIndex { get; }

        /// <summary>The number by which entries name it; null for a file.</summary>
        public uint? ElementId { get; }

        /// <summary>Serial number of the board.</summary>
        public uint SerialNumber { get; }

        /// <summary>Slot of the board; null if it has none.</summary>
        public uint? Slot { get; }

        /// <summary>Number of slots that the board takes; 0 if it has none.</summary>
        public uint SlotCount { get; }

        /// <summary>Id of the board.</summary>
        public uint BoardId { get; }

        /// <summary>CRC-32 of what is installed; null if it is not known.</summary>
        public uint? Checksum { get; }

        /// <summary>What is installed is complete; null if it is not known.</summary>
        public bool? IsValid { get; }

        /// <summary>The board runs what is installed; null if it is not known.</summary>
        public bool? IsActive { get; }

        /// <summary>Reasons for or against the update.</summary>
        public IReadOnlyList<Reason> Reasons { get; }

        /// <summary>Name in tables and results.</summary>
        public string DisplayName { get; }

        /// <summary>Kind of element, such as "Firmware".</summary>
        public string TypeName { get; }

        /// <summary>Name in the inventory, such as "UserFirmware".</summary>
        public string Name { get; }

        /// <summary>Address in the inventory; null for a file that the inventory does not list.</summary>
        public string Address { get; }

        /// <summary>Path of a file below the root of the target's file system; null for other elements.</summary>
        public string TargetPath { get; }

        /// <summary>Type of the board.</summary>
        public string BoardType { get; }

        /// <summary>Variant of the board; null if it has none.</summary>
        public string BoardVariant { get; }

        /// <summary>Name of the board; null if it has none.</summary>
        public string BoardName { get; }

        /// <summary>Path of the unit of the board; null if there is none.</summary>
        public string UnitPath { get; }

        /// <summary>Version of what is installed; null if it is not known.</summary>
        public string Version { get; }

        /// <summary>Version of the entry; null without an entry, or if it states none.</summary>
        public string AvailableVersion { get; }

        /// <summary>CRC-32 of the contents of the entry; null without an entry, or if it states none.</summary>
        public uint? AvailableChecksum { get; }
    }
}
