// The error manager's side of an owned list: this file is the error manager.
#include "OwnedErrorList.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

using CreateArguments = std::array<std::uint32_t, 5>;

/// The calls since the last forget().
struct Calls {
    std::vector<CreateArguments> creations;
    std::vector<const KvCErrorList*> deletions;

    void forget() { *this = Calls(); }
};

Calls& calls() {
    static Calls made;
    return made;
}

} // namespace

struct KvCErrorListPool::Impl {};
struct KvCErrorManager::Impl {};

KvCErrorListPool::KvCErrorListPool() = default;
KvCErrorListPool::~KvCErrorListPool() = default;
KvCErrorManager::KvCErrorManager() = default;
KvCErrorManager::~KvCErrorManager() = default;

KvCErrorManager* KvCErrorManager::getInstance() {
    static KvCErrorManager manager;
    return &manager;
}

KvCErrorList* KvCErrorManager::createErrorList(std::uint32_t ownerId, std::uint32_t listKind, std::uint32_t entryCount,
                                               std::uint32_t parametersPerEntry, std::uint32_t textSize) {
    calls().creations.push_back({ownerId, listKind, entryCount, parametersPerEntry, textSize});
    return new KvCErrorList;
}

void KvCErrorManager::deleteErrorList(KvCErrorList* list) {
    calls().deletions.push_back(list);
    delete list;
}

TEST(ErrorManagerCalls, AListIsCreatedWithTheLibrarysSizes) {
    calls().forget();
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    EXPECT_EQ(calls().creations, (std::vector<CreateArguments>{{0, 1, 20, 5, 300}}));
    EXPECT_TRUE(calls().deletions.empty());
}

TEST(ErrorManagerCalls, AListIsGivenBackOnce) {
    calls().forget();
    const KvCErrorList* list = nullptr;
    {
        KvCOwnedErrorList errors = KvCOwnedErrorList::create();
        list = errors.get();
        const KvCOwnedErrorList copy(errors);
        const KvCOwnedErrorList moved(std::move(errors));
    }
    EXPECT_EQ(calls().deletions, (std::vector<const KvCErrorList*>{list}));
}

TEST(ErrorManagerCalls, NothingIsGivenBackWhenNothingIsOwned) {
    calls().forget();
    {
        KvCOwnedErrorList errors;
        errors = KvCOwnedErrorList();
        const KvCOwnedErrorList copy(errors);
    }
    EXPECT_TRUE(calls().creations.empty());
    EXPECT_TRUE(calls().deletions.empty());
}
