#include "EmulatedFolder.h"

#include "PathTexts.h"
#include "ReplacedFile.h"
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

/// Why a folder cannot be made, as far as that shows when a file is made in its place and removed again.
std::string faultOfNewFolder(const std::string& folder) {
    fs::path path = targetFolderPath(folder);
    if (!path.has_filename()) {
        path = path.parent_path(); // a separator at the end
    }
    const int error = ReplacedFile().open(path);
    return error == 0 ? std::string() : faultOf(folder, "cannot be created: " + reasonOf(path, error));
}

std::string faultOfDescription(const std::string& folder, int error) {
    std::string reason("cannot take the file ");
    reason.append(targetDescriptionFile).append(": ");
    reason.append(reasonOf(targetFolderPath(folder) / targetDescriptionFile, error));
    return faultOf(folder, reason);
}

} // namespace

std::string faultOfNewTarget(const std::string& folder) {
    const fs::path path = targetFolderPath(folder);
    std::error_code fault;
    const fs::file_status status = fs::status(path, fault);
    if (status.type() == fs::file_type::not_found) {
        return faultOfNewFolder(folder);
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
    if (!isEmpty) {
        return faultOf(folder, "exists and is not empty");
    }
    const int error = ReplacedFile().open(path / targetDescriptionFile);
    return error == 0 ? std::string() : faultOfDescription(folder, error);
}

std::string writeNewTarget(const std::string& folder, const std::string& description) {
    const fs::path path = targetFolderPath(folder);
    std::error_code fault;
    const bool isNew = fs::create_directory(path, fault);
    if (fault) {
        return faultOf(folder, "cannot be created: " + fault.message());
    }
    ReplacedFile file;
    int error = file.open(path / targetDescriptionFile);
    if (error == 0) {
        error = file.commit(description);
    }
    if (error == 0) {
        return {};
    }
    if (isNew) {
        fs::remove(path, fault);
    }
    return faultOfDescription(folder, error);
}
