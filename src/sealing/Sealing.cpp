#include "ArchiveEntries.h"
#include "Crypto.h"
#include "FolderTree.h"
#include "KvCFirmwareArchive.h"
#include "KvCStringConversion.h"
#include "KvReleases.h"
#include "MessageCapture.h"
#include "PackageHeader.h"
#include "SealedFolder.h"
#include "ShownText.h"
#include "SshSignature.h"
#include "Timestamp.h"

#include <chrono>
#include <set>
#include <utility>

namespace KvNReflasher {

namespace {

/// Makes the manifest of an archive in a folder.
class Seal {
public:
    Seal(const std::wstring& folder, const std::wstring& descriptionFileName) : stored_(folder) {
        options_.archiveFolder = folder;
        options_.descriptionFileName = descriptionFileName;
    }

    KvTSealing make(std::chrono::sys_seconds created) {
        if (!listFiles()) {
            faults_.emplace_back("the archive folder cannot be listed");
            return refused();
        }
        readDescription();
        for (KvTSealedFile& file : manifest_.files) {
            addDigest(file);
        }
        manifest_.created = created;
        if (!isPackedTime(created)) {
            faults_.emplace_back("its time is not from 1970 to 2242-03-16T12:56:31Z");
        }
        if (!faults_.empty()) {
            return refused();
        }
        keepTimeOfEqualManifest();
        sealing_.manifest = textOf(manifest_);
        if (sealing_.manifest.size() > largestManifest) {
            faults_.emplace_back("its manifest would be larger than 32 MiB");
            return refused();
        }
        sealing_.manifestDigest = hexOf(sha256Of(bytesOf(sealing_.manifest)));
        sealing_.fileCount = manifest_.files.size();
        sealing_.size = manifest_.size();
        return std::move(sealing_);
    }

private:
    KvTSealing refused() {
        sealing_.faults = std::move(faults_);
        sealing_.verdict = {KvEFailure::archive, "the archive cannot be sealed: " + sealing_.faults.front()};
        return std::move(sealing_);
    }

    /// Whatever a session will ask for must be among the files.
    void readDescription() {
        const KvCMessageCapture dropped;
        KvCFirmwareArchive archive(dropped.writer(), options_);
        if (!archive.readDescriptionFile()) {
            faults_.push_back(archive.refusal());
        }
        manifest_.archive = archiveIdentityOf(archive.info());
        std::set<std::string> named{sealedNameOf(toUtf8(options_.descriptionFileName).view())};
        for (const KvTArchiveFile& file : archive.files()) {
            named.insert(sealedNameOf(file.name.view()));
        }
        for (const KvTSealedFile& file : manifest_.files) {
            named.erase(file.name);
        }
        for (const std::string& name : named) {
            faults_.push_back(shownInQuotes(name) + " is not a file of the archive");
        }
    }

    bool listFiles() {
        const std::optional<std::vector<KvTFolderEntry>> entries = entriesBelow(options_.archiveFolder);
        if (!entries) {
            return false;
        }
        for (const KvTFolderEntry& entry : *entries) {
            if (!entry.isRegularFile) {
                faults_.push_back(shownInQuotes(entry.name) + " is not a regular file");
            } else if (!isSealFile(entry.name)) {
                manifest_.files.push_back({.name = entry.name, .size = entry.size});
            }
        }
        for (std::string& fault : faultsOfNames(manifest_.files)) {
            faults_.push_back(std::move(fault));
        }
        return true;
    }

    void addDigest(KvTSealedFile& file) {
        KvCSha256 digest;
        std::string reason;
        const bool isRead = stored_.read(
            file,
            [&digest](KvTBytes bytes) {
                digest.add(bytes);
                return true;
            },
            reason);
        if (!isRead) {
            faults_.push_back("'" + file.name + "' " + reason);
        }
        file.sha256 = digest.digest();
    }

