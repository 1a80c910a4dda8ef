#include "RunOptions.h"

#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

using namespace KvNReflasher;

void RunArgument::addTo(CommandSyntax& syntax) {
    syntax.addArgument("RUN", "Id of the run (history lists them)", keptIn(run));
}

KvTRunList runsFor(const JournalOption& journal, const std::string& host) {
    KvTRunList list;
    if (journal.folder) {
        list = listRuns(wideOf(absolutePath(*journal.folder)));
    }
    for (const std::string& fault : list.faults) {
        say("warning: " + fault);
    }
    if (!host.empty()) {
        std::erase_if(list.runs,
                      [&host](const KvTRun& run) { return run.target != host && run.targetAddress != host; });
    }
    return list;
}
