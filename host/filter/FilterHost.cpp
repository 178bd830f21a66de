#include "host/filter/FilterHost.h"

#include "host/filter/FilterRecordFill.h"
#include "host/services/HostState.h"

#include <stdexcept>

namespace host {

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
