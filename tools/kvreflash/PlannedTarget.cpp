#include "PlannedTarget.h"

#include "ErrorReport.h"

#include <utility>

PlannedTarget::PlannedTarget(KvNReflasher::KvTOptions options, KvNReflasher::KvEMode mode)
    : options_(std::move(options)) {
    options_.mode = mode;
}

PlannedTarget::~PlannedTarget() {
    preparation_.reset();
    KvCErrorManager::getInstance()->getMasterErrorList().reset();
}

bool PlannedTarget::plan() {
    return preparation_->prepare() == prepareReady;
}

bool PlannedTarget::reportErrors() {
    return printReportedErrors(messages_.writer(), options_, KvCErrorManager::getInstance()->getMasterErrorList());
}
