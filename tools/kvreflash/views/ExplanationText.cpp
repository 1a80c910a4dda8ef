#include "ExplanationText.h"

#include "KvDocuments.h"
#include "ReasonTexts.h"
#include "Texts.h"
#include "ValueTexts.h"

#include <array>
#include <string_view>

using namespace KvNReflasher;

namespace {

constexpr std::size_t labelWidth = 13;

void addLine(std::string& text, std::string_view label, const std::string& content) {
    text.append("    ")
        .append(label)
        .append(labelWidth - label.size(), ' ')
        .append(visibleInLine(content))
        .append("\n");
}

std::string numberText(std::uint64_t number) {
    return std::to_string(number);
}

/// A value of the description as it is written there.
std::string archiveText(const std::string& value) {
    return value == "null" ? "nothing" : value;
}

std::string elementText(const std::string& value) {
    return value == "null" ? "none" : value;
}

std::string triedText(const KvTTriedEntry& entry) {
    const std::string name = numberText(entry.descriptionIndex) + " " + entry.fileName + ": ";
    if (entry.failedTest == KvEMatchTest::none) {
        return name + "chosen";
    }
    return name + codeOf(entry.failedTest) + " fails: the archive says " + archiveText(entry.archiveValue) +
           ", the element has " + elementText(entry.elementValue);
}

void addTried(std::string& text, const KvTExplanation& explanation, std::size_t limit) {
    std::size_t failed = 0;
    std::string_view label = "entries";
    for (const KvTTriedEntry& entry : explanation.tried) {
        if (entry.failedTest == KvEMatchTest::none || failed++ < limit) {
            addLine(text, label, triedText(entry));
            label = "";
        }
    }
    if (failed > limit) {
        addLine(text, label, "... and " + numberText(failed - limit) + " more that fail");
        label = "";
    }
    if (explanation.otherBoardCount != 0 || explanation.tried.empty()) {
        addLine(text, label, numberText(explanation.otherBoardCount) + " for other board types");
    }
}

std::string identity(const KvTPlannedElement& element) {
    std::string text =
        element.isFileSystemElement ? "target path " + element.targetPath : "ID " + numberText(element.elementId);
    if (element.isListed()) {
        text += ", name " + element.name;
    }
    return text + ", hardware compatibility " + numberText(element.hwCompatibilityId) + ", software compatibility " +
           numberText(element.swCompatibilityId) + (element.custom ? ", custom" : "");
}

std::string boardText(const KvTPlannedElement& element) {
    return element.boardType + ", variant " + (element.boardVariant.empty() ? "none" : element.boardVariant) + ", ID " +
           numberText(element.boardId);
}

std::string installedText(const KvTInstalled& installed) {
    return versionText(installed.version) + ", checksum " + checksumCell(installed.checksumCrc32) +
           (installed.valid.value_or(false) ? "" : ", not valid") +
           (installed.active.value_or(false) ? "" : ", not active");
}

std::string availableText(const KvTArchiveEntry& entry) {
    return versionText(entry.version) + ", checksum " + checksumCell(entry.checksumCrc32) +
           (entry.mode == KvEEntryMode::upgrade ? ", mode upgrade" : "");
}

/// All components of a version, in words.
std::string componentsText(std::uint64_t number) {
    const auto part = [number](unsigned shift, unsigned bits) {
        return number >> shift & ((std::uint64_t{1} << bits) - 1);
    };
    std::string text = numberText(part(56, 8)) + "." + numberText(part(48, 8)) + "." + numberText(part(40, 8));
    const std::uint64_t build = part(32, 8);
    const std::uint64_t servicePack = part(16, 16);
    const std::uint64_t patchLevel = part(0, 16);
    constexpr std::array kinds = {" service pack ", " alpha ", " beta "};
    if (build >= kinds.size()) {
        text += " build " + numberText(build) + " " + numberText(servicePack);
    } else if (build != 0 || servicePack != 0) {
        text += kinds.at(build) + numberText(servicePack);
    }
    return text + (patchLevel != 0 ? " patch level " + numberText(patchLevel) : "");
}

} // namespace

std::string versionText(const std::optional<KvTVersion>& version) {
    if (!version) {
        return unknownText;
    }
    const std::string components = componentsText(version->number);
    return version->text == components ? components : version->text + " (" + components + ")";
}

std::string explanationText(const KvTPlannedElement& element, const KvTExplanation& explanation,
                            std::size_t entryLimit) {
    std::string text = numberText(element.index) + "  " + visibleInLine(element.displayName) + "\n";
    addLine(text, "board", boardText(element));
    addLine(text, "element", identity(element));
    addLine(text, "installed", installedText(element.installed));
    addTried(text, explanation, entryLimit);
    if (element.entry) {
        addLine(text, "available",
                availableText(*element.entry) + (element.isDowngrade ? ", lower than installed" : ""));
    }
    std::string_view label = "result";
    for (const KvEReason reason : element.decision.reasons) {
        addLine(text, label, sentenceOf(reason));
        label = "";
    }
    if (element.phase) {
        addLine(text, "phase", numberText(*element.phase));
    }
    return text + "\n";
}

std::string hiddenElementsText(const std::vector<KvTHiddenElement>& elements) {
    std::string text = elements.empty() ? "" : "Not looked at:\n\n";
    for (const KvTHiddenElement& element : elements) {
        text += "   " + visibleInLine(element.displayName + " (" + element.address + ")") + "\n";
        for (const KvEHiddenBy reason : element.hiddenBy) {
            addLine(text, "", sentenceOf(reason));
        }
    }
    return text;
}
