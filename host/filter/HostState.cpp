#include "host/filter/HostState.h"

#include <stdexcept>

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
    const auto failure = state->owner->settings.failures.find(name);
    if (failure == state->owner->settings.failures.end())
        return std::nullopt;
    const Failure &rule = failure->second;
    if (count == rule.nth || (rule.andLater && count > rule.nth))
        return rule.code;
    return std::nullopt;
}

void FillAllTables(HostState &state) {
    FillHandleProcs(state);
    FillBufferProcs(state);
    FillDescriptorProcs(state);
    FillSuites(state);
    FillActionSuites(state);
}

static void CheckNames(const HostState &state) {
    const HostSettings &settings = state.owner->settings;
    for (const std::string &name : settings.absent)
        if (!state.knownNames.contains(name))
            throw std::invalid_argument("no such service: " + name);
    for (const auto &[name, failure] : settings.failures)
        if (!state.knownNames.contains(name))
            throw std::invalid_argument("no such service: " + name);
}

FilterHost::FilterHost() = default;
FilterHost::~FilterHost() {
    if (state)
        CloseHost(*this);
}

void OpenHost(FilterHost &filterHost, FilterEntry entry, const Pipl *pipl) {
    if (gHostState)
        throw std::logic_error("another host is open");
    auto state = std::make_unique<HostState>();
    state->owner = &filterHost;
    state->entry = entry;
    state->hasPipl = pipl != nullptr;
    if (pipl)
        state->pipl = *pipl;
    state->thread = GetCurrentThreadId();
    FillAllTables(*state);
    FillRecord(*state, kSelectorParameters); // makes the record's own names known
    CheckNames(*state);
    filterHost.state = std::move(state);
    gHostState = filterHost.state.get();
}

void OpenHost(FilterHost &filterHost, const FilterModule &module) {
    OpenHost(filterHost, module.entry, &module.pipl);
}

void CloseHost(FilterHost &filterHost) {
    HostState *state = filterHost.state.get();
    if (!state)
        return;
    EndRun(filterHost);
    DropHandle(*state, state->fields.record.parameters);
    DropHandle(*state, reinterpret_cast<HostHandle>(state->dataWord));
    while (!state->handles.empty())
        DropHandle(*state, &state->handles.front().data);
    gHostState = nullptr;
    filterHost.state.reset();
}

FilterRecord &Record(FilterHost &filterHost) {
    return filterHost.state->fields.record;
}

BigDocumentStruct &BigDocument(FilterHost &filterHost) {
    return filterHost.state->bigDocument;
}

intptr_t DataWord(const FilterHost &filterHost) {
    return filterHost.state->dataWord;
}

void PlantDataWord(FilterHost &filterHost, intptr_t word) {
    filterHost.state->dataWord = word;
}

LiveCounts CountLive(const FilterHost &filterHost) {
    const HostState &state = *filterHost.state;
    LiveCounts counts;
    counts.handles = static_cast<int64_t>(state.handles.size());
    counts.lockedHandles = std::count_if(state.handles.begin(), state.handles.end(),
                                         [](const HandleBlock &block) { return block.locks > 0; });
    counts.memoryBlocks = static_cast<int64_t>(state.blocks.size());
    for (const auto &use : state.suitesHeld)
        counts.suites += use.second;
    counts.actionDescriptors = static_cast<int64_t>(state.actionDescriptors.size());
    counts.readers = static_cast<int64_t>(state.readers.size());
    counts.writers = static_cast<int64_t>(state.writers.size());
    return counts;
}

void ClearLog(FilterHost &filterHost) {
    filterHost.log = {};
}

} // namespace host
