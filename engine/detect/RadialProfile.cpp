#include "engine/detect/RadialProfile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int32_t kMaxSteps = 137;
constexpr int32_t kEdgeReach = 8;             // an edge test looks back so many steps
constexpr double kDiagonalWeight = 0.7071067; // not the nearest value of 1/√2: meant so
constexpr uint32_t kLargestMinimum = 0xFFFFFF;

// The threshold unit is this part of the brightest pixel.
constexpr uint32_t kUnitDivisor = 85;
// An edge is looked for once the spot has darkened by this part of its brightest value.
constexpr int64_t kDarkeningDivisor = 35;

// One profile while it is measured. The extremes and the colour run on from direction to direction.
struct ProfileWalk {
    const BandPicture *picture;
    PixelSample reference;
    int64_t unit;
    int64_t darkest, brightest;
    int64_t darkened; // an edge is looked for where it is darker than this
    bool colorVaries;
    int64_t b[kMaxSteps + 1]; // brightness at each step of the direction at hand
};

// The fall of brightness at step k: from average a1 to a2.
struct EdgeTest {
    int64_t a1, a2;
    int64_t limitTimes, limitParts; // it must be more than limitTimes / limitParts, rounded down
    double offset;                  // distance of the edge's inner end, pixels
    int32_t slopeUnit;              // distance between a1 and a2, pixels
    int64_t diagonalDivisor;        // 100 × slopeUnit × √2
};

bool ChannelVaries(uint32_t value, uint32_t reference) {
    return std::abs(int64_t{value} - int64_t{reference}) > reference / 8;
}

bool ColorVaries(const PixelSample &p, const PixelSample &reference) {
    return ChannelVaries(p.red, reference.red) || ChannelVaries(p.green, reference.green) ||
           ChannelVaries(p.blue, reference.blue);
}

int64_t Mean2(const int64_t *b) {
    return (b[0] + b[1]) / 2;
}
int64_t Mean3(const int64_t *b) {
    return (b[0] + b[1] + b[2]) / 3;
}

// Wider averages, further apart, the longer the walk: a large spot has a soft edge.
EdgeTest EdgeTestAt(const int64_t *b, int32_t k, int64_t unit) {
    if (k >= 12)
        return EdgeTest{Mean3(b + k - 8), Mean3(b + k - 5), 10 * unit, k + 33, k - 7.0, 3, 424};
    if (k >= 8)
        return EdgeTest{Mean3(b + k - 6), Mean3(b + k - 4), 10 * unit, 35, k - 5.0, 2, 283};
    if (k >= 4)
        return EdgeTest{Mean2(b + k - 4), Mean2(b + k - 3), 10 * unit, 24, k - 3.5, 1, 141};
    if (k == 3)
        return EdgeTest{Mean2(b), Mean2(b + 1), 10 * unit, 17, 0.5, 1, 141};
    return EdgeTest{b[0], b[1], unit, 1, 0.0, 1, 141};
}

// How the fall goes on after a2.
int64_t FallOnwards(const int64_t *b, int32_t k, int64_t a2) {
    if (k >= 8)
        return a2 - Mean3(b + k - 2);
    if (k >= 4) // starts one step further on than the first fall ends: meant so
        return Mean2(b + k - 2) - Mean2(b + k - 1);
    return k == 3 ? a2 - Mean2(b + 2) : a2 - b[2];
}

// Where between a1 and a2 the brightness passes the middle of the spot's range.
double EdgeRadius(const EdgeTest &edge, bool isDiagonal, int64_t middle) {
    const double offset = isDiagonal ? edge.offset * kDiagonalWeight : edge.offset;
    const double slopeUnit = isDiagonal ? edge.slopeUnit * std::sqrt(2.0) : edge.slopeUnit;
    if (edge.a1 == edge.a2)
        return offset + 0.5 * slopeUnit;
    return offset +
           slopeUnit * static_cast<double>(edge.a1 - middle) / static_cast<double>(edge.a1 - edge.a2);
}

