// A trust folder: who may sign archives, and what was revoked.

#include "AllowedSigners.h"
#include "Base64.h"
#include "FileNames.h"
#include "FuzzFolder.h"
#include "FuzzInput.h"
#include "Property.h"
#include "Signatures.h"
#include "SshSignature.h"
#include "Timestamp.h"
#include "TrustFolder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using std::chrono::sys_seconds;

/// Takes the text before the next of the separators, and this separator, from `text`.
std::string_view takePart(std::string_view& text, std::string_view separators) {
    const std::string_view part = text.substr(0, text.find_first_of(separators));
    text.remove_prefix(std::min(text.size(), part.size() + 1));
    return part;
}

std::vector<std::string_view> partsOf(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        parts.push_back(takePart(text, separators));
    }
    return parts;
}

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view blanks = " \t";
    line = line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0));
    line.remove_prefix(std::min(line.size(), line.find_first_not_of(blanks)));
    return line.substr(0, line.find_last_not_of(blanks) + 1);
}

bool hasControl(std::string_view line) {
    return std::any_of(line.begin(), line.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte == 0x7F || (byte < 0x20 && byte != '\t');
    });
}

/// True of a line, without blanks around it, that says nothing.
bool isComment(std::string_view line) {
    return line.empty() || line.front() == '#';
}

/// "line 1: " and why, as the line of this number says it.
std::string reasonAt(std::string_view reason, std::size_t number) {
    constexpr std::string_view first = "line 1: ";
    require(reason.starts_with(first) && reason.size() > first.size(), "A line that is refused has a reason.");
    return "line " + std::to_string(number) + ": " + std::string(reason.substr(first.size()));
}

std::optional<KvCSshKey> keyOf(std::string_view kind, std::string_view base64) {
    std::string ignored;
    return KvCSshKey::parse(kind, base64, ignored);
}

const std::vector<KvCSshKey>& knownKeys() {
    static const std::vector<KvCSshKey> keys = [] {
        std::vector<KvCSshKey> all;
        for (const std::string_view line : {ed25519Key, ecdsaKey, rsaKey}) {
            const std::size_t blank = line.find(' ');
            all.push_back(keyOf(line.substr(0, blank), line.substr(blank + 1)).value());
        }
        return all;
    }();
    return keys;
}

bool isSame(const KvTAllowedSigner& a, const KvTAllowedSigner& b) {
    return a.principals == b.principals && a.key == b.key && a.purposes == b.purposes && a.validAfter == b.validAfter &&
           a.validBefore == b.validBefore;
}

/// True if "*" and "?" of the pattern can stand for what is at their places in `text`.
bool isLike(std::string_view text, std::string_view pattern) {
    std::vector<bool> isReached(text.size() + 1); // how much of the text the pattern so far can stand for
    isReached.front() = true;
    for (const char character : pattern) {
        std::vector<bool> isNext(isReached.size());
        for (std::size_t length = 0; length < isNext.size(); ++length) {
            const bool isBefore = length > 0 && (character == '*' ? isNext[length - 1] : isReached[length - 1]);
            isNext[length] = character == '*' ? isReached[length] || isBefore
                                              : isBefore && (character == '?' || character == text[length - 1]);
        }
        isReached = std::move(isNext);
    }
    return isReached.back();
}

bool isPurpose(std::string_view patterns) {
    bool isListed = false;
    for (std::string_view pattern : partsOf(patterns, ",")) {
        const bool isExcluded = pattern.starts_with('!');
        if (isLike(signatureNamespace, pattern.substr(isExcluded ? 1 : 0))) {
            if (isExcluded) {
                return false;
            }
            isListed = true;
        }
    }
    return isListed;
}

/// Without a moment: at any.
bool maySign(const KvTAllowedSigner& signer, std::optional<sys_seconds> created) {
    const bool isInTime = !created || ((!signer.validAfter || *signer.validAfter <= *created) &&
                                       (!signer.validBefore || *created <= *signer.validBefore));
    return isInTime && (!signer.purposes || isPurpose(*signer.purposes));
}

/// Moments around which what a signer may do changes, and some others.
std::vector<std::optional<sys_seconds>> momentsOf(const KvTAllowedSigner& signer) {
    constexpr std::chrono::seconds second(1);
    std::vector<std::optional<sys_seconds>> moments{std::nullopt, sys_seconds(), sys_seconds(1790000000 * second)};
    for (const std::optional<sys_seconds>& limit : {signer.validAfter, signer.validBefore}) {
        if (limit) {
            moments.insert(moments.end(), {*limit - second, *limit, *limit + second});
        }
    }
    return moments;
}

