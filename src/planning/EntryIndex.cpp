#include "EntryIndex.h"

#include <algorithm>
#include <limits>

namespace {

using KvNJson::jsonView;

/// Texts that are known from the start. The number 0 stands for all values that elements have by default.
constexpr std::uint32_t noText = 0;
constexpr std::uint32_t anyLocation = 1;

/// The values compared with an element's; the first one is a text.
constexpr std::array comparedValues = {&KvTEntrySelection::boardVariant, &KvTEntrySelection::boardId,
                                       &KvTEntrySelection::hwCompatibilityId, &KvTEntrySelection::swCompatibilityId};
constexpr std::size_t variantValue = 0;

/// Calls `visit` with the value itself, or with each item of an array.
template <typename Visit>
void forEachScalar(jsonView value, Visit&& visit) {
    if (!value.is_array()) {
        visit(value);
        return;
    }
    for (std::size_t index = 0; index < value.size(); ++index) {
        visit(value.at(index));
    }
}

void sortOnce(std::vector<std::uint32_t>& numbers) {
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

} // namespace

/// Lists entries in an index, one after the other. Keeps its memory from entry to entry.
class EntryIndex::Builder {
public:
    explicit Builder(EntryIndex& index) : index_(index) {}

    void addFile(const KvTArchiveFile& file, std::uint32_t fileIndex);

private:
    /// The allowed numbers of one value, and the copy that candidates keep, made when one needs it.
    struct Allowed {
        bool decoded = false;
        Numbers numbers;
        std::shared_ptr<const Numbers> kept;

        void forget() {
            decoded = false;
            kept.reset();
        }
        [[nodiscard]] const std::shared_ptr<const Numbers>& keep() {
            if (kept == nullptr) {
                kept = std::make_shared<const Numbers>(numbers);
            }
            return kept;
        }
    };

    void addSelection(const KvTEntrySelection& selection);
    void takeNewBoardTypes(jsonView boardType);
    [[nodiscard]] std::optional<std::uint32_t> addressOf(const KvTEntrySelection& selection) const;
    void decode(const KvTEntrySelection& selection);
    [[nodiscard]] std::optional<std::uint32_t> numberOf(jsonView scalar, std::size_t value) const;
    [[nodiscard]] ValueSet chooseKeyed() const;
    void place(Key key, std::size_t value);
    void placeOne(const Key& key);

