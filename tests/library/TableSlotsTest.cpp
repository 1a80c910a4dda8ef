#include "SessionTest.h"

#include <gmock/gmock.h>

#include <bit>
#include <cstring>
#include <new>

using testing::ElementsAre;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

/// The table of virtual operations as clients compiled it in: the destructor has two entries, one that destroys and
/// one that frees the object as well.
enum Slot : std::size_t {
    destroy = 0,
    destroyAndFree = 1,
    setPhaseCallback = 2,
    setElementErrorCallback = 3,
    setProgressCallback = 4,
    setMessageCallback = 5,
    prepareSlot = 6,
    runSlot = 7,
    getArchiveInfo = 8,
    reservedQuery = 9,
    getUpdateElements = 10,
    disableUpdateElement = 11,
    getArchiveFiles = 12,
    getRebootSupportStatus = 13,
    reboot = 14
};

/// Calls the operation in a slot of the object's table.
template <typename Result, typename... Arguments>
Result call(KvIReflasher* object, Slot slot, Arguments... arguments) {
    using Operation = Result (*)(KvIReflasher*, Arguments...);
    void* const* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
    return std::bit_cast<Operation>(table[slot])(object, arguments...);
}

class TableSlotsTest : public SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        node = completeBoard("HCN", "QB4120", 0)
                   .element(completeElement(1, "UserFirmware").parameter("VERSION", "23.2.1").polls(1).finalState(3));
        archive.add(entry("a.bin").board("QB4120", 1).version("24.0"));
        serve();
        options.mode = performUpdate;
        object = KvIReflasher::createInstance(options);
        call<void>(object, setMessageCallback, SessionLog::onMessage);
    }
    void close() override {
        if (object != nullptr) {
            call<void>(object, destroyAndFree);
            object = nullptr;
        }
    }
    std::uint32_t prepareObject() { return call<std::uint32_t>(object, prepareSlot); }
    bool runObject() { return call<bool>(object, runSlot); }

    KvIReflasher* object = nullptr;
};

} // namespace

TEST_F(TableSlotsTest, TheSecondOneDestroysAndFreesTheObject) {
    EXPECT_EQ(prepareObject(), 0U);
    close();
    EXPECT_EQ(log.callsOf("deleteRootHandle").size(), 1U);
}

TEST_F(TableSlotsTest, TheFirstOneDestroysTheObjectAndLeavesItsBlock) {
    EXPECT_EQ(prepareObject(), 0U);
    call<void>(object, destroy);
    EXPECT_EQ(log.callsOf("deleteRootHandle").size(), 1U);
    ::operator delete(object);
    object = nullptr;
}

struct CallbackCase {
    const char* name;
    Slot slot;
    KvTNumberCallback callback;
    std::vector<std::string> told;

    friend void PrintTo(const CallbackCase& row, std::ostream* stream) { *stream << row.name; }
};

class CallbackSlotTest : public TableSlotsTest, public testing::WithParamInterface<CallbackCase> {};

TEST_P(CallbackSlotTest, SetsItsNotification) {
    call<void>(object, GetParam().slot, GetParam().callback);
    EXPECT_EQ(prepareObject(), 0U);
    EXPECT_FALSE(runObject());
    EXPECT_EQ(log.events({Kind::notification}), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    Slots, CallbackSlotTest,
    testing::Values(
        CallbackCase{"Phase", setPhaseCallback, SessionLog::onPhase, {"phase 0", "phase 4294967295"}},
        CallbackCase{"ElementError", setElementErrorCallback, SessionLog::onElementError, {"elementError 0"}},
        CallbackCase{"Progress", setProgressCallback, SessionLog::onProgress, {"progress 100", "progress 100"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(TableSlotsTest, SixPreparesAndSevenRuns) {
    EXPECT_EQ(prepareObject(), 0U);
    EXPECT_EQ(log.text(), banner());
    log.clear();
    EXPECT_FALSE(runObject());
    EXPECT_THAT(log.text(), testing::EndsWith("\n    Update failed!\n"));
}

TEST_F(TableSlotsTest, EightFillsTheFiveTextsOfTheArchive) {
    EXPECT_EQ(prepareObject(), 0U);
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    call<void, std::wstring&, std::wstring&, std::wstring&, std::wstring&, std::wstring&>(
        object, getArchiveInfo, name, version, product, format, variant);
    EXPECT_THAT((std::vector{name, version, product, format, variant}),
                ElementsAre(L"Archive", L"23.2.1", L"Product", L"1.0", L"Variant"));
}

TEST_F(TableSlotsTest, NineIsTheReservedQuery) {
    EXPECT_EQ(call<std::uint32_t>(object, reservedQuery), 0U);
    EXPECT_THAT(log.events(), testing::IsEmpty());
}

TEST_F(TableSlotsTest, TenYieldsTheElementsAndElevenDisablesOne) {
    EXPECT_EQ(prepareObject(), 0U);
    for (const bool disabled : {false, true}) {
        if (disabled) {
            call<void>(object, disableUpdateElement, std::uint32_t(0));
        }
        KvTUpdateElementInfo* elements = nullptr;
        std::uint32_t count = 0;
        call<void, KvTUpdateElementInfo*&, std::uint32_t&>(object, getUpdateElements, elements, count);
        ASSERT_EQ(count, 1U);
        EXPECT_EQ(elements[0].displayName, L"QB4120, Firmware");
        EXPECT_EQ(elements[0].disabled, disabled);
        delete[] elements;
    }
}

TEST_F(TableSlotsTest, TwelveYieldsTheFilesOfTheArchive) {
    EXPECT_EQ(prepareObject(), 0U);
    KvTArchiveFileInfo* files = nullptr;
    std::uint32_t count = 0;
    call<void, KvTArchiveFileInfo*&, std::uint32_t&>(object, getArchiveFiles, files, count);
    ASSERT_EQ(count, 1U);
    EXPECT_EQ(files[0].name, "a.bin");
    EXPECT_EQ(files[0].version, "24.0");
    delete[] files;
}

TEST_F(TableSlotsTest, ThirteenTellsTheRebootSupportStatus) {
    std::uint32_t status = 99;
    EXPECT_FALSE((call<bool, std::uint32_t&>(object, getRebootSupportStatus, status)));
    EXPECT_EQ(status, 1U);
    EXPECT_EQ(prepareObject(), 0U);
    EXPECT_TRUE((call<bool, std::uint32_t&>(object, getRebootSupportStatus, status)));
    EXPECT_EQ(status, 0U);
}

TEST_F(TableSlotsTest, FourteenReboots) {
    EXPECT_EQ(prepareObject(), 0U);
    EXPECT_TRUE(call<bool>(object, reboot));
    EXPECT_THAT(log.callsOf("KvHIM_FORCE_resetDevice"), ElementsAre("KvHIM_FORCE_resetDevice"));
}
