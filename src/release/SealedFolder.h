#pragma once

#include "StoredFiles.h"

#include <string>

/// An archive in a folder.
class KvCSealedFolder : public KvCStoredFiles {
public:
    explicit KvCSealedFolder(std::wstring folder) : folder_(std::move(folder)) {}

    [[nodiscard]] bool isPackage() const override { return false; }
    [[nodiscard]] std::optional<std::string> manifest(std::string& reason) override;
    [[nodiscard]] std::optional<std::string> signatures(std::string& reason) override;
    [[nodiscard]] std::vector<KvTStoredDifference> differencesFrom(const KvTManifest& manifest) override;
    [[nodiscard]] bool read(const KvTSealedFile& file, const Sink& sink, std::string& reason) override;

private:
    [[nodiscard]] std::wstring pathOf(const std::string& name) const;

    std::wstring folder_;
};
