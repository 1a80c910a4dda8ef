#include "MatrixSessions.h"

#include "EmulatedTargets.h"
#include "KvCPreparation.h"
#include "KvNJson.h"
#include "MessageCapture.h"
#include "PlannedTarget.h"
#include "TargetFolder.h"
#include "TextConversion.h"
#include "ToolOutput.h"

#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

/// Empty when the target has none.
std::string firstAddressOf(const std::string& folder) {
    std::ifstream file(targetFolderPath(folder) / targetDescriptionFile, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const KvNJson::json description = KvNJson::json::parse(text);
    const KvNJson::jsonView addresses = description.view().find("addresses");
    return addresses.size() != 0 ? std::string(addresses.at(0).get_string()) : std::string();
}

/// What is up to date is disabled too, unless it is updated all the same.
KvEElementOutlook outlookOf(const KvTUpdateElement& element) {
    if (element.disabled) {
        return element.upToDate ? KvEElementOutlook::upToDate : KvEElementOutlook::disabled;
    }
    return element.hasArchiveFile() ? KvEElementOutlook::wouldUpdate : KvEElementOutlook::noEntry;
}

KvTMatrixElement recordOf(const KvTUpdateElement& element, const std::vector<KvTArchiveFile>& files) {
    return {.index = element.index,
            .displayName = element.displayName,
            .installedVersion = element.version,
            .availableVersion = element.hasArchiveFile() ? files[element.archiveFileIndex].version : KvCVersion(),
            .outlook = outlookOf(element)};
}

void takePlan(const KvCPreparation& planned, KvTMatrixTarget& target) {
    target.supported = planned.isTargetSupported();
    const std::vector<KvTArchiveFile>& files = planned.archive().files();
    for (const KvTUpdateElement& element : planned.inventory().elements()) {
        target.elements.push_back(recordOf(element, files));
    }
    for (const KvTArchiveFile& file : files) {
        target.matchCounts.push_back(file.matchCount);
    }
}

/// What a session has said beyond what every session says of the archive.
std::string ownMessages(std::string_view messages, const KvTMatrixArchive& archive) {
    messages.remove_prefix(messages.starts_with(archive.messages) ? archive.messages.size() : 0);
    return std::string(messages);
}

std::string withoutEmptyEnd(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

} // namespace

std::optional<KvTMatrixArchive> readMatrixArchive(const KvNReflasher::KvTOptions& options) {
    const MessageCapture messages;
    KvNReflasher::KvTOptions archiveOptions = options;
    archiveOptions.mode = KvNReflasher::showArchiveContent;
    KvCPreparation preparation(messages.writer(), archiveOptions);
    if (preparation.prepare() != prepareReady) {
        writeText(stderr, messages.text());
        return std::nullopt;
    }
    KvTMatrixArchive archive{.info = preparation.archive().info(), .entries = {}, .messages = messages.text()};
    for (const KvTArchiveFile& file : preparation.archive().files()) {
        archive.entries.push_back({.index = file.descriptionIndex, .name = file.name});
    }
    return archive;
}

KvTMatrixTarget planMatrixTarget(const KvNReflasher::KvTOptions& options, const KvTMatrixArchive& archive,
                                 const std::string& folder) {
    KvTMatrixTarget target;
    target.folder = folder;
    if (std::string error = serveAlone(folder); !error.empty()) {
        target.error = std::move(error);
        return target;
    }
    target.address = firstAddressOf(folder);
    if (target.address.empty()) {
        target.error = "The target has no address.";
        return target;
    }
    KvNReflasher::KvTOptions planOptions = options;
    planOptions.target = utf8ToWide(target.address.c_str());
    PlannedTarget planned(planOptions);
    const bool isPlanned = planned.prepare();
    std::string messages = ownMessages(planned.messages(), archive);
    if (!isPlanned) {
        target.error = withoutEmptyEnd(std::move(messages));
        return target;
    }
    target.messages = std::move(messages);
    takePlan(planned.preparation(), target);
    return target;
}
