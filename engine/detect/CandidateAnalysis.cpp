#include "engine/detect/CandidateAnalysis.h"

#include "engine/detect/AheadScan.h"
#include "engine/detect/FloodFill.h"
#include "engine/detect/RadialProfile.h"
#include "engine/detect/RadiusRefinement.h"
#include "engine/detect/SpotMemo.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/LightSourceTable.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kRecenterings = 12;
constexpr double kRecenterTolerance = 1.2; // in deviations of the radii
constexpr double kFinalTolerance = 0.75;

struct Pixel {
    int32_t x, y;
};

bool IsLocalMaximum(const BandPicture &image, Pixel at) {
    const uint32_t brightness = PixelBrightness(FetchPixel(image, at.x, at.y));
    NoteRows(image, at.y - 1, at.y + 1);
    for (const DirectionStep &step : kDirectionSteps)
        // Pixels outside the bounds have brightness 0 and never count.
        if (PixelBrightness(FetchPixel(image, at.x + step.dx, at.y + step.dy)) > brightness)
            return false;
    return true;
}

bool IsAlreadyFound(const LightSourceTable &table, Pixel at) {
    return IsInsideLightSource(table, at.x, at.y);
}

// Measures the profile at a pixel, takes a flat area out of detection, and replaces radii that stand out by
// more than `tolerance` deviations. Returns the deviation before the replacement, -1.0 when there is no
// radius.
double MeasureCleanProfile(WorkerContext *worker, Pixel at, double tolerance, RadialProfile *profile) {
    const uint32_t state = worker->picture.state;
    if (!RecallProfile(*worker, at.x, at.y, state, profile)) {
        const PixelSample reference = FetchPixel(worker->picture, at.x, at.y);
        if (MeasureProfile(worker->picture, at.x, at.y, profile))
            RememberProfile(*worker, at.x, at.y, state, *profile);
        else
            FillFlatArea(worker, at.x, at.y, reference);
    }
    const double deviation = MeasureProfileStatistics(0.0, profile).deviation;
    MeasureProfileStatistics(deviation * tolerance, profile);
    return deviation;
}

// Where the profile at a pixel says the centre is: the nearest whole pixel. A step out of the bounds is not
// taken.
MeasuredPixel MeasureStep(WorkerContext *worker, Pixel at) {
    const IntRect &bounds = worker->picture.bounds;
    MeasuredPixel step{};
    step.state = worker->picture.state;
    RadialProfile profile;
    MeasureCleanProfile(worker, at, kRecenterTolerance, &profile);
    LightSourcePosition center;
    step.hasCenter = FindProfileCenter(profile, at.x, at.y, &center);
    if (!step.hasCenter)
        return step;
    const LightSourcePosition nearest = NearestWholePixel(center);
    if (RectContains(bounds, center.X, center.Y) && RectContains(bounds, nearest.X, nearest.Y)) {
        step.dx = nearest.X - at.x;
        step.dy = nearest.Y - at.y;
    }
    return step;
}

MeasuredPixel StepFrom(WorkerContext *worker, Pixel at) {
    MeasuredPixel *entry = MemoEntry(*worker, at.x, at.y);
    if (!entry)
        return MeasureStep(worker, at);
    if (entry->state != worker->picture.state)
        *entry = MeasureStep(worker, at);
    return *entry;
}

// Moves to the centre that the profiles point to, until it stays. False when the spot has no centre. The step
// after the last move is measured too: that may take a flat area out of detection.
bool Recenter(WorkerContext *worker, Pixel *at) {
    MeasuredPixel step = StepFrom(worker, *at);
    for (int32_t i = 0; i < kRecenterings; ++i) {
        if (!step.hasCenter)
            return false;
        if (step.dx == 0 && step.dy == 0)
            break;
        *at = Pixel{at->x + step.dx, at->y + step.dy};
        step = StepFrom(worker, *at);
    }
    return true;
}

bool IsRefused(const WorkerContext &worker, Pixel at) {
    const MeasuredPixel *entry = MemoEntry(worker, at.x, at.y);
    return entry && entry->isRefused && entry->state == worker.picture.state;
}

// `state` is the picture's when the spot was measured.
void RememberRefusal(const WorkerContext &worker, Pixel at, uint32_t state) {
    MeasuredPixel *entry = MemoEntry(worker, at.x, at.y);
    if (entry && entry->state == state)
        entry->isRefused = 1;
}

bool PassesPreCheck(WorkerContext *worker, Pixel *at) {
    return IsLocalMaximum(worker->picture, *at) && !IsAlreadyFound(worker->table, *at) &&
           Recenter(worker, at) && !IsAlreadyFound(worker->table, *at) && !IsRefused(*worker, *at);
}

// 0 when no radius is above 0.
double MeanRadius(const RadialProfile &profile) {
    double sum = 0.0;
    int32_t count = 0;
    for (const float radius : profile.radii)
        if (radius > 0) {
            sum += radius;
            ++count;
        }
    return count == 0 ? 0.0 : sum / count;
}

