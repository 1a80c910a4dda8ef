#include "KvNJson.h"
#include "SampleValues.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What is null in the record of an element, and what is not.

namespace {

using namespace KvNReflasher;
using KvNJson::json;

/// A member of the record of an element, as JSON text on one line.
std::string memberOf(const KvTPlannedElement& element, const char* key) {
    KvTPlan plan;
    plan.elements = {element};
    json document = json::parse(elementsDocument(&plan, {}));
    json elements = document.takeItem(document.view().size() - 1);
    json record = elements.takeItem(0);
    for (std::size_t index = 0; index < record.view().size(); ++index) {
        if (record.view().key(index) == key) {
            return record.takeItem(index).dump();
        }
    }
    return "no such member";
}

struct MemberRow {
    const char* situation;
    const char* key;
    const char* value;
    /// Applied to an element with a value for everything.
    void (*change)(KvTPlannedElement& element);
};

using Element = KvTPlannedElement;

const MemberRow memberRows[] = {
    {"a slot", "slot", "2", [](Element&) {}},
    {"slot 0", "slot", "0", [](Element& one) { one.slot = 0; }},
    {"a board without slots", "slot", "null", [](Element& one) { one.slotCount = 0; }},
    {"a board without slots", "slotCount", "0", [](Element& one) { one.slotCount = 0; }},
    {"a version", "installedVersion", "\"23.2a12\"", [](Element&) {}},
    {"no version", "installedVersion", "null", [](Element& one) { one.installed.version.reset(); }},
    {"a checksum", "installedChecksum", "1146530310", [](Element&) {}},
    {"checksum 0", "installedChecksum", "0", [](Element& one) { one.installed.checksumCrc32 = 0; }},
    {"no checksum", "installedChecksum", "null", [](Element& one) { one.installed.checksumCrc32.reset(); }},
    {"valid", "valid", "true", [](Element&) {}},
    {"not valid", "valid", "false", [](Element& one) { one.installed.valid = false; }},
    {"validity is not reported", "valid", "false", [](Element& one) { one.installed.valid.reset(); }},
    {"not active", "active", "false", [](Element&) {}},
    {"active", "active", "true", [](Element& one) { one.installed.active = true; }},
    {"activity is not reported", "active", "false", [](Element& one) { one.installed.active.reset(); }},
    {"nothing is reported", "installed", R"({"version":null,"checksumCrc32":null,"valid":null,"active":null})",
     [](Element& one) { one.installed = {}; }},
    {"custom", "custom", "true", [](Element&) {}},
    {"not custom", "custom", "false", [](Element& one) { one.custom = false; }},
    {"a phase", "phase", "1", [](Element&) {}},
    {"no phase", "phase", "null", [](Element& one) { one.phase.reset(); }},
    {"an entry", "hasArchiveFile", "true", [](Element&) {}},
    {"no entry", "hasArchiveFile", "false", [](Element& one) { one.entry.reset(); }},
    {"an entry", "archiveFileIndex", "0", [](Element&) {}},
    {"no entry", "archiveFileIndex", "null", [](Element& one) { one.entry.reset(); }},
    {"an entry", "availableVersion", "\"23.2.1\"", [](Element&) {}},
    {"no entry", "availableVersion", "null", [](Element& one) { one.entry.reset(); }},
    {"an entry without version", "availableVersion", "null", [](Element& one) { one.entry->version.reset(); }},
    {"an entry", "availableChecksum", "947785106", [](Element&) {}},
    {"no entry", "availableChecksum", "null", [](Element& one) { one.entry.reset(); }},
    {"an entry without checksum", "availableChecksum", "null", [](Element& one) { one.entry->checksumCrc32.reset(); }},
    {"no entry", "entry", "null", [](Element& one) { one.entry.reset(); }},
    {"other checksums", "checksumMismatch", "true", [](Element&) {}},
    {"equal checksums", "checksumMismatch", "false",
     [](Element& one) { one.entry->checksumCrc32 = one.installed.checksumCrc32; }},
    {"the entry's checksum is not known", "checksumMismatch", "true",
     [](Element& one) { one.entry->checksumCrc32.reset(); }},
    {"no entry", "checksumMismatch", "null", [](Element& one) { one.entry.reset(); }},
    {"an upgrade", "checksumMismatch", "null", [](Element& one) { one.entry->mode = KvEEntryMode::upgrade; }},
    {"checksum 0 is reported", "checksumMismatch", "null", [](Element& one) { one.installed.checksumCrc32 = 0; }},
    {"no checksum is reported", "checksumMismatch", "null", [](Element& one) { one.installed.checksumCrc32.reset(); }},
    {"an update", "decision", "\"update\"", [](Element&) {}},
    {"no update", "decision", "\"leave\"",
     [](Element& one) {
         one.decision = {false, {KvEReason::upToDate}};
     }},
    {"nothing was decided", "decision", "null", [](Element& one) { one.decision = {}; }},
    {"an update", "reasons", R"(["version-differs","checksum-differs","inactive"])", [](Element&) {}},
    {"nothing was decided", "reasons", "[]", [](Element& one) { one.decision = {}; }},
    {"no name of the board type", "boardType", "\"\"", [](Element& one) { one.boardType.clear(); }},
    {"no address", "address", "\"\"", [](Element& one) { one.address.clear(); }},
    {"bytes that are not UTF-8", "displayName", "\"a\uFFFDb\"", [](Element& one) {
         one.displayName = "a\xFF"
                           "b";
     }}};

TEST(ElementRecord, IsNullWhereNothingIsKnownOrNothingApplies) {
    for (const MemberRow& row : memberRows) {
        KvTPlannedElement element = samplePlan().elements.front();
        row.change(element);
        EXPECT_EQ(row.value, memberOf(element, row.key)) << row.key << ": " << row.situation;
    }
}

TEST(TriedEntry, ATextThatIsNotJsonIsShownAsItIs) {
    const KvTPlan plan = samplePlan();
    std::vector<KvTExplanation> explanations = sampleExplanations();
    explanations.resize(1);
    explanations.front().tried.front().archiveValue = "[1";
    const json document = json::parse(explainDocument(&plan, explanations, {}, {}));
    const KvNJson::jsonView tried = document.view().find("elements").at(0).find("triedEntries");
    EXPECT_EQ("[1", tried.at(0).find("archiveValue").get_string());
    EXPECT_EQ("A", tried.at(0).find("elementValue").get_string());
}

} // namespace
