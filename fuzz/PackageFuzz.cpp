// A package: reading it, judging it and packing it once more.

#include "FuzzFolder.h"
#include "FuzzInput.h"
#include "KvReleases.h"
#include "Package.h"
#include "Property.h"
#include "ReleaseCheck.h"
#include "SshSignature.h"
#include "TextConversion.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using std::chrono::sys_seconds;

/// Who has signed KV_SIGNED_PACKAGE. Nobody has the private key any more.
constexpr std::string_view signerLine =
    "korvel ssh-ed25519 AAAAC3NzaC1lZDI1NTE5AAAAINWOtyu9OJQW2IwHEHV8i8DIQaFnqIenF7q9mVDSAxKE\n";

/// The content of an accepted package.
struct Content {
    std::string manifestText;
    std::optional<std::string> signatures;
    KvTManifest manifest;
    /// Those of the manifest, in its order.
    std::vector<std::string> files;
};

/// The content of the file; nothing if it differs from the manifest.
std::optional<std::string> contentOf(KvCPackage& package, const KvTSealedFile& file) {
    std::string content;
    std::string reason;
    const bool isRead = package.read(
        file,
        [&](KvTBytes bytes) {
            content.append(bytes.begin(), bytes.end());
            return true;
        },
        reason);
    require(isRead && content.size() == file.size, "A file that is where the manifest has it can be read.");
    return sha256Of(bytesOf(content)) == file.sha256 ? std::optional(std::move(content)) : std::nullopt;
}

/// The package without a look at whether its signatures hold; nothing if it is refused.
std::optional<Content> contentOf(const std::wstring& path) {
    FileStream stream = openForReading(path);
    require(stream != nullptr, "A file that is there can be opened.");
    KvCPackage package(std::move(stream));
    Content content;
    std::string reason;
    std::optional<std::string> text = package.manifest(reason);
    require(text || !reason.empty(), "A package without a manifest is refused for a reason.");
    if (!text) {
        return std::nullopt;
    }
    content.manifestText = std::move(*text);
    content.signatures = package.signatures(reason);
    if (!reason.empty()) {
        return std::nullopt;
    }
    std::optional<KvTManifest> manifest = parseManifest(content.manifestText, reason);
    if (!manifest || !package.differencesFrom(*manifest).empty()) {
        return std::nullopt;
    }
    content.manifest = std::move(*manifest);
    for (const KvTSealedFile& file : content.manifest.files) {
        std::optional<std::string> bytes = contentOf(package, file);
        if (!bytes) {
            return std::nullopt;
        }
        content.files.push_back(std::move(*bytes));
    }
    return content;
}

/// Puts a package together as packing does.
class PackageText {
public:
    explicit PackageText(sys_seconds time) : time_(time) {}

    void add(std::string_view name, std::string_view content) {
        const KvTPackageHeader header = headerOf({std::string(name), content.size(), time_});
        headers_.push_back(bytes_.size());
        bytes_.append(header.begin(), header.end()).append(content);
        bytes_.append((packageBlock - bytes_.size() % packageBlock) % packageBlock, '\0');
    }
    void end() { bytes_.append(packageEnd, '\0'); }

    [[nodiscard]] const std::string& bytes() const { return bytes_; }
    /// Where they begin.
    [[nodiscard]] const std::vector<std::size_t>& headers() const { return headers_; }

private:
    sys_seconds time_;
    std::string bytes_;
    std::vector<std::size_t> headers_;
};

PackageText packageOf(const Content& content) {
    PackageText package(content.manifest.created);
    package.add(manifestName, content.manifestText);
    if (content.signatures) {
        package.add(signatureName, *content.signatures);
    }
    for (std::size_t index = 0; index < content.files.size(); ++index) {
        package.add(content.manifest.files[index].name, content.files[index]);
    }
    package.end();
    return package;
}

void unpack(const Content& content, const FuzzFolder& folder) {
    folder.write(manifestName, content.manifestText);
    if (content.signatures) {
        folder.write(signatureName, *content.signatures);
    }
    for (std::size_t index = 0; index < content.files.size(); ++index) {
        const std::string& name = content.manifest.files[index].name;
        std::error_code fault;
        fs::create_directories(fs::path(folder.text(name)).parent_path(), fault);
        require(!fault, "The files of a package can be beside each other in a folder.");
        folder.write(name, content.files[index]);
    }
}

/// The package of the sealed archive in a folder.
std::string packed(const FuzzFolder& folder) {
    std::string package;
    const std::vector<std::string> faults = KvNReflasher::packArchive(
        folder.wideText(),
        [](std::string_view bytes, void* context) {
            *static_cast<std::string*>(context) += bytes;
            return true;
        },
        &package);
    require(faults.empty(), "What was in a package can be packed.");
    return package;
}

/// How far the package is vouched for; nothing if it is refused.
std::optional<KvNReflasher::KvESeal> sealOf(const std::wstring& package, const std::wstring& trustFolder) {
    KvCReleaseCheck check(package, {.trustFolder = trustFolder, .acceptUnsealed = false});
    const bool isAccepted = check.open() && check.takeRest();
    require(isAccepted == check.faults().empty(), "A package is refused for a reason.");
    return isAccepted ? std::optional(check.release().seal) : std::nullopt;
}

/// True if nobody has signed, or all that signed did sign this.
bool isHeld(const Content& content) {
    std::string reason;
    return !content.signatures || signersOf(*content.signatures, bytesOf(content.manifestText), reason);
}

