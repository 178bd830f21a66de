#include "plugin/HostServices.h"

#include "plugin/parameters/PersistentBlock.h"
#include "plugin/record/PluginState.h"

#include <windows.h>
#include <objbase.h>

namespace {

// The suites are released where they were acquired, whatever the record of a later call says.
SPBasicSuite *gBasicSuite;
bool gComInitialized;

template <typename Suite> void AcquireSuite(const char *name, int32_t version, const Suite **suite) {
    if (*suite)
        return;
    const void *found = nullptr;
    if (gBasicSuite->AcquireSuite(name, version, &found) == 0)
        *suite = static_cast<const Suite *>(found);
}

template <typename Suite> void ReleaseSuite(const char *name, int32_t version, const Suite **suite) {
    if (*suite && gBasicSuite->ReleaseSuite)
        gBasicSuite->ReleaseSuite(name, version);
    *suite = nullptr;
}

} // namespace

// A run that the host ended after Parameters leaves suites held. With the same basic suite they serve the
// next run; another basic suite means another host, whose suites the old pointers are not.
void AcquireHostSuites() {
    SPBasicSuite *basic = gFilterRecord->sSPBasic;
    if (!basic || !basic->AcquireSuite)
        return;
    if (basic != gBasicSuite) {
        gPropertySuite = nullptr;
        gErrorSuite = nullptr;
        gBasicSuite = basic;
    }
    AcquireSuite(kPropertySuiteName, kPropertySuiteVersion, &gPropertySuite);
    AcquireSuite(kErrorSuiteName, kErrorSuiteVersion, &gErrorSuite);
}

void ReleaseHostSuites() {
    ReleaseSuite(kErrorSuiteName, kErrorSuiteVersion, &gErrorSuite);
    ReleaseSuite(kPropertySuiteName, kPropertySuiteVersion, &gPropertySuite);
}

bool InitializeCom() {
    if (!gComInitialized)
        gComInitialized = SUCCEEDED(CoInitialize(nullptr));
    return gComInitialized;
}

void UninitializeCom() {
    if (gComInitialized)
        CoUninitialize();
    gComInitialized = false;
}

void SuspendHostCursor() {
    if (gPropertySuite && gPropertySuite->setPropertyProc)
        gPropertySuite->setPropertyProc(kHostSignature, kPropWatchSuspension, 0, 1, nullptr);
}

void ReleaseRunServices() {
    ReleasePersistentBlock();
    UninitializeCom();
    ReleaseHostSuites();
}
