using System;
using System.IO;
using System.Linq;

namespace KvReflash.Tests {
    /// <summary>What is thrown: failures by their classes, and wrong calls.</summary>
    public static class FailureTests {
        public static void AnArchiveThatIsRefusedHasItsClassAndExitCode() {
            using (var rack = new Rack()) {
                SessionOptions options = rack.Options();
                options.Archive = rack.Path("nothing");
                using (var session = new Session(options)) {
                    var fault = Expect.Fails(Failure.Archive, session.Prepare);
                    Expect.Equal(3, fault.ExitCode);
                    Expect.Equal(false, fault.IsRetryable);
                    Expect.Equal(session.Outcome.Message, fault.Message);
                }
            }
        }

        public static void ATargetThatIsNotReachedMayBeTriedAgain() {
            using (var rack = new Rack()) {
                SessionOptions options = rack.Options();
                options.Target = "127.0.0.9";
                using (var session = new Session(options)) {
                    var fault = Expect.Fails(Failure.Target, session.Prepare);
                    Expect.Equal(4, fault.ExitCode);
                    Expect.Equal(true, fault.IsRetryable);
                    Expect.Equal(0, session.Outcome.Elements.Count);
                }
            }
        }

        public static void ATargetThatCannotBeLockedIsAFailureOfTheLock() {
            using (var rack = new Rack("{\"call\": \"lock\", \"occurrence\": 0}"))
            using (Session session = rack.Prepared()) {
                Expect.Equal(5, Expect.Fails(Failure.Locked, () => session.Run()).ExitCode);
            }
        }

        public static void AnElementThatFailsHasItsReasonAndItsErrors() {
            const string error =
                "{\"code\": 4660, \"text\": \"No space.\", \"function\": \"write\", \"originNode\": 2815}";
            using (var rack = new Rack("{\"call\": \"update2\", \"errors\": [" + error + "]}"))
            using (Session session = rack.Prepared()) {
                Expect.Equal(1, Expect.Fails(Failure.Elements, () => session.Run()).ExitCode);
                ElementOutcome failed = session.Outcome.Elements.First(one => one.Result == ElementResult.Failed);
                Expect.Equal(FailedCall.Update2, failed.FailedCall);
                Expect.True(failed.Reason != null, "there is a reason");
                Expect.Equal(4660U, failed.Errors[0].Code);
                Expect.Equal("No space.", failed.Errors[0].Text);
                Expect.Equal("write", failed.Errors[0].Function);
                Expect.Equal(2815U, failed.Errors[0].OriginNode);
                Expect.Equal(null, failed.Errors[0].Line);
                ElementOutcome updated = session.Outcome.Elements.First(one => one.Result == ElementResult.Updated);
                Expect.Equal(FailedCall.None, updated.FailedCall);
            }
        }

        public static void ATargetThatIsNotResetIsAFailureOfTheReboot() {
            using (var rack = new Rack("{\"call\": \"KvHIM_FORCE_resetDevice\", \"occurrence\": 0}"))
            using (Session session = rack.Prepared(SessionMode.Connect)) {
                Expect.Fails(Failure.Reboot, session.Reboot);
            }
        }

        public static void APreflightNamesTheFileThatIsMissing() {
            using (var rack = new Rack()) {
                SessionOptions options = rack.Options();
                options.Archive = rack.Copy(Given.Archive, "archive");
                using (Session session = rack.Prepared(options)) {
                    File.Delete(Path.Combine(options.Archive, "qb4120-ipl.kfw"));
                    var fault = Expect.Fails(Failure.Archive, session.Preflight);
                    Expect.Contains("qb4120-ipl.kfw", fault.Faults.Single());
                    Expect.Throws<InvalidOperationException>(() => session.Run());
                }
            }
        }

