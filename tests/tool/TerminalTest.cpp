#include "Streams.h"

#include "ScratchFolder.h"
#include "StreamGuard.h"

#include <gtest/gtest.h>

TEST(Terminal, AFileIsNone) {
    const ScratchFolder folder;
    const StreamGuard file(std::fopen((folder.path() / "file").string().c_str(), "wb"));
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(isTerminal(file.get()));
}
