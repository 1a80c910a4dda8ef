#include "PrivatePlaces.h"

#include <string>
#include <system_error>
#include <utility>
#include <vector>
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

struct KvCPrivateFolder::Lock::State {
    HANDLE file;
};

KvCPrivateFolder::Lock::Lock(std::unique_ptr<State> state) : state_(std::move(state)) {}

KvCPrivateFolder::Lock::~Lock() {
    CloseHandle(state_->file);
}

std::unique_ptr<KvCPrivateFolder::Lock> KvCPrivateFolder::Lock::open(const std::filesystem::path& file, bool isNew) {
    auto state = std::make_unique<State>();
    // Without sharing nobody else can open it.
    state->file = CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                              isNew ? CREATE_NEW : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (state->file == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    return std::unique_ptr<Lock>(new Lock(std::move(state)));
}

std::unique_ptr<KvCPrivateFolder::Lock> KvCPrivateFolder::Lock::make(const std::filesystem::path& file) {
    return open(file, true);
}

std::unique_ptr<KvCPrivateFolder::Lock> KvCPrivateFolder::Lock::take(const std::filesystem::path& file) {
    return open(file, false);
}

namespace {

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

struct LocalMemoryCloser {
    void operator()(void* memory) const { LocalFree(memory); }
};

/// An identifier, as texts of rights write it; empty when that is not possible.
std::wstring textOf(PSID identifier) {
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(identifier, &text) == 0) {
        return {};
    }
    const std::unique_ptr<wchar_t, LocalMemoryCloser> owner(text);
    return text;
}

/// The identifier of this user; empty when it is not known.
std::wstring identifierOfUser() {
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == 0) {
        return {};
    }
    const std::unique_ptr<void, HandleCloser> token(opened);
    DWORD size = 0;
    (void)GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> user(size);
    if (GetTokenInformation(token.get(), TokenUser, user.data(), size, &size) == 0) {
        return {};
    }
    return textOf(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid);
}

} // namespace

std::filesystem::path temporaryFolder() {
    std::error_code fault;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(fault);
    return fault ? std::filesystem::path() : folder;
}

bool makeOwnFolder(const std::filesystem::path& folder) {
    const std::wstring user = identifierOfUser();
    if (user.empty()) {
        return false;
    }
    // This user's, whatever the process would make it; nothing is inherited; all rights for this user, in the folder
    // and below it, and none for anybody else.
    const std::wstring rights = L"O:" + user + L"D:P(A;OICI;FA;;;" + user + L")";
    PSECURITY_DESCRIPTOR made = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1, &made, nullptr) == 0) {
        return false;
    }
    const std::unique_ptr<void, LocalMemoryCloser> descriptor(made);
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.get(), FALSE};
    return CreateDirectoryW(folder.c_str(), &attributes) != 0;
}

bool isOwnFolder(const std::filesystem::path& folder) {
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    const bool isFolder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                          (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
    if (!isFolder) {
        return false;
    }
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR read = nullptr;
    if (GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr,
                              nullptr, &read) != ERROR_SUCCESS) {
        return false;
    }
    const std::unique_ptr<void, LocalMemoryCloser> descriptor(read);
    return owner != nullptr && textOf(owner) == identifierOfUser();
}

// Whoever may write there has no rights to what others make there, as far as the folder is the system's own.
bool isSafeForFolders(const std::filesystem::path& /*folder*/) {
    return true;
}
