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

// Takes over a rectangle of the frame before. False where that makes no difference.
bool TearFrame(const Samples &before, int32_t column, int32_t row, int32_t width, int32_t height,
               Samples *frame) {
    bool isOther = false;
    for (int32_t y = row; y < row + height; ++y)
        for (int32_t x = column; x < column + width; ++x) {
            const auto i = static_cast<size_t>(y * kColumns + x);
            isOther = isOther || (*frame)[i] != before[i];
            (*frame)[i] = before[i];
        }
    return isOther;
}

// By turns the lower half, the right third and a cell of 90 x 75 pixels in the middle.
bool TearSomewhere(const Samples &before, size_t turn, Samples *frame) {
    constexpr int32_t kCellWidth = 90 / kStep, kCellHeight = 75 / kStep;
    if (turn % 3 == 0)
        return TearFrame(before, 0, kRows / 2, kColumns, kRows - kRows / 2, frame);
    if (turn % 3 == 1)
        return TearFrame(before, kColumns - kColumns / 3, 0, kColumns / 3, kRows, frame);
    return TearFrame(before, kColumns / 2, kRows / 2, kCellWidth, kCellHeight, frame);
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
    for (size_t value = 0; value < values.size() && least > 0; ++value)
        for (const Samples &draft : values[value].drafts) {
            const size_t foreign = CountForeign(values[value].exact, draft, frame, least);
            if (foreign >= least)
                continue;
            least = foreign;
            nearest = static_cast<int32_t>(value);
        }
    return {nearest, least > 0};
}

Tears PlantTears(const std::vector<Pictures> &values, const std::vector<Frame> &frames) {
    Tears tears{};
    for (size_t i = 1; i < frames.size(); ++i) {
        const Seen before = LookAt(values, frames[i - 1].samples), now = LookAt(values, frames[i].samples);
        Samples torn = frames[i].samples;
        if (before.isTorn || now.isTorn || before.value == now.value ||
            !TearSomewhere(frames[i - 1].samples, i, &torn))
            continue;
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