    /// Sealing once more what has not changed leaves its signature good.
    void keepTimeOfEqualManifest() {
        std::string reason;
        const std::optional<std::string> text = stored_.manifest(reason);
        const std::optional<KvTManifest> earlier = text ? parseManifest(*text, reason) : std::nullopt;
        if (!earlier) {
            return;
        }
        const std::chrono::sys_seconds created = std::exchange(manifest_.created, earlier->created);
        sealing_.isUnchanged = textOf(manifest_) == *text;
        if (!sealing_.isUnchanged) {
            manifest_.created = created;
        }
    }

    KvTOptions options_{};
    KvCSealedFolder stored_;
    KvTManifest manifest_;
    KvTSealing sealing_;
    std::vector<std::string> faults_;
};

/// Writes a package of a sealed archive in a folder.
class Packing {
public:
    Packing(const std::wstring& folder, KvTPackageSink sink, void* context)
        : stored_(folder), sink_(sink), context_(context) {}

    std::vector<std::string> pack() {
        std::string reason;
        const std::optional<std::string> text = stored_.manifest(reason);
        if (!text) {
            return {reason.empty() ? "it is not sealed" : "the manifest cannot be read: " + reason};
        }
        const std::optional<KvTManifest> manifest = parseManifest(*text, reason);
        if (!manifest) {
            return {"the manifest is not valid: " + reason};
        }
        const std::optional<std::string> signatures = stored_.signatures(reason);
        if (!signatures && !reason.empty()) {
            return {"the signature cannot be read: " + reason};
        }
        if (signatures && !signersOf(*signatures, bytesOf(*text), reason)) {
            return {"the signature does not hold: " + reason};
        }
        for (KvTStoredDifference& difference : stored_.differencesFrom(*manifest)) {
            faults_.push_back(std::move(difference.fault));
        }
        time_ = manifest->created;
        if (faults_.empty()) {
            write(manifestName, *text);
            if (signatures) {
                write(signatureName, *signatures);
            }
            for (const KvTSealedFile& file : manifest->files) {
                write(file);
            }
            give(std::string(packageEnd, '\0'));
        }
        return std::move(faults_);
    }

private:
    void give(std::string_view bytes) { isTaken_ = isTaken_ && sink_(bytes, context_); }

    void begin(std::string_view name, std::uint64_t size) {
        const KvTPackageHeader header = headerOf({std::string(name), size, time_});
        give({header.data(), header.size()});
    }

    void write(std::string_view name, std::string_view text) {
        begin(name, text.size());
        give(text);
        give(std::string(static_cast<std::size_t>(paddingOf(text.size())), '\0'));
    }

    void write(const KvTSealedFile& file) {
        begin(file.name, file.size);
        KvCSha256 digest;
        std::string reason = "cannot be written";
        const bool isRead = isTaken_ && stored_.read(
                                            file,
                                            [&](KvTBytes bytes) {
                                                digest.add(bytes);
                                                give({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
                                                return isTaken_;
                                            },
                                            reason);
        if (!isRead) {
            if (isTaken_) {
                faults_.push_back("'" + file.name + "' " + reason);
            }
        } else if (digest.digest() != file.sha256) {
            faults_.push_back("'" + file.name + "' was changed");
        }
        give(std::string(static_cast<std::size_t>(paddingOf(file.size)), '\0'));
    }

    KvCSealedFolder stored_;
    KvTPackageSink sink_;
    void* context_;
    std::chrono::sys_seconds time_;
    bool isTaken_ = true;
    std::vector<std::string> faults_;
};

} // namespace

KvTSealing sealArchive(const KvTUnsealedArchive& archive) {
    return Seal(archive.folder, archive.descriptionFileName)
        .make(std::chrono::sys_seconds(std::chrono::seconds(archive.created)));
}

std::vector<std::string> packArchive(const std::wstring& folder, KvTPackageSink sink, void* context) {
    return Packing(folder, sink, context).pack();
}

} // namespace KvNReflasher
