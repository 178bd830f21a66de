#include "host/services/SuiteProcs.h"

#include "host/services/BufferProcs.h"
#include "host/services/HostState.h"

#include <cstring>

namespace host {

constexpr size_t kLongestErrorText = 4096; // of a text without a length

static const void *SuiteTable(HostState &state, const std::string &name, int32_t version) {
    if (name == kPropertySuiteName && version == kPropertySuiteVersion)
        return &state.propertyProcs;
    if (name == kErrorSuiteName && version == kErrorSuiteVersion)
        return &state.errorSuite;
    if (name == kDescriptorRegistrySuiteName && version == kDescriptorRegistrySuiteVersion)
        return &state.registrySuite;
    if (name == kActionDescriptorSuiteName && version == kActionDescriptorSuiteVersion)
        return &state.actionSuite;
    if (name == kBufferSuiteName && version == 1)
        return &state.bufferSuite;
    if (name == kHandleSuiteName && version == 1)
        return &state.handleSuite1;
    if (name == kHandleSuiteName && version == 2)
        return &state.handleSuite2;
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

static int32_t AreEqual(const char *a, const char *b) {
    return a && b && std::strcmp(a, b) == 0;
}

static SuiteResult Undefined() {
    return kSuiteNotImplemented;
}

static SuiteResult SetErrorText(const char *text, size_t length) {
    gHostState->owner->log.errorText.assign(text, length);
    return 0;
}

static SuiteResult SetErrorFromPascal(const HostString255 text) {
    return text ? SetErrorText(reinterpret_cast<const char *>(text) + 1, text[0]) : kSuiteBadParameter;
}

static SuiteResult SetErrorFromC(const char *text) {
    return text ? SetErrorText(text, strnlen(text, kLongestErrorText)) : kSuiteBadParameter;
}

// This host has no properties to tell.
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

void FillSuites(HostState &state) {
    SPBasicSuite &basic = state.basicSuite;
    basic.AcquireSuite = Offer<"AcquireSuite", AcquireSuite>(state);
    basic.ReleaseSuite = Offer<"ReleaseSuite", ReleaseSuite>(state);
    basic.IsEqual = Offer<"IsEqual", AreEqual>(state);
    basic.AllocateBlock = Offer<"AllocateBlock", AllocateBasicBlock>(state);
    basic.FreeBlock = Offer<"FreeBlock", FreeBasicBlock>(state);
    basic.ReallocateBlock = Offer<"ReallocateBlock", ReallocateBasicBlock>(state);
    basic.Undefined = Offer<"Undefined", Undefined>(state);

    state.propertyProcs.propertyProcsVersion = 1;
    state.propertyProcs.numPropertyProcs = 2;
    state.propertyProcs.setPropertyProc = Offer<"setPropertyProc", SetHostProperty>(state);
    state.propertyProcs.getPropertyProc = Offer<"getPropertyProc", GetHostProperty>(state);
    state.errorSuite.SetErrorFromPString = Offer<"Error.SetErrorFromPString", SetErrorFromPascal>(state);
    state.errorSuite.SetErrorFromCString = Offer<"Error.SetErrorFromCString", SetErrorFromC>(state);
    RefuseAll(&state.errorSuite.SetErrorFromZString);
}

} // namespace host
