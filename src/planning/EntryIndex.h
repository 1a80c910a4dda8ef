#pragma once

#include "EntryMatching.h"
#include "KvTArchiveFile.h"
#include "KvTUpdateElement.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Finds the archive entry that is meant for an element without trying every entry: entries are listed under the
/// values that an element must have. The result is that of trying the entries in the order of the description.
///
/// Every combination of the values that an entry allows becomes a key, as long as arrays do not multiply to more keys
/// than about twice the values that the description writes down. Where they do, the longest arrays stay out of the
/// keys, and the entries listed under a key are searched for the element's value. So the index is never larger than in
/// proportion to the descriptions, and a search looks at one entry, or at those that differ in such arrays alone.
class EntryIndex {
public:
    /// `files` must stay as it is while the index lives.
    explicit EntryIndex(const std::vector<KvTArchiveFile>& files);

    /// Index of the first entry that is meant for `element`, or noArchiveFile.
    [[nodiscard]] std::uint32_t find(const KvTUpdateElement& element) const;

    // What the index costs, for tests.

    /// How many times entries are listed: about four times the values of their descriptions at most.
    [[nodiscard]] std::size_t size() const;
    /// How many entries are listed under the key that has most. A search compares no more of them for each set of
    /// values that stayed out of keys.
    [[nodiscard]] std::size_t longestList() const;

private:
    class Builder;

    /// Board variant, board ID, hardware and software compatibility.
    static constexpr std::size_t valueCount = 4;
    /// A bit for each of them.
    using ValueSet = std::uint8_t;
    static constexpr ValueSet allValues = (1U << valueCount) - 1;

    /// Values as numbers: texts have the number under which they are known here. Sorted, each once.
    using Numbers = std::vector<std::uint32_t>;

    struct Key {
        std::uint32_t boardType = 0;
        /// The identifier of an element, or the target path.
        std::uint32_t address = 0;
        bool isFileSystemElement = false;
        /// The values that count; the others are 0.
        ValueSet keyed = allValues;
        std::array<std::uint32_t, valueCount> values{};
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    /// An entry under a key that leaves values out.
    struct Candidate {
        std::uint32_t file = noArchiveFile;
        /// What the values must be among; null for those of the key.
        std::array<std::shared_ptr<const Numbers>, valueCount> allowed;
    };

    [[nodiscard]] static bool isKeyed(ValueSet keyed, std::size_t value) { return (keyed >> value & 1U) != 0; }
    [[nodiscard]] static bool allows(const Candidate& candidate, const Key& key);
    [[nodiscard]] std::uint32_t numberOf(std::string_view text);
    [[nodiscard]] std::optional<std::uint32_t> knownNumberOf(std::string_view text) const;
    [[nodiscard]] std::optional<Key> keyOf(const KvTUpdateElement& element) const;
    [[nodiscard]] std::uint32_t findListed(Key key, ValueSet keyed) const;

    std::unordered_map<std::string_view, std::uint32_t> textNumbers_;
    /// The first entry of each key that leaves nothing out.
    std::unordered_map<Key, std::uint32_t, KeyHash> exact_;
    /// The entries of the other keys, in their order.
    std::unordered_map<Key, std::vector<Candidate>, KeyHash> listed_;
    /// The sets of values that keys of listed_ have.
    std::vector<ValueSet> listedSets_;
};
