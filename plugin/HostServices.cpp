#include "plugin/HostServices.h"

#include "plugin/parameters/PersistentBlock.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"

#include <windows.h>
#include <objbase.h>

namespace {

// The host's table may lie elsewhere in each call, and what it was in then be used for other things. A call
// without one is served by the procedures seen last.
SPBasicSuite gBasicSuite;
// Whose suites are held. The procedures tell one host from another, their table does not.
decltype(SPBasicSuite::AcquireSuite) gAcquiredFrom;
DWORD gComThread; // on which COM is to be given back; 0: none

template <typename Suite> void AcquireSuite(const char *name, int32_t version, const Suite **suite) {
    if (*suite)
        return;
    const void *found = nullptr;
    if (CallHost(gBasicSuite.AcquireSuite, name, version, &found) == 0)
        *suite = static_cast<const Suite *>(found);
}

template <typename Suite> void ReleaseSuite(const char *name, int32_t version, const Suite **suite) {
    if (*suite && gBasicSuite.ReleaseSuite)
        CallHost(gBasicSuite.ReleaseSuite, name, version);
    *suite = nullptr;
}

} // namespace

void FindBasicSuite() {
    SPBasicSuite *basic = nullptr;
    if (gFilterRecord)
        basic = gFilterRecord->sSPBasic;
    else if (gAboutRecord)
        basic = gAboutRecord->sSPBasic;
    if (basic)
        gBasicSuite = *basic;
}

// A run that the host ended after Parameters leaves suites held. They serve the next run of the same host;
// the suites of another host the old pointers are not.
void AcquireHostSuites() {
    if (!gFilterRecord->sSPBasic || !gBasicSuite.AcquireSuite)
        return;
    if (gBasicSuite.AcquireSuite != gAcquiredFrom) {
        gPropertySuite = nullptr;
        gErrorSuite = nullptr;
        gAcquiredFrom = gBasicSuite.AcquireSuite;
    }
    AcquireSuite(kPropertySuiteName, kPropertySuiteVersion, &gPropertySuite);
    AcquireSuite(kErrorSuiteName, kErrorSuiteVersion, &gErrorSuite);
}

void ReleaseHostSuites() {
    ReleaseSuite(kErrorSuiteName, kErrorSuiteVersion, &gErrorSuite);
    ReleaseSuite(kPropertySuiteName, kPropertySuiteVersion, &gPropertySuite);
}

// A thread that the host runs in another mode has COM, too; it is not ours to give back.
bool InitializeCom() {
    if (gComThread == GetCurrentThreadId())
        return true;
    const HRESULT result = CoInitialize(nullptr);
    if (SUCCEEDED(result))
        gComThread = GetCurrentThreadId();
    return SUCCEEDED(result) || result == RPC_E_CHANGED_MODE;
}

// Only its own thread can. One that a host ends a run on instead of it leaves COM to the next call on that.
void UninitializeCom() {
    if (gComThread != GetCurrentThreadId())
        return;
    CoUninitialize();
    gComThread = 0;
}

void SuspendHostCursor() {
    if (gPropertySuite && gPropertySuite->setPropertyProc)
        CallHost(gPropertySuite->setPropertyProc, kHostSignature, kPropWatchSuspension, 0, intptr_t{1},
                 HostHandle{});
}

void ReleaseRunServices() {
    ReleasePersistentBlock();
    UninitializeCom();
    ReleaseHostSuites();
}
