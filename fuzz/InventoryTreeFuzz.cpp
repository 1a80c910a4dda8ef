// An inventory tree file, through the platform and as an update file.

#include "FuzzFolder.h"
#include "HeaderBytes.h"
#include "InventoryListing.h"
#include "KvCInventoryData.h"
#include "KvNJson.h"
#include "OwnedErrorList.h"
#include "Property.h"
#include "ServiceState.h"
#include "UpdateFileReaders.h"

#include <memory>
#include <string>
#include <string_view>

namespace {

struct ExtractedTree {
    bool isThere = false;
    bool hasChecksum = false;
    std::uint32_t checksum = 0;
    std::string listing;
};

ExtractedTree extract(const std::string& path) {
    ExtractedTree tree;
    KvCInventoryItem* root = nullptr;
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCInventoryData::extractInventoryTreeFromFile(*errors, path.c_str(), root, tree.hasChecksum, tree.checksum);
    const std::unique_ptr<KvCInventoryItem> owner(root);
    tree.isThere = root != nullptr;
    require(errors->getErrorCount() == (tree.isThere ? 0U : 1U), "There is a tree, or one error that tells why not.");
    if (tree.isThere) {
        tree.listing = listInventory(*root);
    }
    return tree;
}

/// What the file says, written anew, is the same tree.
void checkRewritten(const FuzzFolder& folder, std::string_view text, const ExtractedTree& tree) {
    const KvNJson::json document = KvNJson::json::parse(text);
    require(!document.is_invalid(), "An inventory tree file is JSON.");
    folder.write("rewritten", document.dump(4));
    const ExtractedTree rewritten = extract(folder.text("rewritten"));
    require(rewritten.isThere && rewritten.listing == tree.listing, "A tree that is written anew is the same.");
    require(rewritten.hasChecksum == tree.hasChecksum && rewritten.checksum == tree.checksum,
            "A stated checksum that is written anew is the same.");
}

void checkHeader(const FuzzFolder& folder, const ExtractedTree& tree) {
    KvTUpdateFileHeader header = markedHeader();
    const KvEReadStatus status = readInventoryFile(folder.wideText("tree"), header);
    require((status == KvEReadStatus::success) == tree.isThere, "What has a tree is an update file of this kind.");
    if (tree.isThere) {
        require(!tree.hasChecksum || header.checksum == tree.checksum, "A stated checksum goes before the tree's.");
    } else {
        require(isSameHeader(header, markedHeader()), "What is no update file leaves the header alone.");
    }
}

} // namespace

/// The text of the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    folder.write("tree", text);
    const ExtractedTree tree = extract(folder.text("tree"));
    if (tree.isThere) {
        checkRewritten(folder, text, tree);
    }
    checkHeader(folder, tree);
    requireNothingHeld();
    return 0;
}
