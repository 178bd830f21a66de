#include "tests/reference/detect/ReferenceTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace reference {

namespace {

constexpr uint32_t kOne = 0xFFFFFFFEu;

int64_t Square(int64_t value) {
    return value * value;
}

bool IsEligible(const LightSource &source, int32_t mode) {
    switch (mode) {
    case 0:
    case 2:
        return true;
    case 1:
        return source.State == 0;
    case 3:
        return source.State == 2;
    default:
        return false;
    }
}

void Change(LightSource *source, int32_t mode) {
    if (mode == 1 || mode == 3) {
        source->State = source->SavedState;
        return;
    }
    const uint32_t wanted = mode == 0 ? 0 : 2;
    if (source->State != wanted)
        source->SavedState = source->State;
    source->State = wanted;
}

uint32_t Normalize(uint32_t value, uint32_t largest) {
    if (largest == 0)
        return kOne;
    return static_cast<uint32_t>(std::min<uint64_t>((static_cast<uint64_t>(value) << 32) / largest, kOne));
}

bool SamePosition(const LightSource &a, const LightSourcePosition &b) {
    return a.X == b.X && a.XQuarter == b.XQuarter && a.Y == b.Y && a.YQuarter == b.YQuarter;
}

} // namespace

void Add(Table *table, const LightSourcePosition &position, float radiusSquared, uint32_t red, uint32_t green,
         uint32_t blue, bool enabled) {
    for (const LightSource &record : *table)
        if (SamePosition(record, position))
            return;
    const auto r2 = static_cast<int32_t>(static_cast<double>(radiusSquared) + 0.5);
    bool blocked = false;
    for (LightSource &record : *table) {
        const int64_t dx = int64_t{record.X} - position.X, dy = int64_t{record.Y} - position.Y;
        if (Square(dx) + Square(dy) >= std::max(r2, record.RadiusSquared))
            continue;
        if (enabled && r2 > record.RadiusSquared)
            record.State = 0;
        else
            blocked = true;
    }
    if (blocked)
        return;
    table->push_back({position.X, position.XQuarter, position.Y, position.YQuarter, r2, 0, red, green, blue,
                      kOne, -1, enabled ? 1u : 0u, 1});
}

void Merge(const Table &worker, const Analysis &analysis, Table *global) {
    const double s = analysis.scale;
    for (const LightSource &record : worker) {
        const PixelSample pixel = Fetch(analysis, record.X, record.Y);
        LightSourcePosition position{record.X, record.XQuarter, record.Y, record.YQuarter};
        if (s != 1.0)
            position = {static_cast<int32_t>(record.X * s + 0.5), 0, static_cast<int32_t>(record.Y * s + 0.5),
                        0};
        if (IsSelected(pixel) && record.State == 1)
            Add(global, position, static_cast<float>(record.RadiusSquared * s * s), record.Red, record.Green,
                record.Blue, true);
    }
}

void Rank(Table *table) {
    uint32_t largest = 0;
    for (const LightSource &record : *table)
        if (record.State != 0)
            largest = std::max({largest, record.Red, record.Green, record.Blue});
    for (LightSource &record : *table) {
        record.Red = Normalize(record.Red, largest);
        record.Green = Normalize(record.Green, largest);
        record.Blue = Normalize(record.Blue, largest);
        record.Brightness =
            static_cast<uint32_t>((static_cast<uint64_t>(record.Red) + record.Green + record.Blue) / 3);
    }
    std::stable_sort(table->begin(), table->end(),
                     [](const LightSource &a, const LightSource &b) { return a.Brightness > b.Brightness; });
}

int32_t SetStateAt(Table *table, int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    const int64_t reach = std::max<int64_t>(static_cast<int64_t>(8000.0 / zoomPercent), 80);
    int64_t nearest = Square(reach);
    int32_t chosen = -1;
    for (size_t i = 0; i < table->size(); ++i) {
        const LightSource &source = (*table)[i];
        const int64_t distance = Square((int64_t{y} - source.Y) * 4 - source.YQuarter) +
                                 Square((int64_t{x} - source.X) * 4 - source.XQuarter);
        if (IsEligible(source, mode) && distance < nearest) {
            nearest = distance;
            chosen = static_cast<int32_t>(i);
        }
    }
    if (chosen >= 0)
        Change(&(*table)[chosen], mode);
    return chosen;
}

int32_t SetStatesInRect(Table *table, const IntRect &rect, int32_t mode) {
    int32_t changed = 0;
    for (LightSource &source : *table) {
        const bool inside =
            source.X >= rect.left && source.X < rect.right && source.Y >= rect.top && source.Y < rect.bottom;
        if (inside && IsEligible(source, mode)) {
            Change(&source, mode);
            ++changed;
        }
    }
    return changed;
}

std::vector<std::string> FormatTable(const Table &table) {
    char line[256];
    std::snprintf(line, sizeof line, "NumberOfLightSources = %d\n\n", static_cast<int>(table.size()));
    std::vector<std::string> text{line};
    for (size_t i = 0; i < table.size(); ++i) {
        const LightSource &s = table[i];
        std::snprintf(
            line, sizeof line, "LightSourceTable[%04d] x = %.2f, y = %.2f, Diam = %.2f, Bright = %X%s",
            static_cast<int>(i), s.X + s.XQuarter * 0.25, s.Y + s.YQuarter * 0.25,
            2 * std::sqrt(static_cast<double>(s.RadiusSquared)), s.Brightness, s.State == 0 ? " (D)" : "");
        text.emplace_back(line);
    }
    return text;
}

} // namespace reference