    EntryIndex& index_;
    std::uint32_t file_ = noArchiveFile;
    std::size_t selectionCount_ = 0;
    /// Of each text, as a board type, the last entry that has it.
    std::vector<std::uint32_t> lastFile_;
    Numbers boardTypes_;
    std::array<Allowed, valueCount> own_;
    std::array<Allowed, valueCount> inherited_;
    /// Of the current selection: each is among own_ or inherited_.
    std::array<Allowed*, valueCount> allowed_{};
    Candidate candidate_;
};

void EntryIndex::Builder::addFile(const KvTArchiveFile& file, std::uint32_t fileIndex) {
    const std::vector<KvTEntrySelection> selections = selectionsOf(file);
    file_ = fileIndex;
    selectionCount_ = selections.size();
    for (Allowed& allowed : inherited_) {
        allowed.forget();
    }
    for (const KvTEntrySelection& selection : selections) {
        addSelection(selection);
    }
}

void EntryIndex::Builder::addSelection(const KvTEntrySelection& selection) {
    takeNewBoardTypes(selection.boardType);
    const std::optional<std::uint32_t> address = addressOf(selection);
    if (boardTypes_.empty() || !address) {
        return;
    }
    decode(selection);
    Key key{.address = *address, .isFileSystemElement = selection.hasTargetPath, .keyed = chooseKeyed()};
    candidate_.file = file_;
    for (std::size_t value = 0; value < valueCount; ++value) {
        candidate_.allowed[value] = isKeyed(key.keyed, value) ? nullptr : allowed_[value]->keep();
    }
    for (const std::uint32_t boardType : boardTypes_) {
        key.boardType = boardType;
        place(key, 0);
    }
}

/// Of each board type only the first selection of an entry counts, whatever its other values.
void EntryIndex::Builder::takeNewBoardTypes(jsonView boardType) {
    boardTypes_.clear();
    forEachScalar(boardType, [this](jsonView scalar) {
        if (!scalar.is_string()) {
            return;
        }
        const std::uint32_t number = index_.numberOf(scalar.get_string());
        if (number >= lastFile_.size()) {
            lastFile_.resize(index_.textNumbers_.size(), noArchiveFile);
        }
        if (lastFile_[number] != file_) {
            lastFile_[number] = file_;
            boardTypes_.push_back(number);
        }
    });
}

std::optional<std::uint32_t> EntryIndex::Builder::addressOf(const KvTEntrySelection& selection) const {
    if (!selection.hasTargetPath) {
        return selection.id;
    }
    return selection.targetPath ? std::optional(index_.numberOf(*selection.targetPath)) : std::nullopt;
}

void EntryIndex::Builder::decode(const KvTEntrySelection& selection) {
    for (std::size_t value = 0; value < valueCount; ++value) {
        const KvTSelectedValue& selected = selection.*comparedValues[value];
        Allowed& allowed = selected.inherited ? inherited_[value] : own_[value];
        allowed_[value] = &allowed;
        if (selected.inherited && allowed.decoded) {
            continue;
        }
        allowed.forget();
        allowed.decoded = true;
        allowed.numbers.clear();
        if (!selected.value.is_valid()) {
            allowed.numbers.push_back(0);
            continue;
        }
        forEachScalar(selected.value, [&](jsonView scalar) {
            if (const std::optional<std::uint32_t> number = numberOf(scalar, value)) {
                allowed.numbers.push_back(*number);
            }
        });
        sortOnce(allowed.numbers);
    }
}

/// Nothing for what equals no element's value: among the variants null stands for the empty one.
std::optional<std::uint32_t> EntryIndex::Builder::numberOf(jsonView scalar, std::size_t value) const {
    if (value == variantValue) {
        if (scalar.is_null()) {
            return noText;
        }
        const std::string_view text = scalar.is_string() ? scalar.get_string() : "";
        return text.empty() ? std::nullopt : std::optional(index_.numberOf(text));
    }
    if (!scalar.is_number_unsigned() || scalar.get_unsigned() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(scalar.get_unsigned());
}

/// The shortest arrays first, as long as their combinations are no more than twice the values written down; what the
/// selections of an entry share is distributed among them.
EntryIndex::ValueSet EntryIndex::Builder::chooseKeyed() const {
    std::size_t written = boardTypes_.size();
    std::array<std::size_t, valueCount> byLength{};
    for (std::size_t value = 0; value < valueCount; ++value) {
        const std::size_t count = allowed_[value]->numbers.size();
        written += allowed_[value] == &inherited_[value] ? count / selectionCount_ : count;
        byLength[value] = value;
    }
    std::sort(byLength.begin(), byLength.end(), [this](std::size_t a, std::size_t b) {
        return allowed_[a]->numbers.size() < allowed_[b]->numbers.size();
    });
    std::size_t combinations = boardTypes_.size();
    ValueSet keyed = 0;
    for (const std::size_t value : byLength) {
        combinations *= allowed_[value]->numbers.size();
        if (combinations > 2 * written) {
            break;
        }
        keyed = static_cast<ValueSet>(keyed | 1U << value);
    }
    return keyed;
}

/// Places every combination of the keyed values from `value` on.
void EntryIndex::Builder::place(Key key, std::size_t value) {
    if (value == valueCount) {
        placeOne(key);
        if (key.isFileSystemElement && key.address != anyLocation) {
            key.address = anyLocation;
            placeOne(key);
        }
    } else if (!isKeyed(key.keyed, value)) {
        place(key, value + 1);
    } else {
        for (const std::uint32_t number : allowed_[value]->numbers) {
            key.values[value] = number;
            place(key, value + 1);
        }
    }
}

void EntryIndex::Builder::placeOne(const Key& key) {
    if (key.keyed == allValues) {
        index_.exact_.try_emplace(key, file_);
        return;
    }
    std::vector<ValueSet>& sets = index_.listedSets_;
    if (std::find(sets.begin(), sets.end(), key.keyed) == sets.end()) {
        sets.push_back(key.keyed);
    }
    index_.listed_[key].push_back(candidate_);
}

std::size_t EntryIndex::KeyHash::operator()(const Key& key) const {
    constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15; // spreads the parts over the whole word
    constexpr unsigned half = 32;
    std::uint64_t hash = key.keyed * 2U + (key.isFileSystemElement ? 1U : 0U);
    const auto add = [&hash](std::uint32_t part) {
        hash = (hash ^ part) * multiplier;
        hash ^= hash >> half;
    };
    add(key.boardType);
    add(key.address);
    std::for_each(key.values.begin(), key.values.end(), add);
    return static_cast<std::size_t>(hash);
}

EntryIndex::EntryIndex(const std::vector<KvTArchiveFile>& files) : textNumbers_{{"", noText}, {"*", anyLocation}} {
    exact_.reserve(files.size());
    Builder builder(*this);
    std::uint32_t fileIndex = 0;
    for (const KvTArchiveFile& file : files) {
        builder.addFile(file, fileIndex++);
    }
}

std::uint32_t EntryIndex::numberOf(std::string_view text) {
    return textNumbers_.try_emplace(text, static_cast<std::uint32_t>(textNumbers_.size())).first->second;
}

std::optional<std::uint32_t> EntryIndex::knownNumberOf(std::string_view text) const {
    const auto found = textNumbers_.find(text);
    return found != textNumbers_.end() ? std::optional(found->second) : std::nullopt;
}

/// Nothing when the element has a text that no entry has.
std::optional<EntryIndex::Key> EntryIndex::keyOf(const KvTUpdateElement& element) const {
    const std::optional<std::uint32_t> boardType = knownNumberOf(element.boardType.view());
    const std::optional<std::uint32_t> variant = knownNumberOf(element.boardVariant.view());
    const std::optional<std::uint32_t> address =
        element.isFileSystemElement ? knownNumberOf(element.location.view()) : std::optional(element.elementId);
    if (!boardType || !variant || !address) {
        return std::nullopt;
    }
    return Key{.boardType = *boardType,
               .address = *address,
               .isFileSystemElement = element.isFileSystemElement,
               .values = {*variant, element.boardId, element.hwCompatibilityId, element.swCompatibilityId}};
}

bool EntryIndex::allows(const Candidate& candidate, const Key& key) {
    for (std::size_t value = 0; value < valueCount; ++value) {
        const Numbers* allowed = candidate.allowed[value].get();
        if (allowed != nullptr && !std::binary_search(allowed->begin(), allowed->end(), key.values[value])) {
            return false;
        }
    }
    return true;
}

/// The first entry under a key that leaves out all values but `keyed`.
std::uint32_t EntryIndex::findListed(Key key, ValueSet keyed) const {
    const Key whole = key;
    key.keyed = keyed;
    for (std::size_t value = 0; value < valueCount; ++value) {
        key.values[value] = isKeyed(keyed, value) ? key.values[value] : 0;
    }
    const auto found = listed_.find(key);
    if (found != listed_.end()) {
        for (const Candidate& candidate : found->second) {
            if (allows(candidate, whole)) {
                return candidate.file;
            }
        }
    }
    return noArchiveFile;
}

std::uint32_t EntryIndex::find(const KvTUpdateElement& element) const {
    const std::optional<Key> key = keyOf(element);
    if (!key) {
        return noArchiveFile;
    }
    const auto exact = exact_.find(*key);
    std::uint32_t file = exact != exact_.end() ? exact->second : noArchiveFile;
    for (const ValueSet keyed : listedSets_) {
        file = std::min(file, findListed(*key, keyed));
    }
    return file;
}

std::size_t EntryIndex::size() const {
    std::size_t count = exact_.size();
    for (const auto& [key, candidates] : listed_) {
        count += candidates.size();
    }
    return count;
}

std::size_t EntryIndex::longestList() const {
    std::size_t longest = exact_.empty() ? 0 : 1;
    for (const auto& [key, candidates] : listed_) {
        longest = std::max(longest, candidates.size());
    }
    return longest;
}
