#include "diag/BufferUsage.h"
#include "engine/LightSourceTable.h"
#include "render/KeptRun.h"
#include "resources/ResourceIds.h"
#include "storage/AppFolders.h"
#include "storage/UISettings.h"
#include "tests/support/SystemObjects.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/WindowPicture.h"
#include "tests/viewers/ClipboardCalls.h"
#include "tests/viewers/KeptScene.h"
#include "tests/viewers/ModalDialog.h"
#include "ui/DebugImageViewer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

constexpr WPARAM kCtrlC = 3;
constexpr int kFit = 0, kActual = 1, kFourfold = 2;

INT_PTR CALLBACK ViewerProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleDebugImageViewer(dialog, message, wParam, lParam);
}

struct Drawn {
    DebugPicturePlace place{};
    std::vector<uint8_t> bgra;
    int Width() const { return place.area.right - place.area.left; }
    int Height() const { return place.area.bottom - place.area.top; }
    uint32_t At(int x, int y) const {
        uint32_t pixel;
        memcpy(&pixel, &bgra[(size_t(y) * size_t(Width()) + size_t(x)) * 4], sizeof pixel);
        return pixel & 0xFFFFFF;
    }
};

Drawn Draw(int choice) {
    Drawn drawn;
    EXPECT_TRUE(FindDebugPicture(choice, &drawn.place));
    drawn.bgra.resize(size_t(drawn.Width()) * size_t(drawn.Height()) * 4);
    EXPECT_TRUE(DrawDebugPicture(choice, drawn.place, drawn.bgra.data()));
    return drawn;
}

void Choose(HWND dialog, int comboId, int item) {
    const HWND combo = GetDlgItem(dialog, comboId);
    SendMessageA(combo, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(comboId, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
    PumpMessages();
}

int Chosen(HWND dialog, int comboId) {
    return static_cast<int>(SendDlgItemMessageA(dialog, comboId, CB_GETCURSEL, 0, 0));
}

void SendMouse(HWND display, UINT message, int x, int y, WPARAM keys = 0) {
    SendMessageA(display, message, keys, MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y)));
    PumpMessages();
}

Picture Shown(HWND display) {
    UpdateWindow(display);
    return CaptureClient(display);
}

// The display's upper rows hold the picture from the origin on, and dark grey beside it.
bool ShowsAt(const Picture &shown, const Drawn &drawn, int originX, int originY, int zoom, int rows) {
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < shown.width; ++x) {
            const int column = (x - originX) / zoom, row = (y - originY) / zoom;
            const bool inside =
                x >= originX && y >= originY && column < drawn.Width() && row < drawn.Height();
            const uint32_t expected = inside ? drawn.At(column, row) : 0x404040u;
            if (PixelAt(shown, x, y) != expected) {
                ADD_FAILURE() << "at " << x << ", " << y << ": " << std::hex << PixelAt(shown, x, y)
                              << " instead of " << expected;
                return false;
            }
        }
    return true;
}

class ImageViewerTest : public ::testing::Test {
protected:
    void SetUp() override {
        strcpy(gSettingsFolder, folder.Path().c_str());
        SetDebugViewerRect({0, 0, 0, 0});
        SetDebugDisplayChoice(0);
        ChooseWhatToKeep(true, true);
        ASSERT_TRUE(KeepScene(SceneSettings()));
        TakeReports();
    }
    void TearDown() override {
        FailSystemCall(kAnyDrawingCall, 0, 0);
        ChooseWhatToKeep(false, false);
        EXPECT_EQ(BufferBytesInUse(), 0);
    }
    INT_PTR Open(const std::function<void(HWND, HWND)> &script) {
        return RunModal(kDebugImageDialogId, ViewerProc, [&script](HWND dialog) {
            PumpMessages();
            script(dialog, GetDlgItem(dialog, kDebugDisplayId));
        });
    }
    std::string SettingsFile() const { return ReadWholeFile(folder / "UISettings.bin"); }

