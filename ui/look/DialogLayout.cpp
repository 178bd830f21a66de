#include "ui/look/DialogLayout.h"

#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterEditPaint.h"

#include <algorithm>
#include <cstring>

#include <commctrl.h>

namespace {

constexpr UINT kDefaultDpi = 96;
constexpr UINT kSmallestDpi = 72, kDpiStep = 2; // of a layout that must shrink to fit its monitor
constexpr int kFontPoints = 8, kPointsPerInch = 72;
constexpr wchar_t kFontFace[] = L"Tahoma";
constexpr SIZE kTemplateUnits = {BX_DIALOG_WIDTH, BX_DIALOG_HEIGHT};
// A dialog unit is a quarter of the font's mean width, and an eighth of its height.
constexpr int kUnitsAcross = 4, kUnitsDown = 8;
constexpr int kMeasuredUnits = 400; // a length that shows the units' fractions
constexpr int kThumbUnits = 11;     // length of a trackbar's thumb
constexpr int kMostControls = 128;
constexpr int kClassNameCapacity = 32;

// Which side of the window each edge of a control keeps its distance from.
enum Side : uint8_t { kNear, kFar }; // left or top, right or bottom

struct Follows {
    int controlId;
    Side left, top, right, bottom;
};

// Whoever is not named belongs to the panel of settings: it moves with the right side and keeps its size.
constexpr Follows kPanelFollows = {0, kFar, kNear, kFar, kNear};

constexpr Follows kFollows[] = {
    // Above the preview, in the left corner.
    {kProductLogoId, kNear, kNear, kNear, kNear},
    {kPanIconId, kNear, kNear, kNear, kNear},
    {kPanLabelId, kNear, kNear, kNear, kNear},
    {kZoomIconId, kNear, kNear, kNear, kNear},
    {kZoomLabelId, kNear, kNear, kNear, kNear},
    {kHideIconId, kNear, kNear, kNear, kNear},
    {kHideLabelId, kNear, kNear, kNear, kNear},
    {kShowIconId, kNear, kNear, kNear, kNear},
    {kShowLabelId, kNear, kNear, kNear, kNear},
    // The preview takes all the room that the window gains.
    {kPreviewFrameId, kNear, kNear, kFar, kFar},
    {kPreviewDisplayId, kNear, kNear, kFar, kFar},
    {kHorizontalBarId, kNear, kFar, kFar, kFar},
    {kVerticalBarId, kFar, kNear, kFar, kFar},
    // Below the preview.
    {kZoomOutButtonId, kNear, kFar, kNear, kFar},
    {kZoomTextId, kNear, kFar, kNear, kFar},
    {kZoomArrowId, kNear, kFar, kNear, kFar},
    {kZoomInButtonId, kNear, kFar, kNear, kFar},
    {kProgressId, kNear, kFar, kFar, kFar},
    {kStateLineId, kNear, kFar, kFar, kFar},
    // The panel's frame goes down as far as the preview does.
    {kSettingsPanelId, kFar, kNear, kFar, kFar},
    // The bottom line.
    {kMakerLogoId, kNear, kFar, kNear, kFar},
    {kUpdateLinkId, kNear, kFar, kNear, kFar},
    {kPreviewOnId, kFar, kFar, kFar, kFar},
    {kCompareId, kFar, kFar, kFar, kFar},
    {kHelpId, kFar, kFar, kFar, kFar},
    {IDOK, kFar, kFar, kFar, kFar},
    {IDCANCEL, kFar, kFar, kFar, kFar},
    {kCornerIconId, kFar, kFar, kFar, kFar},
};

// Pixels of kMeasuredUnits dialog units.
struct Units {
    int across, down;
};

struct Place {
    HWND control;
    RECT rect; // dialog units, in the template's client area
    Follows follows;
    int droppedHeight; // of a combo box with its list, dialog units; 0 for the others
};

struct Layout {
    Place places[kMostControls];
    int count;  // 0: none is recorded
    SIZE frame; // pixels, what the window has around its client area
    UINT dpi;
    Units pixels; // of the font at `dpi`
    HFONT font;
};

Layout gLayout = {};

int ToPixels(int units, int measuredPixels) {
    return MulDiv(units, measuredPixels, kMeasuredUnits);
}

int ToUnits(int pixels, int measuredPixels) {
    return MulDiv(pixels, kMeasuredUnits, measuredPixels);
}

SIZE SizeOf(const RECT &rect) {
    return {rect.right - rect.left, rect.bottom - rect.top};
}

SIZE TemplatePixels(const Units &pixels) {
    return {ToPixels(kTemplateUnits.cx, pixels.across), ToPixels(kTemplateUnits.cy, pixels.down)};
}

HFONT MakeFont(UINT dpi) {
    const int height = -MulDiv(kFontPoints, static_cast<int>(dpi), kPointsPerInch);
    return CreateFontW(height, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                       CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, kFontFace);
}

// As the system works out the units of a template from its font. Zero when there is no memory.
Units MeasureFont(HFONT font) {
    constexpr wchar_t letters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int letterCount = 52;
    TEXTMETRICW metrics = {};
    SIZE extent = {};
    if (const HDC dc = CreateCompatibleDC(nullptr)) {
        const HGDIOBJ oldFont = SelectObject(dc, font);
        GetTextMetricsW(dc, &metrics);
        GetTextExtentPoint32W(dc, letters, letterCount, &extent);
        SelectObject(dc, oldFont);
        DeleteDC(dc);
    }
    const int meanWidth = (extent.cx / (letterCount / 2) + 1) / 2;
    return {meanWidth * kMeasuredUnits / kUnitsAcross, metrics.tmHeight * kMeasuredUnits / kUnitsDown};
}

UINT MonitorDpi(HWND dialog) {
    using GetDpiFunction = UINT(WINAPI *)(HWND);
    const FARPROC address = GetProcAddress(GetModuleHandleA("user32.dll"), "GetDpiForWindow");
    GetDpiFunction getDpi;
    static_assert(sizeof getDpi == sizeof address);
    memcpy(&getDpi, &address, sizeof getDpi);
    if (const UINT dpi = getDpi ? getDpi(dialog) : 0)
        return dpi;
    const HDC dc = GetDC(dialog);
    const int dpi = dc ? GetDeviceCaps(dc, LOGPIXELSY) : 0;
    if (dc)
        ReleaseDC(dialog, dc);
    return dpi > 0 ? static_cast<UINT>(dpi) : kDefaultDpi;
}

bool FitsWorkArea(HWND dialog, UINT dpi) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    if (!GetMonitorInfoA(MonitorFromWindow(dialog, MONITOR_DEFAULTTONEAREST), &monitor))
        return true;
    const HFONT font = MakeFont(dpi);
    const SIZE client = TemplatePixels(font ? MeasureFont(font) : Units{});
    if (font)
        DeleteObject(font);
    const SIZE work = SizeOf(monitor.rcWork);
    return client.cx + gLayout.frame.cx <= work.cx && client.cy + gLayout.frame.cy <= work.cy;
}

