#include "ReleaseCheck.h"

#include "Files.h"
#include "KvCStringConversion.h"
#include "ShownText.h"
#include "Timestamp.h"

#include <numeric>

using namespace KvNReflasher;

bool KvCReleaseCheck::refuse(std::string_view fault) {
    faults_.emplace_back(fault);
    return false;
}

bool KvCReleaseCheck::open() {
    if (!readTrust() || !openFiles()) {
        return false;
    }
    std::string reason;
    const std::optional<std::string> text = files_->manifest(reason);
    if (!text) {
        return reason.empty() ? acceptPlain() : refuse("the manifest cannot be read: " + reason);
    }
    // Nothing that a stranger has written is looked into before somebody who may be trusted has signed it.
    return hasGoodSignatures(*text) && readManifest(*text) && isSignedInTime() && hasItsFiles();
}

/// Without trust in anybody a trust folder that cannot be read would let everything pass.
bool KvCReleaseCheck::readTrust() {
    release_.trustFolder = toUtf8(options_.trustFolder).view();
    if (options_.trustFolder.empty()) {
        return true;
    }
    std::string reason;
    trust_ = KvCTrustFolder::read(options_.trustFolder, reason);
    return trust_ || refuse("the trust folder '" + release_.trustFolder + "' cannot be used: " + reason);
}

bool KvCReleaseCheck::openFiles() {
    std::string reason;
    files_ = openStoredFiles(archive_, reason);
    return files_ != nullptr || refuse("the archive cannot be read: " + reason);
}

/// An archive without a manifest.
bool KvCReleaseCheck::acceptPlain() {
    std::string reason;
    if (files_->signatures(reason) || !reason.empty()) {
        return refuse("it has signatures and no manifest");
    }
    if (trust_ && isAbsent(archive_)) {
        return refuse("there is no such folder or package");
    }
    if (trust_ && !options_.acceptUnsealed) {
        return refuse("it is not sealed, and only archives of signers who are trusted are accepted");
    }
    release_.isUnsealedAccepted = trust_.has_value();
    return true;
}

/// A manifest without signatures.
bool KvCReleaseCheck::acceptUnsigned() {
    if (trust_ && !options_.acceptUnsealed) {
        return refuse("it is not signed, and only archives of signers who are trusted are accepted");
    }
    release_.isUnsealedAccepted = trust_.has_value();
    return true;
}

bool KvCReleaseCheck::hasGoodSignatures(const std::string& manifestText) {
    const KvTSha256 digest = sha256Of(bytesOf(manifestText));
    release_.seal = KvESeal::sealed;
    release_.manifestDigest = hexOf(digest);
    if (trust_ && trust_->revokes(digest)) {
        return refuse("its manifest was revoked");
    }
    std::string reason;
    const std::optional<std::string> blocks = files_->signatures(reason);
    if (!blocks) {
        return reason.empty() ? acceptUnsigned() : refuse("the signature cannot be read: " + reason);
    }
    const std::optional<std::vector<KvCSshSignature>> signatures = readSignatures(*blocks, reason);
    if (!signatures) {
        return refuse("the signature does not hold: " + reason);
    }
    signers_ = keysOf(*signatures);
    // A key of a stranger is not calculated with before somebody who may be trusted has signed.
    const KvTAllowedSigner* const trusted = trust_ ? trust_->trustedOf(signers_, std::nullopt, reason) : nullptr;
    if (trust_ && trusted == nullptr) {
        return refuse("it is not signed by anybody who is trusted: " + reason);
    }
    const KvCSshKey* const first = trusted != nullptr ? &trusted->key : nullptr;
    if (const std::string why = whyNotSigned(*signatures, bytesOf(manifestText), first); !why.empty()) {
        return refuse("the signature does not hold: " + why);
    }
    release_.seal = KvESeal::signedByStranger;
    release_.keyKind = signers_.front().kindName();
    release_.keyFingerprint = signers_.front().fingerprint();
    return true;
}

bool KvCReleaseCheck::readManifest(const std::string& text) {
    std::string reason;
    manifest_ = parseManifest(text, reason);
    if (!manifest_) {
        return refuse("the manifest is not valid: " + reason);
    }
    for (const KvTSealedFile& file : manifest_->files) {
        sealed_.emplace(file.name, &file);
    }
    release_.created = textOfMoment(manifest_->created);
    return true;
}

