#include "engine/table/LightSourceTable.h"

#include "diag/BufferUsage.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/LightSourceGrid.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr size_t kGrowthRecords = 2048;

LightSourceTable gTable; // what gLightSourceTable points to

HostResult ReserveRecord(LightSourceTable *table) {
    if (table->Count < table->allocatedBytes / sizeof(LightSource))
        return kNoError;
    const size_t newBytes = table->allocatedBytes + kGrowthRecords * sizeof(LightSource);
    void *grown = CountedRealloc(table->records, table->allocatedBytes, newBytes);
    if (!grown)
        return kMemFullErr;
    table->records = static_cast<LightSource *>(grown);
    table->allocatedBytes = newBytes;
    return kNoError;
}

// To the nearest whole number; what does not fit, and what is no number, is brought into range.
int32_t RoundRadiusSquared(float radiusSquared) {
    const double rounded = double{radiusSquared} + 0.5;
    if (!(rounded > 0.0))
        return 0;
    constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();
    return rounded >= kLargest ? kLargest : static_cast<int32_t>(rounded);
}

bool IsSamePosition(const LightSource &source, const LightSourcePosition &p) {
    return source.X == p.X && source.XQuarter == p.XQuarter && source.Y == p.Y &&
           source.YQuarter == p.YQuarter;
}

bool HasSourceAt(const LightSourceTable &table, const LightSourcePosition &position) {
    return VisitNearbySources(table, position.X, position.Y, 0, [&position](const LightSource &source) {
        return IsSamePosition(source, position);
    });
}

// Quarters do not count.
bool Overlaps(const LightSource &source, const LightSourcePosition &position, int32_t radiusSquared) {
    const int64_t reach = std::max(radiusSquared, source.RadiusSquared);
    const int64_t dx = int64_t{source.X} - position.X, dy = int64_t{source.Y} - position.Y;
    // A far side alone decides, and keeps the squares within 64 bits.
    if (std::abs(dx) > reach || std::abs(dy) > reach)
        return false;
    return dx * dx + dy * dy < reach;
}

// Hides every smaller source that an enabled new one covers; true when some other source is in the way.
bool ClearTheWay(LightSourceTable *table, const LightSourcePosition &position, int32_t radiusSquared,
                 bool enabled) {
    bool blocked = false;
    const auto clear = [&](LightSource &source) {
        if (!Overlaps(source, position, radiusSquared))
            return false;
        if (enabled && radiusSquared > source.RadiusSquared)
            source.State = 0;
        else
            blocked = true;
        return false; // the others are hidden all the same
    };
    VisitNearbySources(*table, position.X, position.Y, ReachOfSquare(radiusSquared), clear);
    return blocked;
}

// Analysis pixels to document pixels. The quarters are dropped when there is a scale: meant so.
LightSourcePosition ScalePosition(const LightSource &source, double scale) {
    if (scale == 1.0)
        return LightSourcePosition{source.X, source.XQuarter, source.Y, source.YQuarter};
    return LightSourcePosition{static_cast<int32_t>(source.X * scale + 0.5), 0,
                               static_cast<int32_t>(source.Y * scale + 0.5), 0};
}

uint32_t LargestVisibleChannel(const LightSourceTable &table) {
    uint32_t largest = 0;
    for (uint32_t i = 0; i < table.Count; ++i) {
        const LightSource &source = table.records[i];
        if (source.State != 0)
            largest = std::max({largest, source.Red, source.Green, source.Blue});
    }
    return largest;
}

uint32_t NormalizeChannel(uint32_t value, uint32_t largest) {
    if (largest == 0)
        return kFractionOne;
    return static_cast<uint32_t>(std::min<uint64_t>((uint64_t{value} << 32) / largest, kFractionOne));
}

void NormalizeSource(LightSource *source, uint32_t largest) {
    source->Red = NormalizeChannel(source->Red, largest);
    source->Green = NormalizeChannel(source->Green, largest);
    source->Blue = NormalizeChannel(source->Blue, largest);
    source->Brightness = static_cast<uint32_t>((uint64_t{source->Red} + source->Green + source->Blue) / 3);
}

} // namespace

LightSourceTable *gLightSourceTable = &gTable;

HostResult AddLightSource(LightSourceTable *table, const LightSourcePosition &position, float radiusSquared,
                          uint32_t red, uint32_t green, uint32_t blue, bool enabled) {
    const HostResult result = ReserveRecord(table);
    if (result != kNoError)
        return result;
    const int32_t rounded = RoundRadiusSquared(radiusSquared);
    if (HasSourceAt(*table, position) || ClearTheWay(table, position, rounded, enabled))
        return kNoError;
    LightSource *source = &table->records[table->Count++];
    *source = LightSource{};
    source->X = position.X;
    source->XQuarter = position.XQuarter;
    source->Y = position.Y;
    source->YQuarter = position.YQuarter;
    source->RadiusSquared = rounded;
    source->Red = red;
    source->Green = green;
    source->Blue = blue;
    source->Intensity = kFractionOne;
    source->Aux = -1;
    source->State = enabled ? 1 : 0;
    source->SavedState = 1;
    EnterIntoGrid(table, table->Count - 1);
    return kNoError;
}

bool IsInsideLightSource(const LightSourceTable &table, int32_t x, int32_t y) {
    return VisitNearbySources(table, x, y, 0, [x, y](const LightSource &source) {
        const int64_t dx = int64_t{source.X} - x, dy = int64_t{source.Y} - y;
        return dx * dx + dy * dy <= source.RadiusSquared;
    });
}

HostResult MergeWorkerTable(const LightSourceTable &workerTable, const AnalysisImage &image,
                            const std::atomic<uint8_t> &tableCancel) {
    for (uint32_t i = 0; i < workerTable.Count && !tableCancel.load(std::memory_order_relaxed); ++i) {
        const LightSource &source = workerTable.records[i];
        if (source.State != 1 || !IsPixelSelected(FetchPixel(image, source.X, source.Y)))
            continue;
        const auto radiusSquared = static_cast<float>(source.RadiusSquared * image.scale * image.scale);
        const HostResult result = AddLightSource(gLightSourceTable, ScalePosition(source, image.scale),
                                                 radiusSquared, source.Red, source.Green, source.Blue, true);
        if (result != kNoError)
            return result;
    }
    return kNoError;
}

void RankLightSources(const std::atomic<uint8_t> &tableCancel) {
    if (tableCancel.load(std::memory_order_relaxed))
        return;
    LightSourceTable &table = *gLightSourceTable;
    FreeLightSourceGrid(&table); // it does not follow the sorting
    const uint32_t largest = LargestVisibleChannel(table);
    for (uint32_t i = 0; i < table.Count; ++i)
        NormalizeSource(&table.records[i], largest);
    // Blending order shows, so equal sources keep theirs. Sorts in place when there is no memory for a second
    // copy.
    std::stable_sort(table.records, table.records + table.Count,
                     [](const LightSource &a, const LightSource &b) { return a.Brightness > b.Brightness; });
}

LightSourceTableView GetLightSourceTable() {
    return LightSourceTableView{gLightSourceTable->records, gLightSourceTable->Count};
}

void FreeTableRecords(LightSourceTable *table) {
    FreeLightSourceGrid(table);
    CountedFree(table->records, table->allocatedBytes);
    *table = LightSourceTable{};
}

uint32_t ThresholdCutLevel(int32_t threshold) {
    if (threshold >= 100)
        return 0;
    const double share = (100 - std::max(threshold, 0)) / 100.0;
    return static_cast<uint32_t>(share * share * kFractionOne);
}
