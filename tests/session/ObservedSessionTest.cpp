#include "ObservedSessionTest.h"

#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "UpdateFiles.h"

#include <array>

using namespace KvNReflasher;

const KvTPlan& ObservedSessionTest::plan() {
    static const KvTPlan none;
    EXPECT_NE(nullptr, observed().plan());
    return observed().plan() != nullptr ? *observed().plan() : none;
}

std::vector<std::string> ObservedSessionTest::results() {
    std::vector<std::string> names;
    for (const KvTElementOutcome& element : outcome().elements) {
        names.push_back(nameOf(element.result));
    }
    return names;
}

std::vector<std::string> ObservedSessionTest::fileResults() {
    std::vector<std::string> lines;
    for (const KvTFileOutcome& file : outcome().files) {
        const std::string path = file.targetPath.empty() ? "" : " " + file.targetPath;
        lines.push_back(file.fileName + " phase " + std::to_string(file.phase) + path + ": " + nameOf(file.result));
    }
    return lines;
}

std::vector<std::string> ObservedSessionTest::errorTexts() {
    return textsOf(outcome().errors);
}

void ObservedSessionTest::writeImage(const std::string& name, const char* version, std::uint32_t checksum) {
    archive.folder().write(name, firmwareImage(KvCVersion(version), checksum));
}

void ObservedSessionTest::closeAfterSecondPrepare(std::uint32_t handlesLeft) {
    close();
    EXPECT_EQ(handlesLeft, KvEmulation::ledger().rootHandles);
    KvEmulation::reset();
}

void ObservedSessionTest::collectError(std::string_view text) {
    KvTErrorEntry error;
    error.code = 0x42;
    error.text = text;
    KvCErrorManager::getInstance()->getMasterErrorList().addError(error);
}

std::string nameOf(KvEResult result) {
    constexpr std::array<const char*, 7> names{"not planned", "not started", "file missing", "cancelled",
                                               "failed",      "updated",     "in progress"};
    return names.at(static_cast<std::size_t>(result));
}

std::vector<std::string> textsOf(const std::vector<KvTErrorInfo>& errors) {
    std::vector<std::string> texts;
    texts.reserve(errors.size());
    for (const KvTErrorInfo& error : errors) {
        texts.push_back(error.text);
    }
    return texts;
}
