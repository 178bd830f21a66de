// The entry that the host calls for every selector, on its own thread.
#include "diag/BufferUsage.h"
#include "diag/ErrorReport.h"
#include "diag/Log.h"
#include "diag/module/ProductName.h"
#include "plugin/HostServices.h"
#include "plugin/Selectors.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/HostHandles.h"
#include "plugin/record/PluginState.h"
#include "storage/AppFolders.h"

#include <atomic>
#include <windows.h>

namespace {

// What one call has of its own, while it lasts.
struct CallRecords {
    bool isInRun; // it is no About, or one inside such a call
    FilterRecord *filterRecord;
    AboutRecord *aboutRecord;
    intptr_t *data;
    HostResult *result;
    ParameterSet *parameters;
    uint8_t *dialogPending;
};

bool gFirstCallDone;
bool gIsInRun;
std::atomic<DWORD> gServingThread; // 0: no call is being served

CallRecords SaveRecords() {
    return {gIsInRun, gFilterRecord, gAboutRecord, gData, gResult, gParameters, gDialogPending};
}

void SetRecords(const CallRecords &call) {
    gIsInRun = call.isInRun;
    gFilterRecord = call.filterRecord;
    gAboutRecord = call.aboutRecord;
    gData = call.data;
    gResult = call.result;
    gParameters = call.parameters;
    gDialogPending = call.dialogPending;
}

CallRecords RecordsOfCall(int16_t selector, void *record, intptr_t *data, HostResult *result) {
    const bool isAbout = selector == kSelectorAbout;
    return {!isAbout,
            isAbout ? nullptr : static_cast<FilterRecord *>(record),
            isAbout ? static_cast<AboutRecord *>(record) : nullptr,
            data,
            result,
            nullptr,
            nullptr};
}

bool MayShowNothing() {
    const PIDescriptorParameters *script = gFilterRecord ? gFilterRecord->descriptorParameters : nullptr;
    return script && script->playInfo == kPlaySilent;
}

// A run that may show nothing has no thread whose reports are shown.
void OwnReports() {
    SetReportOwner(ParentWindow(), MayShowNothing() ? 0 : GetCurrentThreadId());
}

// The host's window and thread may be others in a later call; the log is set up once for the process, and
// goes on with the first call after a teardown.
void PrepareProcess() {
    if (!gFirstCallDone) {
        InitAppFolders(kShortProductName, kProductName);
        OpenLog(ParentWindow(), MayShowNothing() ? 0 : GetCurrentThreadId());
        gFirstCallDone = true;
        return;
    }
    OwnReports();
    ContinueLog();
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

// Nothing of ours throws, but the runtime may when memory is short.
void RunSelectorGuarded(int16_t selector) {
    try {
        RunSelector(selector);
    } catch (...) {
        *gResult = kMemFullErr;
        if (gFilterRecord)
            UnlockHandles();
    }
}

// A thread may still be inside the section; what it has to say belongs into the log.
void TearDown() {
    PassThroughBufferUsageSection();
    CloseLog();
    DeleteBufferUsageSection();
}

// With *gResult still 0. What a run holds is given back when it fails.
void ServeRun(int16_t selector) {
    RunSelectorGuarded(selector);
    if (*gResult == kNoError)
        *gResult = HostFailure();
    if (*gResult != kNoError)
        ReleaseRunServices();
}

void RefuseCall(uint32_t systemError) {
    ReportError({139, kSystemError, systemError}, kStopIcon, kTitleUnexpected,
                "Could not create 'BufferUsageSection' critical section.");
    *gResult = kMemFullErr;
    ReleaseRunServices();
}

// Teardown deletes the section, so the call after it makes a new one. It is made before the log is open, and
// what comes of it is told only then.
void ServeCall(int16_t selector) {
    uint32_t systemError = 0;
    ForgetHostFailure();
    FindBasicSuite();
    *gResult = kNoError;
    const bool hasSection = CreateBufferUsageSection(&systemError);
    PrepareProcess();
    if (hasSection)
        ServeRun(selector);
    else
        RefuseCall(systemError);
    if (*gResult != kNoError || selector == kSelectorAbout || selector == kSelectorFinish)
        TearDown();
}

// A host that shows a box or a progress bar pumps messages, and may call again from there. The box has
// nothing of a run, so one of the two may be About; two runs at once there cannot be, a box between them or
// not. Log and section stay with the outer call, services and what the host failed in with the run.
void ServeInnerCall(const CallRecords &outer, int16_t selector) {
    *gResult = kNoError;
    if (selector == kSelectorAbout) {
        RunSelectorGuarded(selector);
    } else if (!outer.isInRun) {
        FindBasicSuite();
        OwnReports();
        ServeRun(selector);
        ForgetHostFailure();
    } else {
        *gResult = kFilterBadParameters;
    }
}

} // namespace

extern "C" void PluginMain(int16_t selector, void *record, intptr_t *data, int16_t *result) {
    HostResult unwantedResult = kNoError;
    CallRecords call = RecordsOfCall(selector, record, data, result ? result : &unwantedResult);
    DWORD servingThread = 0;
    const bool isOuter = gServingThread.compare_exchange_strong(servingThread, GetCurrentThreadId());
    if (!isOuter && servingThread != GetCurrentThreadId()) {
        *call.result = kFilterBadParameters;
        return;
    }
    const CallRecords outer = SaveRecords();
    call.isInRun = call.isInRun || outer.isInRun;
    SetRecords(call);
    SetLastError(0);
    if (isOuter)
        ServeCall(selector);
    else
        ServeInnerCall(outer, selector);
    SetRecords(outer);
    if (isOuter)
        gServingThread = 0;
    else
        OwnReports();
}
