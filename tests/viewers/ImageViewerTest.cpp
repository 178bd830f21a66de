#include "diag/BufferUsage.h"
#include "engine/DebugImages.h"
#include "engine/table/LightSourceTable.h"
#include "resources/ResourceIds.h"
#include "storage/AppFolders.h"
#include "storage/UISettings.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/WindowPicture.h"
#include "tests/viewers/KeptScene.h"
#include "ui/viewers/DebugImageViewer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

constexpr WPARAM kCtrlC = 3;
constexpr int kFit = 0, kActual = 1, kFourfold = 2;

INT_PTR CALLBACK ViewerProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleDebugImageViewer(dialog, message, wParam, lParam);
}

int Chosen(HWND dialog, int comboId) {
    return static_cast<int>(SendDlgItemMessageA(dialog, comboId, CB_GETCURSEL, 0, 0));
}

void Drag(HWND display, int from, int to) {
    DragOn(display, {from, from}, {to, to}, 20);
}

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

// The display's upper rows hold the picture from the origin on, and dark grey beside it.
void ExpectShown(HWND display, const DrawnPicture &drawn, int originX, int originY, int zoom) {
    UpdateWindow(display);
    const Picture shown = CaptureClient(display);
    const int rows = PictureRows(display);
    const IntRect &area = drawn.place.area;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < shown.width; ++x) {
            const int column = area.left + (x - originX) / zoom, row = area.top + (y - originY) / zoom;
            const bool inside = x >= originX && y >= originY && RectContains(area, column, row);
            const uint32_t expected = inside ? drawn.At(column, row) : 0x404040u;
            ASSERT_EQ(PixelAt(shown, x, y), expected) << x << ", " << y << std::hex;
        }
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

} // namespace

TEST_F(ImageViewerTest, ShowsEachPictureToThePixelAndPans) {
    Open([](HWND dialog, HWND display) {
        const RECT client = ClientOf(display);
        for (int choice = 0; choice < kDebugPictures; ++choice) {
            const DrawnPicture drawn = DrawPicture(choice);
            ChooseRow(dialog, kDebugChoiceId, choice);
            ChooseRow(dialog, kDebugZoomId, kActual);
            ExpectShown(display, drawn, (client.right - drawn.Width()) / 2,
                        (PictureRows(display) - drawn.Height()) / 2, 1);
        }
        ChooseRow(dialog, kDebugChoiceId, kShadedPicture);
        ChooseRow(dialog, kDebugZoomId, kFourfold);
        const DrawnPicture shaded = DrawPicture(kShadedPicture);
        Drag(display, 10, 10010);
        ExpectShown(display, shaded, 0, 0, 4); // as far as it goes
        SendMouse(display, WM_MOUSEMOVE, {200, 200});
        SendMessageA(display, WM_KEYDOWN, VK_RIGHT, 1);
        SendMessageA(display, WM_KEYDOWN, VK_DOWN, 1);
        ExpectShown(display, shaded, -40, -40, 4);
        RECT rect;
        GetWindowRect(dialog, &rect);
        SetWindowPos(dialog, nullptr, 0, 0, rect.right - rect.left + 60, rect.bottom - rect.top + 40,
                     SWP_NOMOVE | SWP_NOZORDER);
        ExpectShown(display, shaded, -10, -20, 4); // the middle stays
    });
}

TEST_F(ImageViewerTest, TellsThePixelAndTheNearestLightAndZoomsByWheelAndKeys) {
    Open([](HWND dialog, HWND display) {
        EXPECT_EQ(GetFocus(), display);
        EXPECT_EQ(Chosen(dialog, kDebugZoomId), kFit);
        EXPECT_EQ(TextOf(display), "420 x 300 pixels, each 1.000 of the document's\n3 lights");
        POINT point = {50, 60};
        ClientToScreen(display, &point);
        SendMessageA(display, WM_MOUSEWHEEL, MAKEWPARAM(0, 120), MAKELPARAM(point.x, point.y));
        for (const auto &[key, zoom] :
             {std::pair{'-', kFit}, {'+', kActual}, {'+', kFourfold}, {'+', kFourfold}}) {
            SendMessageA(display, WM_CHAR, static_cast<WPARAM>(key), 1);
            EXPECT_EQ(Chosen(dialog, kDebugZoomId), zoom);
        }
        EXPECT_NE(SendMessageA(display, WM_ERASEBKGND, 0, 0), 0) << "a white moment";
        Drag(display, 0, 9000);
        SendMouse(display, WM_MOUSEMOVE, {4 * 100 + 1, 4 * 58 + 1});
        const std::string text = TextOf(display);
        EXPECT_EQ(text.find("x 100, y 58 (document 100.0, 58.0)   R CCCCCC G C8C8C8 B C0C0C0 "), 0u) << text;
        EXPECT_NE(text.find("selected 100 %, covered 100 %   nearest light 0: "), std::string::npos) << text;
        EXPECT_NE(text.find(" pixels away, Diam = "), std::string::npos) << text;
        SendMouse(display, WM_MOUSEMOVE, {4 * 20 + 2, 4 * 40 + 2});
        EXPECT_NE(TextOf(display).find("brightness 0C0C0C\nselected 0 %, covered 100 %"), std::string::npos)
            << TextOf(display);
        // Another run has kept a smaller image meanwhile.
        IntRect &kept = const_cast<KeptImage &>(GetKeptImage()).image.bounds;
        const IntRect bounds = std::exchange(kept, IntRect{0, 0, 20, 10});
        SendMouse(display, WM_MOUSEMOVE, {4 * 102 + 1, 4 * 58 + 1});
        EXPECT_EQ(TextOf(display).find("x 102, y 58 (document 102.0, 58.0)   nearest"), 0u)
            << TextOf(display);
        kept = bounds;
        GetLightSourceTable().records[0].State = 0;
        SendMouse(display, WM_MOUSEMOVE, {4 * 101 + 1, 4 * 58 + 1});
        EXPECT_EQ(TextOf(display).substr(TextOf(display).size() - 4), " (D)");
        SendMessageA(display, WM_MOUSELEAVE, 0, 0);
        EXPECT_EQ(TextOf(display).find("420 x 300"), 0u);
        ChooseRow(dialog, kDebugChoiceId, kStampPicture);
        const RECT client = ClientOf(display);
        SendMouse(display, WM_MOUSEMOVE, {client.right / 2, PictureRows(display) / 2});
        EXPECT_NE(TextOf(display).find(" from the light   R "), std::string::npos) << TextOf(display);
    });
}

