// The entry and its six selectors: handles, result word, memory budget, teardown.
#include "tests/plugin/ModuleFixture.h"

#include <algorithm>
#include <cstring>
#include <windows.h>

namespace {

class SelectorCall : public ModuleFixture {
protected:
    int16_t Call(int16_t selector) { return host::CallSelector(filterHost, selector); }
    void Plant(const std::vector<uint8_t> &parameters, const std::vector<uint8_t> &data) {
        host::BeginRun(filterHost);
        host::Record(filterHost).parameters =
            parameters.empty() ? nullptr : host::PlantHandle(filterHost, parameters);
        host::PlantDataWord(
            filterHost, data.empty() ? 0 : reinterpret_cast<intptr_t>(host::PlantHandle(filterHost, data)));
    }
    // Prepare with the document's own handles; returns maxSpace.
    int32_t BudgetOf(int32_t width, int32_t height, int32_t planes, bool hasMask, int32_t maxSpace) {
        filterHost.settings.maxSpace = maxSpace;
        filterHost.settings.filterRect = host::Rectangle{0, 0, width, height};
        filterHost.settings.adjustRecord = [=, this](int16_t, FilterRecord &record) {
            record.planes = static_cast<int16_t>(planes);
            record.maskData = hasMask ? this : nullptr;
            record.bufferSpace = 77;
        };
        Open();
        EXPECT_EQ(Call(kSelectorPrepare), kNoError);
        EXPECT_EQ(host::Record(filterHost).bufferSpace, 0);
        const int32_t budget = host::Record(filterHost).maxSpace;
        Call(kSelectorFinish);
        host::CloseHost(filterHost);
        return budget;
    }
};

} // namespace

// Handles of the right size are taken over: Parameters resets their contents, Prepare leaves them. Bytes
// saved by another version come back as handles of their own length, and are replaced; Start and Finish
// refuse them.
TEST_F(SelectorCall, HandlesOfTheRightSizeAreKeptAndOthersReplaced) {
    const auto bytes = [](size_t size) { return std::vector<uint8_t>(size, 0x7E); };
    for (const size_t size : {40, 8, 39}) {
        SCOPED_TRACE(size);
        const bool isGood = size == 40;
        Open();
        Plant(bytes(size), bytes(1));
        const HostHandle parameters = host::Record(filterHost).parameters;
        if (!isGood) {
            EXPECT_EQ(Call(kSelectorStart), kFilterBadParameters);
            EXPECT_EQ(Call(kSelectorFinish), kFilterBadParameters);
            EXPECT_TRUE(filterHost.log.advances.empty());
        }
        ASSERT_EQ(Call(kSelectorPrepare), kNoError);
        if (isGood) {
            EXPECT_EQ(host::HandleBytes(filterHost, parameters), bytes(40));
            EXPECT_EQ(DialogPendingByte(), 0x7E);
            ASSERT_EQ(Call(kSelectorParameters), kNoError);
            EXPECT_EQ(host::Record(filterHost).parameters, parameters);
        }
        EXPECT_EQ(SetInHandle(), kDefaultParameters);
        EXPECT_EQ(DialogPendingByte(), 1);
        EXPECT_EQ(host::CountLive(filterHost).handles, 2);
        EXPECT_EQ(Call(kSelectorFinish), kNoError);
        ExpectCleanHost();
        host::CloseHost(filterHost);
    }
}

TEST_F(SelectorCall, BudgetIsTwoCopiesOfATile) {
    EXPECT_EQ(BudgetOf(100, 100, 3, true, INT32_MAX), 80000);
    EXPECT_EQ(BudgetOf(100, 100, 3, false, INT32_MAX), 60000);
    EXPECT_EQ(BudgetOf(5000, 5000, 4, false, INT32_MAX), 2 * 4 * 1024 * 1024);
    EXPECT_EQ(BudgetOf(2000, 10, 1, false, INT32_MAX), 2 * 1024 * 10);
    EXPECT_EQ(BudgetOf(100, 100, 3, false, 59999), 59999);                // only ever lowered
    EXPECT_EQ(BudgetOf(100, 100, 3, false, 0), 0);                        // no hint
    EXPECT_EQ(BudgetOf(100, 100, 3, false, -5), -5);                      // nor is this
    EXPECT_EQ(BudgetOf(30000, 30000, 32767, true, INT32_MAX), INT32_MAX); // 2^36 bytes
    EXPECT_EQ(BudgetOf(0, 100, 3, false, 1000), 1000);                    // an area that is not known yet
    EXPECT_EQ(BudgetOf(100, 100, -1, false, 1000), 1000);
    filterHost.settings.absent = {"bigDocumentData"};
    EXPECT_EQ(BudgetOf(100, 100, 3, false, INT32_MAX), 60000);
}

