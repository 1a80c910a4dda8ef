#include "EmulatedFolder.h"

#include "TargetFolder.h"
#include "ToolOutput.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// The description's name until it is complete.
constexpr const char* unfinishedFile = "target.json.new";

bool refuse(const std::string& folder, const std::string& reason) {
    say("'" + folder + "' " + reason);
    return false;
}

/// Creates the file; false when any byte of it may not have been written.
bool writeFile(const fs::path& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return file.good();
}

/// The description appears under its name once it is complete.
bool writeDescription(const fs::path& folder, std::string_view text) {
    const fs::path unfinished = folder / unfinishedFile;
    std::error_code fault;
    if (writeFile(unfinished, text)) {
        fs::rename(unfinished, folder / targetDescriptionFile, fault);
        if (!fault) {
            return true;
        }
    }
    fs::remove(unfinished, fault);
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
    if (writeDescription(path, description)) {
        return true;
    }
    if (isNew) {
        fs::remove(path, fault);
    }
    return refuse(folder, std::string("cannot take the file ") + targetDescriptionFile);
}
