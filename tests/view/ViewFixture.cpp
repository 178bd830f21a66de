#include "tests/view/ViewFixture.h"

#include "engine/table/HideEffects.h"
#include "resources/DialogControlIds.h"
#include "ui/display/OriginalView.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/window/DialogMessages.h"

#include <cmath>

FakePreview gFakePreview;
ZoomMenu gZoomMenu;

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

ImageBuffer gImage;
LightSourceTable gTable;

struct ControlPlace {
    const char *className;
    DWORD style;
    int id, x, y, width, height;
};

constexpr int kButtonId = 2;
constexpr ControlPlace kControls[] = {
    {"STATIC", SS_NOTIFY, kPanIconId, 0, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomIconId, 20, 0, 20, 20},
    {"STATIC", SS_NOTIFY | WS_DISABLED, kHideIconId, 40, 0, 20, 20},
    {"STATIC", SS_NOTIFY | WS_DISABLED, kShowIconId, 60, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomOutButtonId, 80, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomInButtonId, 100, 0, 20, 20},
    {"STATIC", SS_NOTIFY, kZoomTextId, 120, 0, 80, 20},
    {"SCROLLBAR", SBS_HORZ, kHorizontalBarId, 200, 0, 200, 16},
    {"SCROLLBAR", SBS_VERT, kVerticalBarId, 480, 30, 16, 200},
    {"BUTTON", WS_TABSTOP, kButtonId, 420, 0, 60, 20},
    {"ProxyDisplay", WS_TABSTOP, kPreviewDisplayId, 20, 30, kDisplayWidth, kDisplayHeight},
};

BOOL WINAPI AskMenu(HMENU menu, UINT flags, int x, int y, int, HWND owner, const RECT *) {
    gZoomMenu = {gZoomMenu.command, x, y, flags, owner, {}, 0};
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        char label[100] = "";
        GetMenuStringA(menu, static_cast<UINT>(i), label, sizeof label, MF_BYPOSITION);
        const UINT id = GetMenuItemID(menu, i);
        gZoomMenu.separators += id == 0;
        if (id != 0)
            gZoomMenu.items[static_cast<int>(id)] = label;
    }
    return gZoomMenu.command;
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" decltype(&AskMenu) __imp_TrackPopupMenu;
decltype(&AskMenu) __imp_TrackPopupMenu = AskMenu;

void ViewTest::SetUp() {
    gFakePreview = {};
    gZoomMenu = {};
    SetViewTool(kToolZoom);
}

void ViewTest::TearDown() {
    FailSystemCall(kAnyDrawingCall, 0, 0);
    Close();
    EXPECT_EQ(LiveDrawingObjects(), 0);
    EXPECT_EQ(LiveObjects().count("LoadMenuA"), 0u);
    EXPECT_TRUE(TakeReports().empty());
}

bool ViewTest::Open(const IntRect &image) {
    const auto proc = [](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> INT_PTR {
        previewRequests += message == kMsgRequestPreview;
        if (message == kMsgRequestPreview)
            lastRequest = CurrentPreviewGeometry();
        if (message == kMsgTableReady)
            OnPreviewTableReady();
        else if (message == WM_HSCROLL || message == WM_VSCROLL)
            return OnPreviewScroll(reinterpret_cast<HWND>(lParam), LOWORD(wParam));
        else if (message == WM_ACTIVATEAPP && !wParam)
            OnPreviewDeactivated();
        return message == kMsgRequestPreview || message == kMsgTableReady;
    };
    const auto showPicture = [](HWND, int controlId, ToolPicture picture) { pictures[controlId] = picture; };
    struct { // a template without controls: header, no menu, the dialog class, no caption
        DLGTEMPLATE header;
        WORD menu, windowClass, caption;
    } description = {};
    const HINSTANCE program = GetModuleHandleA(nullptr);
    EXPECT_TRUE(RegisterPreviewDisplayClass());
    gImage = {};
    gImage.bounds = image;
    gTable = {};
    gLightSourceTable = &gTable;
    pictures.clear();
    HoldKeys(false, false);
    description.header.style = WS_POPUP | WS_CAPTION | WS_CLIPCHILDREN;
    window = CreateDialogIndirectParamA(program, &description.header, nullptr, proc, 0);
    SetWindowPos(window, nullptr, 10, 10, 620, 500, SWP_NOZORDER);
    for (const ControlPlace &c : kControls)
        CreateWindowExA(0, c.className, "", WS_CHILD | WS_VISIBLE | c.style, c.x, c.y, c.width, c.height,
                        window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(c.id)), program, nullptr);
    display = GetDlgItem(window, kPreviewDisplayId);
    button = GetDlgItem(window, kButtonId);
    const bool attached = AttachPreviewDisplay(window, {&gImage, nullptr, 0, window}, showPicture);
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    PumpMessages();
    UpdateWindow(display);
    PumpMessages();
    previewRequests = 0;
    return attached;
}

