// A disk that takes no more while a target's state is written.

#include "TargetFixtures.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/resource.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Not;

/// For the duration of a scope nothing can be written to a file.
class FullDisk {
public:
    FullDisk() : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &limit_);
        const rlimit none{0, limit_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk(FullDisk&&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    FullDisk& operator=(FullDisk&&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &limit_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    void (*handler_)(int);
    rlimit limit_{};
};

TEST_F(TargetState, AWriteThatFailsLeavesNothingBehind) {
    serveElement(updateElement(1));
    openDevice();
    std::int32_t status = 0;
    {
        const FullDisk full;
        status = KvHIM_FORCE_resetDevice(errors(), device, 0);
    }
    EXPECT_NE(status, 0);
    EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith("the disk does not take it.")));
    EXPECT_THAT(target.folder().list(), Not(Contains(EndsWith(".tmp"))));
    closeDevice();
    resetDevice();
}

} // namespace
