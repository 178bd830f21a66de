// What the display shows, to the pixel, and what it takes from the system. The picture is the pattern of
// FakePreview.h.
#include "tests/support/RecordingDiag.h"
#include "tests/support/WindowPicture.h"
#include "tests/support/SystemObjects.h"
#include "tests/view/FakePreview.h"
#include "tests/view/ViewDialog.h"

#include "storage/UISettings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

constexpr IntRect kImage = {0, 0, 4000, 3000};
constexpr uint32_t kSurroundPixel = 0x606060;

uint32_t PixelOf(COLORREF color) {
    return static_cast<uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
}

uint32_t PixelOfSystemColor(int index) {
    return PixelOf(GetSysColor(index));
}

// What a client pixel must show, computed the slow way from the view.
uint32_t ExpectedPixel(const PreviewGeometry &view, int x, int y) {
    const IntRect in = ImageInClient(view), visible = VisibleRect(view);
    if (!RectContains(in, x, y))
        return kSurroundPixel;
    const double u = (visible.left + x - view.display.left + 0.5) * 100.0 / view.zoom;
    const double v = (visible.top + y - view.display.top + 0.5) * 100.0 / view.zoom;
    return PixelOf(PatternColor(static_cast<int32_t>(std::floor(u)), static_cast<int32_t>(std::floor(v))));
}

class DisplayPainting : public testing::Test {
protected:
    ViewDialog dialog;

    void SetUp() override {
        gFakePreview = {};
        SetViewTool(kToolPan);
    }
    void TearDown() override {
        FailSystemCall(kAnyDrawingCall, 0, 0);
        CloseViewDialog(&dialog);
        EXPECT_EQ(LiveDrawingObjects(), 0);
        EXPECT_TRUE(TakeReports().empty());
    }
    void Open(const IntRect &image = kImage) {
        ASSERT_TRUE(OpenViewDialog(&dialog, image));
        SetLightSources(&dialog, nullptr, 0);
        UpdateWindow(dialog.display);
    }
    // Paints only what is invalid.
    Picture Show() {
        UpdateWindow(dialog.display);
        return CaptureClient(dialog.display);
    }
    int WrongPixels(const Picture &picture) {
        const PreviewGeometry view = CurrentPreviewGeometry();
        int wrong = 0;
        for (int y = view.display.top; y < view.display.bottom; ++y)
            for (int x = view.display.left; x < view.display.right; ++x)
                wrong += PixelAt(picture, x, y) != ExpectedPixel(view, x, y);
        return wrong;
    }
};

TEST_F(DisplayPainting, SmallImagesHaveANeutralSurround) {
    Open({0, 0, 120, 90});
    const Picture picture = Show();
    EXPECT_EQ(PixelAt(picture, 3, 3), kSurroundPixel);
    EXPECT_EQ(PixelAt(picture, 201, 151), PixelOf(PatternColor(60, 45)));
    EXPECT_EQ(WrongPixels(picture), 0);
}

// Only what became invalid is drawn, so any strip that is moved or forgotten shows as a wrong pixel.
TEST_F(DisplayPainting, NothingStaleAfterPanningZoomingAndResizing) {
    Open();
    std::mt19937 random(31);
    for (int i = 0; i < 60; ++i) {
        switch (random() % 5) {
        case 0:
            SetZoom(kZoomLadder[3 + random() % 16]);
            break;
        case 1:
            DragDisplay(dialog, {200, 150},
                        {static_cast<LONG>(random() % 400), static_cast<LONG>(random() % 300)});
            break;
        case 2:
            SetWindowPos(dialog.display, nullptr, 0, 0, 150 + static_cast<int>(random() % 300),
                         120 + static_cast<int>(random() % 250), SWP_NOMOVE | SWP_NOZORDER);
            break;
        case 3:
            WheelDisplay(dialog, 100, 80, random() % 2 ? 120 : -120);
            break;
        case 4: {
            const RECT part = {30, 30, 30 + static_cast<LONG>(random() % 90), 60};
            InvalidateRect(dialog.display, &part, FALSE);
            break;
        }
        }
        ASSERT_EQ(WrongPixels(Show()), 0) << "step " << i;
    }
}

TEST_F(DisplayPainting, OnlyWhatIsInvalidIsDrawn) {
    Open();
    Show();
    gFakePreview.paintings = 0;
    UpdateWindow(dialog.display);
    EXPECT_EQ(gFakePreview.paintings, 0);
    const RECT surroundless = {10, 10, 20, 20};
    InvalidateRect(dialog.display, &surroundless, FALSE);
    UpdateWindow(dialog.display);
    EXPECT_EQ(gFakePreview.paintings, 1);
    EXPECT_FALSE(GetUpdateRect(dialog.display, nullptr, FALSE));
}

TEST_F(DisplayPainting, TheBorderMarksTheFocus) {
    Open();
    SetFocus(dialog.display);
    EXPECT_EQ(PixelAt(Show(), 0, 40), PixelOfSystemColor(COLOR_HIGHLIGHT));
    SetFocus(GetDlgItem(dialog.window, 2));
    const Picture picture = Show();
    for (const auto &[x, y] : {std::pair{0, 40}, {401, 40}, {40, 0}, {40, 301}})
        EXPECT_EQ(PixelAt(picture, x, y), PixelOfSystemColor(COLOR_BTNSHADOW));
    EXPECT_EQ(WrongPixels(picture), 0);
}

