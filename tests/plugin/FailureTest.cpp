// Services that are missing, calls that fail at any point, memory that runs out, people who cancel: each ends
// with a code, nothing is left held, and the next run works.
#include "engine/image/FixedPoint.h"
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/NightDocument.h"

#include <algorithm>
#include <climits>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
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

// Calls whose failure the host itself sees as something left behind, which no filter can mend.
bool IsGivingBack(const std::string &call) {
    return call == "ReleaseSuite" || call == "disposeProc" || call == "unlockProc" || call == "Action.Free" ||
           call == "closeReadDescriptorProc" || call == "closeWriteDescriptorProc";
}

// How a procedure of the host breaks down: in each of the three ways in turn, from its n-th call on, before
// or after it has done its work.
int64_t gBreakAt, gBreakCalls;
int gWayToBreak;

void BreakDown() {
    if (++gBreakCalls < gBreakAt)
        return;
    if (gWayToBreak == 0)
        throw std::runtime_error("the host's own");
    if (gWayToBreak == 1)
        RaiseException(0xE06D7363, 0, 0, nullptr); // as another compiler throws
    *static_cast<volatile int *>(nullptr) = 0;
}

template <bool after = false, auto tag = [] {}, typename Answer, typename... Arguments>
auto Breaking(Answer (*procedure)(Arguments...)) {
    static Answer (*original)(Arguments...);
    constexpr auto broken = +[](Arguments... arguments) -> Answer {
        struct AfterIt {
            ~AfterIt() noexcept(false) {
                if (after)
                    BreakDown();
            }
        } afterIt;
        if (!after)
            BreakDown();
        return original(arguments...);
    };
    if (procedure != broken)
        original = procedure;
    return broken;
}

} // namespace

// What was running is ended, what was taken is given back, and the run after it is a normal one.
TEST_F(Failing, ACallOfTheHostMayThrowOrRaise) {
    const std::pair<const char *, void (*)(FilterRecord &)> cases[] = {
        {"progress", [](FilterRecord &r) { r.progressProc = Breaking(r.progressProc); }},
        {"advance", [](FilterRecord &r) { r.advanceState = Breaking(r.advanceState); }},
        {"lock", [](FilterRecord &r) { r.handleProcs->lockProc = Breaking(r.handleProcs->lockProc); }},
        {"release",
         [](FilterRecord &r) { r.sSPBasic->ReleaseSuite = Breaking<true>(r.sSPBasic->ReleaseSuite); }},
        {"read key",
         [](FilterRecord &r) {
             ReadDescriptorProcs *procs = r.descriptorParameters->readDescriptorProcs;
             procs->getKeyProc = Breaking(procs->getKeyProc);
         }},
        {"write value", [](FilterRecord &r) {
             WriteDescriptorProcs *procs = r.descriptorParameters->writeDescriptorProcs;
             procs->putUnitFloatProc = Breaking(procs->putUnitFloatProc);
         }}};
    before = MakeNight({.width = 4100, .height = 40, .lights = 4}); // a tile is drawn while one is written
    expected = FilteredNight(before, parameters);
    std::optional<HeldObjects> held; // after the first: the run-time library keeps what its first catch takes
    gWayToBreak = -1;
    for (const auto &[name, meddle] : cases)
        for (gBreakAt = 1; gBreakAt <= 5; gBreakAt += 2) {
            SCOPED_TRACE(::testing::Message() << name << " at call " << gBreakAt);
            gBreakCalls = 0;
            gWayToBreak = (gWayToBreak + 1) % 3;
            filterHost.settings.adjustRecord = [&](int16_t, FilterRecord &record) { meddle(record); };
            const host::RunResult result = RunOnce();
            EXPECT_EQ(result.code != kNoError, gBreakCalls >= gBreakAt);
            filterHost.settings.adjustRecord = nullptr;
            ExpectRecovery(result);
            EXPECT_EQ(Held(), held = held.value_or(Held()));
        }
}

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

