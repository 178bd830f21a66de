// Random cases for the comparisons of product and yardstick: numbers, settings, pictures, light sources.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "engine/table/LightSourceTable.h"
#include "render/shape/RenderSettings.h"
#include "tests/reference/render/ReferenceStamps.h"
#include "tests/support/TestImage.h"

#include <cstdint>
#include <random>
#include <vector>

namespace cases {

// Seed of the run: BRILLATRIX_TEST_SEED, or a fixed one. Printed once.
uint64_t Seed();
// `usual`, or ten times as many when BRILLATRIX_TEST_LONG is 1.
int Count(int usual);

// A source of numbers of its own for one case, so that a single case can be repeated.
class Random {
public:
    Random(uint64_t stream, uint64_t number);
    int64_t Pick(int64_t low, int64_t high); // both included
    double Real(double low, double high);
    bool Chance(int percent);
    template <class T> T OneOf(std::initializer_list<T> values) {
        return *(values.begin() + Pick(0, static_cast<int64_t>(values.size()) - 1));
    }

private:
    std::mt19937_64 engine;
};

using Picture = TestImage;

struct PictureKind {
    int32_t mode, bytesPerSample, transparencyPlanes;
    bool mask;
};
PictureKind PickKind(Random *random);
// A sample of the kind's depth written at `to`: dark, bright, or (float) any special value.
void WriteRandomSample(Random *random, int32_t bytesPerSample, uint8_t *to);
void FillAtRandom(Random *random, const ImageBuffer &buffer);
// Every byte the same value, so that pixels nobody writes show.
void FillBytes(const ImageBuffer &buffer, uint8_t value);
// Index of the first byte that differs between the planes of two buffers of one layout, or -1.
int64_t FirstDifference(const ImageBuffer &a, const ImageBuffer &b);

RenderSettings PickSettings(Random *random);
double PickScale(Random *random);
// A context of random size (up to `longest` pixels a side), and the same made current for the product.
reference::RenderContext PickContext(Random *random, int32_t longest);
void MakeCurrent(const reference::RenderContext &context);

LightSource PickSource(Random *random, const IntRect &around, uint32_t floor);

} // namespace cases
