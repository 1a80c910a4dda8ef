using System;
using System.Linq;
using System.Threading;

namespace KvReflash.Tests {
    /// <summary>Saved plans, and the journal of runs.</summary>
    public static class RunTests {
        public static void AnUpdateIsARunOfTheJournal() {
            using (var rack = new Rack()) {
                string id;
                using (Session session = rack.Prepared(Journaled(rack))) {
                    id = session.Run().RunId;
                    Expect.True(id != null, "the run has an id");
                }
                using (var journal = new Journal(rack.Path("journal"))) {
                    Run run = journal.Runs.Single();
                    Expect.Equal(id, run.Id);
                    Expect.Equal(RunState.Complete, run.State);
                    Expect.Equal("update", run.Command);
                    Expect.Equal(Failure.None, run.Failure);
                    Expect.Equal(0, run.ExitCode);
                    Expect.Equal(false, run.IsResumable);
                    Expect.Equal(Rack.Address, run.TargetAddress);
                    Expect.Equal(null, run.Message);
                    Expect.Equal(null, run.PlanId);
                    Expect.Equal(null, run.Fault);
                    Expect.True(string.CompareOrdinal(run.Begin, run.End) <= 0, "it ends after it begins");
                    ExpectDocuments(journal, id);
                }
            }
        }

        public static void AJournalThatIsNotThereHasNoRuns() {
            using (var scratch = new Scratch())
            using (var journal = new Journal(scratch.Path("nothing"))) {
                Expect.Equal(0, journal.Runs.Count);
            }
        }

        public static void AJournalThatWasDisposedOfKeepsItsListOnly() {
            using (var scratch = new Scratch()) {
                var journal = new Journal(scratch.Path("nothing"));
                journal.Dispose();
                Expect.Equal(0, journal.Runs.Count);
                Expect.Throws<ObjectDisposedException>(() => journal.GetDocument());
            }
        }

