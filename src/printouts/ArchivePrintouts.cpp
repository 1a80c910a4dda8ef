#include "ArchivePrintouts.h"

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

/// The board types of a selection as they are written, joined by commas.
std::string boardTypesText(const KvTEntrySelection& selection) {
    std::string text;
    const char* separator = "";
    forEachScalar(selection.writtenBoardTypes, [&](jsonView boardType) {
        text.append(separator).append(boardType.get_string());
        separator = ",";
    });
    return text;
}

std::string addressText(const KvTEntryAddress& address) {
    return address.id ? std::to_string(*address.id) : std::string(address.targetPath.value_or(""));
}

/// The cells that show what an entry is for.
struct EntryCells {
    std::string boardType;
    std::string address;
};

void addSelection(EntryCells& cells, const KvTEntrySelection& selection) {
    const std::string types = boardTypesText(selection);
    cells.boardType.append(cells.boardType.empty() ? "" : ",").append(types);
    if (!selection.isAddressShared) {
        cells.address.append(cells.address.empty() ? "" : ", ").append(types).append(": ");
        cells.address.append(addressText(selection.address));
    }
}

EntryCells entryCells(const KvTArchiveFile& file) {
    EntryCells cells;
    for (const KvTEntrySelection& selection : file.selections) {
        addSelection(cells, selection);
    }
    if (file.address.isGiven()) {
        cells.address.append(cells.address.empty() ? "" : ", others: ").append(addressText(file.address));
    }
    return cells;
}

KvTTableRow contentRow(const KvTArchiveFile& file) {
    EntryCells cells = entryCells(file);
    KvTTableRow row = {KvCString(std::move(cells.boardType)), file.name, versionCell(file.version),
                       file.checksumCrc32 == unknownValue ? KvCString(unknownCell) : KvCString(file.checksumCrc32),
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
    const jsonView read = file.description->view().find(propertyKey(KvEProperty::checksumCrc32));
    if (file.checksumCrc32 == unknownValue || (read.is_valid() && read.get_unsigned() == file.checksumCrc32)) {
        return dumped(*file.description);
    }
    json entry = *file.description;
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

void printArchiveContent(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive) {
    const std::vector<KvTArchiveFile>& files = archive.files();
    printTable(writer, files.size() + 1, [&files](std::size_t index) {
        return index == 0 ? KvTTableRow{"BoardType", "File", "Version", "Checksum", "Id/TargetPath"}
                          : contentRow(files[index - 1]);
    });
}

void printArchiveVersion(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive) {
    const KvCVersion& version = archive.info().archiveVersion;
    if (version.getMai() != 0) {
        writer.print(L"%hs\n", version.getAsString().c_str());
        return;
    }
    const KvCVersion shown(version.getMar(), version.getMir(), maintenancePlaceholder, version.getSpb(),
                           version.getSpn(), version.getPlv());
    std::string text(shown.getAsString().view());
    const std::size_t firstDot = text.find('.');
    if (firstDot == std::string::npos) {
        // A version of an unknown build is shown as a number, which has no place for the component.
        writer.print(L"%hs\n", version.getAsString().c_str());
        return;
    }
    const std::size_t secondDot = text.find('.', firstDot + 1);
    text[secondDot + 1] = '0';
    writer.print(L"%hs\n", text.c_str());
}

// The text is that of one document which holds copies of all entries; it is put together from theirs. A client parses
// what one call of its message callback brings.
void dumpDescription(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive) {
    KvCBlockPrinter printer(writer, writer.hasReceiver() ? KvCBlockPrinter::wholeText : KvCBlockPrinter::blockSize);
    printer.text().append("{\n    \"info\": ");
    appendIndented(printer.text(), dumped(describedInfo(archive.info())), 1);
    printer.text() += ',';
    printer.endLine();
    printer.text().append("    \"files\": ").append(archive.files().empty() ? "null" : "[");
    for (const KvTArchiveFile& file : archive.files()) {
        printer.text().append(&file == &archive.files().front() ? "" : ",");
        printer.endLine();
        printer.text().append(indentation * 2, ' ');
        appendIndented(printer.text(), dumpedEntry(file), 2);
    }
    if (!archive.files().empty()) {
        printer.endLine();
        printer.text().append("    ]");
    }
    printer.endLine();
    printer.text() += '}';
    printer.endLine();
    printer.finish();
}
