#pragma once

#include <string>
#include <vector>

/// A document and the file that it is compared with.
struct DocumentRow {
    /// Name of the file, which begins with that of the schema.
    const char* name;
    std::string (*document)();
};

/// Compares documents byte for byte with the files of `folder`. The schemas are held against the same files
/// (test_schemas.py). With KV_UPDATE_DOCUMENTS=1 the files are written anew: read every line of the difference.
void expectDocuments(const std::string& folder, const std::vector<DocumentRow>& rows);
