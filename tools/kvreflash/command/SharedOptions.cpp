#include "SharedOptions.h"

#include "EmulatedTargets.h"
#include "PathTexts.h"
#include "Texts.h"
#include "UserFiles.h"

#include <cstdio>

using namespace KvNReflasher;

void ArchiveOptions::addTo(CommandSyntax& syntax) {
    syntax.addOption(
        "-a,--archive", "DIR",
        isOptional ? "Folder of the firmware archive, or its package. Required, unless a saved plan names it"
                   : "Folder of the firmware archive, or its package",
        [this](const std::string& path) {
            folder = path;
            isGiven = true;
        },
        isOptional ? Occurs::atMostOnce : Occurs::once);
    syntax.addOption("-d,--description", "FILE", "Description file inside the archive folder (default: archive.json)",
                     keptIn(description));
    trust.addTo(syntax);
}

void ArchiveOptions::applyTo(SessionRequest& request) const {
    request.options.archiveFolder = wideOf(folder);
    request.options.descriptionFileName = wideOf(description);
    trust.applyTo(request);
}

void TrustOptions::addTo(CommandSyntax& syntax) {
    syntax.addOption(
        "--trust", "DIR",
        "Accept only archives that are signed by somebody whom the file allowed_signers in this folder lists "
        "(default: that of the settings file, else the folder of the system, if there is one)",
        [this](const std::string& path) {
            if (path.empty()) {
                refuse("--trust: the folder has no name");
            }
            folder = path;
        });
    syntax.addSwitch("--unsealed", acceptsUnsealed, "Accept an archive without manifest or signature all the same");
}

void TrustOptions::takeSettings(Settings& settings) {
    if (folder) {
        settings.trust = {folder, KvESettingSource::commandLine};
    }
    folder = settings.trust.value;
}

KvTReleaseOptions TrustOptions::options() const {
    KvTReleaseOptions options;
    options.trustFolder = wideOf(folder.value_or(""));
    options.acceptUnsealed = acceptsUnsealed;
    return options;
}

void TrustOptions::applyTo(SessionRequest& request) const {
    request.release = options();
}

void HostOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("-t,--target", "HOST", "IPv4 address or host name of the target (default: none)", keptIn(host));
}

void HostOption::applyTo(SessionRequest& request) const {
    request.options.target = wideOf(host);
}

void FilterOptions::addTo(CommandSyntax& syntax) {
    syntax.addOption("-b,--board-type", "LIST",
                     "Look only at boards of these types, words separated by commas or blanks (default: all)",
                     keptIn(boardTypes));
    syntax.addOption("-s,--serial-number", "LIST",
                     "Look only at boards of these serial numbers, in decimal, sub-number included: 12345(2) is "
                     "2 * 16777216 + 12345 (default: all)",
                     keptIn(serialNumbers));
    syntax.addOption("-e,--element", "LIST",
                     "Look only at update elements with these names of the inventory, such as UserFirmware; explain "
                     "shows them (default: all)",
                     keptIn(elementNames));
    syntax.addSwitch("--configuration", looksAtConfiguration, "Look at configuration elements instead of the others");
    syntax.addSwitch("--skip-custom", skipsCustom, "Leave custom elements out of the update");
}

void FilterOptions::applyTo(SessionRequest& request) const {
    request.options.boardTypeFilter = boardTypes;
    request.options.serialNumberFilter = serialNumbers;
    request.options.elementNameFilter = elementNames;
    request.options.configurationElements = looksAtConfiguration;
    request.options.disableCustomElements = skipsCustom;
}

void DisableOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("--disable", "ELEMENT",
                     "Leave this element out of the update: its number (No. of a plan made with the same filters), "
                     "address in the inventory, target path or display name; repeatable (default: none)",
                     addedTo(elements), Occurs::anyNumber);
}

void DisableOption::applyTo(SessionRequest& request) const {
    request.disabledElements = elements;
}

void ForceOption::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("-f,--force", isForced,
                     "Update elements that are up to date, too (never those with an \"upgrade\" entry)");
    syntax.addSwitch("--no-downgrade", leavesOutDowngrades,
                     "Leave out elements for which the archive has a lower version than is installed");
}

void ForceOption::applyTo(SessionRequest& request) const {
    request.options.forceUpdate = isForced;
    request.leavesOutDowngrades = leavesOutDowngrades;
}

void UnlistedFilesOption::addTo(CommandSyntax& syntax) {
    using enum KvEUnlistedFiles;
    syntax.addOption("--unlisted-files", "WHICH",
                     "Which files that the inventory does not list are written: always (all of them), changed (those "
                     "that the journal does not have as last written) or never (default: always)",
                     [this](const std::string& word) {
                         which = meaningOf<KvEUnlistedFiles>(
                             "--unlisted-files", word, {{"always", always}, {"changed", changed}, {"never", never}});
                     });
}

void UnlistedFilesOption::applyTo(SessionRequest& request) const {
    request.unlistedFiles = which;
}

void JournalOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("--journal", "DIR",
                     "Folder in which runs are written down; none: nowhere (default: that of the settings file, else "
                     "the one of the user)",
                     [this](const std::string& path) {
                         if (path.empty()) {
                             refuse("--journal: the folder has no name");
                         }
                         isGiven_ = true;
                         folder = path == "none" ? std::nullopt : std::optional(path);
                     });
}

void JournalOption::takeSettings(Settings& settings) {
    if (isGiven_) {
        settings.journal = {folder, KvESettingSource::commandLine};
    }
    folder = settings.journal.value;
    isAskedFor = settings.journal.source != KvESettingSource::builtIn;
}

void JournalOption::applyTo(SessionRequest& request) const {
    if (!folder) {
        return;
    }
    request.journal.emplace();
    request.journal->folder = wideOf(absolutePath(*folder));
    request.journal->isRequired = isAskedFor;
}

void JsonOption::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("--json", isWanted, "Write a JSON document; messages go to standard error");
}

void JsonOption::applyTo(SessionRequest& request) const {
    request.textStream = isWanted ? stderr : stdout;
}

void ReportOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("--report", "FILE", "Write a report to FILE, .html or .json (default: none)",
                     [this](const std::string& path) {
                         if (!path.ends_with(".html") && !path.ends_with(".json")) {
                             refuse("--report: " + quotedPath(path) + " ends neither with .html nor with .json");
                         }
                         file = path;
                     });
}

void ReportOption::applyTo(SessionRequest& request) const {
    request.keepsMessages = file.has_value();
}

void CommonOptions::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("-v,--verbose", isVerbose, "Print details");
    syntax.addSwitch("-q,--quiet", isQuiet, "Print results and errors only");
    syntax.addSwitch("--no-settings", ignoresSettings, "Ignore the settings file and the default trust folder");
    syntax.addCheck([this] {
        if (isQuiet && isVerbose) {
            refuse("--quiet contradicts --verbose");
        }
    });
    if (canEmulate()) {
        syntax.addOption("--emulate", "DIR", "Serve the emulated target in this folder; repeatable (default: none)",
                         addedTo(emulatedTargets), Occurs::anyNumber);
    }
}

void CommonOptions::applyTo(SessionRequest& request) const {
    request.options.verbose = isVerbose;
    request.isQuiet = isQuiet;
    request.options.noProgress = request.options.noProgress || isQuiet;
    request.showsPlainProgress = request.showsPlainProgress && !isQuiet;
    request.emulatedTargets = emulatedTargets;
}
