#include "KvCInventoryData.h"

#include "Call.h"
#include "InventoryTree.h"
#include "InventoryTreeFile.h"
#include "Ledger.h"
#include "SystemFiles.h"

#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace {

OrFailure<InventoryTreeFile> readFile(const char* path) {
    const std::string text(path != nullptr ? path : "");
    std::error_code error;
    const SystemFiles::File file = SystemFiles::openForReading(SystemFiles::localPathOf(text), error);
    if (file == nullptr) {
        return fileFailure("read", text, error);
    }
    std::string reason;
    InventoryTreeFile tree = readInventoryTreeFile(*file, reason);
    if (tree.root == nullptr) {
        return Failure{EmulationErrors::notAnInventoryTree,
                       "\"" + text + "\" is no inventory tree file: " + reason + "."};
    }
    return tree;
}

std::unique_ptr<KvCInventoryItem> makeTree(std::unique_ptr<ItemDescription> root) {
    auto source = std::make_unique<InventoryTreeSource>(
        InventoryTreeSource{std::move(root), {}, nullptr, HeldCount(Ledger::instance().inventoryTrees)});
    return KvCInventoryItem::Impl::makeTree(std::move(source));
}

} // namespace

void KvCInventoryData::extractInventoryTreeFromFile(KvCErrorListPool& errors, const char* path, KvCInventoryItem*& root,
                                                    bool& hasChecksum, std::uint32_t& checksum) {
    root = nullptr;
    Call call(Operation::extractInventoryTreeFromFile, errors);
    call.run([&]() -> std::int64_t {
        auto tree = readFile(path);
        if (!tree.hasValue()) {
            return call.fail(tree.failure());
        }
        root = makeTree(std::move(tree.value().root)).release();
        const auto& stated = tree.value().checksum;
        hasChecksum = stated.has_value();
        checksum = stated.value_or(checksum);
        return 0;
    });
}
