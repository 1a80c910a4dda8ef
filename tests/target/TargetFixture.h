#pragma once

#include "KeptMessages.h"
#include "KvCErrorManager.h"
#include "KvCTargetAccess.h"
#include "KvTOptions.h"
#include "TargetBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

/// A session's access to an emulated target. Each test ends with nothing held of the platform.
class TargetTest : public testing::Test {
protected:
    TargetTest();
    void SetUp() override;
    void TearDown() override;

    static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    [[nodiscard]] static std::wstring printed() { return KeptMessages::text(); }
    void serve();
    void serveWith(const FaultBuilder& fault);
    /// Looks the target up; the handle, if any, is given back at once.
    struct Lookup {
        std::int32_t status = 0;
        bool hasHandle = false;
    };
    Lookup lookUp();

    TargetBuilder target;
    KvNReflasher::KvTOptions options{};
    KeptMessages messages;
    KvCTargetAccess access{messages.writer(), options, errors()};
};
