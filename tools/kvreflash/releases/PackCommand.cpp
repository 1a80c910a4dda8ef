#include "PackCommand.h"

#include "KvReleases.h"
#include "PathTexts.h"
#include "ReplacedFile.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <filesystem>
#include <string_view>
#include <system_error>

using namespace KvNReflasher;

namespace {

/// The file that a package is written to.
struct PackageFile {
    ReplacedFile file;
    int error = 0;
    std::uint64_t size = 0;

    static bool take(std::string_view bytes, void* context) {
        auto& package = *static_cast<PackageFile*>(context);
        package.size += bytes.size();
        package.error = package.file.append(bytes);
        return package.error == 0;
    }
};

/// True if the package would be a file of the archive itself.
bool isInside(const std::string& package, const std::string& folder) {
    std::error_code fault;
    const std::filesystem::path parent = std::filesystem::absolute(filePath(package), fault).parent_path();
    const std::filesystem::path way = std::filesystem::relative(parent, filePath(folder), fault);
    return !fault && !way.empty() && *way.begin() != "..";
}

} // namespace

void PackedFolder::addTo(CommandSyntax& syntax) {
    syntax.addArgument("DIR", "Folder of the sealed archive", keptIn(folder), Occurs::once);
    syntax.addArgument(
        "FILE", "The package to be made, FILE.kva",
        [this](const std::string& path) {
            if (!path.ends_with(".kva")) {
                refuse(quotedPath(path) + " does not end with .kva");
            }
            package = path;
        },
        Occurs::once);
}

ExitCode PackCommand::run() {
    if (isInside(archive.package, archive.folder)) {
        return conclude({KvEFailure::output, "the package must not be in the archive folder"});
    }
    PackageFile package;
    package.error = package.file.open(filePath(archive.package));
    if (package.error != 0) {
        return conclude({KvEFailure::output, fileFailure("cannot write", archive.package, package.error)});
    }
    const std::vector<std::string> faults = packArchive(wideOf(archive.folder), PackageFile::take, &package);
    for (const std::string& fault : faults) {
        say(fault);
    }
    if (!faults.empty()) {
        return conclude({KvEFailure::archive, "the archive cannot be packed: " + faults.front()});
    }
    if (package.error == 0) {
        package.error = package.file.commit({});
    }
    if (package.error != 0) {
        return conclude({KvEFailure::output, fileFailure("cannot write", archive.package, package.error)});
    }
    writeText(stdout, "Packed into " + visibleInLine(quotedPath(archive.package)) + ": " +
                          std::to_string(package.size) + " bytes.\n");
    return conclude({});
}
