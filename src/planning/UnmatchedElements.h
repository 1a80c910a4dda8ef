#pragma once

#include "EntryMatching.h"
#include "KvTArchiveFile.h"
#include "KvTUpdateElement.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The elements that no archive entry was found for yet, listed by what entries ask for. Entries that come in the order
/// of the description take out what they are meant for; so each element gets the first entry that is meant for it, as
/// if it had tried all of them.
///
/// An entry costs no more than a look at its board types, unless the target has such an element: what it allows is then
/// held against sorted values, where each look finds an element or leaves out all values up to the next allowed ones.
class UnmatchedElements {
public:
    /// `elements` must outlive this list, and what entries are compared with must stay as it is.
    explicit UnmatchedElements(std::list<KvTUpdateElement>& elements);

    /// Takes the elements out that `file` is meant for.
    [[nodiscard]] std::vector<KvTUpdateElement*> take(const KvTArchiveFile& file);

    /// How many times elements were compared with an entry's values, for tests.
    [[nodiscard]] std::size_t comparisonCount() const { return comparisonCount_; }

private:
    /// Board variant, board ID, hardware and software compatibility. Texts have the number under which they are known
    /// here; 0 stands for the values that elements have by default.
    static constexpr std::size_t valueCount = 4;
    using Values = std::array<std::uint32_t, valueCount>;
    /// Sorted, each once.
    using Numbers = std::vector<std::uint32_t>;
    using AllowedNumbers = std::array<const Numbers*, valueCount>;

    /// What an entry names first of all.
    struct Place {
        std::uint32_t boardType = 0;
        /// The identifier of an element, or the target path.
        std::uint32_t address = 0;
        bool isFileSystemElement = false;
        friend bool operator==(const Place&, const Place&) = default;
    };
    struct PlaceHash {
        std::size_t operator()(const Place& place) const;
    };

    std::uint32_t numberOf(std::string_view text);
    [[nodiscard]] std::optional<std::uint32_t> knownNumberOf(std::string_view text) const;
    void takeSelection(const KvTEntrySelection& selection, std::vector<KvTUpdateElement*>& taken);
    void takeBoardType(std::uint32_t boardType, const KvTEntrySelection& selection,
                       std::vector<KvTUpdateElement*>& taken);
    void takeFrom(const Place& place, const KvTEntrySelection& selection, std::vector<KvTUpdateElement*>& taken);
    [[nodiscard]] AllowedNumbers allowedBy(const KvTEntrySelection& selection);
    [[nodiscard]] Numbers numbersOf(KvNJson::jsonView value, std::size_t valueIndex) const;
    [[nodiscard]] std::optional<std::uint32_t> numberOf(KvNJson::jsonView scalar, std::size_t valueIndex) const;
    [[nodiscard]] static std::optional<Values> firstAllowedFrom(Values values, const AllowedNumbers& allowed);

    std::unordered_map<std::string_view, std::uint32_t> textNumbers_;
    std::unordered_map<Place, std::multimap<Values, KvTUpdateElement*>, PlaceHash> places_;
    std::size_t comparisonCount_ = 0;

    // Of the entry whose turn it is.
    std::uint32_t entryNumber_ = 0;
    /// Of each text, as a board type, the last entry that has it.
    std::vector<std::uint32_t> lastEntry_;
    /// Decoded when first needed: what selections share, and what the current one has of its own.
    std::array<std::optional<Numbers>, valueCount> inherited_;
    std::array<std::optional<Numbers>, valueCount> own_;
};
