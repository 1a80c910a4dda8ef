using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;

namespace KvReflash.Tests {
    /// <summary>What sessions do, and what they know.</summary>
    public static class SessionTests {
        public static void APlanListsElementsEntriesAndNodes() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(SessionMode.Plan)) {
                Plan plan = session.Plan;
                Expect.True(plan.IsSupported, "the archive supports the target");
                Expect.Equal(Rack.Address, plan.TargetAddress);
                Expect.Equal("QB line firmware, summer release", plan.ArchiveName);
                Expect.Equal("23.2.1", plan.ArchiveVersion);
                Expect.Equal("Korvel QB line", plan.ProductName);
                Expect.Equal("press", plan.ArchiveVariant);
                Expect.Equal(plan.ChangeCount, plan.Elements.Count(element => element.IsUpdated));
                Expect.True(plan.NodeSerialNumbers.Contains(2815U), "the node is listed");
                Expect.Equal(plan.PhaseCount, plan.Elements.Max(element => element.Phase ?? -1) + 1);
                Expect.Equal(Stage.Prepared, session.Outcome.Stage);
                Expect.Equal(plan.Elements.Count, session.Elements.Count);
                Expect.Equal(plan.Entries.Count, plan.Entries.Last().Index + 1);
            }
        }

        public static void AnElementHasWhatIsInstalledAndWhatIsAvailable() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(SessionMode.Plan)) {
                Plan plan = session.Plan;
                Element loader = plan.Elements.First(element => element.DisplayName.EndsWith("Bootloader"));
                ArchiveEntry entry = plan.Entries[loader.EntryIndex.Value];
                Expect.Equal("UserIpl", loader.Name);
                Expect.Equal("QB4120", loader.BoardType);
                Expect.Equal("A", loader.BoardVariant);
                Expect.Equal("5.0", loader.Version);
                Expect.Equal("5.0.1", loader.AvailableVersion);
                Expect.Equal(2210043987U, loader.Checksum);
                Expect.Equal(3U, loader.ElementId);
                Expect.Equal(2815U, loader.SerialNumber);
                Expect.Equal(1U, loader.Slot);
                Expect.Equal(true, loader.IsValid);
                Expect.Equal(Reason.VersionDiffers, loader.Reasons[0]);
                Expect.Equal("qb4120-ipl.kfw", entry.FileName);
                Expect.Equal(10U, entry.Sequence);
                Expect.True(entry.IsUpgradeOnly, "boot loaders are never downgraded");
            }
        }

        public static void WhatIsNotKnownIsNull() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(SessionMode.Plan)) {
                Element file = session.Elements.Single(element => element.Address == null);
                Expect.Equal("config/net/network.ini", file.TargetPath);
                Expect.Equal(null, file.Version);
                Expect.Equal(null, file.ElementId);
                Expect.Equal(null, file.IsValid);
                Element idle = session.Elements.First(element => !element.IsUpdated);
                Expect.Equal(null, idle.Phase);
            }
        }

        public static void ATargetIsScannedWithoutAnArchive() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(new SessionOptions {Mode = SessionMode.Elements,
                                                                       Target = Rack.Address})) {
                Expect.True(session.Elements.Count > 0, "there are elements");
                Expect.Equal(null, session.Plan.ArchiveName);
                Expect.True(session.Elements.All(element => element.EntryIndex == null), "no element has an entry");
            }
        }

        public static void FiltersAndOptionsDecideWhatIsPlanned() {
            using (var rack = new Rack()) {
                SessionOptions options = rack.Options(SessionMode.Plan);
                options.BoardTypes = "QB4120";
                using (Session session = rack.Prepared(options)) {
                    Expect.True(session.Elements.All(one => one.BoardType == "QB4120" || one.ElementId == null),
                                "only boards of this type are listed");
                    Expect.True(session.Elements.Any(element => element.IsUpToDate), "something is up to date");
                }
                options.Force = true;
                using (Session session = rack.Prepared(options)) {
                    Expect.True(session.Elements.Any(element => element.Reasons.Contains(Reason.Forced)),
                                "all is forced");
                }
            }
        }

        public static void AnUpdateIsReportedVerifiedAndFindsNothingMoreToDo() {
            using (var rack = new Rack())
            using (Session session = rack.Session()) {
                var events = new List<UpdateEvent>();
                session.EventReceived += (sender, happened) => events.Add(happened);
                session.Prepare();
                session.Preflight();
                Outcome outcome = session.Run();
                Expect.Equal(Failure.None, outcome.Failure);
                Expect.Equal(Stage.Ended, outcome.Stage);
                Expect.Equal(0, outcome.ExitCode);
                Expect.Equal(null, outcome.Message);
                Expect.Equal(session.Plan.ChangeCount,
                             outcome.Elements.Count(element => element.Result == ElementResult.Updated));
                ExpectEventsOfAnUpdate(events, session.Plan);
                Verification verification = session.Verify();
                Expect.True(verification.Succeeded, "the target reports what it should: " + verification.Message);
                Expect.Equal(verification.Elements.Count, session.Verification.Elements.Count);
                VerifiedElement loader = verification.Elements.First(
                    element => session.Plan.Elements[element.ElementIndex].DisplayName.EndsWith("Bootloader"));
                Expect.Equal(VerifiedResult.AsExpected, loader.Result);
                Expect.Equal("5.0.1", loader.Version);
            }
        }

        public static void AnUpdatedTargetIsUpToDate() {
            using (var rack = new Rack()) {
                using (Session session = rack.Prepared()) {
                    session.Run();
                }
                using (Session session = rack.Prepared(SessionMode.Plan)) {
                    Element loader = session.Elements.First(element => element.DisplayName.EndsWith("Bootloader"));
                    Expect.Equal("5.0.1", loader.Version);
                    Expect.True(loader.IsUpToDate, "nothing is to be done");
                }
            }
        }

        public static void ADisabledElementIsLeftOut() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                Element element = session.Elements.First(one => one.IsUpdated);
                session.Disable(element.DisplayName);
                Expect.Equal(false, session.Elements[element.Index].IsUpdated);
                Expect.Equal(Reason.Disabled, session.Elements[element.Index].Reasons.Last());
                Outcome outcome = session.Run();
                Expect.Equal(ElementResult.NotPlanned, outcome.Elements[element.Index].Result);
            }
        }

        public static void AnElementThatDoesNotExistIsNotDisabled() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                int changes = session.Plan.ChangeCount;
                var fault = Expect.Fails(Failure.Selection, () => session.Disable("nothing"));
                Expect.Equal("0 elements are named 'nothing'", fault.Message);
                Expect.Equal(changes, session.Plan.ChangeCount);
            }
        }

        public static void ATargetIsRebootedAndVerifiedAgain() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                session.Run();
                session.Reboot();
                Expect.Equal(Stage.Rebooted, session.Outcome.Stage);
                int looks = 1; // it takes some until the target is there again
                while (!session.Verify(true).Succeeded && looks < 10) {
                    ++looks;
                }
                Expect.True(session.Verification.Succeeded, "the target has what was installed");
                Expect.True(looks > 1, "the target was away");
            }
        }

        public static void DocumentsAreThoseOfTheConsoleTool() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                Expect.Contains("\"kvreflash.plan\"", session.GetDocument(DocumentKind.Plan));
                Expect.Contains("UserIpl", session.GetDocument(DocumentKind.Elements));
                Expect.Contains("version-differs", session.GetDocument(DocumentKind.Explain));
                session.Run();
                Expect.Contains("\"updated\"", session.GetDocument(DocumentKind.Update));
            }
        }

        public static void TextsAreUtf8InBothDirections() {
            using (var rack = new Rack()) {
                const string name = "Ähren-日本-\U0001F527";
                SessionOptions options = rack.Options(SessionMode.Plan);
                options.Archive = rack.Path(name);
                using (var session = new Session(options)) {
                    var fault = Expect.Fails(Failure.Archive, session.Prepare);
                    Expect.Contains(name, session.GetDocument(DocumentKind.Plan));
                    Expect.True(!fault.Message.Contains("\uFFFD"), "the message is UTF-8");
                }
                Directory.CreateDirectory(options.Archive);
                foreach (string file in Directory.GetFiles(Given.Archive)) {
                    File.Copy(file, Path.Combine(options.Archive, Path.GetFileName(file)));
                }
                using (Session session = rack.Prepared(options)) {
                    Expect.True(session.Plan.Entries.Count > 0, "the archive was read");
                }
            }
        }

        private static void ExpectEventsOfAnUpdate(List<UpdateEvent> events, Plan plan) {
            var kinds = events.Select(one => one.Kind).Where(kind => kind != EventKind.Message).ToList();
            Expect.Equal(EventKind.Locked, kinds.First());
            Expect.Equal(EventKind.Unlocked, kinds.Last());
            Expect.Equal(plan.ChangeCount, kinds.Count(kind => kind == EventKind.ElementEnd));
            var phases = events.Where(one => one.Kind == EventKind.Phase).Select(one => one.Value).ToList();
            Expect.Equal(0U, phases.First());
            Expect.Equal(null, phases.Last());
            Expect.Equal(plan.PhaseCount + 1, phases.Count);
            var percentages = events.Where(one => one.Kind == EventKind.Progress).Select(one => one.Value).ToList();
            Expect.Equal(100U, percentages.Max());
            Expect.True(events.All(one => one.Succeeded), "nothing has failed");
            string text = string.Concat(events.Select(one => one.Text));
            Expect.Contains("Update completed successfully!", text);
        }
    }
}
