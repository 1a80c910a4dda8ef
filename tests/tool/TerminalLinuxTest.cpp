#include "Streams.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

TEST(Terminal, APseudoTerminalIsOne) {
    const int controller = posix_openpt(O_RDWR | O_NOCTTY);
    if (controller < 0) {
        GTEST_SKIP() << "there are no pseudo terminals here";
    }
    ASSERT_EQ(grantpt(controller), 0);
    ASSERT_EQ(unlockpt(controller), 0);
    const int descriptor = open(ptsname(controller), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    std::FILE* const stream = fdopen(descriptor, "w");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(isTerminal(stream));
    std::fclose(stream);
    close(controller);
}

TEST(Terminal, APipeIsNone) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    std::FILE* const stream = fdopen(ends[1], "w");
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(isTerminal(stream));
    std::fclose(stream);
    close(ends[0]);
}