TEST_F(SelectorCall, EverySelectorButAboutClaims32BitCoordinatesAndUnknownOnesDoNothing) {
    Open();
    for (const int16_t selector : {int16_t{6}, int16_t{100}, int16_t{-1}})
        EXPECT_EQ(Call(selector), kNoError);
    EXPECT_EQ(host::CountLive(filterHost).handles, 0);
    EXPECT_TRUE(filterHost.log.suites.empty());
    for (int16_t selector = kSelectorParameters; selector <= kSelectorFinish; ++selector) {
        host::BigDocument(filterHost).PluginUsing32BitCoordinates = 0; // the host keeps it between calls
        Call(selector);
        EXPECT_EQ(host::BigDocument(filterHost).PluginUsing32BitCoordinates, 1) << selector;
    }
}

TEST_F(SelectorCall, NullArgumentsAreAnErrorAndNoCrash) {
    for (int16_t selector = kSelectorParameters; selector <= kSelectorFinish; ++selector) {
        int16_t result = 99;
        intptr_t data = 0;
        module.entry(selector, nullptr, &data, &result);
        EXPECT_EQ(result, kFilterBadParameters) << selector;
        FilterRecord empty = {};
        result = 99;
        module.entry(selector, &empty, nullptr, &result);
        const int16_t results[] = {kErrPlugInHostInsufficient, kErrPlugInHostInsufficient,
                                   kFilterBadParameters, kNoError, kFilterBadParameters};
        EXPECT_EQ(result, results[selector - 1]) << selector;
    }
    int16_t result = 99;
    module.entry(kSelectorAbout, nullptr, nullptr, &result);
    EXPECT_EQ(result, kNoError);
    EXPECT_EQ(Held().comInitializations, 0);
}

TEST_F(SelectorCall, AboutShowsTheProductAndItsVersion) {
    Open();
    EXPECT_EQ(host::CallAbout(filterHost), kNoError);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].isDialog);
    EXPECT_EQ(boxes[0].dialogName, "#191");
    EXPECT_TRUE(boxes[0].text.starts_with("Brillatrix Pro\nVersion 1.0.0.0\nNexorvanta Software\n"))
        << boxes[0].text;
    ExpectCleanHost();
    EXPECT_EQ(Run().code, kNoError); // the section is back, and the log
    EXPECT_TRUE(LogText().ends_with(".\n") && LogText().find("Log opened", 100) != std::string::npos)
        << LogText();
    ExpectCleanHost();
}

TEST_F(SelectorCall, PrepareNeedsCom) {
    SetComResult(E_OUTOFMEMORY);
    Open();
    EXPECT_EQ(Call(kSelectorParameters), kNoError);
    EXPECT_EQ(Call(kSelectorPrepare), kMemFullErr);
    ExpectCleanHost();
    EXPECT_EQ(host::CallAbout(filterHost), kNoError);
    SetComResult(S_OK);
    EXPECT_EQ(Run().code, kNoError);
    ExpectCleanHost();
}

// A host may end a run after Parameters; the suites held then serve the next run.
TEST_F(SelectorCall, SuitesAreTakenOnceAndReleasedErrorSuiteFirst) {
    Open();
    for (const int16_t selector :
         {kSelectorParameters, kSelectorParameters, kSelectorPrepare, kSelectorPrepare})
        EXPECT_EQ(Call(selector), kNoError);
    EXPECT_EQ(host::CountLive(filterHost).suites, 2);
    EXPECT_EQ(Held().comInitializations, 1);
    EXPECT_EQ(Call(kSelectorFinish), kNoError);
    ExpectCleanHost();
    std::vector<std::string> held = filterHost.log.suites;
    std::erase_if(held, [](const std::string &name) { return name.find("Plug-ins") == std::string::npos; });
    EXPECT_EQ(held, (std::vector<std::string>{"+Photoshop Property Suite for Plug-ins/1",
                                              "+Photoshop Error Suite for Plug-ins/1",
                                              "-Photoshop Error Suite for Plug-ins/1",
                                              "-Photoshop Property Suite for Plug-ins/1"}));
    Call(kSelectorParameters);
    static decltype(SPBasicSuite::AcquireSuite) acquire;
    static SPBasicSuite another; // host's
    filterHost.settings.adjustRecord = [](int16_t, FilterRecord &record) {
        acquire = record.sSPBasic->AcquireSuite, another = *record.sSPBasic, record.sSPBasic = &another;
        another.AcquireSuite = [](const char *name, int32_t version, const void **suite) {
            return acquire(name, version, suite);
        };
    };
    Call(kSelectorParameters);
    EXPECT_EQ(host::CountLive(filterHost).suites, 4) << "one host's suites serve another";
}

