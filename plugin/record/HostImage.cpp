#include "plugin/record/HostImage.h"

#include "diag/ErrorReport.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/HostRectangles.h"
#include "plugin/record/PluginState.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr char kTitleUnsupported[] = "Error: Unsupported feature.";
constexpr int32_t kDefaultTileSize = 1024;
constexpr int16_t kFillWithWhite = 255; // padding of what lies outside the image
// No host has images beyond this; it keeps all arithmetic on coordinates far from overflow.
constexpr int32_t kMaxCoordinate = 1 << 24;

struct TileSize {
    int32_t width, height;
};

int32_t ColorPlanesOfMode() {
    return IsGrayMode(gFilterRecord->imageMode) ? 1 : 3;
}

// Hosts may send an 8-bit mode with a greater depth: the depth is right. Without one the mode tells.
int32_t BytesPerSample() {
    switch (gFilterRecord->depth) {
    case 8:
        return 1;
    case 16:
        return 2;
    case 32:
        return 4;
    default:
        break;
    }
    switch (gFilterRecord->imageMode) {
    case kModeGray16:
    case kModeRgb16:
        return 2;
    case kModeGray32:
    case kModeRgb32:
        return 4;
    default:
        return 1;
    }
}

bool HasInputCounts() {
    const FilterRecord &r = *gFilterRecord;
    return r.inLayerPlanes != 0 || r.inTransparencyMask != 0 || r.inLayerMasks != 0 ||
           r.inInvertedLayerMasks != 0 || r.inNonLayerPlanes != 0;
}

// One channel or a layer mask of a colour image comes alone, and is filtered like a grey image. A host that
// counts nothing at all means what the mode implies.
int32_t ColorPlanes() {
    const FilterRecord &r = *gFilterRecord;
    const int32_t counted = r.inLayerPlanes > 0 ? r.inLayerPlanes : r.inNonLayerPlanes;
    const int32_t offered = counted > 0 ? counted : r.planes;
    return offered > 0 && offered < ColorPlanesOfMode() ? 1 : ColorPlanesOfMode();
}

// A host that fills in none of the counts still includes transparency in the number of planes.
int32_t TransparencyPlanes() {
    if (HasInputCounts())
        return std::max<int32_t>(gFilterRecord->inTransparencyMask, 0);
    return gFilterRecord->planes > ColorPlanesOfMode() ? 1 : 0;
}

// The host's mode, or the grey one of the same depth when not all of its colours are there.
int32_t ImageMode() {
    if (ColorPlanes() == ColorPlanesOfMode())
        return gFilterRecord->imageMode;
    const int32_t size = BytesPerSample();
    return size == 1 ? kModeGray8 : size == 2 ? kModeGray16 : kModeGray32;
}

// A flat image counts its colours as non-layer planes, which is no extra plane.
bool HasUnsupportedPlanes() {
    const FilterRecord &r = *gFilterRecord;
    const int32_t ordinary = r.inLayerPlanes > 0 ? 0 : ColorPlanes();
    return r.inLayerMasks > 0 || r.inInvertedLayerMasks > 0 || r.inNonLayerPlanes > ordinary;
}

// Protected transparency, for one, is read but never written: where it is not counted, the plane of its
// number is another one. A host that counts no colours takes what was read.
int32_t OutputPlanes(const ImageBuffer &image) {
    const FilterRecord &r = *gFilterRecord;
    const int32_t colors = r.outLayerPlanes > 0 ? r.outLayerPlanes : r.outNonLayerPlanes;
    if (colors > 0 && r.outTransparencyMask <= 0)
        return std::min(colors, ColorPlanes());
    const int32_t offered = colors > 0 ? colors + r.outTransparencyMask : r.planes;
    return offered > 0 ? std::min(offered, PlaneCount(image)) : PlaneCount(image);
}

void ReportImage(uint32_t siteCode, const char *title, const char *text) {
    ReportError({siteCode, kUserMessage, 0}, kStopIcon, title, "%s", text);
}

