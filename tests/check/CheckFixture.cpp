#include "CheckFixture.h"

#include "KvCFirmwareArchive.h"
#include "MessageCapture.h"

#include <filesystem>

using KvNReflasher::KvTFinding;

CheckTest::CheckTest() {
    options_.archiveFolder = folder_.path().wstring();
    options_.descriptionFileName = L"archive.json";
    folder_.write("a.bin", "content");
}

std::vector<KvTFinding> CheckTest::check(std::string_view description) {
    std::vector<KvTFinding> findings = checkFolder(description);
    std::erase_if(findings, [](const KvTFinding& finding) { return finding.code == "unnamed-file"; });
    return findings;
}

std::vector<KvTFinding> CheckTest::checkFolder(std::string_view description) {
    // Some file systems take their time when a file is emptied and written again.
    std::filesystem::remove(folder_.path() / "archive.json");
    folder_.write("archive.json", description);
    return findingsOfArchive(options_);
}

KvTFinding CheckTest::onlyFinding(std::string_view description) {
    const std::vector<KvTFinding> findings = check(description);
    EXPECT_EQ(1U, findings.size()) << codesOf(findings);
    return findings.empty() ? KvTFinding() : findings.front();
}

std::string CheckTest::codes(std::string_view description) {
    return codesOf(check(description));
}

std::string CheckTest::readersFirstError() const {
    const KvCMessageCapture messages;
    KvCFirmwareArchive archive(messages.writer(), options_);
    const bool isRead = archive.readArchive();
    const std::string& text = messages.text();
    const std::size_t error = text.find("ERROR: ");
    EXPECT_EQ(isRead, error == std::string::npos);
    if (error == std::string::npos) {
        EXPECT_EQ("", archive.refusal());
        return {};
    }
    std::string message = text.substr(error + std::string_view("ERROR: ").size());
    message.pop_back();
    if (const std::size_t line = message.find("\n       "); line != std::string::npos) {
        message.replace(line, std::string_view("\n       ").size(), " ");
    }
    EXPECT_EQ(message, archive.refusal());
    return message;
}

std::string codesOf(const std::vector<KvTFinding>& findings) {
    std::string codes;
    for (const KvTFinding& finding : findings) {
        codes.append(codes.empty() ? "" : " ").append(finding.code);
    }
    return codes;
}

std::string placeOf(const KvTFinding& finding) {
    return std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " + finding.path;
}
