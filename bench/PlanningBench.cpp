// Bringing an archive and a target together. There are as many elements as entries.

#include "BenchData.h"
#include "KvCTargetInventory.h"
#include "KvCUpdatePlanner.h"
#include "UnmatchedElements.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <list>
#include <vector>

namespace {

/// An archive, an element for each of its entries, and the planner.
class Bench {
public:
    Bench(KvEArchiveShape shape, const benchmark::State& state)
        : loaded_(shape, static_cast<std::size_t>(state.range(0))) {
        inventory_.elements() = elementsFor(shape, static_cast<std::size_t>(state.range(0)));
    }

    [[nodiscard]] const std::vector<KvTArchiveFile>& files() { return loaded_.archive().files(); }
    [[nodiscard]] std::list<KvTUpdateElement>& elements() { return inventory_.elements(); }
    [[nodiscard]] KvCUpdatePlanner& planner() { return planner_; }

    /// Every element must take its own entry.
    void check() {
        for (const KvTUpdateElement& element : elements()) {
            if (element.archiveFileIndex != element.index || element.upToDate != (element.index % 2 == 0)) {
                giveUp("an element was not planned as it must be");
            }
        }
    }

private:
    LoadedArchive loaded_;
    KvCTargetInventory inventory_{loaded_.writer(), loaded_.options()};
    KvCUpdatePlanner planner_{loaded_.writer(), loaded_.options(), loaded_.archive(), inventory_};
};

/// All entries find their elements.
void matching(benchmark::State& state, KvEArchiveShape shape) {
    Bench bench(shape, state);
    for (auto iteration : state) {
        UnmatchedElements unmatched(bench.elements());
        std::size_t count = 0;
        for (const KvTArchiveFile& file : bench.files()) {
            count += unmatched.take(file).size();
        }
        if (count != bench.elements().size()) {
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
        bench.planner().printUpdatePlan();
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
