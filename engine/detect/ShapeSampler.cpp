// A shape's edge is two quarter pixels wide on either side of its radius: with all lengths in quarter pixels
// and a radius index i, a pixel belongs to the disk when its distance from the centre is below i + 2, and to
// the ring when it is in [i − 2, i + 2).
#include "engine/detect/ShapeSampler.h"

#include "diag/BufferUsage.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kEdgeWidth = 2; // quarter pixels

// A shape's squared radii in quarter pixels, and the phase of its centre.
struct ShapeGeometry {
    int32_t innerSquared, outerSquared;
    int32_t reach; // no pixel lies further from the centre's whole pixel than this
    int32_t xQuarter, yQuarter;
};

ShapeGeometry MakeGeometry(float radius, bool isRing, int32_t phase) {
    const auto index = static_cast<int32_t>(radius / kShapeRadiusStep + 0.5f);
    const int32_t inner = isRing ? std::max(index - kEdgeWidth, 0) : 0;
    const int32_t outer = index + kEdgeWidth;
    return ShapeGeometry{inner * inner, outer * outer, outer / 4 + 1, phase % 4, phase / 4};
}

// The pixels of a row nearer than a radius: from `left` on, before `right`; none when those meet.
struct Chord {
    int32_t left, right;
};

// `squaresLeft`: the squared radius less the square of the row's distance, in quarter pixels.
Chord ChordOf(int32_t squaresLeft, int32_t xQuarter) {
    if (squaresLeft <= 0)
        return Chord{0, 0};
    const auto furthest = static_cast<int32_t>(std::sqrt(static_cast<double>(squaresLeft - 1)));
    // Arithmetic shifts: to the next whole pixel below.
    return Chord{(xQuarter - furthest + 3) >> 2, ((xQuarter + furthest) >> 2) + 1};
}

// Hands every run of the shape to `put`, top to bottom and left to right.
template <typename Put> void TraceRuns(const ShapeGeometry &g, Put put) {
    for (int32_t dy = -g.reach; dy <= g.reach; ++dy) {
        const int32_t y = 4 * dy - g.yQuarter;
        const Chord outer = ChordOf(g.outerSquared - y * y, g.xQuarter);
        const Chord hole = ChordOf(g.innerSquared - y * y, g.xQuarter);
        const auto putRun = [&put, dy](int32_t left, int32_t right) {
            if (left < right)
                put(ShapeRun{static_cast<int16_t>(dy), static_cast<int16_t>(left),
                             static_cast<int16_t>(right)});
        };
        const bool hasHole = hole.left < hole.right;
        putRun(outer.left, hasHole ? hole.left : outer.right);
        if (hasHole)
            putRun(hole.right, outer.right);
    }
}

void AppendRun(SubShape *sub, const ShapeRun &run) {
    sub->runs[sub->runCount++] = run;
    sub->pixelCount += static_cast<uint32_t>(run.right - run.left);
    sub->box.left = std::min<int32_t>(sub->box.left, run.left);
    sub->box.top = std::min<int32_t>(sub->box.top, run.dy);
    sub->box.right = std::max<int32_t>(sub->box.right, run.right);
    sub->box.bottom = std::max<int32_t>(sub->box.bottom, run.dy + 1);
}

// Leaves *sub alone when the shape has no pixel at all at this phase, or memory ran out.
void RasterizeSubShape(const ShapeGeometry &geometry, SubShape *sub) {
    uint32_t runs = 0;
    TraceRuns(geometry, [&runs](const ShapeRun &) { ++runs; });
    if (runs == 0)
        return;
    SubShape made{};
    made.allocatedBytes = runs * sizeof(ShapeRun);
    made.runs = static_cast<ShapeRun *>(CountedAlloc(made.allocatedBytes));
    if (!made.runs)
        return;
    TraceRuns(geometry, [&made](const ShapeRun &run) { AppendRun(&made, run); });
    *sub = made;
}

const PixelSample *PixelAt(const BandPicture &image, int32_t x, int32_t y) {
    return image.rows[y - image.bounds.top] + (x - image.bounds.left);
}

bool LiesInside(const IntRect &box, const IntRect &bounds, int32_t x, int32_t y) {
    return x + box.left >= bounds.left && x + box.right <= bounds.right && y + box.top >= bounds.top &&
           y + box.bottom <= bounds.bottom;
}

