#include "ValueTexts.h"

#include "Texts.h"

#include <array>
#include <cstdio>

using namespace KvNReflasher;

std::string versionCell(const std::optional<KvTVersion>& version) {
    return version ? version->text : unknownText;
}

std::string checksumCell(const std::optional<std::uint32_t>& checksum) {
    return checksum ? std::to_string(*checksum) : unknownText;
}

std::string codeText(const KvTErrorInfo& error) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%#x", static_cast<unsigned>(error.code));
    return std::string("ERROR ").append(code.data());
}

std::string originText(const KvTErrorInfo& error) {
    return error.originNode != 0 ? "S/N " + std::to_string(error.originNode) : std::string("Host PC");
}

std::string errorText(const KvTErrorInfo& error) {
    return codeText(error).append(" (").append(originText(error)).append("): ").append(visibleInLine(error.text));
}

std::string errorsText(const std::vector<KvTErrorInfo>& errors) {
    std::string text;
    for (const KvTErrorInfo& error : errors) {
        text += "       " + errorText(error) + "\n";
    }
    return text.empty() ? text : "Errors of the look:\n" + text;
}
