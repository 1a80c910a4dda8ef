using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;

namespace KvReflash.Tests {
    /// <summary>Archives without a target.</summary>
    public static class ArchiveTests {
        public static void AnArchiveHasItsIdentityAndItsEntries() {
            using (var archive = new Archive(Given.Archive)) {
                ArchiveContent content = archive.Read();
                Expect.Equal("QB line firmware, summer release", content.ArchiveName);
                Expect.Equal("23.2.1", content.ArchiveVersion);
                Expect.Equal("Korvel QB line", content.ProductName);
                Expect.Equal("1.0", content.FormatVersion);
                Expect.Equal("press", content.ArchiveVariant);
                Expect.Equal(Seal.None, content.Seal);
                Expect.Equal(null, content.ManifestDigest);
                Expect.Equal(null, content.Signer);
                ArchiveEntry loader = content.Entries[0];
                Expect.Equal("qb4120-ipl.kfw", loader.FileName);
                Expect.Equal("5.0.1", loader.Version);
                Expect.True(loader.IsUpgradeOnly, "it is never downgraded");
                Expect.Equal(3134532145U, content.Entries[1].Checksum);
                Expect.Contains("qb4120-ipl.kfw", archive.GetDocument(ArchiveDocumentKind.Content));
            }
        }

        public static void AnArchiveThatIsNotThereIsRefused() {
            using (var scratch = new Scratch())
            using (var archive = new Archive(scratch.Path("nothing"))) {
                var fault = Expect.Fails(Failure.Archive, () => archive.Read());
                Expect.Equal(3, fault.ExitCode);
            }
        }

        public static void AnArchiveThatIsNotSealedIsRefusedAsARelease() {
            var options = new ArchiveOptions {Archive = Given.Archive, RequireRelease = true};
            using (var archive = new Archive(options)) {
                ArchiveContent content = archive.Read();
                Expect.Equal(Seal.None, content.Seal);
            }
            using (var scratch = new Scratch()) {
                options.TrustFolder = scratch.Folder;
                using (var archive = new Archive(options)) {
                    Expect.Fails(Failure.Archive, () => archive.Read());
                }
            }
        }

        public static void ACheckFindsErrorsAndTheirPlaces() {
            using (var archive = new Archive(Given.Archive)) {
                Expect.True(archive.Check().All(finding => !finding.IsError), "the example archive has no errors");
            }
            using (var scratch = new Scratch()) {
                string description = scratch.Path("archive.json");
                File.WriteAllText(description, File.ReadAllText(Path.Combine(Given.Archive, "archive.json"))
                                                   .Replace("\"sequence\": 20", "\"sequence\": \"x\""));
                using (var archive = new Archive(scratch.Folder)) {
                    IReadOnlyList<Finding> findings = archive.Check();
                    Finding error = findings.First(finding => finding.Path.Contains("sequence"));
                    Expect.True(error.IsError, "it is an error");
                    Expect.True(error.Line > 1 && error.Column > 1, "it has a place");
                    Expect.True(error.Code.Length > 0 && error.Message.Length > 0, "it has a kind and a message");
                    Expect.Contains(error.Code, archive.GetDocument(ArchiveDocumentKind.Check));
                }
            }
        }

        public static void AComparisonShowsWhatChanges() {
            using (var scratch = new Scratch()) {
                string description = Path.Combine(scratch.Copy(Given.Archive, "newer"), "archive.json");
                File.WriteAllText(description, File.ReadAllText(description).Replace("\"5.0.1\"", "\"5.0.2\""));
                using (var newer = new Archive(scratch.Path("newer")))
                using (var older = new Archive(Given.Archive)) {
                    ArchiveChange change = newer.Compare(older).Single(one => one.Change != ChangeKind.Same);
                    Expect.Equal(ChangeKind.Up, change.Change);
                    Expect.Equal("QB4120", change.BoardType);
                    Expect.Equal(3U, change.ElementId);
                    Expect.Equal(null, change.TargetPath);
                    Expect.Equal("5.0.1", change.VersionBefore);
                    Expect.Equal("5.0.2", change.VersionAfter);
                    Expect.Contains("5.0.2", newer.GetDocument(ArchiveDocumentKind.Compare));
                }
            }
        }

        public static void AComparisonWithAnArchiveThatIsRefusedFails() {
            using (var scratch = new Scratch())
            using (var archive = new Archive(Given.Archive))
            using (var nothing = new Archive(scratch.Path("nothing"))) {
                var refusals = new[] {Expect.Fails(Failure.Archive, () => archive.Compare(nothing)),
                                      Expect.Fails(Failure.Archive, () => nothing.Compare(archive))};
                foreach (KvReflashException refusal in refusals) {
                    Expect.Contains(scratch.Path("nothing"), refusal.Message);
                    Expect.Equal(3, refusal.ExitCode);
                }
                Expect.Throws<ArgumentNullException>(() => archive.Compare(null));
            }
        }

        public static void ADocumentBeforeItsOperationIsRefused() {
            using (var archive = new Archive(Given.Archive)) {
                Expect.Throws<InvalidOperationException>(() => archive.GetDocument(ArchiveDocumentKind.Check));
            }
        }

        public static void AnArchiveThatWasDisposedOfIsRefused() {
            var archive = new Archive(Given.Archive);
            archive.Dispose();
            Expect.Throws<ObjectDisposedException>(() => archive.Read());
        }
    }
}
