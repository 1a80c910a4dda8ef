#include "TableLayout.h"

#include "BlockPrinter.h"
#include "KvCConsoleWriter.h"

#include <algorithm>
#include <numeric>
#include <string>

namespace {

constexpr std::string_view columnSeparator = " | ";

void widenFor(const KvTTableRow& row, std::vector<std::size_t>& widths) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
        widths[column] = std::max(widths[column], row[column].length());
    }
}

void appendRow(std::string& text, const KvTTableRow& row, const std::vector<std::size_t>& widths) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
        if (column != 0) {
            text += columnSeparator;
        }
        const std::string_view cell = column < row.size() ? row[column].c_str() : "";
        text += cell;
        text.append(widths[column] - cell.size(), ' ');
    }
}

/// `rowAt` is called with each index below `rowCount` twice, the first time for the widths.
template <typename RowAt>
void printRows(const KvCConsoleWriter& writer, std::size_t rowCount, const RowAt& rowAt) {
    std::vector<std::size_t> widths;
    for (std::size_t index = 0; index < rowCount; ++index) {
        widenFor(rowAt(index), widths);
    }
    KvCBlockPrinter printer(writer);
    for (std::size_t index = 0; index < rowCount; ++index) {
        appendRow(printer.text(), rowAt(index), widths);
        printer.endLine();
        if (index == 0) {
            const std::size_t separators = widths.empty() ? 0 : widths.size() - 1;
            printer.text().append(std::accumulate(widths.begin(), widths.end(), separators * columnSeparator.size()),
                                  '-');
            printer.endLine();
        }
    }
    printer.finish();
}

} // namespace

KvCString versionCell(const KvCVersion& version) {
    return version.getAsULong64() == 0 ? KvCString(unknownCell) : version.getAsString();
}

void printTable(const KvCConsoleWriter& writer, const KvTTable& rows) {
    printRows(writer, rows.size(), [&rows](std::size_t index) -> const KvTTableRow& { return rows[index]; });
}

void printTable(const KvCConsoleWriter& writer, std::size_t rowCount,
                const std::function<KvTTableRow(std::size_t)>& rowAt) {
    printRows(writer, rowCount, rowAt);
}
