#include "SampleValues.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

// The documents as a whole, compared byte for byte with the files of expected/. The schemas are held against the same
// files (test_schemas.py). With KV_UPDATE_DOCUMENTS=1 the files are written anew: read every line of the difference.

namespace {

using namespace KvNReflasher;

struct DocumentRow {
    /// Name of the file, which begins with that of the schema.
    const char* name;
    std::string (*document)();
};

const KvTVerdict success;
const KvTVerdict noTarget = {.failure = KvEFailure::target, .message = "The target system is inaccessible!"};
const KvTVerdict noSupport = {.failure = KvEFailure::unsupported, .message = "No entry for \"I/O router\"."};

KvTArchiveContent refusedContent() {
    KvTArchiveContent content = sampleContent();
    content.verdict = {.failure = KvEFailure::archive, .message = "Failed to read firmware archive."};
    return content;
}

KvTMatrixTarget plannedTarget() {
    return {.folder = "racks/one", .address = "127.0.0.1", .verdict = success, .plan = samplePlan()};
}

KvTMatrixTarget failedTarget() {
    return {.folder = "racks/two", .address = "", .verdict = noTarget, .plan = std::nullopt};
}

std::string plan() {
    return planDocument(std::make_unique<KvTPlan>(samplePlan()).get(), sampleContent().entries, noSupport);
}

/// In the modes without an archive.
std::string elements() {
    KvTPlan plan = samplePlan();
    for (KvTPlannedElement& element : plan.elements) {
        element.entry.reset();
        element.decision = {};
        element.phase.reset();
    }
    return elementsDocument(&plan, success);
}

std::string explain() {
    return explainDocument(std::make_unique<KvTPlan>(samplePlan()).get(), sampleExplanations(), sampleHiddenElements(),
                           success);
}

std::string report(const std::string& command, bool isVerified) {
    const KvTPlan plan = samplePlan();
    const KvTOutcome outcome = sampleOutcome();
    const KvTVerification verification = sampleVerification();
    const std::vector<KvTArchiveEntry> entries = sampleContent().entries;
    const KvTVerdict verdict = {.failure = KvEFailure::elements, .message = "An element failed."};
    return reportDocument({.verdict = verdict,
                           .plan = &plan,
                           .outcome = &outcome,
                           .verification = isVerified ? &verification : nullptr,
                           .entries = &entries},
                          sampleFacts(command, 1));
}

std::string reportWithoutPlan() {
    const KvTOutcome outcome;
    return reportDocument({.verdict = noTarget, .outcome = &outcome}, sampleFacts("update", 4));
}

const std::vector<DocumentRow>& documentRows() {
    static const std::vector<DocumentRow> all = {
        {"content", [] { return contentDocument(sampleContent(), success); }},
        {"content.refused", [] { return contentDocument(refusedContent(), refusedContent().verdict); }},
        {"check", [] { return checkDocument(sampleFindings(), "archive/archive.json", refusedContent().verdict); }},
        {"check.nothing", [] { return checkDocument({}, "archive/archive.json", success); }},
        {"elements", elements},
        {"elements.no-plan", [] { return elementsDocument(nullptr, noTarget); }},
        {"plan", plan},
        {"plan.no-plan", [] { return planDocument(nullptr, sampleContent().entries, noTarget); }},
        {"explain", explain},
        {"explain.no-plan", [] { return explainDocument(nullptr, {}, {}, noTarget); }},
        {"matrix",
         [] {
             return matrixDocument(sampleContent(), {plannedTarget(), failedTarget()}, noTarget);
         }},
        {"matrix.refused", [] { return matrixDocument(refusedContent(), {}, refusedContent().verdict); }},
        {"report.plan", [] { return report("plan", false); }},
        {"report.update", [] { return report("update", true); }},
        {"report.no-plan", reportWithoutPlan}};
    return all;
}

std::string pathOf(const DocumentRow& row) {
    return std::string(KV_EXPECTED_DOCUMENTS) + "/" + row.name + ".json";
}

std::string expectedDocument(const DocumentRow& row) {
    std::ifstream file(pathOf(row), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(WholeDocuments, AreThoseOfTheExpectedFiles) {
    const bool isUpdate = std::getenv("KV_UPDATE_DOCUMENTS") != nullptr;
    for (const DocumentRow& row : documentRows()) {
        if (isUpdate) {
            std::ofstream(pathOf(row), std::ios::binary) << row.document();
        }
        EXPECT_EQ(expectedDocument(row), row.document()) << row.name;
    }
}

} // namespace
