// Hosts that run COM and threads their own way, refuse threads, or do not know the size of their handles.
#include "engine/image/ImageBuffer.h"
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/NightDocument.h"
#include "tests/support/SystemObjects.h"

#include <windows.h>

namespace {

class OddHost : public ModuleFixture {
protected:
    // A run on a fresh host, on a picture whose lights all are wanted.
    host::RunResult RunOn(const host::Document &document) {
        host::CloseHost(filterHost);
        boxes.clear();
        filterHost.document = document;
        filterHost.script = ScriptOf(kDefaultParameters);
        return Run();
    }
    host::Document night = MakeNight({});
};

} // namespace

TEST_F(OddHost, MayRunComInAnotherMode) {
    SetComResult(RPC_E_CHANGED_MODE); // COM is there, and not ours to end
    EXPECT_EQ(RunOn(night).code, kNoError);
    EXPECT_EQ(host::CallAbout(filterHost), kNoError);
    ExpectCleanHost();
}

// Without the task there is no table, and a dialog would only wait for it.
TEST_F(OddHost, NoDialogOpensWhenTheSearchForLightsCannotStart) {
    FailSystemCall("_beginthreadex", 1, ERROR_NOT_ENOUGH_MEMORY);
    filterHost.settings.playInfo = kPlayDisplay;
    EXPECT_EQ(RunOn(night).code, kErrMissingParameter);
    EXPECT_EQ(MainDialogs(), 0);
    ExpectCleanHost();
}

// A profile is locked like the other handles, four times two of them: also where the host does not know its
// size.
TEST_F(OddHost, AProfileIsUsedUnlessItsHandleIsKnownToBeTooSmall) {
    static int32_t answer;
    static HostHandle profile;
    night.iccProfile.assign(500, 7);
    filterHost.settings.playInfo = kPlayDisplay;
    filterHost.settings.adjustRecord = [](int16_t, FilterRecord &r) {
        profile = r.iCCprofileData;
        r.handleProcs->getSizeProc = [](HostHandle handle) { return handle == profile ? answer : 0; };
    };
    for (const auto &[size, locks] : {std::pair{0, 9}, {-1, 9}, {500, 9}, {499, 8}, {1, 8}}) {
        answer = size;
        EXPECT_EQ(RunOn(night).code, kNoError);
        EXPECT_EQ(filterHost.log.calls["lockProc"], locks) << size;
        EXPECT_EQ(filterHost.log.calls["unlockProc"], locks) << size;
    }
    EXPECT_EQ(MainDialogs(), 5);
}
