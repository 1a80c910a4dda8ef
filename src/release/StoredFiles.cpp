#include "StoredFiles.h"

#include "Files.h"
#include "Package.h"
#include "SealedFolder.h"

#include <utility>

std::unique_ptr<KvCStoredFiles> openStoredFiles(const std::wstring& path, std::string& reason) {
    if (FileStream stream = openForReading(path); stream != nullptr) {
        return std::make_unique<KvCPackage>(std::move(stream));
    }
    if (const std::string_view kind = otherKindOf(path); !kind.empty() && kind != "a folder") {
        reason = "it is " + std::string(kind) + ", neither a folder nor a package";
        return nullptr;
    }
    return std::make_unique<KvCSealedFolder>(path);
}
