#include "ExplanationText.h"

#include "ExplanationCodes.h"
#include "KnownValues.h"
#include "TableLayout.h"

#include <string_view>

namespace {

constexpr std::size_t labelWidth = 13;

void addLine(std::string& text, std::string_view label, std::string_view content) {
    text.append("    ").append(label).append(labelWidth - label.size(), ' ').append(content).append("\n");
}

std::string numberText(std::uint64_t number) {
    return std::to_string(number);
}

std::string textOf(const KvCString& text) {
    return std::string(text.view());
}

/// A value of the description as it is written there.
std::string archiveText(const KvNJson::json& value) {
    return value.view().is_null() ? "nothing" : value.dump();
}

std::string elementText(const KvNJson::json& value) {
    return value.view().is_null() ? "none" : value.dump();
}

std::string triedText(const KvTTriedEntry& entry, const KvTArchiveFile& file) {
    const std::string name = numberText(file.descriptionIndex) + " " + textOf(file.name) + ": ";
    if (entry.failedTest == KvEMatchTest::none) {
        return name + "chosen";
    }
    return name + codeOf(entry.failedTest) + " fails: the archive says " + archiveText(entry.archiveValue) +
           ", the element has " + elementText(entry.elementValue);
}

void addTried(std::string& text, const KvTExplanation& explanation, const std::vector<KvTArchiveFile>& files,
              std::size_t limit) {
    std::size_t failed = 0;
    std::string_view label = "entries";
    for (const KvTTriedEntry& entry : explanation.tried) {
        if (entry.failedTest == KvEMatchTest::none || failed++ < limit) {
            addLine(text, label, triedText(entry, files[entry.file]));
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

std::string identity(const KvTUpdateElement& element) {
    std::string text =
        element.isFileSystemElement ? "target path " + textOf(element.location) : "ID " + numberText(element.elementId);
    if (!element.elementAddress.toString().isEmpty()) {
        text += ", name " + textOf(element.name);
    }
    return text + ", hardware compatibility " + numberText(element.hwCompatibilityId) + ", software compatibility " +
           numberText(element.swCompatibilityId) + (element.custom != 0 ? ", custom" : "");
}

std::string boardText(const KvTUpdateElement& element) {
    return textOf(element.boardType) + ", variant " +
           (element.boardVariant.isEmpty() ? "none" : textOf(element.boardVariant)) + ", ID " +
           numberText(element.boardId);
}

std::string installedText(const KvTUpdateElement& element) {
    return versionText(element.version) + ", checksum " +
           (element.hasChecksum ? numberText(element.checksumCrc32) : std::string(unknownCell)) +
           (element.valid ? "" : ", not valid") + (element.active ? "" : ", not active");
}

std::string availableText(const KvTArchiveFile& file) {
    return versionText(file.version) + ", checksum " +
           (file.checksumCrc32 == unknownValue ? std::string(unknownCell) : numberText(file.checksumCrc32)) +
           (file.mode == upgradeMode ? ", mode upgrade" : "");
}

std::string resultText(const KvTExplanation& explanation) {
    if (!explanation.decision) {
        return "no update: the archive has no entry for it";
    }
    return sentenceOf(*explanation.decision);
}

/// All that a version tells, in words.
std::string readVersionText(const KvCVersion& version) {
    std::string text =
        numberText(version.getMar()) + "." + numberText(version.getMir()) + "." + numberText(version.getMai());
    switch (version.getSpb()) {
    case 0:
        text += version.getSpn() != 0 ? " service pack " + numberText(version.getSpn()) : "";
        break;
    case 1:
        text += " alpha " + numberText(version.getSpn());
        break;
    case 2:
        text += " beta " + numberText(version.getSpn());
        break;
    default:
        text += " build " + numberText(version.getSpb()) + " " + numberText(version.getSpn());
        break;
    }
    return text + (version.getPlv() != 0 ? " patch level " + numberText(version.getPlv()) : "");
}

} // namespace

std::string versionText(const KvCVersion& version) {
    if (!isKnown(version)) {
        return unknownCell;
    }
    const std::string printed = textOf(version.getAsString());
    const std::string read = readVersionText(version);
    return printed == read ? printed : printed + " (" + read + ")";
}

std::string explanationText(const KvTExplanation& explanation, const std::vector<KvTArchiveFile>& files,
                            std::size_t entryLimit) {
    const KvTUpdateElement& element = *explanation.element;
    std::string text = numberText(element.index) + "  " + textOf(element.displayName) + "\n";
    addLine(text, "board", boardText(element));
    addLine(text, "element", identity(element));
    addLine(text, "installed", installedText(element));
    addTried(text, explanation, files, entryLimit);
    if (explanation.file != nullptr) {
        addLine(text, "available", availableText(*explanation.file));
    }
    addLine(text, "result", resultText(explanation));
    for (const KvEDisabledBy reason : explanation.disabledBy) {
        addLine(text, "", sentenceOf(reason));
    }
    if (explanation.file != nullptr && !element.disabled) {
        addLine(text, "phase", numberText(element.phase));
    }
    return text + "\n";
}

std::string hiddenElementsText(const std::vector<KvTHiddenElement>& elements) {
    std::string text = elements.empty() ? "" : "Not looked at:\n\n";
    for (const KvTHiddenElement& element : elements) {
        text += "   " + element.displayName + " (" + element.address + ")\n";
        for (const KvEHiddenBy reason : element.hiddenBy) {
            addLine(text, "", sentenceOf(reason));
        }
    }
    return text;
}
