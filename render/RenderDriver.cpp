#include "render/RenderDriver.h"

#include "engine/FixedPoint.h"
#include "render/AngleTables.h"
#include "render/OutputBase.h"
#include "render/RenderState.h"
#include "render/SourceTint.h"
#include "render/StampLayer.h"

#include <algorithm>
#include <cmath>
#include <limits>

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
