// The main dialog's look, on its real template and pictures: sizes, scales, painting, what is given back.
#include "resources/DialogControlIds.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/WindowPicture.h"
#include "ui/about/MakersLogo.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/fields/ParameterControls.h"
#include "ui/fields/ParameterTable.h"
#include "ui/look/CornerIcon.h"
#include "ui/look/DialogBackBuffer.h"
#include "ui/look/DialogLayout.h"
#include "ui/look/DialogPictures.h"
#include "ui/paint/PaintedControls.h"
#include "ui/look/PreviewFrame.h"
#include "ui/window/DpiScope.h"
#include "ui/window/Palette.h"
#include "web/MakerAddresses.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <commctrl.h>

extern const char kWebAddress[] = "https://www.example.com/";

bool OpenAddress(void *, const char *) {
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
    case WM_CTLCOLORSTATIC:
        return reinterpret_cast<INT_PTR>(OnControlColor(message, reinterpret_cast<HDC>(wParam)));
    case WM_NOTIFY: {
        LRESULT result = 0;
        const bool handled = OnControlNotify(*reinterpret_cast<const NMHDR *>(lParam), &result);
        SetWindowLongPtrA(dialog, DWLP_MSGRESULT, result);
        return handled;
    }
    case WM_DPICHANGED:
        return OnDialogDpiChanged(dialog, HIWORD(wParam), *reinterpret_cast<const RECT *>(lParam)) &&
               LoadDialogPictures(dialog);
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
    return std::to_string(GetDlgCtrlID(control)) + " " + TextOf(control);
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

class DialogLook : public testing::Test {
protected:
    // The template with its font that many times larger, as the system opens it at that scale.
    static HWND CreateScaled(int scale) {
        constexpr size_t fontPointsAt = 60; // behind the header, no menu, the standard class and the caption
        const HRSRC found = FindResourceW(nullptr, kMainDialogName, reinterpret_cast<LPCWSTR>(RT_DIALOG));
        const char *bytes = static_cast<const char *>(LockResource(LoadResource(nullptr, found)));
        std::vector<char> description(bytes, bytes + SizeofResource(nullptr, found));
        WORD points = 0;
        memcpy(&points, description.data() + fontPointsAt, sizeof points);
        EXPECT_EQ(points, 8);
        points = static_cast<WORD>(points * scale);
        memcpy(description.data() + fontPointsAt, &points, sizeof points);
        return CreateDialogIndirectParamW(GetModuleHandleW(nullptr),
                                          reinterpret_cast<const DLGTEMPLATE *>(description.data()), nullptr,
                                          LookProc, 0);
    }

    void SetUp() override { Open(1); }

    void Open(int scale) {
        LoadLibraryA("msftedit.dll");
        dpi = EnterDialogDpi();
        InitCommonControls();
        ASSERT_TRUE(RegisterPreviewDisplayClass());
        liveBefore = LiveDrawingObjects();
        dialog = CreateScaled(scale);
        ASSERT_NE(dialog, nullptr);
        opened = ClientOf(dialog);
        ASSERT_TRUE(RecordDialogLayout(dialog));
        EXPECT_TRUE(LoadDialogPictures(dialog));
        EXPECT_TRUE(CreateDialogBackBuffer(dialog));
        SubclassPreviewFrame(dialog);
        SubclassCornerIcon(dialog);
        DressControls(dialog);
        SubclassMakersLogo(dialog);
        SetDlgItemTextA(dialog, kHelpId, "Help and Support");
        SetDlgItemTextA(dialog, kZoomTextId, " 1600.00%");
        SetWindowPos(dialog, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    }

    void TearDown() override { Close(); }

    void Close() {
        if (dialog)
            DestroyWindow(std::exchange(dialog, nullptr));
        EXPECT_EQ(LiveDrawingObjects(), liveBefore);
        UnregisterPreviewDisplayClass();
        LeaveDialogDpi(dpi);
    }

    HWND Item(int id) const { return GetDlgItem(dialog, id); }

    RECT RectOf(HWND control) const { return RectIn(dialog, control); }

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
        const RECT client = ClientOf(dialog);
        RECT both = {};
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
            char name[32] = "";
            GetClassNameA(control, name, sizeof name);
            const LONG style = GetWindowLongA(control, GWL_STYLE);
            const bool isText = strcmp(name, "Static") == 0 && (style & SS_TYPEMASK) <= SS_RIGHT;
            const bool isButton = strcmp(name, "Button") == 0;
            if (!isText && !isButton)
                continue;
            const HFONT font = reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0));
            const HGDIOBJ oldFont = SelectObject(dc, font);
            RECT needed = {};
            DrawTextA(dc, TextOf(control).c_str(), -1, &needed, DT_CALCRECT | DT_SINGLELINE);
            SelectObject(dc, oldFont);
            // A push button has its frame beside the text, the others their box or the ends of their frame.
            const LONG type = style & BS_TYPEMASK;
            const LONG frame = type <= BS_DEFPUSHBUTTON ? needed.bottom / 2 : 3 * needed.bottom / 2;
            const LONG beside = isButton ? frame : 0;
            const RECT client = ClientOf(control);
            EXPECT_LE(needed.right + beside, client.right) << NameOf(control);
            EXPECT_LE(needed.bottom, client.bottom) << NameOf(control);
        }
        ReleaseDC(dialog, dc);
    }

    DpiCookie dpi = nullptr;
    HWND dialog = nullptr;
    RECT opened = {}; // client area that the system gave the dialog
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
        const LONG bar = SizeOf(RectOf(Item(gParameterControls[0].trackbarId))).cx;
        const LONG field = SizeOf(RectOf(Item(gParameterControls[0].editId))).cx;
        for (const SIZE gain :
             {SIZE{0, 0}, SIZE{1, 0}, SIZE{0, 1}, SIZE{333, 77}, SIZE{4000 - least.cx, 3000 - least.cy}}) {
            SCOPED_TRACE(testing::Message() << "+" << gain.cx << " +" << gain.cy);
            Resize({least.cx + gain.cx, least.cy + gain.cy});
            ExpectApart();
            const SIZE display = SizeOf(RectOf(Item(kPreviewDisplayId)));
            // The panel grows with the window as far as is comfortable, its lines too; the preview takes the
            // rest.
            const LONG widerBar = SizeOf(RectOf(Item(gParameterControls[0].trackbarId))).cx - bar;
            const LONG widerField = SizeOf(RectOf(Item(gParameterControls[0].editId))).cx - field;
            EXPECT_EQ(display.cx + widerBar + widerField, smallest.cx + gain.cx);
            EXPECT_EQ(display.cy, smallest.cy + gain.cy);
            EXPECT_EQ(widerBar > 20 && widerField > 5, gain.cx > 100) << widerBar << " " << widerField;
            EXPECT_LT(widerBar, 2 * bar);
        }
        ExpectTextFits();
    }
}

