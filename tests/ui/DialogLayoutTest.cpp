// The main dialog's look, on its real template and pictures: sizes, scales, painting, what is given back.
#include "plugin/DpiScope.h"
#include "plugin/MakerAddresses.h"
#include "resources/ResourceIds.h"
#include "tests/support/WindowPicture.h"
#include "tests/support/SystemObjects.h"
#include "ui/CornerIcon.h"
#include "ui/DialogBackBuffer.h"
#include "ui/DialogLayout.h"
#include "ui/DialogPictures.h"
#include "ui/MakersLogo.h"
#include "ui/ParameterControls.h"
#include "ui/PreviewDisplay.h"
#include "ui/PreviewFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <commctrl.h>

std::string gOpenedAddress;

extern const char kWebAddress[] = "https://www.example.com/";

bool OpenAddress(void *, const char *address) {
    gOpenedAddress = address;
    return true;
}

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

constexpr int kGroupIds[] = {kSettingsPanelId, kSpikesGroupId, kColorGroupId, kSecondaryGroupId,
                             kPreviewFrameId};
constexpr UINT kScales[] = {96, 108, 120, 144, 168, 192};

INT_PTR CALLBACK LookProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        PaintDialogFromBackBuffer(dialog);
        return TRUE;
    case WM_ERASEBKGND:
        SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 1);
        return TRUE;
    case WM_WINDOWPOSCHANGED:
        LayOutDialog(dialog);
        ResizeDialogBackBuffer(dialog);
        return TRUE;
    case WM_GETMINMAXINFO: { // the screen sets no limit
        MINMAXINFO &info = *reinterpret_cast<MINMAXINFO *>(lParam);
        const SIZE least = DialogMinimumSize();
        info.ptMinTrackSize = {least.cx, least.cy};
        info.ptMaxTrackSize = {8000, 8000};
        return TRUE;
    }
    case WM_DPICHANGED:
        OnDialogDpiChanged(dialog, HIWORD(wParam), *reinterpret_cast<const RECT *>(lParam));
        return TRUE;
    case WM_DESTROY:
        FreeDialogPictures(dialog);
        FreeDialogLayout();
        FreeDialogBackBuffer();
        return TRUE;
    }
    return FALSE;
}

bool IsGroup(HWND control) {
    const int id = GetDlgCtrlID(control);
    return std::find(std::begin(kGroupIds), std::end(kGroupIds), id) != std::end(kGroupIds);
}

std::string NameOf(HWND control) {
    char text[64] = "";
    GetWindowTextA(control, text, sizeof text);
    return std::to_string(GetDlgCtrlID(control)) + " " + text;
}

SIZE SizeOf(const RECT &rect) {
    return {rect.right - rect.left, rect.bottom - rect.top};
}

// Takes a control out of the picture; of a group its frame and its caption.
void Blank(Picture *picture, const RECT &rect, bool isGroup, uint32_t color) {
    constexpr LONG frame = 2, caption = 20;
    for (LONG y = rect.top; y < rect.bottom; ++y)
        for (LONG x = rect.left; x < rect.right; ++x) {
            const bool inside = x >= rect.left + frame && x < rect.right - frame && y >= rect.top + caption &&
                                y < rect.bottom - frame;
            if (!isGroup || !inside)
                picture->pixels[static_cast<size_t>(y) * picture->width + x] = color;
        }
}

template <typename Function> Function *SystemFunction(const char *name) {
    const FARPROC address = GetProcAddress(GetModuleHandleA("user32.dll"), name);
    Function *function;
    static_assert(sizeof function == sizeof address);
    memcpy(&function, &address, sizeof function);
    return function;
}

void *ThreadAwareness() {
    return SystemFunction<void * WINAPI()>("GetThreadDpiAwarenessContext")();
}

