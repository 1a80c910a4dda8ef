#include "PlanDifferences.h"

#include "SavedPlanRecord.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace KvNReflasher {

using KvNJson::json;
using KvNJson::jsonView;

namespace {

using Members = std::vector<std::string_view>;

/// Members that depend on who looks, and those of elements that say once more what others say.
const Members givenMembers = {"given"};
const Members trustMembers = {"trustFolder", "unsealedAccepted"};
const Members derivedMembers = {"index",
                                "valid",
                                "active",
                                "installedVersion",
                                "installedChecksum",
                                "hasArchiveFile",
                                "archiveFileIndex",
                                "availableVersion",
                                "availableChecksum"};

std::string textFor(jsonView value);

/// Collects differences between records, member by member.
class DifferenceList {
public:
    /// `what` names the values in the sentences; `skipped` are members of records that are not compared.
    void compare(const std::string& what, jsonView saved, jsonView now, const Members& skipped = {}) {
        if (!saved.is_object() || !now.is_object()) {
            compareValues(what, saved, now);
            return;
        }
        for (std::size_t member = 0; member < saved.size(); ++member) {
            const std::string_view key = saved.key(member);
            if (std::find(skipped.begin(), skipped.end(), key) == skipped.end()) {
                compare(std::string(what).append(what.back() == ':' ? " " : ".").append(key), saved.at(member),
                        now.find(key));
            }
        }
    }

    /// Compares the items of two lists: `keyOf` returns the text by which an item is found again, `nameOf` the one that
    /// sentences call it by.
    template <typename TextOf>
    void compareItems(jsonView saved, jsonView now, TextOf keyOf, TextOf nameOf) {
        std::multimap<std::string, jsonView> others;
        for (std::size_t index = 0; index < now.size(); ++index) {
            others.emplace(keyOf(now.at(index)), now.at(index));
        }
        for (std::size_t index = 0; index < saved.size(); ++index) {
            const jsonView item = saved.at(index);
            const auto other = others.find(keyOf(item));
            if (other == others.end()) {
                sentences.push_back(nameOf(item) + ": it is not there any more");
                continue;
            }
            compare(nameOf(item) + ":", item, other->second, derivedMembers);
            others.erase(other);
        }
        for (std::size_t index = 0; index < now.size(); ++index) {
            if (const auto other = others.find(keyOf(now.at(index))); other != others.end()) {
                sentences.push_back(nameOf(other->second) + ": it was not there");
                others.erase(other);
            }
        }
    }

    std::vector<std::string> sentences;

private:
    void compareValues(const std::string& what, jsonView saved, jsonView now) {
        const std::string before = textFor(saved);
        const std::string after = textFor(now);
        if (before != after) {
            sentences.push_back(std::string(what).append(" is ").append(after).append(", and was ").append(before));
        }
    }
};

/// The value as JSON on one line.
std::string textFor(jsonView value) {
    if (value.is_string()) {
        return json(value.get_string()).dump(-1, ' ', false, KvNJson::error_handler_t::replace);
    }
    if (value.is_boolean()) {
        return value.get_boolean() ? "true" : "false";
    }
    if (value.is_number_unsigned()) {
        return std::to_string(value.get_unsigned());
    }
    if (!value.is_array()) {
        return value.is_object() ? "a record" : "null";
    }
    std::string text = "[";
    for (std::size_t index = 0; index < value.size(); ++index) {
        text.append(index == 0 ? "" : ", ").append(textFor(value.at(index)));
    }
    return text + "]";
}

/// The address; of a file that the inventory does not list its path.
std::string placeOfElement(jsonView element) {
    const std::string_view address = element.find("address").get_string();
    return std::string(address.empty() ? element.find("targetPath").get_string() : address);
}

std::string nameOfElement(jsonView element) {
    const std::string name(element.find("displayName").get_string());
    return "'" + name + "' (" + placeOfElement(element) + ")";
}

std::string nameOfFile(jsonView file) {
    return std::string("update file '").append(file.find("name").get_string()) + "'";
}

json recordOf(const KvTSavedPlan& plan) {
    KvCJsonText record = KvCJsonText::makeObject();
    setPlanBasis(record, plan);
    setPlanElements(record, plan.plan);
    return json::parse(record.text());
}

/// Target and archive, without what was planned for them.
void compareOrigins(DifferenceList& list, jsonView savedPlan, jsonView planNow) {
    list.compare("target", savedPlan.find("target"), planNow.find("target"), givenMembers);
    const jsonView saved = savedPlan.find("archive");
    const jsonView now = planNow.find("archive");
    for (const char* member : {"description", "descriptionSha256", "information", "release"}) {
        list.compare(std::string("archive.").append(member), saved.find(member), now.find(member), trustMembers);
    }
    list.compareItems(saved.find("files"), now.find("files"), nameOfFile, nameOfFile);
}

} // namespace

std::vector<std::string> differencesBetween(const KvTSavedPlan& saved, const KvTSavedPlan& now) {
    const json before = recordOf(saved);
    const json after = recordOf(now);
    DifferenceList list;
    compareOrigins(list, before.view(), after.view());
    for (const char* member : {"supported", "phaseCount", "changes"}) {
        list.compare(member, before.view().find(member), after.view().find(member));
    }
    list.compareItems(before.view().find("elements"), after.view().find("elements"), placeOfElement, nameOfElement);
    return std::move(list.sentences);
}

std::vector<std::string> originDifferencesBetween(const KvTSavedPlan& saved, const KvTSavedPlan& now) {
    const json before = recordOf(saved);
    const json after = recordOf(now);
    DifferenceList list;
    compareOrigins(list, before.view(), after.view());
    return std::move(list.sentences);
}

} // namespace KvNReflasher
