// The basic suite, through which all others are had, and the property and error suites.
#include "host/HostState.h"

#include <cstdlib>
#include <cstring>

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

static int32_t AreNamesEqual(const char *a, const char *b) {
    return a && b && std::strcmp(a, b) == 0;
}

static SuiteResult AllocateBlock(size_t size, void **block) {
    void *made = std::malloc(size);
    if (!made)
        return kMemFullErr;
    *block = made;
    return 0;
}

static SuiteResult FreeBlock(void *block) {
    std::free(block);
    return 0;
}

static SuiteResult ReallocateBlock(void *block, size_t newSize, void **newBlock) {
    void *made = std::realloc(block, newSize);
    if (!made)
        return kMemFullErr;
    *newBlock = made;
    return 0;
}

static SuiteResult CallUndefined() {
    return kSuiteNotImplemented;
}

static HostResult GetHostProperty(FourCharCode, FourCharCode, int32_t, intptr_t *, HostHandle *) {
    return kErrPlugInPropertyUndefined;
}

static HostResult SetHostProperty(FourCharCode signature, FourCharCode key, int32_t index, intptr_t value,
                                  HostHandle) {
    if (signature != kHostSignature || key != kPropWatchSuspension || index != 0)
        return kErrPlugInPropertyUndefined;
    gHostState->owner->log.propertiesSet.emplace_back(key, value);
    return kNoError;
}

static SuiteResult SetErrorFromPString(const uint8_t *text) {
    if (!text)
        return kSuiteBadParameter;
    gHostState->owner->log.errorText.assign(reinterpret_cast<const char *>(text) + 1, text[0]);
    return 0;
}

static SuiteResult SetErrorFromCString(const char *text) {
    if (!text)
        return kSuiteBadParameter;
    gHostState->owner->log.errorText = text;
    return 0;
}

static SuiteResult SetErrorFromZString(HostZString) {
    return kSuiteNotImplemented;
}

void FillSuites(HostState &state) {
    SPBasicSuite &basic = state.basicSuite;
    basic.AcquireSuite = Offer<"AcquireSuite", AcquireSuite>(state);
    basic.ReleaseSuite = Offer<"ReleaseSuite", ReleaseSuite>(state);
    basic.IsEqual = Offer<"IsEqual", AreNamesEqual>(state);
    basic.AllocateBlock = Offer<"AllocateBlock", AllocateBlock>(state);
    basic.FreeBlock = Offer<"FreeBlock", FreeBlock>(state);
    basic.ReallocateBlock = Offer<"ReallocateBlock", ReallocateBlock>(state);
    basic.Undefined = Offer<"Undefined", CallUndefined>(state);

    state.propertyProcs.propertyProcsVersion = 1;
    state.propertyProcs.numPropertyProcs = 2;
    state.propertyProcs.getPropertyProc = Offer<"getPropertyProc", GetHostProperty>(state);
    state.propertyProcs.setPropertyProc = Offer<"setPropertyProc", SetHostProperty>(state);

    state.errorSuite.SetErrorFromPString = Offer<"SetErrorFromPString", SetErrorFromPString>(state);
    state.errorSuite.SetErrorFromCString = Offer<"SetErrorFromCString", SetErrorFromCString>(state);
    state.errorSuite.SetErrorFromZString = Offer<"SetErrorFromZString", SetErrorFromZString>(state);
}

} // namespace host
