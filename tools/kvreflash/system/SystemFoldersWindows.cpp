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

} // namespace

std::string systemTrustFolder() {
    wchar_t* found = nullptr;
    if (SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &found) != S_OK) {
        return R"(\ProgramData\kvreflash\trust)"; // whether it is there is not known: it is not taken for absent
    }
    const std::unique_ptr<wchar_t, TaskMemoryCloser> programData(found);
    const std::wstring folder = std::wstring(found) + L"\\kvreflash\\trust";
    if (GetFileAttributesW(folder.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
            return {};
        }
    }
    return utf8Of(folder);
}
