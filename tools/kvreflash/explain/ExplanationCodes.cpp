#include "ExplanationCodes.h"

#include <array>
#include <cstddef>

namespace {

struct Words {
    const char* code;
    const char* sentence;
};

// Each in the order of its enumeration.
constexpr std::array testCodes = {"boardType",  "boardVariant",      "boardId",           "addressing", "id",
                                  "targetPath", "hwCompatibilityId", "swCompatibilityId", "none"};
constexpr std::array decisionWords = {Words{"element-invalid", "update: what is installed is not valid"},
                                      Words{"element-inactive", "update: what is installed is not active"},
                                      Words{"version-greater", "update: the archive's version is greater"},
                                      Words{"version-differs", "update: the version differs"},
                                      Words{"checksum-differs", "update: the checksum differs"},
                                      Words{"up-to-date", "up to date"}};
constexpr std::array disabledWords = {
    Words{"up-to-date", "left out, because it is up to date"},
    Words{"custom-element", "left out, because custom elements are skipped (--skip-custom)"},
    Words{"carrier-board-missing", "left out, because the target has no QB5150 or QB5170 that carries it"}};
constexpr std::array hiddenWords = {Words{"board-type-filter", "its board type is not in --board-type"},
                                    Words{"serial-number-filter", "its serial number is not in --serial-number"},
                                    Words{"element-name-filter", "its name is not in --element"},
                                    Words{"configuration", "--configuration decides whether configuration elements or "
                                                           "all others are looked at"}};

template <typename Table, typename Reason>
auto wordsOf(const Table& table, Reason reason) {
    return table.at(static_cast<std::size_t>(reason));
}

} // namespace

const char* codeOf(KvEMatchTest test) {
    return wordsOf(testCodes, test);
}

const char* codeOf(KvEDecision decision) {
    return wordsOf(decisionWords, decision).code;
}

const char* codeOf(KvEDisabledBy reason) {
    return wordsOf(disabledWords, reason).code;
}

const char* codeOf(KvEHiddenBy reason) {
    return wordsOf(hiddenWords, reason).code;
}

const char* sentenceOf(KvEDecision decision) {
    return wordsOf(decisionWords, decision).sentence;
}

const char* sentenceOf(KvEDisabledBy reason) {
    return wordsOf(disabledWords, reason).sentence;
}

const char* sentenceOf(KvEHiddenBy reason) {
    return wordsOf(hiddenWords, reason).sentence;
}