    TemporaryFolder folder;
};

// Rows of the display above the lines of text.
int PictureRows(HWND display) {
    RECT rect;
    GetClientRect(display, &rect);
    const HDC dc = GetDC(display);
    const HGDIOBJ before =
        SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageA(GetParent(display), WM_GETFONT, 0, 0)));
    TEXTMETRICA metrics;
    GetTextMetricsA(dc, &metrics);
    SelectObject(dc, before);
    ReleaseDC(display, dc);
    return rect.bottom - 2 * metrics.tmHeight - 6;
}

} // namespace

TEST_F(ImageViewerTest, ShowsEachPictureToThePixelAndPans) {
    Open([](HWND dialog, HWND display) {
        const int rows = PictureRows(display);
        RECT client;
        GetClientRect(display, &client);
        for (int choice = 0; choice < kDebugPictures; ++choice) {
            const Drawn drawn = Draw(choice);
            Choose(dialog, kDebugChoiceId, choice);
            Choose(dialog, kDebugZoomId, kActual);
            const int originX = (client.right - drawn.Width()) / 2, originY = (rows - drawn.Height()) / 2;
            EXPECT_TRUE(ShowsAt(Shown(display), drawn, originX, originY, 1, rows)) << choice;
        }
        Choose(dialog, kDebugChoiceId, kShadedPicture);
        Choose(dialog, kDebugZoomId, kFourfold);
        const Drawn shaded = Draw(kShadedPicture);
        SendMouse(display, WM_LBUTTONDOWN, 10, 10, MK_LBUTTON);
        for (int i = 1; i <= 20; ++i)
            SendMouse(display, WM_MOUSEMOVE, 10 + 500 * i, 10 + 500 * i, MK_LBUTTON);
        SendMouse(display, WM_LBUTTONUP, 10010, 10010);
        EXPECT_TRUE(ShowsAt(Shown(display), shaded, 0, 0, 4, rows)) << "as far as it goes";
        SendMouse(display, WM_MOUSEMOVE, 200, 200);
        SendMessageA(display, WM_KEYDOWN, VK_RIGHT, 1);
        SendMessageA(display, WM_KEYDOWN, VK_DOWN, 1);
        EXPECT_TRUE(ShowsAt(Shown(display), shaded, -40, -40, 4, rows));
    });
}

TEST_F(ImageViewerTest, TellsThePixelAndTheNearestLight) {
    Open([](HWND dialog, HWND display) {
        EXPECT_EQ(TextOf(display), "420 x 300 pixels, each 1.000 of the document's\n3 lights");
        Choose(dialog, kDebugZoomId, kFourfold);
        SendMouse(display, WM_LBUTTONDOWN, 0, 0, MK_LBUTTON);
        SendMouse(display, WM_MOUSEMOVE, 9000, 9000, MK_LBUTTON);
        SendMouse(display, WM_LBUTTONUP, 9000, 9000);
        SendMouse(display, WM_MOUSEMOVE, 4 * 100 + 1, 4 * 58 + 1);
        const std::string text = TextOf(display);
        EXPECT_EQ(text.find("x 100, y 58 (document 100.0, 58.0)   R "), 0u) << text;
        EXPECT_NE(text.find("selected 100 %, covered 100 %   nearest light 0: "), std::string::npos) << text;
        EXPECT_NE(text.find(" pixels away, Diam = "), std::string::npos) << text;
        SendMouse(display, WM_MOUSEMOVE, 4 * 20 + 2, 4 * 40 + 2);
        EXPECT_NE(TextOf(display).find("brightness 0C0C0C\nselected 0 %, covered 100 %"), std::string::npos)
            << TextOf(display);
        GetLightSourceTable().records[0].State = 0;
        SendMouse(display, WM_MOUSEMOVE, 4 * 101 + 1, 4 * 58 + 1);
        EXPECT_EQ(TextOf(display).substr(TextOf(display).size() - 4), " (D)");
        SendMessageA(display, WM_MOUSELEAVE, 0, 0);
        EXPECT_EQ(TextOf(display).find("420 x 300"), 0u);
        Choose(dialog, kDebugChoiceId, kStampPicture);
        SendMouse(display, WM_MOUSEMOVE, 30, 30);
        EXPECT_NE(TextOf(display).find(" from the light   R "), std::string::npos) << TextOf(display);
    });
}

