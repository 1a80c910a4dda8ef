#include "SavedPlans.h"

#include "SampleValues.h"

using namespace KvNReflasher;

KvTSavedPlan sampleSavedPlan() {
    KvTSavedPlan plan;
    plan.id = "20261122T101500123Z-0a1b2c3d";
    plan.toolVersion = "1.1";
    plan.time = "2026-11-22T10:15:00.123Z";
    plan.target = "rack-7";
    plan.options = {.boardTypeFilter = "QB4120",
                    .serialNumberFilter = "2815",
                    .elementNameFilter = "UserFirmware",
                    .configurationElements = true,
                    .disableCustomElements = true,
                    .forceUpdate = true,
                    .noDowngrade = true,
                    .unlistedFiles = KvEUnlistedFiles::changed,
                    .disabledElements = {"3", "\u00C4"}};
    plan.archiveFolder = "/archives/release";
    plan.descriptionFileName = "archive.json";
    plan.descriptionDigest = std::string(64, 'a');
    plan.files = {{"one.kfw", 12, std::string(64, 'b')}, {"two.kfw", 1ULL << 40U, std::string(64, 'c')}};
    plan.plan = samplePlan();
    plan.plan.configurationElements = true;
    plan.plan.nodeSerialNumbers = {2815, 2816};
    plan.plan.release = sampleRelease();
    return plan;
}
