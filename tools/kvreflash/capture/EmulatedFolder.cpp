#include "EmulatedFolder.h"

#include "TargetFolder.h"
#include "ToolOutput.h"
#include "WholeFile.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

bool refuse(const std::string& folder, const std::string& reason) {
    say("'" + folder + "' " + reason);
    return false;
}

} // namespace

bool canHoldNewTarget(const std::string& folder) {
    const fs::path path = targetFolderPath(folder);
    std::error_code fault;
    const fs::file_status status = fs::status(path, fault);
    if (status.type() == fs::file_type::not_found) {
        return true;
    }
    if (status.type() == fs::file_type::none) {
        return refuse(folder, "cannot be looked at: " + fault.message());
    }
    if (!fs::is_directory(status)) {
        return refuse(folder, "exists and is no folder");
    }
    const bool isEmpty = fs::is_empty(path, fault);
    if (fault) {
        return refuse(folder, "cannot be looked at: " + fault.message());
    }
    return isEmpty || refuse(folder, "exists and is not empty");
}

bool writeNewTarget(const std::string& folder, const std::string& description) {
    const fs::path path = targetFolderPath(folder);
    std::error_code fault;
    const bool isNew = fs::create_directory(path, fault);
    if (fault) {
        return refuse(folder, "cannot be created: " + fault.message());
    }
    if (writeWholeFile(path / targetDescriptionFile, description)) {
        return true;
    }
    if (isNew) {
        fs::remove(path, fault);
    }
    return refuse(folder, std::string("cannot take the file ") + targetDescriptionFile);
}
