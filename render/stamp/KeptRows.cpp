#include "render/stamp/KeptRows.h"

#include "diag/BufferUsage.h"
#include "render/rows/RenderPath.h"

#include <algorithm>
#include <atomic>

namespace {

constexpr int64_t kKeptBudget = 96 << 20; // bytes, for all stamps together
constexpr int64_t kSpare = 8;             // values that may be written, or looked at, past a row
constexpr double kGlowTolerance = 1e-4;   // of a value, much more than it can be off
constexpr uint32_t kEmpty = 0, kBeingFilled = 1, kReady = 2, kRefused = 3;

std::atomic<int64_t> gKeptBytes;

// Takes bytes out of the budget; false when they are not there.
bool TakeBudget(int64_t bytes) {
    if (gKeptBytes.fetch_add(bytes, std::memory_order_relaxed) + bytes <= kKeptBudget)
        return true;
    gKeptBytes.fetch_sub(bytes, std::memory_order_relaxed);
    return false;
}

// Of glow: 0 for values and states.
int32_t CountChannels(const ArmFilling &filling) {
    return !filling.glows ? 0 : filling.rainbow ? 3 : 1;
}

bool IsAborted(const ArmFilling &filling) {
    return filling.abort.load(std::memory_order_relaxed) != 0;
}

PixelRange VisibleSpan(const ArmFilling &filling, const PixelRange &walked, int32_t row) {
    return SpanAbove(*filling.arm, walked, row, filling.level);
}

int64_t CountPixels(const ArmFilling &filling, const PixelRange &walked, const PixelRange &rows) {
    int64_t pixels = 0;
    for (int32_t row = rows.from; row <= rows.to && !IsAborted(filling); ++row) {
        const PixelRange span = VisibleSpan(filling, walked, row);
        pixels += std::max(span.to - span.from + 1, 0);
    }
    return pixels;
}

// One block for the rows and the glow, or the rows, the values and the states, in this order.
bool AllocateRows(const PixelRange &rows, int64_t pixels, int32_t channels, KeptArm *kept) {
    const int64_t rowCount = int64_t{rows.to} - rows.from + 2, valueCount = pixels + kSpare;
    const int64_t pixelBytes = channels > 0 ? channels * static_cast<int64_t>(sizeof(float))
                                            : static_cast<int64_t>(sizeof(uint32_t) + sizeof(uint16_t));
    const int64_t bytes = rowCount * static_cast<int64_t>(sizeof(KeptRow)) + valueCount * pixelBytes;
    if (bytes > kKeptBudget || !TakeBudget(bytes))
        return false;
    void *block = CountedAlloc(static_cast<size_t>(bytes));
    if (!block) {
        gKeptBytes.fetch_sub(bytes, std::memory_order_relaxed);
        return false;
    }
    kept->rows = static_cast<KeptRow *>(block);
    if (channels > 0) {
        kept->glow = reinterpret_cast<float *>(kept->rows + rowCount);
    } else {
        kept->values = reinterpret_cast<uint32_t *>(kept->rows + rowCount);
        kept->states = reinterpret_cast<uint16_t *>(kept->values + valueCount);
    }
    kept->channels = channels;
    kept->bytes = bytes;
    return true;
}

// The part of `count` pixels, counted from the first, that is left when those too small at both ends go.
template <typename IsFaint> PixelRange WithoutFaintEnds(int32_t count, IsFaint isFaint) {
    int32_t faint = 0;
    while (count > 0 && isFaint(count - 1))
        --count;
    while (faint < count && isFaint(faint))
        ++faint;
    return {faint, count - 1};
}

// Both fill a row from the index `first` on and say which of its pixels they kept.
PixelRange FillValues(const ArmFilling &filling, const ArmPiece &piece, uint32_t first, KeptArm *kept) {
    uint32_t *values = kept->values + first;
    uint16_t *states = kept->states + first;
    gRenderPath->fillArm(piece, values, states);
    const PixelRange seen =
        WithoutFaintEnds(piece.count, [&](int32_t i) { return values[i] < filling.level; });
    std::copy(values + seen.from, values + seen.to + 1, values);
    std::copy(states + seen.from, states + seen.to + 1, states);
    return seen;
}

PixelRange FillGlow(const ArmFilling &filling, const GlowPiece &piece, uint32_t first, KeptArm *kept) {
    const int32_t step = kept->channels == 1 ? 0 : piece.count;
    float *row = kept->glow + size_t{first} * static_cast<size_t>(kept->channels);
    float *const glow[] = {row, row + step, row + 2 * ptrdiff_t{step}};
    gRenderPath->fillArmGlow(piece, glow);
    const float least = static_cast<float>(filling.level * 0x1p-32 * (1.0 - kGlowTolerance));
    const PixelRange seen = WithoutFaintEnds(piece.count, [&](int32_t i) {
        return std::max({glow[0][i], glow[1][i], glow[2][i]}) < least;
    });
    for (int32_t c = 0; c < kept->channels; ++c)
        row = std::copy(glow[c] + seen.from, glow[c] + seen.to + 1, row);
    return seen;
}

// Fills one row from the pixel index `first` on, without what is too small at its ends. Where the next
// begins.
uint32_t FillRow(const ArmFilling &filling, int32_t row, const PixelRange &span, uint32_t first,
                 KeptArm *kept) {
    PixelRange seen = {0, -1};
    const int32_t count = span.to - span.from + 1;
    if (count > 0 && filling.glows)
        seen = FillGlow(filling, {filling.arm, filling.rainbow, row, span.from, count}, first, kept);
    else if (count > 0)
        seen = FillValues(filling,
                          {filling.arm, filling.stateOfDistance, filling.precise, row, span.from, count},
                          first, kept);
    kept->rows[row - kept->range.from] = {span.from + seen.from, first};
    return first + static_cast<uint32_t>(seen.to - seen.from + 1);
}

void FreeRows(KeptArm *kept) {
    gKeptBytes.fetch_sub(kept->bytes, std::memory_order_relaxed);
    CountedFree(kept->rows, static_cast<size_t>(kept->bytes));
    kept->rows = nullptr;
}

bool FillRows(const ArmFilling &filling, KeptArm *kept) {
    const PixelRange walked = WalkAbove(*filling.arm, filling.level);
    const PixelRange rows = ArmRows(*filling.arm, walked);
    const int64_t pixels = CountPixels(filling, walked, rows);
    if (IsAborted(filling) || rows.from > rows.to ||
        !AllocateRows(rows, pixels, CountChannels(filling), kept))
        return false;
    kept->level = filling.level;
    kept->range = rows;
    uint32_t first = 0;
    for (int32_t row = rows.from; row <= rows.to; ++row) {
        if (IsAborted(filling)) {
            FreeRows(kept);
            return false;
        }
        first = FillRow(filling, row, VisibleSpan(filling, walked, row), first, kept);
    }
    kept->rows[rows.to + 1 - rows.from] = {0, first};
    if (kept->channels == 0) {
        std::fill_n(kept->values + first, kSpare, 0u);
        std::fill_n(kept->states + first, kSpare, uint16_t{0});
    }
    return true;
}

} // namespace

bool KeepArm(const ArmFilling &filling, KeptArm *kept) {
    std::atomic_ref<uint32_t> progress(kept->progress);
    uint32_t now = progress.load(std::memory_order_acquire);
    if (now == kEmpty && progress.compare_exchange_strong(now, kBeingFilled, std::memory_order_acquire)) {
        // An aborted filling may begin anew.
        now = FillRows(filling, kept) ? kReady : IsAborted(filling) ? kEmpty : kRefused;
        progress.store(now, std::memory_order_release);
    }
    return now == kReady && kept->level <= filling.level && kept->channels == CountChannels(filling);
}

void DropKeptArm(KeptArm *kept) {
    if (kept->rows)
        FreeRows(kept);
    *kept = KeptArm{};
}
