// Frames grabbed from the screen during a drag, and what they show. A frame is whole when each of its samples
// comes from the pictures of one value of the slider: from the exact one, or from the draft of one quality.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

constexpr int32_t kWidth = 900, kHeight = 600; // of the display, inside its border
constexpr int32_t kScreenWidth = kWidth + 2, kScreenHeight = kHeight + 2;

using Samples = std::vector<uint32_t>;
struct Frame {
    double time; // milliseconds
    Samples samples;
    std::vector<uint32_t> whole; // only for the strip
};

// All that may rightly be seen of one value.
struct Pictures {
    Samples exact;
    std::vector<Samples> drafts; // one of each quality
};

struct Seen {
    int32_t value; // the nearest
    bool isTorn;
    bool isMixed; // draft and exact picture of the one value
};

struct Tears {
    int32_t planted, counted;
};

Samples TakeSamples(const uint32_t *screen);

Seen LookAt(const std::vector<Pictures> &values, const Samples &frame);

// Whether the counting finds tears: a part of each whole frame is replaced by that of the one before it, and
// counts as planted where the whole is then no picture of the one value, nor of the other.
Tears PlantTears(const std::vector<Pictures> &values, const std::vector<Frame> &frames);

// The value at this share of the sorted values; -1 without any.
double At(std::vector<double> values, double share);

// Eight frames from the middle, one below the other, as PPM.
void WriteStrip(const std::vector<Frame> &frames, const char *path);
