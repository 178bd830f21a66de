// The entry that the host calls for every selector, on its own thread.
#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "diag/ProductName.h"
#include "diag/Log.h"
#include "plugin/HostServices.h"
#include "plugin/Selectors.h"
#include "plugin/record/HostHandles.h"
#include "plugin/record/PluginState.h"
#include "storage/AppFolders.h"

#include <windows.h>

namespace {

bool gFirstCallDone;

void StoreCallRecords(int16_t selector, void *record, intptr_t *data, HostResult *result) {
    gFilterRecord = selector == kSelectorAbout ? nullptr : static_cast<FilterRecord *>(record);
    gAboutRecord = selector == kSelectorAbout ? static_cast<AboutRecord *>(record) : nullptr;
    gData = data;
    gResult = result;
    *gResult = kNoError;
    SetLastError(0);
}

// Teardown deletes the section, so the call after it makes a new one.
HostResult CreateSection() {
    uint32_t systemError = 0;
    if (CreateBufferUsageSection(&systemError))
        return kNoError;
    ReportError({139, kSystemError, systemError}, kStopIcon, kTitleUnexpected,
                "Could not create 'BufferUsageSection' critical section.");
    return kMemFullErr;
}

// The host's window may be another one in a later run; the log is set up once for the process, and goes on
// with the first call after a teardown.
void PrepareProcess() {
    void *parent = ParentWindow();
    if (gFirstCallDone) {
        if (IsReportOwnerThread())
            SetReportOwnerWindow(parent);
        ContinueLog();
        return;
    }
    InitAppFolders(kShortProductName, kProductName);
    OpenLog(parent, GetCurrentThreadId());
    gFirstCallDone = true;
}

void Dispatch(int16_t selector) {
    switch (selector) {
    case kSelectorAbout:
        return HandleAbout();
    case kSelectorParameters:
        return HandleParameters();
    case kSelectorPrepare:
        return HandlePrepare();
    case kSelectorStart:
        return HandleStart();
    case kSelectorContinue:
        return HandleContinue();
    case kSelectorFinish:
        return HandleFinish();
    default:
        return;
    }
}

void RunSelector(int16_t selector) {
    if (selector != kSelectorAbout) {
        if (!gFilterRecord) {
            *gResult = kFilterBadParameters;
            return;
        }
        if (BigDocumentStruct *big = gFilterRecord->bigDocumentData)
            big->PluginUsing32BitCoordinates = 1;
    }
    Dispatch(selector);
    if (selector != kSelectorAbout)
        UnlockHandles();
}

// A thread may still be inside the section; what it has to say belongs into the log.
void TearDown() {
    PassThroughBufferUsageSection();
    CloseLog();
    DeleteBufferUsageSection();
}

// Nothing of ours throws, but the runtime may when memory is short.
void RunSelectorGuarded(int16_t selector) {
    try {
        RunSelector(selector);
    } catch (...) {
        *gResult = kMemFullErr;
        if (gFilterRecord) {
            ReleaseRunServices();
            UnlockHandles();
        }
    }
}

} // namespace

extern "C" void PluginMain(int16_t selector, void *record, intptr_t *data, int16_t *result) {
    HostResult unwantedResult = kNoError;
    StoreCallRecords(selector, record, data, result ? result : &unwantedResult);
    *gResult = CreateSection();
    PrepareProcess();
    if (*gResult == kNoError)
        RunSelectorGuarded(selector);
    else
        ReleaseRunServices();
    if (*gResult != kNoError || selector == kSelectorAbout || selector == kSelectorFinish)
        TearDown();
    gResult = nullptr;
}
