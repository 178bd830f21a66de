#include "host/filter/FilterRun.h"

#include "host/filter/DocumentFit.h"
#include "host/filter/FilterRecordFill.h"
#include "host/filter/ImageAccess.h"
#include "host/services/BufferProcs.h"
#include "host/services/HandleProcs.h"
#include "host/services/HostState.h"

#include <cstring>

namespace host {

constexpr int kMostContinues = 10000; // a filter that asks for more never ends

void BeginRun(FilterHost &filterHost) {
    HostState &state = *filterHost.state;
    if (state.runBegun)
        return;
    FilterRecord &record = state.fields.record;
    const HostHandle kept = record.parameters;
    state.fields = {};
    record.parameters = kept;
    record.maxSpace = filterHost.settings.maxSpace;
    record.inputPadding = record.outputPadding = record.maskPadding = -3;
    record.inputRate = record.maskRate = kFixedOne;
    state.bigDocument = {};
    state.descriptorParameters = {};
    state.descriptorParameters.playInfo = filterHost.settings.playInfo;
    state.descriptorParameters.recordInfo = kRecordDialogNone;
    state.hasRecorded = false;
    std::memset(state.errorString, 0, sizeof(state.errorString));
    if (filterHost.script) {
        const std::vector<uint8_t> bytes = PackDescriptor(*filterHost.script);
        state.descriptorParameters.descriptor = MakeHandle(state, bytes.data(), bytes.size());
    }
    if (!filterHost.document.iccProfile.empty())
        state.iccHandle =
            MakeHandle(state, filterHost.document.iccProfile.data(), filterHost.document.iccProfile.size());
    FillAllTables(state);
    state.runBegun = true;
}

static void ReportLeaks(HostState &state, const char *what, size_t count) {
    if (count > 0)
        AddViolation(state, "leaked " + std::to_string(count) + " " + what);
}

static void TakeLeaks(HostState &state) {
    for (const auto &[suite, count] : state.suitesHeld)
        ReportLeaks(state, ("acquisition(s) of " + suite.first).c_str(), static_cast<size_t>(count));
    ReportLeaks(state, "action descriptor(s)", state.actionDescriptors.size());
    ReportLeaks(state, "descriptor reader(s)", state.readers.size());
    ReportLeaks(state, "descriptor writer(s)", state.writers.size());
    ReportLeaks(state, "buffer(s)", DropMemory(state));
    state.suitesHeld.clear();
    state.actionDescriptors.clear();
    state.readers.clear();
    state.writers.clear();
}

static void TakeLeakedHandles(HostState &state) {
    const HostHandle parameters = state.fields.record.parameters;
    std::vector<HostHandle> leaked;
    for (HandleBlock &block : state.handles)
        if (&block.data != parameters && reinterpret_cast<intptr_t>(&block.data) != state.dataWord)
            leaked.push_back(&block.data);
    ReportLeaks(state, "handle(s)", leaked.size());
    for (HostHandle handle : leaked)
        DropHandle(state, handle);
}

static void TakeRecorded(FilterHost &filterHost) {
    HostState &state = *filterHost.state;
    const HostHandle handle = state.descriptorParameters.descriptor;
    const HandleBlock *block = FindHandle(state, handle);
    Descriptor recorded;
    if (block && state.hasRecorded &&
        UnpackDescriptor(reinterpret_cast<const uint8_t *>(block->data), static_cast<size_t>(block->size),
                         &recorded))
        filterHost.recorded = std::move(recorded);
    if (handle && !block)
        AddViolation(state, "left a dead handle as its recorded descriptor");
    DropHandle(state, handle);
    state.descriptorParameters.descriptor = nullptr;
}

// Some hosts keep the bytes of both handles, some keep nothing.
static HostHandle HandleForNextRun(HostState &state, HostHandle handle) {
    const HostSettings &settings = state.owner->settings;
    if (!settings.forgetHandles && !settings.restoreHandlesAsBytes)
        return handle;
    const std::vector<uint8_t> bytes = HandleBytes(*state.owner, handle);
    DropHandle(state, handle);
    if (settings.forgetHandles || bytes.empty())
        return nullptr;
    return MakeHandle(state, bytes.data(), bytes.size());
}

void EndRun(FilterHost &filterHost) {
    HostState &state = *filterHost.state;
    if (!state.runBegun)
        return;
    DropBuffers(state);
    ClipToSelection(state);
    state.originals.clear();
    state.written.clear();
    TakeRecorded(filterHost);
    DropHandle(state, state.iccHandle);
    state.iccHandle = nullptr;
    TakeLeaks(state);
    TakeLeakedHandles(state);
    state.fields.record.parameters = HandleForNextRun(state, state.fields.record.parameters);
    state.dataWord =
        reinterpret_cast<intptr_t>(HandleForNextRun(state, reinterpret_cast<HostHandle>(state.dataWord)));
    if (state.errorString[0])
        filterHost.log.errorText.assign(reinterpret_cast<const char *>(state.errorString) + 1,
                                        state.errorString[0]);
    state.runBegun = false;
}

static int16_t CallEntry(HostState &state, int16_t selector, void *record) {
    state.selector = selector;
    state.result = state.owner->settings.resultOnEntry;
    state.callDepth++;
    state.entry(selector, record, &state.dataWord, &state.result);
    state.callDepth--;
    if (state.result == state.owner->settings.resultOnEntry && state.result != kNoError)
        AddViolation(state, "left the result word alone");
    state.owner->log.selectors.push_back({selector, state.result});
    return state.result;
}

int16_t CallSelector(FilterHost &filterHost, int16_t selector) {
    HostState &state = *filterHost.state;
    BeginRun(filterHost);
    FillRecord(state, selector);
    const int16_t result = CallEntry(state, selector, &state.fields.record);
    if (std::any_of(std::begin(state.fields.tail), std::end(state.fields.tail),
                    [](uint8_t byte) { return byte != kTailByte; }))
        AddViolation(state, "wrote behind the end of the record");
    MoveUnlockedHandles(state);
    return result;
}

int16_t CallAbout(FilterHost &filterHost) {
    HostState &state = *filterHost.state;
    AboutRecord record = {};
    state.platform.hwnd = filterHost.settings.window;
    record.platformData = OfferTable(state, "platformData", &state.platform);
    record.sSPBasic = OfferTable(state, "sSPBasic", &state.basicSuite);
    const int16_t result = CallEntry(state, kSelectorAbout, &record);
    if (!state.runBegun)
        TakeLeaks(state);
    return result;
}

int16_t AdvanceHost(FilterHost &filterHost) {
    return ServeAdvance(*filterHost.state);
}

void CommitOutput(FilterHost &filterHost) {
    CommitPendingOutput(*filterHost.state);
}

// Continue until the filter asks for nothing more. A failed advance ends the run as a failed Continue does.
static RunResult PlayContinues(FilterHost &filterHost) {
    for (int i = 0; WantsContinue(filterHost); i++) {
        if (i == kMostContinues) {
            AddViolation(*filterHost.state, "asked for Continue without end");
            return {kParamErr, kSelectorContinue};
        }
        int16_t code = AdvanceHost(filterHost);
        if (code == kNoError)
            code = CallSelector(filterHost, kSelectorContinue);
        if (code != kNoError)
            return {code, kSelectorContinue};
    }
    return {};
}

static RunResult PlaySelectors(FilterHost &filterHost, bool withParameters) {
    for (const int16_t selector : {kSelectorParameters, kSelectorPrepare, kSelectorStart}) {
        if (selector == kSelectorParameters && !withParameters)
            continue;
        const int16_t code = CallSelector(filterHost, selector);
        if (code != kNoError)
            return {code, selector};
    }
    if (filterHost.settings.afterStart)
        filterHost.settings.afterStart();
    RunResult result = PlayContinues(filterHost);
    if (result.code == kNoError)
        CommitOutput(filterHost);
    else if (!filterHost.settings.finishAfterFailure)
        return result;
    const int16_t code = CallSelector(filterHost, kSelectorFinish);
    if (result.code == kNoError && code != kNoError)
        result = {code, kSelectorFinish};
    return result;
}

RunResult RunFilter(FilterHost &filterHost, bool withParameters) {
    EndRun(filterHost);
    if (!IsDocumentTaken(*filterHost.state, &filterHost.log.refusal))
        return {kFilterBadMode, -1};
    BeginRun(filterHost);
    const RunResult result = PlaySelectors(filterHost, withParameters);
    // A failed Finish costs what would have been recorded, not the finished picture.
    if (result.code != kNoError && result.failedSelector != kSelectorFinish)
        RestoreOriginals(*filterHost.state);
    EndRun(filterHost);
    return result;
}

} // namespace host
