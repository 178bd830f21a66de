#include "bench/DragFrames.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int32_t kStep = 3; // every third pixel and row is looked at
constexpr int32_t kColumns = (kWidth + kStep - 1) / kStep, kRows = (kHeight + kStep - 1) / kStep;
constexpr size_t kStripFrames = 8;

// Samples that neither picture has; no more than `most` are counted.
size_t CountForeign(const Samples &exact, const Samples &draft, const Samples &frame, size_t most) {
    size_t count = 0;
    for (size_t i = 0; i < frame.size() && count < most; ++i)
        count += frame[i] != draft[i] && frame[i] != exact[i];
    return count;
}

// Some samples are the draft's alone, others the exact picture's.
bool IsMixed(const Samples &exact, const Samples &draft, const Samples &frame) {
    bool isDraft = false, isExact = false;
    for (size_t i = 0; i < frame.size() && !(isDraft && isExact); ++i) {
        isDraft = isDraft || frame[i] != exact[i];
        isExact = isExact || frame[i] != draft[i];
    }
    return isDraft && isExact;
}

// Takes over a rectangle of the frame before.
void TearFrame(const Samples &before, int32_t column, int32_t row, int32_t width, int32_t height,
               Samples *frame) {
    for (int32_t y = row; y < row + height; ++y)
        std::copy_n(before.begin() + y * kColumns + column, width, frame->begin() + y * kColumns + column);
}

// By turns the lower half, the right third and a cell of 90 x 75 pixels in the middle.
void TearSomewhere(const Samples &before, size_t turn, Samples *frame) {
    constexpr int32_t kCellWidth = 90 / kStep, kCellHeight = 75 / kStep;
    if (turn % 3 == 0)
        TearFrame(before, 0, kRows / 2, kColumns, kRows - kRows / 2, frame);
    else if (turn % 3 == 1)
        TearFrame(before, kColumns - kColumns / 3, 0, kColumns / 3, kRows, frame);
    else
        TearFrame(before, kColumns / 2, kRows / 2, kCellWidth, kCellHeight, frame);
}

} // namespace

Samples TakeSamples(const uint32_t *screen) {
    Samples samples;
    samples.reserve(size_t{kColumns} * kRows);
    for (int32_t y = 1; y <= kHeight; y += kStep)
        for (int32_t x = 1; x <= kWidth; x += kStep)
            samples.push_back(screen[y * kScreenWidth + x] & 0xFFFFFF);
    return samples;
}

Seen LookAt(const std::vector<Pictures> &values, const Samples &frame) {
    size_t least = frame.size() + 1;
    int32_t nearest = -1;
    bool isMixed = true;
    for (size_t value = 0; value < values.size() && (least > 0 || isMixed); ++value)
        for (const Samples &draft : values[value].drafts) {
            const size_t foreign = CountForeign(values[value].exact, draft, frame, least);
            if (foreign > least || (foreign == least && !isMixed))
                continue;
            if (foreign < least)
                nearest = static_cast<int32_t>(value);
            least = foreign;
            isMixed = least > 0 || IsMixed(values[value].exact, draft, frame);
        }
    return {nearest, least > 0, isMixed};
}

Tears PlantTears(const std::vector<Pictures> &values, const std::vector<Frame> &frames) {
    Tears tears{};
    for (size_t i = 1; i < frames.size(); ++i) {
        const Seen before = LookAt(values, frames[i - 1].samples), now = LookAt(values, frames[i].samples);
        Samples torn = frames[i].samples;
        if (before.isTorn || now.isTorn || before.value == now.value)
            continue;
        TearSomewhere(frames[i - 1].samples, i, &torn);
        const Pictures &of = values[static_cast<size_t>(now.value)],
                       &ofBefore = values[static_cast<size_t>(before.value)];
        if (!LookAt({of, ofBefore}, torn).isTorn)
            continue; // all stars that differ lie on one side
        ++tears.planted;
        tears.counted += LookAt(values, torn).isTorn;
    }
    return tears;
}

double At(std::vector<double> values, double share) {
    if (values.empty())
        return -1.0;
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}

void WriteStrip(const std::vector<Frame> &frames, const char *path) {
    const size_t count = std::min(frames.size(), kStripFrames), first = (frames.size() - count) / 2;
    FILE *file = fopen(path, "wb");
    if (!file)
        return;
    fprintf(file, "P6 %d %d 255\n", kWidth, kHeight * static_cast<int>(count));
    for (size_t i = first; i < first + count; ++i)
        for (int32_t y = 1; y <= kHeight; ++y)
            for (int32_t x = 1; x <= kWidth; ++x)
                for (int shift = 16; shift >= 0; shift -= 8)
                    fputc(static_cast<int>(
                              frames[i].whole[static_cast<size_t>(y * kScreenWidth + x)] >> shift & 255),
                          file);
    fclose(file);
}
