#include "KeptMessages.h"
#include "KvCPreparation.h"
#include "RackTest.h"

#include <algorithm>
#include <memory>
#include <string>

using namespace KvNReflasher;

namespace {

/// What a preparation leaves behind for those who ask it directly.
class PreparationTest : public RackTest {
protected:
    PreparationTest() {
        options_.descriptionFileName = L"archive.json";
        options_.target = L"127.0.0.1";
    }

    KvEPrepareStatus prepare(std::uint32_t mode) {
        if (!isServed_) {
            serve();
            isServed_ = true;
        }
        options_.archiveFolder = archive.folder().path().wstring();
        options_.mode = mode;
        preparation_ = std::make_unique<KvCPreparation>(messages_.writer(), options_,
                                                        KvCErrorManager::getInstance()->getMasterErrorList());
        return preparation_->prepare();
    }
    [[nodiscard]] KvCPreparation& preparation() { return *preparation_; }
    [[nodiscard]] bool allElements(bool KvTUpdateElement::*flag) {
        const auto& elements = preparation().inventory().elements();
        return std::all_of(elements.begin(), elements.end(), [flag](const auto& element) { return element.*flag; });
    }
    [[nodiscard]] static bool printed(const std::wstring& text) {
        return KeptMessages::text().find(text) != std::wstring::npos;
    }
    void close() override { preparation_.reset(); }

    KvTOptions options_{};

private:
    KeptMessages messages_;
    std::unique_ptr<KvCPreparation> preparation_;
    bool isServed_ = false;
};

TEST_F(PreparationTest, APlanKnowsTheArchiveTheTargetAndWhatTheyHaveInCommon) {
    addNodeElement(1, completeElement(1, "One"));
    ASSERT_EQ(prepareReady, prepare(showUpdatePlan));
    EXPECT_EQ("127.0.0.1", std::string(preparation().targetAccess().ipAddress().view()));
    EXPECT_EQ(1U, preparation().archive().files().size());
    ASSERT_EQ(1U, preparation().inventory().elements().size());
    EXPECT_EQ(0U, preparation().inventory().elements().front().archiveFileIndex);
    EXPECT_EQ(1U, preparation().planner().phaseCount());
    EXPECT_TRUE(printed(L"Korvel Device Update Tool"));
}

TEST_F(PreparationTest, AnArchiveIsReadWithoutATarget) {
    options_.target.clear();
    ASSERT_EQ(prepareReady, prepare(showArchiveVersion));
    EXPECT_EQ(L"", KeptMessages::text());
    EXPECT_TRUE(preparation().inventory().elements().empty());
}

TEST_F(PreparationTest, ATargetIsScannedWithoutAPlan) {
    addNodeElement(1, completeElement(1, "One"));
    ASSERT_EQ(prepareReady, prepare(showTargetElements));
    ASSERT_EQ(1U, preparation().inventory().elements().size());
    EXPECT_FALSE(preparation().inventory().elements().front().hasArchiveFile());
    EXPECT_TRUE(preparation().archive().files().empty());
}

TEST_F(PreparationTest, WhatFailsIsToldAndEndsIt) {
    options_.descriptionFileName = L"none.json";
    EXPECT_EQ(prepareFailed, prepare(performUpdate));
    EXPECT_TRUE(printed(L"ERROR: Failed to read firmware archive.\n"));
    options_.descriptionFileName = L"archive.json";
    options_.target = L"127.0.0.9";
    EXPECT_EQ(prepareFailed, prepare(performUpdate));
    EXPECT_TRUE(printed(L"ERROR: The target system is inaccessible!\n"));
    options_.target.clear();
    EXPECT_EQ(prepareFailed, prepare(connectOnly));
    EXPECT_TRUE(printed(L"ERROR: No IP address or hostname specified!\n"));
}

TEST_F(PreparationTest, AnUnsupportedTargetHasAllElementsDisabledWhenItIsToBeUpdated) {
    addNodeElement(1, completeElement(1, "One"));
    node.element(completeElement(2, "Two"));
    EXPECT_EQ(prepareReady, prepare(showUpdatePlan));
    EXPECT_FALSE(allElements(&KvTUpdateElement::disabled));
    EXPECT_EQ(prepareTargetNotSupported, prepare(performUpdate));
    EXPECT_TRUE(allElements(&KvTUpdateElement::disabled));
    EXPECT_TRUE(printed(L"ERROR: The target system is not supported by this firmware archive.\n"));
}

TEST_F(PreparationTest, ThePlanNamesTheElementsThatDecideThatATargetIsNotSupported) {
    node.element(completeElement(1, "One"));
    addNodeElement(2, completeElement(2, "Two"));
    node.element(completeElement(3, "Three"));
    node.element(completeFile(4, "a.cfg"));
    boards.push_back(completeBoard("IOMODULE", "IO", 0).element(completeElement(1, "Four")));
    EXPECT_EQ(prepareTargetNotSupported, prepare(performUpdate));
    ASSERT_TRUE(preparation().plan().has_value());
    EXPECT_FALSE(preparation().plan()->supported);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 2}), preparation().plan()->unsupportedElements);
    EXPECT_EQ(KvEFailure::unsupported, preparation().verdict().failure);
    EXPECT_EQ(KvEStage::targetScanned, preparation().stage());
    // A plan is shown all the same.
    EXPECT_EQ(prepareReady, prepare(showUpdatePlan));
    EXPECT_FALSE(preparation().plan()->supported);
    EXPECT_EQ(KvEStage::prepared, preparation().stage());
}

TEST_F(PreparationTest, AnElementIsDisabledInThePlanToo) {
    addNodeElement(1, completeElement(1, "One"));
    ASSERT_EQ(prepareReady, prepare(performUpdate));
    preparation().disableElement(1);
    EXPECT_FALSE(preparation().plan()->elements[0].disabled);
    preparation().disableElement(0);
    EXPECT_TRUE(preparation().plan()->elements[0].disabled);
    EXPECT_TRUE(allElements(&KvTUpdateElement::disabled));
}

TEST_F(PreparationTest, WhatWasFoundCanBeForgotten) {
    addNodeElement(1, completeElement(1, "One"));
    ASSERT_EQ(prepareReady, prepare(performUpdate));
    preparation().forgetTarget();
    EXPECT_FALSE(preparation().plan().has_value());
    EXPECT_TRUE(preparation().inventory().elements().empty());
    EXPECT_EQ(nullptr, preparation().inventory().systemAddress());
    EXPECT_EQ(1U, preparation().archive().files().size());
}

} // namespace
