#include "host/filter/DisplayPixels.h"

#include "host/services/HostState.h"

namespace host {

constexpr int32_t kGreyMode = 1, kRgbMode = 3;
constexpr int64_t kMostPixels = 1 << 26;
constexpr int64_t kLargestSide = 1 << 24; // of the map: keeps every sum of offsets in range

// Whether all of the range is memory that can be read.
static bool IsReadable(const uint8_t *first, const uint8_t *last) {
    constexpr DWORD kClosed = PAGE_NOACCESS | PAGE_GUARD;
    while (first <= last) {
        MEMORY_BASIC_INFORMATION info;
        if (!VirtualQuery(first, &info, sizeof(info)) || info.State != MEM_COMMIT || (info.Protect & kClosed))
            return false;
        first = static_cast<const uint8_t *>(info.BaseAddress) + info.RegionSize;
    }
    return true;
}

// Where a sample lies, counted from the first one of the bounds.
static int64_t OffsetOf(const PixelMap &map, int32_t row, int32_t column, int32_t plane) {
    return (int64_t{row} - map.bounds.top) * map.rowBytes +
           (int64_t{column} - map.bounds.left) * map.colBytes + int64_t{plane} * map.planeBytes;
}

// Steps may be negative: the outermost samples are at corners of the source.
static bool CanReadSource(const PixelMap &map, const HostRect32 &source, int32_t planes) {
    int64_t least = INT64_MAX, most = INT64_MIN;
    for (const int32_t row : {source.top, source.bottom - 1})
        for (const int32_t column : {source.left, source.right - 1})
            for (const int32_t plane : {0, planes - 1}) {
                least = std::min(least, OffsetOf(map, row, column, plane));
                most = std::max(most, OffsetOf(map, row, column, plane));
            }
    const uint8_t *base = static_cast<const uint8_t *>(map.baseAddr);
    return base && IsReadable(base + least, base + most);
}

static bool IsSensible(const PixelMap &map, const HostRect32 &source) {
    const Rectangle bounds = {map.bounds.left, map.bounds.top, map.bounds.right, map.bounds.bottom};
    const Rectangle wanted = {source.left, source.top, source.right, source.bottom};
    return !IsEmpty(wanted) && Contains(bounds, wanted) &&
           int64_t{bounds.right} - bounds.left <= kLargestSide &&
           int64_t{bounds.bottom} - bounds.top <= kLargestSide &&
           (int64_t{wanted.right} - wanted.left) * (int64_t{wanted.bottom} - wanted.top) <= kMostPixels;
}

static std::vector<uint32_t> CollectPixels(const PixelMap &map, const HostRect32 &source, int32_t planes) {
    std::vector<uint32_t> pixels;
    pixels.reserve(static_cast<size_t>(source.right - source.left) *
                   static_cast<size_t>(source.bottom - source.top));
    const uint8_t *base = static_cast<const uint8_t *>(map.baseAddr);
    for (int32_t row = source.top; row < source.bottom; row++)
        for (int32_t column = source.left; column < source.right; column++) {
            uint32_t pixel = 0;
            for (int32_t i = 0; i < 3; i++)
                pixel = pixel << 8 | base[OffsetOf(map, row, column, std::min(i, planes - 1))];
            pixels.push_back(pixel);
        }
    return pixels;
}

HostResult ShowPixels(const PixelMap *map, const HostRect32 *source, int32_t row, int32_t column,
                      void *deviceContext) {
    if (!map || !source || !deviceContext || !IsSensible(*map, *source))
        return kParamErr;
    if (map->imageMode != kGreyMode && map->imageMode != kRgbMode)
        return kFilterBadMode;
    const int32_t planes = map->imageMode == kRgbMode ? 3 : 1;
    if (!CanReadSource(*map, *source, planes)) {
        AddViolation(*gHostState, "displayPixels of memory that cannot be read");
        return kParamErr;
    }
    const std::vector<uint32_t> pixels = CollectPixels(*map, *source, planes);
    const int32_t width = source->right - source->left, height = source->bottom - source->top;
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const int rows = SetDIBitsToDevice(static_cast<HDC>(deviceContext), column, row,
                                       static_cast<DWORD>(width), static_cast<DWORD>(height), 0, 0, 0,
                                       static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    return rows > 0 ? kNoError : kParamErr;
}

} // namespace host
