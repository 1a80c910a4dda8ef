#include "KvCUpdatePlanner.h"

#include "ElementIndex.h"
#include "EntryMatching.h"
#include "UpdateDecision.h"

#include <algorithm>
#include <vector>

namespace {

/// An element's plan and the sequence of its archive entry.
struct PhaseSlot {
    KvTElementPlan* plan;
    std::uint32_t sequence;
};

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
    KvCElementIndex unmatched(inventory_.elements());
    std::uint32_t fileIndex = 0;
    for (const KvTArchiveFile& file : archive_.files()) {
        for (const KvTUpdateElement* element : takeMatching(unmatched, file)) {
            inventory_.planOf(element->index).archiveFileIndex = fileIndex;
            archive_.countMatch(fileIndex);
        }
        ++fileIndex;
    }
    for (const KvTArchiveFile& ignored : archive_.ignoredFiles()) {
        for (const KvTUpdateElement* element : takeMatching(unmatched, ignored)) {
            inventory_.planOf(element->index).matchesIgnoredEntry = true;
        }
    }
}

/// Each file-system entry that no element of the target claims gets an element of its own, if the template fits.
void KvCUpdatePlanner::cloneFileSystemElements() {
    const KvTUpdateElement* fileSystemTemplate = inventory_.fileSystemTemplate();
    if (fileSystemTemplate == nullptr) {
        return;
    }
    std::uint32_t fileIndex = 0;
    for (const KvTArchiveFile& file : archive_.files()) {
        KvCString targetPath;
        if (file.hasTargetPath && file.matchCount == 0 && matchesFile(*fileSystemTemplate, file, targetPath)) {
            const KvTUpdateElement& element = inventory_.addFileElement(targetPath.view());
            inventory_.planOf(element.index).archiveFileIndex = fileIndex;
            archive_.countMatch(fileIndex);
        }
        ++fileIndex;
    }
}

void KvCUpdatePlanner::applyElementRules() {
    for (const KvTUpdateElement& element : inventory_.elements()) {
        if (lacksCarrierBoard(element)) {
            inventory_.planOf(element.index).disabled = true;
        }
    }
}

void KvCUpdatePlanner::decideUpToDate() {
    for (const KvTUpdateElement& element : inventory_.elements()) {
        if (!element.hasArchiveFile()) {
            continue;
        }
        const KvTArchiveFile& file = archive_.files()[element.archiveFileIndex];
        KvTElementPlan& plan = inventory_.planOf(element.index);
        plan.outOfDateReasons = outOfDateReasons(element, file, options_);
        if (plan.outOfDateReasons.empty()) {
            plan.upToDate = true;
            plan.disabled = plan.disabled || leavesOutUpToDate(file, options_);
        }
    }
}

/// Elements whose entries share a sequence share a phase; phases follow the sequences without gaps.
void KvCUpdatePlanner::formPhases() {
    std::vector<PhaseSlot> slots;
    for (const KvTUpdateElement& element : inventory_.elements()) {
        if (!element.disabled && element.hasArchiveFile()) {
            slots.push_back({&inventory_.planOf(element.index), archive_.files()[element.archiveFileIndex].sequence});
        }
    }
    // Stable: within a phase the elements keep the order of the list.
    std::stable_sort(slots.begin(), slots.end(),
                     [](const PhaseSlot& a, const PhaseSlot& b) { return a.sequence < b.sequence; });
    std::uint32_t phase = 0;
    std::uint32_t sequence = slots.empty() ? 0 : slots.front().sequence;
    for (const PhaseSlot& slot : slots) {
        if (slot.sequence > sequence) {
            sequence = slot.sequence;
            ++phase;
        }
        slot.plan->phase = phase;
    }
    phaseCount_ = slots.empty() ? 0 : phase + 1;
}