// Measures the spot at a recentred pixel: mean radius and centre. False when it is no light source.
bool MeasureSpot(WorkerContext *worker, Pixel at, LightSourcePosition *center, double *radius) {
    RadialProfile profile;
    if (MeasureCleanProfile(worker, at, kFinalTolerance, &profile) == -1.0)
        return false;
    *radius = MeanRadius(profile);
    return *radius > 0.0 && *radius <= kLargestRadius && FindProfileCenter(profile, at.x, at.y, center);
}

// Mean brightness of a ring, truncated; false when it cannot be measured.
bool MeasureRingMean(const WorkerContext &worker, int32_t index, const LightSourcePosition &center,
                     int32_t *mean) {
    ShapeStatistics statistics;
    if (index >= worker.ringCount ||
        !worker.rings[index].sample(&worker.rings[index], worker.picture, center, &statistics))
        return false;
    // Marked pixels can lift a mean above the signed range; it then wraps.
    *mean = static_cast<int32_t>(static_cast<int64_t>(statistics.mean));
    return true;
}

// Brightness fraction of a spot: the level inside, twice squared, and the less the smaller the radius.
uint32_t MeasureBrightness(const WorkerContext &worker, int32_t index, const LightSourcePosition &center,
                           double radius) {
    uint32_t level = kFullIntensity;
    double contrast;
    if (MeasureContrast(worker.disks, worker.diskCount, index, worker.picture, center, &contrast))
        level = static_cast<uint32_t>(contrast) << 8;
    const uint32_t squared = Mul(level, level);
    const double size = std::sqrt(radius / kLargestRadius);
    if (size >= 1)
        return Mul(squared, squared);
    const auto factor = static_cast<uint32_t>(std::min(size * 4294967296.0 + 0.5, 4294967295.0));
    const uint32_t scaled = Mul(factor, squared);
    return Mul(scaled, scaled);
}

uint32_t ColorWeight(uint32_t channel, uint32_t largest) {
    if (largest == 0)
        return kFractionOne;
    return static_cast<uint32_t>(std::min<uint64_t>((uint64_t{channel} << 32) / largest, kFractionOne));
}

} // namespace

bool PassesRingContrast(const WorkerContext &worker, const LightSourcePosition &center, double radius) {
    if (!RectContains(worker.picture.bounds, center.X, center.Y))
        return false;
    const auto k = static_cast<int32_t>(radius * 4 + 0.5);
    const int32_t d = k < 24 ? k / 5 + 2 : k / 9 + 4;
    if (k < d)
        return true;
    int32_t inside, outside, farOutside;
    if (!MeasureRingMean(worker, k - d, center, &inside) ||
        !MeasureRingMean(worker, k + d + 3, center, &outside) ||
        !MeasureRingMean(worker, k + d + 11, center, &farOutside))
        return false;
    const int64_t darkest = std::min(outside, farOutside);
    const int64_t brightest = static_cast<int32_t>(worker.picture.maxBrightness);
    if ((brightest - inside) * 11 < (brightest - darkest) * 10)
        return true;
    return k < 10 && (inside - darkest) * (10 - k) > brightest;
}

void MeasureColorLevels(const WorkerContext &worker, const LightSourcePosition &center, double radius,
                        uint32_t levels[3]) {
    const auto k = static_cast<int32_t>(radius * 4 + 0.5);
    uint32_t color[3] = {kFullIntensity, kFullIntensity, kFullIntensity};
    if (k < worker.ringCount)
        SampleRingColor(&worker.rings[k], worker.picture, center, color);
    const uint32_t brightness = MeasureBrightness(worker, k, center, radius);
    const uint32_t largest = std::max({color[0], color[1], color[2]});
    for (int i = 0; i < 3; ++i)
        levels[i] = Mul(ColorWeight(color[i], largest), brightness);
}

void AnalyzeCandidate(WorkerContext *worker, int32_t x, int32_t y) {
    Pixel at{x, y};
    LightSourcePosition center;
    double radius;
    if (!PassesPreCheck(worker, &at))
        return;
    const uint32_t state = worker->picture.state;
    if (!MeasureSpot(worker, at, &center, &radius) || !PassesRingContrast(*worker, center, radius) ||
        !RefineRadius(*worker, &center, &radius)) {
        RememberRefusal(*worker, at, state);
        return;
    }
    FoundLight light{center, static_cast<float>(radius * radius), {}, false};
    MeasureColorLevels(*worker, center, radius, light.levels);
    const BandPicture &image = worker->picture;
    if (!RectContains(image.bounds, center.X, center.Y))
        return;
    light.enabled = IsPixelSelected(FetchPixel(image, center.X, center.Y));
    const HostResult result = AddFoundLight(light, worker);
    if (result != kNoError)
        worker->result = result;
}
