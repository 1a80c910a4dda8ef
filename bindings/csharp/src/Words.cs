namespace KvReflash {
    /// <summary>The words that documents use for values, such as "archive" for <see cref="Failure.Archive"/>. A value
    /// that the library does not know has the empty word.</summary>
    public static class Words {
        /// <summary>Returns the word of a class of failures.</summary>
        public static string Word(this Failure value) => Of(Code.Failure, (uint)value);

        /// <summary>Returns the word of a stage.</summary>
        public static string Word(this Stage value) => Of(Code.Stage, (uint)value);

        /// <summary>Returns the word of a reason.</summary>
        public static string Word(this Reason value) => Of(Code.Reason, (uint)value);

        /// <summary>Returns the word of the result of an element.</summary>
        public static string Word(this ElementResult value) => Of(Code.Result, (uint)value);

        /// <summary>Returns the word of a judgement.</summary>
        public static string Word(this VerifiedResult value) => Of(Code.Verified, (uint)value);

        /// <summary>Returns the word of a call.</summary>
        public static string Word(this FailedCall value) => Of(Code.FailedCall, (uint)value);

        /// <summary>Returns the word of a seal.</summary>
        public static string Word(this Seal value) => Of(Code.Seal, (uint)value);

        /// <summary>Returns the word of a change.</summary>
        public static string Word(this ChangeKind value) => Of(Code.Change, (uint)value);

        /// <summary>Returns the word of the state of a run.</summary>
        public static string Word(this RunState value) => Of(Code.RunState, (uint)value);

        private static string Of(Code enumeration, uint value) => Utf8.Text(Native.kvr_code((uint)enumeration, value));
    }
}
