#include "render/stamp/GlowLayer.h"

#include "engine/image/FixedPoint.h"

#include <algorithm>

namespace {

constexpr int32_t kChannels = 3;

// What the integers lay at one pixel.
struct PixelLaid {
    uint32_t value;
    RainbowFactors factors;
};

void BlendByIntegers(const Laying &laying, const PixelLaid &laid, int64_t index) {
    BlendColor color;
    kPortablePath.makeColors({&laid.factors, 1, laying.tint.channel, true}, &color);
    BlendPiece piece = laying.blend;
    piece.values = &laid.value;
    piece.states = nullptr;
    piece.count = piece.room = 1;
    piece.colors = &color;
    for (int32_t plane = 0; plane < piece.planes; ++plane)
        piece.samples[plane] = laying.target.output.planes[plane] + index;
    kPortablePath.blend[0](piece);
}

// Rows on their way, with the offsets of their first pixels from the place.
struct RowsLaid {
    GlowRow rows[kBatchRows];
    struct {
        int32_t row, pixel;
    } first[kBatchRows];
    int32_t count = 0, pixels = 0;
};

bool HasRoom(const RowsLaid &laid, int32_t count) {
    return laid.count < kBatchRows && laid.pixels + count <= kBatchPixels;
}

void AddRow(const Laying &laying, int32_t row, int32_t from, int32_t count, const float *glow, int32_t step,
            RowsLaid *laid) {
    const SamplePlace place = FindSample(laying, row, from);
    laid->rows[laid->count] = {glow, step, count, place.room, place.index};
    laid->first[laid->count++] = {row, from};
    laid->pixels += count;
}

// Blends the rows and forgets them. layAt(row, pixel) gives what the integers lay there.
template <typename LayAt> void BlendRows(const Laying &laying, RowsLaid *laid, LayAt layAt) {
    GlowBatch batch = laying.glow;
    batch.rows = laid->rows;
    batch.count = laid->count;
    LeftPixel left[kBatchPixels];
    const int32_t leftCount = gRenderPath->blendGlow(batch, left);
    for (int32_t i = 0; i < leftCount; ++i) {
        const auto [row, pixel] = left[i];
        BlendByIntegers(laying, layAt(laid->first[row].row, laid->first[row].pixel + pixel),
                        laid->rows[row].sample + pixel);
    }
    laid->count = laid->pixels = 0;
}

PixelLaid LayArmAt(const StarTables &tables, const Arm &arm, int32_t row, int32_t pixel) {
    const ArmPixel at = MeasureArmPixel(arm, row, pixel);
    return {Mul(at.share, at.along), tables.factors[RainbowStateAt(tables.rainbow, at.distance)]};
}

} // namespace

const GlowRainbow *RainbowOf(const StarTables &tables) {
    return tables.rainbow.settings.rainbowIntensity == 0 ? nullptr : &tables.glowRainbow;
}

void LayGlowingArm(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked) {
    float room[kChannels][kBatchPixels];
    const GlowRainbow *rainbow = RainbowOf(tables);
    const int32_t step = rainbow ? kBatchPixels : 0;
    const auto layAt = [&](int32_t row, int32_t pixel) { return LayArmAt(tables, arm, row, pixel); };
    const IntRect &window = laying.window;
    const PixelRange rows = ArmRows(arm, walked);
    const int32_t last = std::min(rows.to, window.bottom - 1);
    RowsLaid laid;
    for (int32_t row = std::max(rows.from, window.top); row <= last && !IsAborted(laying); ++row) {
        const PixelRange span = SpanAbove(arm, walked, row, laying.leastValue);
        ForEachPiece(std::max(span.from, window.left), std::min(span.to, window.right - 1),
                     [&](int32_t from, int32_t count) {
                         if (!HasRoom(laid, count))
                             BlendRows(laying, &laid, layAt);
                         float *const first = room[0] + laid.pixels;
                         float *const glow[kChannels] = {first, first + step, first + 2 * step};
                         gRenderPath->fillArmGlow({&arm, rainbow, row, from, count}, glow);
                         AddRow(laying, row, from, count, first, step, &laid);
                     });
    }
    BlendRows(laying, &laid, layAt);
}

void LayKeptGlow(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked,
                 const KeptArm &kept) {
    const auto layAt = [&](int32_t row, int32_t pixel) { return LayArmAt(tables, arm, row, pixel); };
    const IntRect &window = laying.window;
    const PixelRange rows = ArmRows(arm, walked);
    const int32_t last = std::min({rows.to, kept.range.to, window.bottom - 1});
    RowsLaid laid;
    for (int32_t row = std::max({rows.from, kept.range.from, window.top}); row <= last && !IsAborted(laying);
         ++row) {
        const KeptRow &keptRow = kept.rows[row - kept.range.from];
        const int32_t length = static_cast<int32_t>((&keptRow)[1].first - keptRow.first);
        const float *const first = kept.glow + size_t{keptRow.first} * static_cast<size_t>(kept.channels);
        ForEachPiece(std::max(keptRow.from, window.left), std::min(keptRow.from + length, window.right) - 1,
                     [&](int32_t from, int32_t count) {
                         if (!HasRoom(laid, count))
                             BlendRows(laying, &laid, layAt);
                         AddRow(laying, row, from, count, first + (from - keptRow.from),
                                kept.channels == 1 ? 0 : length, &laid);
                     });
    }
    BlendRows(laying, &laid, layAt);
}

void LayGlowingFlareRow(const Laying &laying, const FlareStamp &flare, const ValueTable &values, int32_t row,
                        int32_t halfWidth) {
    float room[kRowPiece];
    const auto layAt = [&](int32_t, int32_t pixel) {
        PixelLaid laid{0, {{kFractionOne, kFractionOne, kFractionOne}}};
        kPortablePath.fillFlare({&flare, &values, row, pixel, 1}, &laid.value);
        if (flare.centreIsForced && row == 0 && pixel == 0)
            laid.value = flare.centre;
        return laid;
    };
    RowsLaid laid;
    ForEachPiece(std::max(-halfWidth, laying.window.left), std::min(halfWidth, laying.window.right - 1),
                 [&](int32_t from, int32_t count) {
                     gRenderPath->fillFlareGlow({&flare, &values, row, from, count}, room);
                     if (flare.centreIsForced && row == 0 && from <= 0 && from + count > 0)
                         room[-from] = static_cast<float>(flare.centre * 0x1p-32);
                     AddRow(laying, row, from, count, room, 0, &laid);
                     BlendRows(laying, &laid, layAt);
                 });
}
