#include "TableLayout.h"

#include "KvCConsoleWriter.h"

#include <algorithm>
#include <numeric>
#include <string>

namespace {

constexpr std::string_view columnSeparator = " | ";
/// Lines are handed to the writer in messages of about this size: a message per cell would cost a flush per cell.
constexpr std::size_t messageSize = 16384;

std::vector<std::size_t> columnWidths(const KvTTable& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].length());
        }
    }
    return widths;
}

void appendRow(std::string& text, const std::vector<KvCString>& row, const std::vector<std::size_t>& widths) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
        if (column != 0) {
            text += columnSeparator;
        }
        const std::string_view cell = column < row.size() ? row[column].c_str() : "";
        text += cell;
        text.append(widths[column] - cell.size(), ' ');
    }
    text += '\n';
}

} // namespace

KvCString versionCell(const KvCVersion& version) {
    return version.getAsULong64() == 0 ? KvCString(unknownCell) : version.getAsString();
}

void printTable(const KvCConsoleWriter& writer, const KvTTable& rows) {
    const std::vector<std::size_t> widths = columnWidths(rows);
    std::string text;
    for (const auto& row : rows) {
        appendRow(text, row, widths);
        if (&row == &rows.front()) {
            const std::size_t separators = widths.empty() ? 0 : widths.size() - 1;
            text.append(std::accumulate(widths.begin(), widths.end(), separators * columnSeparator.size()), '-');
            text += '\n';
        }
        if (text.size() >= messageSize) {
            writer.print(L"%hs", text.c_str());
            text.clear();
        }
    }
    if (!text.empty()) {
        writer.print(L"%hs", text.c_str());
    }
}
