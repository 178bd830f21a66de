// The pairs of fields and trackbars on the dialog's template, driven with real messages, and what they look
// like: the colours of each state, the highlight, the size of the digits.
#include "host/module/ModuleImports.h"
#include "resources/DialogControlIds.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/WindowPicture.h"
#include "ui/fields/FieldClass.h"
#include "ui/fields/ParameterControls.h"
#include "ui/fields/ParameterEdit.h"
#include "ui/fields/ParameterEditPaint.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterTrackbar.h"
#include "ui/window/DialogMessages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <commctrl.h>
#include <cstring>
#include <richedit.h>
#include <utility>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

// The dialog with nothing but the pairs. Opening it is the slow part, so that the tests share it.
struct {
    HWND window;
    ParameterSet parameters;
    int changes, beeps; // none sounds
} gPairs;

INT_PTR CALLBACK PairsProc(HWND, UINT message, WPARAM wParam, LPARAM) {
    gPairs.changes += message == kMsgParameterChanged;
    return message == WM_COMMAND && HIWORD(wParam) == EN_CHANGE && OnParameterEditChanged(LOWORD(wParam));
}

BOOL WINAPI CountBeep(UINT type) {
    gPairs.beeps += type == MB_ICONHAND;
    return TRUE;
}

} // namespace

// The linker takes the import's address from here instead of from the import library.
extern "C" decltype(&CountBeep) __imp_MessageBeep;
decltype(&CountBeep) __imp_MessageBeep = CountBeep;

namespace {

// Of a field, in pixels of its client area.
struct Look {
    int highlighted, window, text; // pixels of the colours
    LONG highlightEnd;             // 0: none
};

class ParameterPairs : public testing::Test {
protected:
    void SetUp() override {
        if (!gPairs.window)
            Create();
        Bind(kDefaultParameters);
    }
    static void TearDownTestSuite() { Close(); }

    static void Create() {
        LoadLibraryA("msftedit.dll");
        InitCommonControls();
        gPairs.window = CreateDialogParamW(GetModuleHandleW(nullptr), kMainDialogName, nullptr, PairsProc, 0);
        ShowWindow(gPairs.window, SW_SHOW);
        SetForegroundWindow(gPairs.window);
    }
    // With the focus off the pairs.
    static void Bind(const ParameterSet &parameters) {
        HoldKeys(false, false);
        LeaveField();
        gPairs.parameters = parameters;
        BindParameterControls(gPairs.window, &gPairs.parameters);
        PumpMessages();
        gPairs.changes = gPairs.beeps = 0;
    }
    static void Close() {
        HoldKeys(false, false);
        DestroyWindow(std::exchange(gPairs.window, nullptr));
        PumpMessages();
    }

    static HWND Edit(int row) { return gParameterControls[row].edit; }
    static HWND Trackbar(int row) { return gParameterControls[row].trackbar; }
    static LRESULT Ask(HWND control, UINT message) { return SendMessageA(control, message, 0, 0); }
    static std::string EditText(int row) { return TextOf(Edit(row)); }
    static int Position(int row) { return static_cast<int>(Ask(Trackbar(row), TBM_GETPOS)); }
    static void LeaveField() { SetFocus(GetDlgItem(gPairs.window, IDCANCEL)); }
    static int TakeChanges() { return std::exchange(gPairs.changes, 0); }
    static int TakeBeeps() { return std::exchange(gPairs.beeps, 0); }
    static bool IsEditing(int row) { return gParameterControls[row].editing; }
    static RECT FormatOf(int row) {
        RECT format = {};
        SendMessageA(Edit(row), EM_GETRECT, 0, reinterpret_cast<LPARAM>(&format));
        return format;
    }

