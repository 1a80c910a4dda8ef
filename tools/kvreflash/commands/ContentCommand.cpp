#include "ContentCommand.h"

#include "KvDocuments.h"
#include "ToolOutput.h"

using namespace KvNReflasher;

ExitCode ContentCommand::run() {
    ToolSession session(request(showArchiveContent));
    const KvTVerdict verdict = session.prepareAndRun();
    if (json.isWanted) {
        writeText(stdout, contentDocument(session.archiveContent(), verdict));
    }
    return conclude(verdict);
}
