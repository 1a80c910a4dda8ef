// The file of a run: any lines that are chained as a journal chains them, and files that were cut.

#include "FuzzFolder.h"
#include "JournalFolder.h"
#include "JournalLines.h"
#include "KvRuns.h"
#include "Property.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace KvNReflasher;

namespace {

constexpr const char* runId = "20261122T101500123Z-0a1b2c3d";

/// The lines of the input as records of a run. What is not an object cannot become one.
std::string chained(std::string_view input) {
    KvCLineChain chain;
    std::string text;
    while (!input.empty()) {
        const std::string_view line = input.substr(0, input.find('\n'));
        input.remove_prefix(std::min(input.size(), line.size() + 1));
        if (line.starts_with('{')) {
            chain.addTo(text, std::string(line) + "\n");
        }
    }
    return text;
}

void checkRun(const KvTRunRecord& run) {
    const std::size_t count = run.plan.plan.elements.size();
    require(run.progress.size() == count && run.outcome.elements.size() == count,
            "Each element of the plan has its progress and its outcome.");
    for (std::size_t index = 0; index < count; ++index) {
        require(run.plan.plan.elements[index].index == index, "The index of an element is its position.");
        const bool isPlanned = run.plan.plan.elements[index].decision.update;
        require(isPlanned || run.progress[index] != KvEElementProgress::untouched,
                "What was not planned is not left to do.");
    }
    if (run.verification) {
        require(run.verification->look.elements.size() == count, "A look is at the elements of the plan.");
        for (const KvTVerifiedElement& element : run.verification->elements) {
            require(element.index < count, "What was verified is an element of the plan.");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    for (const std::string& text : {std::string(input), chained(input)}) {
        const KvTJournalText journal = journalTextOf(text);
        require(journal.lines.empty() || !journal.lines.front().empty(), "A line of a journal is not empty.");
        folder.write(std::string(runId) + ".jsonl", text);
        std::string reason;
        const std::optional<KvTRunRecord> run = readRun(folder.wideText(), runId, reason);
        require(run.has_value() == (listRuns(folder.wideText()).runs.size() == 1),
                "A run is listed if it can be read.");
        require(run.has_value() || !reason.empty(), "There is a reason if a run cannot be read.");
        if (run) {
            checkRun(*run);
        }
    }
    return 0;
}
