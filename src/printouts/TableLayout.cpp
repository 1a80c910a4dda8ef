#include "TableLayout.h"

#include "BlockPrinter.h"
#include "KvCConsoleWriter.h"

#include <algorithm>
#include <numeric>
#include <string>

namespace {

constexpr std::string_view columnSeparator = " | ";

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
}

} // namespace

KvCString versionCell(const KvCVersion& version) {
    return version.getAsULong64() == 0 ? KvCString(unknownCell) : version.getAsString();
}

void printTable(const KvCConsoleWriter& writer, const KvTTable& rows) {
    const std::vector<std::size_t> widths = columnWidths(rows);
    KvCBlockPrinter printer(writer);
    for (const auto& row : rows) {
        appendRow(printer.text(), row, widths);
        printer.endLine();
        if (&row == &rows.front()) {
            const std::size_t separators = widths.empty() ? 0 : widths.size() - 1;
            printer.text().append(std::accumulate(widths.begin(), widths.end(), separators * columnSeparator.size()),
                                  '-');
            printer.endLine();
        }
    }
    printer.finish();
}
