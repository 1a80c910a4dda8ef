#pragma once

#include "Crypto.h"
#include "SshKey.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The purpose that a signature of a manifest states, so that one made for something else does not count.
inline constexpr std::string_view signatureNamespace = "kvreflash-archive";

/// The longest file of signatures that is read, in bytes.
inline constexpr std::size_t mostSignatureBytes = 65536;

/// Reads the file of signatures beside a message: blocks as `ssh-keygen -Y sign` writes them, one after the other, and
/// nothing else. Returns the keys of the signers, in the order of the blocks: each has signed `message` for
/// signatureNamespace. Nothing, with a `reason`, if there is no block, or if any block is not a signature of it.
[[nodiscard]] std::optional<std::vector<KvCSshKey>> signersOf(std::string_view blocks, KvTBytes message,
                                                              std::string& reason);
