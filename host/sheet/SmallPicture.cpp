#include "host/sheet/SmallPicture.h"

#include "host/pictures/VipsLibrary.h"

#include <algorithm>
#include <cmath>

namespace host {

constexpr size_t kHeadSize = 8;
constexpr int32_t kLargestSide = 4096; // of one that comes in a message

template <typename Sample> static double LightOf(const uint8_t *at) {
    if constexpr (sizeof(Sample) == 4) {
        const float value = NumberAt<float>(at);
        return value > 0.0f ? std::min(value, 1.0f) * 255.0 : 0.0; // not-a-number is no light
    } else {
        return NumberAt<Sample>(at) * (sizeof(Sample) == 1 ? 1.0 : 1.0 / 257.0);
    }
}

// The sums of the rows that become one, by column of the small picture.
template <typename Sample> static void AddRow(const uint8_t *row, int32_t width, std::vector<double> *sums) {
    const auto columns = static_cast<int64_t>(sums->size());
    int32_t x = 0;
    for (int64_t column = 0; column < columns; column++) {
        double sum = 0;
        for (const auto end = static_cast<int32_t>((column + 1) * width / columns); x < end; x++)
            sum += LightOf<Sample>(row + static_cast<size_t>(x) * sizeof(Sample));
        (*sums)[static_cast<size_t>(column)] += sum;
    }
}

static void ReducePlane(const Picture &picture, size_t plane, size_t channel, SmallPicture *small) {
    const auto add = picture.depth == 8    ? AddRow<uint8_t>
                     : picture.depth == 16 ? AddRow<uint16_t>
                                           : AddRow<float>;
    const size_t rowSize = static_cast<size_t>(picture.width) * static_cast<size_t>(picture.depth / 8);
    const auto edge = [](int64_t index, int64_t whole, int64_t parts) { return index * whole / parts; };
    for (int32_t y = 0; y < small->height; y++) {
        std::vector<double> sums(static_cast<size_t>(small->width));
        const int64_t top = edge(y, picture.height, small->height);
        const int64_t bottom = edge(y + 1, picture.height, small->height);
        for (int64_t row = top; row < bottom; row++)
            add(picture.planes[plane].data() + static_cast<size_t>(row) * rowSize, picture.width, &sums);
        for (int32_t x = 0; x < small->width; x++) {
            const int64_t columns =
                edge(x + 1, picture.width, small->width) - edge(x, picture.width, small->width);
            const double count = static_cast<double>(columns * (bottom - top));
            const size_t at =
                static_cast<size_t>(y) * static_cast<size_t>(small->width) + static_cast<size_t>(x);
            small->rgb[at * 3 + channel] =
                static_cast<uint8_t>(std::lround(sums[static_cast<size_t>(x)] / count));
        }
    }
}

// Pictures of several profiles stand on one sheet. Where that fails the colours stay as they are.
static void ToStandardColours(const Bytes &profile, SmallPicture *small) {
    std::string why;
    if (profile.empty() || !LoadVips(&why))
        return;
    const VipsLibrary &vips = Vips();
    const ImageHandle plain(vips.vips_image_new_from_memory(small->rgb.data(), small->rgb.size(),
                                                            small->width, small->height, 3, kVipsUChar));
    VipsImage *named = nullptr, *converted = nullptr;
    if (!plain || vips.vips_copy(plain.get(), &named, "interpretation", kVipsSRgb, nullptr) != 0)
        return;
    const ImageHandle holder(named);
    vips.vips_image_set_blob_copy(named, "icc-profile-data", profile.data(), profile.size());
    if (vips.vips_icc_transform(named, &converted, "srgb", "embedded", 1, nullptr) == 0) {
        const ImageHandle result(converted);
        const std::unique_ptr<VipsRegion, VipsRelease> region(vips.vips_region_new(converted));
        size_t length = 0;
        unsigned char *rows =
            vips.vips_image_get_bands(converted) == 3 && region
                ? vips.vips_region_fetch(region.get(), 0, 0, small->width, small->height, &length)
                : nullptr;
        if (rows && length == small->rgb.size())
            small->rgb.assign(rows, rows + length);
        vips.g_free(rows);
    }
    vips.vips_error_clear();
}

SmallPicture ReducePicture(const Picture &picture, int32_t side) {
    const int32_t longer = std::max(picture.width, picture.height);
    const int64_t least = std::min(side, longer);
    SmallPicture small;
    small.width = static_cast<int32_t>(std::max<int64_t>(1, picture.width * least / longer));
    small.height = static_cast<int32_t>(std::max<int64_t>(1, picture.height * least / longer));
    small.rgb.resize(static_cast<size_t>(small.width) * static_cast<size_t>(small.height) * 3);
    for (size_t channel = 0; channel < 3; channel++)
        ReducePlane(picture, picture.colourPlanes == 3 ? channel : 0, channel, &small);
    if (picture.colourPlanes == 3)
        ToStandardColours(picture.iccProfile, &small);
    return small;
}

std::string PackSmallPicture(const SmallPicture &small) {
    Bytes bytes;
    AppendNumber(bytes, small.width);
    AppendNumber(bytes, small.height);
    AppendBytes(bytes, small.rgb.data(), small.rgb.size());
    return {bytes.begin(), bytes.end()};
}

bool UnpackSmallPicture(const std::string &text, SmallPicture *small) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(text.data());
    if (text.size() < kHeadSize)
        return false;
    const auto width = NumberAt<int32_t>(bytes), height = NumberAt<int32_t>(bytes + 4);
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide ||
        text.size() - kHeadSize != static_cast<size_t>(width) * static_cast<size_t>(height) * 3)
        return false;
    *small = {width, height, Bytes(bytes + kHeadSize, bytes + text.size())};
    return true;
}

} // namespace host
