#pragma once

#include "Files.h"
#include "PackageHeader.h"
#include "StoredFiles.h"

#include <map>
#include <string>

/// An archive in a package: the manifest, its signatures if there are any, and the files of the manifest in its order.
/// The file is opened once.
class KvCPackage : public KvCStoredFiles {
public:
    /// `stream` is positioned at the beginning of the package.
    explicit KvCPackage(FileStream stream);

    [[nodiscard]] bool isPackage() const override { return true; }
    [[nodiscard]] std::optional<std::string> manifest(std::string& reason) override;
    [[nodiscard]] std::optional<std::string> signatures(std::string& reason) override;
    [[nodiscard]] std::vector<KvTStoredDifference> differencesFrom(const KvTManifest& manifest) override;
    [[nodiscard]] bool read(const KvTSealedFile& file, const Sink& sink, std::string& reason) override;

private:
    [[nodiscard]] std::optional<KvTPackedFile> headerAt(std::uint64_t offset);
    [[nodiscard]] std::optional<std::string> textAt(std::uint64_t offset, std::string_view name, std::uint64_t most,
                                                    std::uint64_t& end, std::string& reason);
    [[nodiscard]] bool readAt(std::uint64_t offset, std::uint64_t size, const Sink& sink);
    [[nodiscard]] bool isZero(std::uint64_t offset, std::uint64_t size);

    FileStream stream_;
    std::uint64_t size_ = 0;
    /// When the manifest was packed, which is when all files were.
    std::chrono::sys_seconds time_;
    /// Where the manifest ends, and the signatures.
    /// @{
    std::uint64_t manifestEnd_ = 0;
    std::uint64_t signaturesEnd_ = 0;
    /// @}
    /// Where the content of each file begins; filled by differencesFrom().
    std::map<std::string, std::uint64_t, std::less<>> offsets_;
};
