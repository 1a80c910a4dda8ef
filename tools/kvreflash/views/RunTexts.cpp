#include "RunTexts.h"

#include "ReasonTexts.h"
#include "TextTable.h"
#include "Texts.h"
#include "ValueTexts.h"

#include <algorithm>
#include <cstddef>
#include <utility>

using namespace KvNReflasher;

namespace {

/// Rows of a name and a value; those without a value are left out.
class Facts {
public:
    Facts& add(const char* name, const std::string& value) {
        if (!value.empty()) {
            constexpr std::size_t nameWidth = 14;
            std::string title(name);
            title.resize(std::max(title.size(), nameWidth), ' ');
            text_.append(title).append(visibleInLine(value)).append("\n");
        }
        return *this;
    }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

/// A code in words.
std::string wordsOf(const char* code) {
    std::string words(code);
    std::replace(words.begin(), words.end(), '-', ' ');
    return words;
}

std::string targetText(const std::string& given, const std::string& address,
                       const std::vector<std::uint32_t>& serialNumbers) {
    std::string text = given == address || address.empty() ? given : given + " (" + address + ")";
    for (const std::uint32_t number : serialNumbers) {
        text.append(", S/N ").append(std::to_string(number));
    }
    return text;
}

std::string archiveText(const std::optional<KvTArchiveIdentity>& archive, const std::string& folder) {
    return archive ? archive->archiveName + " " + archive->archiveVersion + ", " + folder : folder;
}

/// The options that decide, as they are written on a command line.
std::string optionsText(const KvTDecidingOptions& options) {
    std::string text;
    const auto add = [&text](const std::string& option) { text.append(text.empty() ? "" : " ").append(option); };
    const auto addList = [&add](const char* option, const std::string& value) {
        if (!value.empty()) {
            add(std::string(option) + " " + value);
        }
    };
    addList("--board-type", options.boardTypeFilter);
    addList("--serial-number", options.serialNumberFilter);
    addList("--element", options.elementNameFilter);
    const std::pair<bool, const char*> switches[] = {{options.configurationElements, "--configuration"},
                                                     {options.disableCustomElements, "--skip-custom"},
                                                     {options.forceUpdate, "--force"},
                                                     {options.noDowngrade, "--no-downgrade"}};
    for (const auto& [isSet, name] : switches) {
        if (isSet) {
            add(name);
        }
    }
    if (options.unlistedFiles != KvEUnlistedFiles::always) {
        addList("--unlisted-files", codeOf(options.unlistedFiles));
    }
    for (const std::string& element : options.disabledElements) {
        addList("--disable", element);
    }
    return text;
}

std::string decisionText(const KvTDecision& decision) {
    return decision.reasons.empty() ? std::string() : sentenceOf(decision.reasons.front());
}

std::string phaseText(const KvTPlannedElement& element) {
    return element.phase ? std::to_string(*element.phase) : "-";
}

std::string versionAndChecksum(const std::optional<KvTVersion>& version, const std::optional<std::uint32_t>& checksum) {
    return versionCell(version) + " / " + checksumCell(checksum);
}

std::string installedText(const std::optional<KvTInstalled>& installed) {
    return installed ? versionAndChecksum(installed->version, installed->checksumCrc32) : unknownText;
}

std::string availableText(const KvTPlannedElement& element) {
    return element.entry ? versionAndChecksum(element.entry->version, element.entry->checksumCrc32) : unknownText;
}

std::string resultText(const KvTRun& run) {
    if (run.end.empty()) {
        return {};
    }
    return run.verdict.isSuccess() ? "succeeded" : run.verdict.message;
}

std::string stateText(const KvTRun& run) {
    const std::string state = wordsOf(codeOf(run.state));
    return run.resumedBy.empty() ? state : state + ", resumed";
}

} // namespace

std::string savedPlanText(const KvTSavedPlan& plan) {
    Facts facts;
    facts.add("Plan", plan.id)
        .add("Planned", plan.time + ", by version " + plan.toolVersion)
        .add("Target", targetText(plan.target, plan.plan.targetAddress, plan.plan.nodeSerialNumbers))
        .add("Archive", archiveText(plan.plan.archive, plan.archiveFolder))
        .add("Manifest", plan.plan.release ? plan.plan.release->manifestDigest : std::string())
        .add("Signer", plan.plan.release ? plan.plan.release->signer : std::string())
        .add("Options", optionsText(plan.options))
        .add("Changes", std::to_string(plan.changes()));
    KvTTextTable table = {{"No.", "Update element", "Installed", "Available", "Phase", "Decision"}};
    for (const KvTPlannedElement& element : plan.plan.elements) {
        table.push_back({std::to_string(element.index), element.displayName, installedText(element.installed),
                         availableText(element), phaseText(element), decisionText(element.decision)});
    }
    return facts.text() + "\n" + tableText(std::move(table));
}

std::string runListText(const std::vector<KvTRun>& runs) {
    KvTTextTable table = {{"Run", "Begin", "Command", "Target", "Archive", "State", "Result"}};
    for (const KvTRun& run : runs) {
        table.push_back({run.id, run.begin, run.command, targetText(run.target, run.targetAddress, {}),
                         run.archive ? run.archive->archiveName + " " + run.archive->archiveVersion : unknownText,
                         stateText(run), resultText(run)});
    }
    return tableText(std::move(table));
}

std::string runText(const KvTRunRecord& record) {
    const KvTRun& run = record.run;
    Facts facts;
    facts.add("Run", run.id)
        .add("State", stateText(run))
        .add("Result", resultText(run))
        .add("Command", run.command + ", by " + run.user + " on " + run.computer + ", version " + run.toolVersion)
        .add("Begin", run.begin)
        .add("End", run.end)
        .add("Target", targetText(run.target, run.targetAddress, run.nodeSerialNumbers))
        .add("Archive", archiveText(run.archive, run.archiveFolder))
        .add("Options", optionsText(record.plan.options))
        .add("Plan", run.planId)
        .add("Resumes", run.resumes)
        .add("Resumed by", run.resumedBy)
        .add("Fault", run.fault);
    KvTTextTable table = {{"No.", "Update element", "Before", "Planned", "After", "Progress", "Reason"}};
    for (const KvTPlannedElement& element : record.plan.plan.elements) {
        if (!element.decision.update) {
            continue;
        }
        const bool wasLooked = record.verification && element.index < record.verification->look.elements.size();
        table.push_back({std::to_string(element.index), element.displayName, installedText(element.installed),
                         availableText(element),
                         installedText(wasLooked ? record.verification->look.elements[element.index] : std::nullopt),
                         wordsOf(codeOf(record.progress.at(element.index))),
                         record.outcome.elements.at(element.index).reason});
    }
    return facts.text() + "\n" + tableText(std::move(table));
}

std::string resumptionText(const KvTRun& run, const KvTPlan& plan, const std::vector<KvTResumedElement>& elements) {
    KvTTextTable table = {{"No.", "Update element", "Journal", "Target", "Now"}};
    for (const KvTResumedElement& one : elements) {
        const KvTPlannedElement& element = plan.elements[one.index];
        const char* const target = !element.isListed() ? "not listed"
                                   : one.isReported    ? "as planned"
                                                       : "not as planned";
        table.push_back({std::to_string(one.index), element.displayName, wordsOf(codeOf(one.progress)),
                         one.isInDoubt ? "neither version nor checksum" : target, decisionText(element.decision)});
    }
    return "Going on with the run " + run.id + ":\n" + tableText(std::move(table)) + "\n";
}