TEST_F(ImageViewerTest, CopiesTheWholePictureFromWhereverTheKeyboardIs) {
    const Drawn drawn = Draw(kLightsPicture);
    Open([&](HWND dialog, HWND display) {
        Choose(dialog, kDebugChoiceId, kLightsPicture);
        Choose(dialog, kDebugZoomId, kFourfold);
        for (const int id : {kDebugDisplayId, kDebugChoiceId, kDebugZoomId, static_cast<int>(IDOK)}) {
            SetClipboardText("before");
            SendDlgItemMessageA(dialog, id, WM_CHAR, kCtrlC, 1);
            const std::string dib = ClipboardBytes(CF_DIB);
            ASSERT_GE(dib.size(), sizeof(BITMAPINFOHEADER) + drawn.bgra.size()) << id;
            BITMAPINFOHEADER header;
            memcpy(&header, dib.data(), sizeof header);
            EXPECT_EQ(header.biWidth, drawn.Width());
            EXPECT_EQ(header.biHeight, drawn.Height());
            EXPECT_EQ(header.biBitCount, 32);
            const size_t rowBytes = size_t(drawn.Width()) * 4;
            for (int y = 0; y < drawn.Height(); ++y)
                ASSERT_EQ(memcmp(dib.data() + sizeof header + rowBytes * size_t(drawn.Height() - 1 - y),
                                 drawn.bgra.data() + rowBytes * size_t(y), rowBytes),
                          0)
                    << y;
        }
        const int blocks = LiveGlobalBlocks();
        FailClipboardCall("GlobalSize");
        SendMessageA(display, WM_CHAR, kCtrlC, 1);
        FailClipboardCall(nullptr);
        EXPECT_EQ(LiveGlobalBlocks(), blocks);
        const std::vector<RecordedReport> reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].message, "Could not copy Clipboard picture into global buffer.");
    });
}

