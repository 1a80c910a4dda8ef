#include "ExampleRack.h"

#include "KvEmulation.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

constexpr const char* descriptionFile = "target.json";
constexpr std::string_view fileSystem = "state/cfdrive/";

std::string exampleDescription() {
    std::ifstream file(fs::path(KV_EXAMPLE_RACK) / descriptionFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

KvNJson::json listOf(const std::vector<SingleFault>& faults) {
    KvNJson::json list = KvNJson::json::makeArray();
    for (const SingleFault& fault : faults) {
        KvNJson::json object = KvNJson::json::makeObject();
        object.set("call", std::string_view(fault.call));
        object.set("occurrence", fault.occurrence);
        list.append(std::move(object));
    }
    return list;
}

} // namespace

std::wstring exampleArchive() {
    return fs::path(KV_EXAMPLE_ARCHIVE).wstring();
}

std::wstring exampleRack() {
    return fs::path(KV_EXAMPLE_RACK).wstring();
}

ExampleRack::ExampleRack() : description_(KvNJson::json::parse(exampleDescription())) {}

void ExampleRack::serveFresh(const std::vector<SingleFault>& faults) {
    KvEmulation::reset(); // closes the lock's file, which could not be removed on every system
    fs::remove_all(folder_.path() / "state");
    serve(faults);
}

bool ExampleRack::serveAgain() {
    return serve({});
}

bool ExampleRack::serve(const std::vector<SingleFault>& faults) {
    description_.set("faults", listOf(faults));
    folder_.write(descriptionFile, description_.dump());
    KvEmulation::reset();
    const KvEmulation::KvTServeResult result = KvEmulation::serve(folder_.text());
    EXPECT_TRUE(result.served) << result.error;
    EXPECT_TRUE(result.warnings.empty()) << result.warnings.front();
    return result.served;
}

std::map<std::string, std::string> ExampleRack::files() const {
    std::map<std::string, std::string> contents;
    for (const std::string& name : folder_.list()) {
        if (name.starts_with(fileSystem) && fs::is_regular_file(folder_.path() / pathOfUtf8(name))) {
            contents[name.substr(fileSystem.size())] = folder_.read(name);
        }
    }
    return contents;
}