// A dialog whose buttons lie below the screen could not be used, so it is drawn smaller instead.
UINT FittingDpi(HWND dialog, UINT dpi) {
    while (dpi > kSmallestDpi && !FitsWorkArea(dialog, dpi))
        dpi -= kDpiStep;
    return dpi;
}

bool HasClass(HWND control, const char *name) {
    char found[kClassNameCapacity] = "";
    GetClassNameA(control, found, sizeof found);
    return lstrcmpiA(found, name) == 0;
}

Follows FollowsOf(int controlId) {
    for (const Follows &row : kFollows)
        if (row.controlId == controlId)
            return row;
    return kPanelFollows;
}

int DroppedHeight(HWND control) {
    RECT dropped = {};
    if (!HasClass(control, "ComboBox") ||
        !SendMessageA(control, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&dropped)))
        return 0;
    return dropped.bottom - dropped.top;
}

bool RecordPlace(HWND dialog, HWND control, const Units &pixels) {
    if (gLayout.count == kMostControls)
        return false;
    RECT rect = {};
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
    const RECT units = {ToUnits(rect.left, pixels.across), ToUnits(rect.top, pixels.down),
                        ToUnits(rect.right, pixels.across), ToUnits(rect.bottom, pixels.down)};
    gLayout.places[gLayout.count++] = {control, units, FollowsOf(GetDlgCtrlID(control)),
                                       ToUnits(DroppedHeight(control), pixels.down)};
    return true;
}

// The template's own size is not asked of the window: the system cuts down one that is larger than the
// screen.
bool RecordTemplate(HWND dialog) {
    RECT measured = {0, 0, kMeasuredUnits, kMeasuredUnits}, client = {}, window = {};
    if (!MapDialogRect(dialog, &measured) || measured.right <= 0 || measured.bottom <= 0)
        return false;
    const Units pixels = {measured.right, measured.bottom};
    GetClientRect(dialog, &client);
    GetWindowRect(dialog, &window);
    gLayout.frame = {SizeOf(window).cx - client.right, SizeOf(window).cy - client.bottom};
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT))
        if (!RecordPlace(dialog, control, pixels))
            return false;
    return true;
}

// What a control draws by itself, of sizes that it does not take from its window.
void ScaleContents(HWND control) {
    SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(gLayout.font), FALSE);
    if (HasClass(control, TRACKBAR_CLASSA))
        SendMessageA(control, TBM_SETTHUMBLENGTH,
                     static_cast<WPARAM>(ToPixels(kThumbUnits, gLayout.pixels.down)), 0);
}

