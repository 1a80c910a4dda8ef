#include "DescriptionRules.h"

#include <algorithm>
#include <array>

namespace {

using KvNJson::jsonView;

constexpr std::uint64_t supportedFeatureLevel = 2;

bool isUnsigned(jsonView value) {
    return value.is_number_unsigned();
}
bool isString(jsonView value) {
    return value.is_string();
}
bool isStringOrNull(jsonView value) {
    return value.is_string() || value.is_null();
}
bool isStringOrArray(jsonView value) {
    return value.is_string() || value.is_array();
}
bool isStringNullOrArray(jsonView value) {
    return isStringOrNull(value) || value.is_array();
}
bool isUnsignedOrArray(jsonView value) {
    return value.is_number_unsigned() || value.is_array();
}

using ValueTest = bool (*)(jsonView);
struct PropertyTest {
    KvEProperty property;
    ValueTest holds;
};

/// The types of the properties, in the order of the reports.
constexpr std::array typeTests = {PropertyTest{KvEProperty::mode, isString},
                                  PropertyTest{KvEProperty::checksumCrc32, isUnsigned},
                                  PropertyTest{KvEProperty::version, isStringOrNull},
                                  PropertyTest{KvEProperty::swCompatibilityId, isUnsignedOrArray},
                                  PropertyTest{KvEProperty::hwCompatibilityId, isUnsignedOrArray},
                                  PropertyTest{KvEProperty::targetPath, isString},
                                  PropertyTest{KvEProperty::id, isUnsigned},
                                  PropertyTest{KvEProperty::boardId, isUnsignedOrArray},
                                  PropertyTest{KvEProperty::boardVariant, isStringNullOrArray},
                                  PropertyTest{KvEProperty::boardType, isStringOrArray}};

/// What the elements of an array must be, in the order of the reports.
constexpr std::array elementTests = {
    PropertyTest{KvEProperty::boardType, isString}, PropertyTest{KvEProperty::boardVariant, isStringOrNull},
    PropertyTest{KvEProperty::boardId, isUnsigned}, PropertyTest{KvEProperty::hwCompatibilityId, isUnsigned},
    PropertyTest{KvEProperty::swCompatibilityId, isUnsigned}};

/// The rules for the properties of one object: an entry, or an element of its "boards".
class PropertyRules {
public:
    PropertyRules(KvCArchiveFindings& findings, const KvCEntryProperties& properties, std::uint32_t entry,
                  std::int32_t board)
        : findings_(findings), properties_(properties), entry_(entry), board_(board) {}

