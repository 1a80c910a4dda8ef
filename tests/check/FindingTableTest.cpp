#include "FindingTable.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

using KvNReflasher::KvESeverity;

namespace {

/// The document that lists the rules: KV_DOCUMENT is its path.
std::string document() {
    std::ifstream file(KV_DOCUMENT, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// As the document shows a hint that is completed where the rule is broken.
std::string shownHint(const KvTFindingRow& row) {
    return row.hint == "{}" ? "depends on the case" : hintOf(row, "…");
}

/// The document's table of the rules of this severity.
std::string tableOf(KvESeverity severity) {
    std::string table = "| code | meaning | hint |\n|---|---|---|\n";
    for (const KvTFindingRow& row : allFindingRows()) {
        if (row.severity == severity) {
            table.append("| `").append(row.code).append("` | ").append(row.meaning);
            table.append(" | ").append(shownHint(row)).append(" |\n");
        }
    }
    return table;
}

/// Writes the table into the document, below this heading.
void writeTable(const std::string& heading, const std::string& table) {
    std::string text = document();
    const std::size_t begin = text.find("| code |", text.find(heading));
    const std::size_t end = text.find("\n\n", begin);
    text.replace(begin, end + 1 - begin, table);
    std::ofstream(KV_DOCUMENT, std::ios::binary) << text;
}

} // namespace

// With KV_WRITE_DOCUMENTS in the environment the document is written rather than compared.
TEST(FindingTable, TheDocumentListsEveryRule) {
    for (const auto& [heading, severity] :
         {std::pair("## Errors\n", KvESeverity::error), std::pair("## Warnings\n", KvESeverity::warning)}) {
        const std::string table = tableOf(severity);
        if (std::getenv("KV_WRITE_DOCUMENTS") != nullptr) {
            writeTable(heading, table);
        }
        EXPECT_NE(document().find(heading + ("\n" + table)), std::string::npos) << table;
    }
}

TEST(FindingTable, EveryRuleHasACodeOfItsOwn) {
    std::set<std::string_view> codes;
    for (const KvTFindingRow& row : allFindingRows()) {
        EXPECT_TRUE(codes.insert(row.code).second) << row.code;
        EXPECT_FALSE(row.meaning.empty() || row.hint.empty()) << row.code;
    }
}

TEST(FindingTable, AHintIsCompletedInItsPlace) {
    EXPECT_EQ("Leave X out.", hintOf(findingRow(KvECheckRule::targetPathWithRoot), "X"));
    EXPECT_EQ("Remove the others.", hintOf(findingRow(KvECheckRule::duplicateKey), "X"));
}
