#include "TrustFolder.h"

#include "Base64.h"
#include "FileNames.h"
#include "Files.h"
#include "TrustLines.h"
#include "WholeFiles.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint64_t mostTrustBytes = std::uint64_t{1} << 20U;

bool isDigest(std::string_view text) {
    const auto isDigit = [](char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
    };
    return text.size() == 2 * KvTSha256().size() && std::all_of(text.begin(), text.end(), isDigit);
}

bool isFingerprint(std::string_view text) {
    constexpr std::string_view mark = "SHA256:";
    if (!text.starts_with(mark)) {
        return false;
    }
    const auto digest = bytesOfBase64(std::string(text.substr(mark.size())) + "=");
    return digest && digest->size() == KvTSha256().size();
}

/// The word before the first blank; `rest` receives what follows it.
std::string_view firstWord(std::string_view text, std::string_view& rest) {
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    rest = text.substr(word.size());
    rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(" \t")));
    return word;
}

} // namespace

std::optional<KvCRevocations> KvCRevocations::parse(std::string_view text, std::string& reason) {
    KvCRevocations revocations;
    for (const KvTTrustLine& line : trustLinesOf(text)) {
        const std::string why = line.hasControl ? "it has a control character" : revocations.add(line.text);
        if (!why.empty()) {
            reason = line.refusedFor(why);
            return std::nullopt;
        }
    }
    return revocations;
}

/// Returns why the line is not understood.
std::string KvCRevocations::add(std::string_view line) {
    std::string_view rest;
    const std::string_view word = firstWord(line, rest);
    const std::string lowerCase = lowerCaseOf(word);
    if (isDigest(lowerCase)) {
        manifests_.insert(lowerCase);
        return {};
    }
    if (isFingerprint(word)) {
        fingerprints_.emplace(word);
        return {};
    }
    std::string why;
    std::string_view comment;
    const std::optional<KvCSshKey> key = KvCSshKey::parse(word, firstWord(rest, comment), why);
    if (!key) {
        return "it is neither a public key nor a fingerprint nor the SHA-256 of a manifest: " + why;
    }
    fingerprints_.insert(key->fingerprint());
    return {};
}

std::optional<KvCTrustFolder> KvCTrustFolder::read(const std::wstring& folder, std::string& reason) {
    const std::optional<std::string> allowed = textOfFile(folder + L"\\allowed_signers", mostTrustBytes);
    if (!allowed) {
        reason = "its file allowed_signers cannot be read";
        return std::nullopt;
    }
    const std::wstring revokedPath = folder + L"\\revoked";
    const std::optional<std::string> revoked = textOfFile(revokedPath, mostTrustBytes);
    if (!revoked && !isAbsent(revokedPath)) {
        reason = "its file revoked cannot be read";
        return std::nullopt;
    }
    std::string why;
    std::optional<KvCRevocations> revocations = KvCRevocations::parse(revoked.value_or(""), why);
    if (!revocations) {
        reason = "its file revoked is not understood, " + why;
        return std::nullopt;
    }
    return KvCTrustFolder(KvCAllowedSigners(*allowed), std::move(*revocations));
}

const KvTAllowedSigner* KvCTrustFolder::trustedOf(const std::vector<KvCSshKey>& signers,
                                                  std::optional<std::chrono::sys_seconds> created,
                                                  std::string& reason) const {
    reason.clear();
    for (const KvCSshKey& signer : signers) {
        std::string why;
        if (const KvTAllowedSigner* found = trusted(signer, created, why); found != nullptr) {
            return found;
        }
        reason.append(reason.empty() ? "" : "; ").append("the signer ").append(signer.fingerprint());
        reason.append(" ").append(why);
    }
    for (const std::string& line : allowed_.refusedLines()) {
        reason.append("; allowed_signers, ").append(line);
    }
    return nullptr;
}

const KvTAllowedSigner* KvCTrustFolder::trusted(const KvCSshKey& signer,
                                                std::optional<std::chrono::sys_seconds> created,
                                                std::string& reason) const {
    if (revoked_.hasKey(signer)) {
        reason = "was revoked";
        return nullptr;
    }
    reason = "is not among the allowed signers";
    for (const KvTAllowedSigner& allowed : allowed_.signers()) {
        if (allowed.key != signer) {
            continue;
        }
        std::string why = allowed.whyNotTrusted(created);
        if (why.empty()) {
            return &allowed;
        }
        reason = "(" + allowed.principals + ") " + why;
    }
    return nullptr;
}
