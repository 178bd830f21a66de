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

TEST_F(Script, FinishWithoutAWriterFails) {
    filterHost.settings.failures["openWriteDescriptorProc"] = {};
    const host::RunResult result = RunScript(ScriptOf(EveryFieldChanged()));
    EXPECT_EQ(result.code, kErrMissingParameter);
    EXPECT_EQ(result.failedSelector, kSelectorFinish);
    EXPECT_EQ(filterHost.registry.size(), 1u); // kept for the next run all the same
    ExpectCleanHost();
}

