#include "render/stamp/StampLayer.h"

#include "engine/image/FixedPoint.h"
#include "render/stamp/GlowLayer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int64_t kReach = std::numeric_limits<int16_t>::max() + 1; // no pixel's offset gets this far
constexpr int32_t kQuarters = 4, kTenths = 10;
constexpr int32_t kRowsPerPoll = 64;
constexpr uint32_t kBrightest = 0xFFFFFFFF;
constexpr double kOpaqueStrengths = 256.0; // how often the least opaque strength fits the largest
constexpr uint32_t kHalfByteStep = 32896;  // working values; 65793 of them are one step of a byte

// `area` as offsets from the place's pixel, as far as a stamp can reach.
IntRect AreaInOffsets(const IntRect &area, const StampPlace &place) {
    const auto offset = [](int32_t edge, int32_t origin) {
        return static_cast<int32_t>(std::clamp(int64_t{edge} - origin, -kReach, kReach));
    };
    return IntRect{offset(area.left, place.x), offset(area.top, place.y), offset(area.right, place.x),
                   offset(area.bottom, place.y)};
}

// Products of colour and value below it change nothing: they are not drawn, or the sample stays what it is. A
// product of at most half a byte's step moves a byte's working value by less than that, and by less than 3
// downwards, so that it is rounded back to the same byte. In fast mode even a product of 0 moves it.
uint32_t ThresholdOf(const StampContext &context, const ImageBuffer &output) {
    const uint32_t floor = std::max(context.floor / 2, 1u);
    return context.preciseMode && output.bytesPerSample == 1 ? std::max(floor, kHalfByteStep + 1) : floor;
}

uint32_t WholeLeastGlow(float strength) {
    return static_cast<uint32_t>(std::min<double>(LeastGlow(strength * 255.0f), kBrightest));
}

// Grey moves by the mean of the channels.
void BeginGlow(Laying *laying) {
    const ImageBuffer &output = laying->target.output;
    GlowBatch &glow = laying->glow;
    float *const strength = laying->planeStrength;
    glow.planes = output.colorPlanes;
    for (int32_t c = 0; c < 3; ++c) {
        glow.samples[c] = output.planes[c];
        glow.strength[c] = strength[c] = static_cast<float>(
            laying->tint.channel[c] * 0x1p-32 * (laying->tint.value * 0x1p-32) * kOpaqueStrengths);
    }
    if (glow.planes == 1)
        strength[0] = strength[1] = strength[2] = (strength[0] + strength[1] + strength[2]) / 3.0f;
    laying->leastValue = WholeLeastGlow(std::max({strength[0], strength[1], strength[2]}));
    laying->faintestValue = WholeLeastGlow(static_cast<float>(kOpaqueStrengths));
    RefreshRoomMap(laying->target.room);
}

void MeasureLeastValues(uint32_t threshold, Laying *laying) {
    laying->leastValue =
        LeastVisibleValue(LargestChannel(laying->tint.channel), laying->tint.value, threshold);
    laying->faintestValue = LeastVisibleValue(kBrightest, kBrightest, threshold);
}

Laying BeginLaying(const BandTarget &target, const StampPlace &place, const Tint &tint) {
    Laying laying{target, place, tint, AreaInOffsets(target.band, place), 0, 0, false, {}, {}, {}, nullptr};
    const uint32_t threshold = ThresholdOf(target.context, target.output);
    laying.glows = LaysByGlow(target.context, target.output);
    if (laying.glows)
        BeginGlow(&laying);
    else
        MeasureLeastValues(threshold, &laying);
    laying.blend.colors = target.colors;
    laying.blend.tintValue = tint.value;
    laying.blend.leastValue = laying.leastValue;
    laying.blend.threshold = threshold;
    laying.blend.precise = target.context.preciseMode;
    laying.blend.planes = target.output.colorPlanes;
    laying.blendPiece = gRenderPath->blend[target.output.bytesPerSample / 2];
    return laying;
}

