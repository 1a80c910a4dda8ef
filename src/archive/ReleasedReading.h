#pragma once

#include "KvCFirmwareArchive.h"
#include "ReleaseCheck.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

class KvCConsoleWriter;

/// How the update files of a sealed archive are treated while they are verified.
enum class KvESealedFiles : std::uint8_t {
    /// They are copied to a private folder: nothing else is read later.
    copied,
    /// They are verified where they are; from a package those are copied that the archive is read from.
    verified,
    /// They are verified where they are; from a package those are copied that the description names.
    inspected
};

/// Reads an archive of which it is asked what vouches for it. The copy that it may have been read from lasts as long as
/// the object.
class KvCReleasedReading {
public:
    /// All but `release` must outlive the object.
    KvCReleasedReading(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                       const KvNReflasher::KvTReleaseOptions& release)
        : writer_(writer), options_(options), check_(options.archiveFolder, release) {}

    /// Reads `archive`, which the options name. False if it is not accepted or cannot be read; that is printed.
    [[nodiscard]] bool read(KvCFirmwareArchive& archive, KvESealedFiles files);

    // The steps of read(), for those who do not need all of it. Each follows the one before, and prints its failure.

    /// Asks what vouches for the archive.
    [[nodiscard]] bool open();
    /// The archive has a manifest.
    [[nodiscard]] bool isSealed() const { return check_.isSealed(); }
    /// Reads the description of the archive and verifies all files of a sealed one.
    [[nodiscard]] bool readDescription(KvCFirmwareArchive& archive, KvESealedFiles files);

    /// Why the last read() has failed: one line without end, UTF-8. Empty if it has not.
    [[nodiscard]] const std::string& refusal() const { return refusal_; }
    /// The faults for which it was refused before or beside its description: a sentence each.
    [[nodiscard]] const std::vector<std::string>& faults() const { return check_.faults(); }
    /// The release record of the archive that was accepted; nothing if none was.
    [[nodiscard]] std::optional<KvNReflasher::KvTRelease> release() const;

private:
    [[nodiscard]] bool readSealedDescription(KvCFirmwareArchive& archive, KvESealedFiles files);
    [[nodiscard]] bool readUpdateFiles(KvCFirmwareArchive& archive);
    [[nodiscard]] std::set<std::string> otherDescriptions() const;
    [[nodiscard]] bool refuse();

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvCReleaseCheck check_;
    bool isAccepted_ = false;
    std::string refusal_;
};
