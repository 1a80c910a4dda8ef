#pragma once

#include "KvTRelease.h"
#include "Manifest.h"
#include "PrivateFolder.h"
#include "SshSignature.h"
#include "StoredFiles.h"
#include "TrustFolder.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Whether an archive is what its maker has released, and a private copy of it for those who must not read anything
/// else. A refusal is for good: nothing of the archive is to be used.
class KvCReleaseCheck {
public:
    /// `archive` is a folder or a package.
    KvCReleaseCheck(std::wstring archive, KvNReflasher::KvTReleaseOptions options)
        : archive_(std::move(archive)), options_(std::move(options)) {}

    /// Asks who has signed the manifest and whether they are trusted, and compares names and sizes of the files. False
    /// if the archive is refused.
    [[nodiscard]] bool open();
    /// The archive has a manifest; known after open().
    [[nodiscard]] bool isSealed() const { return manifest_.has_value(); }
    [[nodiscard]] bool isPackage() const { return files_ != nullptr && files_->isPackage(); }
    /// The release record of the archive; complete after open().
    [[nodiscard]] const KvNReflasher::KvTRelease& release() const { return release_; }
    /// The files of the manifest that are in no folder of the archive, in ascending order.
    [[nodiscard]] std::vector<std::string> topFiles() const;
    /// False if a name is not in the manifest. Folders of names are separated by "/" or "\".
    [[nodiscard]] bool lists(const std::set<std::string>& names);

    /// Makes a private folder, to which take() copies. False if that is refused.
    [[nodiscard]] bool makeCopies();
    /// The folder of the copies; empty without makeCopies().
    [[nodiscard]] std::wstring folderOfCopies() const { return copies_ != nullptr ? copies_->path() : std::wstring(); }
    /// Reads files that lists() accepts, each once, and copies them if there is a folder for that. False if there is no
    /// room for the copies, or if a file, of an earlier take() too, is not what the manifest says.
    [[nodiscard]] bool take(const std::set<std::string>& names);
    /// Reads all other files of the manifest. False if any file, of take() too, is not what the manifest says.
    [[nodiscard]] bool takeRest();

    /// Why the archive is refused: a sentence for each fault.
    [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }

private:
    [[nodiscard]] bool refuse(std::string_view fault);
    [[nodiscard]] bool readTrust();
    [[nodiscard]] bool openFiles();
    [[nodiscard]] bool acceptPlain();
    [[nodiscard]] bool acceptUnsigned();
    [[nodiscard]] bool hasGoodSignatures(const std::string& manifestText);
    [[nodiscard]] bool readManifest(const std::string& text);
    [[nodiscard]] bool isSignedInTime();
    [[nodiscard]] bool hasItsFiles();
    [[nodiscard]] bool hasRoomFor(const std::set<const KvTSealedFile*>& files);
    void takeFile(const KvTSealedFile& file, bool isCopied);

    std::wstring archive_;
    KvNReflasher::KvTReleaseOptions options_;
    std::optional<KvCTrustFolder> trust_;
    std::unique_ptr<KvCStoredFiles> files_;
    std::vector<KvCSshKey> signers_;
    std::optional<KvTManifest> manifest_;
    /// Of the manifest, by their names.
    std::map<std::string_view, const KvTSealedFile*> sealed_;
    std::unique_ptr<KvCPrivateFolder> copies_;
    /// Names of the files that were read.
    std::set<std::string_view> taken_;
    KvNReflasher::KvTRelease release_;
    std::vector<std::string> faults_;
};
