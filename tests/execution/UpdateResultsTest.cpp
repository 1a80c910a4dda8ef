#include "UpdateTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <ostream>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Kind = SessionLog::Kind;

namespace {

const std::string cancelledLine = "       Update cancelled due to previous update errors on the same board.\n";
const std::string failedVerdict = "\n    Update failed!\n";
const std::string incompleteVerdict = "\n    Update incomplete due to missing files in the source folder!\n";
const std::string successVerdict = "\n    Update completed successfully!\n";

std::string failureOf(const std::string& element, const std::string& report = "") {
    return "    ERROR: " + element + ":\n" + report;
}

class UpdateResultsTest : public UpdateTest {
protected:
    std::string results() {
        const std::string text = log.text();
        const std::size_t begin = text.find("\nResults:\n");
        return begin == std::string::npos ? "" : text.substr(begin + 10);
    }
};

/// A situation of the update of three elements: One on the processor board in phase 0; Two on the same board and Three
/// on another one, both in phase 1.
struct Situation {
    const char* name;
    std::function<void(UpdateResultsTest& test)> arrange;
    std::vector<std::uint32_t> states;
    /// The elements that the error callback was told of.
    std::vector<std::string> told;
    /// What follows the heading of the results.
    std::string results;
    bool succeeds = false;

    friend void PrintTo(const Situation& situation, std::ostream* stream) { *stream << situation.name; }
};

class SituationTest : public UpdateResultsTest, public testing::WithParamInterface<Situation> {
public:
    using UpdateTest::addFault;
    using UpdateTest::archive;
    ItemBuilder one = completeElement(1, "One").polls(2);
    ItemBuilder two = completeElement(2, "Two").polls(1);
    ItemBuilder three = completeElement(1, "Three").polls(1);
};

} // namespace
