// Scripting: what a descriptor changes, what the user is told about a bad one, and what is recorded.
#include "tests/plugin/ModuleFixture.h"
#include "tests/support/ParameterKeys.h"

#include <windows.h>

namespace {

using host::MissingKeys;

constexpr char kTitle[] = "Invalid Script Specified";

class Script : public ModuleFixture {
protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        filterHost.settings.missingKeys = MissingKeys::kNeverReported;
    }
    host::RunResult RunScript(const host::Descriptor &script) {
        filterHost.script = script;
        return Run();
    }
};

ParameterSet EveryFieldChanged() {
    ParameterSet set = ChangedParameters();
    set.outputSpikesOnly = 1;
    return set;
}

} // namespace

TEST_F(Script, EveryKeyReachesItsFieldInAnyOrderAndIsRecorded) {
    for (const uint32_t seed : {0u, 1u, 2u})
        for (const bool ownType : {false, true}) {
            filterHost.settings.shuffleSeed = seed;
            filterHost.settings.enumerationsGiveTheirOwnType = ownType;
            filterHost.registry.clear(); // or the run before would have set the fields
            EXPECT_EQ(RunScript(ScriptOf(EveryFieldChanged())).code, kNoError);
            EXPECT_EQ(SetInHandle(), EveryFieldChanged());
        }
    ASSERT_TRUE(filterHost.recorded);
    EXPECT_TRUE(*filterHost.recorded == ScriptOf(EveryFieldChanged())) << "keys, types, units, order";
    filterHost.registry.clear();
    filterHost.settings.missingKeys = MissingKeys::kReported;
    EXPECT_EQ(RunScript(*filterHost.recorded).code, kNoError);
    EXPECT_EQ(SetInHandle(), EveryFieldChanged());
    EXPECT_TRUE(boxes.empty());
    ExpectCleanHost();
}

// The dialog is asked for by the dialog-pending byte, or else by the script.
TEST_F(Script, PlayInfoDecidesAboutTheDialog) {
    for (const int16_t playInfo : {kPlayDontDisplay, kPlayDisplay, kPlaySilent}) {
        filterHost.settings.playInfo = playInfo;
        EXPECT_EQ(RunScript(ScriptOf(EveryFieldChanged())).code, kNoError);
        EXPECT_EQ(DialogPendingByte(), playInfo == kPlayDisplay ? 0 : 1); // cleared only after the dialog
    }
    filterHost.script.reset();
    EXPECT_EQ(Run().code, kNoError);
    EXPECT_EQ(DialogPendingByte(), 0);
}

// Hosts tell of missing keys by either code.
TEST_F(Script, MissingKeysAreAWarningAndThenTheDialog) {
    filterHost.settings.missingKeys = MissingKeys::kReported;
    for (const bool generalCode : {false, true}) {
        SCOPED_TRACE(generalCode);
        boxes.clear();
        if (generalCode)
            filterHost.settings.closeReadResult = kParamErr;
        EXPECT_EQ(RunScript({{host::UnitFloatValue(kKeyAngle, kUnitAngle, 22.46)}}).code, kNoError);
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].title, kTitle);
        EXPECT_EQ(boxes[0].text,
                  "The Photoshop Script you specified is not compatible with this version of Brillatrix "
                  "Pro. Some settings have been set to their default values.");
        EXPECT_EQ(boxes[0].style, 48u | MB_SETFOREGROUND);
        EXPECT_EQ(SetInHandle(), kDefaultParameters);
        EXPECT_EQ(DialogPendingByte(), 0); // the dialog was run
    }
    EXPECT_NE(LogText().find("Line 185: User Message: 'Invalid Script Specified' - 'The Photoshop Script"),
              std::string::npos);
    ExpectCleanHost();
}

TEST_F(Script, OtherVerdictsEndTheRun) {
    struct Case {
        int16_t verdict;
        const char *text;
        const char *line;
    };
    const Case cases[] = {
        {kParamErr,
         "The Photoshop Script you specified is not compatible with this version of Brillatrix "
         "Pro and will not be used.",
         "Line 198"},
        {kMemFullErr, "A fatal error occurred while reading the script parameters.", "Line 212"},
        {2, "A fatal error occurred while reading the script parameters.", "Line 212"}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.verdict);
        boxes.clear();
        filterHost.settings.closeReadResult = c.verdict;
        host::Descriptor script = ScriptOf(EveryFieldChanged());
        if (c.verdict == kParamErr)
            host::PutValue(script, host::IntegerValue(kKeyLength, 3)); // of a type that does not fit
        const host::RunResult result = RunScript(script);
        EXPECT_EQ(result.code, c.verdict);
        EXPECT_EQ(result.failedSelector, kSelectorStart);
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].title, kTitle);
        EXPECT_EQ(boxes[0].text, c.text);
        EXPECT_EQ(boxes[0].style, 16u | MB_SETFOREGROUND);
        EXPECT_EQ(SetInHandle(), kDefaultParameters);
        EXPECT_TRUE(filterHost.log.advances.empty());
        if (&c == cases) { // the log ends with the first failed run
            EXPECT_NE(LogText().find(c.line), std::string::npos);
        }
        ExpectCleanHost();
    }
    filterHost.settings.closeReadResult.reset();
    EXPECT_EQ(RunScript(ScriptOf(EveryFieldChanged())).code, kNoError);
    EXPECT_EQ(SetInHandle(), EveryFieldChanged());
}

TEST_F(Script, FinishWithoutAWriterFails) {
    filterHost.settings.failures["openWriteDescriptorProc"] = {};
    const host::RunResult result = RunScript(ScriptOf(EveryFieldChanged()));
    EXPECT_EQ(result.code, kErrMissingParameter);
    EXPECT_EQ(result.failedSelector, kSelectorFinish);
    EXPECT_EQ(filterHost.registry.size(), 1u); // kept for the next run all the same
    ExpectCleanHost();
}

TEST_F(Script, AValueThatCannotBeRecordedCostsOnlyItself) {
    filterHost.settings.failures["putUnitFloatProc"] = {.nth = 2};
    EXPECT_EQ(RunScript(ScriptOf(EveryFieldChanged())).code, kNoError);
    host::Descriptor expected = ScriptOf(EveryFieldChanged());
    std::erase_if(expected.values, [](const auto &value) { return value.key == kKeyIntensity; });
    ASSERT_TRUE(filterHost.recorded);
    EXPECT_TRUE(*filterHost.recorded == expected);
    ExpectCleanHost();
}
