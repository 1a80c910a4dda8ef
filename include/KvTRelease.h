#pragma once

#include <cstdint>
#include <string>

// An archive as a release: whether it is whole, and who vouches for it. Texts are UTF-8.

namespace KvNReflasher {

/// How far the content of an archive is vouched for.
enum class KvESeal : std::uint8_t {
    /// It has no manifest: nobody knows whether it is whole.
    none,
    /// It is what its manifest says; nobody has signed the manifest.
    sealed,
    /// It is what its manifest says, which was signed by a key that is not trusted here.
    signedByStranger,
    /// It is what its manifest says, which was signed by somebody who is trusted.
    trusted
};

/// The conditions on which an archive is accepted. Kept as long as the session.
struct KvTReleaseOptions {
    /// Folder with the file "allowed_signers" and, if anything was revoked, "revoked". Empty: nobody is trusted, and
    /// archives are accepted unless they are not what their manifest says or their signature does not hold.
    std::wstring trustFolder;
    /// With a trust folder: an archive without manifest or signature is accepted, too. What is there must hold.
    bool acceptUnsealed = false;
};

/// The release record of an archive that was accepted.
struct KvTRelease {
    /// How far its content is vouched for.
    KvESeal seal = KvESeal::none;
    /// SHA-256 of the manifest, 64 hexadecimal digits; empty without one.
    std::string manifestDigest;
    /// When it was sealed, as the manifest says; RFC 3339, UTC. Empty without a manifest.
    std::string created;
    /// Who has signed it, as the trust folder calls them; empty unless somebody trusted has.
    std::string signer;
    /// The key that counts: that of the signer, otherwise that of the first signature. Empty without a signature.
    /// @{
    /// Kind, such as "ssh-ed25519".
    std::string keyKind;
    /// "SHA256:" and the digest in base64, as tools for keys show it.
    std::string keyFingerprint;
    /// @}
    /// The trust folder that was asked; empty if there was none.
    std::string trustFolder;
    /// It was accepted only because archives that are not signed were to be accepted.
    bool isUnsealedAccepted = false;
};

} // namespace KvNReflasher
