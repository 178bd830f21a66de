#include "tests/reference/NightScene.h"

#include "tests/reference/ReferenceMath.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace cases {

namespace {

// Three channels in 0..1, row by row, before they become samples.
struct Canvas {
    int32_t width, height;
    std::vector<double> level;

    double *At(int32_t x, int32_t y) { return &level[(static_cast<size_t>(y) * width + x) * 3]; }
};

struct Light {
    double x, y, radius, softness;
    double color[3];
};

Light PickLight(Random *random, const Canvas &canvas, double smallest, double largest) {
    Light light{random->Real(-5, canvas.width + 5),
                random->Real(-5, canvas.height + 5),
                smallest * std::pow(largest / smallest, random->Real(0, 1)),
                random->Real(0.3, 4.0),
                {}};
    const double level = random->Chance(60) ? random->Real(0.85, 1.3) : random->Real(0.2, 1.0);
    const bool tinted = random->Chance(50);
    for (double &channel : light.color)
        channel = level * (tinted ? random->Real(0.5, 1.0) : 1.0);
    return light;
}

// Full inside the radius, falling off over the softness: a disc when soft is small, a spot when it is large.
void PaintLight(const Light &light, bool gaussian, Canvas *canvas) {
    for (int32_t y = 0; y < canvas->height; ++y)
        for (int32_t x = 0; x < canvas->width; ++x) {
            const double distance = std::hypot(x - light.x, y - light.y);
            const double share = gaussian
                                     ? std::exp(-distance * distance / (light.radius * light.radius))
                                     : std::clamp((light.radius - distance) / light.softness + 0.5, 0.0, 1.0);
            for (int c = 0; c < 3; ++c)
                canvas->At(x, y)[c] = std::max(canvas->At(x, y)[c], light.color[c] * share);
        }
}

void PaintRectangle(Random *random, Canvas *canvas) {
    const auto left = static_cast<int32_t>(random->Pick(-20, canvas->width - 1));
    const auto top = static_cast<int32_t>(random->Pick(-20, canvas->height - 1));
    const auto right = static_cast<int32_t>(random->Pick(left + 1, canvas->width + 20));
    const auto bottom = static_cast<int32_t>(random->Pick(top + 1, canvas->height + 20));
    const double level = random->Real(0.5, 1.1);
    for (int32_t y = std::max(0, top); y < std::min(bottom, canvas->height); ++y)
        for (int32_t x = std::max(0, left); x < std::min(right, canvas->width); ++x)
            for (int c = 0; c < 3; ++c)
                canvas->At(x, y)[c] = level;
}

void StoreCanvas(const Canvas &canvas, const ImageBuffer &buffer) {
    for (int64_t i = 0; i < buffer.planeSize; ++i)
        for (int32_t plane = 0; plane < buffer.colorPlanes; ++plane) {
            const double level = std::clamp(canvas.level[i * 3 + plane], 0.0, 1.0);
            reference::WriteWorking(buffer.bytesPerSample, static_cast<uint32_t>(level * 16777215.0),
                                    buffer.planes[plane] + i * buffer.bytesPerSample);
        }
}

// Mostly opaque and selected, with rectangles of other values.
void PaintExtras(Random *random, const ImageBuffer &buffer) {
    const auto paint = [&](auto store) {
        for (int64_t i = 0; i < buffer.planeSize; ++i)
            store(i, 1.0);
        for (int patch = 0; patch < 4; ++patch) {
            const double value = random->OneOf({0.0, 0.0, 0.001, 0.498, 0.502, 1.0});
            const auto left = random->Pick(0, buffer.width - 1), right = random->Pick(left, buffer.width - 1);
            const auto top = random->Pick(0, buffer.height - 1),
                       bottom = random->Pick(top, buffer.height - 1);
            for (int64_t y = top; y <= bottom; ++y)
                for (int64_t x = left; x <= right; ++x)
                    store(y * buffer.width + x, value);
        }
    };
    if (buffer.mask)
        paint([&](int64_t i, double v) { buffer.mask[i] = static_cast<uint8_t>(v * 255); });
    if (buffer.transparencyPlanes == 1)
        paint([&](int64_t i, double v) {
            reference::WriteWorking(buffer.bytesPerSample, static_cast<uint32_t>(v * 16777215.0),
                                    buffer.planes[buffer.colorPlanes] + i * buffer.bytesPerSample);
        });
}

void PaintLights(Random *random, SceneFlavor flavor, Canvas *canvas) {
    const int64_t count = random->Pick(2, 14);
    const bool discs = flavor == SceneFlavor::kDiscs || flavor == SceneFlavor::kPlateaus;
    const double largest = random->Chance(30) ? 70.0 : 12.0;
    for (int64_t i = 0; i < count; ++i)
        PaintLight(PickLight(random, *canvas, 0.6, largest), !discs && random->Chance(60), canvas);
}

} // namespace

void PaintNightScene(Random *random, SceneFlavor flavor, const ImageBuffer &buffer) {
    Canvas canvas{buffer.width, buffer.height, {}};
    canvas.level.resize(static_cast<size_t>(buffer.planeSize) * 3);
    for (int c = 0; c < 3; ++c) {
        const double sky = random->Real(0, 0.15);
        for (size_t i = c; i < canvas.level.size(); i += 3)
            canvas.level[i] = sky;
    }
    if (flavor == SceneFlavor::kFlatAreas)
        for (int i = 0; i < 3; ++i)
            PaintRectangle(random, &canvas);
    PaintLights(random, flavor, &canvas);
    const double noise = flavor == SceneFlavor::kDiscs   ? 0
                         : flavor == SceneFlavor::kNoise ? random->Real(0.02, 0.5)
                                                         : random->Real(0, 0.01);
    const double levels = random->OneOf({6.0, 12.0, 40.0}); // few: equal neighbours and exact ties are common
    for (double &level : canvas.level) {
        if (flavor == SceneFlavor::kColored)
            level *= random->Real(0.8, 1.0);
        level += random->Real(-noise, noise);
        if (flavor == SceneFlavor::kPlateaus)
            level = std::round(level * levels) / levels;
    }
    StoreCanvas(canvas, buffer);
    PaintExtras(random, buffer);
}

} // namespace cases
