#include "SessionTest.h"

#include <string>

using namespace KvNReflasher;

namespace {

/// Copies the records of a query, which are released as a client does it.
template <typename Record>
std::vector<Record> copyOf(Record* records, std::uint32_t count) {
    const std::unique_ptr<Record[]> owner(records);
    EXPECT_EQ(records == nullptr, count == 0);
    return {records, records + count};
}

std::string& keptText() {
    static std::string text;
    return text;
}

void keepText(const std::wstring& text) {
    keptText() += SessionLog::narrow(text);
}

} // namespace

SessionTest::SessionTest() {
    options.archiveFolder = archive.wideText();
    options.descriptionFileName = L"archive.json";
    options.target = L"127.0.0.1";
}

std::unique_ptr<KvIReflasher> SessionTest::makeSession() {
    return std::unique_ptr<KvIReflasher>(KvIReflasher::createInstance(options));
}

KvIReflasher& SessionTest::session() {
    if (session_ == nullptr) {
        session_ = makeSession();
        session_->setPhaseCallback(SessionLog::onPhase);
        session_->setElementErrorCallback(SessionLog::onElementError);
        session_->setProgressCallback(SessionLog::onProgress);
        session_->setMessageCallback(SessionLog::onMessage);
    }
    return *session_;
}

std::uint32_t SessionTest::prepare(std::uint32_t mode) {
    if (!isServed_) {
        serve();
        isServed_ = true;
    }
    options.mode = mode;
    return session().prepare();
}

bool SessionTest::perform(std::uint32_t mode) {
    EXPECT_EQ(prepare(mode), 0U);
    return run();
}

std::vector<KvTUpdateElementInfo> SessionTest::updateElements() {
    KvTUpdateElementInfo* records = nullptr;
    std::uint32_t count = 0;
    session().getUpdateElements(records, count);
    return copyOf(records, count);
}

std::vector<KvTArchiveFileInfo> SessionTest::archiveFiles() {
    KvTArchiveFileInfo* records = nullptr;
    std::uint32_t count = 0;
    session().getArchiveFiles(records, count);
    return copyOf(records, count);
}

std::string SessionTest::libraryVersion() {
    KvTOptions versionOptions{};
    versionOptions.mode = showVersion;
    const std::unique_ptr<KvIReflasher> versionSession(KvIReflasher::createInstance(versionOptions));
    versionSession->setMessageCallback(keepText);
    keptText().clear();
    static_cast<void>(versionSession->run());
    return keptText().substr(0, keptText().find("\\n"));
}

std::string SessionTest::banner() {
    return "\nKorvel Device Update Tool, Vs " + libraryVersion() +
           "\nCopyright (c) 2026 Korvel. All rights reserved.\n \n";
}

std::string reportedErrors(const std::string& report) {
    return "\nReported errors:\n" + report;
}
