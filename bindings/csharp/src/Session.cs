using System;
using System.Collections.Generic;
using System.Runtime.ExceptionServices;
using System.Threading;
using System.Threading.Tasks;

namespace KvReflash {
    /// <summary>A session with one target: it prepares, runs and verifies an update, or looks at the target.
    /// <para>One thread at a time uses a session; a call while another thread is in one throws
    /// InvalidOperationException. Only <see cref="RequestStop"/> and <see cref="Dispose"/> may be called at any time by
    /// any thread. A call in the wrong order throws InvalidOperationException, too.</para>
    /// <para>Results are values of the moment at which they were asked for.</para></summary>
    public sealed class Session : IDisposable {
        private readonly ExclusiveUse use = new ExclusiveUse();
        private readonly SessionHandle handle;
        private readonly IntPtr number;
        private readonly SessionQueries queries;
        private IProgress<UpdateEvent> progress;
        private ExceptionDispatchInfo thrownByHandler;

        /// <summary>Makes a session. Nothing is read yet. Throws ArgumentException if an option is wrong, or if the
        /// saved plan or the run cannot be read.</summary>
        public Session(SessionOptions options) {
            if (options == null) {
                throw new ArgumentNullException("options");
            }
            Library.Require();
            using (var texts = new GivenTexts()) {
                kvr_session_options record = options.Record(texts);
                CallResult.Judged(Native.kvr_session_create(ref record, out handle));
            }
            number = handle.DangerousGetHandle();
            queries = new SessionQueries(handle);
            handle.Function = OnEvent;
            CallResult.Judged(Native.kvr_session_set_event_function(handle, handle.Function, IntPtr.Zero));
        }

        /// <summary>Sends what happens during <see cref="Prepare"/> and the following operations, on their thread.
        /// Handlers may ask the session for its plan and outcome, and request to stop. What a handler throws asks the
        /// session to stop; it is thrown again when the operation ends, and no handler is called until then.</summary>
        public event EventHandler<UpdateEvent> EventReceived;

        /// <summary>Reads the archive, finds and scans the target, and plans, as the mode asks. Once for each session.
        /// Throws KvReflashException if that fails, the archive does not support the target, or the filters let no
        /// element through. For a saved plan or a run that does not hold any more, its faults are all differences.
        /// </summary>
        public void Prepare() => Do(() => Native.kvr_prepare(handle));

        /// <summary>Leaves an element out of the update, between <see cref="Prepare"/> and <see cref="Run"/>.
        /// `element` is its index in digits, its inventory address, its target path or its displayed name. Throws
        /// KvReflashException, and changes nothing, unless exactly one element is named so.</summary>
        public void Disable(string element) {
            byte[] name = Utf8.Bytes(element);
            uint found = 0;
            int result = use.During(() => Call(() => Native.kvr_disable(handle, name, out found)));
            if (result != CallResult.Success) {
                throw new KvReflashException(Failure.Selection, found + " elements are named '" + element + "'");
            }
        }

        /// <summary>Looks for all that would keep the update from running. Between <see cref="Prepare"/> and
        /// <see cref="Run"/>. Throws KvReflashException with all faults if there are any; the session does not run
        /// then.</summary>
        public void Preflight() => Do(() => Native.kvr_preflight(handle));

        /// <summary>Updates the target in the mode <see cref="SessionMode.Update"/>, otherwise sends what it has found
        /// as messages. Once, after <see cref="Prepare"/>. Throws KvReflashException if the update failed or was ended
        /// on request, or errors were reported; <see cref="Outcome"/> has the result of each element then, too.
        /// </summary>
        public Outcome Run() => use.During(() => RunWith(null));

        /// <summary>Does as <see cref="Run"/>, on a thread of its own. `progress` may be null and receives the events
        /// of the run. Cancellation asks the update to end and lets it finish what has begun; the task ends when the
        /// update has ended. It is cancelled if the update was ended on request, by whomever, or if `token` was
        /// cancelled before it began.</summary>
        public Task<Outcome> RunAsync(IProgress<UpdateEvent> progress = null,
                                      CancellationToken token = default(CancellationToken)) {
            var completion = new TaskCompletionSource<Outcome>();
            if (token.IsCancellationRequested) {
                completion.SetCanceled();
            } else {
                Task.Factory.StartNew(() => RunInto(completion, progress, token), CancellationToken.None,
                                      TaskCreationOptions.LongRunning, TaskScheduler.Default);
            }
            return completion.Task;
        }