void WarnOfIgnoredPlanes() {
    if (HasUnsupportedPlanes())
        ReportImage(282, kTitleUnsupported,
                    "Plugin does not currently support the use of layer masks or non-layer planes.");
    if (TransparencyPlanes() > 1)
        ReportImage(292, kTitleUnsupported,
                    "Plugin does not currently support more than one transparency plane.");
}

bool IsSaneArea(const IntRect &area) {
    return !IsEmptyRect(area) && area.left >= -kMaxCoordinate && area.top >= -kMaxCoordinate &&
           area.right <= kMaxCoordinate && area.bottom <= kMaxCoordinate;
}

TileSize HostTileSize() {
    const TileSize size = {gFilterRecord->inTileWidth, gFilterRecord->inTileHeight};
    if (size.width <= 0 || size.height <= 0)
        return {kDefaultTileSize, kDefaultTileSize};
    return size;
}

HostResult Advance() {
    HostResult (*advance)() = gFilterRecord->advanceState;
    return advance ? CallHost(advance) : kErrPlugInHostInsufficient;
}

// What the host gave for a request of `width` × `height` samples: hosts exist whose advance succeeds without
// data.
bool IsBufferUsable(const void *data, int32_t rowBytes, int64_t neededRowBytes) {
    return data && rowBytes >= neededRowBytes;
}

struct PlaneRows {
    uint8_t *first; // sample at the tile's top left
    int64_t stride; // bytes
};

PlaneRows RowsInPlane(const ImageBuffer &buffer, uint8_t *plane, int32_t bytesPerSample,
                      const IntRect &tile) {
    const int64_t x = int64_t{tile.left} - buffer.bounds.left;
    const int64_t y = int64_t{tile.top} - buffer.bounds.top;
    return {plane + (y * buffer.width + x) * bytesPerSample, int64_t{buffer.width} * bytesPerSample};
}

// The host's rows may lie where there is no memory.
HostResult CopyRows(uint8_t *to, int64_t toStride, const uint8_t *from, int64_t fromStride, int64_t rowBytes,
                    int32_t rows) {
    RunGuarded([=]() mutable {
        for (int32_t row = 0; row < rows; ++row, to += toStride, from += fromStride)
            std::memcpy(to, from, static_cast<size_t>(rowBytes));
    });
    return HostFailure();
}

HostResult CopyTileIn(ImageBuffer *buffer, int32_t plane, const IntRect &tile) {
    const int64_t rowBytes = int64_t{tile.right - tile.left} * buffer->bytesPerSample;
    const auto *data = static_cast<const uint8_t *>(gFilterRecord->inData);
    if (!IsBufferUsable(data, gFilterRecord->inRowBytes, rowBytes))
        return kErrPlugInHostInsufficient;
    const PlaneRows to = RowsInPlane(*buffer, buffer->planes[plane], buffer->bytesPerSample, tile);
    return CopyRows(to.first, to.stride, data, gFilterRecord->inRowBytes, rowBytes, tile.bottom - tile.top);
}

// Hosts speak of a mask and then have none: the run goes on without.
HostResult CopyMaskIn(ImageBuffer *buffer, const IntRect &tile) {
    const int64_t rowBytes = tile.right - tile.left;
    const auto *data = static_cast<const uint8_t *>(gFilterRecord->maskData);
    if (!data) {
        FreeImageMask(buffer);
        return kNoError;
    }
    if (!IsBufferUsable(data, gFilterRecord->maskRowBytes, rowBytes))
        return kErrPlugInHostInsufficient;
    const PlaneRows to = RowsInPlane(*buffer, buffer->mask, 1, tile);
    return CopyRows(to.first, to.stride, data, gFilterRecord->maskRowBytes, rowBytes, tile.bottom - tile.top);
}

// The mask comes with the first plane only.
HostResult ReadTile(ImageBuffer *buffer, int32_t plane, const IntRect &tile) {
    const bool withMask = plane == 0 && buffer->mask;
    RequestOutput(kEmptyRect);
    RequestInput(tile);
    RequestMask(withMask ? tile : kEmptyRect);
    HostResult result = Advance();
    if (result == kNoError)
        result = CopyTileIn(buffer, plane, tile);
    if (result == kNoError && withMask)
        result = CopyMaskIn(buffer, tile);
    return result;
}

