#include "AllowedSigners.h"

#include "FileNames.h"
#include "ShownText.h"
#include "SshSignature.h"
#include "Timestamp.h"
#include "TrustLines.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::string_view blanks = " \t";

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(blanks)));
}

/// Takes the first word from `text`. Blanks within double quotes do not end it; nothing if a quote does not end.
std::optional<std::string_view> takeWord(std::string_view& text) {
    skipBlanks(text);
    bool isQuoted = false;
    std::size_t end = 0;
    while (end < text.size() && (isQuoted || blanks.find(text[end]) == std::string_view::npos)) {
        isQuoted = isQuoted != (text[end] == '"');
        ++end;
    }
    if (isQuoted) {
        return std::nullopt;
    }
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    skipBlanks(text);
    return word;
}

/// The text between the quotes of an option's value; nothing if it has none.
std::optional<std::string_view> unquoted(std::string_view value) {
    if (value.size() < 2 || value.front() != '"' || value.back() != '"') {
        return std::nullopt;
    }
    value.remove_prefix(1);
    value.remove_suffix(1);
    return value;
}

/// True if `text` is as `pattern` says, in which "*" stands for any characters and "?" for one.
bool matchesPattern(std::string_view text, std::string_view pattern) {
    std::size_t position = 0;
    std::size_t expected = 0;
    // The last "*" takes one character more whenever what follows it does not fit; a longer way is not better.
    std::size_t star = std::string_view::npos;
    std::size_t taken = 0;
    while (position < text.size()) {
        const char sign = expected < pattern.size() ? pattern[expected] : '\0';
        if (sign == '*') {
            star = expected++;
            taken = position;
        } else if (expected < pattern.size() && (sign == '?' || sign == text[position])) {
            ++position;
            ++expected;
        } else if (star != std::string_view::npos) {
            expected = star + 1;
            position = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', expected) == std::string_view::npos;
}

/// True if one of the patterns fits and none with a "!" in front of it does.
bool matchesList(std::string_view text, std::string_view patterns) {
    bool isMatched = false;
    while (!patterns.empty()) {
        std::string_view pattern = patterns.substr(0, patterns.find(','));
        patterns.remove_prefix(std::min(patterns.size(), pattern.size() + 1));
        const bool isNegated = pattern.starts_with('!');
        pattern.remove_prefix(isNegated ? 1 : 0);
        if (matchesPattern(text, pattern)) {
            if (isNegated) {
                return false;
            }
            isMatched = true;
        }
    }
    return isMatched;
}

/// Reads a line. `reason` is why it lets nobody sign.
class SignerLine {
public:
    explicit SignerLine(std::string& reason) : reason_(reason) {}

    std::optional<KvTAllowedSigner> read(const KvTTrustLine& whole) {
        if (whole.hasControl) {
            return refuse("it has a control character");
        }
        std::string_view line = whole.text;
        KvTSignerRights rights;
        const std::optional<std::string_view> principals = takeWord(line);
        std::optional<std::string_view> kind = takeWord(line);
        if (!principals || !kind || kind->empty()) {
            return refuse("it is not a list of signers, a kind of key and a key");
        }
        rights.principals = unquoted(*principals).value_or(*principals);
        // Without the signers an option would stand in their place, and limit nothing.
        if (rights.principals.empty() || principals->find("=\"") != std::string_view::npos || isOption(*principals)) {
            return refuse("it names nobody");
        }
        if (!isUtf8(rights.principals) || !hiddenCharacterOf(rights.principals).empty()) {
            return refuse("its signers have characters that do not show as what they are");
        }
        if (rights.principals.find('!') != std::string::npos) {
            return refuse("its signers hold a '!', which leaves nobody out here");
        }
        // Options stand before the kind of the key, which never has a "=" and is none of them.
        if (kind->find('=') != std::string_view::npos || isOption(*kind)) {
            if (!readOptions(*kind, rights)) {
                return std::nullopt;
            }
            kind = takeWord(line);
        }
        const std::optional<std::string_view> base64 = takeWord(line);
        if (!kind || kind->empty() || !base64 || base64->empty()) {
            return refuse("it has no key");
        }
        std::optional<KvCSshKey> key = KvCSshKey::parse(*kind, *base64, reason_);
        return key ? std::optional(KvTAllowedSigner{std::move(rights), std::move(*key)}) : std::nullopt;
    }

private:
    std::nullopt_t refuse(std::string reason) {
        reason_ = std::move(reason);
        return std::nullopt;
    }

    /// True of a word that can only be an option without a value.
    static bool isOption(std::string_view word) { return lowerCaseOf(word).starts_with("cert-authority"); }

    bool readOptions(std::string_view options, KvTSignerRights& rights) {
        for (;;) {
            const std::size_t end = endOfOption(options);
            if (!readOption(options.substr(0, end), rights)) {
                return false;
            }
            if (end == options.size()) {
                return true;
            }
            options.remove_prefix(end + 1);
        }
    }

    /// Where the next "," outside of quotes is.
    static std::size_t endOfOption(std::string_view options) {
        bool isQuoted = false;
        std::size_t end = 0;
        while (end < options.size() && (isQuoted || options[end] != ',')) {
            isQuoted = isQuoted != (options[end] == '"');
            ++end;
        }
        return end;
    }

    bool readOption(std::string_view option, KvTSignerRights& rights) {
        const std::size_t sign = option.find('=');
        const std::string name = lowerCaseOf(option.substr(0, sign));
        const std::optional<std::string_view> value =
            sign == std::string_view::npos ? std::nullopt : unquoted(option.substr(sign + 1));
        if (name == "cert-authority") {
            reason_ = "keys of certificate authorities are not taken";
            return false;
        }
        if (name == "namespaces" && value && !rights.purposes) {
            rights.purposes = *value;
            return true;
        }
        if (name == "valid-after" && value && !rights.validAfter) {
            return readMoment(*value, name, rights.validAfter);
        }
        if (name == "valid-before" && value && !rights.validBefore) {
            return readMoment(*value, name, rights.validBefore);
        }
        reason_ = std::string("its option ").append(shownInQuotes(option)) +
                  " is not known, stands twice or has no value in quotes";
        return false;
    }

    bool readMoment(std::string_view value, const std::string& name, std::optional<std::chrono::sys_seconds>& moment) {
        moment = momentOfSigner(value);
        if (!moment) {
            reason_ = shownInQuotes(value) + " is not a time for " + name;
        }
        return moment.has_value();
    }

    std::string& reason_;
};

} // namespace

std::string KvTSignerRights::whyNotTrusted(std::optional<std::chrono::sys_seconds> created) const {
    if (purposes && !matchesList(signatureNamespace, *purposes)) {
        return "may not sign for '" + std::string(signatureNamespace) + "'";
    }
    if (created && validAfter && *created < *validAfter) {
        return "may sign after " + textOfMoment(*validAfter) + " only";
    }
    if (created && validBefore && *created > *validBefore) {
        return "may sign before " + textOfMoment(*validBefore) + " only";
    }
    return {};
}

KvCAllowedSigners::KvCAllowedSigners(std::string_view text) {
    for (const KvTTrustLine& line : trustLinesOf(text)) {
        std::string reason;
        if (std::optional<KvTAllowedSigner> signer = SignerLine(reason).read(line)) {
            signers_.push_back(std::move(*signer));
        } else {
            refusedLines_.push_back(line.refusedFor(reason));
        }
    }
}
