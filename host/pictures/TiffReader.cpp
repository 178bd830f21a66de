// Uncompressed TIFF in strips, whatever its depth: the system's codec does not read all that the writer here
// writes. Other kinds are left to the codec.
#include "host/base/SystemText.h"
#include "host/pictures/PictureFormat.h"
#include "host/pictures/TiffDirectory.h"

#include <algorithm>

namespace host {

constexpr uint32_t kUnsigned = 1, kFloat = 3;
constexpr uint32_t kPremultiplied = 1;

struct TiffPlan {
    uint32_t width, height, depth, channels, colourPlanes;
    uint32_t rowsPerStrip;
    bool isPlanar;
    bool isInverted;
    std::vector<uint32_t> offsets;
};

static bool AreAll(const std::vector<uint32_t> &numbers, uint32_t value) {
    return std::all_of(numbers.begin(), numbers.end(), [value](uint32_t number) { return number == value; });
}

// False for a kind that is the codec's.
static bool MakePlan(const TiffDirectory &directory, TiffPlan *plan) {
    const std::vector<uint32_t> bits = TiffNumbers(directory, kTiffBits);
    const uint32_t photometric = TiffNumber(directory, kTiffPhotometric, ~0u);
    const uint32_t format = TiffNumber(directory, kTiffSampleFormat, kUnsigned);
    plan->width = TiffNumber(directory, kTiffWidth, 0);
    plan->height = TiffNumber(directory, kTiffHeight, 0);
    plan->channels = TiffNumber(directory, kTiffSamples, 1);
    plan->depth = bits.empty() ? 1 : bits[0];
    plan->colourPlanes = photometric == kTiffRgb ? 3 : 1;
    plan->isPlanar = TiffNumber(directory, kTiffPlanar, 1) == 2;
    plan->isInverted = photometric == kTiffWhiteIsZero;
    plan->rowsPerStrip =
        std::clamp(TiffNumber(directory, kTiffRowsPerStrip, ~0u), 1u, std::max(plan->height, 1u));
    plan->offsets = TiffNumbers(directory, kTiffStripOffsets);
    const bool isKnownDepth = (format == kUnsigned && (plan->depth == 8 || plan->depth == 16)) ||
                              (format == kFloat && plan->depth == 32);
    return TiffNumber(directory, kTiffCompression, 1) == 1 && photometric <= kTiffRgb && isKnownDepth &&
           AreAll(bits, plan->depth) && AreAll(TiffNumbers(directory, kTiffSampleFormat), format) &&
           (plan->channels == plan->colourPlanes || plan->channels == plan->colourPlanes + 1) &&
           !(plan->isInverted && plan->depth == 32) &&
           TiffNumber(directory, kTiffExtraSamples, 0) != kPremultiplied && !plan->offsets.empty();
}

bool IsPlainTiff(const Bytes &file) {
    TiffDirectory directory;
    TiffPlan plan;
    return ReadTiffDirectory(file.data(), file.size(), &directory) && MakePlan(directory, &plan);
}

// Samples of one channel of a strip, in the machine's order.
static void TakeChannel(const uint8_t *from, size_t step, size_t count, ByteOrder order, const TiffPlan &plan,
                        bool inverts, uint8_t *to) {
    for (size_t i = 0; i < count; i++, from += step) {
        if (plan.depth == 8) {
            to[i] = inverts ? static_cast<uint8_t>(255 - *from) : *from;
        } else if (plan.depth == 16) {
            uint16_t sample = NumberAt<uint16_t>(from, order);
            if (inverts)
                sample = static_cast<uint16_t>(65535 - sample);
            std::memcpy(to + i * 2, &sample, sizeof(sample));
        } else {
            const uint32_t sample = NumberAt<uint32_t>(from, order);
            std::memcpy(to + i * 4, &sample, sizeof(sample));
        }
    }
}

// One strip: all channels of its rows side by side, or the rows of one channel.
static bool TakeStrip(const TiffDirectory &directory, const TiffPlan &plan, size_t strip, Picture *picture) {
    const size_t stripsPerPlane = (plan.height + plan.rowsPerStrip - 1) / plan.rowsPerStrip;
    const size_t channels = plan.isPlanar ? 1 : plan.channels;
    const size_t firstRow = strip % stripsPerPlane * plan.rowsPerStrip;
    const size_t rows = std::min<size_t>(plan.rowsPerStrip, plan.height - firstRow);
    const size_t size = plan.depth / 8, count = rows * plan.width;
    const size_t at = plan.offsets[strip];
    if (at > directory.length || count * channels * size > directory.length - at)
        return false;
    for (size_t channel = 0; channel < channels; channel++) {
        const size_t plane = plan.isPlanar ? strip / stripsPerPlane : channel;
        const bool inverts = plan.isInverted && plane < plan.colourPlanes;
        TakeChannel(directory.bytes + at + channel * size, channels * size, count, directory.order, plan,
                    inverts, picture->planes[plane].data() + firstRow * plan.width * size);
    }
    return true;
}

bool ReadPlainTiff(const Bytes &file, Picture *picture, std::string *why) {
    TiffDirectory directory;
    TiffPlan plan;
    if (!ReadTiffDirectory(file.data(), file.size(), &directory) || !MakePlan(directory, &plan))
        return Fail(why, "it is not a plain TIFF file");
    if (!CheckPictureSize(plan.width, plan.height, why))
        return false;
    const uint64_t raw = static_cast<uint64_t>(plan.width) * plan.height * plan.channels * (plan.depth / 8);
    const size_t stripsPerPlane = (plan.height + plan.rowsPerStrip - 1) / plan.rowsPerStrip;
    const size_t strips = stripsPerPlane * (plan.isPlanar ? plan.channels : 1);
    if (raw > file.size() || plan.offsets.size() < strips)
        return Fail(why, "the file ends early");
    Picture read = MakePicture(static_cast<int32_t>(plan.width), static_cast<int32_t>(plan.height),
                               static_cast<int32_t>(plan.depth), static_cast<int32_t>(plan.colourPlanes),
                               plan.channels > plan.colourPlanes);
    for (size_t strip = 0; strip < strips; strip++)
        if (!TakeStrip(directory, plan, strip, &read))
            return Fail(why, "the file ends early");
    ApplyMetadata(file, {}, &read);
    *picture = std::move(read);
    return true;
}

} // namespace host
