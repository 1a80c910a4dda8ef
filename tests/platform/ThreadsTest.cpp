// Several threads use the service at the same time.

#include "EmulationTest.h"

#include <array>
#include <atomic>
#include <functional>
#include <thread>

namespace {

class Threads : public EmulationTest {
protected:
    static void runInThreads(const std::function<void()>& work) {
        std::array<std::thread, 4> threads;
        for (std::thread& thread : threads) {
            thread = std::thread(work);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    TargetBuilder target;
};

TEST_F(Threads, EachHasHandlesOfItsOwn) {
    target.add(item("HCN").element(updateElement(1))).serve();
    std::atomic<int> scans{0};
    runInThreads([&] {
        KvCErrorList* const list = KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300);
        for (int round = 0; round < 50; ++round) {
            KvCInventoryRootHandle* handle = nullptr;
            KvCInventoryItem* tree = nullptr;
            manager().createRootHandleByIpAddressList(*list, "127.0.0.1", handle);
            manager().scan(*list, handle, tree);
            scans += tree != nullptr && tree->getItem(boardAddress) != nullptr ? 1 : 0;
            manager().deleteInventoryTree(tree);
            manager().deleteRootHandle(*list, handle);
        }
        EXPECT_EQ(list->getErrorCount(), 0U);
        KvCErrorManager::getInstance()->deleteErrorList(list);
    });
    EXPECT_EQ(scans, 200);
}

TEST_F(Threads, OneThatHoldsAListAndOneThatReportsIntoItDoNotBlockEachOther) {
    target.serve();
    std::atomic<int> failures{0};
    runInThreads([&] {
        for (int round = 0; round < 500; ++round) {
            KvHIMFilterHandle filter = nullptr;
            const std::uint32_t before = errors().getErrorCountLock();
            KvHIM_applyFilter(errors(), filter);
            failures += errors().getErrorCountUnlock() == before + 1 ? 1 : 0;
            KvHIM_applyFilter(errors(), filter);
        }
    });
    EXPECT_EQ(failures, 2000);
    EXPECT_EQ(takeErrorCodes().size(), 4000U);
}

TEST_F(Threads, OnlyOneGetsTheLock) {
    target.add(item("HCN")).serve();
    openRoot();
    std::atomic<int> taken{0};
    runInThreads([&] {
        void* handle = nullptr;
        if (manager().lock(errors(), root, boardAddress, 0x10003, handle) == 0) {
            ++taken;
            lockHandle = handle;
        }
    });
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(takeErrorCodes(), std::vector<std::uint32_t>(3, EmulationErrorCodes::targetLocked));
}

} // namespace
