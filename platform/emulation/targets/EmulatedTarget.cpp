#include "EmulatedTarget.h"

#include "FileBytes.h"
#include "ItemAddressText.h"
#include "JsonDocument.h"
#include "KvNInventoryIDs.h"
#include "SystemFiles.h"
#include "TargetPath.h"

#include <functional>
#include <system_error>
#include <utility>

namespace {

constexpr const char* descriptionFile = "target.json";

bool isOf(const ItemDescription& item, const KvCInventoryAddress& identifier) {
    return item.id().getCategory() == identifier.getCategory();
}

/// The board of an element: the parent of the UPDATE_INFO item that holds it; null when there is none.
const ItemDescription* boardOf(const ItemDescription& element) {
    const ItemDescription* const info = element.parent();
    return info != nullptr && isOf(*info, KvNInventoryIDs::UPDATE_INFO) ? info->parent() : nullptr;
}

std::string displayPath(const std::string& folder) {
    const bool endsWithSeparator = !folder.empty() && (folder.back() == '/' || folder.back() == '\\');
    return folder + (endsWithSeparator || folder.empty() ? "" : "/") + descriptionFile;
}

/// Null when the file is refused; then `reason` says why.
std::unique_ptr<TargetDescription> readDescriptionFile(const std::filesystem::path& path, std::string& reason) {
    std::error_code error;
    const SystemFiles::File file = SystemFiles::openForReading(path, error);
    if (file == nullptr) {
        reason = "cannot be opened: " + error.message();
        return nullptr;
    }
    if (!fitsDocument(*file, reason)) {
        return nullptr;
    }
    auto text = readBytes(*file, static_cast<std::size_t>(largestDocument),
                          static_cast<std::size_t>(SystemFiles::sizeOf(*file)));
    if (!text) {
        reason = "cannot be read";
        return nullptr;
    }
    return readTargetDescription(std::move(*text), reason);
}

} // namespace

std::size_t EmulatedTarget::ElementKeyHash::operator()(const ElementKey& key) const noexcept {
    constexpr std::size_t spread = 0x9E3779B1U;
    return std::hash<const void*>()(key.board) ^ (key.id * spread);
}

EmulatedTarget::Loaded EmulatedTarget::load(const std::string& folder) {
    const std::string display = displayPath(folder);
    const std::filesystem::path path = SystemFiles::pathOf(folder);
    Loaded loaded;
    auto description = readDescriptionFile(path / descriptionFile, loaded.error);
    if (description == nullptr) {
        loaded.error.insert(0, display + ": ");
        return loaded;
    }
    loaded.target = std::make_shared<EmulatedTarget>(path, std::move(description));
    loaded.warnings = loaded.target->prepare();
    for (std::string& warning : loaded.warnings) {
        warning.insert(0, display + ": ");
    }
    return loaded;
}

EmulatedTarget::EmulatedTarget(const std::filesystem::path& folder, std::unique_ptr<TargetDescription> description)
    : description_(std::move(description)), faults_(std::move(description_->faults)), state_(folder) {}

std::vector<std::string> EmulatedTarget::prepare() {
    std::vector<std::string> warnings;
    indexItems(*description_->inventory, warnings);
    StateStore::Contents contents = state_.read();
    for (const std::string& file : contents.ignored) {
        warnings.push_back("The state file " + file + "; it is ignored.");
    }
    static_cast<void>(resolve(contents, &warnings));
    return warnings;
}

const ItemDescription* EmulatedTarget::findItem(const KvCInventoryAddress& address) const noexcept {
    const ItemDescription* item = description_->inventory.get();
    if (address.isEmpty()) {
        return nullptr;
    }
    if (address == item->address()) {
        return item;
    }
    for (const KvCInventoryAddress::Component& component : address.getComponents()) {
        const auto index = item->childIndex(component);
        if (!index) {
            return nullptr;
        }
        item = item->items()[*index].get();
    }
    return item;
}

Failure EmulatedTarget::noSuchItem(const KvCInventoryAddress& address) {
    return {EmulationErrors::notFound, "The target has no item " + itemAddressText(address) + "."};
}

