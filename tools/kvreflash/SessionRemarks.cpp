#include "SessionRemarks.h"

#include "KvCPreparation.h"
#include "SessionQueries.h"
#include "TextConversion.h"
#include "ToolOutput.h"

#include <string>

namespace {

using namespace KvNReflasher;

bool hasFilter(const KvTOptions& options) {
    return options.configurationElements || !options.boardTypeFilter.empty() || !options.serialNumberFilter.empty() ||
           !options.elementNameFilter.empty();
}

bool plans(const KvTOptions& options) {
    return options.mode == showUpdatePlan || options.mode == performUpdate;
}

/// True when the session has come as far as to look for the target.
bool hasReadItsArchive(KvIReflasher& session) {
    return archiveTextsOf(session).formatVersion != L"0.0";
}

void sayElementsWithoutEntry(KvIReflasher& session) {
    constexpr std::size_t mostNames = 3;
    std::string names;
    std::size_t count = 0;
    for (const KvTUpdateElementInfo& element : elementsOf(session)) {
        if (element.hasArchiveFile == 0 && !element.isFileSystemElement && ++count <= mostNames) {
            names.append(count == 1 ? "'" : ", '").append(wideToUtf8(element.displayName.c_str())).append("'");
        }
    }
    if (count > mostNames) {
        names.append(" and ").append(std::to_string(count - mostNames)).append(" more");
    }
    say("there is no entry for " + names);
}

} // namespace

void sayWhichElementsAreNotThere(KvIReflasher& session, const std::vector<std::uint32_t>& elements) {
    const std::size_t count = elements.empty() ? 0 : elementsOf(session).size();
    for (const std::uint32_t element : elements) {
        if (element >= count) {
            say("--disable: the target has no element " + std::to_string(element));
        }
    }
}

void sayWhenAllIsFiltered(KvIReflasher& session, const KvTOptions& options) {
    const bool showsElements = options.mode == showTargetElements || plans(options);
    if (showsElements && hasFilter(options) && elementsOf(session).empty()) {
        say("no element of the target passes the filters");
    }
}

void sayWhatIsMissing(KvIReflasher& session, const KvTOptions& options, std::uint32_t prepared) {
    if (prepared == prepareTargetNotSupported) {
        sayElementsWithoutEntry(session);
    } else if (options.mode >= showTargetElements && options.target.empty() &&
               (!plans(options) || hasReadItsArchive(session))) {
        say("give the target with -t HOST");
    }
}
