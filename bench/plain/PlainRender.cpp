#include "bench/plain/PlainRender.h"

#include "bench/plain/PixelAccess.h"
#include "bench/plain/PlainStamps.h"
#include "engine/image/FixedPoint.h"
#include "render/OutputBase.h"
#include "render/shape/AngleTables.h"
#include "render/shape/ParameterTable.h"
#include "render/stamp/SourceTint.h"
#include "render/stamp/StampLayer.h"

#include <algorithm>
#include <limits>

namespace plain {

namespace {

constexpr int32_t kPhases = 4; // sub-pixel phases per axis

// The stamps that have been needed so far, indexed px × 4 + py, and what they were drawn under.
StampContext gContext;
struct KeptStamp {
    Stamp entries;
    IntRect box; // of their pixels
};
KeptStamp gStars[kPhases * kPhases], gFlares[kPhases * kPhases];

IntRect BoxOf(const Stamp &stamp) {
    IntRect box{0, 0, 0, 0};
    for (const StampEntry &e : stamp)
        box = {std::min<int32_t>(box.left, e.dx), std::min<int32_t>(box.top, e.dy),
               std::max(box.right, e.dx + 1), std::max(box.bottom, e.dy + 1)};
    return box;
}

constexpr int64_t kReach = std::numeric_limits<int16_t>::max() + 1; // no entry's offset gets this far

// `area` as offsets from the place's pixel, as far as an entry can reach.
IntRect AreaInOffsets(const IntRect &area, const StampPlace &place) {
    const auto offset = [](int32_t edge, int32_t origin) {
        return static_cast<int32_t>(std::clamp(int64_t{edge} - origin, -kReach, kReach));
    };
    return IntRect{offset(area.left, place.x), offset(area.top, place.y), offset(area.right, place.x),
                   offset(area.bottom, place.y)};
}

inline Tint TintEntry(const Tint &tint, const StampEntry &entry) {
    return Tint{{Mul(entry.factor[0], tint.channel[0]), Mul(entry.factor[1], tint.channel[1]),
                 Mul(entry.factor[2], tint.channel[2])},
                Mul(tint.value, entry.value)};
}

// Reads, blends and writes back at every entry, so that tiles never show.
template <typename Sample>
void LayEntries(const Stamp &stamp, const StampPlace &place, const Tint &tint, const IntRect &window,
                const ImageBuffer &output) {
    const uint32_t threshold = gFloor / 2;
    for (const StampEntry &entry : stamp) {
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

void LayStamp(const KeptStamp &stamp, const StampPlace &place, const Tint &tint, const IntRect &target,
              const ImageBuffer &output) {
    const IntRect window = AreaInOffsets(target, place);
    if (IsEmptyRect(window) || IsEmptyRect(IntersectRects(stamp.box, window)))
        return;
    if (output.bytesPerSample == 1)
        LayEntries<uint8_t>(stamp.entries, place, tint, window, output);
    else if (output.bytesPerSample == 2)
        LayEntries<uint16_t>(stamp.entries, place, tint, window, output);
    else
        LayEntries<float>(stamp.entries, place, tint, window, output);
}

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

// One render's inputs, as both passes need them.
struct RenderJob {
    const RenderSettings &settings; // clamped
    const LightSourceTableView &lightSources;
    const IntRect &target;
    const ImageBuffer &output;
};

// Lays a set's stamps onto every selected source whose value, its Intensity times `share`, is above the
// floor. A `share` of null leaves the Intensity as it is.
void RunPass(const RenderJob &job, Stamp (*draw)(const StampContext &, int32_t, int32_t),
             const uint32_t *share, KeptStamp *stamps) {
    const uint32_t cutLevel = ThresholdCutLevel(job.settings.threshold);
    for (uint32_t i = 0; i < job.lightSources.count; ++i) {
        const LightSource &source = job.lightSources.records[i];
        const uint32_t value = share ? Mul(source.Intensity, *share) : source.Intensity;
        if (!IsLightSourceSelected(source, cutLevel) || value <= gFloor)
            continue;
        const StampPlace place = PlaceOfSource(source, job.settings.scale);
        KeptStamp &stamp = stamps[place.px * kPhases + place.py];
        if (stamp.entries.empty()) {
            stamp.entries = draw(gContext, place.px, place.py);
            stamp.box = BoxOf(stamp.entries);
        }
        LayStamp(stamp, place, MakeSourceTint(source, job.settings.colorSaturation, value), job.target,
                 job.output);
    }
}

} // namespace

void FreeRenderState() {
    std::fill(std::begin(gStars), std::end(gStars), KeptStamp{});
    std::fill(std::begin(gFlares), std::end(gFlares), KeptStamp{});
    gContext = StampContext{};
}

void RenderEffect(const RenderSettings &settings, const ImageBuffer &source, const IntRect &target,
                  const LightSourceTableView &lightSources, ImageBuffer *output) {
    RenderSettings clamped = settings;
    ClampRenderSettings(&clamped);
    BuildAngleTables();
    const StampContext wanted = MakeStampContext(clamped);
    if (!StarStampsServe(gContext, wanted) || !FlareStampsServe(gContext, wanted))
        FreeRenderState();
    gContext = wanted;
    PrepareOutputBase(source, target, clamped.effectsOnly, output);
    const IntRect area = IntersectRects(target, output->bounds);
    const RenderJob job{clamped, lightSources, area, *output};
    if (clamped.intensity >= 1 || clamped.secondaryIntensity >= 1)
        RunPass(job, DrawStar, nullptr, gStars);
    const double level = clamped.softFlareIntensity / 100.0;
    const uint32_t share = static_cast<uint32_t>(level * level * kFractionOne);
    if (clamped.softFlareIntensity >= 1)
        RunPass(job, DrawFlare, &share, gFlares);
}

} // namespace plain
