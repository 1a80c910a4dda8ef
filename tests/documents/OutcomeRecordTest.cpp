#include "KvNJson.h"
#include "SampleValues.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

// What documents say of errors and failed elements.

namespace {

using namespace KvNReflasher;
using KvNJson::json;
using KvNJson::jsonView;

json takeMember(json object, std::string_view key) {
    for (std::size_t index = 0; index < object.view().size(); ++index) {
        if (object.view().key(index) == key) {
            return object.takeItem(index);
        }
    }
    return "no such member";
}

/// The document of an update whose first element came out like this.
json documentOf(const KvTElementOutcome& first) {
    const KvTPlan plan = samplePlan();
    KvTOutcome outcome = sampleOutcome();
    outcome.elements.front() = first;
    return json::parse(reportDocument({.verdict = {}, .plan = &plan, .outcome = &outcome}, sampleFacts("update", 1)));
}

/// A member of the record of an error, as JSON text.
std::string memberOf(const KvTErrorInfo& error, std::string_view key) {
    KvTOutcome outcome;
    outcome.errors = {error};
    json document = json::parse(reportDocument({.verdict = {}, .outcome = &outcome}, sampleFacts("update", 1)));
    return takeMember(takeMember(document, "errors").takeItem(0), key).dump();
}

using Error = KvTErrorInfo;

struct ErrorRow {
    const char* key;
    const char* value;
    /// Applied to an error of which nothing is known.
    void (*change)(Error& error);
};

const ErrorRow errorRows[] = {{"code", "8196", [](Error& one) { one.code = 0x2004; }},
                              {"codeText", "\"0x2004\"", [](Error& one) { one.code = 0x2004; }},
                              {"codeText", "\"0x4d\"", [](Error& one) { one.code = 77; }},
                              {"codeText", "\"0x0\"", [](Error&) {}},
                              {"codeText", "\"0xffffffff\"", [](Error& one) { one.code = 0xFFFFFFFF; }},
                              {"text", "\"\"", [](Error&) {}},
                              {"originNode", "0", [](Error&) {}},
                              {"seconds", "1.5", [](Error& one) { one.seconds = 1.5; }},
                              {"seconds", "null", [](Error&) {}},
                              {"mainModule", "4", [](Error& one) { one.mainModule = 4; }},
                              {"mainModule", "null", [](Error&) {}},
                              {"subModule", "5", [](Error& one) { one.subModule = 5; }},
                              {"subModule", "null", [](Error&) {}},
                              {"function", "\"\"", [](Error&) {}},
                              {"line", "66", [](Error& one) { one.line = 66; }},
                              {"line", "null", [](Error&) {}}};

TEST(ErrorRecord, IsNullWhereNothingIsKnown) {
    for (const ErrorRow& row : errorRows) {
        Error error;
        row.change(error);
        EXPECT_EQ(row.value, memberOf(error, row.key)) << row.key;
    }
}

TEST(OutcomeRecord, AFailedElementHasReasonCallStateAndErrors) {
    KvTElementOutcome failed;
    failed.result = KvEResult::failed;
    failed.failedCall = KvEFailedCall::updateStatus2;
    failed.state = 3;
    failed.reason = "the target reported failure (state 3) and gave no reason";
    const json document = documentOf(failed);
    const jsonView element = document.view().find("elements").at(0);
    EXPECT_EQ("failed", element.find("outcome").get_string());
    EXPECT_EQ(failed.reason, element.find("reason").get_string());
    EXPECT_EQ("update-status", element.find("failedCall").get_string());
    EXPECT_EQ(3U, element.find("state").get_unsigned());
    EXPECT_EQ(0U, element.find("errors").size());
}

TEST(OutcomeRecord, AnElementThatWentWellHasNoReason) {
    KvTElementOutcome updated;
    updated.result = KvEResult::updated;
    updated.state = 2;
    const json document = documentOf(updated);
    const jsonView element = document.view().find("elements").at(0);
    EXPECT_EQ("", element.find("reason").get_string());
    EXPECT_TRUE(element.find("failedCall").is_null());
}

/// A session without an archive, such as a reboot.
TEST(OutcomeRecord, WithoutAnArchiveThereAreNoEntries) {
    KvTPlan plan = samplePlan();
    plan.archive.reset();
    KvTReportFacts facts = sampleFacts("reboot", 0);
    facts.archiveFolder.clear();
    const json document = json::parse(reportDocument({.verdict = {}, .plan = &plan}, facts));
    EXPECT_TRUE(document.view().find("archive").is_null());
    EXPECT_EQ("", document.view().find("archiveFolder").get_string());
    EXPECT_TRUE(document.view().find("files").is_array());
    EXPECT_EQ(0U, document.view().find("files").size());
    EXPECT_EQ("kvreflash.reboot", document.view().find("format").find("name").get_string());
}

} // namespace
