#include "ModuleVersion.h"

#include <gtest/gtest.h>

TEST(KvTModuleVersion, IsTheVersionOfTheModule) {
    const auto version = readModuleVersion();
    ASSERT_TRUE(version.has_value());
    EXPECT_EQ(version->major, KV_EXPECTED_MAJOR);
    EXPECT_EQ(version->minor, KV_EXPECTED_MINOR);
    EXPECT_EQ(version->maintenance, KV_EXPECTED_PATCH);
}
