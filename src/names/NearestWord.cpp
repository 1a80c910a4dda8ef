#include "NearestWord.h"

#include "FileNames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace {

/// How many bytes have to be changed, added or removed.
std::size_t editDistance(std::string_view from, std::string_view to) {
    // Distances between what was seen of `from` and each beginning of `to`.
    std::vector<std::size_t> distances(to.size() + 1);
    std::iota(distances.begin(), distances.end(), std::size_t{0});
    for (std::size_t row = 0; row < from.size(); ++row) {
        std::size_t diagonal = distances[0];
        distances[0] = row + 1;
        for (std::size_t column = 0; column < to.size(); ++column) {
            const std::size_t changed = diagonal + (lowerCase(from[row]) == lowerCase(to[column]) ? 0 : 1);
            diagonal = distances[column + 1];
            distances[column + 1] = std::min({changed, distances[column] + 1, diagonal + 1});
        }
    }
    return distances.back();
}

} // namespace

std::string_view nearestWord(std::string_view word, std::span<const std::string_view> words, std::size_t size) {
    std::string_view nearest;
    std::size_t limit = size / 3 + 1;
    for (const std::string_view known : words) {
        const std::size_t apart = known.size() > word.size() ? known.size() - word.size() : word.size() - known.size();
        if (apart >= limit || limit > known.size()) {
            continue;
        }
        if (const std::size_t distance = editDistance(word, known); distance < limit) {
            limit = distance;
            nearest = known;
        }
    }
    return nearest;
}