template <typename Visit> void VisitSpan(const PixelSample *p, int32_t length, Visit visit) {
    for (const PixelSample *end = p + length; p != end; ++p)
        visit(*p);
}

// Only the pixels inside the bounds; returns how many.
template <typename Visit>
int64_t VisitClippedRun(const ShapeRun &run, const BandPicture &image, int32_t x, int32_t y, Visit visit) {
    const int32_t left = std::max(x + run.left, image.bounds.left);
    const int32_t right = std::min(x + run.right, image.bounds.right);
    if (left >= right || !RectContains(image.bounds, left, y + run.dy))
        return 0;
    VisitSpan(PixelAt(image, left, y + run.dy), right - left, visit);
    return right - left;
}

template <typename Visit>
int64_t VisitSubShape(const SubShape &sub, const BandPicture &image, int32_t x, int32_t y, Visit visit) {
    const bool isWhole = LiesInside(sub.box, image.bounds, x, y);
    int64_t visited = isWhole ? sub.pixelCount : 0;
    for (uint32_t i = 0; i < sub.runCount; ++i) {
        const ShapeRun run = sub.runs[i];
        if (isWhole)
            VisitSpan(PixelAt(image, x + run.left, y + run.dy), run.right - run.left, visit);
        else
            visited += VisitClippedRun(run, image, x, y, visit);
    }
    return visited;
}

// Hands every pixel of the shape inside the bounds to `visit`, row by row, left to right; returns how many.
// Without the memory to keep the runs they are traced each time.
template <typename Visit>
int64_t VisitPixels(ShapeRecord *shape, bool isRing, const BandPicture &image,
                    const LightSourcePosition &center, Visit visit) {
    const int32_t phase = center.XQuarter + 4 * center.YQuarter;
    SubShape *sub = &shape->subShapes[phase];
    const ShapeGeometry geometry = MakeGeometry(*shape->radius, isRing, phase);
    NoteRows(image, center.Y - geometry.reach, center.Y + geometry.reach);
    if (!sub->runs)
        RasterizeSubShape(geometry, sub);
    if (sub->runs)
        return VisitSubShape(*sub, image, center.X, center.Y, visit);
    int64_t visited = 0;
    TraceRuns(geometry, [&](const ShapeRun &run) {
        visited += VisitClippedRun(run, image, center.X, center.Y, visit);
    });
    return visited;
}

bool SampleBrightness(ShapeRecord *shape, bool isRing, const BandPicture &image,
                      const LightSourcePosition &center, ShapeStatistics *out) {
    double sum = 0.0, squares = 0.0;
    const int64_t count = VisitPixels(shape, isRing, image, center, [&sum, &squares](const PixelSample &p) {
        const double brightness = PixelBrightness(p);
        sum += brightness;
        squares += brightness * brightness;
    });
    if (count == 0)
        return false;
    const double n = static_cast<double>(count), mean = sum / n;
    *out = ShapeStatistics{mean, std::sqrt(std::max(0.0, squares / n - mean * mean))};
    return true;
}

} // namespace

bool SampleDisk(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                ShapeStatistics *out) {
    return SampleBrightness(shape, false, image, center, out);
}

bool SampleRing(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                ShapeStatistics *out) {
    return SampleBrightness(shape, true, image, center, out);
}

bool SampleRingColor(ShapeRecord *shape, const BandPicture &image, const LightSourcePosition &center,
                     uint32_t color[3]) {
    double sums[3] = {0.0, 0.0, 0.0};
    const int64_t count = VisitPixels(shape, true, image, center, [&sums](const PixelSample &p) {
        sums[0] += p.red;
        sums[1] += p.green;
        sums[2] += p.blue;
    });
    if (count == 0)
        return false;
    for (int i = 0; i < 3; ++i)
        color[i] = static_cast<uint32_t>(sums[i] / static_cast<double>(count));
    return true;
}

double ShapeContrast(const ShapeStatistics &statistics) {
    const double spread = 2 * statistics.deviation;
    return spread > statistics.mean ? 0.0 : statistics.mean - spread;
}

void FreeShapeRecord(ShapeRecord *shape) {
    for (SubShape &sub : shape->subShapes) {
        CountedFree(sub.runs, sub.allocatedBytes);
        sub = SubShape{};
    }
}
