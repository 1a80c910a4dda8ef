#include "TargetFixture.h"

#include "KvEmulation.h"
#include "KvHostInterface.h"

TargetTest::TargetTest() {
    options.target = L"127.0.0.1";
}

void TargetTest::SetUp() {
    KvEmulation::reset();
    ASSERT_TRUE(access.resolveTarget());
}

void TargetTest::TearDown() {
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    KvEmulation::reset();
}

void TargetTest::serve() {
    static_cast<void>(target.serve());
}

void TargetTest::serveWith(const FaultBuilder& fault) {
    target.add(fault);
    serve();
}

TargetTest::Lookup TargetTest::lookUp() {
    KvHIMDeviceHandle device = nullptr;
    Lookup result;
    result.status = access.findDevice(errors(), device);
    result.hasHandle = device != nullptr;
    if (device != nullptr) {
        EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
    }
    return result;
}
