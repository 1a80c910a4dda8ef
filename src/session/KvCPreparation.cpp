#include "KvCPreparation.h"

#include "ErrorReport.h"
#include "KvCConsoleWriter.h"
#include "KvCStringConversion.h"
#include "LibraryVersion.h"
#include "PlanTables.h"
#include "PlanValue.h"

#include <new>
#include <utility>

namespace {

using namespace KvNReflasher;

bool needsBanner(std::uint32_t mode) {
    return mode != showVersion && mode != showArchiveVersion && mode != dumpArchiveDescription;
}

bool needsArchive(std::uint32_t mode) {
    return mode == showArchiveVersion || mode == showArchiveContent || mode == dumpArchiveDescription ||
           mode == showUpdatePlan || mode == performUpdate;
}

bool needsTarget(std::uint32_t mode) {
    return mode >= showTargetElements && mode <= performUpdate;
}

bool needsPlan(std::uint32_t mode) {
    return mode == showUpdatePlan || mode == performUpdate;
}

} // namespace

KvEPrepareStatus KvCPreparation::prepare() {
    // What an earlier preparation has left refers to an archive that is read anew.
    stage_ = KvEStage::created;
    verdict_ = {};
    forgetTarget();
    if (needsBanner(options_.mode)) {
        printBanner();
    }
    if (needsArchive(options_.mode) && !readArchive()) {
        return prepareFailed;
    }
    if (needsTarget(options_.mode) && !prepareTarget()) {
        return prepareFailed;
    }
    if (options_.mode == performUpdate && !checkSupport()) {
        return prepareTargetNotSupported;
    }
    stage_ = KvEStage::prepared;
    return prepareReady;
}

void KvCPreparation::forgetTarget() {
    plan_.reset();
    inventory_.clear();
}

/// Notes why the session cannot go on.
bool KvCPreparation::refuse(KvEFailure failure, std::string message) {
    verdict_ = {failure, std::move(message)};
    return false;
}

bool KvCPreparation::readArchive() {
    archive_.readFrom({});
    releasedReading_.reset();
    if (isReleaseAsked_ ? !readReleasedArchive() : !archive_.readArchiveOrReport()) {
        return refuse(KvEFailure::archive, releasedReading_ ? releasedReading_->refusal() : archive_.refusal());
    }
    stage_ = KvEStage::archiveRead;
    return true;
}

bool KvCPreparation::readReleasedArchive() {
    if (!releaseOptions_) {
        throw std::bad_alloc(); // when it was asked for
    }
    releasedReading_.emplace(writer_, options_, *releaseOptions_);
    return releasedReading_->read(archive_,
                                  options_.mode == performUpdate ? KvESealedFiles::copied : KvESealedFiles::verified);
}

void KvCPreparation::setRelease(const KvTReleaseOptions& options) {
    // Whatever comes now, the archive is not read without asking.
    isReleaseAsked_ = true;
    releaseOptions_.reset();
    releaseOptions_ = options;
}

std::optional<KvTRelease> KvCPreparation::release() const {
    return releasedReading_ ? releasedReading_->release() : std::nullopt;
}

bool KvCPreparation::prepareTarget() {
    if (!connect()) {
        return false;
    }
    if (needsPlan(options_.mode)) {
        planner_.plan();
        printPlanNotes(writer_, options_, inventory_, planner_.phaseCount());
        plan_ = makePlan(archive_, inventory_, targetAccess_.ipAddress(), planner_.phaseCount(), options_);
        plan_->release = release();
    } else {
        plan_ = makeElementList(inventory_, targetAccess_.ipAddress());
    }
    return true;
}

void KvCPreparation::printBanner() const {
    writer_.print(L"\nKorvel Device Update Tool, Vs %hs\nCopyright (c) 2026 Korvel. All rights reserved.\n \n",
                  getToolVersion().getAsString().c_str());
}

bool KvCPreparation::connect() {
    if (options_.target.empty()) {
        writer_.print(L"ERROR: No IP address or hostname specified!\n");
        return refuse(KvEFailure::target, "no target was given");
    }
    const std::string target(toUtf8(options_.target).view());
    if (!targetAccess_.resolveTarget()) {
        writer_.print(L"ERROR: Invalid IP address or hostname (%s)!\n", options_.target.c_str());
        return refuse(KvEFailure::target, "'" + target + "' is not an IPv4 address or a known host name");
    }
    if (!targetAccess_.checkTargetAccessible()) {
        writer_.print(L"ERROR: The target system is inaccessible!\n");
        printErrorReport(writer_, options_, errors_, reportIndentation);
        return refuse(KvEFailure::target, "the target '" + target + "' is not accessible");
    }
    stage_ = KvEStage::targetFound;
    if (!inventory_.scanInventory(targetAccess_.ipAddress())) {
        writer_.print(L"ERROR: Cannot read target device information.\n\tPower-cycle the system and retry.\n\tIf the "
                      L"problem persists, contact Korvel support.\n");
        return refuse(KvEFailure::target, "the inventory of the target '" + target + "' cannot be read");
    }
    stage_ = KvEStage::targetScanned;
    return true;
}

/// Takes all elements of a target that is not supported out of the update.
bool KvCPreparation::checkSupport() {
    if (plan_->supported) {
        return true;
    }
    for (const KvTUpdateElement& element : inventory_.elements()) {
        inventory_.planOf(element.index).disabled = true;
    }
    writer_.print(L"ERROR: The target system is not supported by this firmware archive.\n");
    return refuse(KvEFailure::unsupported, unsupportedMessage(*plan_));
}

void KvCPreparation::disableElement(std::uint32_t index, KvEReason reason) {
    if (index >= inventory_.elements().size()) {
        return;
    }
    if (plan_) {
        disable(plan_->elements[index], reason);
    }
    inventory_.planOf(index).disabled = true;
}

void KvCPreparation::addReason(std::uint32_t index, KvEReason reason) {
    plan_->elements.at(index).decision.reasons.push_back(reason);
}
