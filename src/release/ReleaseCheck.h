#pragma once

#include "KvTRelease.h"
#include "Manifest.h"
#include "PrivateFolder.h"
#include "StoredFiles.h"
#include "TrustFolder.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Whether an archive is what its maker has released, and a private copy of it for those who must not read anything
/// else. A refusal is for good: nothing of the archive is to be used.
class KvCReleaseCheck {
public:
    /// `archive` is a folder or a package.
    KvCReleaseCheck(std::wstring archive, KvNReflasher::KvTReleaseOptions options)
        : archive_(std::move(archive)), options_(std::move(options)) {}

    /// Reads the manifest and its signatures, asks whether the signer is trusted, and compares names and sizes of the
    /// files. False if the archive is refused.
    [[nodiscard]] bool open();
    /// The archive has a manifest; known after open().
    [[nodiscard]] bool isSealed() const { return manifest_.has_value(); }
    [[nodiscard]] bool isPackage() const { return isPackage_; }
    /// What is known of the archive; complete after open().
    [[nodiscard]] const KvNReflasher::KvTRelease& release() const { return release_; }

    /// Makes a private folder for copies, with room for all files. False if that is refused.
    [[nodiscard]] bool makeCopies();
    /// The folder of the copies; empty without makeCopies().
    [[nodiscard]] std::wstring folderOfCopies() const { return copies_ != nullptr ? copies_->path() : std::wstring(); }
    /// Reads a file of the manifest, once, and copies it if there is a folder for that. A name that the manifest does
    /// not have is no fault: nothing is copied. False if the file is not what the manifest says.
    [[nodiscard]] bool take(std::string_view name);
    /// Reads all other files of the manifest, and copies those of these names. False if any file, of take() too, is not
    /// what the manifest says.
    [[nodiscard]] bool takeRest(const std::set<std::string>& names);
    /// The same, and copies all of them.
    [[nodiscard]] bool takeAll();

    /// Why the archive is refused: a sentence for each fault.
    [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }

private:
    [[nodiscard]] bool refuse(std::string_view fault);
    [[nodiscard]] bool readTrust();
    [[nodiscard]] bool acceptPlain();
    [[nodiscard]] bool readSignatures(const std::string& manifestText, std::vector<KvCSshKey>& signers);
    [[nodiscard]] bool judgeSigners(const std::vector<KvCSshKey>& signers, const KvTSha256& digest);
    void takeFile(const KvTSealedFile& file, bool isCopied);

    std::wstring archive_;
    KvNReflasher::KvTReleaseOptions options_;
    bool isPackage_ = false;
    std::optional<KvCTrustFolder> trust_;
    std::unique_ptr<KvCStoredFiles> files_;
    std::optional<KvTManifest> manifest_;
    std::unique_ptr<KvCPrivateFolder> copies_;
    /// Names, in lower case, of the files that were read.
    std::set<std::string> taken_;
    KvNReflasher::KvTRelease release_;
    std::vector<std::string> faults_;
};

/// The name under which a manifest has the file that a description calls so: its folders are separated by "/". In lower
/// case, as names in a manifest differ in more than case.
[[nodiscard]] std::string sealedNameOf(std::string_view name);
