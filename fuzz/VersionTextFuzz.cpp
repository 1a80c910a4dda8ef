// A version: its text, its number and its order.

#include "FuzzInput.h"
#include "KvCVersion.h"
#include "Property.h"

#include <array>
#include <string>
#include <tuple>

namespace {

/// What the order of versions is to follow.
auto orderKey(const KvCVersion& version) {
    const unsigned build = version.getSpb();
    const unsigned rank = build == 0 ? 1000U : build;
    return std::make_tuple(version.getMar(), version.getMir(), version.getMai(), rank, version.getSpn(),
                           version.getPlv());
}

void checkForms(const KvCVersion& version) {
    const KvCString text = version.getAsString();
    require(KvCVersion(text.c_str()) == version, "A printed version reads as itself.");
    require(KvCVersion(text.c_str()).getAsString() == text, "A printed version prints the same again.");
    KvCVersion fromNumber;
    fromNumber.setByULong64(version.getAsULong64());
    require(fromNumber == version, "A version's number gives the version.");
    require((version.getAsULong64() == 0) == (version == KvCVersion()), "Only the zero version's number is 0.");
    const KvCVersion fromNumberText(("#" + std::to_string(version.getAsULong64())).c_str());
    require(fromNumberText == version, "A version written as its number reads as itself.");
    const KvCVersion fromParts(version.getMar(), version.getMir(), version.getMai(), version.getSpb(), version.getSpn(),
                               version.getPlv());
    require(fromParts == version, "A version's components make the version.");
}

void checkOrder(const KvCVersion& a, const KvCVersion& b) {
    require((a <=> b) == (orderKey(a) <=> orderKey(b)), "Versions are ordered by their components.");
    require(((a <=> b) == nullptr) == (a == b), "Versions are of equal order exactly when they are equal.");
    require((a < b) == (b > a), "The order is that of both sides.");
}

/// A text that is no version gives the zero version, and what is behind one is not overlooked.
void checkStrictness(const std::string& text) {
    if (KvCVersion(text.c_str()) != KvCVersion()) {
        require(KvCVersion((text + ".").c_str()) == KvCVersion(), "Nothing may follow a version.");
        require(KvCVersion((" " + text).c_str()) == KvCVersion(), "Nothing may stand before a version.");
    }
}

} // namespace

/// Texts with a zero byte between them; the first one also as the bytes of a version's number.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput bytes(data, size);
    std::uint64_t number = bytes.takeNumber();
    number = number << 32U | bytes.takeNumber();
    std::array<KvCVersion, 4> versions;
    versions.front().setByULong64(number);
    FuzzInput texts(data, size);
    for (std::size_t index = 1; index < versions.size(); ++index) {
        const std::string text(texts.takeText());
        versions[index] = KvCVersion(text.c_str());
        checkStrictness(text);
    }
    for (const KvCVersion& a : versions) {
        checkForms(a);
        for (const KvCVersion& b : versions) {
            checkOrder(a, b);
        }
    }
    return 0;
}
