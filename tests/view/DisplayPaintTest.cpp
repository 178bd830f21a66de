// What the display shows, to the pixel, and what it takes from the system.
#include "tests/view/ViewFixture.h"
#include "ui/display/PreviewDisplayPaint.h"
#include "ui/display/PreviewDisplayState.h"

#include <random>
#include <set>

namespace {

uint32_t PixelOf(COLORREF color) {
    return static_cast<uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
}

class DisplayPainting : public ViewTest {};

// Only what became invalid is drawn, so any strip that is moved or forgotten shows as a wrong pixel.
TEST_F(DisplayPainting, NothingStaleAfterPanningZoomingAndResizing) {
    OpenReady();
    Use(kToolPan);
    std::mt19937 random(31);
    for (int i = 0; i < 60; ++i) {
        switch (random() % 5) {
        case 0:
            SetZoom(kZoomLadder[3 + random() % 16]);
            break;
        case 1:
            Drag({200, 150}, {static_cast<LONG>(random() % 400), static_cast<LONG>(random() % 300)});
            break;
        case 2:
            SetWindowPos(display, nullptr, 0, 0, 150 + static_cast<int>(random() % 300),
                         120 + static_cast<int>(random() % 250), SWP_NOMOVE | SWP_NOZORDER);
            break;
        case 3:
            Wheel(100, 80, random() % 2 ? 120 : -120);
            break;
        case 4: {
            const RECT part = {30, 30, 30 + static_cast<LONG>(random() % 90), 60};
            InvalidateRect(display, &part, FALSE);
            break;
        }
        }
        ASSERT_EQ(WrongPixels(Show()), 0) << "step " << i;
    }
}

decltype(&GetUpdateRgn) gGetUpdateRgn;
int WINAPI InvalidateAfterwards(HWND window, HRGN region, BOOL erase) {
    const RECT part = {300, 200, 320, 210};
    const int kind = gGetUpdateRgn(window, region, erase);
    InvalidateRect(window, &part, FALSE);
    return kind;
}

TEST_F(DisplayPainting, WhatBecomesInvalidMeanwhileIsNotLost) {
    OpenReady();
    Show();
    host::ImportHooks hooks;
    gGetUpdateRgn =
        host::ReplaceImport(GetModuleHandleA(nullptr), "GetUpdateRgn", InvalidateAfterwards, &hooks);
    ASSERT_NE(gGetUpdateRgn, nullptr);
    SendMessageA(display, WM_PAINT, 0, 0);
    host::RestoreImports(&hooks);
    RECT invalid = {};
    EXPECT_TRUE(GetUpdateRect(display, &invalid, FALSE));
    EXPECT_EQ(invalid.left, 300);
}

TEST_F(DisplayPainting, TheBorderMarksTheFocusAndTheSurroundIsNeutral) {
    OpenReady({0, 0, 120, 90});
    SetFocus(display);
    EXPECT_EQ(PixelAt(Show(), 0, 40), PixelOf(GetSysColor(COLOR_HIGHLIGHT)));
    SetFocus(button);
    const Picture picture = Show();
    for (const auto &[x, y] : {std::pair{0, 40}, {401, 40}, {40, 0}, {40, 301}})
        EXPECT_EQ(PixelAt(picture, x, y), PixelOf(GetSysColor(COLOR_BTNSHADOW)));
    EXPECT_EQ(PixelAt(picture, 3, 3), kSurroundPixel);
    EXPECT_NE(PixelAt(picture, 201, 151), kSurroundPixel);
    EXPECT_EQ(WrongPixels(picture), 0);
    const HDC dc = GetDC(display); // printed over what is no longer there
    PatBlt(dc, 0, 0, kDisplayWidth, kDisplayHeight, WHITENESS);
    SendMessageA(display, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
    ReleaseDC(display, dc);
    EXPECT_EQ(CaptureClient(display).pixels, picture.pixels);
    gFakePreview.paintFails = true;
    InvalidateRect(display, nullptr, FALSE);
    EXPECT_EQ(PixelAt(Show(), 201, 151), kSurroundPixel) << "there is no picture";
}

TEST_F(DisplayPainting, TheWaitForTheTableIsTold) {
    Open();
    EXPECT_STREQ(PreviewLabel(), "Locating Light Sources In Image...");
    const Picture waiting = Show();
    EXPECT_GT(WrongPixels(waiting), 1000);
    EXPECT_EQ(PixelAt(waiting, 5, 5), PatternPixel(View(), 5, 5));
    SetLightSources();
    EXPECT_EQ(WrongPixels(Show()), 0) << "the text goes when the table is there";
}

TEST_F(DisplayPainting, TheDragRectangleComesAndGoes) {
    OpenReady();
    Press(50, 50);
    for (const POINT point : {POINT{300, 200}, POINT{120, 90}, POINT{20, 30}, POINT{150, 100}}) {
        Move(point.x, point.y);
        const Picture picture = Show();
        const int perimeter = 2 * (std::abs(point.x - 50) + std::abs(point.y - 50));
        EXPECT_NEAR(WrongPixels(picture), perimeter, 4) << "the outline and nothing else";
        std::set<uint32_t> colors;
        for (int x = std::min<int>(50, point.x) + 1; x < std::max<int>(50, point.x); ++x)
            colors.insert(PixelAt(picture, x, 50));
        EXPECT_EQ(colors, (std::set<uint32_t>{0, 0xFFFFFF})) << "black and white dashes";
    }
    const Picture before = Show();
    SendMessageA(display, WM_TIMER, kRectangleTimer, 0);
    EXPECT_NE(before.pixels, Show().pixels) << "the dashes move";
    ReleaseCapture();
    EXPECT_EQ(WrongPixels(Show()), 0);
}

// Every creation of a drawing object fails once, at attaching and at the first paintings; the display goes
// on, shows the picture as soon as it can, and gives everything back.
TEST_F(DisplayPainting, FailingSystemCallsLeaveADisplayThatWorks) {
    int reported = 0;
    for (int n = 1; n <= 6; ++n) {
        FailSystemCall(kAnyDrawingCall, n, 0);
        OpenReady();
        EXPECT_EQ(WrongPixels(Show()), 0) << "creation " << n;
        FailSystemCall(kAnyDrawingCall, 0, 0);
        SetZoom(300.0);
        EXPECT_EQ(WrongPixels(Show()), 0) << "creation " << n;
        Close();
        EXPECT_EQ(LiveDrawingObjects(), 0) << "creation " << n;
        for (const auto &report : TakeReports()) {
            EXPECT_EQ(report.message.rfind("Could not create ", 0), 0u) << report.message;
            EXPECT_EQ(report.record.kind, kSystemError);
            ++reported;
        }
    }
    EXPECT_EQ(reported, 4) << "the four regions";
    OpenReady();
    const std::pair<uint32_t, const char *> combinations[] = {{952, "ImageRegion and UpdateRegion."},
                                                              {963, "DisplayRegion and ImageRegion."},
                                                              {967, "FillRegion and UpdateRegion."}};
    for (int n = 1; const auto &[site, regions] : combinations) {
        FailSystemCall("CombineRgn", n++, 0);
        InvalidateRect(display, nullptr, FALSE);
        Show();
        ExpectReport(site, (std::string("Could not combine ") + regions).c_str());
    }
    EXPECT_EQ(gFakePreview.starts, 7);
    EXPECT_EQ(gFakePreview.stops, 6);
}

TEST_F(DisplayPainting, ATaskThatDoesNotStartLeavesAnEmptyDisplay) {
    gFakePreview.startFails = true;
    EXPECT_FALSE(Open());
    EXPECT_STREQ(PreviewLabel(), "The preview could not be started. All settings work without it.");
    EXPECT_NE(gPreviewDisplay.window, nullptr);
    Show();
    EXPECT_FALSE(AttachPreviewDisplay(window, {}, nullptr)) << "one display at a time";
}

} // namespace
