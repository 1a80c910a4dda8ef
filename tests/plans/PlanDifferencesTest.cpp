#include "PlanDifferences.h"

#include "SavedPlanRecord.h"
#include "SavedPlans.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <string>

using namespace KvNReflasher;
using KvNJson::json;
using KvNJson::jsonView;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Another value of the same kind; of a word one of the same enumeration.
json otherThan(jsonView value) {
    const std::map<std::string, std::string> words = {
        {"standard", "upgrade"}, {"upgrade", "standard"},       {"update", "leave"},           {"leave", "update"},
        {"trusted", "sealed"},   {"version-differs", "forced"}, {"checksum-differs", "forced"}};
    if (value.is_boolean()) {
        return !value.get_boolean();
    }
    if (value.is_number_unsigned()) {
        return value.get_unsigned() + 1;
    }
    const auto word = words.find(std::string(value.get_string()));
    return word != words.end() ? json(word->second.c_str()) : json(std::string(value.get_string()).append("x").c_str());
}

/// Copies a record and changes the value in which `countdown` reaches 0. `path` receives where that is.
json copyWithChange(jsonView value, int& countdown, const std::string& here, std::string& path) {
    if (value.is_object()) {
        json copy = json::makeObject();
        for (std::size_t member = 0; member < value.size(); ++member) {
            const std::string key(value.key(member));
            copy.set(key, copyWithChange(value.at(member), countdown, std::string(here).append(".").append(key), path));
        }
        return copy;
    }
    if (value.is_array()) {
        json copy = json::makeArray();
        for (std::size_t item = 0; item < value.size(); ++item) {
            copy.append(copyWithChange(value.at(item), countdown, here, path));
        }
        return copy;
    }
    if (value.is_null()) {
        return {};
    }
    if (countdown-- == 0) {
        path = here;
        return otherThan(value);
    }
    if (value.is_boolean()) {
        return value.get_boolean();
    }
    return value.is_string() ? json(value.get_string()) : json(value.get_unsigned());
}

json recordOf(const KvTSavedPlan& plan) {
    KvCJsonText record = KvCJsonText::makeObject();
    setPlanBasis(record, plan);
    setPlanElements(record, plan.plan);
    return json::parse(record.text());
}

KvTSavedPlan planOf(jsonView record) {
    KvTSavedPlan plan;
    readPlanBasis(record, plan);
    readPlanElements(record, plan);
    return plan;
}

/// What is not compared: who has planned, with which options, from where; and what says once more what others say.
bool isExempt(const std::string& path) {
    const std::string names[] = {".id",
                                 ".toolVersion",
                                 ".time",
                                 ".target.given",
                                 ".archive.folder",
                                 ".archive.release.trustFolder",
                                 ".archive.release.unsealedAccepted",
                                 ".changes",
                                 ".unsupportedElements",
                                 ".elements.index",
                                 ".elements.valid",
                                 ".elements.active",
                                 ".elements.installedVersion",
                                 ".elements.installedChecksum",
                                 ".elements.hasArchiveFile",
                                 ".elements.archiveFileIndex",
                                 ".elements.availableVersion",
                                 ".elements.availableChecksum",
                                 ".elements.checksumMismatch"};
    return path.starts_with(".options.") || std::find(std::begin(names), std::end(names), path) != std::end(names);
}

TEST(PlanDifferences, NameEveryValueThatHasChanged) {
    const KvTSavedPlan saved = sampleSavedPlan();
    const json record = recordOf(saved);
    int compared = 0;
    for (int number = 0;; ++number) {
        int countdown = number;
        std::string path;
        const json changed = copyWithChange(record.view(), countdown, "", path);
        if (path.empty()) {
            break;
        }
        const std::vector<std::string> differences = differencesBetween(saved, planOf(changed.view()));
        if (isExempt(path)) {
            continue;
        }
        ++compared;
        const std::string member = path.substr(path.rfind('.') + 1);
        // A name by which an item is found again shows as one that went and one that came.
        const bool isName =
            path == ".elements.address" || path == ".elements.targetPath" || path == ".archive.files.name";
        EXPECT_TRUE(std::any_of(differences.begin(), differences.end(), [&](const std::string& difference) {
            return difference.find(member) != std::string::npos ||
                   (isName && difference.find("there") != std::string::npos);
        })) << path;
    }
    EXPECT_GT(compared, 100);
    EXPECT_THAT(differencesBetween(saved, saved), IsEmpty());
}

TEST(PlanDifferences, SayWhatIsAndWhatWas) {
    const KvTSavedPlan saved = sampleSavedPlan();
    KvTSavedPlan now = saved;
    now.plan.targetAddress = "10.0.0.2";
    now.plan.nodeSerialNumbers = {2815};
    now.files.pop_back();
    now.plan.elements.pop_back();
    const std::string name = "'" + saved.plan.elements.back().displayName + "'";
    const std::vector<std::string> differences = differencesBetween(saved, now);
    ASSERT_EQ(differences.size(), 4U);
    EXPECT_EQ(differences[0], "target.address is \"10.0.0.2\", and was \"" + saved.plan.targetAddress + "\"");
    EXPECT_EQ(differences[1], "target.nodeSerialNumbers is [2815], and was [2815, 2816]");
    EXPECT_EQ(differences[2], "update file 'two.kfw': it is not there any more");
    EXPECT_TRUE(differences[3].starts_with(name)) << differences[3];
    EXPECT_EQ(originDifferencesBetween(saved, now).size(), 3U);
}

TEST(PlanDifferences, OptionsAndTheFolderOfTheArchiveMayBeOthers) {
    const KvTSavedPlan saved = sampleSavedPlan();
    KvTSavedPlan now = saved;
    now.archiveFolder = "/moved";
    now.target = "10.0.0.1";
    now.id = "other";
    now.plan.release->trustFolder = "/other";
    EXPECT_THAT(differencesBetween(saved, now), IsEmpty());
}

} // namespace
