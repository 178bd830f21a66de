#include "ui/look/DialogPictures.h"

#include "diag/module/ModuleInstance.h"
#include "render/ParameterSet.h"
#include "resources/DialogControlIds.h"
#include "resources/ResourceIds.h"
#include "ui/look/AccessibleControl.h"
#include "ui/look/DialogLayout.h"
#include "ui/view/ViewTools.h"
#include "ui/window/Palette.h"
#include "ui/window/ScaledBitmap.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

constexpr int kIconSizes[] = {48, 40, 32, 24, 20, 16}; // in the icon files, largest first
constexpr int kPercentDpi = 96;                        // pixels an inch at 100 %
constexpr uint32_t kOpaque = 255;
constexpr uint32_t kDisabledAlpha = 96; // of a picture that cannot be used now
constexpr uint32_t kPlateAlpha = 40;    // of the highlight in the plate under the selected tool

enum Fit {
    kInTheMiddle,
    kFlushLeft,
    kOnPlate, // in the middle of a plate that shows it selected
};

struct ControlPicture {
    int controlId, resourceId;
    bool isIcon;
    Fit fit;
    HANDLE shown; // HICON or HBITMAP that the control shows and we own
};

ControlPicture gPictures[] = {
    {kProductLogoId, kProductLogoBitmapId, false, kFlushLeft, nullptr},
    {kMakerLogoId, kMakerLogoBitmapId, false, kFlushLeft, nullptr},
    {kZoomOutButtonId, kZoomOutBitmapId, false, kInTheMiddle, nullptr},
    {kZoomInButtonId, kZoomInBitmapId, false, kInTheMiddle, nullptr},
    {kZoomArrowId, kZoomArrowBitmapId, false, kInTheMiddle, nullptr},
    {kSettingsMenuIconControlId, kSettingsMenuIconId, true, kInTheMiddle, nullptr},
    {kCornerIconId, kSizeGripIconId, true, kInTheMiddle, nullptr},
    {kCompareId, kCompareIconId, true, kInTheMiddle, nullptr},
    {kPanIconId, kPanHandIconId, true, kOnPlate, nullptr},
    {kZoomIconId, kZoomGlassIconId, true, kOnPlate, nullptr},
    {kHideIconId, kHideEffectsIconId, true, kOnPlate, nullptr},
    {kShowIconId, kShowEffectsIconId, true, kOnPlate, nullptr},
    // What less and more of each parameter does.
    {kPairIds[kThreshold].less, kThresholdLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kThreshold].more, kThresholdMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kIntensity].less, kIntensityLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kIntensity].more, kIntensityMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kLength].less, kLengthLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kLength].more, kLengthMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kAngle].less, kAngleLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kAngle].more, kAngleMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kNumberOfPoints].less, kNumberOfPointsLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kNumberOfPoints].more, kNumberOfPointsMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kSpikeSharpness].less, kSpikeSharpnessLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kSpikeSharpness].more, kSpikeSharpnessMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kColorSaturation].less, kColorSaturationLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kColorSaturation].more, kColorSaturationMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kRainbowIntensity].less, kRainbowIntensityLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kRainbowIntensity].more, kRainbowIntensityMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kRainbowFrequency].less, kRainbowFrequencyLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kRainbowFrequency].more, kRainbowFrequencyMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kSecondaryIntensity].less, kSecondarySpikesLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kSecondaryIntensity].more, kSecondarySpikesMoreId, true, kInTheMiddle, nullptr},
    {kPairIds[kSoftFlareIntensity].less, kSoftFlareLessId, true, kInTheMiddle, nullptr},
    {kPairIds[kSoftFlareIntensity].more, kSoftFlareMoreId, true, kInTheMiddle, nullptr},
};

// Pixels to draw on: rows from the top, premultiplied blue, green, red, alpha. `bitmap` is null when there is
// none.
struct Canvas {
    HBITMAP bitmap;
    uint32_t *pixels;
    int width, height;
};

Canvas MakeCanvas(int width, int height) {
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    if (width <= 0 || height <= 0)
        return {};
    const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    return bitmap ? Canvas{bitmap, static_cast<uint32_t *>(bits), width, height} : Canvas{};
}

void FreeCanvas(const Canvas &canvas) {
    if (canvas.bitmap)
        DeleteObject(canvas.bitmap);
}

// A memory context that draws on the canvas.
struct CanvasContext {
    HDC dc;
    HGDIOBJ oldBitmap;
};

bool OpenCanvas(const Canvas &canvas, CanvasContext *context) {
    const HDC dc = canvas.bitmap ? CreateCompatibleDC(nullptr) : nullptr;
    if (!dc)
        return false;
    *context = {dc, SelectObject(dc, canvas.bitmap)};
    return true;
}

void CloseCanvas(const CanvasContext &context) {
    GdiFlush();
    SelectObject(context.dc, context.oldBitmap);
    DeleteDC(context.dc);
}