class DialogLook : public testing::Test {
protected:
    void SetUp() override {
        LoadLibraryA("msftedit.dll");
        dpi = EnterDialogDpi();
        InitCommonControls();
        ASSERT_TRUE(RegisterPreviewDisplayClass());
        liveBefore = LiveDrawingObjects();
        dialog = CreateDialogParamW(GetModuleHandleW(nullptr), kMainDialogName, nullptr, LookProc, 0);
        ASSERT_NE(dialog, nullptr);
        ASSERT_TRUE(RecordDialogLayout(dialog));
        EXPECT_TRUE(LoadDialogPictures(dialog));
        EXPECT_TRUE(CreateDialogBackBuffer(dialog));
        SubclassPreviewFrame(dialog);
        SubclassCornerIcon(dialog);
        SubclassMakersLogo(dialog);
        SetDlgItemTextA(dialog, kHelpId, "Help and Support");
        SetDlgItemTextA(dialog, kZoomTextId, " 1600.00%");
        SetWindowPos(dialog, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    }

    void TearDown() override {
        if (dialog)
            DestroyWindow(dialog);
        EXPECT_EQ(LiveDrawingObjects(), liveBefore);
        UnregisterPreviewDisplayClass();
        LeaveDialogDpi(dpi);
    }

    HWND Item(int id) const { return GetDlgItem(dialog, id); }

    RECT RectOf(HWND control) const {
        RECT rect = {};
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&rect), 2);
        return rect;
    }

    std::vector<HWND> Controls() const {
        std::vector<HWND> controls;
        for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT))
            controls.push_back(control);
        return controls;
    }

    void Resize(SIZE size) const {
        SetWindowPos(dialog, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
    }

    void Show() const {
        ShowWindow(dialog, SW_SHOWNA);
        RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    }

    // No two controls share a pixel, but for groups, which hold theirs whole; none leaves the window.
    void ExpectApart() const {
        RECT client = {}, both = {};
        GetClientRect(dialog, &client);
        const std::vector<HWND> controls = Controls();
        for (size_t i = 0; i < controls.size(); ++i) {
            const RECT a = RectOf(controls[i]);
            EXPECT_TRUE(UnionRect(&both, &a, &client) && EqualRect(&both, &client)) << NameOf(controls[i]);
            EXPECT_FALSE(IsRectEmpty(&a)) << NameOf(controls[i]);
            for (size_t j = i + 1; j < controls.size(); ++j) {
                const RECT b = RectOf(controls[j]);
                if (!IntersectRect(&both, &a, &b))
                    continue;
                const bool held = (IsGroup(controls[i]) && EqualRect(&both, &b)) ||
                                  (IsGroup(controls[j]) && EqualRect(&both, &a));
                EXPECT_TRUE(held) << NameOf(controls[i]) << " and " << NameOf(controls[j]);
            }
        }
    }

    void ExpectTextFits() const {
        const HDC dc = GetDC(dialog);
        for (const HWND control : Controls()) {
            char name[32] = "", text[64] = "";
            GetClassNameA(control, name, sizeof name);
            GetWindowTextA(control, text, sizeof text);
            const LONG style = GetWindowLongA(control, GWL_STYLE);
            const bool isText = strcmp(name, "Static") == 0 && (style & SS_TYPEMASK) <= SS_RIGHT;
            const bool isButton = strcmp(name, "Button") == 0;
            if (!isText && !isButton)
                continue;
            const HFONT font = reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0));
            const HGDIOBJ oldFont = SelectObject(dc, font);
            RECT needed = {};
            DrawTextA(dc, text, -1, &needed, DT_CALCRECT | DT_SINGLELINE);
            SelectObject(dc, oldFont);
            // A push button has its frame beside the text, the others their box or the ends of their frame.
            const LONG type = style & BS_TYPEMASK;
            const LONG frame = type <= BS_DEFPUSHBUTTON ? needed.bottom / 2 : 3 * needed.bottom / 2;
            const LONG beside = isButton ? frame : 0;
            RECT client = {};
            GetClientRect(control, &client);
            EXPECT_LE(needed.right + beside, client.right) << NameOf(control);
            EXPECT_LE(needed.bottom, client.bottom) << NameOf(control);
        }
        ReleaseDC(dialog, dc);
    }

    DpiCookie dpi = nullptr;
    HWND dialog = nullptr;
    int liveBefore = 0;
};

} // namespace

TEST_F(DialogLook, EverythingHasItsPlaceAtEverySizeAndScale) {
    for (const UINT dpi : kScales) {
        SCOPED_TRACE(dpi);
        SetDialogLayoutDpi(dialog, dpi);
        const SIZE least = DialogMinimumSize();
        Resize({1, 1}); // the window refuses
        RECT window = {};
        GetWindowRect(dialog, &window);
        EXPECT_EQ(SizeOf(window).cx, least.cx);
        EXPECT_EQ(SizeOf(window).cy, least.cy);
        const SIZE smallest = SizeOf(RectOf(Item(kPreviewDisplayId)));
        const SIZE field = SizeOf(RectOf(Item(gParameterControls[0].editId)));
        for (const SIZE gain :
             {SIZE{0, 0}, SIZE{1, 0}, SIZE{0, 1}, SIZE{333, 77}, SIZE{4000 - least.cx, 3000 - least.cy}}) {
            SCOPED_TRACE(testing::Message() << "+" << gain.cx << " +" << gain.cy);
            Resize({least.cx + gain.cx, least.cy + gain.cy});
            ExpectApart();
            const SIZE display = SizeOf(RectOf(Item(kPreviewDisplayId)));
            EXPECT_EQ(display.cx, smallest.cx + gain.cx);
            EXPECT_EQ(display.cy, smallest.cy + gain.cy);
            EXPECT_EQ(SizeOf(RectOf(Item(gParameterControls[0].editId))).cx, field.cx);
        }
        ExpectTextFits();
    }
}

