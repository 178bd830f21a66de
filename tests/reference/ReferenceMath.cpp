#include "tests/reference/ReferenceMath.h"

#include <cmath>
#include <cstring>

namespace reference {

namespace {

constexpr double kFractionScale = 4294967294.0;
constexpr double kFullWorking = 16777215.0;

AngleTables BuildTables() {
    AngleTables tables{};
    for (int32_t i = 0; i < 1800; ++i) {
        const float radians = static_cast<float>(i) * 0.0017453294f;
        const float sine = static_cast<float>(std::sin(static_cast<double>(radians)));
        tables.sine[i] = sine;
        tables.sine[i + 1800] = -sine;
        const double half = 0.5 * static_cast<double>(sine);
        tables.rainbow[i] = static_cast<uint32_t>((0.5 + half) * kFractionScale + 0.5);
        tables.rainbow[i + 1800] = static_cast<uint32_t>((0.5 - half) * kFractionScale + 0.5);
    }
    return tables;
}

template <class Sample> Sample Load(const uint8_t *bytes) {
    Sample sample;
    std::memcpy(&sample, bytes, sizeof sample);
    return sample;
}

uint32_t WorkingOfFloat(float sample) {
    if (std::isnan(sample) || sample <= 0.0f)
        return 0;
    const double clamped = sample > 1.0f ? 1.0 : static_cast<double>(sample);
    return static_cast<uint32_t>(std::trunc(clamped * kFullWorking + 0.5));
}

} // namespace

uint32_t Product(Precision precision, uint32_t nearOne, uint32_t small) {
    if (precision == Precision::kFast)
        return (nearOne >> 18) * (small >> 14);
    const uint64_t whole = static_cast<uint64_t>(nearOne) * static_cast<uint64_t>(small);
    return static_cast<uint32_t>(whole >> 32);
}

const AngleTables &Angles() {
    static const AngleTables tables = BuildTables();
    return tables;
}

int32_t ReduceAngle(int64_t angle) {
    while (angle < 0)
        angle += 3600;
    return static_cast<int32_t>(angle % 3600);
}

// Only the sum of the squares is rounded to single precision.
int32_t Diagonal(int32_t width, int32_t height) {
    const int64_t squares = static_cast<int64_t>(width) * width + static_cast<int64_t>(height) * height;
    return static_cast<int32_t>(std::sqrt(static_cast<double>(static_cast<float>(squares))) + 1.0);
}

int64_t Distance(int64_t dx, int64_t dy) {
    return std::llround(10.0 * std::sqrt(static_cast<double>(dx * dx + dy * dy)));
}

uint32_t PowerFraction(int32_t percent, double exponent) {
    return static_cast<uint32_t>(std::trunc(std::pow(percent / 100.0, exponent) * kFractionScale));
}

uint32_t ReadWorking(int32_t bytes, const uint8_t *sample) {
    if (bytes == 1)
        return static_cast<uint32_t>(*sample) * 65793u;
    if (bytes == 4)
        return WorkingOfFloat(Load<float>(sample));
    uint64_t value = Load<uint16_t>(sample);
    if (value > 32768)
        value = 32768;
    return static_cast<uint32_t>((value * 16777215 + 16384) / 32768);
}

void WriteWorking(int32_t bytes, uint32_t working, uint8_t *sample) {
    if (bytes == 1) {
        *sample = static_cast<uint8_t>((working + 32896) / 65793);
    } else if (bytes == 2) {
        const auto value =
            static_cast<uint16_t>((static_cast<uint64_t>(working) * 32768 + 8388607) / 16777215);
        std::memcpy(sample, &value, sizeof value);
    } else {
        const auto value = static_cast<float>(static_cast<double>(working) / kFullWorking);
        std::memcpy(sample, &value, sizeof value);
    }
}

bool IsHighlight(int32_t bytes, const uint8_t *sample) {
    return bytes == 4 && Load<float>(sample) >= 1.0f;
}

std::array<uint32_t, 3> ReadColor(const ImageBuffer &image, int64_t index) {
    std::array<uint32_t, 3> color{};
    for (int32_t channel = 0; channel < 3; ++channel) {
        const int32_t plane = image.colorPlanes == 1 ? 0 : channel;
        color[channel] =
            ReadWorking(image.bytesPerSample, image.planes[plane] + index * image.bytesPerSample);
    }
    return color;
}

void WriteColor(const ImageBuffer &image, int64_t index, const std::array<uint32_t, 3> &color) {
    const int32_t bytes = image.bytesPerSample;
    const uint64_t sum = static_cast<uint64_t>(color[0]) + color[1] + color[2];
    for (int32_t plane = 0; plane < image.colorPlanes; ++plane) {
        uint8_t *sample = image.planes[plane] + index * bytes;
        if (!IsHighlight(bytes, sample))
            WriteWorking(bytes, image.colorPlanes == 1 ? static_cast<uint32_t>(sum / 3) : color[plane],
                         sample);
    }
}

} // namespace reference
