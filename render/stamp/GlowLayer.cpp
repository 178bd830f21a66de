#include "render/stamp/GlowLayer.h"

#include "engine/image/FixedPoint.h"
#include "render/stamp/CellRow.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kChannels = 3;
constexpr int32_t kWideCell = 512; // blocks

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
    laying.target.room->laid += laid->pixels;
    laid->count = laid->pixels = 0;
}

PixelLaid LayArmAt(const StarTables &tables, const Arm &arm, int32_t row, int32_t pixel) {
    const ArmPixel at = MeasureArmPixel(arm, row, pixel);
    return {Mul(at.share, at.along), tables.factors[RainbowStateAt(tables.rainbow, at.distance)]};
}

// How far values of at least `level` may lie from a flare's middle, in pixels.
double FlareReach(const ValueTable &values, double level) {
    return ReachOfLevel(values, static_cast<uint32_t>(std::min(level, 0x1p32 - 1.0))) / 40.0 + 1.0;
}

// Half the width of a row of a disc, and somewhat more; below 0 it has none.
double HalfChord(double radius, double row) {
    const double across = radius * radius - row * row;
    return across < 0.0 ? -1.0 : std::sqrt(across) + 2.0;
}

int32_t ClampPixel(double position) {
    return static_cast<int32_t>(std::clamp(position, -0x1p30, 0x1p30));
}

// Columns that an arm may cover in some rows.
PixelRange ColumnsOf(const Arm &arm, const ArmLine &line, const PixelRange &rows) {
    const double one = line.first + line.perRow * rows.from, other = line.first + line.perRow * rows.to,
                 width = (arm.reach + kLevelRoom) * line.perReach + 2.0;
    return {ClampPixel(std::min(one, other) - width), ClampPixel(std::max(one, other) + width)};
}

// Calls layRow(row, from, to) for the parts of an arm's rows that can show, found by cells of some blocks.
template <typename LayRow>
void ForEachArmSpan(const Laying &laying, const Arm &arm, const PixelRange &walked, int32_t cellBlocks,
                    LayRow layRow) {
    const auto &[left, top, right, bottom] = laying.window;
    const ArmLine line = LineOf(arm);
    const bool isWithin = IsWithinLimits(arm, laying.window);
    PixelRange allowed = {left, right - 1}, steps = walked;
    if (!arm.majorIsY)
        allowed = steps = Intersect(allowed, walked);
    const auto reachAt = [&](const IntRect &area, double level) { return ReachInBlock(arm, area, level); };
    const auto widthOf = [&](double reach) { return reach > 0.0 ? reach * line.perReach : -1.0; };
    ForEachBlockRow(laying, Intersect(ArmRows(arm, steps), {top, bottom - 1}), [&](const PixelRange &rows) {
        const PixelRange columns = Intersect(allowed, ColumnsOf(arm, line, rows));
        ForEachCells(laying, rows, columns, cellBlocks, reachAt, [&](const CellRow &cells) {
            for (int32_t row = rows.from; row <= rows.to; ++row)
                ForEachSpan(cells, line.first + line.perRow * row, widthOf, [&](const PixelRange &span) {
                    const auto [from, to] = isWithin ? span : Intersect(span, ArmSpan(arm, walked, row));
                    layRow(row, from, to);
                });
        });
    });
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
    RowsLaid laid;
    ForEachArmSpan(laying, arm, walked, 1, [&](int32_t row, int32_t first, int32_t last) {
        ForEachPiece(first, last, [&](int32_t from, int32_t count) {
            if (!HasRoom(laid, count))
                BlendRows(laying, &laid, layAt);
            float *const to = room[0] + laid.pixels;
            float *const glow[kChannels] = {to, to + step, to + 2 * step};
            gRenderPath->fillArmGlow({&arm, rainbow, row, from, count}, glow);
            AddRow(laying, row, from, count, to, step, &laid);
        });
    });
    BlendRows(laying, &laid, layAt);
}

void LayKeptGlow(const Laying &laying, const StarTables &tables, const Arm &arm, const PixelRange &walked,
                 const KeptArm &kept) {
    const auto layAt = [&](int32_t row, int32_t pixel) { return LayArmAt(tables, arm, row, pixel); };
    RowsLaid laid;
    const auto layRow = [&](int32_t row, int32_t from, int32_t to) {
        if (row < kept.range.from || row > kept.range.to)
            return;
        const KeptRow &keptRow = kept.rows[row - kept.range.from];
        const int32_t length = static_cast<int32_t>((&keptRow)[1].first - keptRow.first);
        const float *const first = kept.glow + size_t{keptRow.first} * static_cast<size_t>(kept.channels);
        ForEachPiece(std::max(keptRow.from, from), std::min(keptRow.from + length - 1, to),
                     [&](int32_t at, int32_t count) {
                         if (!HasRoom(laid, count))
                             BlendRows(laying, &laid, layAt);
                         AddRow(laying, row, at, count, first + (at - keptRow.from),
                                kept.channels == 1 ? 0 : length, &laid);
                     });
    };
    const IntRect &window = laying.window;
    if (laying.target.room->darkest)
        ForEachArmSpan(laying, arm, walked, kWideCell, layRow);
    else // as a whole, which is sooner done
        ForEachBlockRow(laying, Intersect(ArmRows(arm, walked), {window.top, window.bottom - 1}),
                        [&](const PixelRange &rows) {
                            for (int32_t row = rows.from; row <= rows.to; ++row)
                                layRow(row, window.left, window.right - 1);
                        });
    BlendRows(laying, &laid, layAt);
}

void LayGlowingFlare(const Laying &laying, const FlareStamp &flare, const ValueTable &values) {
    float room[kBatchPixels];
    const auto layAt = [&](int32_t row, int32_t pixel) {
        PixelLaid laid{0, {{kFractionOne, kFractionOne, kFractionOne}}};
        kPortablePath.fillFlare({&flare, &values, row, pixel, 1}, &laid.value);
        if (flare.centreIsForced && row == 0 && pixel == 0)
            laid.value = flare.centre;
        return laid;
    };
    RowsLaid laid;
    const auto layRow = [&](int32_t row, int32_t first, int32_t last) {
        ForEachPiece(first, last, [&](int32_t from, int32_t count) {
            if (!HasRoom(laid, count))
                BlendRows(laying, &laid, layAt);
            float *const to = room + laid.pixels;
            gRenderPath->fillFlareGlow({&flare, &values, row, from, count}, to);
            if (flare.centreIsForced && row == 0 && from <= 0 && from + count > 0)
                to[-from] = static_cast<float>(flare.centre * 0x1p-32);
            AddRow(laying, row, from, count, to, 0, &laid);
        });
    };
    const auto &[left, top, right, bottom] = laying.window;
    const PixelRange rings = {-flare.rings, flare.rings}, columns = Intersect(rings, {left, right - 1});
    const int32_t cellBlocks = laying.target.room->darkest ? 1 : kWideCell;
    const auto reachAt = [&](const IntRect &, double level) { return FlareReach(values, level); };
    ForEachBlockRow(laying, Intersect(rings, {top, bottom - 1}), [&](const PixelRange &rows) {
        ForEachCells(laying, rows, columns, cellBlocks, reachAt, [&](const CellRow &cells) {
            for (int32_t row = rows.from; row <= rows.to; ++row) {
                const auto widthOf = [&](double reach) { return HalfChord(reach, row); };
                ForEachSpan(cells, 0.0, widthOf,
                            [&](const PixelRange &span) { layRow(row, span.from, span.to); });
            }
        });
    });
    BlendRows(laying, &laid, layAt);
}
