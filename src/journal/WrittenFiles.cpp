#include "WrittenFiles.h"

#include "JournalFolder.h"
#include "JournalLines.h"
#include "LockedFile.h"
#include "RecordReading.h"

using namespace KvNReflasher;
using KvNJson::json;
using KvNJson::jsonView;

namespace {

/// Follows one run. What was begun holds something else than before, and what it holds is known only if the run says
/// so.
void followWrites(const std::wstring& folder, const std::string& id, std::map<std::string, std::string>& written) {
    const std::optional<std::string> text = KvCLockedFile::contentOf(runFilePath(folder, id), largestRunFile);
    if (!text) {
        return;
    }
    const KvTJournalText journal = journalTextOf(*text);
    if (!journal.fault.empty()) {
        written.clear(); // nobody knows what it has written
        return;
    }
    for (const std::string_view line : journal.lines) {
        if (line.find(R"("targetPath":)") == std::string_view::npos) {
            continue;
        }
        const json record = json::parse(line);
        const std::string event = textOf(record.view().find("event"));
        if (event == "intent") {
            for (const std::string& path : itemsOf(record.view().find("elements"), [](jsonView element) {
                     return textOf(element.find("targetPath"));
                 })) {
                written.erase(path);
            }
        } else if (event == "elementEnd" && record.view().find("sha256").is_string()) {
            written[textOf(record.view().find("targetPath"))] = textOf(record.view().find("sha256"));
        }
    }
}

} // namespace

KvTRunTarget targetOf(const KvTRun& run) {
    return {run.targetAddress, run.nodeSerialNumbers, run.places};
}

std::map<std::string, std::string> filesWrittenTo(const std::wstring& folder, const KvTRunTarget& target) {
    std::map<std::string, std::string> written;
    for (const KvTRun& run : listRuns(folder).runs) {
        if (targetOf(run) == target) {
            followWrites(folder, run.id, written);
        }
    }
    return written;
}
