#include "ModuleVersion.h"

#include <array>
#include <vector>
#include <windows.h>

namespace {

/// By address, without a reference on the module.
constexpr DWORD moduleOfAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
static_assert(moduleOfAddress == 6);

/// The fixed file information of the version resource of `file`; all 0 when it has none.
KvTModuleVersion readResource(const wchar_t* file) {
    DWORD ignored = 0;
    std::vector<unsigned char> block(GetFileVersionInfoSizeW(file, &ignored));
    void* information = nullptr;
    UINT size = 0;
    if (block.empty() || GetFileVersionInfoW(file, 0, static_cast<DWORD>(block.size()), block.data()) == 0 ||
        VerQueryValueW(block.data(), L"\\", &information, &size) == 0 || size < sizeof(VS_FIXEDFILEINFO)) {
        return {};
    }
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(information);
    return {HIWORD(fixed->dwFileVersionMS), LOWORD(fixed->dwFileVersionMS), HIWORD(fixed->dwFileVersionLS)};
}

} // namespace

std::optional<KvTModuleVersion> readModuleVersion() {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(moduleOfAddress, reinterpret_cast<LPCWSTR>(&readModuleVersion), &module) == 0) {
        return std::nullopt;
    }
    std::array<wchar_t, MAX_PATH> file{};
    GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
    return readResource(file.data());
}