// What does not fit this screen of 1024 x 768 is laid out at the scale that does.
TEST_F(DialogLook, LargeScalesShrinkToTheScreen) {
    RECT work = {}, window = {};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    const auto ExpectWhole = [&] {
        GetWindowRect(dialog, &window);
        const SIZE least = DialogMinimumSize();
        EXPECT_LE(least.cx, SizeOf(work).cx);
        EXPECT_LE(least.cy, SizeOf(work).cy);
        EXPECT_GE(SizeOf(window).cx, least.cx);
        EXPECT_GE(SizeOf(window).cy, least.cy);
        ExpectApart();
        ExpectTextFits();
    };
    GetWindowRect(dialog, &window);
    const RECT suggested = {10, 20, 10 + SizeOf(window).cx * 3 / 2, 20 + SizeOf(window).cy * 3 / 2};
    SendMessageA(dialog, WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
    ExpectWhole();
    EXPECT_EQ(window.left, suggested.left);
    EXPECT_EQ(window.top, suggested.top);
    EXPECT_LT(DialogLayoutDpi(), 144u);
    // A little too high: the lines of the panel move together, the letters keep their size.
    SendMessageA(dialog, WM_DPICHANGED, MAKEWPARAM(108, 108), reinterpret_cast<LPARAM>(&suggested));
    ExpectWhole();
    EXPECT_EQ(DialogLayoutDpi(), 108u);
    // The system cuts down a dialog that is larger than the screen before anybody is asked.
    const RECT whole = opened;
    Close();
    Open(2);
    EXPECT_LT(opened.bottom, 2 * whole.bottom);
    EXPECT_LE(DialogLayoutDpi(), 108u);
    EXPECT_GE(DialogLayoutDpi(), 96u);
    ExpectWhole();
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

// Letters, their underline and the gap in a group's frame have one measure, so that none stands off its text.
TEST_F(DialogLook, UnderlinesAndFramesFollowTheirText) {
    const HWND name = GetWindow(Item(BX_ID_SOFT_FLARE_EDIT), GW_HWNDPREV), group = Item(kSpikesGroupId);
    ASSERT_EQ(NameOf(name), "-1 Soft Flare Intensit&y");
    const auto Seen =
        [this](HWND control) { // in the corner of the screen, which may be smaller than the window
            const RECT place = RectOf(control);
            SetWindowPos(dialog, nullptr, -static_cast<int>(place.left), -static_cast<int>(place.top), 0, 0,
                         SWP_NOSIZE | SWP_NOZORDER);
            Show();
            return CaptureClient(control);
        };
    for (const UINT scale : {96, 120, 144, 192}) {
        SetDialogLayoutDpi(dialog, scale);
        Resize(DialogMinimumSize());
        const Picture text = Seen(name), frame = Seen(group);
        int inked[2] = {}; // columns that ink reaches: with the underline and, in the upper half, without
        for (int i = 0; i < text.width * text.height; ++i)
            if (text.pixels[i] != text.pixels.back())
                for (int half = 0; half <= (i < text.width * text.height / 2 ? 1 : 0); ++half)
                    inked[half] = std::max(inked[half], i % text.width);
        EXPECT_NEAR(inked[0], inked[1], static_cast<int>(scale) / 48) << scale;
        // Ends of the gap in the frame's line and of the caption in it.
        const uint32_t line = frame.pixels.back();
        int lineAt = 0, gapEnd = frame.width - 1, inkEnd = 0;
        while (frame.pixels[static_cast<size_t>(lineAt + 1) * frame.width - 1] != line)
            ++lineAt;
        while (frame.pixels[static_cast<size_t>(lineAt) * frame.width + gapEnd] == line)
            --gapEnd;
        for (int i = 0; i < 2 * lineAt * frame.width; ++i)
            if (i % frame.width <= gapEnd && (frame.pixels[i] & 0xFF) < 0x60)
                inkEnd = std::max(inkEnd, i % frame.width);
        EXPECT_NEAR(gapEnd - inkEnd, lineAt / 2, lineAt / 2) << scale;
    }
}

std::vector<HWND> gKept;

BOOL WINAPI KeepHandsOff(HWND window, int mask, int values) {
    EXPECT_NE(mask & values, 0);
    gKept.push_back(window);
    return TRUE;
}

decltype(&GetProcAddress) gFindFunction;

FARPROC WINAPI FindFunction(HMODULE library, LPCSTR name) {
    return strstr(name, "DpiChangeBehavior")
               ? reinterpret_cast<FARPROC>(reinterpret_cast<void *>(KeepHandsOff))
               : gFindFunction(library, name);
}

// At another scale it is laid out here, and the system is asked to leave every window as it is.
TEST_F(DialogLook, TheSystemKeepsItsHandsOff) {
    Close();
    gFindFunction = GetProcAddress;
    host::ImportHooks hooks;
    host::ReplaceImport(GetModuleHandleA(nullptr), "GetProcAddress", FindFunction, &hooks);
    Open(1);
    host::RestoreImports(&hooks);
    EXPECT_EQ(std::count(gKept.begin(), gKept.end(), dialog), 1);
    for (const HWND control : Controls())
        EXPECT_EQ(std::count(gKept.begin(), gKept.end(), control), 1) << NameOf(control);
}

bool gHasContrast;

LSTATUS WINAPI AppsAreDark(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID value, LPDWORD) {
    *static_cast<DWORD *>(value) = 0;
    return ERROR_SUCCESS;
}

BOOL WINAPI TellContrast(UINT action, UINT size, PVOID value, UINT flags) {
    if (action != SPI_GETHIGHCONTRAST)
        return SystemParametersInfoA(action, size, value, flags);
    static_cast<HIGHCONTRASTW *>(value)->dwFlags = gHasContrast ? HCF_HIGHCONTRASTON : 0;
    return TRUE;
}

TEST_F(DialogLook, DarkAppsHaveItDarkUnlessTheContrastIsHigh) {
    const auto LightParts = [this] { // of a thousand, beside the pictures, which have colours of their own
        EXPECT_TRUE(LoadDialogPictures(dialog));
        DressControls(dialog);
        ResizeDialogBackBuffer(dialog);
        Show();
        Picture picture = CaptureClient(dialog);
        Blank(&picture, RectOf(Item(kPreviewDisplayId)), false, 0);
        return std::count_if(picture.pixels.begin(), picture.pixels.end(),
                             [](uint32_t pixel) { return (pixel >> 8 & 0xFF) > 0xB0; }) *
               1000 / static_cast<int>(picture.pixels.size());
    };
    EXPECT_GT(LightParts(), 400);
    host::ImportHooks hooks;
    host::ReplaceImport(GetModuleHandleA(nullptr), "RegGetValueW", AppsAreDark, &hooks);
    host::ReplaceImport(GetModuleHandleA(nullptr), "SystemParametersInfoW", TellContrast, &hooks);
    EXPECT_TRUE(ReadLook());
    EXPECT_LT(LightParts(), 40);
    // Of each column with pixels of a colour: the upper row and their number.
    const auto Columns = [this](int id, PaletteColor color) {
        const COLORREF c = ColorOf(color);
        std::string columns;
        Show();
        const Picture picture = CaptureClient(Item(id));
        for (int x = 0; x < picture.width; ++x) {
            int top = 0, count = 0;
            for (int y = picture.height - 1; y >= 0; --y)
                if (PixelAt(picture, x, y) == RGB(GetBValue(c), GetGValue(c), GetRValue(c)))
                    top = y, ++count;
            columns += count ? std::to_string(100 * top + count) + " " : "";
        }
        return columns;
    };
    EXPECT_EQ(Columns(kPreviewOnId, kFieldColor).substr(0, 10), "211 211 21") << "in a frame";
    SendMessageA(Item(kPreviewOnId), BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_EQ(Columns(kPreviewOnId, kFieldColor), "702 802 902 802 702 602 502 ");
    SCROLLINFO info = {sizeof info, SIF_ALL, 0, 99, 20, 40, 0};
    SetScrollInfo(Item(kHorizontalBarId), SB_CTL, &info, FALSE);
    EXPECT_EQ(Columns(kHorizontalBarId, kTextColor), "802 704 606 508 508 606 704 802 ");
    gHasContrast = true;
    EXPECT_TRUE(ReadLook());
    host::RestoreImports(&hooks);
    EXPECT_GT(LightParts(), 400);
}

TEST_F(DialogLook, APictureThatCannotBeMadeIsReported) {
    ShowDialogPicture(dialog, IDOK, kPictureSelected); // has none
    // Nothing that was made for it stays: TearDown counts.
    int creations = 0;
    do
        FailSystemCall(kAnyDrawingCall, ++creations, 0);
    while (!LoadDialogPictures(dialog) && creations < 1000);
    FailSystemCall(kAnyDrawingCall, 0, 0);
    EXPECT_GT(creations, 100); // with that many or more allowed none fails
    EXPECT_TRUE(LoadDialogPictures(dialog));
}

TEST_F(DialogLook, ASelectedToolHasItsDrawingInAFrame) {
    ShowDialogPicture(dialog, kPanIconId, kPictureSelected);
    Show();
    const Picture tool = CaptureClient(Item(kPanIconId));
    const uint32_t frame = PixelAt(tool, tool.width / 2, 0), plate = PixelAt(tool, 2, 2);
    for (int x = 1; x < tool.width - 1; ++x)
        EXPECT_TRUE(PixelAt(tool, x, 0) == frame && PixelAt(tool, x, tool.height - 1) == frame) << x;
    EXPECT_NE(frame, plate);
    for (const int id : {kPanIconId, kProductLogoId}) {
        const Picture picture = CaptureClient(Item(id));
        int rows = 0;
        for (int y = 2; y < picture.height - 2; ++y)
            for (int x = 2; x < picture.width - 2; ++x)
                if (PixelAt(picture, x, y) != PixelAt(picture, picture.width - 3, picture.height - 3)) {
                    ++rows;
                    break;
                }
        EXPECT_GT(rows, picture.height * 3 / 4) << id;
    }
}

TEST_F(DialogLook, TheCornerSizesTheWindow) {
    SendMessageA(Item(kCornerIconId), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    MSG posted = {};
    EXPECT_TRUE(PeekMessageA(&posted, dialog, WM_NCLBUTTONDOWN, WM_NCLBUTTONDOWN, PM_REMOVE));
    EXPECT_EQ(posted.wParam, static_cast<WPARAM>(HTBOTTOMRIGHT));
    EXPECT_EQ(SendMessageA(Item(kPreviewFrameId), WM_NCHITTEST, 0, 0), HTTRANSPARENT);
}

TEST(DpiScope, HostSeesItsOwnAwareness) {
    const auto Call = [](const char *name, intptr_t context) {
        const FARPROC address = GetProcAddress(GetModuleHandleA("user32.dll"), name);
        return reinterpret_cast<void *(WINAPI *)(intptr_t)>(reinterpret_cast<void *>(address))(context);
    };
    const auto Awareness = [&] { return Call("GetThreadDpiAwarenessContext", 0); };
    void *const before = Call("SetThreadDpiAwarenessContext", -1); // a host that knows of no scales
    const void *host = Awareness();
    const DpiCookie outer = EnterDialogDpi();
    const void *own = Awareness();
    EXPECT_NE(own, host);
    LeaveDialogDpi(EnterDialogDpi());
    EXPECT_EQ(Awareness(), own);
    LeaveDialogDpi(outer);
    EXPECT_EQ(Awareness(), host);
    Call("SetThreadDpiAwarenessContext", reinterpret_cast<intptr_t>(before));
}
