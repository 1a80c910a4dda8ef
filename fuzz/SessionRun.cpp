#include "SessionRun.h"

#include "Property.h"
#include "Transcript.h"

#include <utility>

namespace {

using namespace KvNReflasher;

constexpr std::uint32_t noFile = 0xFFFFFFFF;

/// The records of a query, which are released as a client does it.
template <typename Record>
std::vector<Record> recordsOf(Record* records, std::uint32_t count) {
    const std::unique_ptr<Record[]> owner(records);
    require((records == nullptr) == (count == 0), "A query without records hands nothing over.");
    return {records, records + count};
}

void checkElement(const KvTUpdateElementInfo& element, std::size_t position, std::size_t fileCount) {
    require(element.index == position, "Elements are numbered in their order.");
    require(element.hasArchiveFile <= 1 && element.custom <= 1, "A flag is 0 or 1.");
    require(element.hasArchiveFile == 1 ? element.archiveFileIndex < fileCount : element.archiveFileIndex == noFile,
            "An element has a file of the archive or none.");
    require(element.hasArchiveFile == 1 || (element.availableVersion.empty() && !element.checksumMismatch),
            "Without a file nothing is available.");
    require(element.disabled || element.hasArchiveFile == 0 || element.phase < fileCount,
            "There are no more phases than entries.");
}

/// Phases follow each other without gaps.
void checkPhases(const std::vector<KvTUpdateElementInfo>& elements, std::size_t fileCount) {
    std::vector<bool> isUsed(fileCount + 1);
    for (const KvTUpdateElementInfo& element : elements) {
        if (element.hasArchiveFile == 1 && !element.disabled) {
            isUsed[element.phase] = true;
        }
    }
    for (std::size_t phase = 1; phase < isUsed.size(); ++phase) {
        require(!isUsed[phase] || isUsed[phase - 1], "Phases have no gaps.");
    }
}

std::string textOf(const std::wstring& text) {
    std::string result;
    for (const wchar_t character : text) {
        result += std::to_string(static_cast<unsigned long>(character)) + ",";
    }
    return result + ";";
}

} // namespace

SessionRun::SessionRun(KvTOptions options)
    : mode_(options.mode), session_(KvIReflasher::createInstance(std::move(options))) {
    session_->setMessageCallback(Transcript::keep);
}

std::uint32_t SessionRun::prepare() {
    const std::size_t before = Transcript::messages().size();
    const std::uint32_t status = session_->prepare();
    require(status <= 1 || (status == 2 && mode_ == performUpdate), "Preparing has one of its results.");
    require(status == 0 || Transcript::messages().size() > before, "A session that is not ready is told why.");
    return status;
}

std::vector<KvTUpdateElementInfo> SessionRun::elements() const {
    KvTUpdateElementInfo* records = nullptr;
    std::uint32_t count = 0;
    session_->getUpdateElements(records, count);
    std::vector<KvTUpdateElementInfo> elements = recordsOf(records, count);
    const std::size_t fileCount = files().size();
    for (std::size_t position = 0; position < elements.size(); ++position) {
        checkElement(elements[position], position, fileCount);
    }
    return elements;
}

std::vector<KvTArchiveFileInfo> SessionRun::files() const {
    KvTArchiveFileInfo* records = nullptr;
    std::uint32_t count = 0;
    session_->getArchiveFiles(records, count);
    return recordsOf(records, count);
}

std::string SessionRun::answers() const {
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session_->getArchiveInfo(name, version, product, format, variant);
    std::string text = textOf(name) + textOf(version) + textOf(product) + textOf(format) + textOf(variant);
    const auto records = elements();
    checkPhases(records, files().size());
    for (const KvTUpdateElementInfo& element : records) {
        text += textOf(element.displayName) + textOf(element.unitPath) + textOf(element.installedVersion) +
                textOf(element.availableVersion) + std::to_string(element.phase) + "/" +
                std::to_string(element.archiveFileIndex) + (element.disabled ? "-" : "+");
    }
    for (const KvTArchiveFileInfo& file : files()) {
        text += file.name + ";" + file.version + ";";
    }
    return text;
}

KvTOptions optionsOfMode(std::uint32_t mode) {
    KvTOptions options{};
    options.target = L"127.0.0.1";
    options.mode = mode;
    return options;
}
