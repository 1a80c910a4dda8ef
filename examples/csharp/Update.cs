// Checks an archive, plans, updates a target with progress and verifies it.
//
// usage: Update.exe ARCHIVE HOST [EMULATED_TARGET]
//
// With a folder of an emulated target HOST is its address. Ctrl-C asks the update to end.

using System;
using System.Linq;
using System.Threading;
using System.Threading.Tasks;
using KvReflash;

internal static class Update {
    private const int UsageError = 64;
    private const int ArchiveRefused = 3;

    private static int Main(string[] arguments) {
        if (arguments.Length < 2) {
            Console.Error.WriteLine("usage: Update.exe ARCHIVE HOST [EMULATED_TARGET]");
            return UsageError;
        }
        if (arguments.Length > 2) {
            Emulation.Serve(arguments[2]);
        }
        return IsInOrder(arguments[0]) ? Perform(arguments[0], arguments[1]) : ArchiveRefused;
    }

    /// <summary>Prints everything that is wrong with an archive.</summary>
    private static bool IsInOrder(string folder) {
        using (var archive = new Archive(folder)) {
            var findings = archive.Check();
            foreach (Finding finding in findings) {
                Console.WriteLine("{0}: {1}", finding.IsError ? "error" : "warning", finding.Message);
            }
            return !findings.Any(finding => finding.IsError);
        }
    }

    /// <summary>Returns the exit code of the console tool.</summary>
    private static int Perform(string archive, string host) {
        var stop = new CancellationTokenSource();
        Console.CancelKeyPress += (sender, interrupt) => {
            interrupt.Cancel = true; // the update ends by itself
            stop.Cancel();
        };
        using (var session = new Session(new SessionOptions {Archive = archive, Target = host, WatchFiles = true})) {
            try {
                PerformAsync(session, stop.Token).GetAwaiter().GetResult();
            } catch (KvReflashException) {
                // the outcome states why
            } catch (OperationCanceledException) {
                // it was ended on request, which the outcome states, too
            }
            return Conclude(session.Outcome);
        }
    }

    /// <summary>Prints why a session has failed.</summary>
    private static int Conclude(Outcome outcome) {
        if (outcome.Failure != Failure.None) {
            Console.Error.WriteLine("{0}: {1}", outcome.Failure, outcome.Message);
        }
        return outcome.ExitCode;
    }

    private static async Task PerformAsync(Session session, CancellationToken token) {
        session.Prepare();
        PrintPlan(session.Plan);
        session.Preflight();
        await session.RunAsync(new Progress(), token);
        Console.WriteLine("Verified: {0}", session.Verify().Succeeded ? "yes" : "no");
    }

    private static void PrintPlan(Plan plan) {
        Console.WriteLine("{0} of {1} elements are updated", plan.ChangeCount, plan.Elements.Count);
        foreach (Element element in plan.Elements.Where(element => element.IsUpdated)) {
            Console.WriteLine("  {0}: {1} -> {2}", element.DisplayName, element.Version, element.AvailableVersion);
        }
    }

    /// <summary>Prints on the thread of the update, so that lines keep their order.</summary>
    private sealed class Progress : IProgress<UpdateEvent> {
        public void Report(UpdateEvent happened) {
            switch (happened.Kind) {
            case EventKind.Phase:
                if (happened.Value != null) {
                    Console.WriteLine("Phase {0}", happened.Value);
                }
                break;
            case EventKind.Progress:
                Console.WriteLine("  {0} %", happened.Value);
                break;
            default:
                break; // messages, and kinds of later versions
            }
        }
    }
}
