#include "ui/viewers/DebugImageBitmap.h"

#include "diag/ErrorReport.h"
#include "ui/viewers/ClipboardCopy.h"

#include <algorithm>

namespace {

constexpr uint32_t kSiteBitmap = 710, kSitePicture = 718;
constexpr int kBytesPerPixel = 4;

size_t RowBytes(const DebugBitmap &bitmap) {
    return static_cast<size_t>(bitmap.width) * kBytesPerPixel;
}

// Bottom up, as every program that pastes one understands.
BITMAPINFOHEADER DescribeBitmap(int width, int height) {
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = 8 * kBytesPerPixel;
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<DWORD>(width) * static_cast<DWORD>(height) * kBytesPerPixel;
    return header;
}

bool CreateObjects(DebugBitmap *bitmap) {
    BITMAPINFO info = {};
    info.bmiHeader = DescribeBitmap(bitmap->width, bitmap->height);
    void *bits = nullptr;
    bitmap->context = CreateCompatibleDC(nullptr);
    bitmap->bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    bitmap->pixels = static_cast<uint8_t *>(bits);
    if (!bitmap->context || !bitmap->bitmap || !bits) {
        ReportError({kSiteBitmap, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected,
                    "Could not create the bitmap of a debug image.");
        return false;
    }
    bitmap->before = SelectObject(bitmap->context, bitmap->bitmap);
    return true;
}

void TurnOver(const DebugBitmap &bitmap) {
    const size_t rowBytes = RowBytes(bitmap);
    uint8_t *low = bitmap.pixels;
    uint8_t *high = bitmap.pixels + rowBytes * static_cast<size_t>(bitmap.height - 1);
    for (; low < high; low += rowBytes, high -= rowBytes)
        std::swap_ranges(low, low + rowBytes, high);
}

bool DrawIntoBitmap(int32_t choice, const DebugBitmap &bitmap) {
    if (!DrawDebugPicture(choice, bitmap.place, bitmap.pixels)) {
        ReportError({kSitePicture, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Could not draw a debug image.");
        return false;
    }
    TurnOver(bitmap);
    return true;
}

} // namespace

bool MakeDebugBitmap(int32_t choice, DebugBitmap *bitmap) {
    DebugBitmap made{};
    *bitmap = DebugBitmap{};
    if (!FindDebugPicture(choice, &made.place))
        return false;
    made.width = made.place.area.right - made.place.area.left;
    made.height = made.place.area.bottom - made.place.area.top;
    if (CreateObjects(&made) && DrawIntoBitmap(choice, made)) {
        *bitmap = made;
        return true;
    }
    FreeDebugBitmap(&made);
    return false;
}

void FreeDebugBitmap(DebugBitmap *bitmap) {
    if (bitmap->before)
        SelectObject(bitmap->context, bitmap->before);
    if (bitmap->bitmap)
        DeleteObject(bitmap->bitmap);
    if (bitmap->context)
        DeleteDC(bitmap->context);
    *bitmap = DebugBitmap{};
}

const uint8_t *DebugBitmapPixel(const DebugBitmap &bitmap, int column, int row) {
    return bitmap.pixels + RowBytes(bitmap) * static_cast<size_t>(bitmap.height - 1 - row) +
           static_cast<size_t>(column) * kBytesPerPixel;
}

void CopyDebugBitmap(HWND owner, const DebugBitmap &bitmap) {
    if (!bitmap.context)
        return;
    const BITMAPINFOHEADER header = DescribeBitmap(bitmap.width, bitmap.height);
    const ClipboardPart parts[] = {{&header, sizeof header}, {bitmap.pixels, header.biSizeImage}};
    CopyToClipboard(owner, CF_DIB, "picture", parts, 2);
}
