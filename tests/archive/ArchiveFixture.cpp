#include "ArchiveFixture.h"

#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "MessageBytes.h"

#include <fstream>
#include <iterator>
#include <system_error>

namespace {

KvCErrorListPool& masterErrors() {
    return KvCErrorManager::getInstance()->getMasterErrorList();
}

} // namespace

std::size_t openFileCount() {
    if constexpr (std::filesystem::path::preferred_separator == '\\') {
        return 0;
    }
    std::error_code unknown;
    const std::filesystem::directory_iterator files("/proc/self/fd", unknown);
    return static_cast<std::size_t>(std::distance(files, std::filesystem::directory_iterator()));
}

ArchiveTest::ArchiveTest() {
    options_.archiveFolder = folder_.path().wstring();
    options_.descriptionFileName = L"archive.json";
    options_.mode = KvNReflasher::performUpdate;
    archive_.emplace(writer(), options_);
}

void ArchiveTest::SetUp() {
    masterErrors().reset();
    openFilesBefore_ = openFileCount();
}

void ArchiveTest::TearDown() {
    EXPECT_EQ(openFilesBefore_, openFileCount());
    EXPECT_EQ(0U, masterErrors().getErrorCount());
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    KvEmulation::reset();
}

void ArchiveTest::writeFile(std::string_view name, std::string_view bytes) const {
    const std::filesystem::path path = folder() / pathOfUtf8(name);
    // Some file systems take their time when a file is emptied and written again.
    std::filesystem::remove(path);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    EXPECT_FALSE(file.fail()) << "cannot write " << name;
}

void ArchiveTest::makeFolder(std::string_view name) const {
    std::filesystem::create_directories(folder() / pathOfUtf8(name));
}

std::wstring ArchiveTest::pathOf(std::wstring_view name) const {
    return (folder().wstring() + L"\\").append(name);
}

void ArchiveTest::beginReading(std::string_view text) {
    writeFile("archive.json", text);
    forgetMessages();
}

bool ArchiveTest::readDescription(std::string_view text) {
    archive_.emplace(writer(), options_);
    return readDescriptionAgain(text);
}

bool ArchiveTest::readDescriptionAgain(std::string_view text) {
    beginReading(text);
    return archive_->readDescriptionFile();
}

bool ArchiveTest::readArchive(std::string_view text) {
    archive_.emplace(writer(), options_);
    beginReading(text);
    return archive_->readArchive();
}

std::string ArchiveTest::printed(const std::function<void()>& print) {
    forgetMessages();
    print();
    return bytesOf(messages());
}
