#include "Warnings.h"

#include "FileNames.h"
#include "ForeignPaths.h"
#include "KvCDirectFileWriter.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

constexpr std::string_view separators = "/\\";

/// Remembers names, and finds those that differ from an earlier one only in case.
class NamesInAnyCase {
public:
    /// The first name that differs from `name` only in case; `name` itself if it is the first one. Names must outlive
    /// the object.
    std::string_view firstOf(std::string_view name) {
        return firstByFoldedCase_.try_emplace(foldedCaseOf(name), name).first->second;
    }

private:
    std::unordered_map<std::string, std::string_view> firstByFoldedCase_;
};

/// Looks at the names of update files, at each place where one stands; what costs is asked once for each name.
class NameRules {
public:
    NameRules(const KvTCheckedArchive& checked, KvCFindingList& findings) : checked_(checked), findings_(findings) {}

    void check(KvCOutlineValue name) {
        const std::string_view text = name.text();
        if (leavesFolder(text)) {
            findings_.warn(KvECheckRule::outsideArchive, name,
                           "The update file " + inQuotes(text) + " lies outside of the archive folder.");
        } else if (text.find_first_of(separators) != std::string_view::npos) {
            findings_.warn(KvECheckRule::nameWithSeparator, name, "The name " + inQuotes(text) + " is a path.");
        }
        const std::string_view first = names_.firstOf(text);
        if (first != text) {
            findings_.warn(KvECheckRule::nameCase, name,
                           "The names " + inQuotes(text) + " and " + inQuotes(first) + " differ only in case.");
        }
    }

private:
    bool leavesFolder(std::string_view name) {
        const auto [found, isNew] = leavesFolder_.try_emplace(name, false);
        if (isNew) {
            found->second = leavesArchiveFolder(checked_.archive.folder(), name);
        }
        return found->second;
    }

    const KvTCheckedArchive& checked_;
    KvCFindingList& findings_;
    std::unordered_map<std::string_view, bool> leavesFolder_;
    NamesInAnyCase names_;
};

/// True for a path that names the target's root folder once more.
bool repeatsTargetRoot(std::string_view path) {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    std::string_view root = targetRoot;
    root.remove_prefix(1);
    return path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/');
}

void warnOfTargetPath(KvCOutlineValue value, KvCFindingList& findings) {
    const std::string_view path = value.text();
    const std::string quoted = inQuotes(path);
    if (leavesTargetRoot(path)) {
        findings.warn(KvECheckRule::outsideTarget, value,
                      "The target path " + quoted + " leads out of the target's file system.");
    } else if (path.find('\\') != std::string_view::npos) {
        findings.warn(KvECheckRule::targetPathSeparator, value,
                      "The target path " + quoted + R"( has a "\", which does not separate folders on the target.)");
    } else if (repeatsTargetRoot(path)) {
        findings.warn(KvECheckRule::targetPathWithRoot, value,
                      "The target path " + quoted + " is taken below " + std::string(targetRoot) + ".",
                      inQuotes(targetRoot));
    } else if (path.empty() || path.ends_with('/')) {
        findings.warn(KvECheckRule::targetPathWithoutName, value, "The target path " + quoted + " has no file name.");
    }
}

void warnOfCase(KvCOutlineValue targetPath, NamesInAnyCase& targetPaths, KvCFindingList& findings) {
    const std::string_view first = targetPaths.firstOf(targetPath.text());
    if (first != targetPath.text()) {
        findings.warn(KvECheckRule::targetPathCase, targetPath,
                      "The target paths " + inQuotes(targetPath.text()) + " and " + inQuotes(first) +
                          " differ only in case.");
    }
}

} // namespace

void warnOfNames(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    NameRules rules(checked, findings);
    for (const KvTOutlinedEntry& entry : checked.entries) {
        const KvCOutlineValue name = entry.value.find("name");
        if (!entry.isSkipped && name.kind() == KvEJsonKind::text) {
            rules.check(name);
        }
    }
    NamesInAnyCase targetPaths;
    forEachEntryObject(checked, [&](KvCOutlineValue object) {
        const KvCOutlineValue path = object.find("targetPath");
        if (path.kind() == KvEJsonKind::text) {
            warnOfTargetPath(path, findings);
            warnOfCase(path, targetPaths, findings);
        }
    });
}
