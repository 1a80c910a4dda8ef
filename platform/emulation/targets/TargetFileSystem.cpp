#include "TargetFileSystem.h"

#include "SystemFiles.h"
#include "TargetPath.h"
#include "UpdateFileContents.h"

#include <system_error>
#include <utility>

namespace {

std::string pathIn(const std::string& folder, const std::string& name) {
    return folder + "/" + name;
}

/// The checksum that the file `name` in `folder`, shown as `path`, installs; absent when it states none.
OrFailure<std::optional<std::uint32_t>> checksumOf(const SystemFiles::Folder& folder, const std::string& name,
                                                   const std::string& path) {
    std::error_code error;
    const SystemFiles::File file = folder.openFile(name, error);
    if (file == nullptr) {
        return fileFailure("read", path, error);
    }
    const auto contents = readUpdateFileContents(*file);
    if (!contents) {
        return fileFailure("read", path, "the disk does not give it");
    }
    return contents->checksum;
}

} // namespace

OrFailure<std::uint64_t> copyLocalFile(std::FILE& local, const std::filesystem::path& path, std::FILE& to,
                                       const std::string& name, const TransferProgress& progress) {
    CopyProgress tell;
    std::error_code unknown;
    const std::uintmax_t total = std::filesystem::file_size(path, unknown);
    if (progress && !unknown) {
        tell = [&progress, total](std::uint64_t done) { progress(done, total); };
    }
    if (const auto copied = copyBytes(local, to, tell)) {
        return *copied;
    }
    if (std::ferror(&to) != 0) {
        return fileFailure("write", name, "the disk does not take it");
    }
    return fileFailure("read", SystemFiles::textOf(path), "the disk does not give it");
}

Outcome TargetFileSystem::makeFolder(const std::string& parent, const std::string& name) {
    if (Outcome refusal = checkTargetName(name)) {
        return refusal;
    }
    const auto folder = openFolder(parent);
    if (!folder.hasValue()) {
        return folder.failure();
    }
    if (const std::error_code error = folder.value().makeFolder(name)) {
        return fileFailure("create the folder", pathIn(parent, name), error);
    }
    return std::nullopt;
}

OrFailure<std::uint64_t> TargetFileSystem::putFile(const std::filesystem::path& local, const std::string& folder,
                                                   const std::string& name, const TransferProgress& progress) {
    if (Outcome refusal = checkTargetName(name)) {
        return std::move(*refusal);
    }
    std::error_code error;
    const SystemFiles::File source = SystemFiles::openForReading(local, error);
    if (source == nullptr) {
        return fileFailure("read", SystemFiles::textOf(local), error);
    }
    const auto opened = openFolder(folder);
    if (!opened.hasValue()) {
        return opened.failure();
    }
    const SystemFiles::File file = opened.value().createFile(name, error);
    if (file == nullptr) {
        return fileFailure("write", pathIn(folder, name), error);
    }
    return copyLocalFile(*source, local, *file, pathIn(folder, name), progress);
}

OrFailure<TargetFileSystem::Renamed> TargetFileSystem::renameFile(const std::string& folder, const std::string& oldName,
                                                                  const std::string& newName) {
    for (const std::string* const name : {&oldName, &newName}) {
        if (Outcome refusal = checkTargetName(*name)) {
            return std::move(*refusal);
        }
    }
    const auto opened = openFolder(folder);
    if (!opened.hasValue()) {
        return opened.failure();
    }
    auto checksum = checksumOf(opened.value(), oldName, pathIn(folder, oldName));
    if (!checksum.hasValue()) {
        return checksum.failure();
    }
    Renamed renamed;
    renamed.location = joinComponents(resolveTargetPath(pathIn(folder, newName)).value());
    renamed.contents.checksum = checksum.value();
    if (const std::error_code error = opened.value().renameFile(oldName, newName)) {
        return fileFailure("rename", pathIn(folder, oldName), error);
    }
    return renamed;
}

OrFailure<SystemFiles::Folder> TargetFileSystem::openFolder(const std::string& path) {
    const auto components = resolveTargetPath(path);
    if (!components.hasValue()) {
        return components.failure();
    }
    auto folder = state_->openFileSystem();
    for (const std::string& component : components.value()) {
        if (!folder.hasValue()) {
            break;
        }
        std::error_code error;
        auto next = folder.value().enter(component, error);
        if (!next) {
            return fileFailure("open the folder", path, error);
        }
        folder = std::move(*next);
    }
    return folder;
}
