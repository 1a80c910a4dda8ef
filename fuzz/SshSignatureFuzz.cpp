// Signatures of a manifest, and the keys in them.

#include "Base64.h"
#include "FuzzInput.h"
#include "Property.h"
#include "Signatures.h"
#include "SshSignature.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view beginLine = "-----BEGIN SSH SIGNATURE-----\n";
constexpr std::string_view endLine = "-----END SSH SIGNATURE-----\n";
/// Where the key is in what a block holds: behind the magic text and the version.
constexpr std::size_t keyOffset = 10;

/// ecdsaSignature with its second number negated, which anybody can do: it is another signature of the same text.
constexpr std::string_view ecdsaTwin = "-----BEGIN SSH SIGNATURE-----\n"
                                       "U1NIU0lHAAAAAQAAAGgAAAATZWNkc2Etc2hhMi1uaXN0cDI1NgAAAAhuaXN0cDI1NgAAAE\n"
                                       "EEtBe3Y8CkwZ37j4lDTFQaiZNmyK4CfxL+GNFpK+YmfnLBQkQeBAV2e0yZllm7WxnzGIca\n"
                                       "+Pc+pKdu09u9BBPfnwAAABFrdnJlZmxhc2gtYXJjaGl2ZQAAAAAAAAAGc2hhNTEyAAAAZA\n"
                                       "AAABNlY2RzYS1zaGEyLW5pc3RwMjU2AAAASQAAACEAivuO7GqHno3Nmxg5XthdzMMN1LdT\n"
                                       "LMRVfoeiLunQ6iAAAAAganbhqLcz30iqpu/U16x2mKqANEJ/mJRE+GpKkh2UpKg=\n"
                                       "-----END SSH SIGNATURE-----\n";

std::string textOf(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string inBase64(std::string_view bytes) {
    return base64Of({bytes.begin(), bytes.end()});
}

/// A block as the tool that signs writes it.
std::string blockOf(std::string_view content) {
    constexpr std::size_t lineSize = 70;
    std::string block(beginLine);
    const std::string base64 = inBase64(content);
    for (std::size_t begin = 0; begin < base64.size(); begin += lineSize) {
        block.append(base64, begin, lineSize).append("\n");
    }
    return block.append(endLine);
}

/// Takes the first block from `blocks` and returns its content.
std::string takeContent(std::string_view& blocks) {
    const std::string_view block = blocks.substr(0, blocks.find(endLine));
    blocks.remove_prefix(std::min(blocks.size(), block.size() + endLine.size()));
    std::string base64(block.substr(std::min(block.size(), beginLine.size())));
    std::erase(base64, '\n');
    return textOf(bytesOfBase64(base64).value_or(std::vector<std::uint8_t>()));
}

/// The field of a message that begins at `offset` with its length.
std::string_view fieldAt(std::string_view message, std::size_t offset) {
    message.remove_prefix(std::min(message.size(), offset));
    FuzzInput input(bytesOf(message).data(), message.size());
    const std::uint32_t length = input.takeNumber();
    return input.takeBytes(length);
}

KvCSshKey keyOf(const std::string& line) {
    std::string reason;
    const std::size_t blank = line.find(' ');
    return KvCSshKey::parse(line.substr(0, blank), line.substr(blank + 1), reason).value();
}

/// A key whose holder has signed signedText.
struct Signer {
    KvCSshKey key;
    const std::string& block;
};

const std::array<Signer, 3>& signers() {
    static const std::array<Signer, 3> all{
        {{keyOf(ed25519Key), ed25519Signature}, {keyOf(ecdsaKey), ecdsaSignature}, {keyOf(rsaKey), rsaSignature}}};
    return all;
}

bool isOurs(const KvCSshKey& key) {
    return std::any_of(signers().begin(), signers().end(), [&](const Signer& signer) { return signer.key == key; });
}

/// All contents that were signed with our keys: nobody can add to them.
const std::set<std::string>& signedContents() {
    static const std::set<std::string> all = [] {
        std::set<std::string> contents;
        for (std::string_view block : {std::string_view(ed25519Signature), std::string_view(ed25519Sha256Signature),
                                       std::string_view(ecdsaSignature), ecdsaTwin, std::string_view(rsaSignature)}) {
            contents.insert(takeContent(block));
        }
        return contents;
    }();
    return all;
}

/// Who has signed in `blocks`, which hold.
void checkSigners(const std::vector<KvCSshKey>& found, const std::string& blocks, std::string_view message) {
    std::string_view rest = blocks;
    std::string written;
    for (const KvCSshKey& signer : found) {
        const std::string content = takeContent(rest);
        written += blockOf(content);
        std::string reason;
        const std::string_view key = fieldAt(content, keyOffset);
        require(KvCSshKey::parse(bytesOf(key), reason) == signer, "The signer is whose key is in the block.");
        require(!isOurs(signer) || signedContents().contains(content), "Nobody signs for somebody else.");
        require(!isOurs(signer) || message == signedText, "A signature is of one text.");
    }
    require(!found.empty() && written == blocks, "Signatures that hold can be written in one way only.");
}

/// Returns whether the signatures hold.
bool checkBlocks(const std::string& blocks, std::string_view message) {
    std::string reason;
    const auto found = signersOf(blocks, bytesOf(message), reason);
    require(found || !reason.empty(), "Signatures are refused for a reason.");
    if (found) {
        checkSigners(*found, blocks, message);
        require(signersOf(blocks, bytesOf(message), reason) == found, "Signatures are judged the same each time.");
    }
    return found.has_value();
}

/// The fields of a key, written once more.
std::string writtenAnew(std::string_view key) {
    std::string written;
    for (std::size_t offset = 0; offset < key.size();) {
        const std::string_view field = fieldAt(key, offset);
        written.append(key.substr(offset, 4)).append(field);
        offset += 4 + field.size();
    }
    return written;
}

/// The block with another key in the place of its own.
std::string withKey(std::string_view block, std::string_view key) {
    const std::string content = takeContent(block);
    const std::size_t keyEnd = keyOffset + 4 + fieldAt(content, keyOffset).size();
    std::string changed = content.substr(0, keyOffset);
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        changed += static_cast<char>(key.size() >> (shift - 8) & 0xFFU);
    }
    return blockOf(changed.append(key).append(content, keyEnd));
}

