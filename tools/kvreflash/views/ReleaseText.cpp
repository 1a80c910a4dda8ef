#include "ReleaseText.h"

using namespace KvNReflasher;

namespace {

std::string keyOf(const KvTRelease& release) {
    return release.keyKind + " " + release.keyFingerprint;
}

} // namespace

std::string releaseText(const KvTRelease& release) {
    const std::string sealed = "sealed " + release.created;
    const char* const accepted = release.isUnsealedAccepted ? " (accepted with --unsealed)" : "";
    switch (release.seal) {
    case KvESeal::none:
        return release.isUnsealedAccepted ? std::string("not sealed").append(accepted) : std::string();
    case KvESeal::sealed:
        return sealed + " and not signed" + accepted;
    case KvESeal::signedByStranger:
        return sealed + " and signed by " + keyOf(release) + ", which nobody here was told to trust";
    case KvESeal::trusted:
        return sealed + " and signed by " + release.signer + " (" + keyOf(release) + ")";
    }
    return "";
}
