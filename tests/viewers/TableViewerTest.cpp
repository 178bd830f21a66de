#include "diag/LogState.h"
#include "engine/LightSourceTable.h"
#include "resources/ResourceIds.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/WindowPicture.h"
#include "tests/viewers/ClipboardCalls.h"
#include "tests/viewers/ModalDialog.h"
#include "ui/LightSourceViewer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr WPARAM kCtrlA = 1, kCtrlC = 3, kCtrlB = 2;

INT_PTR CALLBACK ViewerProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleLightSourceViewer(dialog, message, wParam, lParam);
}

struct SeenMessage {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    bool operator==(const SeenMessage &) const = default;
};
std::vector<SeenMessage> gSeenKeys; // what reached the list box's own procedure

WNDPROC gListProc;

LRESULT CALLBACK SpyProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_KEYDOWN || message == WM_KEYUP || message == WM_CHAR)
        gSeenKeys.push_back({message, wParam, lParam});
    return CallWindowProcA(gListProc, window, message, wParam, lParam);
}

void SpyOnList(HWND dialog) {
    gSeenKeys.clear();
    gListProc = reinterpret_cast<WNDPROC>(SetWindowLongPtrA(
        GetDlgItem(dialog, kLightSourceListId), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(SpyProc)));
}

struct Size {
    int width, height;
    bool operator==(const Size &) const = default;
};

Size SizeOf(const RECT &rect) {
    return {static_cast<int>(rect.right - rect.left), static_cast<int>(rect.bottom - rect.top)};
}

Size WindowSize(HWND window) {
    RECT rect;
    GetWindowRect(window, &rect);
    return SizeOf(rect);
}

struct Layout {
    RECT countLine, list, ok;
};

Layout LayoutOf(HWND dialog) {
    return {RectIn(dialog, GetDlgItem(dialog, kLightSourceCountId)),
            RectIn(dialog, GetDlgItem(dialog, kLightSourceListId)), RectIn(dialog, GetDlgItem(dialog, IDOK))};
}

void ExpectRect(const RECT &rect, LONG left, LONG top, LONG right, LONG bottom, const char *what) {
    EXPECT_EQ(rect.left, left) << what;
    EXPECT_EQ(rect.top, top) << what;
    EXPECT_EQ(rect.right, right) << what;
    EXPECT_EQ(rect.bottom, bottom) << what;
}

void ExpectLayout(const Layout &now, const Layout &before, int dx, int dy, int okDx) {
    ExpectRect(now.countLine, before.countLine.left, before.countLine.top, before.countLine.right + dx,
               before.countLine.bottom, "count line");
    ExpectRect(now.list, before.list.left, before.list.top, before.list.right + dx, before.list.bottom + dy,
               "list");
    ExpectRect(now.ok, before.ok.left + okDx, before.ok.top + dy, before.ok.right + okDx,
               before.ok.bottom + dy, "button");
}

void Grow(HWND dialog, int dx, int dy) {
    const Size size = WindowSize(dialog);
    SetWindowPos(dialog, nullptr, 0, 0, size.width + dx, size.height + dy, SWP_NOMOVE | SWP_NOZORDER);
}

// Whether something dark is drawn in the inner part of an area of the client area.
bool ShowsText(HWND dialog, const RECT &area) {
    const Picture shown = CaptureClient(dialog);
    int dark = 0;
    for (LONG y = area.top + 5; y < area.bottom - 5; ++y)
        for (LONG x = area.left + 5; x < area.right - 5; ++x)
            dark += (PixelAt(shown, x, y) & 0xFF) < 100;
    return dark > 10;
}

class TableViewerTest : public ::testing::Test {
protected:
    void SetUp() override {
        gLightSourceTable = &table;
        SetClipboardText("before");
        TakeReports();
    }
    void TearDown() override {
        FailClipboardCall(nullptr);
        gLightSourceTable = tableBefore;
        gLogState.ownerThread = 0;
        gLogState.ownerWindow = nullptr;
        EXPECT_EQ(ClipboardsOpen(), 0);
    }

