#include "host/filter/ImageAccess.h"

#include "host/base/SampleRows.h"
#include "host/filter/DocumentFit.h"
#include "host/services/GuardedMemory.h"
#include "host/services/HostState.h"

#include <cstring>

namespace host {

constexpr size_t kBufferGuard = 64;
constexpr size_t kLargestSpare = 16u << 20;
constexpr uint8_t kUnwrittenByte = 0xA5; // output that the filter asked the host not to prefill
constexpr uint16_t kWhite16 = 32768;

static int32_t PlanesHeld(const HostState &state, int32_t count) {
    return std::min(count, static_cast<int32_t>(state.owner->document.planes.size()));
}

static int32_t InputPlanes(const HostState &state) {
    const HostSettings &settings = state.owner->settings;
    const Document &document = state.owner->document;
    const PlaneCounts counts = ResolvedCounts(state);
    const bool isFlat = counts == PlaneCounts::kFlat || counts == PlaneCounts::kFlatAsLayer;
    const int32_t transparency = document.hasTransparency && !isFlat ? 1 : 0;
    return PlanesHeld(state, document.colourPlanes + transparency + settings.layerMasks +
                                 settings.invertedLayerMasks + settings.extraNonLayerPlanes);
}

static int32_t OutputPlanes(const HostState &state) {
    const PlaneCounts counts = ResolvedCounts(state);
    if (counts == PlaneCounts::kProtected || counts == PlaneCounts::kProtectedFlatOutput)
        return PlanesHeld(state, state.owner->document.colourPlanes);
    return InputPlanes(state);
}

Rectangle FilterRectangle(const FilterHost &filterHost) {
    const Rectangle whole = {0, 0, filterHost.document.width, filterHost.document.height};
    return filterHost.settings.filterRect.value_or(whole);
}

uint8_t FilterCaseFlags(const HostState &state) {
    if (!state.hasPipl || !state.pipl.hasFilterCases)
        return 0;
    const int16_t filterCase = state.fields.record.filterCase;
    return state.pipl.filterCases[filterCase >= 1 && filterCase <= 7 ? filterCase - 1 : 0].flags;
}

static Rectangle FromHost(const HostRect32 &r) {
    return {r.left, r.top, r.right, r.bottom};
}
static Rectangle FromHost(const HostRect &r) {
    return {r.left, r.top, r.right, r.bottom};
}

static bool Uses32Bit(const HostState &state) {
    return state.fields.record.bigDocumentData == &state.bigDocument &&
           state.bigDocument.PluginUsing32BitCoordinates != 0;
}

static AdvanceCall ReadRequest(const HostState &state) {
    const FilterRecord &record = state.fields.record;
    const BigDocumentStruct &big = state.bigDocument;
    const bool is32 = Uses32Bit(state);
    AdvanceCall call = {};
    call.selector = state.callDepth > 0 ? state.selector : int16_t{-1};
    call.in = is32 ? FromHost(big.inRect32) : FromHost(record.inRect);
    call.out = is32 ? FromHost(big.outRect32) : FromHost(record.outRect);
    call.mask = is32 ? FromHost(big.maskRect32) : FromHost(record.maskRect);
    call.inLo = record.inLoPlane;
    call.inHi = record.inHiPlane;
    call.outLo = record.outLoPlane;
    call.outHi = record.outHiPlane;
    return call;
}

bool WantsContinue(const FilterHost &filterHost) {
    const AdvanceCall call = ReadRequest(*filterHost.state);
    return !IsEmpty(call.in) || !IsEmpty(call.out) || !IsEmpty(call.mask);
}

static bool IsGuard(const uint8_t *bytes, size_t count) {
    return std::all_of(bytes, bytes + count, [](uint8_t byte) { return byte == kGuardByte; });
}

static uint8_t *BufferRow(SampleBuffer &buffer, int32_t row) {
    return buffer.bytes.data() + kBufferGuard + static_cast<size_t>(row) * buffer.rowBytes;
}

static void DropBuffer(HostState &state, SampleBuffer &buffer, const char *name) {
    if (buffer.bytes.empty())
        return;
    const int32_t rows = buffer.rectangle.bottom - buffer.rectangle.top;
    bool isIntact =
        IsGuard(buffer.bytes.data(), kBufferGuard) && IsGuard(BufferRow(buffer, rows), kBufferGuard);
    for (int32_t row = 0; row < rows; row++)
        isIntact = isIntact &&
                   IsGuard(BufferRow(buffer, row) + buffer.rowLength, buffer.rowBytes - buffer.rowLength);
    if (!isIntact)
        AddViolation(state, std::string("wrote outside the rows of ") + name);
    std::vector<uint8_t> spare = std::move(buffer.bytes);
    buffer = {};
    if (spare.size() <= kLargestSpare)
        buffer.spare = std::move(spare);
}

void DropBuffers(HostState &state) {
    DropBuffer(state, state.in, "inData");
    DropBuffer(state, state.out, "outData");
    DropBuffer(state, state.mask, "maskData");
}

// The rows themselves hold anything: whoever asks for the buffer fills them.
static void MakeBuffer(HostState &state, SampleBuffer &buffer, const Rectangle &rectangle, int32_t lo,
                       int32_t hi, size_t sampleSize) {
    SampleBuffer made;
    made.rectangle = rectangle;
    made.loPlane = lo;
    made.hiPlane = hi;
    const size_t width = static_cast<size_t>(rectangle.right - rectangle.left);
    const size_t height = static_cast<size_t>(rectangle.bottom - rectangle.top);
    made.rowLength = width * static_cast<size_t>(hi - lo + 1) * sampleSize;
    const size_t padding = static_cast<size_t>(std::max(state.owner->settings.rowPadding, 0));
    made.rowBytes = made.rowLength + (padding + sampleSize - 1) / sampleSize * sampleSize;
    made.bytes = std::move(buffer.spare);
    made.bytes.resize(2 * kBufferGuard + height * made.rowBytes);
    std::fill_n(made.bytes.begin(), kBufferGuard, kGuardByte);
    std::fill_n(made.bytes.end() - static_cast<ptrdiff_t>(kBufferGuard), kBufferGuard, kGuardByte);
    buffer = std::move(made);
    for (size_t row = 0; row < height; row++)
        std::memset(BufferRow(buffer, static_cast<int32_t>(row)) + buffer.rowLength, kGuardByte,
                    buffer.rowBytes - buffer.rowLength);
}

static size_t DocumentOffset(const Document &document, int32_t x, int32_t y) {
    const size_t index =
        static_cast<size_t>(y) * static_cast<size_t>(document.width) + static_cast<size_t>(x);
    return index * static_cast<size_t>(BytesPerSample(document));
}

// Samples as they were before the run: what the filter reads never shows what it has written.
static const uint8_t *SourcePlane(const HostState &state, int32_t plane) {
    const size_t index = static_cast<size_t>(plane);
    if (index < state.originals.size() && !state.originals[index].empty())
        return state.originals[index].data();
    return state.owner->document.planes[index].data();
}

static void FillInputRow(const HostState &state, SampleBuffer &buffer, int32_t y) {
    const Document &document = state.owner->document;
    const size_t offset = DocumentOffset(document, buffer.rectangle.left, y);
    std::vector<const uint8_t *> from;
    for (int32_t plane = buffer.loPlane; plane <= buffer.hiPlane; plane++)
        from.push_back(SourcePlane(state, plane) + offset);
    JoinPixels(BufferRow(buffer, y - buffer.rectangle.top), from.data(), from.size(),
               static_cast<size_t>(buffer.rectangle.right - buffer.rectangle.left),
               static_cast<size_t>(BytesPerSample(document)));
}

static int16_t Refuse(HostState &state, const char *what, const Rectangle &r, int32_t lo, int32_t hi) {
    char text[160];
    std::snprintf(text, sizeof(text), "%s (%d,%d)-(%d,%d) planes %d..%d is out of bounds", what, r.left,
                  r.top, r.right, r.bottom, lo, hi);
    AddViolation(state, text);
    return kParamErr;
}

static bool IsPlaneRange(int32_t lo, int32_t hi, int32_t planes) {
    return lo >= 0 && lo <= hi && hi < planes;
}

static Rectangle ImageRectangle(const HostState &state) {
    return {0, 0, state.owner->document.width, state.owner->document.height};
}

static int16_t ServeMask(HostState &state, const AdvanceCall &call) {
    FilterRecord &record = state.fields.record;
    const Document &document = state.owner->document;
    record.maskData = nullptr;
    record.maskRowBytes = 0;
    if (IsEmpty(call.mask) || document.mask.empty())
        return kNoError;
    if (!Contains(ImageRectangle(state), call.mask))
        return Refuse(state, "maskRect", call.mask, 0, 0);
    MakeBuffer(state, state.mask, call.mask, 0, 0, 1);
    for (int32_t y = call.mask.top; y < call.mask.bottom; y++)
        std::memcpy(BufferRow(state.mask, y - call.mask.top),
                    document.mask.data() + static_cast<size_t>(y) * static_cast<size_t>(document.width) +
                        static_cast<size_t>(call.mask.left),
                    state.mask.rowLength);
    record.maskData = BufferRow(state.mask, 0);
    record.maskRowBytes = static_cast<int32_t>(state.mask.rowBytes);
    return kNoError;
}

static int16_t ServeInput(HostState &state, const AdvanceCall &call) {
    FilterRecord &record = state.fields.record;
    record.inData = nullptr;
    record.inRowBytes = 0;
    if (IsEmpty(call.in))
        return kNoError;
    if (!Contains(ImageRectangle(state), call.in) || !IsPlaneRange(call.inLo, call.inHi, InputPlanes(state)))
        return Refuse(state, "inRect", call.in, call.inLo, call.inHi);
    MakeBuffer(state, state.in, call.in, call.inLo, call.inHi,
               static_cast<size_t>(BytesPerSample(state.owner->document)));
    for (int32_t y = call.in.top; y < call.in.bottom; y++)
        FillInputRow(state, state.in, y);
    record.inData = BufferRow(state.in, 0);
    record.inRowBytes = static_cast<int32_t>(state.in.rowBytes);
    return kNoError;
}

// Neighbours become one, so that a filter which writes row by row leaves one rectangle.
static void NoteWritten(HostState &state, int32_t plane, const Rectangle &r) {
    state.written.resize(state.owner->document.planes.size());
    std::vector<Rectangle> &written = state.written[static_cast<size_t>(plane)];
    if (!written.empty() && written.back().left == r.left && written.back().right == r.right &&
        written.back().bottom == r.top)
        written.back().bottom = r.bottom;
    else if (written.empty() || !Contains(written.back(), r))
        written.push_back(r);
}

// The part of the buffer that lies in the area, from the document as the run has left it.
static void FillFromDocument(const HostState &state, SampleBuffer &buffer, int32_t plane,
                             const Rectangle &area) {
    const Document &document = state.owner->document;
    const Rectangle &whole = buffer.rectangle;
    const Rectangle r = {std::max(area.left, whole.left), std::max(area.top, whole.top),
                         std::min(area.right, whole.right), std::min(area.bottom, whole.bottom)};
    if (IsEmpty(r))
        return;
    const size_t size = static_cast<size_t>(BytesPerSample(document));
    const size_t step = static_cast<size_t>(buffer.hiPlane - buffer.loPlane + 1) * size;
    for (int32_t y = r.top; y < r.bottom; y++)
        CopyRow(BufferRow(buffer, y - whole.top) + static_cast<size_t>(r.left - whole.left) * step +
                    static_cast<size_t>(plane - buffer.loPlane) * size,
                step,
                document.planes[static_cast<size_t>(plane)].data() + DocumentOffset(document, r.left, y),
                size, static_cast<size_t>(r.right - r.left), size);
}

static void PrefillOutput(HostState &state, const AdvanceCall &call) {
    const bool prefill =
        state.owner->settings.prefillOutput.value_or((FilterCaseFlags(state) & kCaseNoPrefill) == 0);
    for (int32_t y = call.out.top; y < call.out.bottom; y++)
        std::memset(BufferRow(state.out, y - call.out.top), kUnwrittenByte, state.out.rowLength);
    for (int32_t plane = call.outLo; plane <= call.outHi; plane++) {
        if (prefill)
            FillFromDocument(state, state.out, plane, call.out);
        else if (static_cast<size_t>(plane) < state.written.size())
            for (const Rectangle &written : state.written[static_cast<size_t>(plane)])
                FillFromDocument(state, state.out, plane, written);
    }
}

static int16_t ServeOutput(HostState &state, const AdvanceCall &call) {
    FilterRecord &record = state.fields.record;
    record.outData = nullptr;
    record.outRowBytes = 0;
    if (IsEmpty(call.out))
        return kNoError;
    if (!Contains(FilterRectangle(*state.owner), call.out) ||
        !IsPlaneRange(call.outLo, call.outHi, OutputPlanes(state)))
        return Refuse(state, "outRect", call.out, call.outLo, call.outHi);
    MakeBuffer(state, state.out, call.out, call.outLo, call.outHi,
               static_cast<size_t>(BytesPerSample(state.owner->document)));
    PrefillOutput(state, call);
    record.outData = BufferRow(state.out, 0);
    record.outRowBytes = static_cast<int32_t>(state.out.rowBytes);
    return kNoError;
}

// Column and plane steps of what was handed out.
static void FillSteps(HostState &state, const AdvanceCall &call) {
    FilterRecord &record = state.fields.record;
    const int32_t size = BytesPerSample(state.owner->document);
    record.inColumnBytes = record.inData ? (call.inHi - call.inLo + 1) * size : 0;
    record.inPlaneBytes = record.inData ? size : 0;
    record.outColumnBytes = record.outData ? (call.outHi - call.outLo + 1) * size : 0;
    record.outPlaneBytes = record.outData ? size : 0;
}

static int16_t ServeRequest(HostState &state, const AdvanceCall &call) {
    const FilterRecord &record = state.fields.record;
    if (state.owner->settings.isCancelled && state.owner->settings.isCancelled())
        return kUserCanceledErr;
    if ((!IsEmpty(call.in) && record.inputRate != kFixedOne) ||
        (!IsEmpty(call.mask) && record.maskRate != kFixedOne) || record.wantLayout != 0) {
        AddViolation(state, "asked for a rate or a layout that this host does not serve");
        return kFilterBadParameters;
    }
    int16_t result = ServeMask(state, call);
    if (result == kNoError)
        result = ServeInput(state, call);
    if (result == kNoError)
        result = ServeOutput(state, call);
    return result;
}

static void ForgetPointers(FilterRecord &record) {
    record.inData = nullptr;
    record.outData = nullptr;
    record.maskData = nullptr;
}

int16_t ServeAdvance(HostState &state) {
    CommitPendingOutput(state);
    DropBuffers(state);
    AdvanceCall call = ReadRequest(state);
    try {
        call.result = ServeRequest(state, call);
    } catch (const std::bad_alloc &) {
        call.result = kMemFullErr;
    }
    if (call.result != kNoError) {
        DropBuffers(state);
        ForgetPointers(state.fields.record);
    }
    FillSteps(state, call);
    state.owner->log.advances.push_back(call);
    return call.result;
}

// By how much of 255 a new sample counts where the host itself keeps the output to the selection.
static void BlendByMask(const Document &document, const uint8_t *oldSample, uint8_t *newSample,
                        uint8_t mask) {
    if (document.depth == 8) {
        *newSample = static_cast<uint8_t>((*oldSample * (255 - mask) + *newSample * mask + 127) / 255);
    } else if (document.depth == 16) {
        uint16_t before, after;
        std::memcpy(&before, oldSample, sizeof(before));
        std::memcpy(&after, newSample, sizeof(after));
        after = std::min(after, kWhite16);
        after = static_cast<uint16_t>((before * (255 - mask) + after * mask + 127) / 255);
        std::memcpy(newSample, &after, sizeof(after));
    } else {
        float before, after;
        std::memcpy(&before, oldSample, sizeof(before));
        std::memcpy(&after, newSample, sizeof(after));
        const float weight = static_cast<float>(mask) / 255.0f;
        after = mask == 0 ? before : before + (after - before) * weight;
        std::memcpy(newSample, &after, sizeof(after));
    }
}

static void CommitPlane(HostState &state, int32_t plane) {
    Document &document = state.owner->document;
    const SampleBuffer &buffer = state.out;
    const size_t size = static_cast<size_t>(BytesPerSample(document));
    const size_t step = static_cast<size_t>(buffer.hiPlane - buffer.loPlane + 1) * size;
    const Rectangle &r = buffer.rectangle;
    for (int32_t y = r.top; y < r.bottom; y++)
        CopyRow(document.planes[static_cast<size_t>(plane)].data() + DocumentOffset(document, r.left, y),
                size, BufferRow(state.out, y - r.top) + static_cast<size_t>(plane - buffer.loPlane) * size,
                step, static_cast<size_t>(r.right - r.left), size);
    NoteWritten(state, plane, r);
}

void CommitPendingOutput(HostState &state) {
    if (state.out.bytes.empty())
        return;
    Document &document = state.owner->document;
    state.clipsOutput = state.fields.record.autoMask && !document.mask.empty();
    state.originals.resize(document.planes.size());
    for (int32_t plane = state.out.loPlane; plane <= state.out.hiPlane; plane++) {
        std::vector<uint8_t> &original = state.originals[static_cast<size_t>(plane)];
        if (original.empty())
            original = document.planes[static_cast<size_t>(plane)];
        CommitPlane(state, plane);
    }
    DropBuffer(state, state.out, "outData");
}

// Only at the end of a run: until then the filter may ask for what it wrote.
void ClipToSelection(HostState &state) {
    Document &document = state.owner->document;
    const size_t size = static_cast<size_t>(BytesPerSample(document));
    for (size_t plane = 0; state.clipsOutput && plane < state.originals.size(); plane++) {
        const std::vector<uint8_t> &original = state.originals[plane];
        for (size_t at = 0; at < original.size(); at += size)
            if (std::memcmp(&original[at], &document.planes[plane][at], size) != 0)
                BlendByMask(document, &original[at], &document.planes[plane][at], document.mask[at / size]);
    }
    state.clipsOutput = false;
}

void RestoreOriginals(HostState &state) {
    for (size_t plane = 0; plane < state.originals.size(); plane++)
        if (!state.originals[plane].empty())
            state.owner->document.planes[plane].swap(state.originals[plane]);
    state.originals.clear();
}

} // namespace host
