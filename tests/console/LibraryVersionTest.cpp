#include "LibraryVersion.h"

#include <gtest/gtest.h>

TEST(ToolVersionOfTheModule, IsItsFirstThreeNumbers) {
    EXPECT_EQ(getToolVersion(), KvCVersion(KV_EXPECTED_MAJOR, KV_EXPECTED_MINOR, KV_EXPECTED_PATCH, 0, 0, 0));
    EXPECT_NE(getToolVersion(), KvCVersion());
}
