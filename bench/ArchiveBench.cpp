// Reading an archive and printing what is in it.

#include "ArchivePrintouts.h"
#include "BenchData.h"
#include "DescriptionRules.h"
#include "KvNJson.h"
#include "UpdateFiles.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <optional>
#include <string>

namespace {

std::size_t sizeOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

/// From the file to the list of entries.
void descriptionParse(benchmark::State& state) {
    const BenchFolder folder;
    const std::string text = descriptionText(KvEArchiveShape::usual, sizeOf(state));
    folder.write("archive.json", text);
    const std::wstring path = (folder.path() / "archive.json").wstring();
    const SilentWriter silent;
    const KvNReflasher::KvTOptions options{};
    for (auto iteration : state) {
        KvCFirmwareArchive archive(silent.writer(), options);
        KvCArchiveFindings findings(silent.writer());
        if (!archive.parseDescription(path, findings)) {
            giveUp("an archive was refused");
        }
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(descriptionParse)->Apply(atAllSizes);

/// The rules for entries, on entries that keep them.
void entryValidation(benchmark::State& state) {
    const KvNJson::json document = KvNJson::json::parse(descriptionText(KvEArchiveShape::usual, sizeOf(state)));
    const KvNJson::jsonView files = document.view().find("files");
    const SilentWriter silent;
    KvCArchiveFindings findings(silent.writer());
    for (auto iteration : state) {
        for (std::size_t index = 0; index < files.size(); ++index) {
            if (checkEntry(findings, files.at(index), static_cast<std::uint32_t>(index)).outcome !=
                KvEEntryOutcome::accepted) {
                giveUp("an entry was not accepted");
            }
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(entryValidation)->Apply(atAllSizes);

/// The folder in which the update files of entries lie; it keeps growing.
const BenchFolder& folderWithUpdateFiles(std::size_t count) {
    static const BenchFolder folder;
    static std::size_t written = 0;
    for (; written < count; ++written) {
        folder.write(updateFileName(written), firmwareImage(KvCVersion("23.2.1"), 7));
    }
    return folder;
}

/// All checksums from update files.
void checksumCompletion(benchmark::State& state) {
    const BenchFolder& folder = folderWithUpdateFiles(sizeOf(state));
    folder.write("archive.json", descriptionText(KvEArchiveShape::withoutChecksums, sizeOf(state)));
    const SilentWriter silent;
    KvNReflasher::KvTOptions options{};
    options.archiveFolder = folder.path().wstring();
    KvCArchiveFindings findings(silent.writer());
    std::optional<KvCFirmwareArchive> archive;
    for (auto iteration : state) {
        state.PauseTiming();
        archive.emplace(silent.writer(), options);
        if (!archive->parseDescription((folder.path() / "archive.json").wstring(), findings)) {
            giveUp("an archive was refused");
        }
        state.ResumeTiming();
        if (!archive->completeFromUpdateFiles(findings)) {
            giveUp("an update file was refused");
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(checksumCompletion)->Apply(atAllSizes);

void contentTable(benchmark::State& state) {
    LoadedArchive loaded(KvEArchiveShape::usual, sizeOf(state));
    for (auto iteration : state) {
        printArchiveContent(loaded.writer(), loaded.archive());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(contentTable)->Apply(atAllSizes);

void descriptionDump(benchmark::State& state) {
    LoadedArchive loaded(KvEArchiveShape::usual, sizeOf(state));
    for (auto iteration : state) {
        dumpDescription(loaded.writer(), loaded.archive());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(descriptionDump)->Apply(atAllSizes);

} // namespace
