#include "SealCommand.h"

#include "KvReleases.h"
#include "PathTexts.h"
#include "ReplacedFile.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

using namespace KvNReflasher;

namespace {

/// The time of sealing, seconds since 1970: now, or the time that a build which is to be repeated sets; nothing if that
/// is not a number.
std::optional<std::int64_t> timeOfSealing() {
    const char* const given = std::getenv("SOURCE_DATE_EPOCH");
    if (given == nullptr) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::seconds>(now).count();
    }
    const std::string_view text(given);
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional(seconds) : std::nullopt;
}

/// Writes the manifest, unless it is there already. A signature of another one would not hold any more.
KvTVerdict write(const std::string& folder, const KvTSealing& sealing) {
    if (sealing.isUnchanged) {
        return {};
    }
    const std::string path = folder + "/manifest.json";
    std::error_code ignored;
    if (std::filesystem::exists(filePath(path + ".sig"), ignored)) {
        return {KvEFailure::output,
                quotedPath(path + ".sig") + " signs another manifest: remove it, seal again, and sign anew"};
    }
    ReplacedFile file;
    int error = file.open(filePath(path));
    if (error == 0) {
        error = file.commit(sealing.manifest);
    }
    return error == 0 ? KvTVerdict() : KvTVerdict{KvEFailure::output, fileFailure("cannot write", path, error)};
}

std::string adviceFor(const std::string& folder, const KvTSealing& sealing) {
    const std::string path = folder + "/manifest.json";
    const std::string sign = "ssh-keygen -Y sign -n kvreflash-archive -f KEY ";
    return (sealing.isUnchanged ? "Sealed already: " : "Sealed: ") + counted(sealing.fileCount, "file") + ", " +
           std::to_string(sealing.size) + " bytes, manifest SHA-256 " + sealing.manifestDigest +
           ".\nSign with: " + sign + quotedPath(path) + "\nA second signer adds a signature with: " + sign + "< " +
           quotedPath(path) + " >> " + quotedPath(path + ".sig") + "\n";
}

} // namespace

void ReleasedFolder::addTo(CommandSyntax& syntax) {
    syntax.addArgument("DIR", "Folder of the firmware archive", keptIn(folder), Occurs::once);
    syntax.addOption("-d,--description", "FILE", "Description file inside the archive folder (default: archive.json)",
                     keptIn(description));
}

ExitCode SealCommand::run() {
    const std::optional<std::int64_t> created = timeOfSealing();
    if (!created) {
        return conclude({KvEFailure::archive, "SOURCE_DATE_EPOCH is not a number of seconds since 1970"});
    }
    const KvTSealing sealing = sealArchive({wideOf(archive.folder), wideOf(archive.description), *created});
    for (const std::string& fault : sealing.faults) {
        say(withPastablePath(fault, archive.folder, archive.description));
    }
    KvTVerdict verdict = sealing.verdict;
    verdict.message = withPastablePath(std::move(verdict.message), archive.folder, archive.description);
    if (verdict.isSuccess()) {
        verdict = write(archive.folder, sealing);
    }
    if (verdict.isSuccess()) {
        writeText(stdout, adviceFor(archive.folder, sealing));
    }
    return conclude(verdict);
}
