#include "EmulatedFolder.h"

#include "PathTexts.h"
#include "UserFiles.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// The description file in the folder of an emulated target.
constexpr const char* targetDescriptionFile = "target.json";

/// The path of such a folder, as the emulation takes it: "\" is a character like others if the system says so.
fs::path targetFolderPath(const std::string& folder) {
    return {std::u8string(folder.begin(), folder.end())};
}

std::string faultOf(const std::string& folder, const std::string& reason) {
    return quotedPath(folder) + " " + reason;
}

} // namespace

std::string faultOfNewTarget(const std::string& folder) {
    const fs::path path = targetFolderPath(folder);
    std::error_code fault;
    const fs::file_status status = fs::status(path, fault);
    if (status.type() == fs::file_type::not_found) {
        return {};
    }
    if (status.type() == fs::file_type::none) {
        return faultOf(folder, "cannot be looked at: " + fault.message());
    }
    if (!fs::is_directory(status)) {
        return faultOf(folder, "exists and is no folder");
    }
    const bool isEmpty = fs::is_empty(path, fault);
    if (fault) {
        return faultOf(folder, "cannot be looked at: " + fault.message());
    }
    return isEmpty ? std::string() : faultOf(folder, "exists and is not empty");
}

std::string writeNewTarget(const std::string& folder, const std::string& description) {
    const fs::path path = targetFolderPath(folder);
    std::error_code fault;
    const bool isNew = fs::create_directory(path, fault);
    if (fault) {
        return faultOf(folder, "cannot be created: " + fault.message());
    }
    if (writeWholeFile(path / targetDescriptionFile, description)) {
        return {};
    }
    if (isNew) {
        fs::remove(path, fault);
    }
    return faultOf(folder, std::string("cannot take the file ") + targetDescriptionFile);
}
