#include "ElementsCommand.h"

#include "KvDocuments.h"
#include "ToolOutput.h"

using namespace KvNReflasher;

ExitCode ElementsCommand::run() {
    ToolSession session(request(showTargetElements));
    const KvTVerdict verdict = session.prepareAndRun();
    if (json.isWanted) {
        writeText(stdout, elementsDocument(session->plan(), verdict));
    }
    return conclude(verdict);
}
