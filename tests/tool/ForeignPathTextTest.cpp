#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "TargetBuilder.h"
#include "ToolRun.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(ForeignPaths, AnUpdateWarnsOfEachBeforeItBegins) {
    ArchiveFolder archive;
    archive.add(entry("node.bin").board("QB4120", 1));
    archive.add(entry("../outside.bin").board("QB4120", 2));
    archive.add(entry("a.cfg").target("QB4120", "../../etc/a.cfg"));
    archive.add(entry("b.cfg").target("QB4120", "cfg/b.cfg"));
    archive.write();
    TargetBuilder target;
    target.add(completeBoard("HCN", "QB4120", 2815).element(completeElement(1, "UserFirmware")));
    const std::string rack = target.write();
    const std::vector<std::string> line{"-a", archive.folder().text(), "-t", "127.0.0.1", "--emulate", rack};
    const auto run = [&](const char* command) {
        std::vector<std::string> arguments{command};
        arguments.insert(arguments.end(), line.begin(), line.end());
        return runCaptured(arguments);
    };
    EXPECT_EQ(run("update").errors,
              "kvreflash: warning: file entry 1 reads \"../outside.bin\", which is outside the archive folder\n"
              "kvreflash: warning: file entry 2 writes \"../../etc/a.cfg\", which is outside the target's file system\n"
              "kvreflash: 1 element failed; the first is 'QB4120, SN 2815, Updatable file (a.cfg)'\n");
    EXPECT_EQ(run("plan").errors, "");
}

} // namespace
