#include "PlannedTarget.h"

#include "ErrorReport.h"

#include <utility>

PlannedTarget::PlannedTarget(KvNReflasher::KvTOptions options, KvNReflasher::KvEMode mode)
    : options_(std::move(options)) {
    options_.mode = mode;
    callbacks_.message = MessageCapture::callback();
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
    writer_.print(L"\nReported errors:\n");
    printErrorReport(writer_, options_, errors, reportIndentation);
    return true;
}
