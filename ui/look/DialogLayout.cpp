#include "ui/look/DialogLayout.h"

#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterEditPaint.h"
#include "ui/look/PanelLayout.h"
#include "ui/window/SystemFunction.h"

#include <algorithm>
#include <climits>

#include <commctrl.h>

namespace {

constexpr UINT kDefaultDpi = 96;
constexpr UINT kSmallestDpi = 72, kDpiStep = 2; // of a layout that must shrink to fit its monitor
constexpr int kFontPoints = 8, kPointsPerInch = 72;
constexpr wchar_t kFontFace[] = L"Tahoma";
constexpr SIZE kTemplateUnits = {BX_DIALOG_WIDTH, BX_DIALOG_HEIGHT};
// A dialog unit is a quarter of the font's mean width, and an eighth of its height.
constexpr int kUnitsAcross = 4, kUnitsDown = 8;
constexpr int kThumbUnits = 11; // length of a trackbar's thumb
constexpr int kMostControls = 128;
constexpr int kClassNameCapacity = 32;

struct Place {
    HWND control;
    RECT rect; // dialog units, in the template's client area
    Follows follows;
    int droppedHeight; // of a combo box with its list, dialog units; 0 for the others
};

struct Layout {
    Place places[kMostControls];
    int count;     // 0: none is recorded
    SIZE frame;    // pixels, what the window has around its client area
    int tightened; // pixels that the least height has less than the template's
    UINT dpi;
    Units pixels; // of the font at `dpi`
    HFONT font;
};

Layout gLayout = {};

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
    const auto getDpi = SystemFunction<GetDpiFunction>(GetModuleHandleA("user32.dll"), "GetDpiForWindow");
    if (const UINT dpi = getDpi ? getDpi(dialog) : 0)
        return dpi;
    const HDC dc = GetDC(dialog);
    const int dpi = dc ? GetDeviceCaps(dc, LOGPIXELSY) : 0;
    if (dc)
        ReleaseDC(dialog, dc);
    return dpi > 0 ? static_cast<UINT>(dpi) : kDefaultDpi;
}

SIZE WorkArea(HWND dialog) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    const bool known = GetMonitorInfoA(MonitorFromWindow(dialog, MONITOR_DEFAULTTONEAREST), &monitor);
    return known ? SizeOf(monitor.rcWork) : SIZE{LONG_MAX, LONG_MAX};
}

// The window with the template's client area.
SIZE TemplateWindow(const Units &pixels) {
    const SIZE client = TemplatePixels(pixels);
    return {client.cx + gLayout.frame.cx, client.cy + gLayout.frame.cy};
}

bool FitsWorkArea(const SIZE &work, UINT dpi) {
    const HFONT font = MakeFont(dpi);
    const Units pixels = font ? MeasureFont(font) : Units{};
    if (font)
        DeleteObject(font);
    const SIZE window = TemplateWindow(pixels);
    return window.cx <= work.cx && window.cy - SparePixels(pixels) <= work.cy;
}

// A dialog whose buttons lie below the screen could not be used. Where its lines moved together do not help,
// it is drawn smaller.
UINT FittingDpi(HWND dialog, UINT dpi) {
    const SIZE work = WorkArea(dialog);
    while (dpi > kSmallestDpi && !FitsWorkArea(work, dpi))
        dpi -= kDpiStep;
    return dpi;
}

void TightenToFit(HWND dialog) {
    const int missing =
        static_cast<int>(TemplateWindow(gLayout.pixels).cy - std::min(WorkArea(dialog).cy, LONG{SHRT_MAX}));
    gLayout.tightened = std::clamp(missing, 0, SparePixels(gLayout.pixels));
}

bool HasClass(HWND control, const char *name) {
    char found[kClassNameCapacity] = "";
    GetClassNameA(control, found, sizeof found);
    return lstrcmpiA(found, name) == 0;
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

void MeasureFrame(HWND dialog) {
    RECT client = {}, window = {};
    GetClientRect(dialog, &client);
    GetWindowRect(dialog, &window);
    gLayout.frame = {SizeOf(window).cx - client.right, SizeOf(window).cy - client.bottom};
}

// On a monitor of another scale the system would move and size controls by itself, in units of its own.
void KeepSystemsHandsOff(HWND dialog) {
    using Function = BOOL(WINAPI *)(HWND, int, int);
    constexpr int allOfDialog = 1, allOfControl = 3; // font and place
    const HMODULE library = GetModuleHandleA("user32.dll");
    if (const auto keep = SystemFunction<Function>(library, "SetDialogDpiChangeBehavior"))
        keep(dialog, allOfDialog, allOfDialog);
    const auto keep = SystemFunction<Function>(library, "SetDialogControlDpiChangeBehavior");
    for (int i = 0; keep && i < gLayout.count; ++i)
        keep(gLayout.places[i].control, allOfControl, allOfControl);
}

// The template's own size is not asked of the window: the system cuts down one that is larger than the
// screen.
bool RecordTemplate(HWND dialog) {
    RECT measured = {0, 0, kMeasuredUnits, kMeasuredUnits};
    if (!MapDialogRect(dialog, &measured) || IsRectEmpty(&measured))
        return false;
    const Units pixels = {measured.right, measured.bottom};
    MeasureFrame(dialog);
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

// Bits are not copied: groups lie over their controls, and the copy of one would hold strips of the other.
void MovePlaces(const Gains &gains) {
    constexpr UINT flags = SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS | SWP_NOREDRAW;
    HDWP moves = BeginDeferWindowPos(gLayout.count);
    for (int i = 0; i < gLayout.count; ++i) {
        const Place &place = gLayout.places[i];
        const RECT rect = PlaceInPixels(place.rect, place.follows, gains, gLayout.pixels);
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
    KeepSystemsHandsOff(dialog);
    TightenToFit(dialog);
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
    const SIZE gained = {std::max(0L, client.right - least.cx), client.bottom - least.cy};
    MovePlaces(ShareGains({gained.cx, std::max(LONG{-gLayout.tightened}, gained.cy)}, gLayout.pixels));
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
    MeasureFrame(dialog);
    SetDialogLayoutDpi(dialog, FittingDpi(dialog, dpi));
    // The frame has the new scale only after the move.
    for (int i = 0; i < 2; ++i) {
        const SIZE least = DialogMinimumSize(), wanted = SizeOf(suggested);
        SetWindowPos(dialog, nullptr, suggested.left, suggested.top, std::max(least.cx, wanted.cx),
                     std::max(least.cy, wanted.cy), SWP_NOZORDER | SWP_NOACTIVATE);
        MeasureFrame(dialog);
        TightenToFit(dialog);
    }
    LayOutDialog(dialog); // a window of the same size hears of no change
    return true;
}

SIZE DialogMinimumSize() {
    if (!gLayout.count)
        return {};
    const SIZE window = TemplateWindow(gLayout.pixels);
    return {window.cx, window.cy - gLayout.tightened};
}

UINT DialogLayoutDpi() {
    return gLayout.dpi ? gLayout.dpi : kDefaultDpi;
}

void SetDialogLayoutDpi(HWND dialog, UINT dpi) {
    if (!gLayout.count || !UseDpi(dpi))
        return;
    TightenToFit(dialog);
    LayOutDialog(dialog);
    RenewParameterFont();
}
