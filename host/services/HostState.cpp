#include "host/services/HostState.h"

namespace host {

HostState *gHostState = nullptr;

void AddViolation(HostState &state, const std::string &text) {
    const std::lock_guard lock(state.logLock);
    state.owner->log.violations.push_back("selector " + std::to_string(state.selector) + ": " + text);
}

bool IsSuiteHeld(const HostState &state, const char *name) {
    return std::any_of(state.suitesHeld.begin(), state.suitesHeld.end(),
                       [name](const auto &use) { return use.first.first == name && use.second > 0; });
}

// A suite's table stays in memory after its release, so that a filter which goes on using it is found out
// instead of crashing.
static void CheckSuiteOf(HostState &state, const std::string &name) {
    const char *suite = nullptr;
    if (name.starts_with("Registry."))
        suite = kDescriptorRegistrySuiteName;
    else if (name.starts_with("Action."))
        suite = kActionDescriptorSuiteName;
    else if (name.starts_with("Buffer."))
        suite = kBufferSuiteName;
    else if (name.starts_with("Error."))
        suite = kErrorSuiteName;
    if (suite && !IsSuiteHeld(state, suite))
        AddViolation(state, name + " called without holding its suite");
}

std::optional<int32_t> EnterCall(const char *name) {
    HostState *state = gHostState;
    if (!state)
        return kErrPlugInHostInsufficient;
    if (GetCurrentThreadId() != state->thread) {
        AddViolation(*state, std::string(name) + " called on another thread");
        return kParamErr;
    }
    if (state->callDepth == 0)
        AddViolation(*state, std::string(name) + " called outside a selector");
    CheckSuiteOf(*state, name);
    const int64_t count = ++state->owner->log.calls[name];
    if (state->owner->settings.onCall)
        state->owner->settings.onCall(name);
    const auto failure = state->owner->settings.failures.find(name);
    if (failure == state->owner->settings.failures.end())
        return std::nullopt;
    const Failure &rule = failure->second;
    if (count == rule.nth || (rule.andLater && count > rule.nth))
        return rule.code;
    return std::nullopt;
}

} // namespace host
