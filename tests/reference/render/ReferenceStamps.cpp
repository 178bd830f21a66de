#include "tests/reference/render/ReferenceStamps.h"

#include "tests/reference/render/ReferenceBurst.h"

#include <algorithm>
#include <cmath>

namespace reference {

namespace {

constexpr uint32_t kOne = 4294967294u;
constexpr double kFractionScale = 4294967294.0;

struct Limits {
    int64_t x, y; // quarter pixels
};

Limits ImageLimits(const RenderContext &context) {
    const double scale = context.settings.scale;
    return {1 + static_cast<int64_t>(context.width * scale * 0.04),
            1 + static_cast<int64_t>(context.height * scale * 0.04)};
}

double SharpnessFactor(const RenderContext &context) {
    const double power = std::pow(context.settings.spikeSharpness / 100.0, 3.5);
    return (power + 0.003) * 500000.0 / Diagonal(context.width, context.height) / context.settings.scale;
}

// Appends an entry at a quarter-pixel position, unless its offset does not fit.
void Append(int64_t x, int64_t y, const std::array<uint32_t, 3> &factors, uint32_t value, Stamp *stamp) {
    const int64_t dx = x / 4, dy = y / 4;
    if (dx < -32768 || dx > 32767 || dy < -32768 || dy > 32767)
        return;
    stamp->push_back({static_cast<int16_t>(dx), static_cast<int16_t>(dy), factors, value});
}

// One arm on its way: which axis it is walked along and how its centre line runs.
struct Walk {
    const RenderContext &context;
    const ArmShape &shape;
    int32_t px, py;
    bool alongY;
    double slope, origin; // of the centre line on the minor axis, over the position on the major one
    double halfWidth, edgeSlope;
    int64_t minorLimit;
    uint32_t smallest; // value below which nothing is drawn
};

double Coverage(const Walk &walk, double centre, int64_t position) {
    const auto x = static_cast<double>(position);
    const double a = 0.5 - ((centre - walk.halfWidth) - x) * 0.25 * walk.edgeSlope;
    const double b = ((centre + walk.halfWidth) - x) * 0.25 * walk.edgeSlope + 0.5;
    return std::min(1.0, std::min(a, b));
}

// Draws one pixel; returns its value.
uint32_t DrawPixel(const Walk &walk, int64_t major, int64_t minor, double coverage, Stamp *stamp) {
    const int64_t x = walk.alongY ? minor : major, y = walk.alongY ? major : minor;
    const int64_t distance = Distance(x - walk.px, y - walk.py);
    const auto fraction = static_cast<uint32_t>(std::trunc(std::pow(coverage, 1.6) * kFractionScale + 0.5));
    const uint32_t profile = ProfileValue(walk.context, walk.shape, distance);
    const uint32_t value = Product(walk.context.precision, fraction, profile);
    if (value >= walk.smallest)
        Append(x, y, ColorFactors(walk.context, distance), value, stamp);
    return value;
}

// Draws one row across the arm; returns the largest value on it.
uint32_t DrawRow(const Walk &walk, int64_t major, Stamp *stamp) {
    const double centre = walk.origin + walk.slope * static_cast<double>(major);
    const int64_t start = 4 * (static_cast<int64_t>(centre) / 4);
    uint32_t largest = 0;
    for (int64_t minor = start; minor >= -walk.minorLimit; minor -= 4) {
        const double coverage = Coverage(walk, centre, minor);
        if (coverage <= 0.0)
            break;
        largest = std::max(largest, DrawPixel(walk, major, minor, coverage, stamp));
    }
    for (int64_t minor = start + 4; minor <= walk.minorLimit; minor += 4) {
        const double coverage = Coverage(walk, centre, minor);
        if (coverage <= 0.0)
            break;
        largest = std::max(largest, DrawPixel(walk, major, minor, coverage, stamp));
    }
    return largest;
}

} // namespace

uint32_t ProfileValue(const RenderContext &context, const ArmShape &shape, int64_t distance) {
    const double reach = static_cast<double>(distance) * 1500.0 / Diagonal(context.width, context.height);
    const double fall = std::pow(shape.decay / 100.0, 0.28) * 200.0 / (shape.arm.length + 28);
    const double g = std::pow(reach / context.settings.scale + 1.0, -fall);
    if (g * 8.0 < 1.0)
        return static_cast<uint32_t>(shape.arm.brightness * g * 8.0);
    return shape.arm.brightness;
}

std::array<uint32_t, 3> ColorFactors(const RenderContext &context, int64_t distance) {
    const RenderSettings &s = context.settings;
    const double steps =
        (static_cast<double>(distance) / s.scale) * 300000000.0 / Diagonal(context.width, context.height);
    const auto whole = static_cast<uint32_t>(static_cast<uint64_t>(steps));
    const auto divisor = static_cast<uint32_t>((107 - s.rainbowFrequency) * (107 - s.rainbowFrequency));
    const uint32_t p = whole / divisor;
    uint32_t amplitude = static_cast<uint32_t>(s.rainbowIntensity) * 42949672u;
    if (p < 2000)
        amplitude = amplitude / 2000 * p;
    const auto factor = [&](uint64_t shift) {
        return kOne - Product(context.precision, Angles().rainbow[(p + shift) % 3600], amplitude);
    };
    return {factor(1200), factor(2400), factor(0)};
}

uint32_t FlareValue(const RenderContext &context, int64_t distance) {
    const double reach = (static_cast<double>(distance) * 25.0 / context.settings.scale) /
                         Diagonal(context.width, context.height);
    const double q = std::trunc(67108860.0 / std::pow(reach + 1.0, 25.0 - context.settings.length * 0.2));
    return q > 256.0 ? static_cast<uint32_t>(q) - 256 : 0;
}

void DrawArm(const RenderContext &context, int32_t px, int32_t py, const ArmShape &shape, Stamp *stamp) {
    const uint32_t smallest = context.floor / 4;
    if (shape.arm.length < 1 || shape.arm.brightness < smallest)
        return;
    const auto &sine = Angles().sine;
    const double sx = sine[ReduceAngle(shape.arm.angle)];
    const double sy = -sine[ReduceAngle(int64_t{shape.arm.angle} + 900)];
    const bool alongY = std::fabs(sx) < std::fabs(sy);
    const double m = alongY ? sy : sx, n = alongY ? sx : sy;
    const Limits limits = ImageLimits(context);
    const double slope = n / m;
    const double origin = alongY ? px - slope * py : py - slope * px;
    const Walk walk{context,
                    shape,
                    px,
                    py,
                    alongY,
                    slope,
                    origin,
                    2.0 * shape.widthFactor / std::fabs(m),
                    std::min(0.5, std::fabs(m) * shape.sharpnessFactor),
                    alongY ? limits.x : limits.y,
                    smallest};
    const int64_t majorLimit = alongY ? limits.y : limits.x;
    const int64_t step = m > 0 ? 4 : -4;
    for (int64_t major = m > 0 ? 0 : -4; std::abs(major) <= majorLimit; major += step)
        if (DrawRow(walk, major, stamp) < smallest)
            break;
}

Stamp BuildStar(const RenderContext &context, int32_t px, int32_t py) {
    const RenderSettings &s = context.settings;
    Stamp stamp;
    const double sharpness = SharpnessFactor(context), width = s.scale * 0.005;
    for (const Arm &arm : PrimaryArms(s))
        DrawArm(context, px, py, {arm, sharpness, width, s.intensity}, &stamp);
    if (s.secondaryIntensity <= 0 || s.length <= 0)
        return stamp;
    const uint32_t full = PowerFraction(s.secondaryIntensity, 2.8);
    for (const BurstRow &row : kBurst) {
        const Arm arm{s.angle + row.angle * 10, s.length * 90 / 100,
                      static_cast<uint32_t>(row.weight) * (full / 100)};
        DrawArm(context, px, py, {arm, sharpness * 0.5, width, s.secondaryIntensity}, &stamp);
    }
    return stamp;
}

Stamp BuildFlare(const RenderContext &context, int32_t px, int32_t py) {
    Stamp stamp;
    const std::array<uint32_t, 3> untinted{kOne, kOne, kOne};
    const auto valueAt = [&](int64_t x, int64_t y) { return FlareValue(context, Distance(x - px, y - py)); };
    Append(0, 0, untinted, valueAt(0, 0), &stamp);
    bool ended = false;
    for (int64_t r = 4; !ended && r <= int64_t{4} * context.width; r += 4) {
        ended = valueAt(0, r) < context.floor;
        for (int64_t j = 0; j <= r; j += 4) {
            std::vector<std::pair<int64_t, int64_t>> points{{j, r},  {-j, r},  {r, j},  {r, -j},
                                                            {j, -r}, {-j, -r}, {-r, j}, {-r, -j}};
            std::sort(points.begin(), points.end());
            points.erase(std::unique(points.begin(), points.end()), points.end());
            for (const auto &[x, y] : points)
                if (valueAt(x, y) >= context.floor)
                    Append(x, y, untinted, valueAt(x, y), &stamp);
        }
    }
    return stamp;
}

} // namespace reference
