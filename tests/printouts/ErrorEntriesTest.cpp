// What a report makes of answers that the real error manager does not give: this file has its place.
#include "ErrorReport.h"
#include "KeptMessages.h"
#include "MessageBytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

struct Answers {
    const char* function = nullptr;
    double tick = 1.0;
};

Answers& answers() {
    static Answers given;
    return given;
}

/// The header of a verbose report whose one entry has a time stamp of 3 and line 5.
std::string header() {
    const KeptMessages kept;
    KvNReflasher::KvTOptions options{};
    options.verbose = true;
    KvTErrorEntry entry;
    entry.code = 1;
    entry.timeStamp = 3;
    entry.line = 5;
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    errors.reset();
    errors.addError(entry);
    printErrorReport(kept.writer(), options, errors, 0);
    return bytesOf(KeptMessages::text());
}

} // namespace

const char* KvCErrorListPool::getFunctionName(std::uint32_t /*index*/) const {
    return answers().function;
}

double KvCErrorManager::getTimeStampTickDuration() const {
    return answers().tick;
}

TEST(ErrorEntries, AFunctionIsToldWithItsLineUnlessItsNameIsEmptyOrNull) {
    answers() = {.function = "f"};
    EXPECT_EQ(header(), "ERROR 0x1 (reported by Host PC), time  3.000 sec., in f():5:\n");
    answers() = {.function = ""};
    EXPECT_EQ(header(), "ERROR 0x1 (reported by Host PC), time  3.000 sec.:\n");
    answers() = {};
    EXPECT_EQ(header(), "ERROR 0x1 (reported by Host PC), time  3.000 sec.:\n");
}

TEST(ErrorEntries, TheErrorManagerTellsHowLongATickIs) {
    answers() = {.tick = 0.5};
    EXPECT_EQ(header(), "ERROR 0x1 (reported by Host PC), time  1.500 sec.:\n");
    answers() = {.tick = 2.0};
    EXPECT_EQ(header(), "ERROR 0x1 (reported by Host PC), time  6.000 sec.:\n");
}
