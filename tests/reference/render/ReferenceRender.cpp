#include "tests/reference/render/ReferenceRender.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>

namespace reference {

namespace {

constexpr uint32_t kOne = 4294967294u;

int64_t IndexOf(const ImageBuffer &image, int64_t x, int64_t y) {
    return (y - image.bounds.top) * (image.bounds.right - image.bounds.left) + (x - image.bounds.left);
}

void CopyBase(const ImageBuffer &image, const IntRect &target, bool blackColors, ImageBuffer *output) {
    const size_t bytes = image.bytesPerSample;
    for (int32_t y = std::max(target.top, image.bounds.top); y < std::min(target.bottom, image.bounds.bottom);
         ++y)
        for (int32_t x = std::max(target.left, image.bounds.left);
             x < std::min(target.right, image.bounds.right); ++x)
            for (int32_t plane = 0; plane < image.colorPlanes + image.transparencyPlanes; ++plane) {
                uint8_t *to = output->planes[plane] + IndexOf(*output, x, y) * bytes;
                if (blackColors && plane < image.colorPlanes)
                    std::memset(to, 0, bytes);
                else
                    std::memcpy(to, image.planes[plane] + IndexOf(image, x, y) * bytes, bytes);
            }
}

struct Tint {
    Color color;
    uint32_t value;
};

bool Contains(const IntRect &rect, int64_t x, int64_t y) {
    return x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;
}

void LayStamp(const RenderContext &context, const Stamp &stamp, const Placement &place, const Tint &tint,
              const IntRect &target, ImageBuffer *output) {
    for (const StampEntry &entry : stamp) {
        const int64_t x = place.x + entry.dx, y = place.y + entry.dy;
        if (!Contains(target, x, y))
            continue;
        Color color{};
        for (size_t i = 0; i < 3; ++i)
            color[i] = Product(context.precision, entry.factor[i], tint.color[i]);
        const uint32_t value = Product(context.precision, tint.value, entry.value);
        const uint32_t largest = std::max({color[0], color[1], color[2]});
        if (Product(context.precision, largest, value) < context.floor / 2)
            continue;
        const int64_t index = IndexOf(*output, x, y);
        WriteColor(*output, index,
                   Blend(context.precision, kScreenMode, color, value, ReadColor(*output, index)));
    }
}

bool IsDrawn(const LightSource &source, uint32_t cut) {
    return source.State == 2 || (source.State == 1 && cut < source.Brightness);
}

using Builder = Stamp (*)(const RenderContext &, int32_t, int32_t);

} // namespace

uint32_t CutLevel(int32_t threshold) {
    if (threshold >= 100)
        return 0;
    const double share = (100 - threshold) / 100.0;
    return static_cast<uint32_t>(std::trunc(share * share * 4294967294.0));
}

Color Saturate(const Color &color, int32_t saturation) {
    const int64_t s = saturation > 0 ? saturation * 15 : saturation;
    Color result{};
    for (size_t i = 0; i < 3; ++i) {
        const int64_t own = color[i];
        const int64_t others = (static_cast<int64_t>(color[(i + 1) % 3]) + color[(i + 2) % 3]) / 2;
        const int64_t moved = own + (own - others) * s / 150;
        result[i] = static_cast<uint32_t>(std::clamp<int64_t>(moved, 0, kOne));
    }
    return saturation == 0 ? color : result;
}

Placement Place(const LightSource &source, double scale) {
    if (scale == 100.0)
        return {source.X, source.Y, source.XQuarter, source.YQuarter};
    const int64_t divisor = static_cast<int64_t>(1250000.0 / scale) - 3;
    return {(int64_t{source.X} * 12500 + 6250) / divisor, (int64_t{source.Y} * 12500 + 6250) / divisor, 0, 0};
}

void Render(const RenderContext &context, const ImageBuffer &image, const IntRect &target,
            const std::vector<LightSource> &sources, ImageBuffer *output) {
    const RenderSettings &s = context.settings;
    CopyBase(image, target, s.effectsOnly, output);
    const uint32_t cut = CutLevel(s.threshold);
    const auto pass = [&](Builder build, auto valueOf) {
        std::map<std::pair<int32_t, int32_t>, Stamp> stamps;
        for (const LightSource &source : sources) {
            const uint32_t value = valueOf(source);
            if (!IsDrawn(source, cut) || value <= context.floor)
                continue;
            const Placement place = Place(source, s.scale);
            const auto phase = std::make_pair(place.px, place.py);
            if (!stamps.count(phase))
                stamps[phase] = build(context, place.px, place.py);
            const Tint tint{Saturate({source.Red, source.Green, source.Blue}, s.colorSaturation), value};
            LayStamp(context, stamps[phase], place, tint, target, output);
        }
    };
    if (s.intensity >= 1 || s.secondaryIntensity >= 1)
        pass(BuildStar, [](const LightSource &source) { return source.Intensity; });
    if (s.softFlareIntensity >= 1) {
        const double share = s.softFlareIntensity / 100.0;
        const auto flare = static_cast<uint32_t>(std::trunc(share * share * 4294967294.0));
        pass(BuildFlare,
             [&](const LightSource &source) { return Product(context.precision, source.Intensity, flare); });
    }
}

} // namespace reference