// The log stays open until no thread is inside the section any more.
TEST_F(SelectorCall, TeardownFollowsAFailureAndFinish) {
    EXPECT_EQ(Run().code, kNoError);
    EXPECT_EQ(Held().sections, 0);
    EXPECT_NE(LogText().find("Log closed"), std::string::npos);
    EXPECT_EQ(filterHost.log.propertiesSet,
              (std::vector<std::pair<uint32_t, intptr_t>>{{kPropWatchSuspension, 1}}));
    const TeardownOrder order = LastTeardown();
    EXPECT_GT(order.enteredSection, 0);
    EXPECT_LT(order.enteredSection, order.closedHandle);
    EXPECT_LT(order.closedHandle, order.deletedSection);
    EXPECT_EQ(Call(kSelectorPrepare), kNoError);
    EXPECT_EQ(Held().sections, 1); // made anew
    filterHost.settings.failures["advanceState"] = {.nth = 1, .andLater = true, .code = kMemFullErr};
    host::ClearLog(filterHost);
    EXPECT_EQ(Call(kSelectorStart), kMemFullErr);
    EXPECT_EQ(Held().sections, 0);
    ExpectCleanHost();
}

// About takes the section away between two calls, so any call may be the one that cannot make it. The first
// call still makes the folders and the log.
TEST_F(SelectorCall, ARefusedCriticalSectionIsAMemoryErrorThatHoldsNothing) {
    Open();
    RefuseCriticalSections(true);
    EXPECT_EQ(Call(kSelectorParameters), kMemFullErr);
    EXPECT_NE(LogText().find("Line 139: System Error"), std::string::npos);
    EXPECT_NE(LogText().find("Log closed"), std::string::npos);
    RefuseCriticalSections(false);
    ASSERT_EQ(Call(kSelectorParameters), kNoError);
    ASSERT_EQ(Call(kSelectorPrepare), kNoError);
    ASSERT_EQ(host::CallAbout(filterHost), kNoError);
    boxes.clear();
    RefuseCriticalSections(true);
    EXPECT_EQ(Call(kSelectorStart), kMemFullErr);
    ExpectCleanHost();
    EXPECT_EQ(host::CallAbout(filterHost), kMemFullErr);
    EXPECT_EQ(Run().code, kMemFullErr);
    EXPECT_TRUE(boxes.empty());
    EXPECT_TRUE(filterHost.log.advances.empty());
    RefuseCriticalSections(false);
    EXPECT_EQ(Run().code, kNoError);
    ExpectCleanHost();
}

TEST_F(SelectorCall, FirstCallMakesFoldersAndOneLog) {
    Open();
    EXPECT_EQ(Call(kSelectorParameters), kNoError);
    for (const char *name : {"Settings", "Parameters", "Logs"})
        EXPECT_TRUE(Exists(folder / ("user\\Nexorvanta\\Brillatrix\\" + std::string(name)))) << name;
    EXPECT_EQ(LogText().rfind("Brillatrix Pro version 1.0.0.0 (64 bit Release) Log opened on ", 0), 0u)
        << LogText();
    EXPECT_EQ(Run().code, kNoError);
    const size_t firstRun = LogText().size();
    EXPECT_EQ(Run().code, kNoError);
    EXPECT_EQ(LogText().find("Brillatrix Pro version", firstRun), firstRun); // each run is logged
    EXPECT_FALSE(Exists(folder / "user\\Nexorvanta\\Brillatrix\\Logs\\Brillatrix Pro_01.log"));
}
