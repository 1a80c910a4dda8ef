#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

/// While it lives, the rights of files count for this thread even if it is root's.
class OrdinaryUser {
public:
    OrdinaryUser() {
        EXPECT_EQ(syscall(SYS_capget, &header_, former_.data()), 0);
        Rights ordinary = former_;
        for (const std::uint32_t right : {std::uint32_t{CAP_DAC_OVERRIDE}, std::uint32_t{CAP_DAC_READ_SEARCH}}) {
            ordinary[CAP_TO_INDEX(right)].effective &= ~CAP_TO_MASK(right);
        }
        EXPECT_EQ(syscall(SYS_capset, &header_, ordinary.data()), 0);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() { EXPECT_EQ(syscall(SYS_capset, &header_, former_.data()), 0); }

private:
    using Rights = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    Rights former_{};
};
