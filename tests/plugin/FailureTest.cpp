// Services that are missing, calls that fail, people who cancel: each ends with its code and its words,
// nothing is left held, and the next run works.
#include "engine/image/FixedPoint.h"
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/NightDocument.h"

#include <algorithm>
#include <climits>
#include <windows.h>

namespace {

using host::PlaneCounts;

class Failing : public ModuleFixture {
protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        before = MakeNight({.width = 150, .height = 110, .hasTransparency = true, .lights = 4});
        before.mask.assign(150 * 110, 255);
        filterHost.settings.tileWidth = filterHost.settings.tileHeight = 64;
        parameters.threshold = 90;
        expected = FilteredNight(before, parameters);
    }

    // A run with the failures that the settings ask for, on a host of its own.
    host::RunResult RunOnce() {
        boxes.clear();
        filterHost.document = before;
        filterHost.script = ScriptOf(parameters);
        return Run();
    }

    // What must hold after a run, whatever its outcome: the picture is whole or as before, and the run after
    // it works.
    void ExpectRecovery(const host::RunResult &result) {
        // What Finish cannot record costs nothing of the finished picture.
        const bool isDone = result.code == kNoError || result.failedSelector == kSelectorFinish;
        EXPECT_EQ(DifferentSamples(filterHost.document, isDone ? expected : before), 0);
        ExpectCleanHost();
        host::CloseHost(filterHost);
        filterHost.settings.failures.clear();
        filterHost.settings.absent.clear();
        EXPECT_EQ(RunOnce().code, kNoError);
        EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
        ExpectCleanHost();
        host::CloseHost(filterHost);
    }

    host::Document before, expected;
    ParameterSet parameters = kDefaultParameters;
};

} // namespace

TEST_F(Failing, EveryMissingServiceIsACodeOrNoMatter) {
    struct Case {
        std::vector<const char *> services;
        int16_t code;
        bool losesScript;
        size_t boxes = 0;
    };
    const Case cases[] = {
        {{"newProc", "lockProc"}, kMemFullErr, false},
        {{"handleProcs"}, kErrPlugInHostInsufficient, false},
        {{"advanceState"}, kErrPlugInHostInsufficient, false, 1},
        {{"descriptorParameters", "readDescriptorProcs", "openReadDescriptorProc", "getKeyProc",
          "closeReadDescriptorProc"},
         kNoError,
         true},
        {{"writeDescriptorProcs", "openWriteDescriptorProc", "closeWriteDescriptorProc", "putUnitFloatProc",
          "putIntegerProc", "putBooleanProc", "putEnumeratedProc", "unlockProc", "getSizeProc", "disposeProc",
          "propertyProcs", "setPropertyProc", "sSPBasic", "AcquireSuite", "bigDocumentData", "platformData",
          "errorString", "abortProc", "progressProc"},
         kNoError,
         false}};
    int dialogs = 0;
    const host::Document unscripted = FilteredNight(before, kDefaultParameters);
    for (const Case &c : cases)
        for (const std::string service : c.services) {
            SCOPED_TRACE(service);
            DeleteFileA(SettingsFile().c_str()); // without a script a run starts from the defaults
            filterHost.registry = {};
            filterHost.settings.absent = {service};
            EXPECT_EQ(RunOnce().code, c.code);
            EXPECT_EQ(boxes.size(), c.boxes);
            EXPECT_EQ(DifferentSamples(filterHost.document, c.code          ? before
                                                            : c.losesScript ? unscripted
                                                                            : expected),
                      0);
            dialogs += c.losesScript;
            EXPECT_EQ(MainDialogs(), dialogs);
            host::CloseHost(filterHost);
        }
}

TEST_F(Failing, ReadAndWriteErrorsAreReported) {
    struct Case {
        int64_t nth;
        int16_t code;
        const char *text; // null: silent
    };
    const Case cases[] = {{1, kMemFullErr, "Could not read input image."},
                          {13, kParamErr, "Could not read input image."},
                          {2, kUserCanceledErr, "Could not read input image."},
                          {25, kMemFullErr, "Could not write results back to editor."},
                          {26, kFilterBadParameters, "Could not write results back to editor."},
                          {25, kUserCanceledErr, nullptr}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.nth);
        filterHost.settings.failures["advanceState"] = {.nth = c.nth, .code = c.code};
        const host::RunResult result = RunOnce();
        EXPECT_EQ(result.code, c.code);
        EXPECT_EQ(result.failedSelector, kSelectorStart);
        EXPECT_EQ(boxes.size(), c.text ? 1u : 0u);
        if (c.text && !boxes.empty()) {
            EXPECT_EQ(boxes[0].text, c.text);
            EXPECT_EQ(boxes[0].title, "Error - Exiting Plugin");
            EXPECT_EQ(boxes[0].style, 16u | MB_SETFOREGROUND);
        }
        if (&c == cases) {
            EXPECT_NE(LogText().find("Line 360: User Message: 'Error - Exiting Plugin' - 'Could not read"),
                      std::string::npos);
        }
        ExpectRecovery(result);
    }
}

TEST_F(Failing, SenselessAndHugeFilterRectanglesAreAnError) {
    const host::Rectangle cases[] = {{0, 0, 0, 0},
                                     {10, 10, 10, 50},
                                     {50, 10, 10, 50},
                                     {0, 90, 50, 3},
                                     {INT_MIN, 0, INT_MAX, 10},
                                     {0, 0, INT_MAX, INT_MAX},
                                     {-5, INT_MAX - 1, 5, INT_MAX},
                                     {0, 0, 16000000, 16000000}};
    for (const host::Rectangle &area : cases) {
        SCOPED_TRACE(&area - cases);
        const bool isHuge = area.bottom == 16000000; // and no memory holds it
        filterHost.settings.filterRect = area;
        const host::RunResult result = RunOnce();
        EXPECT_EQ(result.code, isHuge ? kMemFullErr : kFilterBadParameters);
        if (isHuge) {
            ASSERT_EQ(boxes.size(), 1u);
            EXPECT_EQ(boxes[0].text, "Could not allocate memory for an image.");
            EXPECT_EQ(boxes[0].title, "Error - Exiting Plugin");
        }
        filterHost.settings.filterRect.reset();
        ExpectRecovery(result);
    }
}

// abortProc is asked after each output tile: the tile is finished, the next one is not begun.
TEST_F(Failing, CancellingStopsAfterTheCurrentTile) {
    before = host::MakeDocument(4096, 4, 8, 1, false);
    expected = FilteredNight(before, parameters);
    filterHost.settings.cancelAtAbortCall = 1;
    const host::RunResult result = RunOnce();
    EXPECT_EQ(result.code, kUserCanceledErr);
    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(filterHost.log.calls["abortProc"], 1);
    const auto written =
        std::count_if(filterHost.log.advances.begin(), filterHost.log.advances.end(),
                      [](const host::AdvanceCall &call) { return !host::IsEmpty(call.out); });
    EXPECT_EQ(written, 1);
    filterHost.settings.cancelAtAbortCall = 0;
    ExpectRecovery(result);
}
