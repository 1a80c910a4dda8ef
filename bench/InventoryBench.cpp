// Scanning a target and printing what is on it.

#include "BenchData.h"
#include "ElementTables.h"
#include "KvCErrorManager.h"
#include "KvCTargetInventory.h"
#include "KvEmulation.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <optional>

namespace {

/// An emulated target that is served.
class ServedTarget {
public:
    explicit ServedTarget(std::size_t count) {
        KvEmulation::reset();
        folder_.write("target.json", targetText(count));
        const KvEmulation::KvTServeResult result = KvEmulation::serve(folder_.path().string());
        if (!result.served) {
            giveUp(result.error);
        }
    }
    ServedTarget(const ServedTarget&) = delete;
    ServedTarget& operator=(const ServedTarget&) = delete;
    ~ServedTarget() { KvEmulation::reset(); }

private:
    BenchFolder folder_;
};

KvCErrorListPool& errors() {
    return KvCErrorManager::getInstance()->getMasterErrorList();
}

void scan(KvCTargetInventory& inventory, std::size_t count) {
    if (!inventory.scanInventory("127.0.0.1") || errors().getErrorCount() != 0 ||
        inventory.elements().size() != count) {
        giveUp("a target was not scanned");
    }
}

/// The emulation's making of the tree included.
void targetScan(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const ServedTarget target(count);
    const SilentWriter silent;
    const KvNReflasher::KvTOptions options{};
    for (auto iteration : state) {
        std::optional<KvCTargetInventory> inventory(std::in_place, silent.writer(), options, errors());
        scan(*inventory, count);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(targetScan)->Apply(atAllSizes);

void elementTable(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const ServedTarget target(count);
    const SilentWriter silent;
    const KvNReflasher::KvTOptions options{};
    KvCTargetInventory inventory(silent.writer(), options, errors());
    scan(inventory, count);
    for (auto iteration : state) {
        printElementTable(silent.writer(), options, inventory);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(elementTable)->Apply(atAllSizes);

} // namespace
