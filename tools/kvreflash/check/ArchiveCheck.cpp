#include "ArchiveCheck.h"

ExitCode checkArchive(const KvTCommandLine& /*line*/) {
    return exitFailed;
}
