#include "ErrorReport.h"

#include "KvCConsoleWriter.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

constexpr std::uint32_t lineWidth = 80;
constexpr std::uint32_t textIndentation = 2;
/// A line is not broken at a blank that would leave fewer characters than this before it.
constexpr std::size_t minimumPiece = 5;

void printDetails(const KvCConsoleWriter& writer, const KvCErrorListPool& list, std::uint32_t index) {
    if (const std::uint64_t timeStamp = list.getTimeStamp(index); timeStamp != 0) {
        const double tick = KvCErrorManager::getInstance()->getTimeStampTickDuration();
        writer.print(L", time % 4.3f sec.", static_cast<double>(timeStamp) * tick);
    }
    const std::uint32_t mainModule = list.getMainModuleNumber(index);
    const std::uint32_t subModule = list.getSubModuleNumber(index);
    if (mainModule != 0 || subModule != 0) {
        writer.print(L", module %u/%u", mainModule, subModule);
    }
    const char* function = list.getFunctionName(index);
    if (function != nullptr && *function != '\0') {
        writer.print(L", in %hs():%u", function, list.getLineNumber(index));
    }
}

void printHeader(const KvCConsoleWriter& writer, const KvCErrorListPool& list, std::uint32_t index, int indentation,
                 bool verbose) {
    const std::uint32_t code = list.getErrorCode(index);
    const std::uint32_t originNode = list.getOriginNode(index);
    if (originNode != 0) {
        writer.print(L"%*sERROR %#x (reported by S/N %u)", indentation, L"", code, originNode);
    } else {
        writer.print(L"%*sERROR %#x (reported by Host PC)", indentation, L"", code);
    }
    if (verbose) {
        printDetails(writer, list, index);
    }
    writer.print(L":\n");
}

/// Length of the first line of `text`, at most `width`. A blank at which it is broken stays at its end.
std::size_t lengthOfLine(std::string_view text, std::size_t width) {
    if (text.size() <= width) {
        return text.size();
    }
    const std::size_t blank = text.substr(0, width).rfind(' ');
    return blank != std::string_view::npos && blank >= minimumPiece ? blank + 1 : width;
}

void printWrapped(const KvCConsoleWriter& writer, std::string text, std::uint32_t indentation) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    // An indentation that leaves no room still shows all of the text.
    const std::size_t width = indentation < lineWidth ? lineWidth - indentation : 1;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::string line(rest.substr(0, lengthOfLine(rest, width)));
        writer.print(L"%*s%hs\n", static_cast<int>(indentation), L"", line.c_str());
        rest.remove_prefix(line.size());
    }
}

} // namespace

void printErrorReport(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                      const KvCErrorListPool& list, std::uint32_t indentation) {
    for (std::uint32_t index = 0; index < list.getNumberOfUsedEntries(); ++index) {
        printHeader(writer, list, index, static_cast<int>(indentation), options.verbose);
        printWrapped(writer, list.getErrorText(index), indentation + textIndentation);
    }
}

bool printReportedErrors(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                         const KvCErrorListPool& list) {
    if (list.getErrorCount() == 0) {
        return false;
    }
    writer.print(L"\nReported errors:\n");
    printErrorReport(writer, options, list, reportIndentation);
    return true;
}
