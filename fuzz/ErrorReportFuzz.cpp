// The report of an error list: wrapped texts that lose nothing.

#include "ErrorReport.h"
#include "FuzzInput.h"
#include "KvCConsoleWriter.h"
#include "KvTOptions.h"
#include "OwnedErrorList.h"
#include "Property.h"
#include "ServiceState.h"
#include "Transcript.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t lineWidth = 80;
/// How much deeper than the header the text stands.
constexpr std::size_t textIndentation = 2;
/// A blank before this position does not end a line.
constexpr std::size_t firstBreak = 5;
/// More of them show nothing else.
constexpr std::size_t mostEntries = 3;

KvTErrorEntry takeEntry(FuzzInput& input) {
    KvTErrorEntry entry;
    const std::uint8_t shape = input.takeByte();
    entry.code = input.takeByte();
    if ((shape & 1U) != 0) {
        entry.originNode = input.takeNumber();
        entry.timeStamp = std::uint64_t(input.takeNumber()) << 20U;
    }
    if ((shape & 2U) != 0) {
        entry.mainModule = input.takeNumber();
        entry.subModule = input.takeByte();
        entry.line = input.takeNumber();
    }
    if ((shape & 4U) != 0) {
        entry.function = input.takeText();
    }
    entry.text = input.takeText();
    // Mutations seldom make long texts.
    for (unsigned copies = shape >> 4U; copies > 0 && entry.text.size() < 2 * lineWidth; --copies) {
        entry.text += entry.text;
    }
    return entry;
}

/// A text as the report is to show it, on one line.
std::string shownText(std::string text) {
    std::replace(text.begin(), text.end(), '\r', ' ');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// What a narrow text is in the messages: bytes that are not UTF-8 do not all come back as they were.
std::string inMessages(std::string_view text) {
    std::wstring message;
    KvCConsoleWriter::format(message, L"%hs", std::string(text).c_str());
    return Transcript::bytesOf(message);
}

/// Reads the messages of a report one by one.
class ReportReader {
public:
    ReportReader(const std::vector<std::string>& messages, std::size_t indentation)
        : messages_(messages), indentation_(indentation) {}

    [[nodiscard]] bool isAtEnd() const { return position_ == messages_.size(); }

    void readHeader(const KvTErrorEntry& entry, bool verbose) {
        const std::string blanks(indentation_, ' ');
        require(next().starts_with(blanks + "ERROR "), "A report begins with an indented header.");
        std::string details;
        while (messages_.at(position_) != ":\n") {
            details += next();
        }
        static_cast<void>(next());
        require(verbose || details.empty(), "Details are for the verbose option.");
        const bool isInFunction = details.find(", in " + inMessages(entry.function) + "():") != std::string::npos;
        require(!verbose || entry.function.empty() || isInFunction, "Details name the function.");
    }

    void readText(const std::string& text) {
        const std::size_t column = indentation_ + textIndentation;
        const std::size_t width = column < lineWidth ? lineWidth - column : 1;
        std::string_view rest = text;
        while (!rest.empty()) {
            const std::string_view line = rest.substr(0, lengthOfLine(rest, width));
            require(takeLine(column) == inMessages(line), "A report shows the text line by line, nothing left out.");
            rest.remove_prefix(line.size());
        }
    }

private:
    std::string next() {
        require(!isAtEnd(), "A report shows all entries.");
        return messages_[position_++];
    }

    /// A line without its indentation and its end.
    std::string takeLine(std::size_t column) {
        std::string line = next();
        require(line.size() > column && line.back() == '\n', "A line of text has an indentation and an end.");
        require(line.find_first_not_of(' ') >= column || line.size() == column + 1, "A line of text is indented.");
        return line.substr(column, line.size() - column - 1);
    }

    /// A line ends where the text ends, behind the last blank that fits, or where there is no room any more.
    static std::size_t lengthOfLine(std::string_view rest, std::size_t width) {
        const std::size_t blank = rest.substr(0, width).rfind(' ');
        const bool hasBreak = blank != std::string_view::npos && blank >= firstBreak;
        return rest.size() <= width ? rest.size() : hasBreak ? blank + 1 : width;
    }

    const std::vector<std::string>& messages_;
    std::size_t indentation_;
    std::size_t position_ = 0;
};

void check(const std::vector<KvTErrorEntry>& entries, std::uint32_t indentation, bool verbose) {
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    for (const KvTErrorEntry& entry : entries) {
        errors->addError(entry);
    }
    KvNReflasher::KvTOptions options{};
    options.verbose = verbose;
    const Transcript transcript;
    printErrorReport(transcript.writer(), options, *errors, indentation);
    ReportReader reader(Transcript::messages(), indentation);
    for (const KvTErrorEntry& entry : entries) {
        reader.readHeader(entry, verbose);
        reader.readText(shownText(entry.text));
    }
    require(reader.isAtEnd(), "A report shows the entries and nothing else.");
}

} // namespace

/// Indentation, options, then entries.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    // From none to one that leaves no room.
    const auto indentation = static_cast<std::uint32_t>(input.takeByte() % (lineWidth + 8));
    const bool verbose = (input.takeByte() & 1U) != 0;
    std::vector<KvTErrorEntry> entries;
    while (!input.isEmpty() && entries.size() < mostEntries) {
        entries.push_back(takeEntry(input));
    }
    check(entries, indentation, verbose);
    requireNothingHeld();
    return 0;
}
