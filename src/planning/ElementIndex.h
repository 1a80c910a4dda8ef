#pragma once

#include "EntryMatching.h"
#include "KvTUpdateElement.h"

#include <array>
#include <functional>
#include <list>
#include <map>
#include <string_view>
#include <unordered_map>
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
    /// Elements of one board type, by their identifier or target path.
    using Places = std::unordered_map<KvTComparedValue, Elements>;
    using Taken = std::vector<const KvTUpdateElement*>;

    static void takeFrom(Places& places, const KvTComparedValue& address, const KvTEntrySelection& selection,
                         const Test& test, Taken& taken);

    /// By board type first: entries for one board type stand together, and look into few places of memory then.
    std::unordered_map<std::string_view, Places> boardTypes_;
};

/// Takes the elements out that `file` is meant for.
[[nodiscard]] std::vector<const KvTUpdateElement*> takeMatching(KvCElementIndex& index, const KvTArchiveFile& file);
