#include "DescriptionRules.h"

namespace {

using KvNJson::jsonView;

constexpr std::uint8_t supportedFormatRelease = 1;

/// The rules for the "info" block. Each step tells whether the next ones may be applied.
class InfoReader {
public:
    InfoReader(KvCArchiveFindings& findings, jsonView block, KvTArchiveInfo& info)
        : findings_(findings), block_(block), info_(info) {}

    [[nodiscard]] bool read() {
        return readFormatVersion() && readArchiveVersion() && readProductName() && readArchiveVariant() &&
               readArchiveName();
    }

private:
    [[nodiscard]] bool readFormatVersion() {
        const jsonView value = block_.find("formatVersion");
        if (!value.is_string()) {
            return fail(KvEArchiveRule::formatVersionIsString,
                        L"ERROR: The archive description file is corrupt. \"formatVersion\" is missing or invalid.\n");
        }
        info_.formatVersion = versionOf(value);
        if (info_.formatVersion.getAsULong64() == 0) {
            return fail(KvEArchiveRule::formatVersionIsVersion,
                        L"ERROR: The archive description file is corrupt. \"formatVersion\" is invalid.\n");
        }
        return info_.formatVersion.getMar() == supportedFormatRelease ||
               fail(KvEArchiveRule::formatVersionIsSupported,
                    L"ERROR: This firmware archive cannot be processed by the update tool.\n"
                    L"       Do not use firmware archives with update tools from different Korvel releases.\n");
    }

    [[nodiscard]] bool readArchiveVersion() {
        const jsonView value = block_.find("archiveVersion");
        if (!value.is_string()) {
            return fail(KvEArchiveRule::archiveVersionIsString,
                        L"ERROR: The archive description file is corrupt. \"archiveVersion\" is missing or invalid.\n");
        }
        info_.archiveVersion = versionOf(value);
        return info_.archiveVersion.getAsULong64() != 0 ||
               fail(KvEArchiveRule::archiveVersionIsVersion,
                    L"ERROR: The archive description file is corrupt. \"archiveVersion\" is invalid.\n");
    }

    [[nodiscard]] bool readProductName() {
        return store(block_.find("productName"), info_.productName) ||
               fail(KvEArchiveRule::productNameIsString,
                    L"ERROR: The archive description file is corrupt. \"productName\" is missing or invalid.\n");
    }

    [[nodiscard]] bool readArchiveVariant() {
        const jsonView value = block_.find("archiveVariant");
        return !value.is_valid() || store(value, info_.archiveVariant) ||
               fail(KvEArchiveRule::archiveVariantIsString,
                    L"ERROR: The archive description file is corrupt. \"archiveVariant\" is invalid.\n");
    }

    [[nodiscard]] bool readArchiveName() {
        return store(block_.find("archiveName"), info_.archiveName) ||
               fail(KvEArchiveRule::archiveNameIsString,
                    L"ERROR: The archive description file is corrupt. \"archiveName\" is missing or invalid.\n");
    }

    /// False, and nothing stored, when `value` is no string.
    static bool store(jsonView value, KvCString& field) {
        if (value.is_string()) {
            field = KvCString(value.get_string());
        }
        return value.is_string();
    }

    [[nodiscard]] bool fail(KvEArchiveRule rule, KvCFormat<> message) { return findings_.error<>({rule}, message); }

    KvCArchiveFindings& findings_;
    jsonView block_;
    KvTArchiveInfo& info_;
};

} // namespace

bool readInfo(KvCArchiveFindings& findings, jsonView root, KvTArchiveInfo& info) {
    const jsonView block = root.find("info");
    if (!block.is_object()) {
        return findings.error(
            {KvEArchiveRule::infoIsObject},
            L"ERROR: The archive description file is corrupt. Property \"info\" is missing or invalid.\n");
    }
    return InfoReader(findings, block, info).read();
}
