// The basic suite, through which all others are had, and the property and error suites.
#include "host/filter/HostState.h"

namespace host {

static const void *SuiteTable(HostState &state, const std::string &name, int32_t version) {
    if (name == kPropertySuiteName && version == kPropertySuiteVersion)
        return &state.propertyProcs;
    if (name == kErrorSuiteName && version == kErrorSuiteVersion)
        return &state.errorSuite;
    if (name == kDescriptorRegistrySuiteName && version == kDescriptorRegistrySuiteVersion)
        return &state.registrySuite;
    if (name == kActionDescriptorSuiteName && version == kActionDescriptorSuiteVersion)
        return &state.actionSuite;
    return nullptr;
}

static void LogSuite(char what, const std::string &name, int32_t version) {
    gHostState->owner->log.suites.push_back(what + name + "/" + std::to_string(version));
}

static SuiteResult AcquireSuite(const char *name, int32_t version, const void **suite) {
    HostState &state = *gHostState;
    if (!name || !suite)
        return kSuiteBadParameter;
    const void *table =
        state.owner->settings.refusedSuites.contains(name) ? nullptr : SuiteTable(state, name, version);
    LogSuite(table ? '+' : '!', name, version);
    if (!table)
        return kSuiteNotFound;
    state.suitesHeld[{name, version}]++;
    *suite = table;
    return 0;
}

static SuiteResult ReleaseSuite(const char *name, int32_t version) {
    HostState &state = *gHostState;
    if (!name)
        return kSuiteBadParameter;
    LogSuite('-', name, version);
    const auto held = state.suitesHeld.find({name, version});
    if (held == state.suitesHeld.end() || held->second == 0) {
        AddViolation(state, "released a suite that it does not hold: " + std::string(name));
        return kSuiteBadParameter;
    }
    held->second--;
    return 0;
}

static HostResult SetHostProperty(FourCharCode signature, FourCharCode key, int32_t index, intptr_t value,
                                  HostHandle) {
    if (signature != kHostSignature || key != kPropWatchSuspension || index != 0)
        return kErrPlugInPropertyUndefined;
    gHostState->owner->log.propertiesSet.emplace_back(key, value);
    return kNoError;
}

void FillSuites(HostState &state) {
    SPBasicSuite &basic = state.basicSuite;
    basic.AcquireSuite = Offer<"AcquireSuite", AcquireSuite>(state);
    basic.ReleaseSuite = Offer<"ReleaseSuite", ReleaseSuite>(state);
    RefuseAll(&basic.IsEqual, &basic.AllocateBlock, &basic.FreeBlock, &basic.ReallocateBlock,
              &basic.Undefined);

    state.propertyProcs.propertyProcsVersion = 1;
    state.propertyProcs.numPropertyProcs = 2;
    state.propertyProcs.setPropertyProc = Offer<"setPropertyProc", SetHostProperty>(state);
    RefuseAll(&state.propertyProcs.getPropertyProc, &state.errorSuite.SetErrorFromPString,
              &state.errorSuite.SetErrorFromCString, &state.errorSuite.SetErrorFromZString);
}

} // namespace host
