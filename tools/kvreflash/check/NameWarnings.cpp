#include "NameWarnings.h"

#include "ForeignPaths.h"
#include "LowerCase.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

constexpr std::string_view separators = "/\\";

std::string lowerCaseOf(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerCase);
    return lower;
}

/// Looks at the names of update files, at each place where one stands; what costs is asked once for each name.
class NameRules {
public:
    NameRules(const KvTCheckedArchive& checked, FindingList& findings) : checked_(checked), findings_(findings) {}

    void check(OutlineValue name) {
        const std::string_view text = name.text();
        if (leavesFolder(text)) {
            findings_.warn("outside-archive", name,
                           "The update file " + inQuotes(text) + " lies outside of the archive folder.",
                           "Put the file into the archive folder and write its plain name.");
        } else if (text.find_first_of(separators) != std::string_view::npos) {
            findings_.warn("name-with-separator", name, "The name " + inQuotes(text) + " is a path.",
                           "Put the file into the archive folder itself and write its plain name.");
        }
        const std::string_view first = firstByLowerCase_.try_emplace(lowerCaseOf(text), text).first->second;
        if (first != text) {
            findings_.warn("name-case", name,
                           "The names " + inQuotes(text) + " and " + inQuotes(first) + " differ only in case.",
                           "Write both the same way, or name one of the files differently: some systems take them for "
                           "one file.");
        }
    }

private:
    bool leavesFolder(std::string_view name) {
        const auto [found, isNew] = leavesFolder_.try_emplace(name, false);
        if (isNew) {
            found->second = leavesArchiveFolder(checked_.options.archiveFolder, name);
        }
        return found->second;
    }

    const KvTCheckedArchive& checked_;
    FindingList& findings_;
    std::unordered_map<std::string_view, bool> leavesFolder_;
    std::unordered_map<std::string, std::string_view> firstByLowerCase_;
};

void warnOfTargetPath(OutlineValue path, FindingList& findings) {
    if (path.kind() == KvEJsonKind::text && leavesTargetRoot(path.text())) {
        findings.warn("outside-target", path,
                      "The target path " + inQuotes(path.text()) + " leads out of the target's file system.",
                      R"(Write a path without ".." that leads upwards.)");
    }
}

} // namespace

void warnOfNames(const KvTCheckedArchive& checked, FindingList& findings) {
    NameRules rules(checked, findings);
    for (const KvTOutlinedEntry& entry : checked.entries) {
        const OutlineValue name = entry.value.find("name");
        if (!entry.isSkipped && name.kind() == KvEJsonKind::text) {
            rules.check(name);
        }
    }
    forEachEntryObject(checked,
                       [&findings](OutlineValue object) { warnOfTargetPath(object.find("targetPath"), findings); });
}
