#include "ArchiveEntries.h"
#include "ArchiveFindingSearch.h"
#include "ErrorEntries.h"
#include "ForeignPaths.h"
#include "KvCReflasher.h"
#include "NearestWord.h"
#include "Preflight.h"
#include "TargetLook.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace KvNReflasher;

namespace {

/// The elements of a plan that a test holds for.
std::vector<std::uint32_t> elementsWith(const KvTPlan& plan,
                                        const std::function<bool(const KvTPlannedElement&)>& test) {
    std::vector<std::uint32_t> indices;
    for (const KvTPlannedElement& element : plan.elements) {
        if (test(element)) {
            indices.push_back(element.index);
        }
    }
    return indices;
}

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// The elements that `text` names: by number, or else by address, target path or display name, the first of these that
/// names any.
std::vector<std::uint32_t> elementsNamed(const KvTPlan& plan, const std::string& text) {
    if (isNumber(text)) {
        std::uint32_t index = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), index);
        const bool exists = result.ec == std::errc() && index < plan.elements.size();
        return exists ? std::vector{index} : std::vector<std::uint32_t>();
    }
    auto elements =
        elementsWith(plan, [&](const auto& element) { return element.isListed() && element.address == text; });
    if (elements.empty()) {
        elements =
            elementsWith(plan, [&](const auto& element) { return !element.isListed() && element.targetPath == text; });
    }
    if (elements.empty()) {
        elements = elementsWith(plan, [&](const auto& element) { return element.displayName == text; });
    }
    return elements;
}

std::vector<KvTFinding> onlyError(const char* code, const char* message) {
    std::vector<KvTFinding> findings(1);
    findings.front().code = code;
    findings.front().message = message;
    return findings;
}

} // namespace

const KvTPlan* KvCReflasher::plan() const {
    return preparation_.plan() ? &*preparation_.plan() : nullptr;
}

std::vector<KvTArchiveEntry> KvCReflasher::archiveEntries() const {
    return withoutException(std::vector<KvTArchiveEntry>(),
                            [this] { return archiveEntriesOf(preparation_.archive().files()); });
}

KvTExplanation KvCReflasher::explain(std::uint32_t index) {
    return withoutException(KvTExplanation(), [this, index] {
        const KvCTargetInventory& inventory = preparation_.inventory();
        if (index >= inventory.elements().size()) {
            return KvTExplanation();
        }
        if (!explainer_) {
            explainer_.emplace(preparation_.archive().files());
        }
        return explainer_->explain(inventory.element(index));
    });
}

std::vector<KvTHiddenElement> KvCReflasher::hiddenElements() const {
    return withoutException(std::vector<KvTHiddenElement>(),
                            [this] { return preparation_.inventory().hiddenElements(); });
}

std::vector<KvTForeignPath> KvCReflasher::foreignPaths() const {
    return withoutException(std::vector<KvTForeignPath>(), [this] { return foreignPathsOf(preparation_.archive()); });
}

std::vector<KvTFinding> KvCReflasher::findings() {
    std::vector<KvTFinding> found;
    const bool isChecked = withoutException(false, [&] {
        const std::optional<std::string>& text = preparation_.archive().text();
        found = text ? findingsOfText(options_, text, preparation_.archive().copy())
                     : onlyError("description-unreadable", "No text of the archive description was kept.");
        return true;
    });
    if (!isChecked) {
        noteOutOfMemory();
        attempt([&] { found = onlyError("out-of-memory", "Out of memory."); });
    }
    return found;
}

void KvCReflasher::setRelease(const KvTReleaseOptions& options) {
    attempt([&] { preparation_.setRelease(options); });
}

std::optional<KvTRelease> KvCReflasher::release() const {
    return withoutException(std::optional<KvTRelease>(), [this] { return preparation_.release(); });
}

KvTDisabling KvCReflasher::disableElement(const std::string& element) {
    return withoutException(KvTDisabling(), [&] {
        KvTDisabling result;
        if (plan() != nullptr) {
            result.elements = elementsNamed(*plan(), element);
        }
        if (result.isDone()) {
            preparation_.disableElement(result.elements.front());
            disabledElements_.push_back(element);
        }
        return result;
    });
}

void KvCReflasher::watchFiles() {
    fileWatch_.forget();
    const std::optional<KvTRelease> vouched = release();
    if (plan() == nullptr || (vouched && vouched->seal != KvESeal::none)) {
        return;
    }
    const bool areNoted = withoutException(false, [this] {
        for (const KvTPlannedElement& element : plan()->elements) {
            if (element.decision.update) {
                fileWatch_.watch(element.entry->fileIndex);
            }
        }
        return true;
    });
    if (!areNoted) {
        noteOutOfMemory();
    }
}

void KvCReflasher::leaveOutDowngrades() {
    leavesOutDowngrades_ = true;
    if (plan() == nullptr) {
        return;
    }
    for (const KvTPlannedElement& element : plan()->elements) {
        if (element.isDowngrade && element.decision.update) {
            attempt([&] { preparation_.disableElement(element.index, KvEReason::downgradeLeftOut); });
        }
    }
}

std::vector<std::string> KvCReflasher::preflight() {
    std::vector<std::string> findings;
    const bool isChecked = withoutException(false, [&] {
        findings = collectedErrors();
        const std::size_t errorCount = findings.size();
        if (errorCount != 0) {
            noteFailure(KvEFailure::target, [&] { return "preflight: errors were met: " + findings.front(); });
        }
        if (plan() != nullptr) {
            for (std::string& finding : preflightFindings(preparation_.archive(), options_, *plan())) {
                findings.push_back(std::move(finding));
            }
        }
        if (findings.size() > errorCount) {
            noteFailure(KvEFailure::archive, [&] { return "preflight: " + findings[errorCount]; });
        }
        return true;
    });
    if (!isChecked) {
        noteOutOfMemory();
        attempt([&] { findings.assign(1, "out of memory"); });
    }
    return findings;
}

/// One sentence for each error that the session has collected so far.
std::vector<std::string> KvCReflasher::collectedErrors() const {
    std::vector<std::string> sentences;
    for (const KvTErrorInfo& error : errorEntriesOf(errors_)) {
        sentences.push_back("the target reported an error: " + error.text);
    }
    return sentences;
}

KvTLook KvCReflasher::look() {
    return withoutException(KvTLook(), [this] {
        if (plan() != nullptr) {
            return lookAtTarget(options_, *plan());
        }
        KvTLook look;
        look.message = "no target was found";
        return look;
    });
}

std::string KvNReflasher::nearestName(const std::string& name, const std::vector<std::string>& names) {
    const std::vector<std::string_view> words(names.begin(), names.end());
    return std::string(nearestWord(name, words));
}
