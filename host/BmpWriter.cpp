// Uncompressed BMP: 24-bit colour, or 8-bit with a palette of greys.
#include "host/PictureFormat.h"

#include <algorithm>

namespace host {

constexpr uint32_t kHeaderSize = 14 + 40;
constexpr uint32_t kPaletteSize = 256 * 4;
constexpr uint32_t kPixelsPerMetre = 2835; // 72 per inch

static Bytes MakeHeader(const Picture &picture, uint32_t rowLength) {
    const bool isGrey = picture.colourPlanes == 1;
    const uint32_t dataAt = kHeaderSize + (isGrey ? kPaletteSize : 0);
    const uint32_t dataSize = rowLength * static_cast<uint32_t>(picture.height);
    Bytes header = {'B', 'M'};
    for (const uint32_t number :
         {dataAt + dataSize, uint32_t{0}, dataAt, uint32_t{40}, static_cast<uint32_t>(picture.width),
          static_cast<uint32_t>(picture.height)})
        AppendNumber(header, number);
    AppendNumber(header, uint16_t{1});
    AppendNumber(header, static_cast<uint16_t>(isGrey ? 8 : 24));
    for (const uint32_t number :
         {uint32_t{0}, dataSize, kPixelsPerMetre, kPixelsPerMetre, isGrey ? 256u : 0u, uint32_t{0}})
        AppendNumber(header, number);
    for (uint32_t grey = 0; isGrey && grey < 256; grey++)
        AppendNumber(header, grey * 0x00010101u);
    return header;
}

bool WriteBmp(const Picture &picture, OutputFile *file, std::string *why) {
    const size_t channels = static_cast<size_t>(picture.colourPlanes);
    const size_t width = static_cast<size_t>(picture.width);
    const size_t rowLength = (width * channels + 3) / 4 * 4;
    if (rowLength * static_cast<size_t>(picture.height) > 0x7FFFFFFFu) {
        *why = "a BMP file holds at most 2 GB";
        return false;
    }
    const Bytes header = MakeHeader(picture, static_cast<uint32_t>(rowLength));
    if (!AppendOutput(file, header.data(), header.size(), why))
        return false;
    for (int32_t y = picture.height; y-- > 0;) {
        Bytes row(rowLength);
        for (size_t x = 0; x < width; x++)
            for (size_t channel = 0; channel < channels; channel++)
                row[x * channels + channel] =
                    picture.planes[channels - 1 - channel][static_cast<size_t>(y) * width + x];
        if (!AppendOutput(file, row.data(), row.size(), why))
            return false;
    }
    return true;
}

} // namespace host