    void AddLights(uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) {
            LightSource light{};
            light.X = static_cast<int32_t>(i % 1200);
            light.XQuarter = static_cast<int32_t>(i % 4);
            light.Y = static_cast<int32_t>(i / 1200) * 7;
            light.RadiusSquared = static_cast<int32_t>(i % 50) + 1;
            light.Brightness = 0xFFFFFFFE - i * 16;
            light.State = i == 1 ? 0 : 1;
            lights.push_back(light);
        }
        table.records = lights.data();
        table.Count = static_cast<uint32_t>(lights.size());
    }

    INT_PTR Open(const std::function<void(HWND, HWND)> &script) {
        return RunModal(
            kLightSourceTableDialogId, ViewerProc,
            [&script](HWND dialog) { script(dialog, GetDlgItem(dialog, kLightSourceListId)); }, SpyOnList);
    }

    LightSourceTable *const tableBefore = gLightSourceTable;
    LightSourceTable table{};
    std::vector<LightSource> lights;
};

int CountOf(HWND list) {
    return static_cast<int>(SendMessageA(list, LB_GETCOUNT, 0, 0));
}

std::string Item(HWND list, int index) {
    std::string text(static_cast<size_t>(SendMessageA(list, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0)),
                     '\0');
    SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
    return text;
}

// The text without its terminator.
std::string ClipboardText() {
    return ClipboardBytes(CF_TEXT).c_str();
}

} // namespace

TEST_F(TableViewerTest, TemplateIsTheAgreedOne) {
    AddLights(3);
    Open([](HWND dialog, HWND list) {
        EXPECT_EQ(TextOf(dialog), "Light Source Table Entries");
        const LONG style = GetWindowLongA(dialog, GWL_STYLE), listStyle = GetWindowLongA(list, GWL_STYLE);
        EXPECT_TRUE(style & WS_POPUP && style & WS_SYSMENU && style & WS_THICKFRAME);
        EXPECT_TRUE(listStyle & LBS_EXTENDEDSEL && listStyle & LBS_NOINTEGRALHEIGHT);
        EXPECT_FALSE(listStyle & LBS_SORT);
        struct Expected {
            int id, x, y, width, height;
        };
        for (const Expected &e :
             {Expected{kLightSourceCountId, 12, 12, 270, 8}, Expected{kLightSourceListId, 12, 30, 276, 150},
              Expected{IDOK, 126, 192, 50, 14}}) {
            RECT wanted = {e.x, e.y, e.x + e.width, e.y + e.height};
            MapDialogRect(dialog, &wanted);
            const RECT is = RectIn(dialog, GetDlgItem(dialog, e.id));
            EXPECT_NEAR(is.left, wanted.left, 1);
            EXPECT_NEAR(is.top, wanted.top, 1);
            EXPECT_NEAR(SizeOf(is).width, SizeOf(wanted).width, 1);
            EXPECT_NEAR(SizeOf(is).height, SizeOf(wanted).height, 1);
        }
    });
}

