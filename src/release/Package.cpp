#include "Package.h"

#include "SshSignature.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// Where a file that begins at `offset` with its header ends, the zeros behind it included.
std::uint64_t endOf(std::uint64_t offset, std::uint64_t size) {
    return offset + packageBlock + size + paddingOf(size);
}

} // namespace

KvCPackage::KvCPackage(FileStream stream) : stream_(std::move(stream)), size_(sizeOfOpenFile(*stream_)) {}

std::optional<std::string> KvCPackage::manifest(std::string& reason) {
    std::optional<std::string> text = textAt(0, manifestName, largestManifest, manifestEnd_, reason);
    signaturesEnd_ = manifestEnd_;
    return text;
}

std::optional<std::string> KvCPackage::signatures(std::string& reason) {
    reason.clear();
    const std::optional<KvTPackedFile> header = headerAt(manifestEnd_);
    if (!header || header->name != signatureName) {
        return std::nullopt;
    }
    return textAt(manifestEnd_, signatureName, mostSignatureBytes, signaturesEnd_, reason);
}

std::vector<KvTStoredDifference> KvCPackage::differencesFrom(const KvTManifest& manifest) {
    if (time_ != manifest.created) {
        return {{"", "the package was packed at another time than its manifest says"}};
    }
    std::uint64_t offset = signaturesEnd_;
    for (const KvTSealedFile& file : manifest.files) {
        const KvTPackageHeader expected = headerOf({file.name, file.size, manifest.created});
        const std::optional<KvTPackedFile> found = headerAt(offset);
        if (!found || headerOf(*found) != expected) {
            return {{file.name, "'" + file.name + "' is not where the manifest has it"}};
        }
        offsets_[file.name] = offset + packageBlock;
        const std::uint64_t end = endOf(offset, file.size);
        if (end > size_ || !isZero(end - paddingOf(file.size), paddingOf(file.size))) {
            return {{file.name, "'" + file.name + "' is cut off, or not followed by zeros"}};
        }
        offset = end;
    }
    if (size_ != offset + packageEnd || !isZero(offset, packageEnd)) {
        return {{"", "the package does not end behind its last file"}};
    }
    return {};
}

bool KvCPackage::read(const KvTSealedFile& file, const Sink& sink, std::string& reason) {
    const auto found = offsets_.find(file.name);
    if (found == offsets_.end() || !readAt(found->second, file.size, sink)) {
        reason = "cannot be read";
        return false;
    }
    return true;
}

std::optional<KvTPackedFile> KvCPackage::headerAt(std::uint64_t offset) {
    KvTPackageHeader header{};
    auto position = header.begin();
    const bool isRead = readAt(offset, header.size(), [&](KvTBytes bytes) {
        position = std::copy(bytes.begin(), bytes.end(), position);
        return true;
    });
    return isRead ? readHeader(header) : std::nullopt;
}

/// The file of this name that begins at `offset`; `end` receives where it ends.
std::optional<std::string> KvCPackage::textAt(std::uint64_t offset, std::string_view name, std::uint64_t most,
                                              std::uint64_t& end, std::string& reason) {
    const std::optional<KvTPackedFile> header = headerAt(offset);
    if (!header || header->name != name) {
        reason = "the package does not begin with the header of '" + std::string(name) + "'";
        return std::nullopt;
    }
    if (offset != 0 && header->time != time_) {
        reason = "it was packed at another time than the manifest";
        return std::nullopt;
    }
    time_ = header->time;
    if (header->size > most) {
        reason = "it is larger than anything that is read";
        return std::nullopt;
    }
    end = endOf(offset, header->size);
    std::string text;
    const bool isRead = end <= size_ && readAt(offset + packageBlock, header->size, [&](KvTBytes bytes) {
                            text.append(bytes.begin(), bytes.end());
                            return true;
                        });
    if (!isRead || !isZero(end - paddingOf(header->size), paddingOf(header->size))) {
        reason = "it is cut off, or not followed by zeros";
        return std::nullopt;
    }
    return text;
}

/// Hands `size` bytes to `sink`; false if there are not so many.
bool KvCPackage::readAt(std::uint64_t offset, std::uint64_t size, const Sink& sink) {
    constexpr std::uint64_t mostPieceSize = std::uint64_t{256} << 10U;
    if (offset > size_ || size > size_ - offset || !seekTo(*stream_, offset)) {
        return false;
    }
    std::vector<std::uint8_t> piece(static_cast<std::size_t>(std::min(size, mostPieceSize)));
    while (size > 0) {
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(size, piece.size()));
        if (std::fread(piece.data(), 1, length, stream_.get()) != length || !sink(KvTBytes(piece).first(length))) {
            return false;
        }
        size -= length;
    }
    return true;
}

bool KvCPackage::isZero(std::uint64_t offset, std::uint64_t size) {
    return readAt(offset, size, [](KvTBytes bytes) {
        return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
    });
}
