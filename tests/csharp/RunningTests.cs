using System;
using System.Collections.Generic;
using System.Linq;
using System.Threading;
using System.Threading.Tasks;

namespace KvReflash.Tests {
    /// <summary>Events, threads and requests to end while an update runs.</summary>
    public static class RunningTests {
        private sealed class HandlerFault : Exception {
        }

        /// <summary>Calls an operation with each event, on the thread of the update.</summary>
        private sealed class Receiver : IProgress<UpdateEvent> {
            private readonly Action<UpdateEvent> receive;

            internal Receiver(Action<UpdateEvent> receive) {
                this.receive = receive;
            }

            public void Report(UpdateEvent happened) {
                receive(happened);
            }
        }

        public static void AnAsynchronousUpdateReportsOnItsOwnThread() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                var threads = new HashSet<int>();
                var kinds = new HashSet<EventKind>();
                var receiver = new Receiver(happened => {
                    threads.Add(Thread.CurrentThread.ManagedThreadId);
                    kinds.Add(happened.Kind);
                });
                Outcome outcome = session.RunAsync(receiver).Result;
                Expect.Equal(Stage.Ended, outcome.Stage);
                Expect.True(threads.Single() != Thread.CurrentThread.ManagedThreadId, "it is another thread");
                Expect.True(kinds.Contains(EventKind.Progress) && kinds.Contains(EventKind.Message), "events came");
            }
        }

        public static void AProgressReceivesTheEventsOfItsRunOnly() {
            using (var rack = new Rack("{\"call\": \"KvHIM_FORCE_resetDevice\"}"))
            using (Session session = rack.Prepared()) {
                int received = 0;
                session.RunAsync(new Receiver(happened => ++received)).Wait();
                int ofRun = received;
                int later = 0;
                session.EventReceived += (sender, happened) => ++later;
                Expect.Fails(Failure.Reboot, session.Reboot);
                Expect.True(ofRun > 0 && later > 0, "there are events of both");
                Expect.Equal(ofRun, received);
            }
        }

        public static void AnAsynchronousUpdateThatFailsThrowsItsFailure() {
            using (var rack = new Rack("{\"call\": \"update2\"}"))
            using (Session session = rack.Prepared()) {
                Expect.Fails(Failure.Elements, () => session.RunAsync().GetAwaiter().GetResult());
            }
        }

        public static void CancellationFinishesWhatHasBegunAndCancelsTheTask() {
            using (var rack = new Rack())
            using (var cancellation = new CancellationTokenSource())
            using (Session session = rack.Prepared()) {
                var receiver = new Receiver(happened => {
                    if (happened.Kind == EventKind.ElementStart) {
                        cancellation.Cancel();
                    }
                });
                Task<Outcome> update = session.RunAsync(receiver, cancellation.Token);
                ExpectCancelled(update);
                Outcome outcome = session.Outcome;
                Expect.Equal(Failure.Stopped, outcome.Failure);
                Expect.Equal(7, outcome.ExitCode);
                Expect.True(outcome.Elements.Any(one => one.Result == ElementResult.Updated), "what has begun is done");
                Expect.True(outcome.Elements.Any(one => one.Result == ElementResult.NotStarted), "nothing new begins");
                Expect.True(outcome.Elements.All(one => one.Result != ElementResult.InProgress), "nothing is left");
            }
        }

        public static void AStopOfAnotherThreadCancelsTheTaskToo() {
            using (var rack = new Rack())
            using (var begun = new ManualResetEventSlim())
            using (var requested = new ManualResetEventSlim())
            using (Session session = rack.Prepared()) {
                var receiver = new Receiver(happened => {
                    if (happened.Kind == EventKind.ElementStart) {
                        begun.Set();
                        requested.Wait();
                    }
                });
                Task<Outcome> update = session.RunAsync(receiver);
                begun.Wait();
                session.RequestStop();
                requested.Set();
                ExpectCancelled(update);
            }
        }

        public static void ATokenThatIsCancelledBeforehandLeavesTheSessionAsItWas() {
            using (var rack = new Rack())
            using (var cancellation = new CancellationTokenSource())
            using (Session session = rack.Prepared()) {
                cancellation.Cancel();
                ExpectCancelled(session.RunAsync(null, cancellation.Token));
                Expect.Equal(Stage.Prepared, session.Outcome.Stage);
                Expect.Equal(Stage.Ended, session.Run().Stage);
            }
        }

        public static void ATokenThatIsCancelledAfterwardsDoesNothing() {
            using (var rack = new Rack())
            using (var cancellation = new CancellationTokenSource()) {
                using (Session session = rack.Prepared()) {
                    session.RunAsync(null, cancellation.Token).Wait();
                }
                cancellation.Cancel();
            }
        }

        public static void AStopThatIsRequestedBeforehandEndsTheRun() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                session.RequestStop(StopRequest.GiveUp);
                Expect.Fails(Failure.Stopped, () => session.Run());
            }
        }

        public static void WhatAHandlerThrowsStopsTheUpdateAndIsThrownAgain() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                int calls = 0;
                session.EventReceived += (sender, happened) => {
                    if (happened.Kind == EventKind.ElementStart) {
                        ++calls;
                        throw new HandlerFault();
                    }
                };
                Expect.Throws<HandlerFault>(() => session.Run());
                Expect.Equal(1, calls);
                Expect.Equal(Failure.Stopped, session.Outcome.Failure);
                Expect.True(session.Outcome.Elements.Any(one => one.Result == ElementResult.NotStarted), "it stopped");
            }
        }

        public static void WhatAProgressThrowsFaultsTheTask() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                var receiver = new Receiver(happened => { throw new HandlerFault(); });
                Expect.Throws<HandlerFault>(() => session.RunAsync(receiver).GetAwaiter().GetResult());
            }
        }

        public static void WhatAHandlerThrowsInPrepareIsThrownAgain() {
            using (var rack = new Rack())
            using (Session session = rack.Session()) {
                session.EventReceived += (sender, happened) => { throw new HandlerFault(); };
                Expect.Throws<HandlerFault>(session.Prepare);
            }
        }

        public static void AHandlerMayAskTheSession() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                var stages = new HashSet<Stage>();
                int underWay = 0;
                session.EventReceived += (sender, happened) => {
                    stages.Add(session.Outcome.Stage);
                    if (happened.Kind == EventKind.ElementStart) {
                        Element element = session.Plan.Elements[(int)happened.Value];
                        Expect.True(element.IsUpdated, "it is an element of the update");
                        ++underWay;
                    }
                };
                session.Run();
                Expect.True(stages.Contains(Stage.Locked), "the target was locked");
                Expect.Equal(session.Plan.ChangeCount, underWay);
            }
        }

        public static void AHandlerThatRunsTheSessionAgainIsRefused() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                session.EventReceived += (sender, happened) => session.Run();
                Expect.Throws<InvalidOperationException>(() => session.Run());
            }
        }

        public static void AnotherThreadIsRefusedWhileAnUpdateRuns() {
            using (var rack = new Rack())
            using (var begun = new ManualResetEventSlim())
            using (var asked = new ManualResetEventSlim())
            using (Session session = rack.Prepared()) {
                var receiver = new Receiver(happened => {
                    begun.Set();
                    asked.Wait();
                });
                Task<Outcome> update = session.RunAsync(receiver);
                begun.Wait();
                try {
                    Expect.Throws<InvalidOperationException>(() => { Outcome outcome = session.Outcome; });
                    Expect.Throws<InvalidOperationException>(() => session.Run());
                } finally {
                    asked.Set();
                }
                Expect.Equal(Stage.Ended, update.Result.Stage);
            }
        }

        public static void ASessionThatIsDisposedOfWhileItRunsComesToItsEnd() {
            using (var rack = new Rack()) {
                Session session = rack.Prepared();
                var kinds = new List<EventKind>();
                session.EventReceived += (sender, happened) => {
                    session.Dispose();
                    kinds.Add(happened.Kind);
                };
                Expect.Throws<ObjectDisposedException>(() => session.Run());
                Expect.True(kinds.Contains(EventKind.Unlocked), "the target was unlocked");
            }
        }

        public static void HandlersOutliveCollections() {
            using (var rack = new Rack())
            using (Session session = rack.Prepared()) {
                int count = 0;
                session.EventReceived += (sender, happened) => {
                    GC.Collect();
                    GC.WaitForPendingFinalizers();
                    ++count;
                };
                session.Run();
                Expect.True(count > 0, "events came");
            }
        }

        private static void ExpectCancelled(Task<Outcome> update) {
            Expect.Throws<TaskCanceledException>(() => update.GetAwaiter().GetResult());
            Expect.Equal(TaskStatus.Canceled, update.Status);
        }
    }
}
