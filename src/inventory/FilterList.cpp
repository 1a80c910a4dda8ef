#include "InventoryRules.h"

namespace {

constexpr bool isSeparator(char character) {
    return character == ',' || character == ' ';
}

} // namespace

bool matchesFilterList(std::string_view list, std::string_view word) {
    if (word.empty()) {
        return true;
    }
    std::size_t begin = list.find(word);
    while (begin != std::string_view::npos) {
        const std::size_t end = begin + word.size();
        if ((begin == 0 || isSeparator(list[begin - 1])) && (end == list.size() || isSeparator(list[end]))) {
            return true;
        }
        begin = list.find(word, begin + 1);
    }
    return false;
}