/// `content` is what the package holds if anything but its signatures is in order.
void checkJudgement(const std::wstring& package, const std::optional<Content>& content) {
    const std::optional<KvNReflasher::KvESeal> seal = sealOf(package, L"");
    require(seal.has_value() == (content && isHeld(*content)),
            "A package is accepted if it is whole and its signatures hold.");
    require(!seal || (*seal == KvNReflasher::KvESeal::signedByStranger) == content->signatures.has_value(),
            "A package is signed if it has signatures.");
}

/// A trust folder with the signer of KV_SIGNED_PACKAGE, who has never signed anything else.
class TrustedSigner {
public:
    TrustedSigner() {
        folder_.write("allowed_signers", signerLine);
        require(isTrusted(signedPackage()), "The signer is trusted.");
    }

    void check(const std::wstring& package, const std::optional<Content>& content) const {
        const bool isSigned = content && content->signatures && content->manifestText == signed_.manifestText &&
                              content->signatures->find(*signed_.signatures) != std::string::npos;
        require(!isTrusted(package) || isSigned, "Nobody signs for somebody else.");
    }

private:
    static std::wstring signedPackage() { return utf8ToWide(KV_SIGNED_PACKAGE); }

    [[nodiscard]] bool isTrusted(const std::wstring& package) const {
        return sealOf(package, folder_.wideText()) == KvNReflasher::KvESeal::trusted;
    }

    FuzzFolder folder_;
    Content signed_ = contentOf(signedPackage()).value();
};

/// Changes a byte of a package. Its headers are sound all the same.
void change(std::string& bytes, const std::vector<std::size_t>& headers, std::size_t position, std::uint8_t bits) {
    constexpr std::size_t sumOffset = 148;
    constexpr std::size_t sumSize = 8;
    bytes[position] = static_cast<char>(static_cast<std::uint8_t>(bytes[position]) ^ bits);
    const std::size_t header = position / packageBlock * packageBlock;
    const bool isInSum = position - header >= sumOffset && position - header < sumOffset + sumSize;
    if (isInSum || std::find(headers.begin(), headers.end(), header) == headers.end()) {
        return;
    }
    bytes.replace(header + sumOffset, sumSize, sumSize, ' ');
    unsigned sum = 0;
    for (const char byte : bytes.substr(header, packageBlock)) {
        sum += static_cast<std::uint8_t>(byte);
    }
    std::snprintf(&bytes[header + sumOffset], sumSize, "%06o", sum);
}

struct Described {
    std::string bytes;
    bool isSound = false;
};

/// A package that the input describes: when it was sealed, up to 7 changes (where, and which bits), signatures, and
/// names and contents of up to 8 files, with a zero byte behind each.
Described takePackage(FuzzInput& input) {
    Content content;
    content.manifest.created = sys_seconds(std::chrono::seconds(input.takeNumber()));
    constexpr std::uint8_t mostChanges = 7;
    std::vector<std::pair<std::uint32_t, std::uint8_t>> changes(input.takeByte() & mostChanges);
    for (auto& [position, bits] : changes) {
        position = input.takeNumber();
        bits = input.takeByte();
    }
    if (const std::string_view signatures = input.takeText(); !signatures.empty()) {
        content.signatures = signatures;
    }
    constexpr std::size_t mostFiles = 8;
    while (!input.isEmpty() && content.files.size() < mostFiles) {
        const std::string name(input.takeText());
        const std::string& file = content.files.emplace_back(input.takeText());
        content.manifest.files.push_back({name, file.size(), sha256Of(bytesOf(file))});
    }
    content.manifestText = textOf(content.manifest);
    const PackageText package = packageOf(content);
    std::string bytes = package.bytes();
    for (const auto& [position, bits] : changes) {
        change(bytes, package.headers(), position % bytes.size(), bits);
    }
    return {bytes, bytes == package.bytes() && faultsOfNames(content.manifest.files).empty()};
}

/// Returns whether the package is accepted but for its signatures.
bool checkPackage(std::string_view bytes) {
    static const FuzzFolder folder;
    static const TrustedSigner signer;
    folder.write("package", bytes);
    const std::wstring path = folder.wideText("package");
    const std::optional<Content> content = contentOf(path);
    require(!content || packageOf(*content).bytes() == bytes, "A package can be written in one way only.");
    if (content && isHeld(*content)) {
        const FuzzFolder unpacked;
        unpack(*content, unpacked);
        require(packed(unpacked) == bytes, "What is unpacked packs to the same package.");
    }
    checkJudgement(path, content);
    signer.check(path, content);
    return content.has_value();
}

void checkHeader(std::string_view bytes) {
    KvTPackageHeader header{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), header.size()), header.begin());
    const std::optional<KvTPackedFile> file = readHeader(header);
    if (file) {
        require(file->name.size() <= longestPackedName && file->name.find('\0') == std::string::npos,
                "A name in a package is not too long.");
        require(file->size <= largestPackedFile, "A file in a package is not too large.");
        require(headerOf(*file) == header, "A header can be written in one way only.");
    }
}

} // namespace

/// A package; if it does not begin with the name of a manifest, what takePackage() reads.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    checkHeader(bytes);
    if (bytes.starts_with(manifestName)) {
        const bool isAccepted = checkPackage(bytes);
        // Seldom, for it takes as long again.
        const bool isSame = size % 8 != 0 || checkPackage(bytes) == isAccepted;
        require(isSame, "A package is judged the same each time.");
        return 0;
    }
    FuzzInput input(data, size);
    const Described described = takePackage(input);
    const bool isAccepted = checkPackage(described.bytes);
    require(!described.isSound || isAccepted, "A package that was not spoilt is accepted.");
    return 0;
}
