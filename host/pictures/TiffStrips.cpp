#include "host/pictures/TiffStrips.h"

#include "host/base/SampleRows.h"
#include "host/metadata/TiffDirectory.h"

#include <algorithm>

namespace host {

constexpr uint16_t kTiffWidth = 256, kTiffHeight = 257, kTiffFillOrder = 266, kTiffStripOffsets = 273,
                   kTiffRowsPerStrip = 278, kTiffStripLengths = 279, kTiffPlanes = 284, kTiffTileWidth = 322,
                   kTiffExtraSamples = 338, kTiffSampleFormat = 339;
constexpr uint32_t kTiffGrey = 1, kTiffInteger = 1, kTiffFloat = 3;

// Through a piece that stays in the cache, so that the planes' memory is touched once.
void AppendPixels(const uint8_t *pixels, size_t bands, size_t count, Picture *picture) {
    constexpr size_t kPiece = 1024, kMostPlanes = 4, kLargestSample = 4;
    uint8_t pieces[kMostPlanes][kPiece * kLargestSample];
    uint8_t *const to[kMostPlanes] = {pieces[0], pieces[1], pieces[2], pieces[3]};
    const size_t size = static_cast<size_t>(picture->depth / 8);
    for (size_t at = 0; at < count; at += kPiece) {
        const size_t length = std::min(kPiece, count - at);
        SplitPixels(to, picture->planes.size(), pixels + at * bands * size, bands, length, size);
        for (size_t plane = 0; plane < picture->planes.size(); plane++)
            picture->planes[plane].insert(picture->planes[plane].end(), to[plane], to[plane] + length * size);
    }
}

static bool AreAll(const TiffDirectory &directory, uint16_t tag, uint64_t number, bool whenAbsent) {
    if (!HasTiffTag(directory, tag))
        return whenAbsent;
    const std::vector<uint64_t> numbers = TiffNumbers(directory, tag);
    return !numbers.empty() &&
           std::all_of(numbers.begin(), numbers.end(), [&](uint64_t one) { return one == number; });
}

static bool IsPlain(const TiffDirectory &directory, const Picture &picture) {
    const bool isFloat = picture.depth == 32;
    const bool isNative = directory.order == ByteOrder::kLittle || picture.depth == 8;
    const auto colours = static_cast<uint32_t>(picture.colourPlanes);
    return isNative && !picture.hasAlpha && !HasTiffTag(directory, kTiffTileWidth) &&
           !HasTiffTag(directory, kTiffExtraSamples) &&
           AreAll(directory, kTiffCompression, kTiffUncompressed, true) &&
           AreAll(directory, kTiffPhotometric, colours == 3 ? kTiffRgb : kTiffGrey, false) &&
           AreAll(directory, kTiffSamples, colours, colours == 1) &&
           AreAll(directory, kTiffBits, static_cast<uint64_t>(picture.depth), false) &&
           AreAll(directory, kTiffSampleFormat, isFloat ? kTiffFloat : kTiffInteger, !isFloat) &&
           AreAll(directory, kTiffPlanes, 1, true) && AreAll(directory, kTiffFillOrder, 1, true) &&
           AreAll(directory, kTiffWidth, static_cast<uint64_t>(picture.width), false) &&
           AreAll(directory, kTiffHeight, static_cast<uint64_t>(picture.height), false);
}

bool TakeTiffStrips(const Bytes &file, Picture *picture) {
    TiffDirectory directory;
    if (!ReadTiffDirectory(file.data(), file.size(), &directory) || !IsPlain(directory, *picture))
        return false;
    const auto height = static_cast<uint64_t>(picture->height), width = static_cast<uint64_t>(picture->width);
    const uint64_t rows = std::min<uint64_t>(
        std::max(TiffNumber(directory, kTiffRowsPerStrip, UINT32_MAX), uint32_t{1}), height);
    const uint64_t rowBytes = width * picture->planes.size() * static_cast<uint64_t>(picture->depth / 8);
    const std::vector<uint64_t> places = TiffNumbers(directory, kTiffStripOffsets),
                                lengths = TiffNumbers(directory, kTiffStripLengths);
    if (places.size() != (height + rows - 1) / rows || lengths.size() != places.size())
        return false;
    const auto rowsOf = [&](size_t strip) { return std::min(rows, height - strip * rows); };
    for (size_t strip = 0; strip < places.size(); strip++)
        if (lengths[strip] < rowsOf(strip) * rowBytes || places[strip] > file.size() ||
            file.size() - places[strip] < rowsOf(strip) * rowBytes)
            return false;
    for (size_t strip = 0; strip < places.size(); strip++)
        AppendPixels(file.data() + places[strip], picture->planes.size(), rowsOf(strip) * width, picture);
    return true;
}

} // namespace host
