// A client of an emulated target in a process of its own: serves the folder that is its argument, obeys the commands of
// its standard input and answers each with a line: the status of the operation, or what the command asks for.

#include "KvCErrorManager.h"
#include "KvCInventoryManager.h"
#include "KvEmulation.h"
#include "KvHostInterface.h"
#include "KvNInventoryIDs.h"

#include <cstdint>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace {

class Client {
public:
    std::string obey(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        std::string argument;
        words >> argument;
        const std::map<std::string, std::function<std::uint32_t(Client&, const std::string&)>> commands{
            {"lock", &Client::lock},   {"unlock", &Client::unlock}, {"transfer", &Client::transfer},
            {"start", &Client::start}, {"query", &Client::query},   {"devices", &Client::devices},
            {"reset", &Client::reset},
        };
        const auto found = commands.find(command);
        return found != commands.end() ? std::to_string(found->second(*this, argument)) : "unknown command";
    }

private:
    KvCErrorListPool& errors_ = KvCErrorManager::getInstance()->getMasterErrorList();
    KvCInventoryManager& manager_ = *KvCInventoryManager::getInstance();
    KvCInventoryRootHandle* root_ = nullptr;
    void* lock_ = nullptr;
    KvNInventoryManager::KvSRemoteFileHandle file_;

    std::uint32_t lock(const std::string& /*unused*/) {
        manager_.createRootHandleByIpAddressList(errors_, "127.0.0.1", root_);
        return manager_.lock(errors_, root_, KvNInventoryIDs::HCN, 0x10003, lock_);
    }
    std::uint32_t unlock(const std::string& /*unused*/) { return manager_.unlock(errors_, lock_); }
    std::uint32_t transfer(const std::string& path) {
        const std::wstring local(path.begin(), path.end());
        return manager_.transferFile(errors_, root_, KvNInventoryIDs::HCN, lock_, local.c_str(), nullptr, nullptr,
                                     file_);
    }
    std::uint32_t start(const std::string& id) {
        return manager_.update2(errors_, root_, KvNInventoryIDs::HCN, lock_, static_cast<std::uint32_t>(std::stoul(id)),
                                file_, 0);
    }
    /// The state of the update.
    std::uint32_t query(const std::string& text) {
        auto id = static_cast<std::uint32_t>(std::stoul(text));
        std::uint32_t state = 0;
        std::uint32_t done = 0;
        std::uint32_t total = 0;
        manager_.updateStatus2(errors_, root_, KvNInventoryIDs::HCN, id, state, done, total);
        return state;
    }
    /// How many devices a list session finds.
    std::uint32_t devices(const std::string& /*unused*/) {
        KvHIMFilterHandle filter = nullptr;
        std::int32_t count = 0;
        KvHIM_createFilter(errors_, filter, 1);
        KvHIM_applyFilter(errors_, filter);
        KvHIM_getDeviceList(errors_, filter, nullptr, 0, count);
        KvHIM_deleteFilter(errors_, filter);
        return static_cast<std::uint32_t>(count);
    }
    std::uint32_t reset(const std::string& /*unused*/) {
        KvHIMFilterHandle filter = nullptr;
        KvHIMSDeviceInfo info;
        std::int32_t count = 0;
        KvHIM_createFilter(errors_, filter, 1);
        KvHIM_applyFilter(errors_, filter);
        KvHIM_getDeviceList(errors_, filter, &info, 1, count);
        KvHIM_deleteFilter(errors_, filter);
        KvHIMDeviceHandle device = nullptr;
        KvHIM_createDeviceHandle(errors_, info, device);
        const std::int32_t status = KvHIM_FORCE_resetDevice(errors_, device, 0);
        KvHIM_deleteDeviceHandle(errors_, device);
        return static_cast<std::uint32_t>(status);
    }
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 64;
    }
    const KvEmulation::KvTServeResult served = KvEmulation::serve(argv[1]);
    if (!served.served) {
        std::cerr << served.error << '\n';
        return 1;
    }
    Client client;
    std::string line;
    while (std::getline(std::cin, line)) {
        std::cout << client.obey(line) << std::endl;
    }
    return 0;
}
