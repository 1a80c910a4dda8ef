#pragma once

#include "Faults.h"
#include "Outcome.h"
#include "StateStore.h"
#include "TargetDescription.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// What was installed into elements, as it shows now.
using InstalledElements = std::unordered_map<const ItemDescription*, InstalledValues>;

/// One served target: its description, its faults and its state.
class EmulatedTarget {
public:
    struct Loaded {
        /// Null: refused, and `error` says why.
        std::shared_ptr<EmulatedTarget> target;
        std::string error;
        std::vector<std::string> warnings;
    };
    /// Loads the target in `folder` (UTF-8); writes nothing.
    [[nodiscard]] static Loaded load(const std::string& folder);

    /// Use load().
    EmulatedTarget(const std::filesystem::path& folder, std::unique_ptr<TargetDescription> description);

    [[nodiscard]] const TargetDescription& description() const noexcept { return *description_; }
    [[nodiscard]] Faults& faults() noexcept { return faults_; }
    [[nodiscard]] StateStore& state() noexcept { return state_; }

    /// Null when there is no such item.
    [[nodiscard]] const ItemDescription* findItem(const KvCInventoryAddress& address) const noexcept;
    /// What an operation then fails with.
    [[nodiscard]] static Failure noSuchItem(const KvCInventoryAddress& address);
    /// The element with the identifier `id` of the board at `board`.
    [[nodiscard]] OrFailure<const ItemDescription*> findElement(const KvCInventoryAddress& board,
                                                                std::uint32_t id) const;
    /// The file system elements whose file is at `location`: components joined by "/".
    [[nodiscard]] const std::vector<const ItemDescription*>& fileSystemElementsAt(const std::string& location) const;

    [[nodiscard]] InstalledElements installedElements() const;
    /// Installs `values` into `element`, as far as it has such parameters, in the way that its description asks for.
    [[nodiscard]] Outcome install(const ItemDescription& element, const InstalledValues& values);

private:
    /// An element by its board and identifier.
    struct ElementKey {
        const ItemDescription* board;
        std::uint32_t id;
        friend bool operator==(const ElementKey&, const ElementKey&) = default;
    };
    struct ElementKeyHash {
        std::size_t operator()(const ElementKey& key) const noexcept;
    };
    struct ElementEntry {
        const ItemDescription* element;
        bool isAmbiguous;
    };

    /// Builds the indices; what is odd about description and state.
    [[nodiscard]] std::vector<std::string> prepare();
    void indexItems(const ItemDescription& item, std::vector<std::string>& warnings);
    void indexElement(const ItemDescription& element, std::vector<std::string>& warnings);
    void indexLocation(const ItemDescription& element);
    [[nodiscard]] InstalledElements resolve(const StateStore::Contents& contents,
                                            std::vector<std::string>* warnings) const;

    std::unique_ptr<TargetDescription> description_;
    Faults faults_;
    StateStore state_;
    std::unordered_map<ElementKey, ElementEntry, ElementKeyHash> elements_;
    std::unordered_map<std::string, std::vector<const ItemDescription*>> locations_;
};
