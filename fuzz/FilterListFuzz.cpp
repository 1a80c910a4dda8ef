// A filter list and a word: does the word pass?

#include "FuzzInput.h"
#include "InventoryRules.h"
#include "Property.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace {

constexpr std::array separators{',', ' '};

/// The words of a list, without what stands between them.
bool isAmongWords(std::string_view list, std::string_view word) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find_first_of(", "), list.size());
        if (list.substr(0, end) == word) {
            return true;
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/// The word stands between two separators in the list, around which there are separators too.
bool isBetweenSeparators(std::string_view list, std::string_view word) {
    const std::string padded = "," + std::string(list) + ",";
    return std::any_of(separators.begin(), separators.end(), [&](char before) {
        return std::any_of(separators.begin(), separators.end(), [&](char after) {
            return padded.find(before + std::string(word) + after) != std::string::npos;
        });
    });
}

void check(std::string_view list, std::string_view word) {
    const bool matches = matchesFilterList(list, word);
    if (word.empty()) {
        require(matches, "An empty word passes.");
        return;
    }
    require(matches == isBetweenSeparators(list, word), "A word passes when it stands between separators.");
    if (word.find_first_of(", ") == std::string_view::npos) {
        require(matches == isAmongWords(list, word), "A word without separators passes when it is in the list.");
    }
    for (const char separator : separators) {
        const std::string longer = std::string(list) + separator + std::string(word);
        require(matchesFilterList(longer, word), "A word that is added to the list passes.");
        require(!matches || matchesFilterList(longer + separator + "x", word), "A longer list lets no less pass.");
    }
}

} // namespace

/// The list, a zero byte, the word.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::string_view list = input.takeText();
    const std::string_view word = input.takeRest();
    check(list, word);
    check(word, list);
    // A word that is there more often than the mutations find one.
    check(list, list.substr(0, list.find(',')));
    return 0;
}
