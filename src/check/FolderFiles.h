#pragma once

#include "KvCFirmwareArchive.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// The files of an archive folder that are neither its description nor named by it. The folder is listed when they are
/// first asked for.
class KvCFolderFiles {
public:
    /// `entryNames` are the update files that entries name. The archive and the texts of the names must outlive the
    /// object.
    KvCFolderFiles(const KvCFirmwareArchive& archive, const std::wstring& descriptionFileName,
                   const std::vector<std::string_view>& entryNames);
    KvCFolderFiles(const KvCFolderFiles&) = delete;
    KvCFolderFiles& operator=(const KvCFolderFiles&) = delete;
    ~KvCFolderFiles() = default;

    /// The files (UTF-8) that no entry names, in ascending order; empty if the folder cannot be listed. A name that
    /// differs only in case names a file unless the folder has one of exactly that name: some systems take both for
    /// one.
    [[nodiscard]] const std::vector<std::string>& unnamed();
    /// Returns the file that `name`, which is missing, was most likely meant to be; empty if no file that is not named
    /// exactly has a similar name. After very many questions the answer is empty, too, so that the work stays linear.
    [[nodiscard]] std::string_view nearest(std::string_view name);
    /// True if the file of this name is another archive description: a *.json file with an array "files". Files of more
    /// than 64 MiB are not looked into.
    [[nodiscard]] bool isDescription(const std::string& name) const;

private:
    void list();

    const KvCFirmwareArchive& archive_;
    /// The name of the description, in lower case.
    std::string description_;
    std::unordered_set<std::string_view> entryNames_;
    /// One of these names each.
    std::unordered_map<std::string, std::string_view> entryNamesByFoldedCase_;
    bool isListed_ = false;
    std::vector<std::string> unnamed_;
    /// The files that are not named exactly.
    std::vector<std::string> candidates_;
    std::vector<std::string_view> candidateWords_;
    /// How many bytes they have.
    std::size_t candidateBytes_ = 0;
    /// How many pairs of bytes may still be compared.
    std::size_t budget_ = 100'000'000;
};

/// "Did you mean "NAME"?" with the file that the missing `name` was most likely meant to be; empty if there is none.
[[nodiscard]] std::string suggestionFor(std::string_view name, KvCFolderFiles& folder);