void checkKey(std::string_view bytes) {
    std::string reason;
    const std::optional<KvCSshKey> key = KvCSshKey::parse(bytesOf(bytes), reason);
    if (!key) {
        require(!reason.empty(), "A key is refused for a reason.");
        return;
    }
    constexpr std::size_t longestKey = 2100; // 16384 bits of RSA
    require(bytes.size() <= longestKey, "No key keeps a verifier busy.");
    require(fieldAt(bytes, 0) == key->kindName() && writtenAnew(bytes) == bytes, "A key is its fields.");
    require(KvCSshKey::parse(key->kindName(), inBase64(bytes), reason) == key, "A key is the same as text.");
    require(!KvCSshKey::parse("ssh-dss", inBase64(bytes), reason), "A key is of the kind that stands in front of it.");
    require(!KvCSshKey::parse(bytesOf(std::string(bytes) + '\0'), reason), "Nothing follows a key.");
    require(!KvCSshKey::parse(bytesOf(bytes.substr(0, bytes.size() - 1)), reason), "A key has an end.");
    const std::string fingerprint = key->fingerprint();
    require(fingerprint.starts_with("SHA256:") && bytesOfBase64(fingerprint.substr(7) + "=")->size() == 32,
            "A fingerprint is a digest.");
    for (const Signer& signer : signers()) {
        const bool isSigner = *key == signer.key;
        require((fingerprint == signer.key.fingerprint()) == isSigner, "A fingerprint is that of one key.");
        require(checkBlocks(withKey(signer.block, bytes), signedText) == isSigner, "A signature is that of one key.");
    }
}

/// A key as a word for its kind and one of its bytes.
void checkKeyText(std::string_view text) {
    const std::string_view kind = text.substr(0, text.find(' '));
    const std::string_view base64 = text.substr(std::min(text.size(), kind.size() + 1));
    std::string reason;
    const std::optional<KvCSshKey> key = KvCSshKey::parse(kind, base64, reason);
    require(key || !reason.empty(), "A text is refused as a key for a reason.");
    if (key) {
        const std::string bytes = textOf(bytesOfBase64(base64).value_or(std::vector<std::uint8_t>()));
        require(key->kindName() == kind && inBase64(bytes) == base64, "A key can be written in one way only.");
        checkKey(bytes);
    }
}

} // namespace

/// Signatures, a zero byte, and the text that they are of: without it signedText. All of it is taken for what a block
/// holds and for a key, too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isHeld = checkBlocks(ed25519Signature + ecdsaSignature + rsaSignature, signedText);
    require(isHeld, "What all have signed holds.");
    FuzzInput input(data, size);
    const std::string blocks(input.takeText());
    checkBlocks(blocks, input.isEmpty() ? signedText : input.takeRest());
    const std::string_view all(reinterpret_cast<const char*>(data), size);
    checkBlocks(blockOf(all), signedText);
    checkKey(all);
    checkKeyText(all);
    return 0;
}