/// Somebody trusted may have signed at the time of the manifest.
bool KvCReleaseCheck::isSignedInTime() {
    if (!trust_ || signers_.empty()) {
        return true;
    }
    std::string reason;
    const KvTAllowedSigner* const signer = trust_->trustedOf(signers_, manifest_->created, reason);
    if (signer == nullptr) {
        return refuse("it is not signed by anybody who is trusted: " + reason);
    }
    release_.seal = KvESeal::trusted;
    release_.signer = signer->principals;
    release_.keyKind = signer->key.kindName();
    release_.keyFingerprint = signer->key.fingerprint();
    return true;
}

/// All faults are named at once: if there is one already, what the other files hold is looked at, too.
bool KvCReleaseCheck::hasItsFiles() {
    for (KvTStoredDifference& difference : files_->differencesFrom(*manifest_)) {
        if (const auto found = sealed_.find(difference.name); found != sealed_.end()) {
            taken_.insert(found->first);
        }
        faults_.push_back(std::move(difference.fault));
    }
    return faults_.empty() || (!isPackage() && takeRest());
}

std::vector<std::string> KvCReleaseCheck::topFiles() const {
    std::vector<std::string> names;
    for (const auto& [name, file] : sealed_) {
        if (name.find('/') == std::string_view::npos) {
            names.emplace_back(name);
        }
    }
    return names;
}

bool KvCReleaseCheck::makeCopies() {
    std::string reason;
    copies_ = KvCPrivateFolder::create(reason);
    return copies_ != nullptr || refuse("it cannot be copied to a private folder: " + reason);
}

bool KvCReleaseCheck::lists(const std::set<std::string>& names) {
    for (const std::string& name : names) {
        if (!sealed_.contains(sealedNameOf(name))) {
            (void)refuse(shownInQuotes(name) + " is not in its manifest");
        }
    }
    return faults_.empty();
}

bool KvCReleaseCheck::take(const std::set<std::string>& names) {
    std::set<const KvTSealedFile*> files;
    for (const std::string& name : names) {
        const auto found = sealed_.find(sealedNameOf(name));
        if (found != sealed_.end() && !taken_.contains(found->first)) {
            files.insert(found->second);
        }
    }
    const bool isCopied = hasRoomFor(files);
    for (const KvTSealedFile* file : files) {
        takeFile(*file, isCopied);
    }
    return faults_.empty();
}

bool KvCReleaseCheck::takeRest() {
    for (const KvTSealedFile& file : manifest_->files) {
        if (!taken_.contains(file.name)) {
            takeFile(file, false);
        }
    }
    return faults_.empty();
}

/// False without a folder for copies, too; nothing is refused then.
bool KvCReleaseCheck::hasRoomFor(const std::set<const KvTSealedFile*>& files) {
    if (copies_ == nullptr) {
        return false;
    }
    const auto needed = std::accumulate(files.begin(), files.end(), std::uint64_t{0},
                                        [](std::uint64_t sum, const KvTSealedFile* file) { return sum + file->size; });
    const std::uint64_t room = copies_->freeSpace();
    return needed <= room || refuse("its private copy needs " + std::to_string(needed) + " bytes, and only " +
                                    std::to_string(room) + " are free");
}

void KvCReleaseCheck::takeFile(const KvTSealedFile& file, bool isCopied) {
    taken_.insert(file.name);
    FileStream copy = isCopied ? copies_->createFile(file.name) : nullptr;
    if (isCopied && copy == nullptr) {
        (void)refuse("'" + file.name + "' cannot be copied");
        return;
    }
    KvCSha256 digest;
    bool isWritten = true;
    std::string reason = "cannot be read";
    const bool isRead = files_->read(
        file,
        [&](KvTBytes bytes) {
            digest.add(bytes);
            isWritten = copy == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), copy.get()) == bytes.size();
            return isWritten;
        },
        reason);
    if (copy != nullptr && std::fclose(copy.release()) != 0) {
        isWritten = false;
    }
    if (!isWritten) {
        (void)refuse("'" + file.name + "' cannot be copied");
    } else if (!isRead) {
        (void)refuse("'" + file.name + "' " + reason);
    } else if (digest.digest() != file.sha256) {
        (void)refuse("'" + file.name + "' was changed");
    }
}