HostResult ReadPlane(ImageBuffer *buffer, int32_t plane) {
    gFilterRecord->inLoPlane = static_cast<int16_t>(plane);
    gFilterRecord->inHiPlane = static_cast<int16_t>(plane);
    const TileSize step = HostTileSize();
    const IntRect &area = buffer->bounds;
    for (int32_t top = area.top; top < area.bottom; top += step.height)
        for (int32_t left = area.left; left < area.right; left += step.width) {
            const IntRect tile = IntersectRects(area, {left, top, left + step.width, top + step.height});
            if (const HostResult result = ReadTile(buffer, plane, tile))
                return result;
        }
    return kNoError;
}

void SetRatesAndPadding() {
    gFilterRecord->inputRate = kFixedOne;
    gFilterRecord->maskRate = kFixedOne;
    gFilterRecord->inputPadding = kFillWithWhite;
    gFilterRecord->maskPadding = kFillWithWhite;
}

HostResult CopyTileOut(const ImageBuffer &image, int32_t plane, const IntRect &tile) {
    const int64_t rowBytes = int64_t{tile.right - tile.left} * image.bytesPerSample;
    auto *data = static_cast<uint8_t *>(gFilterRecord->outData);
    if (!IsBufferUsable(data, gFilterRecord->outRowBytes, rowBytes))
        return kErrPlugInHostInsufficient;
    const PlaneRows from = RowsInPlane(image, image.planes[plane], image.bytesPerSample, tile);
    return CopyRows(data, gFilterRecord->outRowBytes, from.first, from.stride, rowBytes,
                    tile.bottom - tile.top);
}

HostResult WritePlane(const ImageBuffer &image, int32_t plane, const IntRect &tile) {
    gFilterRecord->outLoPlane = static_cast<int16_t>(plane);
    gFilterRecord->outHiPlane = static_cast<int16_t>(plane);
    const HostResult result = Advance();
    return result == kNoError ? CopyTileOut(image, plane, tile) : result;
}

// Describes and allocates a buffer for an area, in the mode, depth and planes of the host's image. The caller
// writes every sample: they hold any value.
HostResult DescribeBuffer(const IntRect &area, bool wantMask, ImageBuffer *buffer) {
    bool maskFailed = false;
    const HostResult result =
        AllocateUnclearedImageBuffer(ImageMode(), BytesPerSample(), std::min(TransparencyPlanes(), 1), area,
                                     wantMask, buffer, &maskFailed);
    if (result != kNoError && maskFailed)
        ReportImage(331, kTitleExiting, "Could not allocate memory for an image mask.");
    else if (result != kNoError)
        ReportImage(315, kTitleExiting, "Could not allocate memory for an image.");
    return result;
}

} // namespace

HostResult ReadInputImage(ImageBuffer *input) {
    const IntRect area = FilterArea();
    if (!IsSaneArea(area))
        return kFilterBadParameters;
    WarnOfIgnoredPlanes();
    ImageBuffer buffer{};
    HostResult result = DescribeBuffer(area, gFilterRecord->haveMask != 0, &buffer);
    if (result != kNoError)
        return result;
    SetRatesAndPadding();
    for (int32_t plane = 0; plane < PlaneCount(buffer) && result == kNoError; ++plane)
        result = ReadPlane(&buffer, plane);
    if (result != kNoError) {
        ReportImage(360, kTitleExiting, "Could not read input image.");
        FreeImageBuffer(&buffer);
        return result;
    }
    *input = buffer;
    return kNoError;
}

// A cancelled write is what the user wanted and is not reported; a cancelled read is: meant so.
HostResult WriteTile(const ImageBuffer &image, const IntRect &tile) {
    RequestInput(kEmptyRect);
    RequestMask(kEmptyRect);
    RequestOutput(tile);
    const int32_t planes = OutputPlanes(image);
    HostResult result = kNoError;
    for (int32_t plane = 0; plane < planes && result == kNoError; ++plane)
        result = WritePlane(image, plane, tile);
    if (result != kNoError && result != kUserCanceledErr)
        ReportImage(689, kTitleExiting, "Could not write results back to editor.");
    return result;
}
