// Switching single stars off and on. The state before a change is kept, so that the opposite mode brings it
// back.
#include "engine/table/HideEffects.h"

#include "engine/table/LightSourceTable.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kReachAtOnePercent = 8000.0; // quarter pixels, divided by the zoom percentage
constexpr int64_t kSmallestReach = 80;        // quarter pixels
constexpr double kLargestReach = 1 << 30;     // keeps the squares within 64 bits

bool IsEligible(const LightSource &source, int32_t mode) {
    switch (mode) {
    case kHideEffect:
    case kForceEffect:
        return true;
    case kRestoreHidden:
        return source.State == 0;
    case kRestoreForced:
        return source.State == 2;
    default:
        return false;
    }
}

bool IsRestoring(int32_t mode) {
    return mode == kRestoreHidden || mode == kRestoreForced;
}

uint32_t StateAfter(const LightSource &source, int32_t mode) {
    if (IsRestoring(mode))
        return source.SavedState;
    return mode == kHideEffect ? 0 : 2;
}

void ApplyMode(LightSource *source, int32_t mode) {
    const uint32_t before = source->State;
    source->State = StateAfter(*source, mode);
    if (!IsRestoring(mode) && source->State != before)
        source->SavedState = before;
}

int64_t ReachAtZoom(double zoomPercent) {
    if (!(zoomPercent > 0.0))
        return kSmallestReach;
    const double reach = std::min(kReachAtOnePercent / zoomPercent, kLargestReach);
    return std::max(static_cast<int64_t>(reach), kSmallestReach);
}

// Squared distance in quarter pixels; `limit` when either side alone is out of reach.
int64_t SquaredDistance(const LightSource &source, int32_t x, int32_t y, int64_t reach, int64_t limit) {
    const int64_t dy = (int64_t{y} - source.Y) * 4 - source.YQuarter;
    const int64_t dx = (int64_t{x} - source.X) * 4 - source.XQuarter;
    if (std::abs(dx) >= reach || std::abs(dy) >= reach)
        return limit;
    return dy * dy + dx * dx;
}

} // namespace

bool IsChangedByMode(const LightSource &source, int32_t mode) {
    return IsEligible(source, mode) && StateAfter(source, mode) != source.State;
}

int32_t FindLightSourceAt(int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    const LightSourceTableView table = GetLightSourceTable();
    const int64_t reach = ReachAtZoom(zoomPercent);
    const int64_t limit = reach * reach;
    int64_t nearest = limit;
    int32_t found = -1;
    for (uint32_t i = 0; i < table.count; ++i) {
        if (!IsEligible(table.records[i], mode))
            continue;
        const int64_t distance = SquaredDistance(table.records[i], x, y, reach, limit);
        if (distance < nearest) {
            nearest = distance;
            found = static_cast<int32_t>(i);
        }
    }
    return found;
}

int32_t SetLightSourceStateAt(int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    const int32_t found = FindLightSourceAt(x, y, zoomPercent, mode);
    if (found >= 0)
        ApplyMode(&GetLightSourceTable().records[found], mode);
    return found;
}

int32_t SetLightSourceStatesInRect(const IntRect &rect, int32_t mode) {
    const LightSourceTableView table = GetLightSourceTable();
    int32_t changed = 0;
    for (uint32_t i = 0; i < table.count; ++i) {
        LightSource *source = &table.records[i];
        if (!RectContains(rect, source->X, source->Y) || !IsEligible(*source, mode))
            continue;
        ApplyMode(source, mode);
        ++changed;
    }
    return changed;
}
