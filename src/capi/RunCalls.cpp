#include "Handles.h"
#include "KvRunDocuments.h"
#include "KvRuns.h"
#include "KvTSavedPlan.h"
#include "Records.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

// Saved plans, and the journal of runs.

using namespace KvNReflasher;

namespace {

/// The runs of a journal, as they were when the handle was made.
class KvCRunsHandle : public KvCHandled {
public:
    explicit KvCRunsHandle(std::wstring journal) : folder(std::move(journal)), list(listRuns(folder)) {}

    std::wstring folder;
    KvTRunList list;
    std::string documentText;
};

kvr_run_info recordOf(const KvTRun& run) {
    kvr_run_info record{};
    record.state = static_cast<std::uint32_t>(run.state);
    record.failure = static_cast<std::uint32_t>(run.verdict.failure);
    record.exit_code = static_cast<std::uint32_t>(run.exitCode);
    record.resumable = run.isOpen() ? 1 : 0;
    record.id = run.id.c_str();
    record.command = run.command.c_str();
    record.begin = run.begin.c_str();
    record.end = run.end.c_str();
    record.target = run.target.c_str();
    record.target_address = run.targetAddress.c_str();
    record.archive = run.archiveFolder.c_str();
    record.user = run.user.c_str();
    record.computer = run.computer.c_str();
    record.message = run.verdict.message.c_str();
    record.plan = run.planId.c_str();
    record.fault = run.fault.c_str();
    return record;
}

kvr_saved_plan recordOf(const KvTSavedPlan& plan) {
    kvr_saved_plan record{};
    record.changes = plan.changes();
    record.id = plan.id.c_str();
    record.time = plan.time.c_str();
    record.target = plan.target.c_str();
    record.target_address = plan.plan.targetAddress.c_str();
    record.archive = plan.archiveFolder.c_str();
    record.tool_version = plan.toolVersion.c_str();
    return record;
}

/// The document of one run, or of all.
std::int32_t makeDocument(KvCRunsHandle& handle, const std::string& id) {
    if (id.empty()) {
        handle.documentText = historyDocument(handle.list, {});
        return KVR_SUCCESS;
    }
    std::string reason;
    const std::optional<KvTRunRecord> run = readRun(handle.folder, id, reason);
    const KvTVerdict verdict = run ? KvTVerdict() : KvTVerdict{KvEFailure::selection, reason};
    handle.documentText = runDocument(run ? &*run : nullptr, verdict);
    return run ? KVR_SUCCESS : failed(reason.c_str());
}

} // namespace

std::int32_t KVR_CALL kvr_read_saved_plan(const char* content, kvr_saved_plan* plan) {
    thread_local std::optional<KvTSavedPlan> last;
    return guarded([&] {
        static_cast<void>(recordFrom(plan));
        std::string reason;
        last = readSavedPlan(textOf(content), reason);
        if (!last) {
            return failed(reason.c_str());
        }
        fill(plan, recordOf(*last));
        return std::int32_t{KVR_SUCCESS};
    });
}

std::int32_t KVR_CALL kvr_runs_create(const char* journal_folder, kvr_runs** runs, std::uint32_t* count) {
    return guarded([&] {
        requireOut(runs);
        *runs = nullptr;
        const auto handle = std::make_shared<KvCRunsHandle>(pathOf(journal_folder));
        *runs = static_cast<kvr_runs*>(addHandle(handle));
        giveIfWanted(count, static_cast<std::uint32_t>(handle->list.runs.size()));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_runs_free(kvr_runs* runs) {
    return freeHandle<KvCRunsHandle>(runs);
}

std::int32_t KVR_CALL kvr_runs_get(kvr_runs* runs, std::uint32_t index, kvr_run_info* run) {
    return guarded([&] {
        const auto handle = objectOf<KvCRunsHandle>(runs);
        fill(run, recordOf(itemOf(handle->list.runs, index)));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_runs_get_document(kvr_runs* runs, const char* id, const char** text) {
    return guarded([&] {
        const auto handle = objectOf<KvCRunsHandle>(runs);
        const KvCExclusiveUse use(*handle);
        requireOut(text);
        const std::int32_t result = makeDocument(*handle, textOf(id));
        *text = handle->documentText.c_str();
        return result;
    });
}
