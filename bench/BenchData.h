#pragma once

#include "KvCConsoleWriter.h"
#include "KvCFirmwareArchive.h"
#include "KvTCallbacks.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace benchmark::internal {
class Benchmark;
}

/// The sizes at which every part is timed, 100 to 100,000, and the estimate of how the time grows with them.
void atAllSizes(benchmark::internal::Benchmark* benchmark);

/// Ends the program with `message`: what is to be timed does not work.
[[noreturn]] void giveUp(std::string_view message);

/// A folder of its own in the system's folder for temporary files, removed at the end.
class BenchFolder {
public:
    BenchFolder();
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;
    ~BenchFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    /// Writes a file of the folder.
    void write(const std::string& name, std::string_view bytes) const;

private:
    std::filesystem::path path_;
};

/// How the entries of an archive differ.
enum class KvEArchiveShape : std::uint8_t {
    /// Eight entries for each board type, with arrays of variants, board IDs and compatibilities.
    usual,
    /// As `usual`, without checksums.
    withoutChecksums,
    /// One board type for everything; the entries of an identifier differ in their compatibility alone.
    oneBoardType,
    /// Every thousandth entry lists 1,000 board types; the others are usual.
    thousandBoardTypes,
    /// Every thousandth entry has 1,000 elements of "boards"; the others are usual.
    thousandBoards
};

/// Name of the update file of entry `index`.
[[nodiscard]] std::string updateFileName(std::size_t index);

/// The description of an archive with `count` entries.
[[nodiscard]] std::string descriptionText(KvEArchiveShape shape, std::size_t count);

/// A console writer that formats its messages and drops them.
class SilentWriter {
public:
    SilentWriter();
    [[nodiscard]] const KvCConsoleWriter& writer() const { return writer_; }

private:
    KvTCallbacks callbacks_;
    KvCConsoleWriter writer_{callbacks_};
};

/// An archive that was read.
class LoadedArchive {
public:
    LoadedArchive(KvEArchiveShape shape, std::size_t count);

    [[nodiscard]] KvCFirmwareArchive& archive() { return archive_; }
    [[nodiscard]] const KvCConsoleWriter& writer() const { return silent_.writer(); }
    [[nodiscard]] const KvNReflasher::KvTOptions& options() const { return options_; }

private:
    SilentWriter silent_;
    KvNReflasher::KvTOptions options_{};
    KvCFirmwareArchive archive_{silent_.writer(), options_};
};

/// An element for each of the `count` entries of an archive of this shape, in their order; every second one is up to
/// date. Of an entry that lists 1,000 boards it is for one of the last.
[[nodiscard]] std::list<KvTUpdateElement> elementsFor(KvEArchiveShape shape, std::size_t count);

/// The description of an emulated target at 127.0.0.1 with `count` update elements, eight on each board.
[[nodiscard]] std::string targetText(std::size_t count);