// Blends values into the row at offset `row` from the offset `from` on.
void BlendRow(const Laying &laying, int32_t row, int32_t from, int32_t count, const uint32_t *values,
              const uint16_t *states) {
    const ImageBuffer &output = laying.target.output;
    const SamplePlace place = FindSample(laying, row, from);
    BlendPiece piece = laying.blend;
    piece.values = values;
    piece.states = states;
    piece.count = count;
    piece.room = place.room;
    for (int32_t plane = 0; plane < output.colorPlanes; ++plane)
        piece.samples[plane] = output.planes[plane] + place.index * output.bytesPerSample;
    laying.blendPiece(piece);
}

// The colours of every state that occurs in the window.
void PrepareColors(const Laying &laying, const StarTables &tables, const Tint &tint) {
    const auto [nearest, furthest] = DistancesTo(laying.target.band, laying.place);
    const auto [first, last] = StatesBetween(tables.rainbow, nearest, furthest);
    gRenderPath->makeColors({tables.factors + first, last + 1 - first, tint.channel, laying.blend.precise},
                            laying.target.colors + first);
}

void LayArm(const Laying &laying, const Arm &arm, const PixelRange &walked, const uint16_t *stateOfDistance) {
    uint32_t values[kRowRoom];
    uint16_t states[kRowRoom];
    const IntRect &window = laying.window;
    const PixelRange rows = ArmRows(arm, walked);
    const int32_t last = std::min(rows.to, window.bottom - 1);
    for (int32_t row = std::max(rows.from, window.top); row <= last && !IsAborted(laying); ++row) {
        const PixelRange span = SpanAbove(arm, walked, row, laying.leastValue);
        ForEachPiece(std::max(span.from, window.left), std::min(span.to, window.right - 1),
                     [&](int32_t from, int32_t count) {
                         gRenderPath->fillArm({&arm, stateOfDistance, laying.blend.precise, row, from, count},
                                              values, states);
                         BlendRow(laying, row, from, count, values, states);
                     });
    }
}

void LayKeptArm(const Laying &laying, const Arm &arm, const PixelRange &walked, const KeptArm &kept) {
    const IntRect &window = laying.window;
    const PixelRange rows = ArmRows(arm, walked);
    const int32_t last = std::min({rows.to, kept.range.to, window.bottom - 1});
    for (int32_t row = std::max({rows.from, kept.range.from, window.top}); row <= last && !IsAborted(laying);
         ++row) {
        const KeptRow *keptRow = kept.rows + (row - kept.range.from);
        const int32_t end = keptRow->from + static_cast<int32_t>(keptRow[1].first - keptRow->first);
        const int32_t from = std::max(keptRow->from, window.left), to = std::min(end, window.right);
        const uint32_t first = keptRow->first + static_cast<uint32_t>(from - keptRow->from);
        if (from < to)
            BlendRow(laying, row, from, to - from, kept.values + first, kept.states + first);
    }
}

// Half the width of a flare's row, in pixels, as far as it can show; below 0 the row does not.
int32_t FlareHalfWidth(const FlareStamp &flare, double reach, int32_t row) {
    const double across = reach * reach - double{1.0} * row * row;
    if (across < 0.0)
        return -1;
    return std::min(static_cast<int32_t>(std::sqrt(across)) + 2, flare.rings);
}

void LayFlareRow(const Laying &laying, const FlareStamp &flare, const ValueTable &values, int32_t row,
                 int32_t halfWidth) {
    uint32_t row_values[kRowRoom];
    ForEachPiece(std::max(-halfWidth, laying.window.left), std::min(halfWidth, laying.window.right - 1),
                 [&](int32_t from, int32_t count) {
                     gRenderPath->fillFlare({&flare, &values, row, from, count}, row_values);
                     if (flare.centreIsForced && row == 0 && from <= 0 && from + count > 0)
                         row_values[-from] = flare.centre;
                     BlendRow(laying, row, from, count, row_values, nullptr);
                 });
}

} // namespace

// With the glow nothing is hidden that moves a byte by half a step.
bool LaysByGlow(const StampContext &context, const ImageBuffer &output) {
    return gRenderPath->blendGlow && context.preciseMode && output.bytesPerSample == 1 &&
           ThresholdOf(context, output) == kHalfByteStep + 1;
}

