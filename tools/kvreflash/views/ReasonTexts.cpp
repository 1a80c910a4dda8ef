#include "ReasonTexts.h"

using namespace KvNReflasher;

namespace {

struct ReasonTexts {
    const char* sentence;
    const char* shortText;
};

ReasonTexts textsFor(KvEReason reason) {
    switch (reason) {
    case KvEReason::versionDiffers:
        return {"update: the version differs", ""};
    case KvEReason::checksumDiffers:
        return {"update: the checksum differs", ""};
    case KvEReason::invalid:
        return {"update: what is installed is not valid", ""};
    case KvEReason::inactive:
        return {"update: what is installed is not active", ""};
    case KvEReason::forced:
        return {"update: it is up to date, and the update is forced", ""};
    case KvEReason::upToDate:
        return {"no update: it is up to date", "up to date"};
    case KvEReason::newerInstalled:
        return {"no update: a newer version is installed, and the entry is for upgrades only", "newer"};
    case KvEReason::noEntry:
        return {"no update: the archive has no entry for it", "no entry"};
    case KvEReason::featureLevel:
        return {"no update: the entry for it needs a feature level that is not known", "no entry"};
    case KvEReason::customLeftOut:
        return {"no update: custom elements are left out (--skip-custom)", "disabled"};
    case KvEReason::disabled:
        return {"no update: it was left out (--disable)", "disabled"};
    case KvEReason::carrierBoardMissing:
        return {"no update: the target has no QB5150 or QB5170 that carries it", "disabled"};
    case KvEReason::downgradeLeftOut:
        return {"no update: the archive has a lower version (--no-downgrade)", "downgrade"};
    case KvEReason::contentDiffers:
        return {"update: the journal does not have this content as last written there", ""};
    case KvEReason::unlistedLeftOut:
        return {"no update: files that the inventory does not list are left out (--unlisted-files never)", "unlisted"};
    case KvEReason::writtenBefore:
        return {"no update: the journal has this content as last written there", "written"};
    case KvEReason::doneBefore:
        return {"no update: the run that goes on has installed it", "done"};
    case KvEReason::inDoubt:
        return {"no update: it was in progress when the run broke off, and reports neither version nor checksum "
                "(--redo)",
                "in doubt"};
    }
    return {"", ""};
}

} // namespace

const char* sentenceOf(KvEReason reason) {
    return textsFor(reason).sentence;
}

const char* sentenceOf(KvEHiddenBy reason) {
    switch (reason) {
    case KvEHiddenBy::boardTypeFilter:
        return "its board type is not in --board-type";
    case KvEHiddenBy::serialNumberFilter:
        return "its serial number is not in --serial-number";
    case KvEHiddenBy::elementNameFilter:
        return "its name is not in --element";
    case KvEHiddenBy::configuration:
        return "--configuration decides whether configuration elements or all others are looked at";
    }
    return "";
}

const char* shortTextOf(const KvTDecision& decision) {
    return decision.update || decision.reasons.empty() ? "" : textsFor(decision.reasons.front()).shortText;
}
