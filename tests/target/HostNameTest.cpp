#include "KeptMessages.h"
#include "KvCConsoleWriter.h"
#include "KvCTargetAccess.h"
#include "KvEmulation.h"
#include "KvNRtosAbstraction.h"
#include "NetworkStandIn.h"
#include "SessionLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

/// A session's target text, with a name resolution that answers as the test says.
class HostNameTest : public testing::Test {
protected:
    void SetUp() override {
        network() = {};
        errors().reset();
    }
    void TearDown() override {
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        KvEmulation::reset();
    }

    static NetworkStandIn& network() { return NetworkStandIn::instance(); }
    static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    static std::uint32_t addressOf(const char* text) { return KvNRtosAbstraction::stringToIpV4(errors(), text); }

    bool resolve(const std::wstring& target) {
        options_.target = target;
        return access_.resolveTarget();
    }
    [[nodiscard]] std::string address() const { return access_.ipAddress().c_str(); }
    void beVerbose() { options_.verbose = true; }
    [[nodiscard]] static std::wstring messages() { return KeptMessages::text(); }

private:
    KeptMessages messages_;
    KvNReflasher::KvTOptions options_{};
    KvCTargetAccess access_{messages_.writer(), options_, errors()};
};

TEST_F(HostNameTest, ANameGivesTheDottedTextOfItsAddress) {
    network().address = addressOf("192.168.0.7");
    beVerbose();
    EXPECT_TRUE(resolve(L"rack-12.plant"));
    EXPECT_EQ(address(), "192.168.0.7");
    EXPECT_THAT(network().calls, ElementsAre("start", "resolve rack-12.plant", "stop"));
    EXPECT_EQ(messages(), L"");
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(HostNameTest, ANameThatCannotBeResolvedIsSilentUnlessVerbose) {
    EXPECT_FALSE(resolve(L"nowhere"));
    EXPECT_EQ(address(), "");
    EXPECT_EQ(messages(), L"");
    EXPECT_THAT(network().calls, ElementsAre("start", "resolve nowhere", "stop"));
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(HostNameTest, ANameThatCannotBeResolvedIsToldWhenVerbose) {
    beVerbose();
    EXPECT_FALSE(resolve(L"nowhere"));
    EXPECT_EQ(messages(), L"ERROR: Hostname cannot be resolved!\n");
    EXPECT_THAT(network().calls, ElementsAre("start", "resolve nowhere", "stop"));
}

TEST_F(HostNameTest, ANameThatCannotBeResolvedIsToldBeforeTheSocketServiceIsStopped) {
    KvTCallbacks callbacks;
    callbacks.message = [](const std::wstring& text) { network().calls.push_back(SessionLog::narrow(text)); };
    const KvCConsoleWriter writer(callbacks);
    KvNReflasher::KvTOptions options{};
    options.target = L"nowhere";
    options.verbose = true;
    KvCTargetAccess access(writer, options, errors());
    EXPECT_FALSE(access.resolveTarget());
    EXPECT_THAT(network().calls,
                ElementsAre("start", "resolve nowhere", "ERROR: Hostname cannot be resolved!\\n", "stop"));
}

TEST_F(HostNameTest, ANameThatCannotBeResolvedLeavesTheAddressOfBefore) {
    ASSERT_TRUE(resolve(L"127.0.0.1"));
    EXPECT_TRUE(resolve(L"nowhere"));
    EXPECT_EQ(address(), "127.0.0.1");
    EXPECT_THAT(network().calls, ElementsAre("start", "resolve nowhere", "stop"));
}

TEST_F(HostNameTest, ASocketServiceThatDoesNotStartIsNeitherAskedNorStopped) {
    network().starts = false;
    network().address = addressOf("192.168.0.7");
    EXPECT_FALSE(resolve(L"rack"));
    EXPECT_EQ(address(), "");
    EXPECT_EQ(messages(), L"");
    EXPECT_THAT(network().calls, ElementsAre("start"));
}

TEST_F(HostNameTest, ASocketServiceThatDoesNotStartIsToldWhenVerbose) {
    network().starts = false;
    beVerbose();
    EXPECT_FALSE(resolve(L"rack"));
    EXPECT_EQ(messages(), L"ERROR: Unable to initialize Windows socket service.\n");
    EXPECT_THAT(network().calls, ElementsAre("start"));
}

TEST_F(HostNameTest, ASocketServiceThatDoesNotStartFailsEvenWhenAnAddressIsKnown) {
    ASSERT_TRUE(resolve(L"127.0.0.1"));
    network().starts = false;
    EXPECT_FALSE(resolve(L"rack"));
    EXPECT_EQ(address(), "127.0.0.1");
}

TEST_F(HostNameTest, ALetterAtTheBeginningMakesAName) {
    network().address = addressOf("10.0.0.1");
    for (const wchar_t* name : {L"a", L"Z", L"r1.2.3.4", L"a.b.c.d", L"rack 12", L"\u00C4rger", L"\u0436"}) {
        network().calls.clear();
        EXPECT_TRUE(resolve(name)) << name;
        EXPECT_EQ(network().calls.size(), 3U) << name;
    }
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(HostNameTest, ANameIsAskedForInUtf8) {
    resolve(L"\u00C4rger");
    EXPECT_THAT(network().calls, ElementsAre("start", "resolve \xC3\x84rger", "stop"));
}

TEST_F(HostNameTest, ANameThatBeginsWithAnythingElseIsTakenAsAnAddressAndFails) {
    network().address = addressOf("10.0.0.1");
    beVerbose();
    for (const wchar_t* text : {L"1rack", L"_rack", L"-rack", L" rack", L".rack", L"[::1]", L"::1", L""}) {
        errors().reset();
        EXPECT_FALSE(resolve(text)) << text;
        EXPECT_EQ(errors().getErrorCount(), 1U) << text;
    }
    EXPECT_EQ(address(), "");
    EXPECT_EQ(messages(), L"");
    EXPECT_THAT(network().calls, IsEmpty());
}

TEST_F(HostNameTest, AnAddressComesBackInDottedForm) {
    struct Row {
        const wchar_t* target;
        const char* address;
    };
    for (const Row& row : {Row{L"127.0.0.1", "127.0.0.1"}, Row{L"010.001.000.009", "10.1.0.9"},
                           Row{L"0.0.0.0", "0.0.0.0"}, Row{L"255.255.255.255", "255.255.255.255"},
                           Row{L"0192.00168.0000.007", "192.168.0.7"}, Row{L"1.20.30.4", "1.20.30.4"}}) {
        EXPECT_TRUE(resolve(row.target)) << row.target;
        EXPECT_EQ(address(), row.address);
    }
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_THAT(network().calls, IsEmpty());
}

TEST_F(HostNameTest, WhatIsNoAddressLeavesTheErrorOfTheParserAndNoAddress) {
    beVerbose();
    for (const wchar_t* text : {L"1.2.3", L"1.2.3.4.5", L"256.1.1.1", L"1.2.3.4 ", L"1.2.3.", L"1,2,3,4", L"1.2.3.-4",
                                L"1.2.3.4:80", L"0x7f.0.0.1", L"1..2.3", L"2130706433"}) {
        errors().reset();
        EXPECT_FALSE(resolve(text)) << text;
        EXPECT_EQ(address(), "") << text;
        EXPECT_EQ(errors().getErrorCount(), 1U) << text;
    }
    EXPECT_EQ(messages(), L"");
}

TEST_F(HostNameTest, ErrorsOfBeforeDoNotMakeAnAddressWrong) {
    errors().addError({});
    EXPECT_TRUE(resolve(L"127.0.0.1"));
    EXPECT_EQ(address(), "127.0.0.1");
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(HostNameTest, AnAddressThatIsWrongLeavesTheOneOfBefore) {
    ASSERT_TRUE(resolve(L"127.0.0.1"));
    EXPECT_TRUE(resolve(L"127.0.0"));
    EXPECT_EQ(address(), "127.0.0.1");
    EXPECT_EQ(errors().getErrorCount(), 1U);
}
