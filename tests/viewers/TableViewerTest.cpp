#include "diag/LogState.h"
#include "engine/table/LightSourceTable.h"
#include "resources/ResourceIds.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "ui/viewers/LightSourceViewer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

constexpr WPARAM kCtrlA = 1, kCtrlB = 2, kCtrlC = 3;

INT_PTR CALLBACK ViewerProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleLightSourceViewer(dialog, message, wParam, lParam);
}

std::string gSeenKeys; // that reached the list box's own procedure: message and key
WNDPROC gListProc;

LRESULT CALLBACK SpyProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_KEYDOWN || message == WM_KEYUP || message == WM_CHAR)
        gSeenKeys += std::to_string(message) + " " + std::to_string(wParam) + ",";
    return CallWindowProcA(gListProc, window, message, wParam, lParam);
}

// Presses and releases Ctrl around a character, as the keyboard sends it.
void TypeCtrl(HWND window, WPARAM character) {
    SendMessageA(window, WM_KEYDOWN, VK_CONTROL, 0x001D0001);
    SendMessageA(window, WM_CHAR, character, 0x001E0001);
    SendMessageA(window, WM_KEYUP, VK_CONTROL, 0xC01D0001);
}

class TableViewerTest : public ::testing::Test {
protected:
    void SetUp() override {
        gLightSourceTable = &table;
        SetClipboardText("before");
        TakeReports();
    }
    void TearDown() override {
        FailSystemCall("", 0, 0);
        gLightSourceTable = tableBefore;
        gLogState.ownerThread = 0;
        gLogState.ownerWindow = nullptr;
    }

    // The second one is hidden.
    void AddLights(uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) {
            LightSource light{};
            light.X = static_cast<int32_t>(i);
            light.XQuarter = static_cast<int32_t>(i % 4);
            light.RadiusSquared = static_cast<int32_t>(i % 50) + 1;
            light.Brightness = 0xFFFFFFFE - i * 16;
            light.State = i == 1 ? 0 : 1;
            lights.push_back(light);
        }
        table.records = lights.data();
        table.Count = static_cast<uint32_t>(lights.size());
    }

    INT_PTR Open(const std::function<void(HWND, HWND)> &script) {
        const auto spy = [](DLGPROC real, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == WM_INITDIALOG)
                gListProc = reinterpret_cast<WNDPROC>(
                    SetWindowLongPtrA(GetDlgItem(dialog, kLightSourceListId), GWLP_WNDPROC,
                                      reinterpret_cast<LONG_PTR>(SpyProc)));
            return real(dialog, message, wParam, lParam);
        };
        return RunModal(
            kLightSourceTableDialogId, ViewerProc,
            [&script](HWND dialog) { script(dialog, GetDlgItem(dialog, kLightSourceListId)); }, spy);
    }

    LightSourceTable *const tableBefore = gLightSourceTable;
    LightSourceTable table{};
    std::vector<LightSource> lights;
};

int CountOf(HWND list) {
    return static_cast<int>(SendMessageA(list, LB_GETCOUNT, 0, 0));
}

// The text without its terminator.
std::string ClipboardText() {
    return ClipboardBytes(CF_TEXT).c_str();
}

} // namespace

