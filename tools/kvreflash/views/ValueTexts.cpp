#include "ValueTexts.h"

#include "TextTable.h"

std::string versionCell(const std::optional<KvNReflasher::KvTVersion>& version) {
    return version ? version->text : unknownText;
}

std::string checksumCell(const std::optional<std::uint32_t>& checksum) {
    return checksum ? std::to_string(*checksum) : unknownText;
}