    static void Redraw() {
        RedrawWindow(gPairs.window, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        PumpMessages();
    }
    static uint32_t PixelOfSystemColor(int index) {
        const COLORREF color = GetSysColor(index);
        return static_cast<uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
    }
    static Look LookOf(const Picture &picture, int row) {
        RECT window, area = ClientOf(Edit(row));
        GetWindowRect(gPairs.window, &window);
        MapWindowPoints(Edit(row), nullptr, reinterpret_cast<POINT *>(&area), 2);
        OffsetRect(&area, -window.left, -window.top);
        Look look = {};
        for (LONG y = area.top; y < area.bottom; ++y)
            for (LONG x = area.left; x < area.right; ++x) {
                const uint32_t pixel = PixelAt(picture, x, y);
                look.window += pixel == PixelOfSystemColor(COLOR_WINDOW);
                look.text += pixel == PixelOfSystemColor(COLOR_WINDOWTEXT);
                if (pixel != PixelOfSystemColor(COLOR_HIGHLIGHT))
                    continue;
                ++look.highlighted;
                look.highlightEnd = std::max(look.highlightEnd, x + 1 - area.left);
            }
        return look;
    }
};

// What a field shows while it is edited, what is stored, and what it shows when it is left.
TEST_F(ParameterPairs, TypedOrPastedTextIsStoredInRangeAndPutRightAtTheEnd) {
    const struct {
        int row;
        bool pasted;
        const char *text, *shown;
        int stored, changes;
        const char *left;
    } cases[] = {{kThreshold, false, "73.", "73.", 73, 2, "73"},
                 {kThreshold, false, "101", "101", 100, 3, "100"},
                 {kNumberOfPoints, false, "0", "0", 1, 1, "1"},
                 {kAngle, false, "7.25", "7.25", 72, 2, "7.2"},
                 {kAngle, false, "-90.0", "-90.", -900, 2, "-90.0"},
                 {kAngle, false, "-", "-", -900, 0, "-90.0"},
                 {kAngle, false, "++", "++", -900, 0, "-90.0"},
                 {kAngle, true, "7,25", "7,25", 72, 1, "7.2"},
                 {kIntensity, true, "1e9", "1e9", 100, 1, "100"},
                 {kLength, true, "abcd", "", 50, 0, "50"},
                 {kAngle, false, "\b", "", 72, 0, "7.2"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        SetFocus(Edit(c.row));
        TakeChanges();
        if (c.pasted)
            SendMessageA(Edit(c.row), EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(c.text));
        else if (*c.text == '\b')
            PressKey(Edit(c.row), VK_BACK); // removes the selected text
        TypeText(Edit(c.row), c.pasted ? "" : c.text);
        EXPECT_EQ(EditText(c.row), c.shown);
        EXPECT_EQ(*gParameterControls[c.row].value, c.stored);
        EXPECT_EQ(Position(c.row), c.stored);
        LeaveField();
        EXPECT_EQ(TakeChanges(), c.changes);
        EXPECT_EQ(EditText(c.row), c.left);
    }
    SetFocus(Edit(kSpikeSharpness));
    SetWindowTextA(Edit(kSpikeSharpness), std::string(40, '9').c_str());
    EXPECT_EQ(gPairs.parameters.spikeSharpness, 100);
}

TEST_F(ParameterPairs, OtherCharactersBeepAndAreDropped) {
    SetFocus(Edit(kIntensity));
    TypeText(Edit(kIntensity), "aZ ,%\xE4");
    EXPECT_EQ(TakeBeeps(), 6);
    // What follows Tab, Enter, Esc, Ctrl+C and Ctrl+Backspace is no character of the text, and no mistake
    // either.
    TypeText(Edit(kIntensity), "\t\r\x1B\x03\x7F");
    EXPECT_EQ(EditText(kIntensity), "50");
    EXPECT_EQ(TakeChanges(), 0);
    for (const char *p = "0123456789.-+\b"; *p; ++p)
        EXPECT_TRUE(OnEditCharacter(static_cast<unsigned char>(*p))) << *p;
    EXPECT_EQ(TakeBeeps(), 0);
}

TEST_F(ParameterPairs, KeysStepThroughTheTrackbar) {
    const struct {
        int row;
        bool ctrl;
        WPARAM key;
        int repeat, expected, changes;
    } steps[] = {{kThreshold, false, VK_UP, 1, 51, 1},       {kThreshold, false, VK_DOWN, 3, 48, 1},
                 {kThreshold, false, VK_PRIOR, 1, 58, 1},    {kThreshold, false, VK_NEXT, 9, 0, 1},
                 {kThreshold, false, VK_DOWN, 1, 0, 0},      {kThreshold, false, VK_PRIOR, 65535, 100, 1},
                 {kAngle, false, VK_UP, 1, 151, 1},          {kAngle, true, VK_DOWN, 1, 141, 1},
                 {kAngle, false, VK_LEFT, 1, 141, 0},        {kNumberOfPoints, true, VK_UP, 13, 32, 1},
                 {kNumberOfPoints, true, VK_DOWN, 1, 30, 1}, {kNumberOfPoints, true, VK_NEXT, 1, 22, 1},
                 {kAngle, false, VK_PRIOR, 1, 241, 1}};
    for (const auto &step : steps) {
        SetFocus(Edit(step.row));
        HoldKeys(false, step.ctrl);
        PressKey(Edit(step.row), step.key, step.repeat);
        EXPECT_EQ(*gParameterControls[step.row].value, step.expected);
        EXPECT_EQ(Position(step.row), step.expected);
        EXPECT_EQ(TakeChanges(), step.changes) << step.expected;
    }
    EXPECT_EQ(EditText(kNumberOfPoints), "22");
    EXPECT_FALSE(OnEditKey(&gParameterControls[kAngle], VK_HOME, 1, false));
}

TEST_F(ParameterPairs, PressesOnTheThumbDoNotMoveItAndBesideItStepAPage) {
    const HWND trackbar = Trackbar(kThreshold);
    RECT thumb = {};
    SendMessageA(trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    const POINT end = ThumbAt(trackbar, 100);
    const struct {
        POINT at;
        int value, changes;
    } presses[] = {{{thumb.left, end.y}, 50, 0}, {{thumb.right - 1, end.y}, 50, 0}, {end, 60, 1}};
    for (const auto &press : presses) {
        ClickAt(trackbar, press.at);
        EXPECT_EQ(gPairs.parameters.threshold, press.value);
        EXPECT_EQ(EditText(kThreshold), std::to_string(press.value));
        EXPECT_EQ(TakeChanges(), press.changes);
        EXPECT_EQ(GetFocus(), Edit(kThreshold));
    }
    // Some systems' trackbars jump to where the thumb is pressed, so that they are told its middle.
    const auto told = [](POINT at) {
        return OnTrackbarButtonDown(gParameterControls[kThreshold], PointParam(at.x, at.y));
    };
    const POINT middle = ThumbAt(trackbar, Position(kThreshold));
    EXPECT_EQ(told({middle.x - 1, middle.y - 1}), PointParam(middle.x, middle.y));
    EXPECT_EQ(told(end), PointParam(end.x, end.y));
}

TEST_F(ParameterPairs, RowsWithoutControlsTakeTheirDefaultsAndClosedOnesLetGo) {
    Close();
    Create();
    const int angleField = gParameterControls[kAngle].editId;
    DestroyWindow(GetDlgItem(gPairs.window, angleField));
    ParameterSet set = kDefaultParameters;
    set.angle = set.length = 7;
    Bind(set);
    EXPECT_EQ(gPairs.parameters.angle, 150);
    EXPECT_EQ(gPairs.parameters.length, 7);
    gPairs.parameters.angle = 8;
    RefreshParameterControls();
    EXPECT_EQ(gPairs.parameters.angle, 150);
    EXPECT_TRUE(OnParameterEditChanged(angleField)) << "known, but nothing to read";
    DestroyWindow(Edit(kLength));
    EXPECT_EQ(Edit(kLength), nullptr);
    for (const int row : {int{kAngle}, -1, kParameterControlCount})
        FocusParameterControl(row);
    EXPECT_FALSE(OnParameterEditChanged(999));
    Close();
    for (const ParameterControl &row : gParameterControls)
        EXPECT_TRUE(!row.value && !row.edit && !row.trackbar && !row.font);
    gPairs.parameters.angle = 1234;
    RefreshParameterControls();
    FocusParameterControl(0);
}

// Text on the window colour, and the highlight in the field that has the focus and in no other.
TEST_F(ParameterPairs, OnlyTheFocusedFieldIsHighlighted) {
    for (const int focused : {0, 5, 10}) {
        FocusParameterControl(focused);
        Redraw();
        const Picture picture = CaptureWindow(gPairs.window);
        for (int i = 0; i < kParameterControlCount; ++i) {
            SCOPED_TRACE(testing::Message() << focused << " " << i);
            const Look look = LookOf(picture, i);
            EXPECT_EQ(look.highlighted > 50, i == focused);
            EXPECT_EQ(look.highlighted == 0 && look.window > 150 && look.text > 5, i != focused);
            SendMessageA(Edit(i), WM_NCPAINT, 1, 0); // around the text
        }
        EXPECT_EQ(CaptureWindow(gPairs.window).pixels, picture.pixels);
    }
}

TEST_F(ParameterPairs, TheHighlightFitsTheTextAlsoWhileItIsTyped) {
    const ParameterControl &row = gParameterControls[kAngle];
    FocusParameterControl(kAngle);
    for (const char *typed : {"", "-", "7.2"}) {
        TypeText(row.edit, typed);
        const std::string text = EditText(kAngle);
        const HDC dc = GetDC(row.edit);
        const HGDIOBJ old = SelectObject(dc, row.font);
        SIZE extent = {};
        GetTextExtentPoint32A(dc, text.c_str(), static_cast<int>(text.size()), &extent);
        SelectObject(dc, old);
        ReleaseDC(row.edit, dc);
        Redraw();
        EXPECT_EQ(LookOf(CaptureWindow(gPairs.window), kAngle).highlightEnd,
                  FormatOf(kAngle).left + extent.cx + 3)
            << text;
    }
    EXPECT_EQ(EditText(kAngle), "-7.2");
}

// 8 of the 12 dialog units that a field has in the template, and in the middle of it, also at another scale.
TEST_F(ParameterPairs, DigitsAreAsHighAsTheDialogsText) {
    for (const int height : {20, 39}) {
        SetWindowPos(Edit(0), nullptr, 0, 0, 80, height, SWP_NOMOVE | SWP_NOZORDER);
        RenewParameterFont();
        LOGFONTW font = {};
        GetObjectW(gParameterControls[0].font, sizeof font, &font);
        const RECT format = FormatOf(0);
        EXPECT_EQ(font.lfHeight, MulDiv(height, 8, 12));
        EXPECT_EQ(SizeOf(format).cy, font.lfHeight);
        EXPECT_NEAR(format.top, ClientOf(Edit(0)).bottom - format.bottom, 1);
    }
    Close();
}

TEST_F(ParameterPairs, PaintingGivesEverythingBackAndSurvivesFailures) {
    FocusParameterControl(2);
    Redraw();
    const Picture expected = CaptureWindow(gPairs.window);
    EXPECT_EQ(LiveDrawingObjects(), 1) << "the font that all the fields share";
    for (int n = 1; n <= 6; ++n) {
        FailSystemCall(kAnyDrawingCall, n, 0);
        Redraw();
        FailSystemCall(kAnyDrawingCall, 0, 0);
        EXPECT_EQ(LiveDrawingObjects(), 1) << n;
        EXPECT_EQ(CaptureWindow(gPairs.window).pixels, expected.pixels) << n;
    }
    Close();
    EXPECT_EQ(LiveDrawingObjects(), 0);
    FailSystemCall(kAnyDrawingCall, 1, 0); // the first font cannot be made
    Create();
    Bind(kDefaultParameters);
    FailSystemCall(kAnyDrawingCall, 0, 0);
    EXPECT_EQ(EditText(10), "30");
    Close();
    EXPECT_EQ(LiveDrawingObjects(), 0);
}

std::wstring gRefusedLibrary;

HMODULE WINAPI RefuseLibrary(LPCWSTR path) {
    gRefusedLibrary = path;
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

// The library is damaged, or missing as on a small system.
TEST_F(ParameterPairs, PlainFieldsTakeThePlaceOfTheLibrarysAndItIsLogged) {
    Close();
    TakeReports();
    host::ImportHooks hooks;
    ASSERT_TRUE(host::ReplaceImport(GetModuleHandleA(nullptr), "LoadLibraryW", RefuseLibrary, &hooks));
    const FieldClass fieldClass = EnterFieldClass();
    host::RestoreImports(&hooks);
    wchar_t folder[MAX_PATH];
    GetSystemDirectoryW(folder, MAX_PATH);
    EXPECT_EQ(gRefusedLibrary, folder + std::wstring(L"\\msftedit.dll"));
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "LoadLibrary() failed with FilePath = 'msftedit.dll'");
    Create();
    Bind(kDefaultParameters);
    EXPECT_EQ(Ask(Edit(kThreshold), EM_GETEVENTMASK), 0) << "the library's own field";
    EXPECT_EQ(EditText(kThreshold), "50");
    RECT field = {};
    GetWindowRect(Edit(kThreshold), &field);
    EXPECT_EQ(SizeOf(FormatOf(kThreshold)).cy, MulDiv(SizeOf(field).cy, 8, 12)) << "it takes no EM_SETRECT";
    SetFocus(Edit(kThreshold));
    TypeText(Edit(kThreshold), "73x456");
    EXPECT_EQ(EditText(kThreshold), "7345") << "the limit of the row";
    PressKey(Edit(kThreshold), VK_DOWN);
    EXPECT_EQ(gPairs.parameters.threshold, 99);
    EXPECT_EQ(EditText(kThreshold), "99");
    EXPECT_GT(TakeChanges(), 0);
    Close();
    LeaveFieldClass(fieldClass);
}

} // namespace