DistanceRange DistancesTo(const IntRect &area, const StampPlace &place) {
    constexpr int32_t kMore = kRowRoom - kRowPiece + 2; // pixels
    const auto [left, top, right, bottom] = AreaInOffsets(area, place);
    const int32_t nearX = std::max({left, -right, kMore}) - kMore;
    const int32_t nearY = std::max({top, -bottom, kMore}) - kMore;
    const int32_t farX = std::max(std::abs(left), std::abs(right)) + kMore;
    const int32_t farY = std::max(std::abs(top), std::abs(bottom)) + kMore;
    return {MeasureDistance(nearX * kQuarters, nearY * kQuarters),
            MeasureDistance(farX * kQuarters, farY * kQuarters)};
}

uint32_t LeastVisibleValue(uint32_t largest, uint32_t tintValue, uint32_t threshold) {
    uint32_t low = 0, high = 0xFFFFFFFFu;
    while (low < high) { // products do not fall when a factor grows
        const uint32_t middle = low + (high - low) / 2;
        if (Mul(largest, Mul(tintValue, middle)) >= threshold)
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

void LayStar(const BandTarget &target, const StarStamp &stamp, const StarTables &tables,
             const StampPlace &place, const Tint &tint) {
    const IntRect window = AreaInOffsets(target.band, place);
    if (IsEmptyRect(window) || IsEmptyRect(IntersectRects(stamp.box, window)))
        return;
    const Laying laying = BeginLaying(target, place, tint);
    bool prepared = false;
    for (int32_t i = 0; i < stamp.count; ++i) {
        const Arm &arm = stamp.arms[i];
        if (target.abort.load(std::memory_order_relaxed) != 0)
            return;
        if (IsEmptyRect(IntersectRects(arm.box, window)))
            continue;
        const PixelRange walked = WalkAbove(arm, laying.leastValue);
        if (walked.from > walked.to)
            continue;
        if (!prepared && !laying.glows)
            PrepareColors(laying, tables, tint);
        prepared = true;
        const ArmFilling filling = {
            &arm,         tables.stateOfDistance, laying.blend.precise, laying.faintestValue,
            laying.glows, RainbowOf(tables),      target.abort};
        const bool isKept = stamp.keepsRows && stamp.kept && KeepArm(filling, &stamp.kept[i]);
        if (laying.glows)
            isKept ? LayKeptGlow(laying, tables, arm, walked, stamp.kept[i])
                   : LayGlowingArm(laying, tables, arm, walked);
        else
            isKept ? LayKeptArm(laying, arm, walked, stamp.kept[i])
                   : LayArm(laying, arm, walked, tables.stateOfDistance);
    }
}

void LayFlare(const BandTarget &target, const FlareStamp &flare, const ValueTable &values,
              const StampPlace &place, const Tint &tint) {
    const IntRect rings = {-flare.rings, -flare.rings, flare.rings + 1, flare.rings + 1};
    if (IsEmptyRect(IntersectRects(rings, AreaInOffsets(target.band, place))))
        return;
    const Laying laying = BeginLaying(target, place, tint);
    if (laying.glows)
        return LayGlowingFlare(laying, flare, values);
    constexpr RainbowFactors kUntinted = {{kFractionOne, kFractionOne, kFractionOne}};
    gRenderPath->makeColors({&kUntinted, 1, tint.channel, laying.blend.precise}, target.colors);
    const double reach = ReachOfLevel(values, laying.leastValue) / double{kTenths * kQuarters} + 1.0;
    const int32_t first = std::max(-flare.rings, laying.window.top);
    const int32_t last = std::min(flare.rings, laying.window.bottom - 1);
    for (int32_t row = first; row <= last; ++row) {
        if ((row - first) % kRowsPerPoll == 0 && target.abort.load(std::memory_order_relaxed) != 0)
            return;
        const int32_t halfWidth = FlareHalfWidth(flare, reach, row);
        if (halfWidth >= 0)
            LayFlareRow(laying, flare, values, row, halfWidth);
    }
}
