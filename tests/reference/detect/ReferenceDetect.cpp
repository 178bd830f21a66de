#include "tests/reference/detect/ReferenceDetect.h"

#include "tests/reference/detect/ReferenceProfile.h"
#include "tests/reference/detect/ReferenceRefine.h"

#include <cmath>

namespace reference {

namespace {

constexpr double kBiggestRadius = 64.0;
constexpr int kMostMoves = 12;

bool IsLocalMaximum(const Analysis &analysis, int64_t x, int64_t y) {
    const int64_t own = Brightness(Fetch(analysis, x, y));
    for (const auto &direction : kDirections)
        if (Brightness(Fetch(analysis, x + direction[0], y + direction[1])) > own)
            return false;
    return true;
}

bool IsAlreadyFound(const Table &table, int64_t x, int64_t y) {
    for (const LightSource &source : table) {
        const int64_t dx = source.X - x, dy = source.Y - y;
        if (dx * dx + dy * dy <= source.RadiusSquared)
            return true;
    }
    return false;
}

Profile CleanedProfile(Analysis *analysis, int64_t x, int64_t y, double toleranceShare) {
    Profile profile = MeasureProfile(analysis, x, y);
    const double deviation = MeasureRadii(&profile, 0).deviation;
    MeasureRadii(&profile, deviation * toleranceShare);
    return profile;
}

// Moves (x, y) to the middle of the light it lies on; false when there is none or it is known already.
bool Recentre(Analysis *analysis, const Table &table, int64_t *x, int64_t *y) {
    if (!IsLocalMaximum(*analysis, *x, *y) || IsAlreadyFound(table, *x, *y))
        return false;
    Profile profile = CleanedProfile(analysis, *x, *y, 1.2);
    for (int move = 0; move < kMostMoves; ++move) {
        const auto centre = FindCentre(profile, *x, *y);
        if (!centre)
            return false;
        const Centre nearest = NearestPixel(*centre);
        const bool inside =
            IsInside(*analysis, centre->x, centre->y) && IsInside(*analysis, nearest.x, nearest.y);
        if (!inside || (nearest.x == *x && nearest.y == *y))
            break;
        *x = nearest.x;
        *y = nearest.y;
        profile = CleanedProfile(analysis, *x, *y, 1.2);
    }
    return !IsAlreadyFound(table, *x, *y);
}

double MeanPositiveRadius(const Profile &profile) {
    double sum = 0;
    int count = 0;
    for (const float radius : profile.radius)
        if (radius > 0) {
            sum += radius;
            ++count;
        }
    return count == 0 ? 0.0 : sum / count;
}

void AnalyzeCandidate(Analysis *analysis, int64_t x, int64_t y, Table *table) {
    if (!Recentre(analysis, *table, &x, &y))
        return;
    Profile profile = MeasureProfile(analysis, x, y);
    const RadiusStatistics statistics = MeasureRadii(&profile, 0);
    if (statistics.deviation == -1.0)
        return;
    MeasureRadii(&profile, statistics.deviation * 0.75);
    double radius = MeanPositiveRadius(profile);
    if (radius <= 0.0 || radius > kBiggestRadius)
        return;
    auto centre = FindCentre(profile, x, y);
    if (!centre || !PassesRingContrast(*analysis, *centre, radius) || !Refine(*analysis, &*centre, &radius))
        return;
    const LightColor light = MeasureLight(*analysis, *centre, radius);
    if (!IsInside(*analysis, centre->x, centre->y))
        return;
    const LightSourcePosition position{
        static_cast<int32_t>(centre->x), static_cast<int32_t>(centre->xQuarter),
        static_cast<int32_t>(centre->y), static_cast<int32_t>(centre->yQuarter)};
    Add(table, position, static_cast<float>(radius * radius), light.red, light.green, light.blue,
        IsSelected(Fetch(*analysis, centre->x, centre->y)));
}

} // namespace

std::vector<Band> SplitBands(const IntRect &bounds, int32_t workers) {
    const int64_t height = (int64_t{bounds.bottom} - bounds.top) / workers;
    std::vector<Band> bands;
    int64_t start = bounds.top;
    for (int32_t i = 0; i < workers; ++i) {
        bands.push_back({start, i == workers - 1 ? bounds.bottom : start + height});
        start = start + height + 1;
    }
    return bands;
}

Table ScanBand(Analysis *analysis, const Band &band) {
    Table table;
    const uint32_t limit = analysis->maxBrightness * 7u / 10u;
    for (int64_t y = band.top; y < band.bottom; ++y)
        for (int64_t x = analysis->bounds.left; x < analysis->bounds.right; ++x) {
            const PixelSample sample = Fetch(*analysis, x, y);
            if (IsSelected(sample) && Brightness(sample) >= limit)
                AnalyzeCandidate(analysis, x, y, &table);
        }
    return table;
}

Table BuildTable(const ImageBuffer &image, int32_t workers) {
    Analysis analysis = PrepareAnalysis(image);
    std::vector<Table> tables;
    for (const Band &band : SplitBands(analysis.bounds, workers))
        tables.push_back(ScanBand(&analysis, band));
    Table global;
    for (const Table &table : tables)
        Merge(table, analysis, &global);
    Rank(&global);
    return global;
}

} // namespace reference
