#include "KvCUpdatePlanner.h"

#include "ElementNames.h"
#include "EntryMatching.h"
#include "KvCConsoleWriter.h"
#include "UnmatchedElements.h"
#include "UpdateDecision.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

/// An element of the plan and the sequence of its archive entry.
struct KvTPhaseSlot {
    KvTUpdateElement* element;
    std::uint32_t sequence;
};

/// Makes the template's copy at `element` stand for one file of the target.
void specialise(KvTUpdateElement& element, const KvCString& targetPath) {
    element.location = targetPath;
    const std::string_view path = targetPath.view();
    if (const std::size_t separator = path.find_last_of("/\\"); separator != std::string_view::npos) {
        element.name += " (";
        element.name += path.substr(separator + 1);
        element.name += ")";
    }
    makeElementNames(element.boardName, element.boardType, element.serialNumber, element.name, element.typeName,
                     element.displayName);
    element.createErrorLists();
}

} // namespace

void KvCUpdatePlanner::plan() {
    matchElements();
    cloneFileSystemElements();
    applyElementRules();
    decideUpToDate();
    formPhases();
}

/// Each element takes the first entry that is meant for it; an entry may serve any number of elements.
void KvCUpdatePlanner::matchElements() {
    UnmatchedElements unmatched(inventory_.elements());
    std::uint32_t fileIndex = 0;
    for (KvTArchiveFile& file : archive_.files()) {
        for (KvTUpdateElement* element : unmatched.take(file)) {
            element->archiveFileIndex = fileIndex;
            ++file.matchCount;
        }
        ++fileIndex;
    }
    for (const KvTArchiveFile& ignored : archive_.ignoredFiles()) {
        for (KvTUpdateElement* element : unmatched.take(ignored)) {
            element->matchesIgnoredEntry = true;
        }
    }
}

/// Each file-system entry that no element of the target claims gets an element of its own, where the template fits.
void KvCUpdatePlanner::cloneFileSystemElements() {
    const KvTUpdateElement* fileSystemTemplate = inventory_.fileSystemTemplate();
    if (fileSystemTemplate == nullptr) {
        return;
    }
    std::list<KvTUpdateElement>& elements = inventory_.elements();
    std::uint32_t fileIndex = 0;
    for (KvTArchiveFile& file : archive_.files()) {
        KvCString targetPath;
        if (file.hasTargetPath && file.matchCount == 0 && matchesFile(*fileSystemTemplate, file, targetPath)) {
            KvTUpdateElement& element = elements.emplace_back(*fileSystemTemplate);
            element.index = static_cast<std::uint32_t>(elements.size() - 1);
            specialise(element, targetPath);
            element.archiveFileIndex = fileIndex;
            ++file.matchCount;
        }
        ++fileIndex;
    }
}

void KvCUpdatePlanner::applyElementRules() {
    for (KvTUpdateElement& element : inventory_.elements()) {
        if (!lacksCarrierBoard(element)) {
            continue;
        }
        element.disabled = true;
        if (options_.verbose) {
            writer_.print(L"Update element \"%hs\" has been disabled, because no QB5150 or QB5170 has been detected.\n",
                          element.displayName.c_str());
        }
    }
}

void KvCUpdatePlanner::decideUpToDate() {
    for (KvTUpdateElement& element : inventory_.elements()) {
        if (!element.hasArchiveFile()) {
            continue;
        }
        const KvTArchiveFile& file = archive_.files()[element.archiveFileIndex];
        element.outOfDateReasons = outOfDateReasons(element, file, options_);
        if (!element.outOfDateReasons.empty()) {
            continue;
        }
        element.upToDate = true;
        if (leavesOutUpToDate(file, options_)) {
            element.disabled = true;
        }
    }
}

/// Elements whose entries share a sequence share a phase; phases follow the sequences without gaps.
void KvCUpdatePlanner::formPhases() {
    std::vector<KvTPhaseSlot> slots;
    for (KvTUpdateElement& element : inventory_.elements()) {
        if (!element.disabled && element.hasArchiveFile()) {
            slots.push_back({&element, archive_.files()[element.archiveFileIndex].sequence});
        }
    }
    // Stable: within a phase the elements keep the order of the list.
    std::stable_sort(slots.begin(), slots.end(),
                     [](const KvTPhaseSlot& a, const KvTPhaseSlot& b) { return a.sequence < b.sequence; });
    std::uint32_t phase = 0;
    std::uint32_t sequence = slots.empty() ? 0 : slots.front().sequence;
    for (const KvTPhaseSlot& slot : slots) {
        if (slot.sequence > sequence) {
            sequence = slot.sequence;
            ++phase;
        }
        slot.element->phase = phase;
    }
    phaseCount_ = slots.empty() ? 0 : phase + 1;
    if (options_.verbose) {
        writer_.print(L"The update process takes %u phases!\n", phaseCount_);
    }
}
