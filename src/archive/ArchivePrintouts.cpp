#include "BlockPrinter.h"
#include "EntryProperties.h"
#include "KvCConsoleWriter.h"
#include "KvCFirmwareArchive.h"
#include "TableLayout.h"

#include <string>
#include <string_view>
#include <utility>

namespace {

using KvNJson::json;
using KvNJson::jsonView;

/// The texts of a board type value, joined by commas.
std::string boardTypes(jsonView value) {
    std::string text;
    const char* separator = "";
    forEachScalar(value, [&](jsonView boardType) {
        text.append(separator).append(boardType.get_string());
        separator = ",";
    });
    return text;
}

/// The identifier or target path of an object; false when it has neither.
bool addressOf(const EntryProperties& properties, std::string& text) {
    if (const jsonView id = properties[KvEProperty::id]; id.is_valid()) {
        text = KvCString(static_cast<std::uint32_t>(id.get_unsigned())).view();
        return true;
    }
    if (const jsonView path = properties[KvEProperty::targetPath]; path.is_valid()) {
        text = path.get_string();
        return true;
    }
    return false;
}

/// The cells of an entry that tell what it is for.
struct EntryCells {
    std::string boardType;
    std::string address;
};

void addBoard(EntryCells& cells, const EntryProperties& board) {
    const std::string types = boardTypes(board[KvEProperty::boardType]);
    cells.boardType.append(cells.boardType.empty() ? "" : ",").append(types);
    std::string address;
    if (addressOf(board, address)) {
        cells.address.append(cells.address.empty() ? "" : ", ").append(types).append(": ").append(address);
    }
}

EntryCells entryCells(const KvTArchiveFile& file) {
    const EntryProperties entry(file.description.view());
    EntryCells cells;
    if (const jsonView boards = entry[KvEProperty::boards]; boards.is_valid()) {
        for (std::size_t index = 0; index < boards.size(); ++index) {
            addBoard(cells, EntryProperties(boards.at(index)));
        }
    } else {
        cells.boardType = boardTypes(entry[KvEProperty::boardType]);
    }
    std::string address;
    if (addressOf(entry, address)) {
        cells.address.append(cells.address.empty() ? "" : ", others: ").append(address);
    }
    return cells;
}

std::vector<KvCString> contentRow(const KvTArchiveFile& file) {
    EntryCells cells = entryCells(file);
    std::vector<KvCString> row = {KvCString(std::move(cells.boardType)), file.name, versionCell(file.version),
                                  file.checksumCrc32 == unknownValue ? KvCString(unknownCell)
                                                                     : KvCString(file.checksumCrc32),
                                  KvCString(std::move(cells.address))};
    if (file.fileMissing) {
        row.emplace_back("[FILE MISSING]");
    }
    return row;
}

/// Fills the place of a maintenance component of 0, which the text of a version would leave out, until its text is
/// there.
constexpr std::uint8_t maintenancePlaceholder = 9;

constexpr std::size_t indentation = 4;

json describedInfo(const KvTArchiveInfo& read) {
    json info = json::makeObject();
    // The format is written as this system writes it, whatever was read.
    info.set("formatVersion", "1.0");
    info.set("archiveVersion", read.archiveVersion.getAsString());
    info.set("productName", read.productName);
    if (!read.archiveVariant.isEmpty()) {
        info.set("archiveVariant", read.archiveVariant);
    }
    info.set("archiveName", read.archiveName);
    return info;
}

std::string dumped(const json& value) {
    return value.dump(static_cast<int>(indentation), ' ', false, KvNJson::error_handler_t::ignore);
}

/// The entry as it was read, with its checksum.
std::string dumpedEntry(const KvTArchiveFile& file) {
    const jsonView read = file.description.view().find(propertyKey(KvEProperty::checksumCrc32));
    if (file.checksumCrc32 == unknownValue || (read.is_valid() && read.get_unsigned() == file.checksumCrc32)) {
        return dumped(file.description);
    }
    json entry = file.description;
    entry.set(propertyKey(KvEProperty::checksumCrc32), file.checksumCrc32);
    return dumped(entry);
}

/// Appends lines that belong so many levels deeper than they are; the first one continues a line.
void appendIndented(std::string& text, std::string_view lines, std::size_t levels) {
    for (;;) {
        const std::size_t size = lines.find('\n');
        text.append(lines.substr(0, size));
        if (size == std::string_view::npos) {
            return;
        }
        text += '\n';
        text.append(indentation * levels, ' ');
        lines.remove_prefix(size + 1);
    }
}

} // namespace

void KvCFirmwareArchive::printArchiveContent() const {
    KvTTable table = {{"BoardType", "File", "Version", "Checksum", "Id/TargetPath"}};
    table.reserve(files_.size() + 1);
    for (const KvTArchiveFile& file : files_) {
        table.push_back(contentRow(file));
    }
    printTable(writer_, table);
}

void KvCFirmwareArchive::printArchiveVersion() const {
    const KvCVersion& version = info_.archiveVersion;
    if (version.getMai() != 0) {
        writer_.print(L"%hs\n", version.getAsString().c_str());
        return;
    }
    const KvCVersion shown(version.getMar(), version.getMir(), maintenancePlaceholder, version.getSpb(),
                           version.getSpn(), version.getPlv());
    std::string text(shown.getAsString().view());
    const std::size_t firstDot = text.find('.');
    if (firstDot == std::string::npos) {
        // A version of an unknown build is shown as a number, which has no place for the component.
        writer_.print(L"%hs\n", version.getAsString().c_str());
        return;
    }
    const std::size_t secondDot = text.find('.', firstDot + 1);
    text[secondDot + 1] = '0';
    writer_.print(L"%hs\n", text.c_str());
}

// The text is that of one document which holds copies of all entries; it is put together from theirs. A client parses
// what one call of its message callback brings.
void KvCFirmwareArchive::dumpDescription() const {
    BlockPrinter printer(writer_, writer_.hasReceiver() ? BlockPrinter::wholeText : BlockPrinter::blockSize);
    printer.text().append("{\n    \"info\": ");
    appendIndented(printer.text(), dumped(describedInfo(info_)), 1);
    printer.text() += ',';
    printer.endLine();
    printer.text().append("    \"files\": ").append(files_.empty() ? "null" : "[");
    for (const KvTArchiveFile& file : files_) {
        printer.text().append(&file == &files_.front() ? "" : ",");
        printer.endLine();
        printer.text().append(indentation * 2, ' ');
        appendIndented(printer.text(), dumpedEntry(file), 2);
    }
    if (!files_.empty()) {
        printer.endLine();
        printer.text().append("    ]");
    }
    printer.endLine();
    printer.text() += '}';
    printer.endLine();
    printer.finish();
}
