#pragma once

#include "EntryMatching.h"
#include "KvCPreparation.h"
#include "KvTArchiveFile.h"
#include "KvTUpdateElement.h"
#include "UpdateDecision.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

/// An entry that the planner tried for an element.
struct KvTTriedEntry {
    /// Index of the entry among the archive's accepted ones.
    std::uint32_t file = noArchiveFile;
    /// The first test that it failed, or none.
    KvEMatchTest failedTest = KvEMatchTest::none;
    /// What that test compared; null where the description says nothing.
    KvNJson::json archiveValue;
    KvNJson::json elementValue;
};

/// Why an element takes no part in the update.
enum class KvEDisabledBy : std::uint8_t {
    /// It is up to date, and the update is not forced or the entry's mode is "upgrade".
    upToDate,
    /// It is a custom element, and these are skipped.
    customElement,
    /// It is an FPGA element whose carrier board the target does not have.
    carrierBoardMissing
};

/// Why an element is or is not updated. Refers to the plan.
struct KvTExplanation {
    const KvTUpdateElement* element = nullptr;
    /// The entry chosen; null: none.
    const KvTArchiveFile* file = nullptr;
    /// The entries for the element's board type, up to the chosen one.
    std::vector<KvTTriedEntry> tried;
    /// How many other entries stand before the chosen one or, without one, in the archive.
    std::size_t otherBoardCount = 0;
    /// Nothing without a chosen entry.
    std::optional<KvEDecision> decision;
    std::vector<KvEDisabledBy> disabledBy;
};

/// Explains elements by asking the planner's own decisions.
class Explainer {
public:
    /// The preparation has planned, and must outlive the explainer and what it explains.
    Explainer(KvCPreparation& preparation, const KvNReflasher::KvTOptions& options);

    [[nodiscard]] KvTExplanation explain(const KvTUpdateElement& element) const;

private:
    void listEntry(const KvTArchiveFile& entry, std::uint32_t file);
    [[nodiscard]] KvTTriedEntry tryEntry(const KvTUpdateElement& element, std::uint32_t file) const;
    [[nodiscard]] std::vector<KvEDisabledBy> disabledBy(const KvTUpdateElement& element) const;

    KvCPreparation& preparation_;
    const KvNReflasher::KvTOptions& options_;
    /// Of each board type, the entries that are for it, in their order.
    std::unordered_map<std::string_view, std::vector<std::uint32_t>> entriesOfBoardType_;
};
