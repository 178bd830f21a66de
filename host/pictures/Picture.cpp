#include "host/pictures/Picture.h"

#include <algorithm>
#include <cmath>

namespace host {

bool CheckPictureSize(uint64_t width, uint64_t height, std::string *why) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width == 0 || height == 0)
        *why = "it has " + size;
    else if (width > kMostPixels || height > kMostPixels)
        *why = "it has " + size + "; at most " + std::to_string(kMostPixels) +
               " in each direction can be filtered";
    else
        return true;
    return false;
}

static size_t PlaneSize(const Picture &picture) {
    return static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) *
           static_cast<size_t>(picture.depth / 8);
}

Picture MakeRoom(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes, bool hasAlpha) {
    Picture picture;
    picture.width = width;
    picture.height = height;
    picture.depth = depth;
    picture.colourPlanes = colourPlanes;
    picture.hasAlpha = hasAlpha;
    picture.planes.resize(static_cast<size_t>(colourPlanes) + (hasAlpha ? 1 : 0));
    for (Bytes &plane : picture.planes)
        plane.reserve(PlaneSize(picture));
    return picture;
}

Picture MakePicture(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes, bool hasAlpha) {
    Picture picture = MakeRoom(width, height, depth, colourPlanes, hasAlpha);
    for (Bytes &plane : picture.planes)
        plane.resize(PlaneSize(picture));
    return picture;
}

// Where the sample of the turned picture at (x, y) comes from. Orientations 5 to 8 swap the axes.
static size_t SourceIndex(const Picture &picture, int32_t orientation, int32_t x, int32_t y) {
    const int32_t right = picture.width - 1, bottom = picture.height - 1;
    int32_t fromX = x, fromY = y;
    switch (orientation) {
    case 2:
        fromX = right - x;
        break;
    case 3:
        fromX = right - x, fromY = bottom - y;
        break;
    case 4:
        fromY = bottom - y;
        break;
    case 5:
        fromX = y, fromY = x;
        break;
    case 6:
        fromX = y, fromY = bottom - x;
        break;
    case 7:
        fromX = right - y, fromY = bottom - x;
        break;
    case 8:
        fromX = right - y, fromY = x;
        break;
    default:
        break;
    }
    return static_cast<size_t>(fromY) * static_cast<size_t>(picture.width) + static_cast<size_t>(fromX);
}

// Reads along columns would miss the cache at each pixel: squares of this side keep to it.
constexpr int32_t kTurnedSquare = 32;

template <typename Sample>
static void TurnPlane(const Picture &picture, int32_t orientation, int32_t width, int32_t height,
                      const Bytes &plane, Bytes *turned) {
    const auto stepX = width > 1 ? static_cast<ptrdiff_t>(SourceIndex(picture, orientation, 1, 0) -
                                                          SourceIndex(picture, orientation, 0, 0))
                                 : 0;
    const size_t size = sizeof(Sample);
    for (int32_t top = 0; top < height; top += kTurnedSquare)
        for (int32_t left = 0; left < width; left += kTurnedSquare)
            for (int32_t y = top; y < std::min(top + kTurnedSquare, height); y++) {
                auto from = static_cast<ptrdiff_t>(SourceIndex(picture, orientation, left, y));
                uint8_t *to =
                    turned->data() +
                    (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(left)) * size;
                for (int32_t x = left; x < std::min(left + kTurnedSquare, width);
                     x++, from += stepX, to += size)
                    std::memcpy(to, plane.data() + static_cast<size_t>(from) * size, size);
            }
}

void ApplyOrientation(Picture &picture, int32_t orientation) {
    if (orientation < 2 || orientation > 8)
        return;
    const bool swaps = orientation >= 5;
    const int32_t width = swaps ? picture.height : picture.width;
    const int32_t height = swaps ? picture.width : picture.height;
    const auto turn = picture.depth == 8    ? TurnPlane<uint8_t>
                      : picture.depth == 16 ? TurnPlane<uint16_t>
                                            : TurnPlane<float>;
    for (Bytes &plane : picture.planes) {
        Bytes turned(plane.size());
        turn(picture, orientation, width, height, plane, &turned);
        plane = std::move(turned);
    }
    picture.width = width;
    picture.height = height;
}

bool AreColourPlanesEqual(const Picture &picture) {
    return picture.colourPlanes == 3 && picture.planes[0] == picture.planes[1] &&
           picture.planes[0] == picture.planes[2];
}

void CollapseToGrey(Picture &picture) {
    picture.planes.erase(picture.planes.begin() + 1, picture.planes.begin() + 3);
    picture.colourPlanes = 1;
}

// As a fraction of white.
static double SampleFraction(const Picture &picture, size_t plane, size_t index) {
    const uint8_t *bytes = picture.planes[plane].data() + index * static_cast<size_t>(picture.depth / 8);
    if (picture.depth == 8)
        return *bytes / 255.0;
    if (picture.depth == 16)
        return NumberAt<uint16_t>(bytes) / 65535.0;
    const double value = static_cast<double>(NumberAt<float>(bytes));
    return std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0);
}

Bytes ToGrey8(const Picture &picture) {
    if (picture.depth == 8 && picture.colourPlanes == 1)
        return picture.planes[0];
    Bytes grey(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height));
    for (size_t i = 0; i < grey.size(); i++) {
        double value = SampleFraction(picture, 0, i);
        if (picture.colourPlanes == 3)
            value =
                0.299 * value + 0.587 * SampleFraction(picture, 1, i) + 0.114 * SampleFraction(picture, 2, i);
        grey[i] = static_cast<uint8_t>(std::lround(value * 255.0));
    }
    return grey;
}

} // namespace host