TEST_F(TableViewerTest, ListsEveryLightAndCopiesTheSelection) {
    AddLights(3);
    const std::string lines[] = {
        "LightSourceTable[0000] x = 0.00, y = 0.00, Diam = 2.00, Bright = FFFFFFFE",
        "LightSourceTable[0001] x = 1.25, y = 0.00, Diam = 2.83, Bright = FFFFFFEE (D)",
        "LightSourceTable[0002] x = 2.50, y = 0.00, Diam = 3.46, Bright = FFFFFFDE"};
    const INT_PTR result = Open([&](HWND dialog, HWND list) {
        EXPECT_EQ(TextOf(GetDlgItem(dialog, kLightSourceCountId)), "NumberOfLightSources = 3\n\n");
        ASSERT_EQ(CountOf(list), 3);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(Item(list, i), lines[i]);
        EXPECT_EQ(GetFocus(), list);

        TypeCtrl(list, kCtrlC); // nothing is selected
        SendMessageA(list, WM_CHAR, kCtrlA, 0);
        SendMessageA(list, WM_CHAR, kCtrlC, 0); // Ctrl is not down
        EXPECT_EQ(ClipboardText(), "before");
        TypeCtrl(list, kCtrlA);
        EXPECT_EQ(SendMessageA(list, LB_GETSELCOUNT, 0, 0), 3);
        TypeCtrl(list, kCtrlC);
        EXPECT_EQ(ClipboardText(), lines[0] + "\r\n" + lines[1] + "\r\n" + lines[2] + "\r\n");
        SendMessageA(list, LB_SETSEL, FALSE, 1);
        TypeCtrl(list, kCtrlC);
        EXPECT_EQ(ClipboardText(), lines[0] + "\r\n" + lines[2] + "\r\n");
        SendMessageA(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    });
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(TableViewerTest, EmptyTableShowsItsCountAndKeepsTheClipboard) {
    Open([](HWND dialog, HWND list) {
        EXPECT_EQ(TextOf(GetDlgItem(dialog, kLightSourceCountId)), "NumberOfLightSources = 0\n\n");
        EXPECT_EQ(CountOf(list), 0);
        TypeCtrl(list, kCtrlA);
        TypeCtrl(list, kCtrlC);
    });
    EXPECT_EQ(ClipboardText(), "before");
    EXPECT_TRUE(TakeReports().empty());
}

// The key itself is swallowed; another character gets it back, with the data of its first press.
TEST_F(TableViewerTest, OtherCtrlCharactersReachTheListAsWholeChords) {
    AddLights(3);
    Open([](HWND, HWND list) {
        SendMessageA(list, WM_KEYDOWN, VK_CONTROL, 0x001D0001);
        SendMessageA(list, WM_KEYDOWN, VK_CONTROL, 0x401D0001); // repeated by the keyboard
        TypeCtrl(list, kCtrlA);
        SendMessageA(list, WM_KEYDOWN, VK_CONTROL, 0x001D0001);
        EXPECT_TRUE(gSeenKeys.empty());
        SendMessageA(list, WM_CHAR, kCtrlB, 0x00300001);
        const std::vector<SeenMessage> chord = {{WM_KEYDOWN, VK_CONTROL, 0x001D0001},
                                                {WM_CHAR, kCtrlB, 0x00300001},
                                                {WM_KEYUP, VK_CONTROL, LPARAM{0xC01D0001}}};
        EXPECT_EQ(gSeenKeys, chord);
        SendMessageA(list, WM_KEYUP, VK_CONTROL, 0xC01D0001);
        SendMessageA(list, WM_CHAR, 'x', 1);
        EXPECT_EQ(gSeenKeys.size(), 4u) << "without Ctrl a character goes alone";
    });
}

TEST_F(TableViewerTest, ControlsFollowTheSizeAndItNeverFallsBelowTheFirst) {
    AddLights(3);
    Open([](HWND dialog, HWND) {
        const Layout first = LayoutOf(dialog);
        const Size opening = WindowSize(dialog);
        Grow(dialog, 101, 57);
        ExpectLayout(LayoutOf(dialog), first, 101, 57, 50);
        PumpMessages();
        EXPECT_TRUE(ShowsText(dialog, LayoutOf(dialog).ok));
        SetWindowPos(dialog, nullptr, 30, 40, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        ExpectLayout(LayoutOf(dialog), first, 101, 57, 50);
        for (int i = 0; i < 99; ++i) // a border is dragged pixel by pixel
            Grow(dialog, 1, 0);
        ExpectLayout(LayoutOf(dialog), first, 200, 57, 100);
        ShowWindow(dialog, SW_MINIMIZE);
        ShowWindow(dialog, SW_RESTORE);
        ExpectLayout(LayoutOf(dialog), first, 200, 57, 100);
        Grow(dialog, -500, -500);
        EXPECT_EQ(WindowSize(dialog), opening);
        ExpectLayout(LayoutOf(dialog), first, 0, 0, 0);
        ShowWindow(dialog, SW_MAXIMIZE);
        EXPECT_FALSE(IsZoomed(dialog)) << "it is put back at once";
        ExpectLayout(LayoutOf(dialog), first, 0, 0, 0);
        EXPECT_EQ(SendMessageA(dialog, WM_SIZE, SIZE_MINIMIZED, 0), 0);
        ExpectLayout(LayoutOf(dialog), first, 0, 0, 0);
    });
}

TEST_F(TableViewerTest, EveryFailureOfACopyIsReportedAndGivesItsBlockBack) {
    struct Case {
        const char *call, *message;
        uint32_t site, kind;
    };
    constexpr Case kCases[] = {
        {"GlobalAlloc", "Could not allocate global buffer for Clipboard.", 676, kSystemError},
        {"GlobalLock", "Could not lock global buffer for Clipboard.", 666, kSystemError},
        {"GlobalSize", "Could not copy Clipboard text into global buffer.", 657, kSystemError},
        {"OpenClipboard", "Could not open Clipboard.", 683, kDebugMessage},
        {"EmptyClipboard", "Could not empty Clipboard.", 690, kDebugMessage},
        {"SetClipboardData", "Could not insert selection into Clipboard.", 697, kDebugMessage},
    };
    AddLights(3);
    Open([&](HWND, HWND list) {
        TypeCtrl(list, kCtrlA);
        for (const Case &c : kCases) {
            const int blocks = LiveGlobalBlocks();
            FailClipboardCall(c.call);
            TypeCtrl(list, kCtrlC);
            FailClipboardCall(nullptr);
            EXPECT_EQ(LiveGlobalBlocks(), blocks) << c.call;
            EXPECT_EQ(ClipboardsOpen(), 0) << c.call;
            const std::vector<RecordedReport> reports = TakeReports();
            ASSERT_EQ(reports.size(), 1u) << c.call;
            EXPECT_EQ(reports[0].message, c.message);
            EXPECT_EQ(reports[0].record.line, c.site);
            EXPECT_EQ(reports[0].record.kind, c.kind);
            EXPECT_EQ(reports[0].title, "Debug:  Unexpected Error");
            EXPECT_EQ(reports[0].messageBoxFlags, kStopIcon);
            const bool fromSystem = c.kind == kSystemError && strcmp(c.call, "GlobalSize") != 0;
            EXPECT_TRUE(!fromSystem || reports[0].record.systemError == ERROR_ACCESS_DENIED) << c.call;
        }
        // The selection's own memory: the indices, then the text.
        for (int64_t n = 1; n <= 2; ++n) {
            FailAllocation(n, false);
            TypeCtrl(list, kCtrlC);
            FailAllocation(0, false);
            EXPECT_EQ(TakeReports().size(), 1u) << n;
        }
    });
}

TEST_F(TableViewerTest, TooLongAnItemEndsTheGathering) {
    AddLights(1);
    Open([](HWND, HWND list) {
        const std::string longest(4095, 'a'), tooLong(4096, 'b');
        for (const std::string &text : {longest, tooLong, std::string("last")})
            SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        TypeCtrl(list, kCtrlA);
        TypeCtrl(list, kCtrlC);
        EXPECT_EQ(ClipboardText(), Item(list, 0) + "\r\n" + longest + "\r\n");
        const std::vector<RecordedReport> reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].message, "ListBox Item 2 is too long.");
        EXPECT_EQ(reports[0].record.line, 628u);
    });
}

TEST_F(TableViewerTest, ManyLightsFillAndCopyFast) {
    AddLights(35000);
    const DWORD start = GetTickCount();
    DWORD shown = 0, copied = 0;
    std::string text;
    Open([&](HWND, HWND list) {
        shown = GetTickCount();
        EXPECT_EQ(CountOf(list), 35000);
        EXPECT_EQ(Item(list, 34999).substr(0, 23), "LightSourceTable[34999]");
        EXPECT_GT(SendMessageA(list, LB_GETHORIZONTALEXTENT, 0, 0), 200);
        TypeCtrl(list, kCtrlA);
        EXPECT_EQ(SendMessageA(list, LB_GETSELCOUNT, 0, 0), 35000);
        TypeCtrl(list, kCtrlC);
        copied = GetTickCount();
        text = ClipboardText();
    });
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 35000);
    printf("shown after %lu ms, copied in %lu ms\n", shown - start, copied - shown);
    EXPECT_LT(shown - start, 1000u);
}

TEST_F(TableViewerTest, OwnsTheMessageBoxesWhileItIsOpenOnTheirThread) {
    const HWND desktop = GetDesktopWindow();
    gLogState.ownerWindow = desktop;
    gLogState.ownerThread = GetCurrentThreadId();
    Open([](HWND dialog, HWND) { EXPECT_EQ(gLogState.ownerWindow, dialog); });
    EXPECT_EQ(gLogState.ownerWindow, desktop);
    gLogState.ownerThread = GetCurrentThreadId() + 1;
    Open([&](HWND, HWND) { EXPECT_EQ(gLogState.ownerWindow, desktop); });
    EXPECT_EQ(gLogState.ownerWindow, desktop);
}
