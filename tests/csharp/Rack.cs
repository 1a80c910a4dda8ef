using System;
using System.IO;

namespace KvReflash.Tests {
    /// <summary>What the program was given.</summary>
    internal static class Given {
        internal static string Facts;
        internal static string Archive;
        internal static string Rack;
    }

    /// <summary>A folder for scratch files, removed at the end.</summary>
    internal class Scratch : IDisposable {
        internal readonly string Folder =
            System.IO.Path.Combine(System.IO.Path.GetTempPath(), "kvreflash-" + Guid.NewGuid());

        internal Scratch() {
            Directory.CreateDirectory(Folder);
        }

        internal string Path(string name) => System.IO.Path.Combine(Folder, name);

        /// <summary>Returns a copy of a folder.</summary>
        internal string Copy(string folder, string name) {
            string copy = Path(name);
            Directory.CreateDirectory(copy);
            foreach (string file in Directory.GetFiles(folder)) {
                File.Copy(file, System.IO.Path.Combine(copy, System.IO.Path.GetFileName(file)));
            }
            return copy;
        }

        public virtual void Dispose() {
            Directory.Delete(Folder, true);
        }
    }

    /// <summary>A served copy of the example rack, and sessions with it.</summary>
    internal sealed class Rack : Scratch {
        internal const string Address = "127.0.0.1";

        /// <summary>`faults`: the faults of target.json, in JSON.</summary>
        internal Rack(string faults = "") {
            string target = System.IO.Path.Combine(Copy(Given.Rack, "rack"), "target.json");
            string text = File.ReadAllText(target);
            File.WriteAllText(target, text.Replace("\"faults\": []", "\"faults\": [" + faults + "]"));
            Expect.Equal(Address, Emulation.Serve(Path("rack")));
        }

        internal SessionOptions Options(SessionMode mode = SessionMode.Update) =>
            new SessionOptions {Mode = mode, Target = Address, Archive = Given.Archive};

        internal Session Session(SessionMode mode = SessionMode.Update) => new Session(Options(mode));

        /// <summary>Returns a session that is ready to run.</summary>
        internal Session Prepared(SessionMode mode = SessionMode.Update) => Prepared(Options(mode));

        internal Session Prepared(SessionOptions options) {
            var session = new Session(options);
            session.Prepare();
            return session;
        }

        public override void Dispose() {
            Emulation.Reset();
            base.Dispose();
        }
    }
}