TEST_F(ImageViewerTest, CopiesTheWholePictureFromWhereverTheKeyboardIs) {
    const DrawnPicture drawn = DrawPicture(kLightsPicture);
    std::string bottomUp;
    const size_t rowBytes = size_t(drawn.Width()) * 4;
    for (auto row = drawn.bgra.end(); row != drawn.bgra.begin(); row -= static_cast<ptrdiff_t>(rowBytes))
        bottomUp.append(row - static_cast<ptrdiff_t>(rowBytes), row);
    Open([&](HWND dialog, HWND) {
        ChooseRow(dialog, kDebugChoiceId, kLightsPicture);
        ChooseRow(dialog, kDebugZoomId, kFourfold);
        for (const int id : {kDebugDisplayId, kDebugChoiceId, kDebugZoomId, static_cast<int>(IDOK)}) {
            SetClipboardText("before");
            SendDlgItemMessageA(dialog, id, WM_CHAR, kCtrlC, 1);
            const std::string dib = ClipboardBytes(CF_DIB);
            BITMAPINFOHEADER header;
            ASSERT_GE(dib.size(), sizeof header + bottomUp.size()) << id;
            memcpy(&header, dib.data(), sizeof header);
            EXPECT_TRUE(header.biWidth == drawn.Width() && header.biHeight == drawn.Height());
            EXPECT_TRUE(dib.compare(sizeof header, bottomUp.size(), bottomUp) == 0);
        }
    });
}

TEST_F(ImageViewerTest, KeepsPlaceAndChoiceAfterOkOnly) {
    EXPECT_EQ(Open([](HWND dialog, HWND) { ChooseRow(dialog, kDebugChoiceId, 2); }), IDCANCEL);
    EXPECT_EQ(SettingsFile(), "<missing>");
    EXPECT_EQ(GetDebugDisplayChoice(), 0u);
    RECT placed = {};
    const auto placeAndAccept = [&](HWND dialog, HWND display) {
        RECT opening, before, after;
        GetWindowRect(dialog, &opening);
        GetClientRect(display, &before);
        ChooseRow(dialog, kDebugChoiceId, 2);
        SetWindowPos(dialog, nullptr, 33, 44, opening.right - opening.left + 60,
                     opening.bottom - opening.top + 40, SWP_NOZORDER);
        GetWindowRect(dialog, &placed);
        GetClientRect(display, &after);
        EXPECT_EQ(after.right - before.right, 60);
        EXPECT_EQ(after.bottom - before.bottom, 40);
        SendDlgItemMessageA(dialog, IDOK, BM_CLICK, 0, 0);
    };
    EXPECT_EQ(Open(placeAndAccept), IDOK);
    UISettings stored = {};
    ASSERT_EQ(SettingsFile().size(), sizeof stored);
    memcpy(&stored, SettingsFile().data(), sizeof stored);
    EXPECT_EQ(memcmp(&stored.debugViewerRect, &placed, sizeof placed), 0);
    EXPECT_EQ(stored.debugDisplayChoice, 2u);
    Open([&](HWND dialog, HWND) {
        RECT again;
        GetWindowRect(dialog, &again);
        EXPECT_TRUE(EqualRect(&again, &placed));
        EXPECT_EQ(Chosen(dialog, kDebugChoiceId), 2);
    });
}

// Each creation of a graphics object fails once: the viewer opens, and gives back what it has.
TEST_F(ImageViewerTest, GivesEverythingBackWhateverFails) {
    const auto before = LiveObjects();
    const auto look = [](HWND dialog, HWND display) {
        for (int choice = 0; choice < kDebugPictures; ++choice) {
            ChooseRow(dialog, kDebugChoiceId, choice);
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
        ChooseRow(dialog, kDebugChoiceId, kStampPicture);
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
            ChooseRow(dialog, kDebugChoiceId, choice);
            EXPECT_EQ(TextOf(display), "No images were kept for this run.");
        }
        SendMouse(display, WM_MOUSEMOVE, {50, 50});
        SendMessageA(display, WM_CHAR, kCtrlC, 1);
        UpdateWindow(display);
    });
    EXPECT_STREQ(ClipboardBytes(CF_TEXT).c_str(), "before");
    EXPECT_TRUE(TakeReports().empty());
}
