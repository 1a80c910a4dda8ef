#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

/// While it lives, no file of this process grows beyond a size, as on a disk that is full.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes) : formerHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &former_), 0);
        const rlimit small{bytes, former_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;
    ~SmallFiles() {
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &former_), 0);
        (void)std::signal(SIGXFSZ, formerHandler_);
    }

private:
    using Handler = void (*)(int);
    Handler formerHandler_;
    rlimit former_{};
};