// Drawn on nothing, an icon leaves its own pixels.
bool DrawIconOn(const Canvas &canvas, HICON icon) {
    CanvasContext context;
    if (!OpenCanvas(canvas, &context))
        return false;
    const BOOL drawn = DrawIconEx(context.dc, 0, 0, icon, canvas.width, canvas.height, 0, nullptr, DI_NORMAL);
    CloseCanvas(context);
    return drawn != FALSE;
}

bool CopyPixels(const Canvas &to, const Canvas &from) {
    CanvasContext source, target;
    if (!OpenCanvas(from, &source))
        return false;
    BOOL copied = FALSE;
    if (OpenCanvas(to, &target)) {
        copied = BitBlt(target.dc, 0, 0, to.width, to.height, source.dc, 0, 0, SRCCOPY);
        CloseCanvas(target);
    }
    CloseCanvas(source);
    return copied != FALSE;
}

Canvas KeptIf(bool complete, const Canvas &canvas) {
    if (complete)
        return canvas;
    FreeCanvas(canvas);
    return {};
}

Canvas LoadIconPixels(int resourceId, int size) {
    const HANDLE icon =
        LoadImageA(ModuleInstance(), MAKEINTRESOURCEA(resourceId), IMAGE_ICON, size, size, LR_DEFAULTCOLOR);
    if (!icon)
        return {};
    const Canvas canvas = MakeCanvas(size, size);
    const bool drawn = DrawIconOn(canvas, static_cast<HICON>(icon));
    DestroyIcon(static_cast<HICON>(icon));
    return KeptIf(drawn, canvas);
}

int ScaledPixels(int pixels) {
    return MulDiv(pixels, static_cast<int>(DialogLayoutDpi()), kPercentDpi);
}

// The largest of the drawn sizes that has room: a picture is never stretched.
Canvas LoadIconFor(const ControlPicture &picture, const Canvas &room) {
    const int margin = picture.fit == kOnPlate ? ScaledPixels(1) : 0;
    const int most = std::min(room.width, room.height) - 2 * margin;
    const int *size = std::find_if(std::begin(kIconSizes), std::end(kIconSizes) - 1,
                                   [most](int candidate) { return candidate <= most; });
    return LoadIconPixels(picture.resourceId, *size);
}

// No larger than drawn for the scale.
Canvas LoadBitmapFor(const ControlPicture &picture, const Canvas &room) {
    int count = kBitmapScaleCount;
    while (count > 1 && kBitmapScales[count - 1] > ScaledPixels(100))
        --count;
    SIZE size = {};
    const HBITMAP bitmap = LoadFittingBitmap(picture.resourceId, count, {room.width, room.height}, &size);
    if (!bitmap)
        return {};
    const Canvas source = {bitmap, nullptr, static_cast<int>(size.cx), static_cast<int>(size.cy)};
    const Canvas canvas = MakeCanvas(source.width, source.height);
    const bool copied = CopyPixels(canvas, source);
    FreeCanvas(source);
    return KeptIf(copied, canvas);
}

uint32_t PixelOf(PaletteColor entry) {
    const COLORREF color = ColorOf(entry);
    return static_cast<uint32_t>(GetRValue(color)) << 16 | static_cast<uint32_t>(GetGValue(color)) << 8 |
           GetBValue(color);
}

uint32_t Mixed(uint32_t below, uint32_t above, uint32_t alpha) {
    uint32_t mixed = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const uint32_t a = above >> shift & 255, b = below >> shift & 255;
        mixed |= (a * alpha + b * (kOpaque - alpha) + kOpaque / 2) / kOpaque << shift;
    }
    return mixed;
}

// Lays a premultiplied pixel, as far as `alpha` lets it show.
uint32_t Laid(uint32_t below, uint32_t pixel, uint32_t alpha) {
    const uint32_t keep = kOpaque * kOpaque - (pixel >> 24) * alpha;
    uint32_t laid = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const uint32_t sum = (pixel >> shift & 255) * alpha * kOpaque + (below >> shift & 255) * keep;
        laid |= std::min((sum + kOpaque * kOpaque / 2) / (kOpaque * kOpaque), kOpaque) << shift;
    }
    return laid;
}

// The logos stand flush with the preview's frame below or above them; the rest is in the middle.
void LayPicture(const ControlPicture &picture, const Canvas &canvas, const Canvas &source, uint32_t alpha) {
    const int left = picture.fit == kFlushLeft ? 0 : (canvas.width - source.width) / 2,
              top = (canvas.height - source.height) / 2;
    for (int y = std::max(0, -top); y < std::min(source.height, canvas.height - top); ++y)
        for (int x = std::max(0, -left); x < std::min(source.width, canvas.width - left); ++x) {
            const uint32_t pixel = source.pixels[y * source.width + x];
            uint32_t &to = canvas.pixels[(y + top) * canvas.width + x + left];
            to = Laid(to, pixel, alpha);
        }
}

