#include "UpdateOptions.h"

#include "Streams.h"

using namespace KvNReflasher;

namespace {

/// Options that a saved plan has decided.
constexpr std::array decidedOptions = {"--target",  "--description",   "--board-type",    "--serial-number",
                                       "--element", "--configuration", "--skip-custom",   "--force",
                                       "--disable", "--no-downgrade",  "--unlisted-files"};

} // namespace

void ProgressOptions::addTo(CommandSyntax& syntax) {
    using enum ProgressStyle;
    syntax.addOption("--progress", "HOW",
                     "How progress is shown: auto (line on a terminal, plain elsewhere), line, plain (a line for every "
                     "tenth) or none "
                     "(default: auto)",
                     [this](const std::string& word) {
                         progress = meaningOf<ProgressStyle>(
                             "--progress", word,
                             {{"auto", automatic}, {"line", line}, {"plain", plain}, {"none", none}});
                         if (isOff && progress != none) {
                             refuse("--no-progress contradicts --progress " + word);
                         }
                     });
    syntax.addSwitch("--no-progress", isOff, "The same as --progress none");
}

void ProgressOptions::applyTo(SessionRequest& request) const {
    const ProgressStyle fitting = isTerminal(stdout) ? ProgressStyle::line : ProgressStyle::plain;
    const ProgressStyle style = isOff ? ProgressStyle::none : progress == ProgressStyle::automatic ? fitting : progress;
    request.showsPlainProgress = style == ProgressStyle::plain;
    request.options.noProgress = style != ProgressStyle::line;
}

void UpdateSteps::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("--reboot", reboots, "Reboot the target after a successful update");
    syntax.addSwitch("--preflight", hasPreflight, "Check every update file of the plan before the target is touched");
    syntax.addSwitch("--strict", isStrict, "Refuse an archive that check has errors or warnings for");
    syntax.addSwitch("--verify", verifies,
                     "Look at the target again after the update and judge by what it reports then");
    syntax.addOption("--wait", "SECONDS",
                     "With --verify and --reboot: how many seconds the target has to show the update (default: 300)",
                     [this](const std::string& text) {
                         waitSeconds = decimalNumber("--wait", text);
                         if (!verifies || !reboots) {
                             refuse("--wait needs --verify and --reboot");
                         }
                     });
    syntax.addOption("--stall-limit", "SECONDS",
                     "Give up waiting when the elements of a phase have shown nothing new for so many seconds "
                     "(default: none)",
                     [this](const std::string& text) {
                         stallLimit = decimalNumber("--stall-limit", text);
                         if (stallLimit == 0) {
                             refuse("--stall-limit: '0' must be at least 1");
                         }
                     });
}

void UpdateSteps::applyTo(SessionRequest& request) const {
    request.stallLimit = stallLimit;
}

void EventsOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("--events", "FILE",
                     "Write notifications to FILE as JSON lines; -: to standard error (default: nowhere)",
                     keptIn(file));
}

void EventsOption::applyTo(SessionRequest& request) const {
    request.eventsFile = file;
}

void PlanFileOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("--plan", "FILE",
                     "Run exactly this saved plan, or nothing, and verify afterwards; instead of the options that "
                     "decide what is updated (default: none)",
                     [this](const std::string& path) {
                         file = path;
                         steps_.verifies = true;
                     });
    syntax.addCheck([this, &syntax] {
        if (!file && !syntax.isGiven("--archive")) {
            refuse("--archive is required");
        }
        for (const char* const option : decidedOptions) {
            if (file && syntax.isGiven(option)) {
                refuse(std::string("--plan contradicts ") + option);
            }
        }
    });
}
