// Mouse, keys and wheel on the display.
#include "tests/view/ViewFixture.h"
#include "ui/display/PreviewDisplayCursor.h"
#include "ui/display/PreviewDisplayKeys.h"
#include "ui/display/PreviewDisplayMarks.h"
#include "ui/display/PreviewDisplayMouse.h"
#include "ui/display/PreviewDisplayState.h"

#include <random>

namespace {

class DisplayInput : public ViewTest {
protected:
    void SetUp() override {
        ViewTest::SetUp();
        Open();
    }

    int32_t State() { return gPreviewDisplay.mouse.state; }
    void KeyDown(WPARAM key) { SendMessageA(display, WM_KEYDOWN, key, 1); }
    void KeyUp(WPARAM key) {
        SendMessageA(display, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
        PumpMessages();
    }
    void Key(WPARAM key) {
        PressKey(display, key);
        PumpMessages();
    }
    // Shown while no button is down: as the record says and in the window's class.
    void ExpectCursor(DisplayCursor cursor) {
        EXPECT_EQ(gPreviewDisplay.cursor, cursor);
        EXPECT_EQ(reinterpret_cast<HCURSOR>(GetClassLongPtrA(display, GCLP_HCURSOR)),
                  LoadDisplayCursor(cursor));
    }
};

TEST_F(DisplayInput, PressesTakeCaptureFocusAndState) {
    const struct {
        uint32_t tool;
        bool alt, ctrl;
        int32_t state;
    } rows[] = {{kToolZoom, false, false, 5}, {kToolZoom, true, false, 2}, {kToolPan, false, false, 4},
                {kToolPan, false, true, 5},   {kToolPan, true, false, 2},  {kToolZoom, false, true, 5},
                {kToolHide, false, false, 6}, {kToolHide, true, false, 7}, {kToolHide, false, true, 6},
                {kToolShow, false, false, 8}, {kToolShow, true, false, 9}, {kToolNone, false, false, 1}};
    for (const auto &row : rows) {
        gViewTools.tool = row.tool;
        SetFocus(button);
        HoldKeys(row.alt, row.ctrl);
        Press(100, 100);
        EXPECT_EQ(State(), row.state);
        EXPECT_EQ(GetCapture(), display);
        EXPECT_EQ(GetFocus(), display);
        ReleaseCapture();
        EXPECT_EQ(State(), kMouseIdle);
        HoldKeys(false, false);
    }
    PumpMessages();
    previewRequests = 0;
    Drag({10, 10}, {200, 200}); // without a tool
    EXPECT_EQ(View().zoom, 100.0);
    EXPECT_EQ(previewRequests, 0);
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(DisplayInput, InvalidValuesAreReportedAndEndInIdle) {
    gViewTools.tool = 9;
    Press(100, 100);
    EXPECT_EQ(State(), kMouseIdle);
    EXPECT_EQ(GetCapture(), nullptr);
    ExpectReport(1298, "Invalid Tool encountered in event WM_LBUTTONDOWN");
    gPreviewDisplay.mouse.state = 10;
    Move(100, 100);
    EXPECT_EQ(State(), kMouseIdle);
    ExpectReport(484, "Invalid Mouse State encountered in event WM_MOUSEMOVE");
    gPreviewDisplay.mouse.state = -1;
    SendMessageA(display, WM_CAPTURECHANGED, 0, 0);
    EXPECT_EQ(State(), kMouseIdle);
    ExpectReport(615, "Invalid Mouse State encountered in event WM_CAPTURECHANGED");
}

TEST_F(DisplayInput, ClicksZoomAboutTheirPoint) {
    const ViewPoint place = PlaceAt(310, 40);
    Click(310, 40);
    EXPECT_EQ(View().zoom, 200.0);
    ExpectPlaceAt(310, 40, place);
    EXPECT_EQ(previewRequests, 1);
    HoldKeys(true, false);
    Click(310, 40);
    EXPECT_EQ(View().zoom, 100.0);
    ExpectPlaceAt(310, 40, place);
    // Pan with the keys is the zoom tool.
    HoldKeys(false, true);
    Use(kToolPan);
    Click(20, 280);
    EXPECT_EQ(View().zoom, 200.0);
    // A hand that trembles still clicks.
    HoldKeys(false, false);
    Use(kToolZoom);
    Drag({100, 100}, {102, 101});
    EXPECT_EQ(View().zoom, 300.0);
}

TEST_F(DisplayInput, ADraggedRectangleStaysOnTheDisplayAndThenFillsIt) {
    Press(200, 150);
    Move(5000, -5000);
    IntRect rect = {};
    ASSERT_TRUE(DragRectangle(&rect));
    EXPECT_TRUE(rect.left == 200 && rect.right == 402 && rect.top == 0 && rect.bottom == 151);
    ReleaseCapture();
    EXPECT_FALSE(DragRectangle(&rect));
    EXPECT_EQ(View().zoom, 100.0) << "a gesture whose capture was lost does nothing";
    const ViewPoint middle = PlaceAt(150, 125);
    Drag({101, 101}, {200, 150}); // the wider side decides
    EXPECT_DOUBLE_EQ(View().zoom, 400.0);
    ExpectPlaceAt(200, 150, middle);
}

// Beyond the image's edge the hand leaves the picture behind, and finds the same place again on its way back.
TEST_F(DisplayInput, PanningFollowsTheHandOneToOne) {
    Use(kToolPan);
    const PreviewGeometry start = View();
    Press(200, 150);
    EXPECT_EQ(gPreviewDisplay.dragCursor, kCursorClosedHand);
    EXPECT_EQ(GetCursor(), LoadDisplayCursor(kCursorClosedHand));
    EXPECT_EQ(reinterpret_cast<HCURSOR>(GetClassLongPtrA(display, GCLP_HCURSOR)),
              LoadDisplayCursor(kCursorClosedHand));
    std::mt19937 random(3);
    for (int i = 0; i < 20; ++i) {
        const int x = static_cast<int>(random() % 900) - 200, y = static_cast<int>(random() % 900) - 200;
        Move(x, y);
        SendMessageA(display, WM_TIMER, kPanTimer, 0);
        ExpectCenter(start.centerX - (x - 200), start.centerY - (y - 150));
    }
    Release(190, 145);
    ExpectCenter(start.centerX + 10, start.centerY + 5);
    ExpectCursor(kCursorOpenHand);
    PumpMessages();
    EXPECT_GE(previewRequests, 1);
    CenterPreview(300, 300);
    Press(200, 150);
    Move(900, 900);
    SendMessageA(display, WM_TIMER, kPanTimer, 0);
    ExpectCenter(200, 150);
    Release(210, 150);
    ExpectCenter(290, 300);
}

TEST_F(DisplayInput, ATimerPansWhileTheHandDoesAndTheLastPlaceIsAskedFor) {
    Use(kToolPan);
    const int32_t start = View().centerX;
    Press(200, 150);
    Move(195, 150);
    EXPECT_EQ(View().centerX, start);
    PumpFor(100);
    EXPECT_EQ(View().centerX, start + 5) << "the panning timer moves the view";
    const auto moveTo = [&](int x) {
        Move(x, 150);
        SendMessageA(display, WM_TIMER, kPanTimer, 0);
        PumpMessages();
    };
    moveTo(190);
    moveTo(180);
    const int32_t resting = View().centerX;
    PumpFor(120);
    EXPECT_EQ(lastRequest.centerX, resting) << "while the hand rests";
    moveTo(170);
    moveTo(160);
    Release(160, 150);
    PumpMessages();
    EXPECT_EQ(lastRequest.centerX, resting + 20) << "when it lets go";
    EXPECT_FALSE(KillTimer(display, kPanTimer));
}

TEST_F(DisplayInput, LostCaptureAndEscapeEndAGesture) {
    for (const uint32_t tool : {kToolPan, kToolZoom, kToolHide, kToolShow}) {
        Use(tool);
        Press(200, 150);
        Move(100, 100);
        EXPECT_TRUE(CancelPreviewGesture());
        EXPECT_EQ(State(), kMouseIdle);
        EXPECT_EQ(GetCapture(), nullptr);
        EXPECT_FALSE(CancelPreviewGesture());
        Release(100, 100);
        EXPECT_EQ(View().zoom, 100.0);
    }
    Press(200, 150);
    Key(VK_ESCAPE);
    EXPECT_EQ(State(), kMouseIdle);
    Press(200, 150);
    DestroyWindow(display); // in the middle of a gesture
    EXPECT_EQ(gPreviewDisplay.window, nullptr);
    EXPECT_EQ(gFakePreview.stops, 1);
}

TEST_F(DisplayInput, TheWheelZoomsAboutThePointer) {
    const ViewPoint place = PlaceAt(310, 40);
    Wheel(310, 40, 120);
    EXPECT_EQ(View().zoom, 200.0);
    ExpectPlaceAt(310, 40, place);
    // A fine wheel zooms after a whole turn, and its rest does not survive a change of direction.
    ShowActualPixels();
    const struct {
        int delta;
        double zoom;
    } turns[] = {{50, 100}, {50, 100}, {30, 200}, {-100, 200}, {360, 600}};
    for (const auto &turn : turns) {
        Wheel(100, 100, turn.delta);
        EXPECT_EQ(View().zoom, turn.zoom) << turn.delta;
    }
}

TEST_F(DisplayInput, TheWheelScrollsWithCtrlAndShift) {
    const PreviewGeometry start = View();
    Wheel(100, 100, 120, MK_CONTROL);
    Wheel(100, 100, -240, MK_SHIFT);
    ExpectCenter(start.centerX + 80, start.centerY - 30);
    SendMessageA(display, WM_MOUSEHWHEEL, MAKEWPARAM(0, 120), 0);
    for (int i = 0; i < 120; ++i) // a fine wheel scrolls as far as a coarse one
        Wheel(100, 100, 1, MK_CONTROL);
    ExpectCenter(start.centerX + 120, start.centerY - 60);
    // Beside the display the wheel is not ours.
    EXPECT_FALSE(OnPreviewWheel(MAKEWPARAM(0, 120), MAKELPARAM(1, 1)));
    Wheel(500, 100, 120);
    EXPECT_EQ(View().zoom, 100.0);
}

TEST_F(DisplayInput, KeysScroll) {
    const PreviewGeometry start = View();
    const struct {
        WPARAM key;
        bool ctrl;
        int32_t x, y;
    } keys[] = {{VK_LEFT, false, -40, 0}, {VK_RIGHT, false, 0, 0},    {VK_UP, false, 0, -30},
                {VK_DOWN, false, 0, 0},   {VK_PRIOR, false, 0, -300}, {VK_NEXT, false, 0, 0},
                {VK_NEXT, true, 400, 0},  {VK_PRIOR, true, 0, 0}};
    for (const auto &row : keys) {
        previewRequests = 0;
        HoldKeys(false, row.ctrl);
        Key(row.key);
        ExpectCenter(start.centerX + row.x, start.centerY + row.y);
        EXPECT_EQ(previewRequests, 1);
    }
    HoldKeys(false, false);
    Key(VK_HOME);
    ExpectCenter(200, 150);
    Key(VK_END);
    ExpectCenter(3800, 2850);
    previewRequests = 0;
    Key(VK_RIGHT);
    EXPECT_EQ(previewRequests, 0) << "there is nothing further right";
}

TEST_F(DisplayInput, TheSpaceBarIsThePanTool) {
    KeyDown(VK_SPACE);
    ExpectCursor(kCursorOpenHand);
    Press(200, 150);
    EXPECT_EQ(State(), kMousePan);
    Release(200, 150);
    EXPECT_EQ(gViewTools.tool, kToolZoom) << "the tool itself stays";
    KeyUp(VK_SPACE);
    ExpectCursor(kCursorZoomIn);
    // The key comes up elsewhere: in another application, or another control.
    KeyDown(VK_SPACE);
    SendMessageA(window, WM_ACTIVATEAPP, FALSE, 0);
    ExpectCursor(kCursorZoomIn);
    KeyDown(VK_SPACE);
    SetFocus(display);
    SetFocus(button);
    ExpectCursor(kCursorZoomIn);
    BYTE keys[256] = {}; // and nobody has told us
    keys[VK_SPACE] = 0x80;
    SetKeyboardState(keys);
    KeyDown(VK_SPACE);
    ExpectCursor(kCursorOpenHand);
    HoldKeys(false, false);
    keys[VK_SPACE] = 0;
    SetKeyboardState(keys);
    Press(200, 150);
    EXPECT_EQ(State(), kMouseZoomIn);
    Release(200, 150);
}

TEST_F(DisplayInput, AnswersOfTheControlAndItsCursors) {
    EXPECT_EQ(SendMessageA(display, WM_GETDLGCODE, 0, 0), 257);
    EXPECT_EQ(SendMessageA(display, WM_ERASEBKGND, 0, 0), 1);
    EXPECT_EQ(SendMessageA(display, WM_NCHITTEST, 0, 0), 1);
    for (int a = 0; a < kDisplayCursorCount; ++a)
        for (int b = 0; b < a; ++b)
            EXPECT_NE(LoadDisplayCursor(static_cast<DisplayCursor>(a)),
                      LoadDisplayCursor(static_cast<DisplayCursor>(b)));
}

} // namespace
