// A picture that frees itself.
#pragma once

#include "engine/image/ImageBuffer.h"

#include <cstring>
#include <random>
#include <stdexcept>
#include <vector>

struct TestImage {
    ImageBuffer buffer{};

    TestImage(int32_t mode, int32_t bytesPerSample, int32_t transparencyPlanes, const IntRect &bounds,
              bool wantMask = false) {
        if (AllocateImageBuffer(mode, bytesPerSample, transparencyPlanes, bounds, wantMask, &buffer,
                                nullptr) != kNoError)
            throw std::runtime_error("no memory for a test picture");
    }
    ~TestImage() { FreeImageBuffer(&buffer); }
    TestImage(TestImage &&other) noexcept : buffer(other.buffer) { other.buffer = ImageBuffer{}; }
    TestImage(const TestImage &) = delete;
    TestImage &operator=(const TestImage &) = delete;

    std::vector<uint8_t> Bytes() const { return {buffer.pixels, buffer.pixels + buffer.pixelBytes}; }
    // Any byte anywhere: of the floats, some are no numbers.
    void FillRandom(uint32_t seed) {
        std::mt19937 random(seed);
        for (int64_t i = 0; i < buffer.pixelBytes; ++i)
            buffer.pixels[i] = static_cast<uint8_t>(random());
    }
};
