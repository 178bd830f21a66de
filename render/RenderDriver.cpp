#include "render/RenderDriver.h"

#include "diag/BufferUsage.h"
#include "engine/image/BandWorkers.h"
#include "engine/image/FixedPoint.h"
#include "render/OutputBase.h"
#include "render/RenderState.h"
#include "render/shape/AngleTables.h"
#include "render/shape/FixedPower.h"
#include "render/shape/ParameterTable.h"
#include "render/stamp/DistanceNeed.h"
#include "render/stamp/SourceTint.h"
#include "render/stamp/StampLayer.h"
#include "render/stamp/StarBuilder.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Several bands for each worker, so that a band full of stars does not keep the others waiting; none lower
// than this.
constexpr int32_t kBandsPerWorker = 8, kLeastBandRows = 32;

// A stamp that is laid more often than this, parts added up, keeps its rows: less often they are not worth
// their memory.
constexpr double kStarsWorthKeeping = 4.0;

// One render's inputs. All workers read it.
struct RenderJob {
    const RenderSettings &settings; // clamped
    const LightSourceTableView &lightSources;
    const std::atomic<uint8_t> &abort;
    IntRect area;   // the target, as far as the output holds it
    IntRect region; // what is going to be rendered with the same stamps
    const ImageBuffer &output;
    uint32_t cutLevel;
    bool drawsStars, drawsFlares;
    uint32_t flareShare;
    int32_t bandRows;
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

// Calls work(place, source, value) for each selected source whose value, its Intensity times `share`, is
// above the floor; in table order. A `share` of null leaves the Intensity as it is. False when aborted.
template <typename Work> bool ForEachLight(const RenderJob &job, const uint32_t *share, Work work) {
    for (uint32_t i = 0; i < job.lightSources.count; ++i) {
        if (job.abort.load(std::memory_order_relaxed) != 0)
            return false;
        const LightSource &source = job.lightSources.records[i];
        if (!IsLightSourceSelected(source, job.cutLevel))
            continue;
        const uint32_t value = share ? Mul(source.Intensity, *share) : source.Intensity;
        if (value > gFloor && !work(PlaceOfSource(source, job.settings.scale), source, value))
            return false;
    }
    return true;
}

// Whether a star at a place may touch the region: no arm goes further than the limits.
bool IsNearRegion(const RenderJob &job, const StampPlace &place) {
    const int64_t reach = std::max(gRenderState.context.limitX, gRenderState.context.limitY) / kPhases + 4;
    return place.x + reach >= job.region.left && place.x - reach < job.region.right &&
           place.y + reach >= job.region.top && place.y - reach < job.region.bottom;
}

// How much of a star at a place lies in the region that its stamp is laid into, 0..1.
double ShareInRegion(const RenderJob &job, const StampPlace &place, const IntRect &box) {
    const auto overlap = [](int64_t from, int64_t to, int64_t first, int64_t end) {
        return static_cast<double>(std::max<int64_t>(std::min(to, end) - std::max(from, first), 0));
    };
    const double width =
        overlap(int64_t{box.left} + place.x, int64_t{box.right} + place.x, job.region.left, job.region.right);
    const double height =
        overlap(int64_t{box.top} + place.y, int64_t{box.bottom} + place.y, job.region.top, job.region.bottom);
    return width * height / (double{1.0} * (box.right - box.left) * (box.bottom - box.top));
}

// Builds the stamps of all the phases that are needed. Those that are laid often keep their rows, and need
// their whole tables. False when aborted or without a builder.
bool PrepareStars(const RenderJob &job) {
    double stars[kStampsPerSet] = {};
    DistanceNeed need{};
    const bool prepared =
        ForEachLight(job, nullptr, [&](const StampPlace &place, const LightSource &, uint32_t) {
            if (!gStampBuilders.star)
                return false;
            if (!IsNearRegion(job, place))
                return true;
            const int32_t phase = place.px * kPhases + place.py;
            const StarStamp &stamp = NeedStarStamp(place.px, place.py);
            if (stamp.count > 0)
                stars[phase] += ShareInRegion(job, place, stamp.box);
            if (stars[phase] > kStarsWorthKeeping)
                gRenderState.stars.stamps[phase].keepsRows = true;
            NeedDistances(stamp.keepsRows ? kAllDistances : DistancesTo(job.area, place), &need);
            return true;
        });
    return prepared && FillTables(need, job.abort, &gRenderState.stars.tables);
}

bool PrepareFlares(const RenderJob &job) {
    return ForEachLight(job, &job.flareShare, [&](const StampPlace &place, const LightSource &, uint32_t) {
        if (!gStampBuilders.flare)
            return false;
        NeedFlareStamp(place.px, place.py);
        return true;
    });
}

void DrawStars(const RenderJob &job, const BandTarget &target) {
    ForEachLight(job, nullptr, [&](const StampPlace &place, const LightSource &source, uint32_t value) {
        LayStar(target, gRenderState.stars.stamps[place.px * kPhases + place.py], gRenderState.stars.tables,
                place, MakeSourceTint(source, job.settings.colorSaturation, value));
        return true;
    });
}

void DrawFlares(const RenderJob &job, const BandTarget &target) {
    ForEachLight(job, &job.flareShare,
                 [&](const StampPlace &place, const LightSource &source, uint32_t value) {
                     const FlareStamp &flare = gRenderState.flares.stamps[place.px * kPhases + place.py];
                     if (flare.built)
                         LayFlare(target, flare, gRenderState.flares.values, place,
                                  MakeSourceTint(source, job.settings.colorSaturation, value));
                     return true;
                 });
}

// All stars, then all flares, onto one band.
void DrawBand(void *data, int32_t band, int32_t worker) {
    const RenderJob &job = *static_cast<const RenderJob *>(data);
    const int32_t top = job.area.top + band * job.bandRows;
    const IntRect area = {job.area.left, top, job.area.right, std::min(top + job.bandRows, job.area.bottom)};
    RoomMap room{job.output, area};
    const BandTarget target{gRenderState.context,
                            job.output,
                            area,
                            job.abort,
                            gRenderState.colors.colors + size_t{kRainbowStates} * static_cast<size_t>(worker),
                            &room};
    if (job.drawsStars)
        // cppcheck-suppress danglingTemporaryLifetime ; the sum is a pointer into the job's array
        DrawStars(job, target);
    if (job.drawsFlares)
        DrawFlares(job, target);
    FreeRoomMap(&room);
}

void DrawBands(RenderJob *job, const WorkerThreads &threads) {
    const int32_t rows = job->area.bottom - job->area.top;
    const int32_t wanted = threads.count == 1 ? 1 : threads.count * kBandsPerWorker;
    job->bandRows = std::max((rows + wanted - 1) / wanted, kLeastBandRows);
    ForEachBand((rows + job->bandRows - 1) / job->bandRows, threads, DrawBand, job);
}

// The number of workers that have colours: fewer than wanted when there is not enough memory for each, 0 when
// there is not even enough for one.
int32_t NeedColors(int32_t wanted) {
    ColorTables &kept = gRenderState.colors;
    for (int32_t workers = wanted; workers > kept.workers; workers /= 2)
        if (void *block = CountedAlloc(ColorBytes(workers))) {
            FreeColors(&kept);
            kept = {workers, static_cast<BlendColor *>(block)};
        }
    return std::min(wanted, kept.workers);
}

bool DrawEffect(RenderJob *job, const WorkerThreads &threads) {
    const bool starsReady = !job->drawsStars || PrepareStars(*job);
    const bool flaresReady = starsReady && (!job->drawsFlares || PrepareFlares(*job));
    if (!starsReady)
        return false;
    job->drawsFlares = job->drawsFlares && flaresReady;
    const int32_t given = NeedColors(std::clamp(threads.count, 1, kMaxBandWorkers));
    if (given == 0) {
        ReportLowMemory();
        return false;
    }
    DrawBands(job, {given, threads.start, threads.join});
    return flaresReady && job->abort.load(std::memory_order_relaxed) == 0;
}

} // namespace

bool RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, const std::atomic<uint8_t> &abort,
                  ImageBuffer *output, const WorkerThreads &threads) {
    RenderSettings clamped = settings;
    ClampRenderSettings(&clamped);
    BuildAngleTables();
    PrepareCoveragePower();
    StampContext wanted = MakeStampContext(clamped);
    wanted.needsTables = !LaysByGlow(wanted, *output);
    UpdateStamps(wanted);
    gRenderState.abort = &abort;
    if (!PrepareOutputBase(source, target, clamped.effectsOnly, output))
        return false;
    const double flareLevel = clamped.softFlareIntensity / 100.0;
    RenderJob job{clamped, lightSources, abort, IntersectRects(target, output->bounds),
                  // The final render goes on to the rest of the image, a preview may not.
                  gPreciseMode ? source.bounds : target, *output, ThresholdCutLevel(clamped.threshold),
                  clamped.intensity >= 1 || clamped.secondaryIntensity >= 1, clamped.softFlareIntensity >= 1,
                  static_cast<uint32_t>(flareLevel * flareLevel * kFractionOne), 0};
    return DrawEffect(&job, threads);
}
