using System;
using System.Runtime.InteropServices;

// The library fills the fields.
#pragma warning disable 649

namespace KvReflash {
    // The records of kvreflash.h, under their names there and field by field. Texts are pointers to UTF-8.

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_session_options {
        internal uint size;
        internal uint mode;
        internal uint flags;
        internal uint unlisted_files;
        internal uint stall_limit;
        internal uint reserved;
        internal IntPtr target;
        internal IntPtr archive;
        internal IntPtr description;
        internal IntPtr board_types;
        internal IntPtr serial_numbers;
        internal IntPtr element_names;
        internal IntPtr trust_folder;
        internal IntPtr journal_folder;
        internal IntPtr journal_place;
        internal IntPtr saved_plan;
        internal IntPtr resumed_run;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_event {
        internal uint size;
        internal uint kind;
        internal uint value;
        internal uint succeeded;
        internal IntPtr text;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_plan {
        internal uint size;
        internal uint elements;
        internal uint changes;
        internal uint phases;
        internal uint entries;
        internal uint supported;
        internal uint nodes;
        internal uint reserved;
        internal IntPtr target_address;
        internal IntPtr archive_name;
        internal IntPtr archive_version;
        internal IntPtr product_name;
        internal IntPtr archive_variant;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_element {
        internal uint size;
        internal uint index;
        internal uint known;
        internal uint updated;
        internal uint disabled;
        internal uint up_to_date;
        internal uint downgrade;
        internal uint custom;
        internal uint phase;
        internal uint entry;
        internal uint element_id;
        internal uint serial_number;
        internal uint slot;
        internal uint slot_count;
        internal uint checksum;
        internal uint valid;
        internal uint active;
        internal uint reasons;
        internal IntPtr display_name;
        internal IntPtr type_name;
        internal IntPtr name;
        internal IntPtr address;
        internal IntPtr target_path;
        internal IntPtr board_type;
        internal IntPtr board_variant;
        internal IntPtr board_name;
        internal IntPtr unit_path;
        internal IntPtr version;
        internal IntPtr available_version;
        internal uint available_checksum;
        internal uint board_id;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_entry {
        internal uint size;
        internal uint index;
        internal uint description_index;
        internal uint known;
        internal uint checksum;
        internal uint sequence;
        internal uint upgrade_only;
        internal uint reserved;
        internal IntPtr file_name;
        internal IntPtr version;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_outcome {
        internal uint size;
        internal uint stage;
        internal uint failure;
        internal uint retryable;
        internal uint exit_code;
        internal uint errors;
        internal uint faults;
        internal uint reserved;
        internal IntPtr message;
        internal IntPtr run;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_error {
        internal uint size;
        internal uint code;
        internal uint origin_node;
        internal uint line;
        internal IntPtr text;
        internal IntPtr function;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_element_result {
        internal uint size;
        internal uint result;
        internal uint failed_call;
        internal uint known;
        internal uint state;
        internal uint file_changed;
        internal uint errors;
        internal uint reserved;
        internal IntPtr reason;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_verification {
        internal uint size;
        internal uint failure;
        internal uint elements;
        internal uint errors;
        internal IntPtr message;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_verified_element {
        internal uint size;
        internal uint element;
        internal uint result;
        internal uint known;
        internal uint checksum;
        internal uint valid;
        internal uint active;
        internal uint file_changed;
        internal IntPtr version;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_archive_options {
        internal uint size;
        internal uint flags;
        internal IntPtr archive;
        internal IntPtr description;
        internal IntPtr trust_folder;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_archive_info {
        internal uint size;
        internal uint entries;
        internal uint failure;
        internal uint seal;
        internal IntPtr message;
        internal IntPtr archive_name;
        internal IntPtr archive_version;
        internal IntPtr product_name;
        internal IntPtr format_version;
        internal IntPtr archive_variant;
        internal IntPtr manifest_digest;
        internal IntPtr created;
        internal IntPtr signer;
        internal IntPtr key_fingerprint;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_finding {
        internal uint size;
        internal uint severity;
        internal uint line;
        internal uint column;
        internal IntPtr code;
        internal IntPtr path;
        internal IntPtr message;
        internal IntPtr hint;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_change {
        internal uint size;
        internal uint change;
        internal uint element_id;
        internal uint content_changed;
        internal uint rules_changed;
        internal uint sequence_changed;
        internal IntPtr board_type;
        internal IntPtr target_path;
        internal IntPtr version_before;
        internal IntPtr version_after;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_saved_plan {
        internal uint size;
        internal uint changes;
        internal IntPtr id;
        internal IntPtr time;
        internal IntPtr target;
        internal IntPtr target_address;
        internal IntPtr archive;
        internal IntPtr tool_version;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct kvr_run_info {
        internal uint size;
        internal uint state;
        internal uint failure;
        internal uint exit_code;
        internal uint resumable;
        internal uint reserved;
        internal IntPtr id;
        internal IntPtr command;
        internal IntPtr begin;
        internal IntPtr end;
        internal IntPtr target;
        internal IntPtr target_address;
        internal IntPtr archive;
        internal IntPtr user;
        internal IntPtr computer;
        internal IntPtr message;
        internal IntPtr plan;
        internal IntPtr fault;
    }
}