OrFailure<const ItemDescription*> EmulatedTarget::findElement(const KvCInventoryAddress& board,
                                                              std::uint32_t id) const {
    const ItemDescription* const item = findItem(board);
    if (item == nullptr) {
        return noSuchItem(board);
    }
    const auto found = elements_.find({item, id});
    if (found == elements_.end()) {
        return Failure{EmulationErrors::notFound,
                       itemAddressText(board) + " has no element with the ID " + std::to_string(id) + "."};
    }
    if (found->second.isAmbiguous) {
        return Failure{EmulationErrors::notFound,
                       itemAddressText(board) + " has several elements with the ID " + std::to_string(id) + "."};
    }
    return found->second.element;
}

const std::vector<const ItemDescription*>& EmulatedTarget::fileSystemElementsAt(const std::string& location) const {
    static const std::vector<const ItemDescription*> none;
    const auto found = locations_.find(location);
    return found != locations_.end() ? found->second : none;
}

InstalledElements EmulatedTarget::installedElements() const {
    return resolve(state_.read(), nullptr);
}

InstalledElements EmulatedTarget::resolve(const StateStore::Contents& contents,
                                          std::vector<std::string>* warnings) const {
    InstalledElements elements;
    for (const ElementState& state : contents.elements) {
        const auto address = parseItemAddress(state.address);
        const ItemDescription* const item = address ? findItem(*address) : nullptr;
        if (item != nullptr && item->isElement()) {
            elements.emplace(item, state.valuesAfter(contents.resets));
        } else if (warnings != nullptr) {
            warnings->push_back("The state holds an installation into " + state.address +
                                ", which is no element of the target; it is ignored.");
        }
    }
    return elements;
}

Outcome EmulatedTarget::install(const ItemDescription& element, const InstalledValues& values) {
    const bool atReset = element.update().activation == UpdateBehaviour::Activation::reboot;
    return state_.install(itemAddressText(element.address()), values, atReset);
}

void EmulatedTarget::indexItems(const ItemDescription& item, std::vector<std::string>& warnings) {
    if (item.isElement()) {
        indexElement(item, warnings);
        indexLocation(item);
    } else if (item.hasUpdate()) {
        warnings.push_back(itemAddressText(item.address()) +
                           " is no element, so that its update behaviour has no meaning.");
    }
    for (const auto& child : item.items()) {
        indexItems(*child, warnings);
    }
}

void EmulatedTarget::indexElement(const ItemDescription& element, std::vector<std::string>& warnings) {
    const ItemDescription* const board = boardOf(element);
    const KvCInventoryParameter* const parameter = element.parameter(KvNInventoryIDs::ID);
    const auto id = parameter != nullptr ? parameter->number32() : std::nullopt;
    if (board == nullptr || !id) {
        return;
    }
    const auto [entry, isNew] = elements_.try_emplace({board, *id}, ElementEntry{&element, false});
    if (isNew) {
        return;
    }
    // Updates are for update elements: one wins against the file system element of the same identifier.
    const bool isUpdate = isOf(element, KvNInventoryIDs::UPDATE_ELEMENT);
    const bool wasUpdate = isOf(*entry->second.element, KvNInventoryIDs::UPDATE_ELEMENT);
    if (isUpdate != wasUpdate) {
        entry->second = isUpdate ? ElementEntry{&element, false} : entry->second;
        return;
    }
    if (isUpdate && !entry->second.isAmbiguous) {
        warnings.push_back("Several elements of " + itemAddressText(board->address()) + " have the ID " +
                           std::to_string(*id) + ", so that updates of it are refused.");
    }
    entry->second.isAmbiguous = true;
}

void EmulatedTarget::indexLocation(const ItemDescription& element) {
    const KvCInventoryParameter* const location = element.parameter(KvNInventoryIDs::LOCATION);
    if (isOf(element, KvNInventoryIDs::FILESYSTEM_ELEMENT) && location != nullptr && location->text() != nullptr) {
        locations_[joinComponents(splitComponents(*location->text()))].push_back(&element);
    }
}