        /// <summary>Asks the update to end. Never taken back. Any thread, at any time.</summary>
        public void RequestStop(StopRequest how = StopRequest.Finish) {
            if (handle.IsClosed) {
                throw new ObjectDisposedException("Session");
            }
            CallResult.Judged(Native.kvr_request_stop(number, (uint)how));
        }

        /// <summary>Looks at what the target reports now and holds it against the plan and what was updated.
        /// `wasRebooted`: the target was rebooted since; a target that comes up needs some time: verify again until it
        /// answers. After <see cref="Prepare"/> and, in the mode <see cref="SessionMode.Update"/>, after
        /// <see cref="Run"/>. A target that does not report what it should, or cannot be looked at, is not an exception
        /// but a result.</summary>
        public Verification Verify(bool wasRebooted = false) => use.During(() => {
            Call(() => Native.kvr_verify(handle, wasRebooted ? 1U : 0U));
            return queries.Verification();
        });

        /// <summary>Resets the target. After a <see cref="Prepare"/> that has scanned it. Throws KvReflashException if
        /// it was not reset.</summary>
        public void Reboot() => Do(() => Native.kvr_reboot(handle));

        /// <summary>The plan. Throws InvalidOperationException if the target was not scanned.</summary>
        public Plan Plan => use.During(queries.Plan);

        /// <summary>The elements of the target. Throws InvalidOperationException if it was not scanned.</summary>
        public IReadOnlyList<Element> Elements => use.During(queries.Elements);

        /// <summary>What has become of the session so far.</summary>
        public Outcome Outcome => use.During(queries.Outcome);

        /// <summary>The last verification. Throws InvalidOperationException before <see cref="Verify"/>.</summary>
        public Verification Verification => use.During(queries.Verification);

        /// <summary>Returns a document of the session as it stands, in JSON as the console tool writes it. For a plan
        /// to be saved it throws KvReflashException if a file of it cannot be read, and InvalidOperationException if
        /// there is none, because the session looks at the target only.</summary>
        public string GetDocument(DocumentKind kind) => use.During(() => queries.Document(kind));

        /// <summary>Ends the session and releases all that it holds of the target. An operation that is under way comes
        /// to its end before, and then throws ObjectDisposedException: what became of it is not known any more.
        /// </summary>
        public void Dispose() => handle.Dispose();

        private void Do(Func<int> operation) => use.During(() => {
            if (Call(operation) != CallResult.Success) {
                throw new KvReflashException(queries.Outcome());
            }
            return true;
        });

        private Outcome RunWith(IProgress<UpdateEvent> receiver) {
            progress = receiver;
            try {
                int result = Call(() => Native.kvr_run(handle));
                Outcome outcome = queries.Outcome();
                return result == CallResult.Success ? outcome : throw new KvReflashException(outcome);
            } finally {
                progress = null;
            }
        }

        private void RunInto(TaskCompletionSource<Outcome> completion, IProgress<UpdateEvent> receiver,
                             CancellationToken token) {
            Outcome outcome;
            try {
                using (token.Register(Stop)) {
                    outcome = use.After(() => RunWith(receiver)); // a query of the caller may be under way
                }
            } catch (KvReflashException fault) when (fault.Failure == Failure.Stopped) {
                completion.SetCanceled();
                return;
            } catch (Exception fault) {
                completion.SetException(fault);
                return;
            }
            completion.SetResult(outcome);
        }

        /// <summary>Stops, if there is still something to stop.</summary>
        private void Stop() => Native.kvr_request_stop(number, (uint)StopRequest.Finish);

        /// <summary>Calls the library, and throws what a handler has thrown meanwhile.</summary>
        private int Call(Func<int> operation) {
            int result = operation();
            ExceptionDispatchInfo thrown = thrownByHandler;
            thrownByHandler = null;
            thrown?.Throw();
            return CallResult.Judged(result);
        }

        /// <summary>No exception must get from here into the library.</summary>
        private void OnEvent(IntPtr record, IntPtr context) {
            if (thrownByHandler != null) {
                return;
            }
            try {
                var happened = new UpdateEvent(record);
                EventReceived?.Invoke(this, happened);
                progress?.Report(happened);
            } catch (Exception fault) {
                thrownByHandler = ExceptionDispatchInfo.Capture(fault);
                Stop();
            }
        }
    }
}