/// The digits of a moment in the year 0 or later.
std::string digitsOf(sys_seconds moment) {
    std::string digits = textOfMoment(moment);
    std::erase_if(digits, [](char character) { return character < '0' || character > '9'; });
    return digits;
}

/// Another line that says the same, given the words for the key.
std::string lineOf(const KvTAllowedSigner& signer, std::string_view kind, std::string_view base64) {
    std::string options;
    const auto add = [&](std::string_view name, std::string_view value) {
        options.append(options.empty() ? "" : ",").append(name).append("=\"").append(value).append("\"");
    };
    if (signer.validBefore) {
        add("valid-BEFORE", digitsOf(*signer.validBefore) + "Z");
    }
    if (signer.purposes) {
        add("Namespaces", *signer.purposes);
    }
    if (signer.validAfter) {
        add("valid-after", digitsOf(*signer.validAfter) + "Z");
    }
    std::string line = "\"" + signer.principals + "\"\t" + options + " ";
    return line.append(kind).append("  ").append(base64).append(" comment");
}

std::vector<std::string_view> wordsOf(std::string_view line) {
    std::vector<std::string_view> words = partsOf(line, " \t");
    std::erase(words, std::string_view());
    return words;
}

/// Where the two words for this key are; the number of words if they are not there.
std::size_t placeOf(const KvCSshKey& key, const std::vector<std::string_view>& words) {
    for (std::size_t index = 0; index + 1 < words.size(); ++index) {
        if (keyOf(words[index], words[index + 1]) == key) {
            return index;
        }
    }
    return words.size();
}

void checkSigner(const KvTAllowedSigner& signer, std::string_view line) {
    require(!signer.principals.empty(), "Who may sign has a name.");
    const std::vector<std::string_view> words = wordsOf(line);
    const std::size_t place = placeOf(signer.key, words);
    require(place < words.size(), "Who may sign has the key that stands in the line.");
    const bool isLimited = signer.purposes || signer.validAfter || signer.validBefore;
    const bool isWord = signer.principals.find_first_of(" \t\"") == std::string::npos;
    require(isLimited || !isWord || place == 1, "An option that is not understood lets nobody sign.");
    for (const std::optional<sys_seconds>& moment : momentsOf(signer)) {
        const std::string why = signer.whyNotTrusted(moment);
        require(why.empty() == maySign(signer, moment), "Somebody may sign what and when the line says.");
    }
    // A quotation mark in a quoted text would end it.
    if ((signer.principals + signer.purposes.value_or("")).find('"') == std::string::npos) {
        const KvCAllowedSigners again(lineOf(signer, words[place], words[place + 1]));
        require(again.signers().size() == 1 && isSame(again.signers().front(), signer),
                "A line that says the same is read the same.");
    }
}

KvCAllowedSigners checkSigners(std::string_view file) {
    KvCAllowedSigners all(file);
    std::size_t number = 0;
    std::size_t signerCount = 0;
    std::size_t refusedCount = 0;
    for (const std::string_view line : partsOf(file, "\n")) {
        ++number;
        const std::string_view text = trimmed(line);
        if (isComment(text) && !hasControl(text)) {
            continue;
        }
        const KvCAllowedSigners one(line);
        require(one.signers().size() + one.refusedLines().size() == 1, "A line lets one key sign or is refused.");
        if (one.signers().empty()) {
            require(refusedCount < all.refusedLines().size() &&
                        all.refusedLines()[refusedCount] == reasonAt(one.refusedLines().front(), number),
                    "A line that is refused is named.");
            ++refusedCount;
        } else {
            require(signerCount < all.signers().size() && isSame(all.signers()[signerCount], one.signers().front()),
                    "A line means the same among others.");
            checkSigner(one.signers().front(), text);
            ++signerCount;
        }
    }
    require(signerCount == all.signers().size() && refusedCount == all.refusedLines().size(),
            "Nobody may sign without a line.");
    return all;
}

/// A key or a manifest.
struct Revoked {
    std::string fingerprint;
    std::string digest;
};

/// Number of bytes that a text stands for; 0 if it is not base64.
std::size_t sizeOfBase64(std::string_view text) {
    const std::optional<std::vector<std::uint8_t>> bytes = bytesOfBase64(text);
    return bytes ? bytes->size() : 0;
}

