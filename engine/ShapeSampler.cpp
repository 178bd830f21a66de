// A shape's edge is two quarter pixels wide on either side of its radius: with all lengths in quarter pixels
// and a radius index i, a pixel belongs to the disk when its distance from the centre is below i + 2, and to
// the ring when it is in [i − 2, i + 2).
#include "engine/ShapeSampler.h"

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

bool BelongsTo(const ShapeGeometry &g, int32_t dx, int32_t dy) {
    const int32_t x = 4 * dx - g.xQuarter, y = 4 * dy - g.yQuarter;
    const int32_t distance = x * x + y * y;
    return distance >= g.innerSquared && distance < g.outerSquared;
}

// Hands every run of the shape to `put`, top to bottom and left to right.
template <typename Put> void TraceRuns(const ShapeGeometry &g, Put put) {
    for (int32_t dy = -g.reach; dy <= g.reach; ++dy)
        for (int32_t dx = -g.reach; dx <= g.reach; ++dx) {
            if (!BelongsTo(g, dx, dy))
                continue;
            const int32_t left = dx;
            while (BelongsTo(g, dx, dy))
                ++dx;
            put(ShapeRun{static_cast<int16_t>(dy), static_cast<int16_t>(left), static_cast<int16_t>(dx)});
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

// False when the shape has no pixel at all at this phase, or memory ran out.
bool RasterizeSubShape(const ShapeGeometry &geometry, SubShape *sub) {
    uint32_t runs = 0;
    TraceRuns(geometry, [&runs](const ShapeRun &) { ++runs; });
    if (runs == 0)
        return false;
    SubShape made{};
    made.allocatedBytes = runs * sizeof(ShapeRun);
    made.runs = static_cast<ShapeRun *>(CountedAlloc(made.allocatedBytes));
    if (!made.runs)
        return false;
    TraceRuns(geometry, [&made](const ShapeRun &run) { AppendRun(&made, run); });
    *sub = made;
    return true;
}

const SubShape *FindSubShape(ShapeRecord *shape, bool isRing, const LightSourcePosition &center) {
    const int32_t phase = center.XQuarter + 4 * center.YQuarter;
    SubShape *sub = &shape->subShapes[phase];
    if (!sub->runs && !RasterizeSubShape(MakeGeometry(*shape->radius, isRing, phase), sub))
        return nullptr;
    return sub;
}

const PixelSample *PixelAt(const AnalysisImage &image, int32_t x, int32_t y) {
    const int64_t width = image.bounds.right - image.bounds.left;
    return image.samples + (y - image.bounds.top) * width + (x - image.bounds.left);
}

bool LiesInside(const IntRect &box, const IntRect &bounds, int32_t x, int32_t y) {
    return x + box.left >= bounds.left && x + box.right <= bounds.right && y + box.top >= bounds.top &&
           y + box.bottom <= bounds.bottom;
}

template <typename Visit>
int64_t VisitWhole(const SubShape &sub, const AnalysisImage &image, int32_t x, int32_t y, Visit visit) {
    for (uint32_t i = 0; i < sub.runCount; ++i) {
        const ShapeRun run = sub.runs[i];
        const PixelSample *p = PixelAt(image, x + run.left, y + run.dy);
        for (const PixelSample *end = p + (run.right - run.left); p != end; ++p)
            visit(*p);
    }
    return sub.pixelCount;
}

template <typename Visit>
int64_t VisitClipped(const SubShape &sub, const AnalysisImage &image, int32_t x, int32_t y, Visit visit) {
    int64_t visited = 0;
    for (uint32_t i = 0; i < sub.runCount; ++i) {
        const ShapeRun run = sub.runs[i];
        const int32_t left = std::max(x + run.left, image.bounds.left);
        const int32_t right = std::min(x + run.right, image.bounds.right);
        if (left >= right || !RectContains(image.bounds, left, y + run.dy))
            continue;
        const PixelSample *p = PixelAt(image, left, y + run.dy);
        for (const PixelSample *end = p + (right - left); p != end; ++p)
            visit(*p);
        visited += right - left;
    }
    return visited;
}

// Hands every pixel of the shape inside the bounds to `visit`, row by row, left to right; returns how many.
template <typename Visit>
int64_t VisitPixels(const SubShape &sub, const AnalysisImage &image, const LightSourcePosition &center,
                    Visit visit) {
    return LiesInside(sub.box, image.bounds, center.X, center.Y)
               ? VisitWhole(sub, image, center.X, center.Y, visit)
               : VisitClipped(sub, image, center.X, center.Y, visit);
}

bool SampleBrightness(ShapeRecord *shape, bool isRing, const AnalysisImage &image,
                      const LightSourcePosition &center, ShapeStatistics *out) {
    const SubShape *sub = FindSubShape(shape, isRing, center);
    if (!sub)
        return false;
    double sum = 0.0, squares = 0.0;
    const int64_t count = VisitPixels(*sub, image, center, [&sum, &squares](const PixelSample &p) {
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

bool SampleDisk(ShapeRecord *shape, const AnalysisImage &image, const LightSourcePosition &center,
                ShapeStatistics *out) {
    return SampleBrightness(shape, false, image, center, out);
}

bool SampleRing(ShapeRecord *shape, const AnalysisImage &image, const LightSourcePosition &center,
                ShapeStatistics *out) {
    return SampleBrightness(shape, true, image, center, out);
}

bool SampleRingColor(ShapeRecord *shape, const AnalysisImage &image, const LightSourcePosition &center,
                     uint32_t color[3]) {
    const SubShape *sub = FindSubShape(shape, true, center);
    if (!sub)
        return false;
    double sums[3] = {0.0, 0.0, 0.0};
    const int64_t count = VisitPixels(*sub, image, center, [&sums](const PixelSample &p) {
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
