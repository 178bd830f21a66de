#include "plugin/Selectors.h"

#include "plugin/FinalRender.h"
#include "plugin/HostServices.h"
#include "plugin/parameters/PersistentBlock.h"
#include "plugin/parameters/ScriptReader.h"
#include "plugin/parameters/ScriptWriter.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/HostHandles.h"
#include "plugin/record/HostRectangles.h"
#include "plugin/record/PluginState.h"
#include "render/KeptRun.h"
#include "ui/about/AboutBox.h"
#include "ui/window/WaitCursor.h"

#include <algorithm>

namespace {

constexpr int64_t kBudgetSide = 1024;

// Some hosts leave maxSpace empty, or give kilobytes: it is a hint that is lowered, never raised and never
// judged. An area that is not known yet says nothing about the need.
void LimitMemoryBudget() {
    const IntRect area = FilterArea();
    const int64_t width = std::min(int64_t{area.right} - area.left, kBudgetSide);
    const int64_t height = std::min(int64_t{area.bottom} - area.top, kBudgetSide);
    const int64_t planes = int64_t{gFilterRecord->planes} + (gFilterRecord->maskData ? 1 : 0);
    gFilterRecord->bufferSpace = 0;
    if (width <= 0 || height <= 0 || planes <= 0)
        return;
    const int64_t budget = 2 * planes * width * height;
    if (gFilterRecord->maxSpace > budget)
        gFilterRecord->maxSpace = static_cast<int32_t>(budget);
}

HostResult Prepare() {
    AcquireHostSuites();
    if (!InitializeCom())
        return kMemFullErr;
    ShowWaitCursor();
    InstallParameterBlockAccessor();
    const HostResult result = HaveBothHandles() ? LockHandles() : SetUpHandles();
    LimitMemoryBudget();
    return result;
}

HostResult Start() {
    ForgetRun();
    if (const HostResult result = LockHandles())
        return result;
    SuspendHostCursor();
    RestorePersistentBlock();
    bool showDialog = true;
    if (const HostResult result = ReadScriptParameters(&showDialog))
        return result;
    if (const HostResult result = HostFailure())
        return result;
    return FilterImage(showDialog);
}

HostResult Finish() {
    ForgetRun();
    if (const HostResult result = LockHandles())
        return result;
    const HostResult result = WriteScriptParameters();
    StorePersistentBlock();
    return result;
}

// No failing selector leaves a service held.
void StoreResult(HostResult result) {
    *gResult = result;
    if (result != kNoError)
        ReleaseRunServices();
}

} // namespace

void HandleAbout() {
    if (!ShowAboutBox(ParentWindow()))
        *gResult = kUserCanceledErr;
}

void HandleParameters() {
    AcquireHostSuites();
    ShowWaitCursor();
    StoreResult(SetUpHandles());
}

void HandlePrepare() {
    StoreResult(Prepare());
}

void HandleStart() {
    const HostResult result = Start();
    RequestNothingInBothForms();
    StoreResult(result);
}

void HandleContinue() {
    RequestNothing();
}

void HandleFinish() {
    *gResult = Finish();
    ReleaseRunServices();
}