void ViewTest::Close() {
    HoldKeys(false, false);
    if (window)
        DestroyWindow(window);
    PumpMessages();
    window = display = nullptr;
    gLightSourceTable = nullptr;
}

void ViewTest::SetLightSources(std::vector<LightSource> *sources) {
    gTable.records = sources ? sources->data() : nullptr;
    gTable.Count = sources ? static_cast<uint32_t>(sources->size()) : 0;
    SendMessageA(window, kMsgTableReady, 0, 0);
    PumpMessages();
}

int ViewTest::WrongPixels(const Picture &picture) {
    const PreviewGeometry view = View();
    int wrong = 0;
    for (int y = view.display.top; y < view.display.bottom; ++y)
        for (int x = view.display.left; x < view.display.right; ++x)
            wrong += PixelAt(picture, x, y) != PatternPixel(view, x, y);
    return wrong;
}

uint32_t PatternPixel(const PreviewGeometry &view, int32_t x, int32_t y) {
    if (!RectContains(ImageInClient(view), x, y))
        return kSurroundPixel;
    const IntRect visible = VisibleRect(view);
    const auto column =
        static_cast<int32_t>(std::floor((visible.left + x - view.display.left + 0.5) * 100.0 / view.zoom));
    const auto row =
        static_cast<int32_t>(std::floor((visible.top + y - view.display.top + 0.5) * 100.0 / view.zoom));
    return static_cast<uint32_t>((column & 255) << 16 | (row & 255) << 8 |
                                 (((column >> 8) * 16 + (row >> 8) * 64 + 7) & 255));
}

bool PaintPreviewImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    ++gFakePreview.paintings;
    if (gFakePreview.paintFails)
        return false;
    const IntRect r = IntersectRects(IntersectRects(part, geometry.display), ImageInClient(geometry));
    if (IsEmptyRect(r))
        return true;
    const int32_t width = r.right - r.left, height = r.bottom - r.top;
    std::vector<uint32_t> pixels;
    for (int32_t y = r.top; y < r.bottom; ++y)
        for (int32_t x = r.left; x < r.right; ++x)
            pixels.push_back(PatternPixel(geometry, x, y));
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    SetDIBitsToDevice(dc, r.left, r.top, static_cast<DWORD>(width), static_cast<DWORD>(height), 0, 0, 0,
                      static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    return true;
}

bool PaintOriginalImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    return PaintPreviewImage(dc, part, geometry);
}

bool StartProxyUpdateTask(HWND, const PreviewSource &) {
    ++gFakePreview.starts;
    return !gFakePreview.startFails;
}

void StopProxyUpdateTask() {
    ++gFakePreview.stops;
}

int32_t ChangeEffectAt(int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    gFakePreview.changeModes.push_back(mode);
    return SetLightSourceStateAt(x, y, zoomPercent, mode);
}

int32_t ChangeEffectsInRect(const IntRect &rect, int32_t mode) {
    gFakePreview.changeModes.push_back(mode);
    return SetLightSourceStatesInRect(rect, mode);
}
