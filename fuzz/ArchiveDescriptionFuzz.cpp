// An archive description: reading, printing, and writing it as it was understood.

#include "ArchivePrintouts.h"
#include "FuzzFolder.h"
#include "FuzzInput.h"
#include "KvCFirmwareArchive.h"
#include "KvNJson.h"
#include "Property.h"
#include "ServiceState.h"
#include "Transcript.h"
#include "UpdateFileSet.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const wchar_t* descriptionName = L"archive.json";

/// Goes on after an error, so that all of them are found.
class AllFindings : public KvCArchiveFindings {
public:
    using KvCArchiveFindings::KvCArchiveFindings;

protected:
    bool takeError(const KvTArchiveFinding& /*finding*/) override { return true; }
};

/// The archive in the scratch folder and what is printed about it.
class ReadArchive {
public:
    explicit ReadArchive(const FuzzFolder& folder) {
        options_.archiveFolder = folder.wideText();
        options_.descriptionFileName = descriptionName;
        options_.mode = KvNReflasher::dumpArchiveDescription;
        KvCErrorListPool& errors = emptyMasterErrorList();
        isAccepted_ = archive_.readArchive();
        require(errors.getErrorCount() == 0, "What is wrong with an archive is printed.");
        messages_ = Transcript::take();
    }

    [[nodiscard]] bool isAccepted() const { return isAccepted_; }
    [[nodiscard]] const std::string& messages() const { return messages_; }
    [[nodiscard]] const KvCConsoleWriter& writer() const { return transcript_.writer(); }
    [[nodiscard]] const KvCFirmwareArchive& archive() const { return archive_; }

    [[nodiscard]] std::string dump() const {
        dumpDescription(writer(), archive_);
        return Transcript::take();
    }
    [[nodiscard]] std::string content() const {
        printArchiveContent(writer(), archive_);
        return Transcript::take();
    }
    [[nodiscard]] std::string version() const {
        printArchiveVersion(writer(), archive_);
        return Transcript::take();
    }

private:
    KvNReflasher::KvTOptions options_{};
    Transcript transcript_;
    KvCFirmwareArchive archive_{transcript_.writer(), options_};
    bool isAccepted_ = false;
    std::string messages_;
};

/// The content table: as many rows as entries, all of one width. Cells may hold line ends.
void checkContent(const ReadArchive& read) {
    const std::string table = read.content();
    const std::size_t width = table.find('\n');
    const std::size_t rows = read.archive().files().size() + 2;
    require(table.size() == rows * (width + 1), "All rows of the content table are of one width.");
    for (std::size_t row = 1; row <= rows; ++row) {
        require(table[row * (width + 1) - 1] == '\n', "Every row of the content table ends.");
    }
    const std::string_view rule = std::string_view(table).substr(width + 1, width);
    require(rule.find_first_not_of('-') == std::string_view::npos, "There is a rule below the heading.");
}

void checkVersion(const ReadArchive& read) {
    const std::string line = read.version();
    require(!line.empty() && line.back() == '\n', "The archive version is a line.");
    const KvCVersion version(line.substr(0, line.size() - 1).c_str());
    require(version == read.archive().info().archiveVersion, "The archive version is printed as it was read.");
}

bool isSameEntry(const KvTArchiveFile& a, const KvTArchiveFile& b) {
    return a.name == b.name && a.sequence == b.sequence && a.version == b.version &&
           a.checksumCrc32 == b.checksumCrc32 && a.mode == b.mode && a.hasTargetPath == b.hasTargetPath;
}

void checkSameArchive(const KvCFirmwareArchive& read, const KvCFirmwareArchive& again) {
    const KvTArchiveInfo& info = read.info();
    const KvTArchiveInfo& infoAgain = again.info();
    require(info.archiveVersion == infoAgain.archiveVersion && info.productName == infoAgain.productName &&
                info.archiveVariant == infoAgain.archiveVariant && info.archiveName == infoAgain.archiveName,
            "A dump tells the same of the archive.");
    require(
        std::equal(read.files().begin(), read.files().end(), again.files().begin(), again.files().end(), isSameEntry),
        "A dump tells the same of every entry.");
    require(again.ignoredEntryCount() == 0 && read.maxSequence() == again.maxSequence(),
            "A dump holds the accepted entries.");
}

/// The checksums of update files are written too.
void checkChecksums(const std::string& dump, const std::vector<KvTArchiveFile>& files) {
    const KvNJson::json document = KvNJson::json::parse(dump);
    const KvNJson::jsonView entries = document.view().find("files");
    require(entries.size() == files.size(), "A dump has all entries.");
    for (std::size_t index = 0; index < files.size(); ++index) {
        const KvNJson::jsonView checksum = entries.at(index).find("checksumCrc32");
        const bool isKnown = files[index].checksumCrc32 != unknownValue;
        require(!isKnown || (checksum.is_valid() && checksum.get_unsigned() == files[index].checksumCrc32),
                "A dump states every checksum that is known.");
    }
}

void checkAccepted(const FuzzFolder& folder, const ReadArchive& read) {
    checkContent(read);
    checkVersion(read);
    const std::string dump = read.dump();
    require(dump == read.dump(), "A dump changes nothing.");
    folder.write("archive.json", dump);
    const ReadArchive again(folder);
    if (read.archive().files().empty()) {
        require(dump.find("    \"files\": null\n") != std::string::npos && !again.isAccepted(),
                "An archive without entries has files that are null, which is no archive.");
        return;
    }
    require(again.isAccepted() && again.messages().empty(), "A dump is an archive description.");
    checkChecksums(dump, read.archive().files());
    checkSameArchive(read.archive(), again.archive());
    require(again.dump() == dump, "A dump that was read dumps to the same text.");
}

/// Reading that ends at the first error finds what reading to the end finds first.
void checkAllFindings(const FuzzFolder& folder, const ReadArchive& read) {
    const Transcript transcript;
    KvNReflasher::KvTOptions options{};
    options.archiveFolder = folder.wideText();
    options.mode = KvNReflasher::dumpArchiveDescription;
    KvCFirmwareArchive archive(transcript.writer(), options);
    AllFindings findings(transcript.writer());
    const bool isRead = archive.parseDescription(folder.wideText() + L"\\" + descriptionName, findings);
    const bool isComplete = isRead && archive.completeFromUpdateFiles(findings);
    require(isComplete == (findings.errorCount() == 0) && isComplete == read.isAccepted(),
            "An archive is accepted when nothing is wrong with it.");
    require(Transcript::take().starts_with(read.messages()), "The first error ends the reading.");
}

} // namespace

/// The text of the description, a zero byte, the content of the update file "own".
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    static const bool areWritten = (writeUpdateFiles(folder), true);
    FuzzInput input(data, size);
    folder.write("archive.json", input.takeText());
    if (input.isEmpty()) {
        folder.remove(ownUpdateFile);
    } else {
        folder.write(ownUpdateFile, input.takeRest());
    }
    const ReadArchive read(folder);
    require(areWritten && (read.isAccepted() || !read.messages().empty()), "A refused archive is told why.");
    checkAllFindings(folder, read);
    if (read.isAccepted()) {
        checkAccepted(folder, read);
    }
    requireNothingHeld();
    return 0;
}