    /// Applies the rules in their order; false: do not go on.
    [[nodiscard]] bool check() {
        return checkTypes() && checkElements() && checkVersion() && checkMode() && checkForbidden();
    }

private:
    [[nodiscard]] bool checkTypes() {
        for (const PropertyTest& test : typeTests) {
            const jsonView value = properties_[test.property];
            if (value.is_valid() && !test.holds(value) &&
                !fail(about(KvEArchiveRule::propertyType, test.property),
                      L"ERROR: File entry %u is invalid. Property \"%hs\" has an invalid value.\n",
                      L"ERROR: File entry %u is invalid. Property \"%hs\" of \"boards\"-element %u has an invalid "
                      L"value.\n",
                      propertyKey(test.property))) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool checkElements() {
        return std::all_of(elementTests.begin(), elementTests.end(), [this](const PropertyTest& test) {
            const std::size_t item = firstBadItem(test);
            return item == noItem ||
                   fail(about(KvEArchiveRule::propertyElements, test.property, item),
                        L"ERROR: File entry %u is invalid. Property \"%hs\" has invalid elements.\n",
                        L"ERROR: File entry %u is invalid. Property \"%hs\" of \"boards\" element %u has invalid "
                        L"elements.\n",
                        propertyKey(test.property));
        });
    }

    /// The index of the first item that is not what it must be; noItem if there is none.
    [[nodiscard]] std::size_t firstBadItem(const PropertyTest& test) const {
        const jsonView value = properties_[test.property];
        for (std::size_t index = 0; value.is_array() && index < value.size(); ++index) {
            if (!test.holds(value.at(index))) {
                return index;
            }
        }
        return noItem;
    }

    [[nodiscard]] bool checkVersion() {
        const jsonView version = properties_[KvEProperty::version];
        return !version.is_string() || versionOf(version).getAsULong64() != 0 ||
               fail(about(KvEArchiveRule::versionIsVersion, KvEProperty::version),
                    L"ERROR: File entry %u is invalid. Property \"version\" is invalid.\n",
                    L"ERROR: File entry %u is invalid. Property \"version\" of \"boards\" element %u is invalid.\n");
    }

    [[nodiscard]] bool checkMode() {
        const jsonView mode = properties_[KvEProperty::mode];
        return !mode.is_string() || mode.get_string() == "standard" || mode.get_string() == "upgrade" ||
               fail(about(KvEArchiveRule::modeIsKnown, KvEProperty::mode),
                    L"ERROR: File entry %u is invalid. Property \"mode\" is invalid.\n",
                    L"ERROR: File entry %u is invalid. Property \"mode\" of \"boards\" element %u is invalid.\n");
    }

    [[nodiscard]] bool checkForbidden() {
        const bool present = properties_.has(KvEProperty::version) || properties_.has(KvEProperty::checksumCrc32) ||
                             properties_.has(KvEProperty::mode);
        if (board_ < 0 || !present) {
            return true;
        }
        return findings_.error({KvEArchiveRule::boardHasNoEntryProperties, entry_, board_},
                               L"ERROR: File entry %u is invalid. \"boards\" element %u is invalid. Properties "
                               L"\"version\", \"checksumCrc32\" and \"mode\" must not be specified inside a "
                               L"\"boards\" element.\n",
                               entry_, static_cast<unsigned>(board_));
    }

    [[nodiscard]] KvTArchiveFinding about(KvEArchiveRule rule, KvEProperty property, std::size_t item = noItem) const {
        return {rule, entry_, board_, property, item};
    }

    /// Reports a broken rule in the wording for an entry or for an element of "boards".
    template <typename... Arguments>
    [[nodiscard]] bool
    fail(const KvTArchiveFinding& finding, KvCFormat<unsigned, std::type_identity_t<Arguments>...> entryMessage,
         KvCFormat<unsigned, std::type_identity_t<Arguments>..., unsigned> boardMessage, Arguments... arguments) {
        if (board_ < 0) {
            return findings_.error<unsigned, Arguments...>(finding, entryMessage, entry_, arguments...);
        }
        return findings_.error<unsigned, Arguments..., unsigned>(finding, boardMessage, entry_, arguments...,
                                                                 static_cast<unsigned>(board_));
    }

    KvCArchiveFindings& findings_;
    const KvCEntryProperties& properties_;
    std::uint32_t entry_;
    std::int32_t board_;
};

/// The rules for one entry. Each step tells whether to go on.
class EntryRules {
public:
    EntryRules(KvCArchiveFindings& findings, const KvCEntryProperties& properties, std::uint32_t entry)
        : findings_(findings), properties_(properties), entry_(entry) {}

    [[nodiscard]] bool check() { return checkFeatureLevel() && (skipped_ || checkRest()); }
    /// Everything but the feature level.
    [[nodiscard]] bool checkRest() {
        return checkMandatory() && checkProperties(properties_, noBoard) && checkBoards() && checkNotBoth() &&
               checkAddressed();
    }
    /// The entry needs a feature level that is not supported; nothing else of it was looked at.
    [[nodiscard]] bool skipped() const { return skipped_; }

private:
    [[nodiscard]] bool checkFeatureLevel() {
        const jsonView level = properties_[KvEProperty::featureLevel];
        if (!level.is_valid()) {
            return true;
        }
        if (!level.is_number_unsigned()) {
            return fail(KvEArchiveRule::featureLevelIsUnsigned,
                        L"ERROR: File entry %u is invalid. Property \"featureLevel\" is invalid.\n");
        }
        if (level.get_unsigned() > supportedFeatureLevel) {
            findings_.warning({KvEArchiveRule::featureLevelIsSupported, entry_},
                              L"WARNING: File entry %u is not supported. Ignoring this entry.\n", entry_);
            skipped_ = true;
        }
        return true;
    }

    [[nodiscard]] bool checkMandatory() {
        const jsonView boards = properties_[KvEProperty::boards];
        const bool complete = properties_[KvEProperty::name].is_string() &&
                              properties_[KvEProperty::sequence].is_number_unsigned() &&
                              properties_.has(KvEProperty::boardType) != boards.is_valid() &&
                              (!boards.is_valid() || (boards.is_array() && boards.size() > 0));
        return complete || fail(KvEArchiveRule::mandatoryProperties,
                                L"ERROR: File entry %u is invalid. A mandatory property is missing or invalid.\n");
    }

    [[nodiscard]] bool checkProperties(const KvCEntryProperties& properties, std::int32_t board) {
        idFound_ = idFound_ || properties.has(KvEProperty::id);
        targetPathFound_ = targetPathFound_ || properties.has(KvEProperty::targetPath);
        return PropertyRules(findings_, properties, entry_, board).check();
    }

    [[nodiscard]] bool checkBoards() {
        const jsonView boards = properties_[KvEProperty::boards];
        everyBoardAddressed_ = boards.is_array();
        for (std::size_t index = 0; boards.is_array() && index < boards.size(); ++index) {
            if (!checkBoard(boards.at(index), static_cast<std::int32_t>(index))) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool checkBoard(jsonView board, std::int32_t index) {
        const KvCEntryProperties properties(board);
        if (!properties.has(KvEProperty::boardType) &&
            !findings_.error({KvEArchiveRule::boardIsObjectWithType, entry_, index},
                             L"ERROR: File entry %u is invalid. \"boards\"-entry %u is invalid.\n", entry_,
                             static_cast<unsigned>(index))) {
            return false;
        }
        if (!board.is_object()) {
            return true;
        }
        everyBoardAddressed_ =
            everyBoardAddressed_ && (properties.has(KvEProperty::id) || properties.has(KvEProperty::targetPath));
        return checkProperties(properties, index);
    }

    [[nodiscard]] bool checkNotBoth() {
        return !idFound_ || !targetPathFound_ ||
               fail(KvEArchiveRule::idOrTargetPathNotBoth,
                    L"ERROR: File entry %u is invalid. Properties \"id\" and \"targetPath\" must not be specified at "
                    L"the same time.\n");
    }

    [[nodiscard]] bool checkAddressed() {
        return everyBoardAddressed_ || properties_.has(KvEProperty::id) || properties_.has(KvEProperty::targetPath) ||
               fail(KvEArchiveRule::idOrTargetPath,
                    L"ERROR: File entry %u is invalid. Either \"id\" or \"targetPath\" must be specified.\n");
    }

    [[nodiscard]] bool fail(KvEArchiveRule rule, KvCFormat<unsigned> message) {
        return findings_.error<unsigned>({rule, entry_}, message, entry_);
    }

    KvCArchiveFindings& findings_;
    const KvCEntryProperties& properties_;
    std::uint32_t entry_;
    bool skipped_ = false;
    bool idFound_ = false;
    bool targetPathFound_ = false;
    bool everyBoardAddressed_ = false;
};

} // namespace

KvTEntryVerdict checkEntry(KvCArchiveFindings& findings, jsonView entry, std::uint32_t index) {
    using enum KvEEntryOutcome;
    if (!entry.is_object()) {
        const bool goOn =
            findings.error({KvEArchiveRule::entryIsObject, index}, L"ERROR: File entry %u is invalid.\n", index);
        return {.outcome = refused, .goOn = goOn};
    }
    const KvCEntryProperties properties(entry);
    EntryRules rules(findings, properties, index);
    const std::uint32_t errorsBefore = findings.errorCount();
    const bool goOn = rules.check();
    const bool sound = findings.errorCount() == errorsBefore;
    return {.outcome = !sound ? refused : rules.skipped() ? skipped : accepted, .goOn = goOn};
}

KvTEntryVerdict checkIgnoredEntry(KvCArchiveFindings& findings, jsonView entry, std::uint32_t index) {
    const KvCEntryProperties properties(entry);
    EntryRules rules(findings, properties, index);
    const std::uint32_t errorsBefore = findings.errorCount();
    const bool goOn = rules.checkRest();
    const bool sound = findings.errorCount() == errorsBefore;
    return {.outcome = sound ? KvEEntryOutcome::accepted : KvEEntryOutcome::refused, .goOn = goOn};
}
