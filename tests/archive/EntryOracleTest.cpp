#include "EntryOracle.h"

#include "ArchiveFixture.h"
#include "DescriptionRules.h"
#include "RandomDescriptions.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::array<std::string_view, 14> keys = {
    "name",       "sequence",          "featureLevel",      "boards",  "boardType",     "boardVariant", "boardId", "id",
    "targetPath", "hwCompatibilityId", "swCompatibilityId", "version", "checksumCrc32", "mode"};

class EntryOracle : public ArchiveTest {
protected:
    /// True when the rules and the oracle agree about the entry.
    bool agree(const JsonModel& entry, unsigned index) {
        const JudgedEntry expected = judgeEntry(entry, index);
        const KvNJson::json document = KvNJson::json::parse(entry.write());
        KvCArchiveFindings findings(writer());
        forgetMessages();
        const auto [outcome, goOn] = checkEntry(findings, document.view(), index);
        seen_.insert(withoutNumbers(expected.message));

        const bool isRefused = expected.outcome == JudgedEntry::Outcome::refused;
        EXPECT_EQ(expected.message, messages()) << entry.write();
        EXPECT_EQ(isRefused, outcome == KvEEntryOutcome::refused) << entry.write();
        EXPECT_EQ(expected.outcome == JudgedEntry::Outcome::skipped, outcome == KvEEntryOutcome::skipped);
        EXPECT_EQ(isRefused ? 1U : 0U, findings.errorCount());
        EXPECT_EQ(!isRefused, goOn);
        if (outcome == KvEEntryOutcome::accepted) {
            const KvTArchiveFile file = makeArchiveFile(
                std::make_shared<KvNJson::json>(KvNJson::json::parse(entry.write())), index, KvCVersion());
            EXPECT_EQ(expected.hasTargetPath, file.hasTargetPath) << entry.write();
        }
        return !HasFailure();
    }

    /// How many different messages were expected, indices apart; no message is one of them.
    [[nodiscard]] std::size_t seen() const { return seen_.size(); }

private:
    static std::wstring withoutNumbers(std::wstring message) {
        std::erase_if(message, [](wchar_t character) { return std::iswdigit(static_cast<wint_t>(character)) != 0; });
        return message;
    }

    std::set<std::wstring> seen_;
};

/// One value of every kind, with arrays of right and of wrong elements.
std::vector<JsonModel> valuesOfAllKinds() {
    return {JsonModel(),
            JsonModel::boolean(true),
            JsonModel::number(3),
            JsonModel::otherNumber("-3"),
            JsonModel::text("x"),
            JsonModel::text("upgrade"),
            JsonModel::array({}),
            JsonModel::array({JsonModel()}),
            JsonModel::array({JsonModel::number(1)}),
            JsonModel::object({})};
}

JsonModel goodModel(bool withBoards) {
    JsonModel board = JsonModel::object({{"boardType", JsonModel::text("QB")}, {"id", JsonModel::number(5)}});
    JsonModel entry = JsonModel::object({{"name", JsonModel::text("a")}, {"sequence", JsonModel::number(1)}});
    if (withBoards) {
        entry.set("boards", JsonModel::array({board, board}));
    } else {
        entry.set("boardType", JsonModel::text("QB"));
        entry.set("id", JsonModel::number(5));
    }
    return entry;
}

/// Where the two properties of a pair stand.
enum class Places { bothInEntry, bothInBoard, firstInEntry };

JsonModel withPair(Places places, std::string_view first, const JsonModel& firstValue, std::string_view second,
                   const JsonModel& secondValue) {
    JsonModel entry = goodModel(places != Places::bothInEntry);
    JsonModel* const boards = entry.find("boards");
    JsonModel& firstObject = places == Places::bothInBoard ? boards->items[1] : entry;
    firstObject.set(first, firstValue);
    // The first property may have replaced the boards.
    JsonModel* const boardsNow = entry.find("boards");
    const bool hasBoards = boardsNow != nullptr && boardsNow->items.size() > 1;
    JsonModel& secondObject = places != Places::bothInEntry && hasBoards ? boardsNow->items[1] : entry;
    secondObject.set(second, secondValue);
    return entry;
}