TEST_F(DialogLook, AnotherMonitorsScale) {
    RECT window = {};
    GetWindowRect(dialog, &window);
    const SIZE before = SizeOf(window);
    // 125 % and more do not fit this screen of 1024 x 768: the layout takes what does.
    const RECT suggested = {10, 20, 10 + before.cx * 3 / 2, 20 + before.cy * 3 / 2};
    SendMessageA(dialog, WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
    GetWindowRect(dialog, &window);
    EXPECT_EQ(window.left, suggested.left);
    EXPECT_EQ(window.top, suggested.top);
    const SIZE least = DialogMinimumSize();
    RECT work = {};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    EXPECT_LE(least.cx, SizeOf(work).cx);
    EXPECT_LE(least.cy, SizeOf(work).cy);
    EXPECT_LT(DialogLayoutDpi(), 144u);
    ExpectApart();
    ExpectTextFits();
}

// Wherever there is no control there is background, in the groups too, whatever was there before a move.
TEST_F(DialogLook, BackgroundIsPainted) {
    const uint32_t color = GetSysColor(COLOR_3DFACE);
    const uint32_t face = GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color);
    const SIZE least = DialogMinimumSize();
    Show();
    for (const SIZE gain : {SIZE{0, 0}, SIZE{150, 20}, SIZE{0, 0}, SIZE{0, 30}}) {
        Resize({least.cx + gain.cx, least.cy + gain.cy});
        UpdateWindow(dialog);
        for (const HWND control : Controls())
            UpdateWindow(control);
        Picture picture = CaptureClient(dialog);
        for (const HWND control : Controls())
            Blank(&picture, RectOf(control), IsGroup(control), face);
        const auto wrong = std::find_if(picture.pixels.begin(), picture.pixels.end(),
                                        [face](uint32_t pixel) { return (pixel & 0xFFFFFF) != face; });
        const int64_t at = wrong - picture.pixels.begin();
        EXPECT_EQ(wrong, picture.pixels.end())
            << "at " << at % picture.width << ", " << at / picture.width << " with +" << gain.cx;
    }
}

TEST_F(DialogLook, PicturesOfEachState) {
    Show();
    std::set<std::vector<uint32_t>> seen;
    for (const ToolPicture state : {kPictureNormal, kPictureSelected, kPictureDisabled}) {
        ShowDialogPicture(dialog, kPanIconId, state);
        UpdateWindow(Item(kPanIconId));
        seen.insert(CaptureClient(Item(kPanIconId)).pixels);
    }
    EXPECT_EQ(seen.size(), 3u);
    ShowDialogPicture(dialog, IDOK, kPictureSelected); // has none
    // A picture that cannot be made is reported, and nothing that was made for it stays (TearDown counts).
    int creations = 0;
    do
        FailSystemCall(kAnyDrawingCall, ++creations, 0);
    while (!LoadDialogPictures(dialog) && creations < 1000);
    FailSystemCall(kAnyDrawingCall, 0, 0);
    EXPECT_GT(creations, 100); // with that many or more allowed none fails
    EXPECT_TRUE(LoadDialogPictures(dialog));
}

TEST_F(DialogLook, ClicksOnTheLogoAndTheCorner) {
    gOpenedAddress.clear();
    SendMessageA(Item(kMakerLogoId), WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    EXPECT_EQ(gOpenedAddress, kWebAddress);
    SendMessageA(Item(kCornerIconId), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    MSG posted = {};
    EXPECT_TRUE(PeekMessageA(&posted, dialog, WM_NCLBUTTONDOWN, WM_NCLBUTTONDOWN, PM_REMOVE));
    EXPECT_EQ(posted.wParam, static_cast<WPARAM>(HTBOTTOMRIGHT));
    EXPECT_EQ(SendMessageA(Item(kPreviewFrameId), WM_NCHITTEST, 0, 0), HTTRANSPARENT);
}

TEST(DpiScope, HostSeesItsOwnAwareness) {
    const auto set = SystemFunction<void * WINAPI(void *)>("SetThreadDpiAwarenessContext");
    void *const before = set(reinterpret_cast<void *>(intptr_t{-1})); // a host that knows of no scales
    const void *host = ThreadAwareness();
    const DpiCookie outer = EnterDialogDpi();
    const void *own = ThreadAwareness();
    EXPECT_NE(own, host);
    const DpiCookie inner = EnterDialogDpi();
    LeaveDialogDpi(inner);
    EXPECT_EQ(ThreadAwareness(), own);
    LeaveDialogDpi(outer);
    EXPECT_EQ(ThreadAwareness(), host);
    set(before);
}

// Pictures for a person to look at; they lie in the current folder.
TEST_F(DialogLook, Screenshots) {
    for (const UINT dpi : kScales) {
        SetDialogLayoutDpi(dialog, dpi);
        EXPECT_TRUE(LoadDialogPictures(dialog));
        Resize(DialogMinimumSize());
        ShowDialogPicture(dialog, kPanIconId, kPictureSelected);
        Show();
        WriteBmp(CaptureWindow(dialog), "dialog-" + std::to_string(dpi) + "-dpi.bmp");
    }
}
