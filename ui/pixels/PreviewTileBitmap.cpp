#include "ui/pixels/PreviewTileBitmap.h"

#include "diag/ErrorReport.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t kSiteContext = 414, kSiteBitmap = 424, kSiteProfile = 446;

// Stored as these four bytes: the code's last character comes first.
constexpr DWORD kEmbeddedProfile = 0x4D424544;  // "DEBM"
constexpr DWORD kSystemColorSpace = 0x57696E20; // " niW"
constexpr DWORD kIntentForImages = 4;

void ReportCreation(uint32_t site, const char *text) {
    ReportError({site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", text);
}

HDC CreateContext(HDC display) {
    const HDC dc = CreateCompatibleDC(display);
    if (!dc)
        ReportCreation(kSiteContext, "Could not create a device context for the preview.");
    return dc;
}

HGDIOBJ SelectInto(HDC dc, HBITMAP bitmap) {
    return dc && bitmap ? SelectObject(dc, bitmap) : nullptr;
}

void DeleteContext(HDC *dc, HBITMAP *bitmap, HGDIOBJ *before) {
    if (*dc && *before)
        SelectObject(*dc, *before);
    if (*bitmap)
        DeleteObject(*bitmap);
    if (*dc)
        DeleteDC(*dc);
    *dc = nullptr;
    *bitmap = nullptr;
    *before = nullptr;
}

bool HasProfile(const TileBitmap &bitmap) {
    return bitmap.description.header.bV5ProfileSize != 0;
}

const BITMAPINFO *InfoOf(const TileBitmapHeader &description) {
    return reinterpret_cast<const BITMAPINFO *>(&description);
}

HBITMAP Reported(HBITMAP bitmap) {
    if (!bitmap)
        ReportCreation(kSiteBitmap, "Could not create a bitmap for the preview.");
    return bitmap;
}

void MakeTile(HDC display, TileBitmap *bitmap) {
    void *pixels = nullptr;
    bitmap->tile =
        Reported(CreateDIBSection(display, InfoOf(bitmap->description), DIB_RGB_COLORS, &pixels, nullptr, 0));
    bitmap->pixels = static_cast<uint32_t *>(pixels);
    bitmap->tileContext = CreateContext(display);
    bitmap->tileBefore = SelectInto(bitmap->tileContext, bitmap->tile);
}

void MakeMatched(HDC display, TileBitmap *bitmap) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, kTileBitmapSide, -kTileBitmapSide, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *pixels = nullptr;
    bitmap->matched = Reported(CreateDIBSection(display, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    bitmap->matchedPixels = static_cast<uint32_t *>(pixels);
    bitmap->matchedContext = CreateContext(display);
    bitmap->matchedBefore = SelectInto(bitmap->matchedContext, bitmap->matched);
}

void MakeScreen(HDC display, TileBitmap *bitmap) {
    bitmap->screen = Reported(CreateCompatibleBitmap(display, kTileBitmapSide, kTileBitmapSide));
    bitmap->screenContext = CreateContext(display);
    bitmap->screenBefore = SelectInto(bitmap->screenContext, bitmap->screen);
    // Where the system cannot match colours they go straight through.
    if (bitmap->screenContext && HasProfile(*bitmap))
        SetICMMode(bitmap->screenContext, ICM_ON);
}

// Only transfers from memory are matched, transfers between contexts are not. So the piece goes
// through the screen's format into `matched`. The description is cut to the rows that are matched: where a
// part of a bitmap begins is counted from the bottom, even when the top row is first.
bool MatchPiece(const TileBitmap &bitmap, int32_t width, int32_t height, uint32_t *pixels) {
    TileBitmapHeader description;
    const DWORD profileBytes = bitmap.description.header.bV5ProfileSize;
    memcpy(&description, &bitmap.description, sizeof description.header + profileBytes);
    description.header.bV5Width = width;
    description.header.bV5Height = -height;
    if (StretchDIBits(bitmap.screenContext, 0, 0, width, height, 0, 0, width, height, pixels,
                      InfoOf(description), DIB_RGB_COLORS, SRCCOPY) <= 0)
        return false;
    const bool isRead =
        BitBlt(bitmap.matchedContext, 0, 0, width, height, bitmap.screenContext, 0, 0, SRCCOPY) != 0 &&
        GdiFlush();
    for (int32_t y = 0; isRead && y < height; ++y)
        std::transform(bitmap.matchedPixels + y * kTileBitmapSide,
                       bitmap.matchedPixels + y * kTileBitmapSide + width, pixels + y * width,
                       [](uint32_t pixel) { return pixel | kStoredAlpha; });
    return isRead;
}

} // namespace

void DescribeTileBitmap(const void *iccProfile, uint32_t iccProfileBytes, TileBitmapHeader *description) {
    BITMAPV5HEADER &header = description->header;
    header = BITMAPV5HEADER{};
    header.bV5Size = sizeof header;
    header.bV5Width = kTileBitmapSide;
    header.bV5Height = -kTileBitmapSide;
    header.bV5Planes = 1;
    header.bV5BitCount = 32;
    header.bV5Compression = BI_RGB;
    header.bV5CSType = kSystemColorSpace;
    header.bV5Intent = kIntentForImages;
    if (!iccProfile || iccProfileBytes == 0)
        return;
    if (iccProfileBytes > kLargestProfile) {
        ReportError({kSiteProfile, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "Preallocated ConversionInfo.ICCProfile too small for this image.");
        return;
    }
    memcpy(description->profile, iccProfile, iccProfileBytes);
    header.bV5CSType = kEmbeddedProfile;
    header.bV5ProfileData = sizeof header;
    header.bV5ProfileSize = iccProfileBytes;
}

void CreateTileBitmap(HWND display, const void *iccProfile, uint32_t iccProfileBytes, TileBitmap *bitmap) {
    DescribeTileBitmap(iccProfile, iccProfileBytes, &bitmap->description);
    const HDC dc = GetDC(display);
    MakeTile(dc, bitmap);
    MakeScreen(dc, bitmap);
    if (HasProfile(*bitmap))
        MakeMatched(dc, bitmap);
    if (dc)
        ReleaseDC(display, dc);
}

void DeleteTileBitmap(TileBitmap *bitmap) {
    DeleteContext(&bitmap->tileContext, &bitmap->tile, &bitmap->tileBefore);
    DeleteContext(&bitmap->screenContext, &bitmap->screen, &bitmap->screenBefore);
    DeleteContext(&bitmap->matchedContext, &bitmap->matched, &bitmap->matchedBefore);
    bitmap->pixels = bitmap->matchedPixels = nullptr;
}

void MatchColors(const TileBitmap &bitmap, PixelStore *store) {
    if (!bitmap.screenBefore || !bitmap.matchedBefore || !store->pixels)
        return;
    PixelStore piece{};
    if (!AllocateStore({0, 0, kTileBitmapSide, kTileBitmapSide}, store->scale, &piece))
        return;
    const IntRect &all = store->bounds;
    for (int32_t top = all.top; top < all.bottom; top += kTileBitmapSide)
        for (int32_t left = all.left; left < all.right; left += kTileBitmapSide) {
            piece.bounds = {left, top, std::min(left + kTileBitmapSide, all.right),
                            std::min(top + kTileBitmapSide, all.bottom)};
            const int32_t width = piece.bounds.right - left, height = piece.bounds.bottom - top;
            CopyStore(*store, &piece);
            if (MatchPiece(bitmap, width, height, piece.pixels))
                CopyStore(piece, store);
        }
    FreeStore(&piece);
}

bool DrawTileBitmap(const TileBitmap &bitmap, HDC dc, int32_t x, int32_t y, int32_t width, int32_t height) {
    return bitmap.pixels && bitmap.tileBefore &&
           BitBlt(dc, x, y, width, height, bitmap.tileContext, 0, 0, SRCCOPY) != 0;
}
