#include "tests/support/NightScene.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// A small generator of our own: the standard distributions differ between libraries.
struct Random {
    uint64_t state;
    uint32_t Next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<uint32_t>(state >> 33);
    }
    double Unit() { return Next() / 2147483648.0; }
};

void StoreSample(ImageBuffer *image, int32_t plane, int64_t index, double value) {
    const double v = std::clamp(value, 0.0, 1.0);
    uint8_t *samples = image->planes[plane];
    if (image->bytesPerSample == 1) {
        samples[index] = static_cast<uint8_t>(v * 255.0 + 0.5);
    } else if (image->bytesPerSample == 2) {
        const uint16_t s = static_cast<uint16_t>(v * 32768.0 + 0.5);
        memcpy(samples + 2 * index, &s, 2);
    } else {
        const float s = static_cast<float>(value); // floats keep what is above white
        memcpy(samples + 4 * index, &s, 4);
    }
}

double LoadSample(const ImageBuffer &image, int32_t plane, int64_t index) {
    const uint8_t *samples = image.planes[plane];
    if (image.bytesPerSample == 1)
        return samples[index] / 255.0;
    if (image.bytesPerSample == 2) {
        uint16_t s;
        memcpy(&s, samples + 2 * index, 2);
        return s / 32768.0;
    }
    float s;
    memcpy(&s, samples + 4 * index, 4);
    return s;
}

void PaintSky(double noise, uint32_t seed, ImageBuffer *image) {
    static constexpr double kSky[3] = {0.03, 0.04, 0.08};
    Random random{seed};
    for (int32_t y = 0; y < image->height; ++y) {
        const double fade = 0.5 + 0.5 * y / image->height;
        for (int32_t x = 0; x < image->width; ++x) {
            const double grain = noise * (random.Unit() - 0.5);
            const int64_t index = int64_t{y} * image->width + x;
            for (int32_t c = 0; c < image->colorPlanes; ++c)
                StoreSample(image, c, index, std::max(0.0, kSky[c] * fade + grain));
            if (image->transparencyPlanes)
                StoreSample(image, image->colorPlanes, index, 1.0);
        }
    }
}

void PaintLight(const SceneLight &light, ImageBuffer *image) {
    const double reach = 4.5 * light.sigma;
    const IntRect area = IntersectRects(image->bounds, {static_cast<int32_t>(std::floor(light.x - reach)),
                                                        static_cast<int32_t>(std::floor(light.y - reach)),
                                                        static_cast<int32_t>(std::ceil(light.x + reach)),
                                                        static_cast<int32_t>(std::ceil(light.y + reach))});
    const double peak[3] = {light.red, light.green, light.blue};
    for (int32_t y = area.top; y < area.bottom; ++y)
        for (int32_t x = area.left; x < area.right; ++x) {
            const double dx = x + 0.5 - light.x, dy = y + 0.5 - light.y;
            const double glow = std::exp(-(dx * dx + dy * dy) / (2 * light.sigma * light.sigma));
            const int64_t index = int64_t{y - image->bounds.top} * image->width + (x - image->bounds.left);
            for (int32_t c = 0; c < image->colorPlanes; ++c)
                StoreSample(image, c, index, LoadSample(*image, c, index) + peak[c] * glow);
        }
}

} // namespace

std::vector<SceneLight> MakeSceneLights(int32_t width, int32_t height, int32_t count, uint32_t seed) {
    Random random{seed};
    std::vector<SceneLight> lights;
    const double unit = std::max(width, height) / 1200.0; // so that a light looks alike at every size
    const double cell = std::sqrt(double{1.0} * width * height / std::max(count, 1));
    const int32_t columns = std::max(1, static_cast<int32_t>(width / cell));
    for (int32_t i = 0; i < count; ++i) {
        SceneLight light;
        light.x = (i % columns + 0.25 + 0.5 * random.Unit()) * width / columns;
        light.y = (i / columns + 0.25 + 0.5 * random.Unit()) * cell;
        light.y = std::min(light.y, height - 1.0);
        light.sigma = unit * (1.0 + 1.5 * random.Unit());
        const double power = 0.75 + 0.5 * random.Unit(), warmth = random.Unit() - 0.5;
        light.red = power * (1.0 + 0.3 * warmth);
        light.green = power;
        light.blue = power * (1.0 - 0.3 * warmth);
        lights.push_back(light);
    }
    return lights;
}

void PaintNightScene(const std::vector<SceneLight> &lights, double noise, uint32_t seed, ImageBuffer *image) {
    PaintSky(noise, seed, image);
    for (const SceneLight &light : lights)
        PaintLight(light, image);
}
