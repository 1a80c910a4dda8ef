#pragma once

#include "KvTOptions.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The files of an archive folder beside the description. The folder is listed when they are first asked for.
class KvCFolderFiles {
public:
    /// `options` name folder and description, and must outlive the object.
    explicit KvCFolderFiles(const KvNReflasher::KvTOptions& options) : options_(options) {}
    KvCFolderFiles(const KvCFolderFiles&) = delete;
    KvCFolderFiles& operator=(const KvCFolderFiles&) = delete;
    ~KvCFolderFiles() = default;

    /// Their names (UTF-8) in ascending order; empty if the folder cannot be listed.
    [[nodiscard]] const std::vector<std::string>& names();
    /// Returns the file that `name`, which is missing, was most likely meant to be; empty if none has a similar name.
    /// After very many questions the answer is empty, too, so that the work stays linear.
    [[nodiscard]] std::string_view nearest(std::string_view name);
    /// True if the file of this name is another archive description: a *.json file with an array "files". Files of more
    /// than 64 MiB are not looked into.
    [[nodiscard]] bool isDescription(const std::string& name) const;

private:
    const KvNReflasher::KvTOptions& options_;
    std::optional<std::vector<std::string>> names_;
    /// The same.
    std::vector<std::string_view> words_;
    /// How many bytes the names have.
    std::size_t bytes_ = 0;
    /// How many pairs of bytes may still be compared.
    std::size_t budget_ = 100'000'000;
};

/// "Did you mean "NAME"?" with the file that the missing `name` was most likely meant to be; empty if there is none.
[[nodiscard]] std::string suggestionFor(std::string_view name, KvCFolderFiles& folder);