// A tint of the window colour, on which the drawing stands out whatever the dialog's own colour, with a frame
// in the full one; the corners are left out.
void FillPlate(const Canvas &canvas) {
    const uint32_t frame = PixelOf(kHighlightColor);
    const uint32_t plate = Mixed(PixelOf(kFieldColor), frame, kPlateAlpha);
    const int line = ScaledPixels(1);
    for (int y = 0; y < canvas.height; ++y)
        for (int x = 0; x < canvas.width; ++x) {
            const bool acrossEdge = x < line || x >= canvas.width - line;
            const bool downEdge = y < line || y >= canvas.height - line;
            if (!acrossEdge || !downEdge)
                canvas.pixels[y * canvas.width + x] = acrossEdge || downEdge ? frame : plate;
        }
}

// The picture as the control shows it, of the control's size and opaque. An empty canvas when it cannot be
// made.
Canvas Compose(HWND control, const ControlPicture &picture, ToolPicture state) {
    RECT client = {};
    GetClientRect(control, &client);
    const Canvas canvas = MakeCanvas(client.right, client.bottom);
    if (!canvas.bitmap)
        return {};
    const Canvas source = picture.isIcon ? LoadIconFor(picture, canvas) : LoadBitmapFor(picture, canvas);
    if (!source.bitmap) {
        FreeCanvas(canvas);
        return {};
    }
    const uint32_t background = PixelOf(kFaceColor);
    std::fill_n(canvas.pixels, static_cast<size_t>(canvas.width) * canvas.height, background);
    if (state == kPictureSelected)
        FillPlate(canvas);
    LayPicture(picture, canvas, source, state == kPictureDisabled ? kDisabledAlpha : kOpaque);
    FreeCanvas(source);
    return canvas;
}

// Nothing of the icon lets its background through.
HBITMAP MakeMask(int width, int height) {
    const HBITMAP mask = CreateBitmap(width, height, 1, 1, nullptr);
    CanvasContext context;
    if (OpenCanvas({mask, nullptr, width, height}, &context)) {
        PatBlt(context.dc, 0, 0, width, height, BLACKNESS);
        CloseCanvas(context);
        return mask;
    }
    if (mask)
        DeleteObject(mask);
    return nullptr;
}

// The icon has copies of what it is made of.
HICON MakeIcon(const Canvas &canvas) {
    for (int i = 0; i < canvas.width * canvas.height; ++i)
        canvas.pixels[i] |= kOpaque << 24;
    ICONINFO info = {TRUE, 0, 0, MakeMask(canvas.width, canvas.height), canvas.bitmap};
    if (!info.hbmMask)
        return nullptr;
    const HICON icon = CreateIconIndirect(&info);
    DeleteObject(info.hbmMask);
    return icon;
}

void DeletePicture(HANDLE image, bool isIcon) {
    if (image && isIcon)
        DestroyIcon(static_cast<HICON>(image));
    else if (image)
        DeleteObject(image);
}

// The control answers with the image it had: ours, or a bitmap that it loaded for the template and that
// nobody else frees. Icons of the template are shared ones.
void PutPicture(HWND control, ControlPicture *picture, HANDLE image) {
    const LRESULT replaced = SendMessageA(control, STM_SETIMAGE, picture->isIcon ? IMAGE_ICON : IMAGE_BITMAP,
                                          reinterpret_cast<LPARAM>(image));
    const HANDLE previous = reinterpret_cast<HANDLE>(replaced);
    if (previous && (previous == picture->shown || !picture->isIcon))
        DeletePicture(previous, picture->isIcon);
    if (picture->shown && picture->shown != previous)
        DeletePicture(picture->shown, picture->isIcon);
    picture->shown = image;
}

bool ShowPicture(HWND control, ControlPicture *picture, ToolPicture state) {
    const Canvas canvas = Compose(control, *picture, state);
    if (!canvas.bitmap)
        return false;
    HANDLE image = canvas.bitmap;
    if (picture->isIcon) {
        image = MakeIcon(canvas);
        FreeCanvas(canvas);
    }
    if (image)
        PutPicture(control, picture, image);
    return image != nullptr;
}

ToolPicture RestingState(HWND control, int controlId) {
    const int tools[] = {0, kPanIconId, kZoomIconId, kHideIconId, kShowIconId};
    if (!IsWindowEnabled(control))
        return kPictureDisabled;
    return gViewTools.tool != kToolNone && controlId == tools[gViewTools.tool] ? kPictureSelected
                                                                               : kPictureNormal;
}

} // namespace

bool LoadDialogPictures(HWND dialog) {
    bool complete = true;
    for (ControlPicture &picture : gPictures)
        if (const HWND control = GetDlgItem(dialog, picture.controlId))
            complete = ShowPicture(control, &picture, RestingState(control, picture.controlId)) && complete;
    return complete;
}

void FreeDialogPictures(HWND dialog) {
    for (ControlPicture &picture : gPictures)
        if (const HWND control = GetDlgItem(dialog, picture.controlId); control && picture.shown)
            PutPicture(control, &picture, nullptr);
}

void ShowDialogPicture(HWND dialog, int controlId, ToolPicture picture) {
    const HWND control = GetDlgItem(dialog, controlId);
    for (ControlPicture &row : gPictures)
        if (control && row.controlId == controlId && ShowPicture(control, &row, picture))
            TellAccessibleState(control);
}