TEST_F(DisplayPainting, TheWaitForTheTableIsTold) {
    ASSERT_TRUE(OpenViewDialog(&dialog, kImage));
    const Picture waiting = Show();
    const int wrong = WrongPixels(waiting);
    EXPECT_GT(wrong, 1000);
    EXPECT_EQ(PixelAt(waiting, 5, 5), ExpectedPixel(CurrentPreviewGeometry(), 5, 5));
    SetLightSources(&dialog, nullptr, 0);
    EXPECT_EQ(WrongPixels(Show()), 0) << "the text goes when the table is there";
}

TEST_F(DisplayPainting, TheDragRectangleComesAndGoes) {
    Open();
    SelectViewTool(kToolZoom);
    PumpMessages();
    Show();
    SendMouse(dialog.display, WM_LBUTTONDOWN, 50, 50, MK_LBUTTON);
    for (const POINT point : {POINT{300, 200}, POINT{120, 90}, POINT{20, 30}, POINT{150, 100}}) {
        SendMouse(dialog.display, WM_MOUSEMOVE, point.x, point.y, MK_LBUTTON);
        const Picture picture = Show();
        const int perimeter = 2 * (std::abs(point.x - 50) + std::abs(point.y - 50));
        EXPECT_NEAR(WrongPixels(picture), perimeter, 4) << "the outline and nothing else";
        std::set<uint32_t> colors;
        for (int x = std::min<int>(50, point.x) + 1; x < std::max<int>(50, point.x); ++x)
            colors.insert(PixelAt(picture, x, 50));
        EXPECT_EQ(colors, (std::set<uint32_t>{0, 0xFFFFFF})) << "black and white dashes";
    }
    const Picture before = Show();
    SendMessageA(dialog.display, WM_TIMER, kRectangleTimer, 0);
    const Picture after = Show();
    EXPECT_NE(before.pixels, after.pixels) << "the dashes move";
    ReleaseCapture();
    EXPECT_EQ(WrongPixels(Show()), 0);
}

TEST_F(DisplayPainting, PrintingDrawsEverything) {
    Open();
    Show();
    const HDC window = GetDC(dialog.display), memory = CreateCompatibleDC(window);
    const HBITMAP bitmap = CreateCompatibleBitmap(window, 402, 302);
    for (const UINT message : {WM_PRINTCLIENT, WM_PRINT}) {
        const HGDIOBJ old = SelectObject(memory, bitmap);
        PatBlt(memory, 0, 0, 402, 302, BLACKNESS);
        SendMessageA(dialog.display, message, reinterpret_cast<WPARAM>(memory), PRF_CLIENT);
        int wrong = 0;
        const PreviewGeometry view = CurrentPreviewGeometry();
        for (int y = 1; y < 301; y += 7)
            for (int x = 1; x < 401; x += 7)
                wrong += PixelOf(GetPixel(memory, x, y)) != ExpectedPixel(view, x, y);
        EXPECT_EQ(wrong, 0);
        SelectObject(memory, old);
    }
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(dialog.display, window);
}

TEST_F(DisplayPainting, WithoutAPictureTheSurroundIsShown) {
    gFakePreview.paintFails = true;
    Open();
    EXPECT_EQ(PixelAt(Show(), 201, 151), kSurroundPixel);
}

// Every creation of a drawing object fails once, at attaching and at the first paintings; the display goes
// on, shows the picture as soon as it can, and gives everything back.
TEST_F(DisplayPainting, FailingSystemCallsLeaveADisplayThatWorks) {
    int reported = 0;
    for (int n = 1; n <= 6; ++n) {
        FailSystemCall(kAnyDrawingCall, n, 0);
        Open();
        EXPECT_EQ(WrongPixels(Show()), 0) << "creation " << n;
        FailSystemCall(kAnyDrawingCall, 0, 0);
        InvalidateRect(dialog.display, nullptr, FALSE);
        EXPECT_EQ(WrongPixels(Show()), 0) << "creation " << n;
        CloseViewDialog(&dialog);
        EXPECT_EQ(LiveDrawingObjects(), 0) << "creation " << n;
        for (const auto &report : TakeReports()) {
            EXPECT_EQ(report.message.rfind("Could not create ", 0), 0u) << report.message;
            EXPECT_EQ(report.record.kind, kSystemError);
            ++reported;
        }
    }
    EXPECT_EQ(reported, 4) << "the four regions";
}

TEST_F(DisplayPainting, OpeningAndClosingManyTimesLeavesNothing) {
    for (int i = 0; i < 30; ++i) {
        Open();
        SetZoom(300.0);
        Show();
        CloseViewDialog(&dialog);
        ASSERT_EQ(LiveDrawingObjects(), 0);
    }
    EXPECT_EQ(gFakePreview.starts, 30);
    EXPECT_EQ(gFakePreview.stops, 30);
}

TEST_F(DisplayPainting, ATaskThatDoesNotStartLeavesAnEmptyDisplay) {
    gFakePreview.startFails = true;
    EXPECT_FALSE(OpenViewDialog(&dialog, kImage));
    EXPECT_NE(gPreviewDisplay.window, nullptr);
    Show();
    EXPECT_FALSE(AttachPreviewDisplay(dialog.window, {}, nullptr)) << "one display at a time";
}

} // namespace
