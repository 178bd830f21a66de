#include "bench/DetectScenes.h"

#include "tests/support/NightScene.h"

namespace {

constexpr uint32_t kSeed = 7;
constexpr double kNightNoise = 0.02;

ImageBuffer NewPicture(int32_t width, int32_t height) {
    ImageBuffer picture{};
    bool maskFailed = false;
    AllocateImageBuffer(kModeRgb8, 1, 0, IntRect{0, 0, width, height}, false, &picture, &maskFailed);
    return picture;
}

// Sets all three colours of every pixel to what paint(x, y) says.
template <typename Paint> void PaintGrey(ImageBuffer *picture, Paint paint) {
    int64_t index = 0;
    for (int32_t y = 0; picture->pixels && y < picture->height; ++y)
        for (int32_t x = 0; x < picture->width; ++x, ++index) {
            const uint8_t value = paint(x, y);
            for (int32_t plane = 0; plane < picture->colorPlanes; ++plane)
                picture->planes[plane][index] = value;
        }
}

} // namespace

ImageBuffer MakeNightPicture(int32_t width, int32_t height, int32_t lights) {
    ImageBuffer picture = NewPicture(width, height);
    if (picture.pixels)
        PaintNightScene(MakeSceneLights(width, height, lights, kSeed), kNightNoise, kSeed, &picture);
    return picture;
}

ImageBuffer MakeNoisySkyPicture(int32_t width, int32_t height) {
    ImageBuffer picture = NewPicture(width, height);
    uint64_t state = kSeed;
    uint8_t last = 0;
    // Each grain runs on into the next pixel: the sources get wider than a pixel, and fewer.
    PaintGrey(&picture, [&state, &last](int32_t, int32_t) {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        const auto grain = static_cast<uint8_t>(160 + (state >> 33) % 96);
        const uint8_t value = static_cast<uint8_t>((grain + last) / 2);
        last = grain;
        return value;
    });
    return picture;
}

ImageBuffer MakeSquaresPicture(int32_t width, int32_t height, int32_t side) {
    ImageBuffer picture = NewPicture(width, height);
    PaintGrey(&picture, [side](int32_t x, int32_t y) {
        return static_cast<uint8_t>((x / side + y / side) % 2 ? 255 : 0);
    });
    return picture;
}
