#include "tests/reference/Cases.h"

#include "engine/image/FixedPoint.h"
#include "render/shape/EffectTypes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace cases {

uint64_t Seed() {
    static const uint64_t seed = [] {
        const char *wanted = std::getenv("BRILLATRIX_TEST_SEED");
        const uint64_t chosen = wanted ? std::strtoull(wanted, nullptr, 10) : 20260417;
        std::printf("seed %llu\n", static_cast<unsigned long long>(chosen));
        return chosen;
    }();
    return seed;
}

int Count(int usual) {
    const char *wanted = std::getenv("BRILLATRIX_TEST_LONG");
    return wanted && std::strcmp(wanted, "1") == 0 ? usual * 10 : usual;
}

Random::Random(uint64_t stream, uint64_t number) : engine(Seed() * 1000003 + stream * 10007 + number) {}

int64_t Random::Pick(int64_t low, int64_t high) {
    const uint64_t span = static_cast<uint64_t>(high - low) + 1;
    return low + static_cast<int64_t>(span == 0 ? engine() : engine() % span);
}

double Random::Real(double low, double high) {
    return low + (high - low) * (static_cast<double>(engine() >> 11) / 9007199254740992.0);
}

bool Random::Chance(int percent) {
    return Pick(0, 99) < percent;
}

PictureKind PickKind(Random *random) {
    const int32_t depth = static_cast<int32_t>(random->Pick(0, 2));
    const bool gray = random->Chance(30);
    constexpr int32_t kGray[3] = {kModeGray8, kModeGray16, kModeGray32};
    constexpr int32_t kRgb[3] = {kModeRgb8, kModeRgb16, kModeRgb32};
    return {gray ? kGray[depth] : kRgb[depth], 1 << depth, random->Chance(30) ? 1 : 0, random->Chance(30)};
}

void WriteRandomSample(Random *random, int32_t bytesPerSample, uint8_t *to) {
    const bool dark = random->Chance(70);
    if (bytesPerSample == 1) {
        *to = static_cast<uint8_t>(random->Pick(0, dark ? 40 : 255));
    } else if (bytesPerSample == 2) {
        const auto value = static_cast<uint16_t>(random->Pick(0, dark                 ? 4000
                                                                 : random->Chance(10) ? 65535
                                                                                      : 32768));
        std::memcpy(to, &value, sizeof value);
    } else {
        auto value = static_cast<float>(random->Real(0, dark ? 0.1 : 1.05));
        if (random->Chance(3))
            value = random->OneOf({std::numeric_limits<float>::quiet_NaN(),
                                   std::numeric_limits<float>::infinity(),
                                   -std::numeric_limits<float>::infinity(), 1e30f, -1e30f, -0.0f, 1.0f,
                                   1e-40f, 0.99999994f, 1.0000001f, -0.25f});
        std::memcpy(to, &value, sizeof value);
    }
}

void FillAtRandom(Random *random, const ImageBuffer &buffer) {
    for (int64_t i = 0; i < buffer.planeSize * PlaneCount(buffer); ++i)
        WriteRandomSample(random, buffer.bytesPerSample, buffer.pixels + i * buffer.bytesPerSample);
    for (int64_t i = 0; buffer.mask && i < buffer.planeSize; ++i)
        buffer.mask[i] = static_cast<uint8_t>(random->Chance(50) ? 255 : random->Pick(0, 255));
}

void FillBytes(const ImageBuffer &buffer, uint8_t value) {
    std::memset(buffer.pixels, value, static_cast<size_t>(buffer.pixelBytes));
}

int64_t FirstDifference(const ImageBuffer &a, const ImageBuffer &b) {
    for (int64_t i = 0; i < a.pixelBytes; ++i)
        if (a.pixels[i] != b.pixels[i])
            return i;
    return -1;
}

double PickScale(Random *random) {
    return random->Chance(55) ? 100.0 : random->OneOf({37.5, 66.7, 150.0, 400.0, 25.0});
}

RenderSettings PickSettings(Random *random) {
    const auto percent = [&] {
        return static_cast<int16_t>(random->Chance(15) ? random->OneOf({0, 1, 100}) : random->Pick(0, 100));
    };
    RenderSettings s{};
    s.scale = PickScale(random);
    s.threshold = percent();
    s.intensity = percent();
    s.length = percent();
    s.angle = static_cast<int16_t>(random->Chance(25) ? random->OneOf({-900, -450, 0, 450, 900})
                                                      : random->Pick(-900, 900));
    s.numberOfPoints = static_cast<int16_t>(random->Chance(80) ? random->Pick(1, 9) : random->Pick(10, 32));
    s.spikeSharpness = percent();
    s.colorSaturation = static_cast<int16_t>(random->Chance(20) ? 0 : random->Pick(-100, 100));
    s.rainbowIntensity = percent();
    s.rainbowFrequency = percent();
    s.secondaryIntensity = random->Chance(30) ? int16_t{0} : percent();
    s.softFlareIntensity = percent();
    s.effectsOnly = random->Chance(25);
    s.effectType = kStandardStar + static_cast<uint32_t>(random->Pick(0, 6));
    return s;
}

reference::RenderContext PickContext(Random *random, int32_t longest) {
    const int32_t width = static_cast<int32_t>(random->Pick(1, longest));
    const int32_t height = static_cast<int32_t>(random->Pick(1, longest));
    const bool fast = random->Chance(40);
    const uint32_t floor = fast ? kFloorPreview : random->OneOf({kFloor8Bit, kFloor16Bit, kFloor32Bit});
    return {PickSettings(random), width, height,
            fast ? reference::Precision::kFast : reference::Precision::kPrecise, floor};
}

void MakeCurrent(const reference::RenderContext &context) {
    SetImageGeometry({0, 0, context.width, context.height});
    gPreciseMode = context.precision == reference::Precision::kPrecise;
    gFloor = context.floor;
}

LightSource PickSource(Random *random, const IntRect &around, uint32_t floor) {
    const auto level = [&] {
        return static_cast<uint32_t>(random->Chance(70) ? random->Pick(0x40000000, 0xFFFFFFFE)
                                                        : random->Pick(0, 0x40000000));
    };
    LightSource s{};
    s.X = static_cast<int32_t>(random->Pick(around.left, around.right - 1));
    s.Y = static_cast<int32_t>(random->Pick(around.top, around.bottom - 1));
    s.XQuarter = static_cast<int32_t>(random->Pick(0, 3));
    s.YQuarter = static_cast<int32_t>(random->Pick(0, 3));
    s.RadiusSquared = 9;
    s.Red = level();
    s.Green = level();
    s.Blue = level();
    s.Brightness = static_cast<uint32_t>((uint64_t{s.Red} + s.Green + s.Blue) / 3);
    s.Intensity = 0xFFFFFFFE;
    if (random->Chance(25))
        s.Intensity = random->OneOf({floor, floor + 1, floor * 2, level()});
    s.Aux = -1;
    s.State = random->Chance(10) ? 0 : random->Chance(30) ? 2 : 1;
    s.SavedState = 1;
    return s;
}

} // namespace cases
