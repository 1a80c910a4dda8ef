// Bringing an archive and a target together. There are as many elements as entries.

#include "BenchData.h"
#include "ElementIndex.h"
#include "KvCTargetInventory.h"
#include "KvCUpdatePlanner.h"
#include "PlanTables.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <utility>

namespace {

/// An archive, an element for each of its entries, and the planner.
class Bench {
public:
    Bench(KvEArchiveShape shape, const benchmark::State& state)
        : loaded_(shape, static_cast<std::size_t>(state.range(0))) {
        for (KvTUpdateElement& element : elementsFor(shape, static_cast<std::size_t>(state.range(0)))) {
            inventory_.addElement(std::move(element));
        }
    }

    [[nodiscard]] const KvCConsoleWriter& writer() const { return loaded_.writer(); }
    [[nodiscard]] const KvCFirmwareArchive& archive() { return loaded_.archive(); }
    [[nodiscard]] const KvCTargetInventory& inventory() const { return inventory_; }
    [[nodiscard]] KvCUpdatePlanner& planner() { return planner_; }

    /// Every element must take its own entry.
    void check() {
        for (const KvTUpdateElement& element : inventory_.elements()) {
            if (element.archiveFileIndex != element.index || element.upToDate != (element.index % 2 == 0)) {
                giveUp("an element was not planned as it must be");
            }
        }
    }

private:
    LoadedArchive loaded_;
    KvCTargetInventory inventory_{loaded_.writer(), loaded_.options(),
                                  KvCErrorManager::getInstance()->getMasterErrorList()};
    KvCUpdatePlanner planner_{loaded_.options(), loaded_.archive(), inventory_};
};

/// All entries find their elements.
void matching(benchmark::State& state, KvEArchiveShape shape) {
    Bench bench(shape, state);
    for (auto iteration : state) {
        KvCElementIndex unmatched(bench.inventory().elements());
        std::size_t count = 0;
        for (const KvTArchiveFile& file : bench.archive().files()) {
            count += takeMatching(unmatched, file).size();
        }
        if (count != bench.inventory().elements().size()) {
            giveUp("an element did not find its entry");
        }
    }
    state.SetComplexityN(state.range(0));
}

/// Matching, decision and phases. Planning again what was planned takes the same way.
void plan(benchmark::State& state, KvEArchiveShape shape) {
    Bench bench(shape, state);
    for (auto iteration : state) {
        bench.planner().plan();
    }
    bench.check();
    state.SetComplexityN(state.range(0));
}

void planTable(benchmark::State& state) {
    Bench bench(KvEArchiveShape::usual, state);
    bench.planner().plan();
    bench.check();
    for (auto iteration : state) {
        printUpdatePlan(bench.writer(), bench.archive(), bench.inventory());
    }
    state.SetComplexityN(state.range(0));
}

#define KV_BENCH_SHAPES(function)                                                                                      \
    BENCHMARK_CAPTURE(function, usual, KvEArchiveShape::usual)->Apply(atAllSizes);                                     \
    BENCHMARK_CAPTURE(function, oneBoardType, KvEArchiveShape::oneBoardType)->Apply(atAllSizes);                       \
    BENCHMARK_CAPTURE(function, thousandBoardTypes, KvEArchiveShape::thousandBoardTypes)->Apply(atAllSizes);           \
    BENCHMARK_CAPTURE(function, thousandBoards, KvEArchiveShape::thousandBoards)->Apply(atAllSizes)

KV_BENCH_SHAPES(matching);
KV_BENCH_SHAPES(plan);
BENCHMARK(planTable)->Apply(atAllSizes);

} // namespace