// Each call that a good run makes is made to fail, the first time, the second time and so on.
TEST_F(Failing, EveryCallMayFailAtAnyTime) {
    EXPECT_EQ(RunOnce().code, kNoError);
    const std::map<std::string, int64_t> calls = filterHost.log.calls;
    ExpectRecovery({});
    for (const auto &[name, count] : calls)
        for (int64_t nth = 1; nth <= std::min<int64_t>(count, 4); ++nth) {
            SCOPED_TRACE(name + " fails at call " + std::to_string(nth));
            filterHost.settings.failures = {{name, {.nth = nth, .code = kMemFullErr}}};
            const host::RunResult result = RunOnce();
            if (IsGivingBack(name))
                filterHost.log.violations.clear();
            // A record that was not kept or read changes the parameters, not the run.
            const bool scriptLost =
                result.code == kNoError && (name.starts_with("get") || name == "openReadDescriptorProc");
            if (scriptLost)
                filterHost.document = expected;
            if (name == "ReleaseSuite" || name == "unlockProc") {
                host::CloseHost(filterHost); // the host's own count is off by one now
                filterHost.settings.failures.clear();
            } else {
                ExpectRecovery(result);
            }
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

// Hosts exist whose advance succeeds without handing out anything, or hands out rows shorter than asked for.
TEST_F(Failing, BuffersThatCannotHoldTheTileAreAnError) {
    struct Meddling {
        const char *what;
        void (*meddle)(FilterRecord &);
    };
    static HostResult (*advance)();
    static void (*meddle)(FilterRecord &);
    static FilterRecord *record;
    const Meddling cases[] = {{"no input", [](FilterRecord &r) { r.inData = nullptr; }},
                              {"short input rows", [](FilterRecord &r) { r.inRowBytes = r.inData ? 20 : 0; }},
                              {"negative input rows", [](FilterRecord &r) { r.inRowBytes = -r.inRowBytes; }},
                              {"short mask rows", [](FilterRecord &r) { r.maskRowBytes = 1; }},
                              {"no output", [](FilterRecord &r) { r.outData = nullptr; }},
                              {"short output rows", [](FilterRecord &r) { r.outRowBytes = 149; }}};
    for (const Meddling &c : cases) {
        SCOPED_TRACE(c.what);
        meddle = c.meddle;
        filterHost.settings.adjustRecord = [](int16_t, FilterRecord &r) {
            record = &r;
            advance = r.advanceState;
            r.advanceState = []() -> HostResult {
                const HostResult result = advance();
                meddle(*record);
                return result;
            };
        };
        const host::RunResult result = RunOnce();
        EXPECT_EQ(result.code, kErrPlugInHostInsufficient);
        EXPECT_EQ(boxes.size(), 1u);
        filterHost.settings.adjustRecord = nullptr;
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

// Memory fails at the n-th allocation, once and from then on, for n = 1, 2, 3 ... until the run gets through.
TEST_F(Failing, MemoryMayRunOutAtAnyAllocation) {
    before = MakeNight({.width = 60, .height = 45, .hasTransparency = true, .lights = 2});
    before.mask.assign(60 * 45, 255);
    expected = FilteredNight(before, parameters);
    std::set<std::string> told;
    for (const bool andLater : {false, true}) {
        int64_t failures = 0;
        for (int64_t n = 1;; n += n < 60 ? 1 : n / 20) {
            SCOPED_TRACE(::testing::Message() << "allocation " << n << (andLater ? " and later" : ""));
            ASSERT_LT(n, 1000000);
            host::CloseHost(filterHost);
            Open();
            FailModuleAllocation(n, andLater);
            const host::RunResult result = RunOnce();
            const bool reached = ModuleAllocations() >= n;
            FailModuleAllocation(0, false);
            for (const host::ShownBox &box : boxes)
                told.insert(box.title + ": " + box.text);
            failures += result.code != kNoError;
            if (result.code == kNoError && !reached)
                break;
            if (result.code != kNoError) {
                EXPECT_EQ(DifferentSamples(filterHost.document, before), 0);
            }
            ExpectCleanHost();
            EXPECT_EQ(RunOnce().code, kNoError);
            EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
        }
        EXPECT_GT(failures, 5);
    }
    EXPECT_EQ(told, (std::set<std::string>{
                        "Error - Exiting Plugin: Could not allocate memory for an image.",
                        "Error - Exiting Plugin: Could not allocate memory for an image mask.",
                        "Warning: Low memory.  Check image - some effects may not be rendered."}));
}
