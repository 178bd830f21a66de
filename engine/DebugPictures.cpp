#include "engine/DebugPictures.h"

#include "engine/image/ImageBuffer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int kBytesPerPixel = 4;
constexpr int32_t kStripeWidth = 4;      // pixels
constexpr double kDashLength = 4.0;      // pixels
constexpr double kLeastCircle = 1.5;     // radius in pixels, so that the smallest light is seen
constexpr uint32_t kDarkening = 3;       // the lights' background keeps this part of its brightness
constexpr double kGrey = 150.0;          // level of a circle whose light is too faint
constexpr uint32_t kOneLevel = 1u << 24; // of selection and coverage, in a share of 256

struct Color {
    double red, green, blue; // 0..255
};

constexpr Color kUnselectedColor = {255, 0, 0}, kUncoveredColor = {0, 60, 255}, kFlatColor = {0, 220, 70};

size_t PictureSize(const KeptImage &kept) {
    return kept.image.sampleBytes / sizeof(PixelSample);
}

Color ColorOf(const PixelSample &sample) {
    return {double(WorkingTo8(sample.red)), double(WorkingTo8(sample.green)),
            double(WorkingTo8(sample.blue))};
}

uint8_t ToByte(double level) {
    return static_cast<uint8_t>(std::clamp(level + 0.5, 0.0, 255.0));
}

void PutPixel(const Color &color, uint8_t *pixel) {
    pixel[0] = ToByte(color.blue);
    pixel[1] = ToByte(color.green);
    pixel[2] = ToByte(color.red);
    pixel[3] = 255;
}

Color Mix(const Color &a, const Color &b, double share) {
    return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
            a.blue + (b.blue - a.blue) * share};
}

// How strongly what a level of selection or coverage leaves out is shaded.
double MissingShare(uint32_t level) {
    const uint32_t level8 = level / kOneLevel;
    return 0.6 * (1.0 - level8 / 255.0);
}

Color ShadePixel(const KeptImage &kept, size_t index, int32_t diagonal) {
    const PixelSample &sample = kept.image.samples[index];
    Color color = ColorOf(sample);
    color = Mix(color, kUnselectedColor, MissingShare(sample.selectionLevel));
    color = Mix(color, kUncoveredColor, MissingShare(sample.coverage));
    if (kept.flat[index])
        color = Mix(color, kFlatColor, diagonal / kStripeWidth % 2 == 0 ? 0.7 : 0.35);
    return color;
}

// Where the circles are drawn.
struct Canvas {
    int32_t width, height;
    uint8_t *bgra;
};

struct Circle {
    double x, y, radius; // in picture pixels; a pixel's centre is a whole number
    Color color;
    bool dashed;
};

// The light's hue at full strength: its brightness is told by its rank, and must not make it invisible.
Color HueOf(const LightSource &light) {
    const double largest = std::max({light.Red, light.Green, light.Blue, 1u});
    return {light.Red * 255.0 / largest, light.Green * 255.0 / largest, light.Blue * 255.0 / largest};
}

Circle CircleOf(const LightSource &light, const AnalysisImage &image, uint32_t cutLevel) {
    const bool hidden = light.State == 0;
    const bool faint = light.State != 2 && light.Brightness <= cutLevel;
    return {(light.X + light.XQuarter * 0.25) / image.scale - image.bounds.left,
            (light.Y + light.YQuarter * 0.25) / image.scale - image.bounds.top,
            std::max(std::sqrt(double(light.RadiusSquared)) / image.scale, kLeastCircle),
            faint ? Color{kGrey, kGrey, kGrey} : HueOf(light), hidden};
}

bool IsGap(const Circle &circle, double dx, double dy) {
    const double dashes = std::max(std::round(std::numbers::pi * circle.radius / kDashLength), 3.0);
    const double turn = std::atan2(dy, dx) / (2 * std::numbers::pi) + 0.5;
    const double along = turn * dashes;
    return along - std::floor(along) >= 0.5;
}

// A smooth line, one pixel wide.
void DrawCirclePixel(const Canvas &canvas, const Circle &circle, int32_t x, int32_t y) {
    const double dx = x - circle.x, dy = y - circle.y;
    const double share = 1.0 - std::abs(std::sqrt(dx * dx + dy * dy) - circle.radius);
    if (share <= 0.0 || (circle.dashed && IsGap(circle, dx, dy)))
        return;
    uint8_t *pixel = canvas.bgra + (size_t(y) * size_t(canvas.width) + size_t(x)) * kBytesPerPixel;
    const Color before = {double(pixel[2]), double(pixel[1]), double(pixel[0])};
    PutPixel(Mix(before, circle.color, share), pixel);
}

int32_t ClampToInt(double value, int32_t low, int32_t high) {
    return static_cast<int32_t>(std::clamp(value, double(low), double(high)));
}

void DrawCircle(const Canvas &canvas, const Circle &circle) {
    const double reach = circle.radius + 1.0;
    const int32_t left = ClampToInt(std::floor(circle.x - reach), 0, canvas.width);
    const int32_t right = ClampToInt(std::ceil(circle.x + reach) + 1, 0, canvas.width);
    const int32_t top = ClampToInt(std::floor(circle.y - reach), 0, canvas.height);
    const int32_t bottom = ClampToInt(std::ceil(circle.y + reach) + 1, 0, canvas.height);
    for (int32_t y = top; y < bottom; ++y)
        for (int32_t x = left; x < right; ++x)
            DrawCirclePixel(canvas, circle, x, y);
}

} // namespace

void DrawAnalysisPicture(const KeptImage &kept, uint8_t *bgra) {
    for (size_t i = 0; i < PictureSize(kept); ++i)
        PutPixel(ColorOf(kept.image.samples[i]), bgra + i * kBytesPerPixel);
}

void DrawShadedPicture(const KeptImage &kept, uint8_t *bgra) {
    const IntRect &bounds = kept.image.bounds;
    size_t index = 0;
    for (int32_t y = 0; y < bounds.bottom - bounds.top; ++y)
        for (int32_t x = 0; x < bounds.right - bounds.left; ++x, ++index)
            PutPixel(ShadePixel(kept, index, x + y), bgra + index * kBytesPerPixel);
}

// From the faintest to the brightest, so that these stay on top.
void DrawLightsPicture(const KeptImage &kept, const LightSourceTableView &lights, uint32_t cutLevel,
                       uint8_t *bgra) {
    DrawAnalysisPicture(kept, bgra);
    for (size_t i = 0; i < PictureSize(kept) * kBytesPerPixel; ++i)
        if (i % kBytesPerPixel != 3)
            bgra[i] = static_cast<uint8_t>(bgra[i] / kDarkening);
    const IntRect &bounds = kept.image.bounds;
    const Canvas canvas = {bounds.right - bounds.left, bounds.bottom - bounds.top, bgra};
    for (uint32_t i = lights.count; i-- > 0;)
        DrawCircle(canvas, CircleOf(lights.records[i], kept.image, cutLevel));
}
