using System.Collections.Generic;

namespace KvReflash {
    /// <summary>What a verification has found.</summary>
    public sealed class Verification {
        internal Verification(kvr_verification verification, IReadOnlyList<DeviceError> errors,
                              IReadOnlyList<VerifiedElement> elements) {
            Failure = (Failure)verification.failure;
            Message = Utf8.TextOrNull(verification.message);
            Errors = errors;
            Elements = elements;
        }

        /// <summary>The target reports what it should.</summary>
        public bool Succeeded => Failure == Failure.None;

        /// <summary>The class of the failure; <see cref="KvReflash.Failure.None"/> if nothing failed.</summary>
        public Failure Failure { get; }

        /// <summary>Why it failed; null otherwise.</summary>
        public string Message { get; }

        /// <summary>Errors that the look at the target has collected.</summary>
        public IReadOnlyList<DeviceError> Errors { get; }

        /// <summary>The elements that were judged.</summary>
        public IReadOnlyList<VerifiedElement> Elements { get; }
    }

    /// <summary>An element beside what the target reports of it.</summary>
    public sealed class VerifiedElement {
        internal VerifiedElement(kvr_verified_element verified) {
            var known = (Knows)verified.known;
            ElementIndex = (int)verified.element;
            Result = (VerifiedResult)verified.result;
            Version = (known & Knows.Version) != 0 ? Utf8.Text(verified.version) : null;
            Checksum = (known & Knows.Checksum) != 0 ? verified.checksum : (uint?)null;
            IsValid = (known & Knows.Valid) != 0 ? verified.valid != 0 : (bool?)null;
            IsActive = (known & Knows.Active) != 0 ? verified.active != 0 : (bool?)null;
            IsFileChanged = verified.file_changed != 0;
        }

        /// <summary>Index of the element in the plan.</summary>
        public int ElementIndex { get; }

        /// <summary>The judgement.</summary>
        public VerifiedResult Result { get; }

        /// <summary>Version that the target reports; null if it reports none.</summary>
        public string Version { get; }

        /// <summary>CRC-32 that the target reports; null if it reports none.</summary>
        public uint? Checksum { get; }

        /// <summary>What is installed is complete; null if the target does not say.</summary>
        public bool? IsValid { get; }

        /// <summary>The board runs what is installed; null if the target does not say.</summary>
        public bool? IsActive { get; }

        /// <summary>Its update file has changed: nobody knows what was installed.</summary>
        public bool IsFileChanged { get; }
    }
}
