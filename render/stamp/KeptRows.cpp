#include "render/stamp/KeptRows.h"

#include "diag/BufferUsage.h"
#include "render/rows/RenderPath.h"

#include <algorithm>
#include <atomic>

namespace {

constexpr int64_t kKeptBudget = 96 << 20; // bytes, for all stamps together
constexpr int64_t kSpare = 8;             // values that may be written, or looked at, past a row
constexpr uint32_t kEmpty = 0, kBeingFilled = 1, kReady = 2, kRefused = 3;

std::atomic<int64_t> gKeptBytes;

// Takes bytes out of the budget; false when they are not there.
bool TakeBudget(int64_t bytes) {
    if (gKeptBytes.fetch_add(bytes, std::memory_order_relaxed) + bytes <= kKeptBudget)
        return true;
    gKeptBytes.fetch_sub(bytes, std::memory_order_relaxed);
    return false;
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

// One block for the values, the rows and the states, in this order.
bool AllocateRows(const PixelRange &rows, int64_t pixels, KeptArm *kept) {
    const int64_t rowCount = int64_t{rows.to} - rows.from + 2, valueCount = pixels + kSpare;
    const int64_t bytes = rowCount * static_cast<int64_t>(sizeof(KeptRow)) +
                          valueCount * static_cast<int64_t>(sizeof(uint32_t) + sizeof(uint16_t));
    if (bytes > kKeptBudget || !TakeBudget(bytes))
        return false;
    void *block = CountedAlloc(static_cast<size_t>(bytes));
    if (!block) {
        gKeptBytes.fetch_sub(bytes, std::memory_order_relaxed);
        return false;
    }
    kept->rows = static_cast<KeptRow *>(block);
    kept->values = reinterpret_cast<uint32_t *>(kept->rows + rowCount);
    kept->states = reinterpret_cast<uint16_t *>(kept->values + valueCount);
    kept->bytes = bytes;
    return true;
}

// Fills one row from the value at `first` on, without what is too small at its ends. Where the next begins.
uint32_t FillRow(const ArmFilling &filling, int32_t row, const PixelRange &span, uint32_t first,
                 KeptArm *kept) {
    int32_t count = std::max(span.to - span.from + 1, 0);
    uint32_t *values = kept->values + first;
    uint16_t *states = kept->states + first;
    if (count > 0)
        gRenderPath->fillArm({filling.arm, filling.stateOfDistance, filling.precise, row, span.from, count},
                             values, states);
    while (count > 0 && values[count - 1] < filling.level)
        --count;
    int32_t faint = 0;
    while (faint < count && values[faint] < filling.level)
        ++faint;
    std::copy(values + faint, values + count, values);
    std::copy(states + faint, states + count, states);
    kept->rows[row - kept->range.from] = {span.from + faint, first};
    return first + static_cast<uint32_t>(count - faint);
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
    if (IsAborted(filling) || rows.from > rows.to || !AllocateRows(rows, pixels, kept))
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
    std::fill_n(kept->values + first, kSpare, 0u);
    std::fill_n(kept->states + first, kSpare, uint16_t{0});
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
    return now == kReady && kept->level <= filling.level;
}

void DropKeptArm(KeptArm *kept) {
    if (kept->rows)
        FreeRows(kept);
    *kept = KeptArm{};
}
