// What the console makes of answers that the real system hardly gives: this file is the system.
#include "KeptMessages.h"
#include "KvCConsoleWriter.h"
#include "LibraryVersion.h"
#include "ModuleVersion.h"
#include "WideFormat.h"

#include <gtest/gtest.h>

#include <cwchar>

namespace {

struct Answers {
    std::optional<KvTModuleVersion> version;
    int count = 0;
    int written = 0;
    /// What a buffer is filled with; what it leaves over stays as it is.
    std::wstring text;
};

Answers& answers() {
    static Answers given;
    return given;
}

KvCVersion toolVersionOf(std::optional<KvTModuleVersion> version) {
    answers().version = version;
    return getToolVersion();
}

int printCounted(const KvCConsoleWriter& writer, int count) {
    answers().count = count;
    return writer.print(L"text");
}

} // namespace

std::optional<KvTModuleVersion> readModuleVersion() {
    return answers().version;
}

bool decodesNarrowText() {
    return false;
}

int countFormatted(const wchar_t* /*format*/, std::va_list /*arguments*/) {
    return answers().count;
}

int formatIntoBuffer(wchar_t* buffer, std::size_t size, const wchar_t* /*format*/, std::va_list /*arguments*/) {
    std::wmemset(buffer, L'x', size);
    answers().text.copy(buffer, size);
    return answers().count;
}

int writeFormatted(std::FILE* /*stream*/, const wchar_t* /*format*/, std::va_list /*arguments*/) {
    return answers().written;
}

TEST(ToolVersion, HasThreeComponentsOfTheFileVersion) {
    const KvCVersion version = toolVersionOf(KvTModuleVersion{3, 5, 2});
    EXPECT_EQ(version.getMar(), 3);
    EXPECT_EQ(version.getMir(), 5);
    EXPECT_EQ(version.getMai(), 2);
    EXPECT_EQ(version.getSpb(), 0);
    EXPECT_EQ(version.getSpn(), 0);
    EXPECT_EQ(version.getPlv(), 0);
    EXPECT_STREQ(version.getAsString().c_str(), "3.5.2");
}

TEST(ToolVersion, IsAllZeroWhenTheFileIsNotKnown) {
    EXPECT_EQ(toolVersionOf(std::nullopt), KvCVersion());
    EXPECT_STREQ(getToolVersion().getAsString().c_str(), "0.0");
}

TEST(ToolVersion, IsAllZeroWhenTheFileCarriesNone) {
    EXPECT_EQ(toolVersionOf(KvTModuleVersion()), KvCVersion());
    EXPECT_STREQ(getToolVersion().getAsString().c_str(), "0.0");
}

TEST(ToolVersion, ComponentsAreCutTo8Bits) {
    EXPECT_EQ(toolVersionOf(KvTModuleVersion{255, 256, 65535}), KvCVersion(255, 0, 255, 0, 0, 0));
    EXPECT_EQ(toolVersionOf(KvTModuleVersion{259, 0x1205, 770}), KvCVersion(3, 5, 2, 0, 0, 0));
}

TEST(ConsoleWriterFailure, AMessageThatCannotBeFormattedIsNotHandedOver) {
    const KeptMessages kept;
    EXPECT_EQ(printCounted(kept.writer(), -1), -1);
    EXPECT_EQ(printCounted(kept.writer(), 0), 0);
    EXPECT_TRUE(KeptMessages::list().empty());
}

TEST(ConsoleWriterFailure, AMessageHasTheCountedLength) {
    const KeptMessages kept;
    EXPECT_EQ(printCounted(kept.writer(), 3), 3);
    EXPECT_EQ(KeptMessages::list(), (std::vector<std::wstring>{L"xxx"}));
}

TEST(ConsoleWriterFailure, AMessageMayBeShorterThanItsCount) {
    const KeptMessages kept;
    answers().text.assign(L"ab\0", 3);
    EXPECT_EQ(printCounted(kept.writer(), 5), 5);
    EXPECT_EQ(KeptMessages::list(), (std::vector<std::wstring>{L"ab"}));
    answers().text.clear();
}

TEST(ConsoleWriterFailure, AnUnformattedTextIsEmpty) {
    answers().count = -1;
    std::wstring text = L"former";
    EXPECT_EQ(KvCConsoleWriter::format(text, L"text"), -1);
    EXPECT_EQ(text, L"");
}

TEST(ConsoleWriterFailure, StandardOutputsResultIsThatOfTheMessage) {
    const KvTCallbacks noCallbacks;
    for (const int result : {-1, 0, 7}) {
        answers().written = result;
        EXPECT_EQ(KvCConsoleWriter(noCallbacks).print(L"text"), result);
    }
}
