#include "SystemFolders.h"

#include <memory>
#include <windows.h>

#include <shlobj.h>

namespace {

struct TaskMemoryCloser {
    void operator()(wchar_t* text) const { CoTaskMemFree(text); }
};

std::string utf8Of(const std::wstring& text) {
    std::string bytes(static_cast<std::size_t>(WideCharToMultiByte(
                          CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr)),
                      '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                        static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

/// The path of a folder of the system; empty if the system does not say.
std::wstring knownFolder(const KNOWNFOLDERID& which) {
    wchar_t* found = nullptr;
    if (SHGetKnownFolderPath(which, 0, nullptr, &found) != S_OK) {
        return {};
    }
    const std::unique_ptr<wchar_t, TaskMemoryCloser> folder(found);
    return folder.get();
}

/// A place below the folder of the tool.
SystemPlace placeOf(const wchar_t* name) {
    const std::wstring programData = knownFolder(FOLDERID_ProgramData);
    const bool isKnown = !programData.empty();
    const std::wstring path = (isKnown ? programData : L"\\ProgramData") + L"\\kvreflash\\" + name;
    SystemPlace place{utf8Of(path), false};
    if (isKnown && GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        place.isAbsent = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    }
    return place;
}

} // namespace

SystemPlace systemTrustFolder() {
    return placeOf(L"trust");
}

SystemPlace systemSettingsFile() {
    return placeOf(L"kvreflash.ini");
}

std::string defaultJournalFolder() {
    return utf8Of(knownFolder(FOLDERID_LocalAppData) + L"\\kvreflash");
}
