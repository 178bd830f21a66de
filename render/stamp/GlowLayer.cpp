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

// Blends glow into the row at offset `row` from the offset `from` on. layAt(offset) gives what the integers
// lay there.
template <typename LayAt>
void BlendGlowRow(const Laying &laying, int32_t row, int32_t from, int32_t count,
                  const float *const glow[kChannels], LayAt layAt) {
    const SamplePlace place = FindSample(laying, row, from);
    GlowPiece piece = laying.glow;
    piece.count = count;
    piece.room = place.room;
    std::copy_n(glow, kChannels, piece.glow);
    for (int32_t plane = 0; plane < piece.planes; ++plane)
        piece.samples[plane] = laying.target.output.planes[plane] + place.index;
    uint16_t left[kRowPiece];
    const int32_t leftCount = gRenderPath->blendGlow(piece, left);
    for (int32_t i = 0; i < leftCount; ++i)
        BlendByIntegers(laying, layAt(from + left[i]), place.index + left[i]);
}

PixelLaid LayArmAt(const StarTables &tables, const Arm &arm, int32_t row, int32_t pixel) {
    PixelLaid laid;
    uint16_t state;
    kPortablePath.fillArm({&arm, tables.stateOfDistance, true, row, pixel, 1}, &laid.value, &state);
    laid.factors = tables.factors[state];
    return laid;
}

} // namespace

int32_t CountGlowChannels(const StarTables &tables) {
    return tables.rainbow.settings.rainbowIntensity == 0 ? 1 : kChannels;
}

void LayGlowingArm(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked) {
    float room[kChannels][kRowPiece];
    const bool isPlain = CountGlowChannels(tables) == 1;
    float *const glow[kChannels] = {room[0], room[isPlain ? 0 : 1], room[isPlain ? 0 : 2]};
    const IntRect &window = laying.window;
    const PixelRange rows = ArmRows(arm, walked);
    const int32_t last = std::min(rows.to, window.bottom - 1);
    for (int32_t row = std::max(rows.from, window.top); row <= last && !IsAborted(laying); ++row) {
        const PixelRange span = SpanAbove(arm, walked, row, laying.leastValue);
        ForEachPiece(std::max(span.from, window.left), std::min(span.to, window.right - 1),
                     [&](int32_t from, int32_t count) {
                         gRenderPath->fillArmGlow({&arm, tables.stateOfDistance, true, row, from, count},
                                                  isPlain ? nullptr : tables.glowFactors, glow);
                         BlendGlowRow(laying, row, from, count, glow,
                                      [&](int32_t pixel) { return LayArmAt(tables, arm, row, pixel); });
                     });
    }
}

void LayKeptGlow(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked,
                 const KeptArm &kept) {
    const IntRect &window = laying.window;
    const PixelRange rows = ArmRows(arm, walked);
    const int32_t last = std::min({rows.to, kept.range.to, window.bottom - 1});
    for (int32_t row = std::max({rows.from, kept.range.from, window.top}); row <= last && !IsAborted(laying);
         ++row) {
        const KeptRow &keptRow = kept.rows[row - kept.range.from];
        const int32_t length = static_cast<int32_t>((&keptRow)[1].first - keptRow.first);
        const float *const first = kept.glow + size_t{keptRow.first} * static_cast<size_t>(kept.channels);
        const int32_t step = kept.channels == 1 ? 0 : length;
        ForEachPiece(std::max(keptRow.from, window.left), std::min(keptRow.from + length, window.right) - 1,
                     [&](int32_t from, int32_t count) {
                         const float *const at = first + (from - keptRow.from);
                         const float *const glow[kChannels] = {at, at + step, at + 2 * ptrdiff_t{step}};
                         BlendGlowRow(laying, row, from, count, glow,
                                      [&](int32_t pixel) { return LayArmAt(tables, arm, row, pixel); });
                     });
    }
}

void LayGlowingFlareRow(const Laying &laying, const FlareStamp &flare, const ValueTable &values, int32_t row,
                        int32_t halfWidth) {
    float room[kRowPiece];
    const float *const glow[kChannels] = {room, room, room};
    const auto layAt = [&](int32_t pixel) {
        PixelLaid laid{0, {{kFractionOne, kFractionOne, kFractionOne}}};
        kPortablePath.fillFlare({&flare, &values, row, pixel, 1}, &laid.value);
        if (flare.centreIsForced && row == 0 && pixel == 0)
            laid.value = flare.centre;
        return laid;
    };
    ForEachPiece(std::max(-halfWidth, laying.window.left), std::min(halfWidth, laying.window.right - 1),
                 [&](int32_t from, int32_t count) {
                     gRenderPath->fillFlareGlow({&flare, &values, row, from, count}, room);
                     if (flare.centreIsForced && row == 0 && from <= 0 && from + count > 0)
                         room[-from] = static_cast<float>(flare.centre * 0x1p-32);
                     BlendGlowRow(laying, row, from, count, glow, layAt);
                 });
}
