#include "Remarks.h"

#include "ToolOutput.h"
#include "Utf8.h"

#include <utility>

using namespace KvNReflasher;

namespace {

/// Why no element was disabled.
std::string faultOf(const KvTDisabling& disabling, const std::string& element) {
    if (disabling.elements.empty()) {
        return "the target has no element '" + element + "'";
    }
    std::string fault = "several elements are called '" + element + "':";
    for (const std::uint32_t index : disabling.elements) {
        fault.append(" ").append(std::to_string(index));
    }
    return fault;
}

} // namespace

KvTArchiveIdentity archiveIdentity(KvISession& session) {
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session.getArchiveInfo(name, version, product, format, variant);
    return {.archiveName = utf8Of(name),
            .archiveVersion = utf8Of(version),
            .productName = utf8Of(product),
            .formatVersion = utf8Of(format),
            .archiveVariant = utf8Of(variant)};
}

void warnOfForeignPaths(KvISession& session) {
    for (const KvTForeignPath& path : session.foreignPaths()) {
        std::string sentence("warning: file entry ");
        sentence.append(std::to_string(path.descriptionIndex)).append(path.isRead ? " reads \"" : " writes \"");
        sentence.append(path.path).append("\", which is outside the ");
        say(sentence.append(path.isRead ? "archive folder" : "target's file system"));
    }
}

KvTVerdict disableElements(KvISession& session, const std::vector<std::string>& elements) {
    std::string faults;
    for (const std::string& element : elements) {
        const KvTDisabling disabling = session.disableElement(element);
        if (!disabling.isDone()) {
            faults.append(faults.empty() ? "--disable: " : "; ").append(faultOf(disabling, element));
        }
    }
    return faults.empty() ? KvTVerdict() : KvTVerdict{KvEFailure::selection, std::move(faults)};
}

KvTVerdict verdictOfFilters(const KvTPlan& plan, const KvTOptions& options) {
    const bool hasFilter =
        !options.boardTypeFilter.empty() || !options.serialNumberFilter.empty() || !options.elementNameFilter.empty();
    if (!hasFilter || !plan.elements.empty()) {
        return {};
    }
    return {KvEFailure::selection, "no element of the target passes the filters"};
}
