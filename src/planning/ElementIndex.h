#pragma once

#include "EntryMatching.h"
#include "KvTUpdateElement.h"

#include <array>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// The elements that no entry has taken yet, listed by the values that entries are compared with. It narrows down the
/// elements that a selection has to be held against; it leaves out none for which the selection may be meant, and
/// decides nothing.
class KvCElementIndex {
public:
    using Test = std::function<bool(const KvTUpdateElement& element)>;

    /// `elements` must outlive the index, and what entries are compared with must stay as it is.
    explicit KvCElementIndex(const std::list<KvTUpdateElement>& elements);

    /// Takes the elements out that `selection` may be meant for and that pass `test`.
    [[nodiscard]] std::vector<const KvTUpdateElement*> take(const KvTEntrySelection& selection, const Test& test);

private:
    /// An element's values of comparedProperties.
    using Values = std::array<KvTComparedValue, comparedProperties.size()>;
    /// Elements at one place.
    using Elements = std::multimap<Values, const KvTUpdateElement*>;
    using Taken = std::vector<const KvTUpdateElement*>;

    /// The board type and the identifier or target path.
    struct Place {
        std::string_view boardType;
        KvTComparedValue address;
        friend bool operator==(const Place&, const Place&) = default;
    };
    struct PlaceHash {
        std::size_t operator()(const Place& place) const;
    };

    void takeFrom(const Place& place, const KvTEntrySelection& selection, const Test& test, Taken& taken);

    /// The board types of the target. An entry for another type, as most entries of a large archive are, needs no look
    /// into `places_`.
    std::unordered_set<std::string_view> boardTypes_;
    std::unordered_map<Place, Elements, PlaceHash> places_;
};

/// Takes the elements out that `file` is meant for.
[[nodiscard]] std::vector<const KvTUpdateElement*> takeMatching(KvCElementIndex& index, const KvTArchiveFile& file);