// Looks for an edge that ends at step k.
bool FindEdge(const ProfileWalk &walk, int32_t k, bool isDiagonal, float *radius) {
    // cppcheck-suppress arrayIndexOutOfBoundsCond ; callers stay within the array
    if (k < 2 || std::min(walk.b[k], walk.darkest) >= walk.darkened)
        return false;
    const EdgeTest edge = EdgeTestAt(walk.b, k, walk.unit);
    int64_t d1 = edge.a1 - edge.a2;
    if (d1 * edge.limitParts <= edge.limitTimes)
        return false;
    int64_t d2 = FallOnwards(walk.b, k, edge.a2);
    if (isDiagonal) { // makes d1 smaller: what was refused above is refused here too
        d1 = d1 * 100 / edge.diagonalDivisor;
        d2 = d2 * 100 / edge.diagonalDivisor;
    }
    if (d1 * edge.limitParts <= edge.limitTimes || (d1 - d2) * edge.limitParts <= edge.limitTimes)
        return false;
    *radius = static_cast<float>(EdgeRadius(edge, isDiagonal, (walk.darkest + walk.brightest) / 2));
    return true;
}

void NoteBrightest(int64_t brightness, ProfileWalk *walk) {
    walk->brightest = brightness;
    walk->darkened = brightness - brightness / kDarkeningDivisor;
}

// How many steps, at most kMaxSteps, stay inside the bounds along one axis.
int32_t StepsInside(int32_t position, int32_t step, int32_t begin, int32_t end) {
    if (step == 0)
        return kMaxSteps;
    return std::min(kMaxSteps, step > 0 ? end - 1 - position : position - begin);
}

// Compares red and green in one go: most steps in a wide spot are no more than this.
bool HasSameColor(const PixelSample &a, const PixelSample &b) {
    uint64_t redGreenA, redGreenB;
    static_assert(offsetof(PixelSample, green) == 4 && offsetof(PixelSample, blue) == 8);
    memcpy(&redGreenA, &a, sizeof redGreenA);
    memcpy(&redGreenB, &b, sizeof redGreenB);
    return redGreenA == redGreenB && a.blue == b.blue;
}

// The same for steps along a row.
int32_t CountSameColorInRow(const PixelSample *p, const PixelSample &reference, int32_t dx, int32_t steps) {
    int32_t count = 0;
    while (count < steps && HasSameColor(*(p += dx), reference))
        ++count;
    return count;
}

// A pixel on the way from the centre outwards. The position may leave the bounds, the reading must not.
struct PixelCursor {
    const PixelSample *const *row;
    int32_t column;
    DirectionStep step;

    void Advance(int32_t steps) {
        row += ptrdiff_t{steps * step.dy};
        column += steps * step.dx;
    }
    const PixelSample &Next() {
        Advance(1);
        return (*row)[column];
    }
};

// Takes the steps over pixels that look like the centre, where the cursor is: they hold no edge and no other
// colour. Returns the first step not taken, which the cursor then is before; the brightness of those taken is
// kept as far back as an edge test looks.
int32_t SkipSameColor(ProfileWalk *walk, PixelCursor *cursor, int32_t steps) {
    int32_t k = 1;
    if (cursor->step.dy == 0) {
        k += CountSameColorInRow(*cursor->row + cursor->column, walk->reference, cursor->step.dx, steps);
        cursor->Advance(k - 1);
    } else {
        while (k <= steps && HasSameColor(cursor->Next(), walk->reference))
            ++k;
        if (k <= steps)
            cursor->Advance(-1);
    }
    for (int32_t i = std::max(k - kEdgeReach, 1); i < k; ++i)
        walk->b[i] = walk->b[0];
    if (k > 1)
        walk->darkest = std::min(walk->darkest, walk->b[0]);
    return k;
}

enum class WalkEnd { kEdge, kOutOfBounds, kNoEdge };

// Walks on from step k. *k becomes the last step taken.
WalkEnd WalkOn(ProfileWalk *walk, PixelCursor cursor, int32_t steps, int32_t *k, float *radius) {
    const bool isDiagonal = cursor.step.dx != 0 && cursor.step.dy != 0;
    for (; *k <= steps; ++*k) {
        const PixelSample &p = cursor.Next();
        const int64_t brightness = PixelBrightness(p);
        walk->b[*k] = brightness;
        walk->colorVaries = walk->colorVaries || ColorVaries(p, walk->reference);
        if (FindEdge(*walk, *k, isDiagonal, radius))
            return WalkEnd::kEdge;
        if (brightness > walk->brightest)
            NoteBrightest(brightness, walk);
        walk->darkest = std::min(walk->darkest, brightness);
    }
    return steps < kMaxSteps ? WalkEnd::kOutOfBounds : WalkEnd::kNoEdge;
}