TEST_F(TableViewerTest, ListsEveryLightAndCopiesTheSelection) {
    Open([](HWND dialog, HWND list) {
        EXPECT_EQ(TextOf(GetDlgItem(dialog, kLightSourceCountId)), "NumberOfLightSources = 0\n\n");
        EXPECT_EQ(CountOf(list), 0);
        TypeCtrl(list, kCtrlA);
        TypeCtrl(list, kCtrlC);
    });
    EXPECT_EQ(ClipboardText(), "before");
    AddLights(3);
    const std::string lines[] = {
        "LightSourceTable[0000] x = 0.00, y = 0.00, Diam = 2.00, Bright = FFFFFFFE\r\n",
        "LightSourceTable[0001] x = 1.25, y = 0.00, Diam = 2.83, Bright = FFFFFFEE (D)\r\n",
        "LightSourceTable[0002] x = 2.50, y = 0.00, Diam = 3.46, Bright = FFFFFFDE\r\n"};
    const INT_PTR result = Open([&](HWND dialog, HWND list) {
        EXPECT_EQ(TextOf(GetDlgItem(dialog, kLightSourceCountId)), "NumberOfLightSources = 3\n\n");
        EXPECT_EQ(GetFocus(), list);
        TypeCtrl(list, kCtrlC); // nothing is selected
        SendMessageA(list, WM_CHAR, kCtrlA, 0);
        SendMessageA(list, WM_CHAR, kCtrlC, 0); // Ctrl is not down
        EXPECT_EQ(ClipboardText(), "before");
        TypeCtrl(list, kCtrlA);
        TypeCtrl(list, kCtrlC);
        EXPECT_EQ(ClipboardText(), lines[0] + lines[1] + lines[2]);
        SendMessageA(list, LB_SETSEL, FALSE, 1);
        TypeCtrl(list, kCtrlC);
        EXPECT_EQ(ClipboardText(), lines[0] + lines[2]);
        SendMessageA(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    });
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(TakeReports().empty());
}

// The key itself is swallowed; another character gets it back.
TEST_F(TableViewerTest, OtherCtrlCharactersReachTheListAsWholeChords) {
    Open([](HWND, HWND list) {
        gSeenKeys.clear();
        TypeCtrl(list, kCtrlA);
        EXPECT_EQ(gSeenKeys, "");
        TypeCtrl(list, kCtrlB);
        EXPECT_EQ(gSeenKeys, "256 17,258 2,257 17,");
        SendMessageA(list, WM_CHAR, 'x', 1);
        EXPECT_EQ(gSeenKeys, "256 17,258 2,257 17,258 120,") << "without Ctrl a character goes alone";
    });
}

TEST_F(TableViewerTest, ControlsFollowTheSizeAndItNeverFallsBelowTheFirst) {
    Open([](HWND dialog, HWND list) {
        const HWND controls[] = {list, GetDlgItem(dialog, IDOK), GetDlgItem(dialog, kLightSourceCountId)};
        RECT window, first[3];
        GetWindowRect(dialog, &window);
        for (int i = 0; i < 3; ++i)
            first[i] = RectIn(dialog, controls[i]);
        for (const LONG grown : {100, -50}) {
            SetWindowPos(dialog, nullptr, 0, 0, SizeOf(window).cx + grown, SizeOf(window).cy + grown,
                         SWP_NOMOVE | SWP_NOZORDER);
            const LONG gain = std::max(grown, 0L);
            const RECT wanted[] = {{0, 0, gain, gain}, {gain / 2, gain, gain / 2, gain}, {0, 0, gain, 0}};
            for (int i = 0; i < 3; ++i) {
                const RECT now = RectIn(dialog, controls[i]);
                EXPECT_TRUE(now.left - first[i].left == wanted[i].left &&
                            now.top - first[i].top == wanted[i].top &&
                            now.right - first[i].right == wanted[i].right &&
                            now.bottom - first[i].bottom == wanted[i].bottom)
                    << i << " at +" << gain;
            }
        }
    });
}

TEST_F(TableViewerTest, EveryFailureOfACopyIsReportedAndGivesItsBlockBack) {
    const std::pair<const char *, const char *> cases[] = {
        {"GlobalAlloc", "676 2 16 Debug:  Unexpected Error: Could not allocate global buffer for Clipboard."},
        {"GlobalLock", "666 2 16 Debug:  Unexpected Error: Could not lock global buffer for Clipboard."},
        {"GlobalSize",
         "657 2 16 Debug:  Unexpected Error: Could not copy Clipboard text into global buffer."},
        {"OpenClipboard", "683 0 16 Debug:  Unexpected Error: Could not open Clipboard."},
        {"EmptyClipboard", "690 0 16 Debug:  Unexpected Error: Could not empty Clipboard."},
        {"SetClipboardData",
         "697 0 16 Debug:  Unexpected Error: Could not insert selection into Clipboard."}};
    AddLights(3);
    Open([&](HWND, HWND list) {
        TypeCtrl(list, kCtrlA);
        const auto objects = LiveObjects();
        for (const auto &[call, report] : cases) {
            FailSystemCall(call, 1, ERROR_ACCESS_DENIED);
            TypeCtrl(list, kCtrlC);
            EXPECT_EQ(LiveObjects(), objects) << call;
            EXPECT_EQ(TakeReportLines(), std::vector<std::string>{report});
        }
        // The selection's own memory: the indices, then the text, then room for its end: with 17 items of
        // 4096 bytes the text is full.
        SendMessageA(list, LB_RESETCONTENT, 0, 0);
        for (int i = 0; i < 17; ++i)
            SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(std::string(4094, 'x').c_str()));
        TypeCtrl(list, kCtrlA);
        for (int64_t n = 1; n <= 3; ++n) {
            FailAllocation(n, false);
            TypeCtrl(list, kCtrlC);
            FailAllocation(0, false);
            EXPECT_EQ(TakeReports().size(), 1u) << n;
        }
    });
}

TEST_F(TableViewerTest, TooLongAnItemEndsTheGathering) {
    Open([](HWND, HWND list) {
        const std::string longest(4095, 'a'), tooLong(4096, 'b');
        for (const std::string &text : {longest, tooLong, std::string("last")})
            SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        TypeCtrl(list, kCtrlA);
        TypeCtrl(list, kCtrlC);
        EXPECT_EQ(ClipboardText(), longest + "\r\n");
        EXPECT_EQ(TakeReportLines(),
                  std::vector<std::string>{"628 0 16 Debug:  Unexpected Error: ListBox Item 1 is too long."});
    });
}

TEST_F(TableViewerTest, ManyLightsFillAndCopyFast) {
    AddLights(66000);
    const DWORD start = GetTickCount();
    Open([&](HWND, HWND list) {
        const DWORD shown = GetTickCount();
        EXPECT_EQ(CountOf(list), 66000);
        EXPECT_GT(SendMessageA(list, LB_GETHORIZONTALEXTENT, 0, 0), 200);
        TypeCtrl(list, kCtrlA);
        TypeCtrl(list, kCtrlC);
        printf("shown after %lu ms, copied in %lu ms\n", shown - start, GetTickCount() - shown);
        EXPECT_LT(shown - start, 1000u);
    });
    EXPECT_NE(ClipboardText().find("LightSourceTable[65999]"), std::string::npos);
}

TEST_F(TableViewerTest, OwnsTheMessageBoxesWhileItIsOpenOnTheirThread) {
    const HWND desktop = GetDesktopWindow();
    gLogState.ownerWindow = desktop;
    for (const bool isOwner : {true, false}) {
        gLogState.ownerThread = GetCurrentThreadId() + (isOwner ? 0 : 1);
        Open([&](HWND dialog, HWND) { EXPECT_EQ(gLogState.ownerWindow, isOwner ? dialog : desktop); });
        EXPECT_EQ(gLogState.ownerWindow, desktop);
    }
}
