using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace KvReflash {
    /// <summary>Options of an archive. A text that is null or empty is not given.</summary>
    public sealed class ArchiveOptions {
        /// <summary>Folder or package of the archive.</summary>
        public string Archive { get; set; }

        /// <summary>File name of its description; "archive.json" if it is not given.</summary>
        public string Description { get; set; }

        /// <summary>Obeys the archive's manifest and verifies its signatures, as a trust folder does.</summary>
        public bool RequireRelease { get; set; }

        /// <summary>With a trust folder: accepts archives that are not sealed or signed.</summary>
        public bool AcceptUnsealed { get; set; }

        /// <summary>Folder that lists who is trusted; nobody is if it is not given.</summary>
        public string TrustFolder { get; set; }

        /// <summary>The record for the library; its texts last as long as `texts`.</summary>
        internal kvr_archive_options Record(GivenTexts texts) => new kvr_archive_options {
            size = (uint)Marshal.SizeOf(typeof(kvr_archive_options)),
            flags = (uint)((RequireRelease ? SessionFlags.Release : 0) |
                           (AcceptUnsealed ? SessionFlags.AcceptUnsealed : 0)),
            archive = texts.Add(Archive),
            description = texts.Add(Description),
            trust_folder = texts.Add(TrustFolder)
        };
    }

    /// <summary>An archive without a target. One thread at a time uses it; a call while another thread is in one throws
    /// InvalidOperationException.</summary>
    public sealed class Archive : IDisposable {
        private readonly ExclusiveUse use = new ExclusiveUse();
        private readonly ArchiveHandle handle;

        /// <summary>Makes the archive in a folder or package. Nothing is read yet.</summary>
        public Archive(string archive) : this(new ArchiveOptions {Archive = archive}) {}

        /// <summary>Makes an archive. Nothing is read yet.</summary>
        public Archive(ArchiveOptions options) {
            if (options == null) {
                throw new ArgumentNullException("options");
            }
            Library.Require();
            using (var texts = new GivenTexts()) {
                kvr_archive_options record = options.Record(texts);
                CallResult.Judged(Native.kvr_archive_create(ref record, out handle));
            }
        }

        /// <summary>Reads the archive as a session does. Throws KvReflashException if it is refused.</summary>
        public ArchiveContent Read() => use.During(() => {
            CallResult.Judged(Native.kvr_archive_read(handle));
            ArchiveContent content = Content();
            return content.Failure == Failure.None ? content
                                                   : throw new KvReflashException(content.Failure, content.Message);
        });

        /// <summary>Returns everything that is wrong or surprising; the archive is in order if none is an error.
        /// </summary>
        public IReadOnlyList<Finding> Check() => use.During(() => {
            uint count;
            CallResult.Judged(Native.kvr_archive_check(handle, out count));
            return Immutable.List(count, Finding);
        });

        /// <summary>Returns the places of this archive and an older one, and how they differ. Throws KvReflashException
        /// if one of them is refused.</summary>
        public IReadOnlyList<ArchiveChange> Compare(Archive older) {
            if (older == null) {
                throw new ArgumentNullException("older");
            }
            return use.During(() => {
                uint count;
                if (CallResult.Judged(Native.kvr_archive_compare(handle, older.handle, out count)) !=
                    CallResult.Success) {
                    throw new KvReflashException(Failure.Archive, CallResult.LastError);
                }
                return Immutable.List(count, Change);
            });
        }

        /// <summary>Returns a document of the archive, in JSON as the console tool writes it. Throws
        /// InvalidOperationException before the operation that it depends on.</summary>
        public string GetDocument(ArchiveDocumentKind kind) => use.During(() => {
            IntPtr text;
            CallResult.Judged(Native.kvr_archive_get_document(handle, (uint)kind, out text));
            return Utf8.Text(text);
        });

        /// <summary>Gives the archive back.</summary>
        public void Dispose() => handle.Dispose();

        private ArchiveContent Content() {
            var info = new kvr_archive_info {size = SizeOf(typeof(kvr_archive_info))};
            CallResult.Judged(Native.kvr_archive_get_info(handle, ref info));
            return new ArchiveContent(info, Immutable.List(info.entries, Entry));
        }

        /// <summary>Each record says how much of it the caller knows.</summary>
        private static uint SizeOf(Type record) => (uint)Marshal.SizeOf(record);

        private ArchiveEntry Entry(uint index) {
            var entry = new kvr_entry {size = SizeOf(typeof(kvr_entry))};
            CallResult.Judged(Native.kvr_archive_get_entry(handle, index, ref entry));
            return new ArchiveEntry(entry);
        }

        private Finding Finding(uint index) {
            var finding = new kvr_finding {size = SizeOf(typeof(kvr_finding))};
            CallResult.Judged(Native.kvr_archive_get_finding(handle, index, ref finding));
            return new Finding(finding);
        }

        private ArchiveChange Change(uint index) {
            var change = new kvr_change {size = SizeOf(typeof(kvr_change))};
            CallResult.Judged(Native.kvr_archive_get_change(handle, index, ref change));
            return new ArchiveChange(change);
        }
    }
}