// The old font is deleted when no control has it any more.
bool UseDpi(UINT dpi) {
    const HFONT font = MakeFont(dpi);
    const Units pixels = font ? MeasureFont(font) : Units{};
    if (pixels.across <= 0 || pixels.down <= 0) {
        if (font)
            DeleteObject(font);
        return false;
    }
    const HFONT oldFont = gLayout.font;
    gLayout.font = font;
    gLayout.dpi = dpi;
    gLayout.pixels = pixels;
    for (int i = 0; i < gLayout.count; ++i)
        ScaleContents(gLayout.places[i].control);
    if (oldFont)
        DeleteObject(oldFont);
    return true;
}

// The far edges move by what the window has more than the template.
RECT PlaceInPixels(const Place &place, SIZE gained) {
    const Follows &follows = place.follows;
    const auto across = [&](LONG units, Side side) {
        return ToPixels(units, gLayout.pixels.across) + (side == kFar ? gained.cx : 0);
    };
    const auto down = [&](LONG units, Side side) {
        return ToPixels(units, gLayout.pixels.down) + (side == kFar ? gained.cy : 0);
    };
    return {across(place.rect.left, follows.left), down(place.rect.top, follows.top),
            across(place.rect.right, follows.right), down(place.rect.bottom, follows.bottom)};
}

// Bits are not copied: groups lie over their controls, and the copy of one would hold strips of the other.
void MovePlaces(SIZE gained) {
    constexpr UINT flags = SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS | SWP_NOREDRAW;
    HDWP moves = BeginDeferWindowPos(gLayout.count);
    for (int i = 0; i < gLayout.count; ++i) {
        const Place &place = gLayout.places[i];
        const RECT rect = PlaceInPixels(place, gained);
        const int height =
            place.droppedHeight ? ToPixels(place.droppedHeight, gLayout.pixels.down) : rect.bottom - rect.top;
        const int width = rect.right - rect.left;
        if (moves)
            moves = DeferWindowPos(moves, place.control, nullptr, rect.left, rect.top, width, height, flags);
        else
            SetWindowPos(place.control, nullptr, rect.left, rect.top, width, height, flags);
    }
    if (moves)
        EndDeferWindowPos(moves);
}

void ResizeWindow(HWND dialog, SIZE size) {
    SetWindowPos(dialog, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

bool RecordDialogLayout(HWND dialog) {
    FreeDialogLayout();
    if (!RecordTemplate(dialog) || !UseDpi(FittingDpi(dialog, MonitorDpi(dialog)))) {
        FreeDialogLayout();
        return false;
    }
    ResizeWindow(dialog, DialogMinimumSize());
    LayOutDialog(dialog);
    return true;
}

void LayOutDialog(HWND dialog) {
    if (!gLayout.count || IsIconic(dialog))
        return;
    RECT client = {};
    GetClientRect(dialog, &client);
    const SIZE least = TemplatePixels(gLayout.pixels);
    MovePlaces({std::max(0L, client.right - least.cx), std::max(0L, client.bottom - least.cy)});
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

void FreeDialogLayout() {
    if (gLayout.font)
        DeleteObject(gLayout.font);
    gLayout = {};
}

bool OnDialogDpiChanged(HWND dialog, UINT dpi, const RECT &suggested) {
    if (!gLayout.count)
        return false;
    RECT client = {}, window = {};
    GetClientRect(dialog, &client);
    GetWindowRect(dialog, &window);
    gLayout.frame = {SizeOf(window).cx - client.right, SizeOf(window).cy - client.bottom};
    const UINT fitting = FittingDpi(dialog, dpi);
    SetDialogLayoutDpi(dialog, fitting);
    const SIZE least = DialogMinimumSize(), wanted = SizeOf(suggested);
    SetWindowPos(dialog, nullptr, suggested.left, suggested.top, std::max(least.cx, wanted.cx),
                 std::max(least.cy, wanted.cy), SWP_NOZORDER | SWP_NOACTIVATE);
    return true;
}

SIZE DialogMinimumSize() {
    if (!gLayout.count)
        return {};
    const SIZE client = TemplatePixels(gLayout.pixels);
    return {client.cx + gLayout.frame.cx, client.cy + gLayout.frame.cy};
}

UINT DialogLayoutDpi() {
    return gLayout.dpi ? gLayout.dpi : kDefaultDpi;
}

void SetDialogLayoutDpi(HWND dialog, UINT dpi) {
    if (!gLayout.count || !UseDpi(dpi))
        return;
    LayOutDialog(dialog);
    RenewParameterFont();
}
