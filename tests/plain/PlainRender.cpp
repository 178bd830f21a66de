#include "tests/plain/PlainRender.h"

#include "engine/FixedPoint.h"
#include "render/AngleTables.h"
#include "render/OutputBase.h"
#include "render/SourceTint.h"
#include "tests/plain/PixelAccess.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace plain {

namespace {

constexpr int64_t kReach = std::numeric_limits<int16_t>::max() + 1; // no entry's offset gets this far

// `area` as offsets from the place's pixel, as far as an entry can reach.
IntRect AreaInOffsets(const IntRect &area, const StampPlace &place) {
    const auto offset = [](int32_t edge, int32_t origin) {
        return static_cast<int32_t>(std::clamp(int64_t{edge} - origin, -kReach, kReach));
    };
    return IntRect{offset(area.left, place.x), offset(area.top, place.y), offset(area.right, place.x),
                   offset(area.bottom, place.y)};
}

Tint TintEntry(const Tint &tint, const StampEntry &entry) {
    return Tint{{Mul(entry.factor[0], tint.channel[0]), Mul(entry.factor[1], tint.channel[1]),
                 Mul(entry.factor[2], tint.channel[2])},
                Mul(tint.value, entry.value)};
}

// Reads, blends and writes back at every entry, so that tiles never show.
template <typename Sample>
void LayEntries(const StarStamp &stamp, const StampPlace &place, const Tint &tint, const IntRect &window,
                const ImageBuffer &output) {
    const uint32_t threshold = gFloor / 2;
    for (int32_t i = 0; i < stamp.count; ++i) {
        const StampEntry &entry = stamp.entries[i];
        if (!RectContains(window, entry.dx, entry.dy))
            continue;
        const Tint source = TintEntry(tint, entry);
        if (Mul(LargestChannel(source.channel), source.value) < threshold)
            continue;
        const int64_t row = int64_t{place.y} + entry.dy - output.bounds.top;
        const int64_t index = row * output.width + (int64_t{place.x} + entry.dx - output.bounds.left);
        WorkingPixel pixel = ReadPixel<Sample>(output, index);
        BlendScreen(source, &pixel);
        WritePixel<Sample>(pixel, output, index);
    }
}

} // namespace

bool LayStamp(StampSet *set, const StampPlace &place, const Tint &tint, const IntRect &target,
              ImageBuffer *output) {
    if (!set->build)
        return false;
    StarStamp &stamp = set->stamps[place.px * kPhases + place.py];
    if (stamp.count == 0)
        set->build(&stamp, place.px, place.py);
    const IntRect box{stamp.minX, stamp.minY, stamp.maxX, stamp.maxY};
    const IntRect window = AreaInOffsets(IntersectRects(target, output->bounds), place);
    if (IsEmptyRect(window) || IsEmptyRect(IntersectRects(box, window)))
        return true;
    switch (output->bytesPerSample) {
    case 1:
        LayEntries<uint8_t>(stamp, place, tint, window, *output);
        break;
    case 2:
        LayEntries<uint16_t>(stamp, place, tint, window, *output);
        break;
    default:
        LayEntries<float>(stamp, place, tint, window, *output);
    }
    return true;
}

namespace {

bool BuildStarStamp(StarStamp *stamp, int32_t px, int32_t py) {
    return DrawStar(gRenderState.context, stamp, px, py);
}

bool BuildFlareStamp(StarStamp *stamp, int32_t px, int32_t py) {
    return DrawFlare(gRenderState.context, stamp, px, py);
}

void EmptySet(StampSet *set) {
    for (StarStamp &stamp : set->stamps)
        EmptyStamp(&stamp);
}

void FreeSet(StampSet *set) {
    for (StarStamp &stamp : set->stamps)
        FreeStamp(&stamp);
}

} // namespace

RenderState gRenderState = {StampContext{}, StampSet{{}, BuildStarStamp}, StampSet{{}, BuildFlareStamp}};

