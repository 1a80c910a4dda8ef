#pragma once

#include "EmulationTest.h"

#include <cstdint>
#include <filesystem>
#include <string>

/// A target with one element, and what it keeps in its folder.
class TargetState : public EmulationTest {
protected:
    /// The element that serveElement() serves, and the file that keeps what was installed in it.
    const KvCInventoryAddress element =
        KvNInventoryIDs::HCN / KvNInventoryIDs::UPDATE_INFO / KvNInventoryIDs::UPDATE_ELEMENT;
    static constexpr const char* elementFile = "state/elements/HCN.1-UPDATE_INFO.1-UPDATE_ELEMENT.1.json";

    void serveElement(const ItemBuilder& described) {
        target.add(item("HCN").element(described));
        target.serve();
    }
    void serveAnew() {
        KvEmulation::reset();
        static_cast<void>(target.serveAgain());
    }
    TargetBuilder target;
};

/// A target whose file system is written to.
class TargetFiles : public EmulationTest {
protected:
    void SetUp() override {
        EmulationTest::SetUp();
        target.add(
            item("HCN").element(fileSystemElement(1, "config/net/a.cfg")).element(fileSystemElement(2, "b.cfg")));
        target.serve();
        openTransferClient();
    }
    std::int32_t makeDir(const std::string& parent, const std::string& name) {
        return KvHIM_makeDir(errors(), nullptr, client, parent.c_str(), name.c_str());
    }
    std::int64_t put(const std::string& folder, const std::string& name, const std::string& content = "content") {
        const std::wstring local = wide(files.write("local", content));
        return KvHIM_putFileU(errors(), nullptr, client, local.c_str(), folder.c_str(), name.c_str(), nullptr, nullptr);
    }
    std::int32_t rename(const std::string& folder, const std::string& oldName, const std::string& newName) {
        return KvHIM_renameFile(errors(), nullptr, client, folder.c_str(), oldName.c_str(), newName.c_str());
    }
    [[nodiscard]] std::string content(const std::string& name) const {
        return target.folder().read("state/cfdrive/" + name);
    }
    [[nodiscard]] bool has(const std::string& name) const { return target.folder().has("state/cfdrive/" + name); }
    [[nodiscard]] std::filesystem::path onDisk(const std::string& name) const {
        return target.folder().path() / "state" / "cfdrive" / name;
    }

    static constexpr const char* top = "/mnt/cn/cfdrive";
    TargetBuilder target;
};
