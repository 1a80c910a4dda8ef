#pragma once

#include "Crypto.h"
#include "Manifest.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// How something that is stored differs from the manifest.
struct KvTStoredDifference {
    /// The file; empty if it is the archive as a whole.
    std::string name;
    /// The difference, as a sentence.
    std::string fault;
};

/// The files of an archive where they are stored: in a folder or in a package.
class KvCStoredFiles {
public:
    /// Takes the bytes of a file piece by piece; false ends the reading.
    using Sink = std::function<bool(KvTBytes bytes)>;

    KvCStoredFiles() = default;
    KvCStoredFiles(const KvCStoredFiles&) = delete;
    KvCStoredFiles& operator=(const KvCStoredFiles&) = delete;
    virtual ~KvCStoredFiles() = default;

    /// The text of the manifest, or of its signatures. Nothing if there is none or, with a `reason`, if it cannot be
    /// read.
    /// @{
    [[nodiscard]] virtual std::optional<std::string> manifest(std::string& reason) = 0;
    [[nodiscard]] virtual std::optional<std::string> signatures(std::string& reason) = 0;
    /// @}

    /// True if one file holds all of them.
    [[nodiscard]] virtual bool isPackage() const = 0;

    /// How what is stored differs from the manifest, without a look into the files: each file that is missing or
    /// additional, has another size or is not a regular file.
    [[nodiscard]] virtual std::vector<KvTStoredDifference> differencesFrom(const KvTManifest& manifest) = 0;

    /// Reads a file of the manifest once. False, with a `reason`, if it cannot be read or has another size.
    [[nodiscard]] virtual bool read(const KvTSealedFile& file, const Sink& sink, std::string& reason) = 0;
};

/// The archive at `path`: a package if a regular file is there, otherwise a folder. Null, with a `reason`, if a package
/// cannot be opened.
[[nodiscard]] std::unique_ptr<KvCStoredFiles> openStoredFiles(const std::wstring& path, std::string& reason);
