#include "EntryMatching.h"

#include <algorithm>
#include <cstddef>

using KvNReflasher::KvEMatchTest;

namespace {

KvTComparedValue boardVariantOf(const KvTUpdateElement& element) {
    return element.boardVariant.isEmpty() ? KvTComparedValue() : element.boardVariant.view();
}
KvTComparedValue boardIdOf(const KvTUpdateElement& element) {
    return std::uint64_t{element.boardId};
}
KvTComparedValue hwCompatibilityIdOf(const KvTUpdateElement& element) {
    return std::uint64_t{element.hwCompatibilityId};
}
KvTComparedValue swCompatibilityIdOf(const KvTUpdateElement& element) {
    return std::uint64_t{element.swCompatibilityId};
}

bool hasBoardType(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    return std::find(selection.boardTypes.begin(), selection.boardTypes.end(), element.boardType.view()) !=
           selection.boardTypes.end();
}

template <std::size_t property>
bool hasAllowedValue(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    const KvTComparedProperty& compared = comparedProperties[property];
    return matchesValue(selection.*compared.allowed, compared.valueOf(element));
}

bool isAddressedAlike(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    return element.isFileSystemElement == selection.address.targetPath.has_value();
}

bool hasId(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    return element.isFileSystemElement || element.elementId == selection.address.id;
}

bool hasTargetPath(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    return !element.isFileSystemElement || element.location == anyLocation ||
           element.location == *selection.address.targetPath;
}

struct Test {
    KvEMatchTest name;
    bool (*passes)(const KvTUpdateElement& element, const KvTEntrySelection& selection);
};

/// In their order: a test may rely on those before it.
constexpr std::array tests = {Test{KvEMatchTest::boardType, hasBoardType},
                              Test{KvEMatchTest::boardVariant, hasAllowedValue<0>},
                              Test{KvEMatchTest::boardId, hasAllowedValue<1>},
                              Test{KvEMatchTest::addressing, isAddressedAlike},
                              Test{KvEMatchTest::id, hasId},
                              Test{KvEMatchTest::targetPath, hasTargetPath},
                              Test{KvEMatchTest::hwCompatibilityId, hasAllowedValue<2>},
                              Test{KvEMatchTest::swCompatibilityId, hasAllowedValue<3>}};

} // namespace

bool matchesValue(const KvCAllowedValues& allowed, const KvTComparedValue& elementValue) {
    for (std::size_t index = 0; index < allowed.size(); ++index) {
        if (allowed.at(index) == elementValue) {
            return true;
        }
    }
    return false;
}

const std::array<KvTComparedProperty, 4> comparedProperties = {
    {{KvEMatchTest::boardVariant, &KvTEntrySelection::boardVariant, boardVariantOf},
     {KvEMatchTest::boardId, &KvTEntrySelection::boardId, boardIdOf},
     {KvEMatchTest::hwCompatibilityId, &KvTEntrySelection::hwCompatibilityId, hwCompatibilityIdOf},
     {KvEMatchTest::swCompatibilityId, &KvTEntrySelection::swCompatibilityId, swCompatibilityIdOf}}};

const KvTEntrySelection* decidingSelection(const KvTUpdateElement& element, const KvTArchiveFile& file) {
    const auto found =
        std::find_if(file.selections.begin(), file.selections.end(),
                     [&](const KvTEntrySelection& selection) { return hasBoardType(element, selection); });
    return found != file.selections.end() ? &*found : nullptr;
}

KvEMatchTest firstFailingTest(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    const auto* const failing =
        std::find_if(tests.begin(), tests.end(), [&](const Test& test) { return !test.passes(element, selection); });
    return failing != tests.end() ? failing->name : KvEMatchTest::none;
}

bool isMeantFor(const KvTEntrySelection& selection, const KvTUpdateElement& element) {
    return firstFailingTest(element, selection) == KvEMatchTest::none;
}

bool matchesFile(const KvTUpdateElement& element, const KvTArchiveFile& file, KvCString& targetPath) {
    const KvTEntrySelection* selection = decidingSelection(element, file);
    if (selection == nullptr || !isMeantFor(*selection, element)) {
        return false;
    }
    targetPath = KvCString(selection->address.targetPath.value_or(std::string_view()));
    return true;
}
