#include "ReleaseCheck.h"

#include "FileNames.h"
#include "Files.h"
#include "KvCStringConversion.h"
#include "SshSignature.h"
#include "Timestamp.h"

#include <algorithm>
#include <utility>

using namespace KvNReflasher;

std::string sealedNameOf(std::string_view name) {
    std::string sealed = lowerCaseOf(name);
    std::replace(sealed.begin(), sealed.end(), '\\', '/');
    return sealed;
}

bool KvCReleaseCheck::refuse(std::string_view fault) {
    faults_.emplace_back(fault);
    return false;
}

bool KvCReleaseCheck::open() {
    if (!readTrust()) {
        return false;
    }
    std::string reason;
    isPackage_ = ::isPackage(archive_);
    files_ = openStoredFiles(archive_, reason);
    if (files_ == nullptr) {
        return refuse("the archive cannot be read: " + reason);
    }
    const std::optional<std::string> text = files_->manifest(reason);
    if (!text) {
        return reason.empty() ? acceptPlain() : refuse("the manifest cannot be read: " + reason);
    }
    const KvTSha256 digest = sha256Of(bytesOf(*text));
    release_.seal = KvESeal::sealed;
    release_.manifestDigest = hexOf(digest);
    // Nothing that a stranger has written is looked into before its signature holds.
    std::vector<KvCSshKey> signers;
    if (!readSignatures(*text, signers)) {
        return false;
    }
    manifest_ = parseManifest(*text, reason);
    if (!manifest_) {
        return refuse("the manifest is not valid: " + reason);
    }
    release_.created = textOfMoment(manifest_->created);
    if (!judgeSigners(signers, digest)) {
        return false;
    }
    faults_ = files_->differencesFrom(*manifest_);
    return faults_.empty();
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

/// An archive without a manifest.
bool KvCReleaseCheck::acceptPlain() {
    std::string reason;
    if (files_->signatures(reason) || !reason.empty()) {
        return refuse("it has signatures and no manifest");
    }
    if (trust_ && !options_.acceptUnsealed) {
        return refuse("it is not sealed, and only archives of signers who are trusted are accepted");
    }
    release_.isUnsealedAccepted = trust_.has_value();
    return true;
}

bool KvCReleaseCheck::readSignatures(const std::string& manifestText, std::vector<KvCSshKey>& signers) {
    std::string reason;
    const std::optional<std::string> blocks = files_->signatures(reason);
    if (!blocks) {
        return reason.empty() || refuse("the signature cannot be read: " + reason);
    }
    std::optional<std::vector<KvCSshKey>> found = signersOf(*blocks, bytesOf(manifestText), reason);
    if (!found) {
        return refuse("the signature does not hold: " + reason);
    }
    signers = std::move(*found);
    release_.seal = KvESeal::signedByStranger;
    release_.keyKind = signers.front().kindName();
    release_.keyFingerprint = signers.front().fingerprint();
    return true;
}

/// Asks the trust folder.
bool KvCReleaseCheck::judgeSigners(const std::vector<KvCSshKey>& signers, const KvTSha256& digest) {
    if (!trust_) {
        return true;
    }
    if (trust_->revokes(digest)) {
        return refuse("its manifest was revoked");
    }
    if (signers.empty()) {
        release_.isUnsealedAccepted = options_.acceptUnsealed;
        return options_.acceptUnsealed ||
               refuse("it is not signed, and only archives of signers who are trusted are accepted");
    }
    std::string reason;
    const KvTAllowedSigner* const signer = trust_->trustedOf(signers, manifest_->created, reason);
    if (signer == nullptr) {
        return refuse("it is not signed by anybody who is trusted: " + reason);
    }
    release_.seal = KvESeal::trusted;
    release_.signer = signer->principals;
    release_.keyKind = signer->key->kindName();
    release_.keyFingerprint = signer->key->fingerprint();
    return true;
}

bool KvCReleaseCheck::makeCopies() {
    std::string reason;
    copies_ = KvCPrivateFolder::create(reason);
    if (copies_ == nullptr) {
        return refuse("it cannot be copied to a private folder: " + reason);
    }
    if (copies_->freeSpace() < manifest_->size()) {
        return refuse("its private copy needs " + std::to_string(manifest_->size()) + " bytes, and only " +
                      std::to_string(copies_->freeSpace()) + " are free");
    }
    return true;
}

bool KvCReleaseCheck::take(std::string_view name) {
    const std::string wanted = sealedNameOf(name);
    const auto found = std::find_if(manifest_->files.begin(), manifest_->files.end(),
                                    [&](const KvTSealedFile& file) { return lowerCaseOf(file.name) == wanted; });
    if (found != manifest_->files.end() && !taken_.contains(wanted)) {
        takeFile(*found, true);
    }
    return faults_.empty();
}

bool KvCReleaseCheck::takeRest(const std::set<std::string>& names) {
    std::set<std::string> wanted;
    std::transform(names.begin(), names.end(), std::inserter(wanted, wanted.end()), sealedNameOf);
    for (const KvTSealedFile& file : manifest_->files) {
        const std::string name = lowerCaseOf(file.name);
        if (!taken_.contains(name)) {
            takeFile(file, wanted.contains(name));
        }
    }
    return faults_.empty();
}

bool KvCReleaseCheck::takeAll() {
    for (const KvTSealedFile& file : manifest_->files) {
        takeFile(file, true);
    }
    return faults_.empty();
}

void KvCReleaseCheck::takeFile(const KvTSealedFile& file, bool isCopied) {
    taken_.insert(lowerCaseOf(file.name));
    FileStream copy;
    if (isCopied && copies_ != nullptr) {
        const std::wstring path = copies_->path() + L"\\" + toWide(KvCString(file.name.c_str()));
        copy = copies_->makeFoldersOf(file.name) ? openForWriting(path) : nullptr;
        if (copy == nullptr) {
            (void)refuse("'" + file.name + "' cannot be copied");
            return;
        }
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
    if (copy != nullptr && std::fflush(copy.get()) != 0) {
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
