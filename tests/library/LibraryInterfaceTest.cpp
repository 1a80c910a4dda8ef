#include "KvIReflasher.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace KvNReflasher;

// What clients were compiled with.

static_assert(std::is_abstract_v<KvIReflasher> && std::has_virtual_destructor_v<KvIReflasher>);
static_assert(!std::is_copy_constructible_v<KvIReflasher> && !std::is_copy_assignable_v<KvIReflasher>);
static_assert(sizeof(KvIReflasher) == sizeof(void*), "the interface has its table and nothing else");

static_assert(std::is_same_v<KvTNumberCallback, void (*)(std::uint32_t)>);
static_assert(std::is_same_v<KvTMessageCallback, void (*)(const std::wstring&)>);

static_assert(showVersion == 0 && showArchiveVersion == 1 && showArchiveContent == 2 && dumpArchiveDescription == 3 &&
              showTargetElements == 4 && connectOnly == 5 && showUpdatePlan == 6 && performUpdate == 7);

/// Whether all fields have the type.
template <typename Type, typename... Fields>
inline constexpr bool areAll = (std::is_same_v<Type, Fields> && ...);

using O = KvTOptions;
static_assert(areAll<std::wstring, decltype(O::archiveFolder), decltype(O::descriptionFileName), decltype(O::target)>);
static_assert(
    areAll<std::string, decltype(O::boardTypeFilter), decltype(O::serialNumberFilter), decltype(O::elementNameFilter)>);
static_assert(areAll<bool, decltype(O::forceUpdate), decltype(O::noProgress), decltype(O::verbose),
                     decltype(O::configurationElements), decltype(O::disableCustomElements), decltype(O::reserved)>);
static_assert(areAll<std::uint32_t, decltype(O::mode), std::underlying_type_t<KvEMode>>);

using E = KvTUpdateElementInfo;
static_assert(
    areAll<std::uint32_t, decltype(E::index), decltype(E::serialNumber), decltype(E::slot), decltype(E::slotCount),
           decltype(E::custom), decltype(E::phase), decltype(E::hasArchiveFile), decltype(E::archiveFileIndex)>);
static_assert(areAll<std::wstring, decltype(E::boardType), decltype(E::boardName), decltype(E::unitPath),
                     decltype(E::displayName), decltype(E::typeName), decltype(E::installedVersion),
                     decltype(E::availableVersion)>);
static_assert(areAll<bool, decltype(E::isFileSystemElement), decltype(E::valid), decltype(E::active),
                     decltype(E::checksumMismatch), decltype(E::disabled)>);

static_assert(areAll<std::string, decltype(KvTArchiveFileInfo::name), decltype(KvTArchiveFileInfo::version)>);

namespace {

/// True when each address lies beyond the one before.
template <typename... Fields>
bool areInOrder(const Fields&... fields) {
    const std::uintptr_t addresses[] = {reinterpret_cast<std::uintptr_t>(&fields)...};
    for (std::size_t index = 1; index < sizeof...(fields); ++index) {
        if (addresses[index - 1] >= addresses[index]) {
            return false;
        }
    }
    return true;
}

} // namespace

TEST(LibraryInterface, TheOptionsHaveTheirFieldsInOrder) {
    const KvTOptions o{};
    EXPECT_TRUE(areInOrder(o.archiveFolder, o.descriptionFileName, o.target, o.boardTypeFilter, o.serialNumberFilter,
                           o.elementNameFilter, o.forceUpdate, o.noProgress, o.verbose, o.configurationElements,
                           o.disableCustomElements, o.reserved, o.mode));
}

TEST(LibraryInterface, TheRecordOfAnElementHasItsFieldsInOrder) {
    const KvTUpdateElementInfo e{};
    EXPECT_TRUE(areInOrder(e.index, e.boardType, e.serialNumber, e.boardName, e.unitPath, e.slot, e.slotCount,
                           e.displayName, e.typeName, e.isFileSystemElement, e.valid, e.active, e.installedVersion,
                           e.custom, e.phase, e.hasArchiveFile, e.archiveFileIndex, e.availableVersion,
                           e.checksumMismatch, e.disabled));
}

TEST(LibraryInterface, TheRecordOfAFileHasItsFieldsInOrder) {
    const KvTArchiveFileInfo f{};
    EXPECT_TRUE(areInOrder(f.name, f.version));
}
