// A disk that takes no more while a target's state is written.

#include "SmallFilesLinux.h"
#include "TargetFixtures.h"

#include <gmock/gmock.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Not;

TEST_F(TargetState, AWriteThatFailsLeavesNothingBehind) {
    serveElement(updateElement(1));
    openDevice();
    std::int32_t status = 0;
    {
        const SmallFiles full(0);
        status = KvHIM_FORCE_resetDevice(errors(), device, 0);
    }
    EXPECT_NE(status, 0);
    EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith("the disk does not take it.")));
    EXPECT_THAT(target.folder().list(), Not(Contains(EndsWith(".tmp"))));
    closeDevice();
    resetDevice();
}

} // namespace
