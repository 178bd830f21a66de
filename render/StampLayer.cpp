#include "render/StampLayer.h"

#include "engine/FixedPoint.h"
#include "render/PixelAccess.h"

#include <algorithm>
#include <limits>

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