/// The key or manifest that a line, without blanks around it, revokes; nothing if it is not understood.
std::optional<Revoked> revokedBy(std::string_view line) {
    if (hasControl(line)) {
        return std::nullopt;
    }
    const std::vector<std::string_view> words = wordsOf(line);
    const std::string word(words.front());
    constexpr std::size_t digestDigits = 64;
    if (word.size() == digestDigits && word.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
        return Revoked{"", lowerCaseOf(word)};
    }
    constexpr std::string_view mark = "SHA256:";
    if (word.starts_with(mark) && sizeOfBase64(word.substr(mark.size()) + "=") == KvTSha256().size()) {
        return Revoked{word, ""};
    }
    const std::optional<KvCSshKey> key = words.size() > 1 ? keyOf(word, words[1]) : std::nullopt;
    return key ? std::optional(Revoked{key->fingerprint(), ""}) : std::nullopt;
}

KvTSha256 digestOf(std::string_view digits) {
    KvTSha256 digest{};
    for (std::size_t index = 0; index < digest.size(); ++index) {
        digest[index] = static_cast<std::uint8_t>(std::stoi(std::string(digits.substr(2 * index, 2)), nullptr, 16));
    }
    return digest;
}

std::optional<KvCRevocations> checkRevocations(std::string_view file) {
    std::string reason;
    std::optional<KvCRevocations> all = KvCRevocations::parse(file, reason);
    std::vector<Revoked> expected;
    std::size_t number = 0;
    for (const std::string_view whole : partsOf(file, "\n")) {
        ++number;
        const std::string_view line = trimmed(whole);
        if (isComment(line) && !hasControl(line)) {
            continue;
        }
        const std::optional<Revoked> revoked = revokedBy(line);
        if (!revoked) {
            std::string why;
            require(!KvCRevocations::parse(whole, why) && !all, "A line that is not understood may be what counts.");
            require(reason == reasonAt(why, number), "The first line that is not understood is named.");
            return std::nullopt;
        }
        expected.push_back(*revoked);
    }
    require(all.has_value(), "Lines that are understood revoke something.");
    for (const KvCSshKey& key : knownKeys()) {
        const bool isListed = std::any_of(expected.begin(), expected.end(), [&](const Revoked& revoked) {
            return revoked.fingerprint == key.fingerprint();
        });
        require(all->hasKey(key) == isListed, "A key was revoked if a line says so.");
    }
    for (const Revoked& revoked : expected) {
        require(revoked.digest.empty() || all->hasManifest(digestOf(revoked.digest)), "What a line has was revoked.");
    }
    require(!all->hasManifest({}) || file.find(std::string(64, '0')) != std::string::npos,
            "A manifest was revoked if a line says so.");
    return all;
}

/// The first known key that was not revoked and may sign, with the line that says so.
const KvTAllowedSigner* trusted(const KvCAllowedSigners& allowed, const KvCRevocations& revoked,
                                std::optional<sys_seconds> created) {
    for (const KvCSshKey& key : knownKeys()) {
        const auto found =
            std::find_if(allowed.signers().begin(), allowed.signers().end(),
                         [&](const KvTAllowedSigner& signer) { return signer.key == key && maySign(signer, created); });
        if (found != allowed.signers().end() && !revoked.hasKey(key)) {
            return &*found;
        }
    }
    return nullptr;
}

void checkFolder(const FuzzFolder& folder, const KvCAllowedSigners& allowed,
                 const std::optional<KvCRevocations>& revoked) {
    std::string reason;
    const std::optional<KvCTrustFolder> trust = KvCTrustFolder::read(folder.wideText(), reason);
    require(trust.has_value() == revoked.has_value(), "A trust folder is used if all that was revoked is understood.");
    require(trust || !reason.empty(), "A trust folder that is not used has a reason.");
    for (const std::optional<sys_seconds>& created :
         {std::optional<sys_seconds>(), std::optional(sys_seconds(std::chrono::seconds(1790000000)))}) {
        const KvTAllowedSigner* const expected = trust ? trusted(allowed, *revoked, created) : nullptr;
        const KvTAllowedSigner* const found = trust ? trust->trustedOf(knownKeys(), created, reason) : nullptr;
        require((found != nullptr) == (expected != nullptr) && (found == nullptr || isSame(*found, *expected)),
                "Who is trusted is the first who may sign and was not revoked.");
        require(found != nullptr || !reason.empty(), "A refusal to trust has a reason.");
    }
}

} // namespace

/// The file allowed_signers, and behind a zero byte the file revoked.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    FuzzInput input(data, size);
    const std::string_view signers = input.takeText();
    const bool hasRevoked = !input.isEmpty();
    const std::string_view revoked = input.takeRest();
    folder.write("allowed_signers", signers);
    folder.remove("revoked");
    if (hasRevoked) {
        folder.write("revoked", revoked);
    }
    checkFolder(folder, checkSigners(signers), checkRevocations(revoked));
    return 0;
}