        public static void ARunHasNoEndWhileItsSessionLasts() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(Journaled(rack))) {
                session.Run();
                using (var journal = new Journal(rack.Path("journal"))) {
                    Run run = journal.Runs.Single();
                    Expect.Equal(RunState.Running, run.State);
                    Expect.Equal(null, run.End);
                    Expect.Equal(null, run.Failure);
                    Expect.Equal(null, run.ExitCode);
                }
            }
        }

        public static void ASessionThatIsForgottenEndsItsRun() {
            using (var rack = new Rack()) {
                const int several = 5; // the collector may take something on a stack for one of them
                for (int index = 0; index < several; ++index) {
                    Forget(rack);
                }
                int ended = 0;
                for (int round = 0; round < 50 && ended == 0; ++round) {
                    GC.Collect();
                    GC.WaitForPendingFinalizers();
                    using (var journal = new Journal(rack.Path("journal"))) {
                        Expect.Equal(several, journal.Runs.Count);
                        ended = journal.Runs.Count(run => run.State == RunState.Complete);
                    }
                }
                Expect.True(ended > 0, "a run has ended");
            }
        }

        public static void ARunThatWasStoppedGoesOn() {
            using (var rack = new Rack()) {
                string stopped = Stopped(rack);
                using (var journal = new Journal(rack.Path("journal"))) {
                    Expect.Equal(RunState.Stopped, journal.Runs.Single().State);
                    Expect.Equal(true, journal.Runs.Single().IsResumable);
                }
                SessionOptions options = Journaled(rack);
                options.ResumedRun = stopped;
                using (Session session = rack.Prepared(options)) {
                    Expect.True(session.Plan.ChangeCount < 20, "what was done is not done again");
                    Expect.Equal(Failure.None, session.Run().Failure);
                }
            }
        }

        public static void ASavedPlanIsReadAndRun() {
            using (var rack = new Rack()) {
                string content = SavedPlanOf(rack);
                SavedPlan plan = SavedPlan.Read(content);
                Expect.Equal(Rack.Address, plan.Target);
                Expect.Equal(Rack.Address, plan.TargetAddress);
                Expect.Equal(Library.Version, plan.ToolVersion);
                Expect.True(plan.ChangeCount > 0, "it changes something");
                using (Session session = rack.Prepared(new SessionOptions {SavedPlan = content})) {
                    Expect.Equal(plan.ChangeCount, session.Plan.ChangeCount);
                    Expect.Equal(Failure.None, session.Run().Failure);
                }
            }
        }

        public static void ASavedPlanThatDoesNotHoldAnyMoreListsItsDifferences() {
            using (var rack = new Rack()) {
                string content = SavedPlanOf(rack);
                using (Session session = rack.Prepared()) {
                    session.Run();
                }
                using (var session = new Session(new SessionOptions {SavedPlan = content})) {
                    var fault = Expect.Fails(Failure.Stale, session.Prepare);
                    Expect.Equal(9, fault.ExitCode);
                    Expect.True(fault.Faults.Count > 1, "all differences are listed");
                    Expect.Equal(fault.Faults.Count, session.Outcome.Faults.Count);
                }
            }
        }

        public static void WhatIsNotASavedPlanIsRefused() {
            Expect.Equal(9, Expect.Fails(Failure.Stale, () => SavedPlan.Read("{}")).ExitCode);
            using (var rack = new Rack()) {
                string content = SavedPlanOf(rack);
                Expect.Fails(Failure.Stale, () => SavedPlan.Read(content.Replace(Rack.Address, "127.0.0.2")));
            }
        }

        public static void APlanOfWhichAFileIsMissingIsNotSaved() {
            using (var rack = new Rack()) {
                SessionOptions options = rack.Options(SessionMode.Plan);
                options.Archive = rack.Copy(Given.Archive, "archive");
                using (Session session = rack.Prepared(options)) {
                    System.IO.File.Delete(System.IO.Path.Combine(options.Archive, "qb4120-ipl.kfw"));
                    var fault = Expect.Fails(Failure.Archive, () => session.GetDocument(DocumentKind.SavedPlan));
                    Expect.Contains("qb4120-ipl.kfw", fault.Message);
                    Expect.Equal(3, fault.ExitCode);
                    Expect.Equal(Failure.None, session.Outcome.Failure);
                }
            }
        }

        public static void WithoutAnArchiveThereIsNoPlanToSave() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(new SessionOptions {Mode = SessionMode.Elements,
                                                                       Target = Rack.Address})) {
                string message = Expect.Throws<InvalidOperationException>(
                    () => session.GetDocument(DocumentKind.SavedPlan)).Message;
                Expect.Equal("the session has not planned an update", message);
            }
        }

        private static SessionOptions Journaled(Rack rack) {
            SessionOptions options = rack.Options();
            options.JournalFolder = rack.Path("journal");
            options.JournalPlace = rack.Path("rack");
            options.RequireJournal = true;
            return options;
        }

        /// <summary>Runs an update on a thread of its own, whose stack holds the session no longer.</summary>
        private static void Forget(Rack rack) {
            var thread = new Thread(() => rack.Prepared(Journaled(rack)).Run());
            thread.Start();
            thread.Join();
        }

        /// <summary>Runs an update that is stopped in the middle, and returns its id.</summary>
        private static string Stopped(Rack rack) {
            using (Session session = rack.Prepared(Journaled(rack))) {
                session.EventReceived += (sender, happened) => {
                    if (happened.Kind == EventKind.ElementEnd) {
                        session.RequestStop();
                    }
                };
                Expect.Fails(Failure.Stopped, () => session.Run());
                return session.Outcome.RunId;
            }
        }

        private static string SavedPlanOf(Rack rack) {
            using (Session session = rack.Prepared(SessionMode.Plan)) {
                return session.GetDocument(DocumentKind.SavedPlan);
            }
        }

        private static void ExpectDocuments(Journal journal, string id) {
            Expect.Contains(id, journal.GetDocument());
            Expect.Contains(id, journal.GetDocument(id));
            var fault = Expect.Fails(Failure.Selection, () => journal.GetDocument("nothing"));
            Expect.Contains("nothing", fault.Message);
            Expect.Equal(8, fault.ExitCode);
            Expect.Throws<ArgumentException>(() => journal.GetDocument(""));
        }
    }
}
