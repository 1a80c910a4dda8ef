#include "TextTable.h"

#include "Texts.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string_view>

namespace {

constexpr std::string_view columnSeparator = " | ";

std::vector<std::size_t> columnWidths(const KvTTextTable& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], columnsOf(row[column]));
        }
    }
    return widths;
}

std::string lineOf(const std::vector<std::string>& row, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t column = 0; column < widths.size(); ++column) {
        const std::string cell = column < row.size() ? row[column] : std::string();
        line.append(column != 0 ? columnSeparator : "").append(cell).append(widths[column] - columnsOf(cell), ' ');
    }
    return line + "\n";
}

} // namespace

std::string tableText(KvTTextTable rows) {
    for (auto& row : rows) {
        std::transform(row.begin(), row.end(), row.begin(), visibleInLine);
    }
    const std::vector<std::size_t> widths = columnWidths(rows);
    const std::size_t separators = widths.empty() ? 0 : widths.size() - 1;
    const std::size_t width = std::accumulate(widths.begin(), widths.end(), separators * columnSeparator.size());
    std::string text;
    for (const auto& row : rows) {
        text += lineOf(row, widths);
        if (&row == &rows.front()) {
            text.append(width, '-').append("\n");
        }
    }
    return text;
}