TEST_F(ImageViewerTest, KeepsPlaceAndChoiceAfterOkOnly) {
    EXPECT_EQ(SettingsFile(), "<missing>");
    EXPECT_EQ(Open([](HWND dialog, HWND) {
                  Choose(dialog, kDebugChoiceId, 2);
                  SetWindowPos(dialog, nullptr, 33, 44, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
              }),
              IDCANCEL);
    EXPECT_EQ(SettingsFile(), "<missing>");
    EXPECT_EQ(GetDebugDisplayChoice(), 0u);
    RECT placed = {};
    EXPECT_EQ(Open([&](HWND dialog, HWND display) {
                  RECT opening, before;
                  GetWindowRect(dialog, &opening);
                  GetClientRect(display, &before);
                  Choose(dialog, kDebugChoiceId, 2);
                  SetWindowPos(dialog, nullptr, 33, 44, 100, 100, SWP_NOZORDER); // never below the first
                  GetWindowRect(dialog, &placed);
                  EXPECT_EQ(placed.right - placed.left, opening.right - opening.left);
                  SetWindowPos(dialog, nullptr, 33, 44, placed.right - placed.left + 60,
                               placed.bottom - placed.top + 40, SWP_NOZORDER);
                  GetWindowRect(dialog, &placed);
                  RECT after;
                  GetClientRect(display, &after);
                  EXPECT_EQ(after.right - before.right, 60);
                  EXPECT_EQ(after.bottom - before.bottom, 40);
                  SendDlgItemMessageA(dialog, IDOK, BM_CLICK, 0, 0);
              }),
              IDOK);
    const std::string file = SettingsFile();
    ASSERT_EQ(file.size(), 52u);
    RECT stored;
    uint32_t choice;
    memcpy(&stored, &file[32], sizeof stored);
    memcpy(&choice, &file[48], sizeof choice);
    EXPECT_TRUE(EqualRect(&stored, &placed));
    EXPECT_EQ(choice, 2u);
    Open([&](HWND dialog, HWND) {
        RECT again;
        GetWindowRect(dialog, &again);
        EXPECT_TRUE(EqualRect(&again, &placed));
        EXPECT_EQ(Chosen(dialog, kDebugChoiceId), 2);
    });
}

TEST_F(ImageViewerTest, ZoomFollowsWheelAndKeysWithoutAWhiteMoment) {
    Open([](HWND dialog, HWND display) {
        EXPECT_EQ(GetFocus(), display);
        EXPECT_EQ(Chosen(dialog, kDebugZoomId), kFit);
        POINT point = {50, 60};
        ClientToScreen(display, &point);
        SendMessageA(display, WM_MOUSEWHEEL, MAKEWPARAM(0, 120), MAKELPARAM(point.x, point.y));
        EXPECT_EQ(Chosen(dialog, kDebugZoomId), kActual);
        SendMessageA(display, WM_CHAR, '+', 1);
        SendMessageA(display, WM_CHAR, '+', 1);
        EXPECT_EQ(Chosen(dialog, kDebugZoomId), kFourfold);
        SendMessageA(display, WM_CHAR, '-', 1);
        EXPECT_EQ(Chosen(dialog, kDebugZoomId), kActual);
        const HDC dc = GetDC(display);
        EXPECT_NE(SendMessageA(display, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0), 0);
        ReleaseDC(display, dc);
    });
}

// Each creation of a graphics object fails once: the viewer opens, and gives back what it has.
TEST_F(ImageViewerTest, GivesEverythingBackWhateverFails) {
    const auto before = LiveObjects();
    const auto look = [](HWND dialog, HWND display) {
        for (int choice = 0; choice < kDebugPictures; ++choice) {
            Choose(dialog, kDebugChoiceId, choice);
            UpdateWindow(display);
        }
        SendMessageA(display, WM_CHAR, kCtrlC, 1);
    };
    Open(look);
    EXPECT_EQ(LiveObjects(), before);
    for (const char *call : {"CreateCompatibleDC", "CreateCompatibleBitmap", "CreateDIBSection", "GetDC"})
        for (int n = 1; n <= 4; ++n) {
            FailSystemCall(call, n, ERROR_NOT_ENOUGH_MEMORY);
            Open(look);
            FailSystemCall(kAnyDrawingCall, 0, 0);
            EXPECT_EQ(LiveObjects(), before) << call << n;
        }
    FailAllocation(1, true); // of the star picture
    Open([](HWND dialog, HWND display) {
        Choose(dialog, kDebugChoiceId, kStampPicture);
        EXPECT_EQ(TextOf(display), "This picture could not be made.");
    });
    FailAllocation(0, false);
    EXPECT_EQ(LiveObjects(), before);
}

TEST_F(ImageViewerTest, SaysWhenNothingWasKept) {
    ForgetRun();
    SetClipboardText("before");
    Open([](HWND dialog, HWND display) {
        for (int choice = 0; choice < kDebugPictures; ++choice) {
            Choose(dialog, kDebugChoiceId, choice);
            EXPECT_EQ(TextOf(display), "No images were kept for this run.");
        }
        SendMouse(display, WM_MOUSEMOVE, 50, 50);
        SendMessageA(display, WM_CHAR, kCtrlC, 1);
        UpdateWindow(display);
    });
    EXPECT_STREQ(ClipboardBytes(CF_TEXT).c_str(), "before");
    EXPECT_TRUE(TakeReports().empty());
}
