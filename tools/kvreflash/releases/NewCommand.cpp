#include "NewCommand.h"

#include "KvReleases.h"
#include "NewFiles.h"
#include "PathTexts.h"
#include "Streams.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <cerrno>

using namespace KvNReflasher;

namespace {

/// Writes a file that must not exist.
KvTVerdict writeNew(const std::string& path, const std::string& content) {
    const int file = createNewFile(filePath(path));
    if (file < 0) {
        return {KvEFailure::output, fileFailure("cannot create", path)};
    }
    const int error = writeBytes(file, content) ? 0 : errno;
    closeFile(file);
    return error == 0 ? KvTVerdict() : KvTVerdict{KvEFailure::output, fileFailure("cannot write", path, error)};
}

} // namespace

void DraftedFolder::addTo(CommandSyntax& syntax) {
    syntax.addArgument("DIR", "The folder with the update files, which must not have an archive.json", keptIn(folder),
                       Occurs::once);
}

ExitCode NewCommand::run() {
    const KvTDraft draft = draftArchive(wideOf(archive.folder));
    for (const std::string& fault : draft.faults) {
        say(fault);
    }
    if (!draft.faults.empty()) {
        return conclude({KvEFailure::archive, "nothing was drafted: " + draft.faults.front()});
    }
    if (draft.fileCount == 0) {
        return conclude({KvEFailure::archive, quotedPath(archive.folder) + " has no update files"});
    }
    const std::string path = archive.folder + "/archive.json";
    const KvTVerdict verdict = writeNew(path, draft.description);
    if (verdict.isSuccess()) {
        writeText(stdout, "Drafted " + visibleInLine(quotedPath(path)) + " with " +
                              counted(draft.fileCount, "update file") +
                              ".\nFill in what stands in <>, and see what is left: kvreflash check -a " +
                              visibleInLine(quotedPath(archive.folder)) + "\n");
    }
    return conclude(verdict);
}
