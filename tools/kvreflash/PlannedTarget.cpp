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
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    if (errors.getErrorCount() == 0) {
        return false;
    }
    messages_.writer().print(L"\nReported errors:\n");
    printErrorReport(messages_.writer(), options_, errors, reportIndentation);
    return true;
}
