#include "ExpectedDocuments.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace {

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

void expectDocuments(const std::string& folder, const std::vector<DocumentRow>& rows) {
    const bool isUpdate = std::getenv("KV_UPDATE_DOCUMENTS") != nullptr;
    for (const DocumentRow& row : rows) {
        const std::string path = folder + "/" + row.name;
        if (isUpdate) {
            std::ofstream(path, std::ios::binary) << row.document();
        }
        EXPECT_EQ(contentOf(path), row.document()) << row.name;
    }
}