        public static void AVerificationThatDiffersIsAResult() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared(SessionMode.Plan)) {
                Verification verification = session.Verify();
                Expect.Equal(false, verification.Succeeded);
                Expect.Equal(Failure.Verification, verification.Failure);
                Expect.True(verification.Message != null, "there is a reason");
                Expect.True(verification.Elements.Any(one => one.Result == VerifiedResult.Differs), "one differs");
            }
        }

        public static void ATargetThatCannotBeLookedAtHasTheErrorsOfTheLook() {
            using (var rack = new Rack("{\"call\": \"scan\", \"occurrence\": 2, " +
                                       "\"errors\": [{\"code\": 9, \"text\": \"Busy.\"}]}"))
            using (Session session = rack.Prepared()) {
                session.Run();
                Verification verification = session.Verify();
                Expect.Equal(Failure.Verification, verification.Failure);
                Expect.Equal("9 Busy.", verification.Errors.Single().Code + " " + verification.Errors.Single().Text);
                Expect.Equal(0, session.Verify().Errors.Count);
            }
        }

        public static void AFilterThatLetsNothingThroughIsAFailureOfTheSelection() {
            using (var rack = new Rack()) {
                SessionOptions options = rack.Options();
                options.SerialNumbers = "1";
                using (var session = new Session(options)) {
                    Expect.Equal(8, Expect.Fails(Failure.Selection, session.Prepare).ExitCode);
                }
            }
        }

        public static void ErrorsThatBelongToNoElementAreListed() {
            using (var rack = new Rack("{\"call\": \"scan\", \"errors\": [{\"code\": 9, \"text\": \"Busy.\"}]}"))
            using (Session session = rack.Session()) {
                Expect.Fails(Failure.Target, session.Prepare);
                Expect.Equal("Busy.", session.Outcome.Errors.Single().Text);
            }
        }

        public static void CallsInTheWrongOrderAreRefused() {
            using (var rack = new Rack())
            using (Session session = rack.Session()) {
                Expect.Throws<InvalidOperationException>(() => session.Run());
                Expect.Throws<InvalidOperationException>(() => { Plan plan = session.Plan; });
                Expect.Throws<InvalidOperationException>(() => { Verification last = session.Verification; });
                session.Prepare();
                string message = Expect.Throws<InvalidOperationException>(session.Prepare).Message;
                Expect.Contains("must not be called now", message);
                session.Run();
                Expect.Throws<InvalidOperationException>(() => session.Run());
            }
        }

        public static void WrongOptionsAreRefused() {
            Expect.Throws<ArgumentNullException>(() => new Session(null));
            Expect.Throws<ArgumentException>(() => new Session(new SessionOptions {Mode = (SessionMode)99}));
            Expect.Throws<ArgumentException>(() => new Session(new SessionOptions {Target = "a\0b"}));
            Expect.Throws<ArgumentException>(() => new Session(new SessionOptions {SavedPlan = "{}"}));
            Expect.Throws<ArgumentException>(() => new Session(new SessionOptions {ResumedRun = "a run"}));
            foreach (double seconds in new[] {-1, 0.5, 1e10}) {
                var options = new SessionOptions {StallLimit = TimeSpan.FromSeconds(seconds)};
                Expect.Throws<ArgumentException>(() => new Session(options));
            }
        }

        public static void ATextThatIsNotUnicodeIsRefused() {
            try {
                new Session(new SessionOptions {Target = "\uD800"});
            } catch (ArgumentException) {
                return;
            }
            throw new Exception("nothing was thrown");
        }

        public static void ASessionThatWasDisposedOfIsRefused() {
            using (var rack = new Rack()) {
                Session session = rack.Prepared();
                session.Dispose();
                session.Dispose();
                Expect.Throws<ObjectDisposedException>(() => session.Run());
                Expect.Throws<ObjectDisposedException>(() => { Outcome outcome = session.Outcome; });
                Expect.Throws<ObjectDisposedException>(() => session.RequestStop());
            }
        }

        public static void ATargetThatIsNotThereIsNotServed() {
            using (var scratch = new Scratch()) {
                string message = Expect.Throws<IOException>(() => Emulation.Serve(scratch.Folder)).Message;
                Expect.Contains("target.json", message);
                Expect.Throws<ArgumentNullException>(() => Emulation.Serve(null));
            }
        }
    }
}