TEST_F(EntryOracle, AgreesAboutEveryPairOfProperties) {
    const std::vector<JsonModel> values = valuesOfAllKinds();
    for (const Places places : {Places::bothInEntry, Places::bothInBoard, Places::firstInEntry}) {
        for (const std::string_view first : keys) {
            for (const std::string_view second : keys) {
                for (const JsonModel& firstValue : values) {
                    for (const JsonModel& secondValue : values) {
                        ASSERT_TRUE(agree(withPair(places, first, firstValue, second, secondValue), 0));
                    }
                }
            }
        }
    }
}

TEST_F(EntryOracle, AgreesAboutEveryPairWithOnePropertyMissing) {
    for (const bool withBoards : {false, true}) {
        for (const std::string_view missing : keys) {
            for (const std::string_view wrong : keys) {
                for (const JsonModel& value : valuesOfAllKinds()) {
                    JsonModel entry = goodModel(withBoards);
                    entry.set(wrong, value);
                    entry.remove(missing);
                    ASSERT_TRUE(agree(entry, 3));
                }
            }
        }
    }
}

TEST_F(EntryOracle, AgreesAboutEntriesMadeByChance) {
    RandomDescriptions random(20260101);
    for (unsigned round = 0; round < 40000; ++round) {
        ASSERT_TRUE(agree(random.entry(), round % 100));
    }
    // Ten wrong types and five wrong arrays, a version and a mode in two wordings, eight others, and no message.
    EXPECT_EQ(2U * (10 + 5 + 1 + 1) + 8 + 1, seen());
}

TEST_F(EntryOracle, AgreesAboutWholeDescriptions) {
    RandomDescriptions random(7);
    for (unsigned round = 0; round < 1500; ++round) {
        const JsonModel description = random.description(4);
        std::wstring expectedMessages;
        std::vector<const JsonModel*> expectedFiles;
        std::uint32_t expectedIgnored = 0;
        bool isAccepted = true;
        const std::vector<JsonModel>& entries = description.find("files")->items;
        for (unsigned index = 0; index < entries.size() && isAccepted; ++index) {
            const JudgedEntry judged = judgeEntry(entries[index], index);
            expectedMessages += judged.message;
            expectedIgnored += judged.outcome == JudgedEntry::Outcome::skipped ? 1U : 0U;
            isAccepted = judged.outcome != JudgedEntry::Outcome::refused;
            if (judged.outcome == JudgedEntry::Outcome::accepted) {
                expectedFiles.push_back(&entries[index]);
            }
        }

        SCOPED_TRACE(description.write());
        ASSERT_EQ(isAccepted, readDescription(description.write()));
        ASSERT_EQ(expectedMessages, messages());
        ASSERT_EQ(expectedIgnored, archive().ignoredEntryCount());
        ASSERT_EQ(expectedFiles.size(), archive().files().size());
        std::uint32_t highest = 0;
        for (std::size_t index = 0; index < expectedFiles.size(); ++index) {
            const JsonModel& entry = *expectedFiles[index];
            const JsonModel* const mode = entry.find("mode");
            const JsonModel* const checksum = entry.find("checksumCrc32");
            const auto sequence = static_cast<std::uint32_t>(std::stoul(entry.find("sequence")->scalar));
            highest = std::max(highest, sequence);
            ASSERT_EQ(entry.find("name")->scalar, file(index).name.view());
            ASSERT_EQ(sequence, file(index).sequence);
            ASSERT_EQ(mode != nullptr && mode->scalar == "upgrade" ? 1U : 0U, file(index).mode);
            ASSERT_EQ(checksum != nullptr ? std::stoul(checksum->scalar) : 0xFFFFFFFEU, file(index).checksumCrc32);
            ASSERT_EQ(KvNJson::json::parse(entry.write()).dump(), file(index).description->dump());
        }
        ASSERT_EQ(highest, archive().maxSequence());
    }
}

} // namespace
