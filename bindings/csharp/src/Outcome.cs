using System.Collections.Generic;

namespace KvReflash {
    /// <summary>What has become of a session, as it stood when it was asked for.</summary>
    public sealed class Outcome {
        internal Outcome(kvr_outcome outcome, IReadOnlyList<DeviceError> errors, IReadOnlyList<string> faults,
                         IReadOnlyList<ElementOutcome> elements) {
            Stage = (Stage)outcome.stage;
            Failure = (Failure)outcome.failure;
            IsRetryable = outcome.retryable != 0;
            ExitCode = (int)outcome.exit_code;
            Message = Utf8.TextOrNull(outcome.message);
            RunId = Utf8.TextOrNull(outcome.run);
            Errors = errors;
            Faults = faults;
            Elements = elements;
        }

        /// <summary>How far the session came.</summary>
        public Stage Stage { get; }

        /// <summary>The class of the failure; <see cref="KvReflash.Failure.None"/> if nothing failed.</summary>
        public Failure Failure { get; }

        /// <summary>The same may succeed if it is tried again.</summary>
        public bool IsRetryable { get; }

        /// <summary>The exit code of the console tool for this failure.</summary>
        public int ExitCode { get; }

        /// <summary>Why the session failed, in one line; null if nothing failed.</summary>
        public string Message { get; }

        /// <summary>Id of the run in the journal; null if there is none.</summary>
        public string RunId { get; }

        /// <summary>Errors that belong to no element.</summary>
        public IReadOnlyList<DeviceError> Errors { get; }

        /// <summary>Sentences of the last prepare (how a saved plan differs) or preflight.</summary>
        public IReadOnlyList<string> Faults { get; }

        /// <summary>What has become of each element of the plan, in its order; empty before the target was scanned.
        /// </summary>
        public IReadOnlyList<ElementOutcome> Elements { get; }
    }

    /// <summary>What has become of an element.</summary>
    public sealed class ElementOutcome {
        internal ElementOutcome(kvr_element_result result, IReadOnlyList<DeviceError> errors) {
            Result = (ElementResult)result.result;
            FailedCall = (FailedCall)result.failed_call;
            State = ((Knows)result.known & Knows.State) != 0 ? result.state : (uint?)null;
            IsFileChanged = result.file_changed != 0;
            Reason = Utf8.TextOrNull(result.reason);
            Errors = errors;
        }

        /// <summary>Its result.</summary>
        public ElementResult Result { get; }

        /// <summary>The call that has failed; <see cref="KvReflash.FailedCall.None"/> if none has.</summary>
        public FailedCall FailedCall { get; }

        /// <summary>Last answer of the target: 1 running, 2 succeeded, anything else failed; null without an answer.
        /// </summary>
        public uint? State { get; }

        /// <summary>Its update file has changed while it was used.</summary>
        public bool IsFileChanged { get; }

        /// <summary>Why it failed or was not started; null otherwise.</summary>
        public string Reason { get; }

        /// <summary>Its errors.</summary>
        public IReadOnlyList<DeviceError> Errors { get; }
    }

    /// <summary>An error that the device access libraries have reported.</summary>
    public sealed class DeviceError {
        internal DeviceError(kvr_error error) {
            Code = error.code;
            OriginNode = error.origin_node != 0 ? error.origin_node : (uint?)null;
            Line = error.line != 0 ? error.line : (uint?)null;
            Text = Utf8.Text(error.text);
            Function = Utf8.TextOrNull(error.function);
        }

        /// <summary>Its number.</summary>
        public uint Code { get; }

        /// <summary>Serial number of the node that has reported it; null: the host.</summary>
        public uint? OriginNode { get; }

        /// <summary>Line that has reported it; null if it is not known.</summary>
        public uint? Line { get; }

        /// <summary>Its text.</summary>
        public string Text { get; }

        /// <summary>Function that has reported it; null if it is not known.</summary>
        public string Function { get; }
    }
}