void UpdateStamps(const RenderSettings &settings) {
    const StampContext wanted = MakeStampContext(settings);
    if (!StarStampsServe(gRenderState.context, wanted))
        EmptySet(&gRenderState.stars);
    if (!FlareStampsServe(gRenderState.context, wanted))
        EmptySet(&gRenderState.flares);
    gRenderState.context = wanted;
}

void ResetRenderState() {
    EmptySet(&gRenderState.stars);
    EmptySet(&gRenderState.flares);
    ResetSpikeProfile();
    ResetFlareValues();
    gRenderState.context = StampContext{};
}

void FreeRenderState() {
    ResetRenderState();
    FreeSet(&gRenderState.stars);
    FreeSet(&gRenderState.flares);
}

namespace {

// One render's inputs, as both passes need them.
struct RenderJob {
    const RenderSettings &settings; // clamped
    const LightSourceTableView &lightSources;
    const std::atomic<uint8_t> &abort;
    const IntRect &target;
    ImageBuffer *output;
    uint32_t cutLevel;
};

// A document pixel's place at a zoom. The 3 is part of the design; a zoom so high that it leaves nothing to
// divide by counts as 1.
int32_t ScalePosition(int32_t position, double scale) {
    const int64_t divisor = std::max<int64_t>(static_cast<int64_t>(1250000.0 / scale) - 3, 1);
    const int64_t scaled = (int64_t{position} * 12500 + 6250) / divisor;
    return static_cast<int32_t>(std::clamp<int64_t>(scaled, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

// At full size the source's own pixel and phases, at any other zoom phase 0 of its scaled pixel.
StampPlace PlaceOfSource(const LightSource &source, double scale) {
    if (scale == 100.0)
        return StampPlace{source.X, source.Y, source.XQuarter & (kPhases - 1),
                          source.YQuarter & (kPhases - 1)};
    return StampPlace{ScalePosition(source.X, scale), ScalePosition(source.Y, scale), 0, 0};
}

// Lays a set's stamp onto every selected source whose value, its Intensity times `share`, is above the floor.
// A `share` of null leaves the Intensity as it is. False when aborted or without a builder.
bool RunPass(const RenderJob &job, StampSet *set, const uint32_t *share) {
    for (uint32_t i = 0; i < job.lightSources.count; ++i) {
        if (job.abort.load(std::memory_order_relaxed) != 0)
            return false;
        const LightSource &source = job.lightSources.records[i];
        if (!IsLightSourceSelected(source, job.cutLevel))
            continue;
        const uint32_t value = share ? Mul(source.Intensity, *share) : source.Intensity;
        if (value <= gFloor)
            continue;
        const Tint tint = MakeSourceTint(source, job.settings.colorSaturation, value);
        if (!LayStamp(set, PlaceOfSource(source, job.settings.scale), tint, job.target, job.output))
            return false;
    }
    return true;
}

bool RunStarPass(const RenderJob &job) {
    if (job.settings.intensity < 1 && job.settings.secondaryIntensity < 1)
        return true;
    return RunPass(job, &gRenderState.stars, nullptr);
}

bool RunFlarePass(const RenderJob &job) {
    if (job.settings.softFlareIntensity < 1)
        return true;
    const double level = job.settings.softFlareIntensity / 100.0;
    const uint32_t share = static_cast<uint32_t>(level * level * kFractionOne);
    return RunPass(job, &gRenderState.flares, &share);
}

} // namespace

bool RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, const std::atomic<uint8_t> &abort,
                  ImageBuffer *output) {
    RenderSettings clamped = settings;
    ClampRenderSettings(&clamped);
    BuildAngleTables();
    UpdateStamps(clamped);
    if (!PrepareOutputBase(source, target, clamped.effectsOnly, output))
        return false;
    const RenderJob job{clamped, lightSources, abort, target, output, ThresholdCutLevel(clamped.threshold)};
    return RunStarPass(job) && RunFlarePass(job);
}

} // namespace plain
