#include "tests/reference/detect/ReferenceProfile.h"

#include <algorithm>
#include <cmath>
#include <deque>

namespace reference {

namespace {

constexpr int32_t kLongestWalk = 137;
constexpr double kDiagonalWeight = 0.7071067;

struct Channels {
    int64_t value[3];
};

Channels ChannelsOf(const PixelSample &sample) {
    return {{sample.red, sample.green, sample.blue}};
}

// The three averages across a possible edge at step k, as far as they matter, and how its radius is formed.
struct EdgeTest {
    int64_t a1, a2, d1, d2, limit;
    double offset, slope;
};

int64_t Mean2(int64_t a, int64_t b) {
    return (a + b) / 2;
}

int64_t Mean3(const std::vector<int64_t> &b, size_t first) {
    return (b[first] + b[first + 1] + b[first + 2]) / 3;
}

EdgeTest StraightEdge(const std::vector<int64_t> &b, size_t k, int64_t unit) {
    EdgeTest e{};
    int64_t a3 = 0;
    if (k == 2) {
        e.a1 = b[0], e.a2 = b[1], a3 = b[2];
        e.limit = unit, e.offset = 0, e.slope = 1;
    } else if (k == 3) {
        e.a1 = Mean2(b[0], b[1]), e.a2 = Mean2(b[1], b[2]), a3 = Mean2(b[2], b[3]);
        e.limit = 10 * unit / 17, e.offset = 0.5, e.slope = 1;
    } else if (k <= 7) {
        e.a1 = Mean2(b[k - 4], b[k - 3]), e.a2 = Mean2(b[k - 3], b[k - 2]);
        e.limit = 10 * unit / 24, e.offset = static_cast<double>(k) - 3.5, e.slope = 1;
    } else if (k <= 11) {
        e.a1 = Mean3(b, k - 6), e.a2 = Mean3(b, k - 4), a3 = Mean3(b, k - 2);
        e.limit = 10 * unit / 35, e.offset = static_cast<double>(k) - 5, e.slope = 2;
    } else {
        e.a1 = Mean3(b, k - 8), e.a2 = Mean3(b, k - 5), a3 = Mean3(b, k - 2);
        e.limit = 10 * unit / (static_cast<int64_t>(k) + 33), e.offset = static_cast<double>(k) - 7,
        e.slope = 3;
    }
    e.d1 = e.a1 - e.a2;
    e.d2 = e.a2 - a3;
    if (k >= 4 && k <= 7)
        e.d2 = Mean2(b[k - 2], b[k - 1]) - Mean2(b[k - 1], b[k]);
    return e;
}

EdgeTest DiagonalEdge(const std::vector<int64_t> &b, size_t k, int64_t unit) {
    EdgeTest e = StraightEdge(b, k, unit);
    const int64_t divisor = k <= 7 ? 141 : k <= 11 ? 283 : 424;
    e.d1 = e.d1 * 100 / divisor;
    e.d2 = e.d2 * 100 / divisor;
    e.slope *= std::sqrt(2.0);
    e.offset *= kDiagonalWeight;
    return e;
}

// State shared by the eight walks of one profile.
struct Spot {
    const Analysis &analysis;
    int64_t x, y, unit;
    Channels reference;
    int64_t runningMaximum, runningMinimum;
    bool colorVaries, flat;
};

bool DiffersInColor(const Spot &spot, const PixelSample &sample) {
    const Channels channels = ChannelsOf(sample);
    for (int i = 0; i < 3; ++i)
        if (std::abs(channels.value[i] - spot.reference.value[i]) > spot.reference.value[i] / 8)
            return true;
    return false;
}

double EdgeRadius(const Spot &spot, const EdgeTest &edge) {
    if (edge.a1 == edge.a2)
        return edge.offset + 0.5 * edge.slope;
    const int64_t middle = (spot.runningMinimum + spot.runningMaximum) / 2;
    return edge.offset +
           edge.slope * static_cast<double>(edge.a1 - middle) / static_cast<double>(edge.a1 - edge.a2);
}

double WalkDirection(Spot *spot, int32_t direction) {
    std::vector<int64_t> b{Brightness(Fetch(spot->analysis, spot->x, spot->y))};
    for (int32_t k = 1; k <= kLongestWalk; ++k) {
        const int64_t x = spot->x + k * kDirections[direction][0],
                      y = spot->y + k * kDirections[direction][1];
        if (!IsInside(spot->analysis, x, y))
            return -1.0;
        const PixelSample sample = Fetch(spot->analysis, x, y);
        b.push_back(Brightness(sample));
        if (DiffersInColor(*spot, sample))
            spot->colorVaries = true;
        const int64_t darkest = std::min(b[k], spot->runningMinimum);
        if (k >= 2 && darkest < spot->runningMaximum - spot->runningMaximum / 35) {
            const EdgeTest edge =
                direction % 2 == 1 ? DiagonalEdge(b, k, spot->unit) : StraightEdge(b, k, spot->unit);
            if (edge.d1 > edge.limit && edge.d1 - edge.d2 > edge.limit)
                return EdgeRadius(*spot, edge);
        }
        spot->runningMaximum = std::max(spot->runningMaximum, b[k]);
        spot->runningMinimum = std::min(spot->runningMinimum, b[k]);
    }
    if (!spot->colorVaries)
        spot->flat = true;
    return -1.0;
}

// Mean of those of three radii that were found, the last two weighted as diagonals.
std::optional<double> SideMean(float straight, float diagonal1, float diagonal2) {
    double sum = 0;
    int count = 0;
    const auto take = [&](float radius, double weight) {
        if (radius >= 0) {
            sum += radius * weight;
            ++count;
        }
    };
    take(straight, 1.0);
    take(diagonal1, kDiagonalWeight);
    take(diagonal2, kDiagonalWeight);
    if (count == 0)
        return std::nullopt;
    return sum / count;
}

} // namespace

Profile MeasureProfile(Analysis *analysis, int64_t x, int64_t y) {
    const PixelSample centre = Fetch(*analysis, x, y);
    Spot spot{*analysis, x,     y,    analysis->maxBrightness / 85, ChannelsOf(centre), Brightness(centre),
              0xFFFFFF,  false, false};
    Profile profile{};
    for (int32_t direction = 0; direction < 8; ++direction) {
        profile.radius[direction] = static_cast<float>(WalkDirection(&spot, direction));
        if (!spot.flat)
            continue;
        FloodFill(analysis, x, y);
        for (float &radius : profile.radius)
            radius = -1.0f;
        break;
    }
    return profile;
}

RadiusStatistics MeasureRadii(Profile *profile, double tolerance) {
    double total = 0;
    int found = 0;
    for (const float radius : profile->radius)
        if (radius >= 0) {
            total += radius;
            ++found;
        }
    if (found == 0)
        return {-1.0, -1.0};
    const double mean = total / found;
    double sum = 0, squares = 0;
    int count = 0;
    for (float &radius : profile->radius) {
        if (radius < 0)
            continue;
        if (tolerance != 0 && std::fabs(radius - mean) > tolerance) {
            radius = static_cast<float>(mean);
            continue;
        }
        sum += radius;
        squares += (radius - mean) * (radius - mean);
        ++count;
    }
    if (count == 0)
        return {-1.0, -1.0};
    return {sum / count, std::sqrt(squares / count)};
}

std::optional<Centre> FindCentre(const Profile &profile, int64_t x, int64_t y) {
    const float *r = profile.radius;
    const auto right = SideMean(r[0], r[1], r[7]), left = SideMean(r[4], r[3], r[5]);
    const auto down = SideMean(r[2], r[1], r[3]), up = SideMean(r[6], r[5], r[7]);
    if (!right || !left || !down || !up)
        return std::nullopt;
    const double newX = static_cast<double>(x) - *left + *right + 0.125;
    const double newY = static_cast<double>(y) - *up + *down + 0.125;
    const double wholeX = std::floor(newX), wholeY = std::floor(newY);
    return Centre{static_cast<int64_t>(wholeX), static_cast<int64_t>((newX - wholeX) * 4),
                  static_cast<int64_t>(wholeY), static_cast<int64_t>((newY - wholeY) * 4)};
}

void FloodFill(Analysis *analysis, int64_t x, int64_t y) {
    const Channels reference = ChannelsOf(Fetch(*analysis, x, y));
    const auto belongs = [&](int64_t px, int64_t py) {
        const PixelSample sample = Fetch(*analysis, px, py);
        if (!IsInside(*analysis, px, py) || sample.selectionLevel == 0)
            return false;
        const Channels channels = ChannelsOf(sample);
        for (int i = 0; i < 3; ++i)
            if (std::abs(channels.value[i] - reference.value[i]) > (reference.value[i] >> 3))
                return false;
        return true;
    };
    std::deque<std::pair<int64_t, int64_t>> pending{{x, y}};
    Mark(analysis, x, y);
    while (!pending.empty()) {
        const auto [px, py] = pending.front();
        pending.pop_front();
        for (const auto &[nx, ny] : {std::pair{px + 1, py}, {px - 1, py}, {px, py + 1}, {px, py - 1}})
            if (belongs(nx, ny)) {
                Mark(analysis, nx, ny);
                pending.emplace_back(nx, ny);
            }
    }
}

} // namespace reference
