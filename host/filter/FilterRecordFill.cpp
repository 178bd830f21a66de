#include "host/filter/FilterRecordFill.h"

#include "host/filter/DisplayPixels.h"
#include "host/filter/DocumentFit.h"
#include "host/filter/ImageAccess.h"
#include "host/services/ActionSuites.h"
#include "host/services/BufferProcs.h"
#include "host/services/DescriptorProcs.h"
#include "host/services/HandleProcs.h"
#include "host/services/HostState.h"
#include "host/services/SuiteProcs.h"

#include <cstring>

namespace host {

static HostBoolean AbortWanted() {
    const FilterHost &filterHost = *gHostState->owner;
    const int64_t limit = filterHost.settings.cancelAtAbortCall;
    if (limit > 0 && filterHost.log.calls.at("abortProc") >= limit)
        return 1;
    return filterHost.settings.isCancelled && filterHost.settings.isCancelled();
}

static void ShowProgress(int32_t done, int32_t total) {
    FilterHost &filterHost = *gHostState->owner;
    filterHost.log.progress.emplace_back(done, total);
    if (filterHost.settings.onProgress)
        filterHost.settings.onProgress(done, total);
}

static HostResult AdvanceForFilter() {
    return ServeAdvance(*gHostState);
}

static int16_t Narrow(int32_t value) {
    return static_cast<int16_t>(std::clamp(value, -32768, 32767));
}

static HostRect ToHost16(const Rectangle &r) {
    if (r.right > 32767 || r.bottom > 32767)
        return {};
    return {Narrow(r.top), Narrow(r.left), Narrow(r.bottom), Narrow(r.right)};
}

static HostRect32 ToHost32(const Rectangle &r) {
    return {r.top, r.left, r.bottom, r.right};
}

// Plane counts of one kind of layer, as a row of a table: the in and out counts of layer planes, transparency
// and non-layer planes.
struct CountRow {
    int32_t inLayer, inTransparency, inNonLayer, outLayer, outTransparency, outNonLayer, planes, firstCase;
};

static CountRow CountsOf(const HostState &state) {
    const FilterHost &filterHost = *state.owner;
    const int32_t c = filterHost.document.colourPlanes;
    const int32_t t = filterHost.document.hasTransparency ? 1 : 0;
    switch (ResolvedCounts(state)) {
    case PlaneCounts::kLayer:
        return {c, t, 0, c, t, 0, c + t, 4};
    case PlaneCounts::kProtected:
        return {c, t, 0, c, 0, 0, c + t, 6};
    case PlaneCounts::kProtectedFlatOutput:
        return {c, t, 0, 0, 0, c, c, 6};
    case PlaneCounts::kFlatAsLayer:
        return {c, 0, 0, c, 0, 0, c, 1};
    case PlaneCounts::kAllZero:
        return {0, 0, 0, 0, 0, 0, c + t, 0};
    case PlaneCounts::kFlat:
    case PlaneCounts::kAutomatic:
        break;
    }
    return {0, 0, c, 0, 0, c, c, 1};
}

static void FillPlaneCounts(const HostState &state, FilterRecord &record) {
    const FilterHost &filterHost = *state.owner;
    const HostSettings &settings = filterHost.settings;
    const CountRow counts = CountsOf(state);
    record.inLayerPlanes = Narrow(counts.inLayer);
    record.inTransparencyMask = Narrow(counts.inTransparency);
    record.inLayerMasks = settings.layerMasks;
    record.inInvertedLayerMasks = settings.invertedLayerMasks;
    record.inNonLayerPlanes = Narrow(counts.inNonLayer + settings.extraNonLayerPlanes);
    record.outLayerPlanes = Narrow(counts.outLayer);
    record.outTransparencyMask = Narrow(counts.outTransparency);
    record.outLayerMasks = settings.layerMasks;
    record.outInvertedLayerMasks = settings.invertedLayerMasks;
    record.outNonLayerPlanes = Narrow(counts.outNonLayer + settings.extraNonLayerPlanes);
    record.absLayerPlanes = record.inLayerPlanes;
    record.absTransparencyMask = record.inTransparencyMask;
    record.absLayerMasks = record.inLayerMasks;
    record.absInvertedLayerMasks = record.inInvertedLayerMasks;
    record.absNonLayerPlanes = record.inNonLayerPlanes;
    record.planes = Narrow(counts.planes);
    const bool hasMask = !filterHost.document.mask.empty();
    record.filterCase = counts.firstCase == 0 ? int16_t{0} : Narrow(counts.firstCase + (hasMask ? 1 : 0));
}

static void FillGeometry(HostState &state, FilterRecord &record) {
    const Document &document = state.owner->document;
    const Rectangle filterRect = FilterRectangle(*state.owner);
    record.imageSize = {Narrow(document.height), Narrow(document.width)};
    record.wholeSize = record.imageSize;
    record.filterRect = ToHost16(filterRect);
    record.imageHRes = record.imageVRes = 72 * kFixedOne;
    state.bigDocument.imageSize32 = {document.height, document.width};
    state.bigDocument.wholeSize32 = {document.height, document.width};
    state.bigDocument.filterRect32 = ToHost32(filterRect);
}

static void FillTiles(const HostSettings &settings, FilterRecord &record) {
    record.inTileHeight = record.absTileHeight = record.outTileHeight = record.maskTileHeight =
        settings.tileHeight;
    record.inTileWidth = record.absTileWidth = record.outTileWidth = record.maskTileWidth =
        settings.tileWidth;
}

static void FillImageFields(HostState &state, FilterRecord &record) {
    const FilterHost &filterHost = *state.owner;
    const HostSettings &settings = filterHost.settings;
    record.imageMode = settings.imageMode.value_or(ImageModeOf(filterHost.document));
    record.depth = settings.depthField.value_or(filterHost.document.depth);
    FillPlaneCounts(state, record);
    FillGeometry(state, record);
    FillTiles(settings, record);
    record.haveMask = !filterHost.document.mask.empty();
    record.dummyPlaneValue = -1;
    for (int i = 0; i < 3; i++) {
        record.foreColor.samples[i] = 0;
        record.backColor.samples[i] = 255;
    }
    record.background = {65535, 65535, 65535};
    record.hostSig = kHostSignature;
    record.iCCprofileData = state.iccHandle;
    record.iCCprofileSize = state.iccHandle ? static_cast<int32_t>(filterHost.document.iccProfile.size()) : 0;
    record.canUseICCProfiles = 1;
}

static void FillTables(HostState &state, FilterRecord &record) {
    record.abortProc = Offer<"abortProc", AbortWanted>(state);
    record.progressProc = Offer<"progressProc", ShowProgress>(state);
    record.advanceState = Offer<"advanceState", AdvanceForFilter>(state);
    const DisplayPixels displayPixels = Offer<"displayPixels", ShowPixels>(state);
    record.displayPixels = reinterpret_cast<void *>(displayPixels);
    record.bufferProcs = OfferTable(state, "bufferProcs", &state.bufferProcs);
    record.handleProcs = OfferTable(state, "handleProcs", &state.handleProcs);
    record.propertyProcs = OfferTable(state, "propertyProcs", &state.propertyProcs);
    record.platformData = OfferTable(state, "platformData", &state.platform);
    record.sSPBasic = OfferTable(state, "sSPBasic", &state.basicSuite);
    record.bigDocumentData = OfferTable(state, "bigDocumentData", &state.bigDocument);
    record.errorString = OfferTable(state, "errorString", state.errorString);
    record.descriptorParameters = OfferTable(state, "descriptorParameters", &state.descriptorParameters);
    state.descriptorParameters.readDescriptorProcs =
        OfferTable(state, "readDescriptorProcs", &state.readProcs);
    state.descriptorParameters.writeDescriptorProcs =
        OfferTable(state, "writeDescriptorProcs", &state.writeProcs);
}

void FillAllTables(HostState &state) {
    FillHandleProcs(state);
    FillBufferProcs(state);
    FillDescriptorProcs(state);
    FillSuites(state);
    FillActionSuites(state);
}

void FillRecord(HostState &state, int16_t selector) {
    FilterRecord &record = state.fields.record;
    FillTables(state, record);
    FillImageFields(state, record);
    // A host that lets the filter write outside the selection applies no mask of its own.
    record.autoMask = record.haveMask && (FilterCaseFlags(state) & kCaseWritesOutsideSelection) == 0;
    state.platform.hwnd = state.owner->settings.window;
    std::memset(state.fields.tail, kTailByte, sizeof(state.fields.tail));
    if (state.owner->settings.adjustRecord && state.runBegun)
        state.owner->settings.adjustRecord(selector, record);
}

} // namespace host
