#include "tests/plain/StampEntries.h"

#include "engine/FixedPoint.h"
#include "render/RenderPath.h"

#include <algorithm>

namespace {

using plain::StampEntry;

StampEntry MakeEntry(int32_t x, int32_t y, const RainbowFactors &factors, uint32_t value) {
    return StampEntry{static_cast<int16_t>(x),
                      static_cast<int16_t>(y),
                      {factors.factor[0], factors.factor[1], factors.factor[2]},
                      value};
}

// Calls work(from, count) for the pieces of a row, as far as offsets fit 16 bits.
template <typename Work> void ForEachPiece(PixelRange span, Work work) {
    for (int32_t x = std::max(span.from, -32768); x <= std::min(span.to, 32767); x += kRowPiece)
        work(x, std::min({span.to - x + 1, 32767 - x + 1, kRowPiece}));
}

} // namespace

std::vector<StampEntry> SortedByPixel(std::vector<StampEntry> entries) {
    std::stable_sort(entries.begin(), entries.end(), [](const StampEntry &a, const StampEntry &b) {
        return std::pair(a.dy, a.dx) < std::pair(b.dy, b.dx);
    });
    return entries;
}

std::vector<StampEntry> EntriesOf(const StampContext &context, const StarStamp &stamp,
                                  const StarTables &tables) {
    std::vector<StampEntry> entries;
    uint32_t values[kRowRoom];
    uint16_t states[kRowRoom];
    for (int32_t i = 0; i < stamp.count; ++i) {
        const Arm &arm = stamp.arms[i];
        const PixelRange rows = ArmRows(arm, arm.walked);
        for (int32_t y = std::max(rows.from, -32768); y <= std::min(rows.to, 32767); ++y)
            ForEachPiece(ArmSpan(arm, arm.walked, y), [&](int32_t from, int32_t count) {
                gRenderPath->fillArm({&arm, tables.stateOfDistance, context.preciseMode, y, from, count},
                                     values, states);
                for (int32_t j = 0; j < count; ++j)
                    if (values[j] >= std::max(context.floor / 4, 1u))
                        entries.push_back(MakeEntry(from + j, y, tables.factors[states[j]], values[j]));
            });
    }
    return SortedByPixel(entries);
}

std::vector<StampEntry> EntriesOf(const StampContext &context, const FlareStamp &flare,
                                  const ValueTable &values) {
    std::vector<StampEntry> entries;
    uint32_t row[kRowRoom];
    const RainbowFactors untinted{{kFractionOne, kFractionOne, kFractionOne}};
    for (int32_t y = -flare.rings; y <= flare.rings; ++y)
        ForEachPiece({-flare.rings, flare.rings}, [&](int32_t from, int32_t count) {
            gRenderPath->fillFlare({&flare, &values, y, from, count}, row);
            for (int32_t j = 0; j < count; ++j)
                if (y == 0 && from + j == 0)
                    entries.push_back(MakeEntry(0, 0, untinted, flare.centre));
                else if (row[j] >= context.floor)
                    entries.push_back(MakeEntry(from + j, y, untinted, row[j]));
        });
    return SortedByPixel(entries);
}
