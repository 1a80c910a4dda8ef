// A client of KvReflashLib, as small as one that shows what most clients need: it prints what an update would do,
// leaves out what its user does not want, updates the target and reboots it.
//
// usage: client ARCHIVE_FOLDER HOST [--disable N]... [--reboot] [--emulate FOLDER]

#include "EmulatedRack.h"

#include <KvIReflasher.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace {

using namespace KvNReflasher;

/// Wide texts of the library are UTF-16 on Windows and UTF-32 elsewhere, as paths take them.
std::string utf8Of(const std::wstring& text) {
    const std::u8string bytes = std::filesystem::path(text).u8string();
    return {bytes.begin(), bytes.end()};
}

// Notifications arrive on the thread that runs the session, while it waits for the target. They must not throw.

void onMessage(const std::wstring& text) {
    std::fputs(utf8Of(text).c_str(), stdout);
}

void onPhase(std::uint32_t phase) {
    constexpr std::uint32_t noMorePhases = 0xFFFFFFFF;
    if (phase != noMorePhases) {
        std::printf("Phase %u\n", phase);
    }
}

void onProgress(std::uint32_t percentage) {
    std::printf("  %u %%\n", percentage);
}

void onElementError(std::uint32_t index) {
    std::printf("  element %u has failed\n", index);
}

/// What the user asks for.
struct Request {
    std::filesystem::path archiveFolder;
    std::string host;
    std::vector<std::uint32_t> disabled;
    bool reboot = false;
};

/// The options of a session; every field has to be filled.
KvTOptions updateOptions(const Request& request) {
    return {.archiveFolder = request.archiveFolder.wstring(),
            .descriptionFileName = L"archive.json",
            .target = std::wstring(request.host.begin(), request.host.end()),
            .boardTypeFilter = "",
            .serialNumberFilter = "",
            .elementNameFilter = "",
            .forceUpdate = false,
            .noProgress = true, // the progress notification tells it
            .verbose = false,
            .configurationElements = false,
            .disableCustomElements = false,
            .reserved = false,
            .mode = performUpdate};
}

/// Prints what the archive is and what an update would do with the target's elements.
void printPlan(KvIReflasher& session) {
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session.getArchiveInfo(name, version, product, format, variant);
    std::printf("%s %s\n", utf8Of(name).c_str(), utf8Of(version).c_str());

    // Both arrays belong to the caller, who releases them with delete[].
    KvTArchiveFileInfo* fileRecords = nullptr;
    std::uint32_t fileCount = 0;
    session.getArchiveFiles(fileRecords, fileCount);
    const std::unique_ptr<KvTArchiveFileInfo[]> files(fileRecords);
    KvTUpdateElementInfo* elementRecords = nullptr;
    std::uint32_t elementCount = 0;
    session.getUpdateElements(elementRecords, elementCount);
    const std::unique_ptr<KvTUpdateElementInfo[]> elements(elementRecords);
    for (std::uint32_t index = 0; index < elementCount; ++index) {
        const KvTUpdateElementInfo& element = elements[index];
        if (element.hasArchiveFile != 0 && !element.disabled) {
            std::printf("%u: %s, phase %u, from %s\n", element.index, utf8Of(element.displayName).c_str(),
                        element.phase, files[element.archiveFileIndex].name.c_str());
        }
    }
}

int update(const Request& request) {
    const std::unique_ptr<KvIReflasher> session(KvIReflasher::createInstance(updateOptions(request)));
    session->setMessageCallback(onMessage); // without it messages go to standard output
    session->setPhaseCallback(onPhase);
    session->setProgressCallback(onProgress);
    session->setElementErrorCallback(onElementError);
    // 0: ready; 1: failed, the reason was printed; 2: the archive does not support the target.
    if (const std::uint32_t status = session->prepare(); status != 0) {
        return static_cast<int>(status);
    }
    for (const std::uint32_t index : request.disabled) {
        session->disableUpdateElement(index);
    }
    printPlan(*session);
    if (!session->run()) {
        return EXIT_FAILURE;
    }
    std::uint32_t rebootSupport = 0;
    if (request.reboot && session->getRebootSupportStatus(rebootSupport) && !session->reboot()) {
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

bool readNumber(const std::string& text, std::vector<std::uint32_t>& numbers) {
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, numbers.emplace_back());
    return read.ec == std::errc() && read.ptr == end;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    if (words.size() < 2) {
        std::fprintf(stderr, "usage: client ARCHIVE_FOLDER HOST [--disable N]... [--reboot] [--emulate FOLDER]\n");
        return EXIT_FAILURE;
    }
    Request request{.archiveFolder = words[0], .host = words[1], .disabled = {}, .reboot = false};
    for (std::size_t index = 2; index < words.size(); ++index) {
        const bool hasValue = index + 1 < words.size();
        if (words[index] == "--reboot") {
            request.reboot = true;
        } else if (words[index] == "--disable" && hasValue && readNumber(words[++index], request.disabled)) {
            continue;
        } else if (words[index] == "--emulate" && hasValue && serveEmulatedRack(words[++index])) {
            continue;
        } else {
            std::fprintf(stderr, "client: %s cannot be done\n", words[index].c_str());
            return EXIT_FAILURE;
        }
    }
    return update(request);
}
