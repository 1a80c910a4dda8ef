#pragma once

#include "SshKey.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A line of a file of allowed signers without its key.
struct KvTSignerRights {
    /// Who they are, as the file writes it.
    std::string principals;
    /// Patterns of the purposes that the key may sign for, separated by ","; nothing: for any.
    std::optional<std::string> purposes;
    /// When the key may sign; nothing: no limit.
    /// @{
    std::optional<std::chrono::sys_seconds> validAfter;
    std::optional<std::chrono::sys_seconds> validBefore;
    /// @}

    /// Why the key does not count for what was made at that moment, or, without one, at any; empty if it counts.
    [[nodiscard]] std::string whyNotTrusted(std::optional<std::chrono::sys_seconds> created) const;
};

/// A line of a file of allowed signers.
struct KvTAllowedSigner : KvTSignerRights {
    KvCSshKey key;
};

/// Who may sign archives: a file as `ssh-keygen -Y verify` takes it.
class KvCAllowedSigners {
public:
    /// Reads the file. A line that is not understood, or that has an option which is not known, lets nobody sign.
    explicit KvCAllowedSigners(std::string_view text);

    [[nodiscard]] const std::vector<KvTAllowedSigner>& signers() const { return signers_; }
    /// The lines that let nobody sign: "line 3: " and why.
    [[nodiscard]] const std::vector<std::string>& refusedLines() const { return refusedLines_; }

private:
    std::vector<KvTAllowedSigner> signers_;
    std::vector<std::string> refusedLines_;
};
