#pragma once

#include "AllowedSigners.h"
#include "Crypto.h"
#include "SshKey.h"

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Keys and manifests that do not count any more: one a line, a public key as SSH writes it, its fingerprint
/// ("SHA256:..."), or the SHA-256 of a manifest (64 hexadecimal digits). Empty lines and those that begin with "#" are
/// comments.
class KvCRevocations {
public:
    /// Nothing, with a `reason`, if there is a line that is none of these: it may be the one that counts.
    [[nodiscard]] static std::optional<KvCRevocations> parse(std::string_view text, std::string& reason);

    [[nodiscard]] bool hasKey(const KvCSshKey& key) const { return fingerprints_.contains(key.fingerprint()); }
    [[nodiscard]] bool hasManifest(const KvTSha256& digest) const { return manifests_.contains(hexOf(digest)); }

private:
    [[nodiscard]] std::string add(std::string_view line);

    std::set<std::string> fingerprints_;
    std::set<std::string> manifests_;
};

/// Whom a plant trusts: a folder with the files "allowed_signers" and, if anything was revoked, "revoked".
class KvCTrustFolder {
public:
    /// Reads the folder. Nothing, with a `reason`, if it or one of its files cannot be read.
    [[nodiscard]] static std::optional<KvCTrustFolder> read(const std::wstring& folder, std::string& reason);

    /// A manifest of this digest does not count any more.
    [[nodiscard]] bool revokes(const KvTSha256& manifest) const { return revoked_.hasManifest(manifest); }
    /// The line of the first of `signers` that may have signed what was made at that moment or, without one, at any;
    /// null, with a `reason`, if none may. It lasts as long as the object.
    [[nodiscard]] const KvTAllowedSigner* trustedOf(const std::vector<KvCSshKey>& signers,
                                                    std::optional<std::chrono::sys_seconds> created,
                                                    std::string& reason) const;

private:
    KvCTrustFolder(KvCAllowedSigners allowed, KvCRevocations revoked)
        : allowed_(std::move(allowed)), revoked_(std::move(revoked)) {}

    [[nodiscard]] const KvTAllowedSigner*
    trusted(const KvCSshKey& signer, std::optional<std::chrono::sys_seconds> created, std::string& reason) const;

    KvCAllowedSigners allowed_;
    KvCRevocations revoked_;
};
