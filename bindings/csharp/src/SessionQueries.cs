using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace KvReflash {
    /// <summary>Reads what a session knows. Texts are copied at once: the library may change them at the next call.
    /// </summary>
    internal sealed class SessionQueries {
        private readonly SessionHandle handle;

        internal SessionQueries(SessionHandle handle) {
            this.handle = handle;
        }

        internal Plan Plan() {
            kvr_plan plan = PlanRecord();
            return new Plan(plan, Immutable.List(plan.elements, Element), Immutable.List(plan.entries, Entry),
                            Immutable.List(plan.nodes, Node));
        }

        internal IReadOnlyList<Element> Elements() => Immutable.List(PlanRecord().elements, Element);

        internal Outcome Outcome() {
            var outcome = new kvr_outcome {size = SizeOf(typeof(kvr_outcome))};
            CallResult.Judged(Native.kvr_session_get_outcome(handle, ref outcome));
            return new Outcome(outcome, Immutable.List(outcome.errors, Error), Immutable.List(outcome.faults, Fault),
                               Immutable.List(ElementCount(), ElementOutcome));
        }

        internal Verification Verification() {
            var verification = new kvr_verification {size = SizeOf(typeof(kvr_verification))};
            CallResult.Judged(Native.kvr_session_get_verification(handle, ref verification));
            return new Verification(verification, Immutable.List(verification.errors, LookError),
                                    Immutable.List(verification.elements, Verified));
        }

        internal string Document(DocumentKind kind) {
            IntPtr text;
            int result = CallResult.Judged(Native.kvr_session_get_document(handle, (uint)kind, out text));
            if (result == CallResult.Success) {
                return Utf8.Text(text);
            }
            string reason = CallResult.LastError;
            if (PlanRecord().entries == 0) { // no file of an archive can be what is wrong
                throw new InvalidOperationException(reason);
            }
            throw new KvReflashException(Failure.Archive, reason);
        }

        /// <summary>Each record says how much of it the caller knows.</summary>
        private static uint SizeOf(Type record) => (uint)Marshal.SizeOf(record);

        private kvr_plan PlanRecord() {
            var plan = new kvr_plan {size = SizeOf(typeof(kvr_plan))};
            CallResult.Judged(Native.kvr_session_get_plan(handle, ref plan));
            return plan;
        }

        /// <summary>None if the target was not scanned.</summary>
        private uint ElementCount() {
            var plan = new kvr_plan {size = SizeOf(typeof(kvr_plan))};
            return Native.kvr_session_get_plan(handle, ref plan) == CallResult.Success ? plan.elements : 0;
        }

        private Element Element(uint index) {
            var element = new kvr_element {size = SizeOf(typeof(kvr_element))};
            CallResult.Judged(Native.kvr_session_get_element(handle, index, ref element));
            return new Element(element, Immutable.List(element.reasons, reason => Reason(index, reason)));
        }

        private Reason Reason(uint element, uint index) {
            uint reason;
            CallResult.Judged(Native.kvr_session_get_reason(handle, element, index, out reason));
            return (Reason)reason;
        }

        private ArchiveEntry Entry(uint index) {
            var entry = new kvr_entry {size = SizeOf(typeof(kvr_entry))};
            CallResult.Judged(Native.kvr_session_get_entry(handle, index, ref entry));
            return new ArchiveEntry(entry);
        }

        private uint Node(uint index) {
            uint serialNumber;
            CallResult.Judged(Native.kvr_session_get_node(handle, index, out serialNumber));
            return serialNumber;
        }

        private DeviceError Error(uint index) {
            var error = new kvr_error {size = SizeOf(typeof(kvr_error))};
            CallResult.Judged(Native.kvr_session_get_error(handle, index, ref error));
            return new DeviceError(error);
        }

        private string Fault(uint index) {
            IntPtr text;
            CallResult.Judged(Native.kvr_session_get_fault(handle, index, out text));
            return Utf8.Text(text);
        }

        private ElementOutcome ElementOutcome(uint element) {
            var result = new kvr_element_result {size = SizeOf(typeof(kvr_element_result))};
            CallResult.Judged(Native.kvr_session_get_result(handle, element, ref result));
            return new ElementOutcome(result, Immutable.List(result.errors, error => ElementError(element, error)));
        }

        private DeviceError ElementError(uint element, uint index) {
            var error = new kvr_error {size = SizeOf(typeof(kvr_error))};
            CallResult.Judged(Native.kvr_session_get_element_error(handle, element, index, ref error));
            return new DeviceError(error);
        }

        private DeviceError LookError(uint index) {
            var error = new kvr_error {size = SizeOf(typeof(kvr_error))};
            CallResult.Judged(Native.kvr_session_get_look_error(handle, index, ref error));
            return new DeviceError(error);
        }

        private VerifiedElement Verified(uint index) {
            var verified = new kvr_verified_element {size = SizeOf(typeof(kvr_verified_element))};
            CallResult.Judged(Native.kvr_session_get_verified(handle, index, ref verified));
            return new VerifiedElement(verified);
        }
    }
}