WalkEnd WalkDirection(ProfileWalk *walk, int32_t x, int32_t y, int32_t direction, float *radius) {
    const DirectionStep step = kDirectionSteps[direction];
    const BandPicture &picture = *walk->picture;
    const IntRect &bounds = picture.bounds;
    const int32_t steps = std::min(StepsInside(x, step.dx, bounds.left, bounds.right),
                                   StepsInside(y, step.dy, bounds.top, bounds.bottom));
    PixelCursor cursor{picture.rows + (y - bounds.top), x - bounds.left, step};
    int32_t k = SkipSameColor(walk, &cursor, steps);
    const WalkEnd end = WalkOn(walk, cursor, steps, &k, radius);
    const int32_t furthest = y + std::min(k, steps) * step.dy;
    NoteRows(picture, furthest, furthest);
    return end;
}

// Mean of a side's valid radii: the straight one, then the two diagonals beside it. False when there is none.
bool SideMean(const RadialProfile &profile, int32_t straight, int32_t diagonal1, int32_t diagonal2,
              double *mean) {
    double sum = 0.0;
    int32_t count = 0;
    const auto add = [&sum, &count](float radius, double weight) {
        if (radius < 0)
            return;
        sum += radius * weight;
        ++count;
    };
    add(profile.radii[straight], 1.0);
    add(profile.radii[diagonal1], kDiagonalWeight);
    add(profile.radii[diagonal2], kDiagonalWeight);
    if (count == 0)
        return false;
    *mean = sum / count;
    return true;
}

void SplitQuarters(double value, int32_t *whole, int32_t *quarter) {
    const double shifted = value + 0.125;
    *whole = static_cast<int32_t>(std::floor(shifted));
    *quarter = static_cast<int32_t>((shifted - *whole) * 4);
}

} // namespace

bool MeasureProfile(const BandPicture &picture, int32_t x, int32_t y, RadialProfile *profile) {
    ProfileWalk walk;
    walk.picture = &picture;
    walk.reference = FetchPixel(picture, x, y);
    NoteRows(picture, y, y);
    walk.unit = picture.maxBrightness / kUnitDivisor;
    walk.b[0] = PixelBrightness(walk.reference);
    NoteBrightest(walk.b[0], &walk);
    walk.darkest = kLargestMinimum;
    walk.colorVaries = false;
    std::fill_n(profile->radii, kDirections, -1.0f);
    for (int32_t direction = 0; direction < kDirections; ++direction) {
        const WalkEnd end = WalkDirection(&walk, x, y, direction, &profile->radii[direction]);
        if (end == WalkEnd::kNoEdge && !walk.colorVaries) {
            std::fill_n(profile->radii, kDirections, -1.0f);
            return false;
        }
    }
    return true;
}

ProfileStatistics MeasureProfileStatistics(double tolerance, RadialProfile *profile) {
    double sum = 0.0, squares = 0.0;
    int32_t count = 0;
    for (const float radius : profile->radii)
        if (radius >= 0) {
            sum += radius;
            ++count;
        }
    if (count == 0)
        return ProfileStatistics{-1.0, -1.0};
    const double firstMean = sum / count;
    sum = 0.0;
    count = 0;
    for (float &radius : profile->radii) {
        if (radius < 0)
            continue;
        const double difference = radius - firstMean;
        if (tolerance != 0 && std::fabs(difference) > tolerance) {
            radius = static_cast<float>(firstMean);
            continue;
        }
        // Deviations from the first mean, not from the one of the radii kept: meant so.
        sum += radius;
        squares += difference * difference;
        ++count;
    }
    if (count == 0)
        return ProfileStatistics{-1.0, -1.0};
    return ProfileStatistics{sum / count, std::sqrt(squares / count)};
}

bool FindProfileCenter(const RadialProfile &profile, int32_t x, int32_t y, LightSourcePosition *center) {
    double right, left, down, up;
    if (!SideMean(profile, 0, 1, 7, &right) || !SideMean(profile, 4, 3, 5, &left) ||
        !SideMean(profile, 2, 1, 3, &down) || !SideMean(profile, 6, 5, 7, &up))
        return false;
    // The whole difference, not half of it: meant so.
    SplitQuarters(x - left + right, &center->X, &center->XQuarter);
    SplitQuarters(y - up + down, &center->Y, &center->YQuarter);
    return true;
}
