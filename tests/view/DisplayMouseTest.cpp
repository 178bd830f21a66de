// Mouse, keys and wheel on the display.
#include "tests/support/RecordingDiag.h"
#include "tests/view/FakePreview.h"
#include "tests/view/ViewDialog.h"

#include "storage/UISettings.h"
#include "ui/DialogMessages.h"
#include "ui/PreviewDisplayCursor.h"
#include "ui/PreviewDisplayMouse.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr IntRect kImage = {0, 0, 4000, 3000};

class DisplayInput : public testing::Test {
protected:
    ViewDialog dialog;

    void SetUp() override {
        gFakePreview = {};
        SetViewTool(kToolZoom);
        ASSERT_TRUE(OpenViewDialog(&dialog, kImage));
        TakeReports();
        dialog.previewRequests = 0;
    }
    void TearDown() override {
        CloseViewDialog(&dialog);
        EXPECT_TRUE(TakeReports().empty());
    }

    void Use(uint32_t tool) {
        SelectViewTool(tool);
        PumpMessages();
    }
    ViewPoint PlaceAt(int x, int y) { return DocumentFromClient(gViewTools.view, {x, y}); }
    PreviewGeometry View() { return CurrentPreviewGeometry(); }
    int32_t State() { return gPreviewDisplay.mouse.state; }
    HCURSOR ClassCursor() {
        return reinterpret_cast<HCURSOR>(GetClassLongPtrA(dialog.display, GCLP_HCURSOR));
    }
    void Key(WPARAM key) {
        SendMessageA(dialog.display, WM_KEYDOWN, key, 1);
        SendMessageA(dialog.display, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
        PumpMessages();
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
                {kToolShow, false, false, 8}, {kToolShow, true, false, 9}};
    for (const auto &row : rows) {
        Use(row.tool);
        SetFocus(GetDlgItem(dialog.window, 2));
        HoldKeys(row.alt, row.ctrl);
        SendMouse(dialog.display, WM_LBUTTONDOWN, 100, 100, MK_LBUTTON);
        EXPECT_EQ(State(), row.state);
        EXPECT_EQ(GetCapture(), dialog.display);
        EXPECT_EQ(GetFocus(), dialog.display);
        ReleaseCapture();
        EXPECT_EQ(State(), kMouseIdle);
        HoldKeys(false, false);
    }
}

TEST_F(DisplayInput, APressWithoutAToolDoesNothing) {
    gViewTools.tool = kToolNone;
    DragDisplay(dialog, {10, 10}, {200, 200});
    EXPECT_EQ(View().zoom, 100.0);
    EXPECT_EQ(dialog.previewRequests, 0);
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(DisplayInput, InvalidValuesAreReportedAndEndInIdle) {
    gViewTools.tool = 9;
    SendMouse(dialog.display, WM_LBUTTONDOWN, 100, 100, MK_LBUTTON);
    EXPECT_EQ(State(), kMouseIdle);
    EXPECT_EQ(GetCapture(), nullptr);
    gPreviewDisplay.mouse.state = 10;
    SendMouse(dialog.display, WM_MOUSEMOVE, 100, 100);
    EXPECT_EQ(State(), kMouseIdle);
    gPreviewDisplay.mouse.state = -1;
    SendMessageA(dialog.display, WM_CAPTURECHANGED, 0, 0);
    EXPECT_EQ(State(), kMouseIdle);
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0].record.line, 1298u);
    EXPECT_EQ(reports[0].message, "Invalid Tool encountered in event WM_LBUTTONDOWN");
    EXPECT_EQ(reports[1].record.line, 484u);
    EXPECT_EQ(reports[1].message, "Invalid Mouse State encountered in event WM_MOUSEMOVE");
    EXPECT_EQ(reports[2].record.line, 615u);
    EXPECT_EQ(reports[2].message, "Invalid Mouse State encountered in event WM_CAPTURECHANGED");
}

TEST_F(DisplayInput, ClicksZoomAboutTheirPoint) {
    const ViewPoint place = PlaceAt(310, 40);
    ClickDisplay(dialog, 310, 40);
    EXPECT_EQ(View().zoom, 200.0);
    EXPECT_NEAR(PlaceAt(310, 40).x, place.x, 1);
    EXPECT_NEAR(PlaceAt(310, 40).y, place.y, 1);
    EXPECT_EQ(dialog.previewRequests, 1);
    HoldKeys(true, false);
    ClickDisplay(dialog, 310, 40);
    EXPECT_EQ(View().zoom, 100.0);
    EXPECT_NEAR(PlaceAt(310, 40).x, place.x, 1);
    // Pan with the keys is the zoom tool.
    HoldKeys(false, true);
    Use(kToolPan);
    ClickDisplay(dialog, 20, 280);
    EXPECT_EQ(View().zoom, 200.0);
    // A hand that trembles still clicks.
    HoldKeys(false, false);
    Use(kToolZoom);
    DragDisplay(dialog, {100, 100}, {102, 101});
    EXPECT_EQ(View().zoom, 300.0);
}

TEST_F(DisplayInput, ADraggedRectangleFillsTheDisplay) {
    const ViewPoint corner = PlaceAt(101, 101), opposite = PlaceAt(200, 175);
    DragDisplay(dialog, {101, 101}, {200, 175});
    EXPECT_DOUBLE_EQ(View().zoom, 400.0);
    EXPECT_NEAR(PlaceAt(1, 1).x, corner.x, 1);
    EXPECT_NEAR(PlaceAt(1, 1).y, corner.y, 1);
    EXPECT_NEAR(PlaceAt(400, 300).x, opposite.x, 1);
    EXPECT_NEAR(PlaceAt(400, 300).y, opposite.y, 1);
}

TEST_F(DisplayInput, TheRectangleStaysOnTheDisplay) {
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    SendMouse(dialog.display, WM_MOUSEMOVE, 5000, -5000, MK_LBUTTON);
    IntRect rect = {};
    ASSERT_TRUE(DragRectangle(&rect));
    EXPECT_EQ(rect.left, 200);
    EXPECT_EQ(rect.right, 402);
    EXPECT_EQ(rect.top, 0);
    EXPECT_EQ(rect.bottom, 151);
    ReleaseCapture();
    EXPECT_FALSE(DragRectangle(&rect));
    EXPECT_EQ(View().zoom, 100.0) << "a gesture whose capture was lost does nothing";
}

TEST_F(DisplayInput, PanningFollowsTheHandOneToOne) {
    Use(kToolPan);
    const PreviewGeometry start = View();
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    EXPECT_EQ(gPreviewDisplay.dragCursor, kCursorClosedHand);
    EXPECT_EQ(ClassCursor(), LoadDisplayCursor(kCursorClosedHand));
    std::mt19937 random(3);
    for (int i = 0; i < 20; ++i) {
        const int x = static_cast<int>(random() % 900) - 200, y = static_cast<int>(random() % 900) - 200;
        SendMouse(dialog.display, WM_MOUSEMOVE, x, y, MK_LBUTTON);
        SendMessageA(dialog.display, WM_TIMER, kPanTimer, 0);
        EXPECT_EQ(View().centerX, start.centerX - (x - 200));
        EXPECT_EQ(View().centerY, start.centerY - (y - 150));
    }
    SendMouse(dialog.display, WM_LBUTTONUP, 190, 145);
    EXPECT_EQ(View().centerX, start.centerX + 10);
    EXPECT_EQ(View().centerY, start.centerY + 5);
    EXPECT_EQ(ClassCursor(), LoadDisplayCursor(kCursorOpenHand));
    PumpMessages();
    EXPECT_GE(dialog.previewRequests, 1);
}

// Beyond the image's edge the hand leaves the picture behind, and finds the same place again on its way back.
TEST_F(DisplayInput, PanningStopsAtTheEdge) {
    Use(kToolPan);
    CenterPreview(300, 300);
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    SendMouse(dialog.display, WM_MOUSEMOVE, 900, 900, MK_LBUTTON);
    SendMessageA(dialog.display, WM_TIMER, kPanTimer, 0);
    EXPECT_EQ(View().centerX, 200);
    EXPECT_EQ(View().centerY, 150);
    SendMouse(dialog.display, WM_LBUTTONUP, 210, 150);
    EXPECT_EQ(View().centerX, 290);
    EXPECT_EQ(View().centerY, 300);
}

TEST_F(DisplayInput, TheTimersRunWhileTheGestureLasts) {
    Use(kToolPan);
    const int32_t start = View().centerX;
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    SendMouse(dialog.display, WM_MOUSEMOVE, 180, 150, MK_LBUTTON);
    EXPECT_EQ(View().centerX, start);
    PumpFor(100);
    EXPECT_EQ(View().centerX, start + 20) << "the panning timer moves the view";
    SendMouse(dialog.display, WM_LBUTTONUP, 180, 150);
    EXPECT_FALSE(KillTimer(dialog.display, kPanTimer));
    Use(kToolZoom);
    SendMouse(dialog.display, WM_LBUTTONDOWN, 20, 20, MK_LBUTTON);
    SendMouse(dialog.display, WM_MOUSEMOVE, 80, 80, MK_LBUTTON);
    const int32_t phase = gPreviewDisplay.antsPhase;
    PumpFor(250);
    EXPECT_NE(gPreviewDisplay.antsPhase, phase);
    ReleaseCapture();
    EXPECT_FALSE(KillTimer(dialog.display, kRectangleTimer));
}

TEST_F(DisplayInput, LostCaptureAndEscapeEndAGesture) {
    for (const uint32_t tool : {kToolPan, kToolZoom, kToolHide, kToolShow}) {
        Use(tool);
        SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
        SendMouse(dialog.display, WM_MOUSEMOVE, 100, 100, MK_LBUTTON);
        EXPECT_TRUE(CancelPreviewGesture());
        EXPECT_EQ(State(), kMouseIdle);
        EXPECT_EQ(GetCapture(), nullptr);
        EXPECT_FALSE(CancelPreviewGesture());
        SendMouse(dialog.display, WM_LBUTTONUP, 100, 100);
        EXPECT_EQ(View().zoom, 100.0);
    }
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    Key(VK_ESCAPE);
    EXPECT_EQ(State(), kMouseIdle);
    // Destroyed in the middle of a gesture.
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    DestroyWindow(dialog.display);
    EXPECT_EQ(gPreviewDisplay.window, nullptr);
    EXPECT_EQ(gFakePreview.stops, 1);
}

TEST_F(DisplayInput, TheWheelZoomsAboutThePointer) {
    const ViewPoint place = PlaceAt(310, 40);
    WheelDisplay(dialog, 310, 40, 120);
    EXPECT_EQ(View().zoom, 200.0);
    EXPECT_NEAR(PlaceAt(310, 40).x, place.x, 1);
    EXPECT_NEAR(PlaceAt(310, 40).y, place.y, 1);
    // A fine wheel zooms after a whole turn, and its rest does not survive a change of direction.
    ShowActualPixels();
    for (const int delta : {50, 50})
        WheelDisplay(dialog, 100, 100, delta);
    EXPECT_EQ(View().zoom, 100.0);
    WheelDisplay(dialog, 100, 100, 30);
    EXPECT_EQ(View().zoom, 200.0);
    WheelDisplay(dialog, 100, 100, -100);
    EXPECT_EQ(View().zoom, 200.0);
    WheelDisplay(dialog, 100, 100, 360);
    EXPECT_EQ(View().zoom, 600.0);
}

TEST_F(DisplayInput, TheWheelScrollsWithCtrlAndShift) {
    const PreviewGeometry start = View();
    WheelDisplay(dialog, 100, 100, 120, MK_CONTROL);
    EXPECT_EQ(View().centerY, start.centerY - 30);
    WheelDisplay(dialog, 100, 100, -240, MK_SHIFT);
    EXPECT_EQ(View().centerX, start.centerX + 80);
    EXPECT_EQ(View().zoom, 100.0);
    SendMessageA(dialog.display, WM_MOUSEHWHEEL, MAKEWPARAM(0, 120), 0);
    EXPECT_EQ(View().centerX, start.centerX + 120);
    // A fine wheel scrolls as far as a coarse one.
    for (int i = 0; i < 120; ++i)
        WheelDisplay(dialog, 100, 100, 1, MK_CONTROL);
    EXPECT_EQ(View().centerY, start.centerY - 60);
    // Beside the display the wheel is not ours.
    EXPECT_FALSE(OnPreviewWheel(MAKEWPARAM(0, 120), MAKELPARAM(1, 1)));
    WheelDisplay(dialog, 500, 100, 120);
    EXPECT_EQ(View().zoom, 100.0);
}

TEST_F(DisplayInput, KeysScroll) {
    PreviewGeometry at = View();
    const struct {
        WPARAM key;
        int32_t dx, dy;
    } keys[] = {{VK_LEFT, -40, 0}, {VK_RIGHT, 40, 0},   {VK_UP, 0, -30},
                {VK_DOWN, 0, 30},  {VK_PRIOR, 0, -300}, {VK_NEXT, 0, 300}};
    for (const auto &row : keys) {
        dialog.previewRequests = 0;
        Key(row.key);
        EXPECT_EQ(View().centerX, at.centerX + row.dx);
        EXPECT_EQ(View().centerY, at.centerY + row.dy);
        EXPECT_EQ(dialog.previewRequests, 1);
        at = View();
    }
    HoldKeys(false, true);
    Key(VK_NEXT);
    EXPECT_EQ(View().centerX, at.centerX + 400);
    HoldKeys(false, false);
    Key(VK_HOME);
    EXPECT_EQ(View().centerX, 200);
    EXPECT_EQ(View().centerY, 150);
    Key(VK_END);
    EXPECT_EQ(View().centerX, 3800);
    EXPECT_EQ(View().centerY, 2850);
    dialog.previewRequests = 0;
    Key(VK_RIGHT);
    EXPECT_EQ(dialog.previewRequests, 0) << "there is nothing further right";
}

TEST_F(DisplayInput, TheSpaceBarIsThePanTool) {
    SendMessageA(dialog.display, WM_KEYDOWN, VK_SPACE, 1);
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorOpenHand);
    SendMouse(dialog.display, WM_LBUTTONDOWN, 200, 150, MK_LBUTTON);
    EXPECT_EQ(State(), kMousePan);
    SendMouse(dialog.display, WM_LBUTTONUP, 200, 150);
    EXPECT_EQ(gViewTools.tool, kToolZoom) << "the tool itself stays";
    SendMessageA(dialog.display, WM_KEYUP, VK_SPACE, static_cast<LPARAM>(0xC0000001u));
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorZoomIn);
    // The key comes up elsewhere: in another application, or another control.
    SendMessageA(dialog.display, WM_KEYDOWN, VK_SPACE, 1);
    SendMessageA(dialog.window, WM_ACTIVATEAPP, FALSE, 0);
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorZoomIn);
    SendMessageA(dialog.display, WM_KEYDOWN, VK_SPACE, 1);
    SetFocus(dialog.display);
    SetFocus(GetDlgItem(dialog.window, 2));
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorZoomIn);
}

TEST_F(DisplayInput, AltChangesTheCursorUntilItIsReleased) {
    Use(kToolHide);
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorHide);
    HoldKeys(true, false);
    SendMessageA(dialog.display, WM_SYSKEYDOWN, VK_MENU, 0x20000001);
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorShow);
    EXPECT_EQ(ClassCursor(), LoadDisplayCursor(kCursorShow));
    SendMessageA(dialog.window, WM_ACTIVATEAPP, FALSE, 0);
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorHide) << "another application is active";
    SendMessageA(dialog.display, WM_SETCURSOR, reinterpret_cast<WPARAM>(dialog.display),
                 MAKELPARAM(HTCLIENT, 0));
    EXPECT_EQ(GetCursor(), LoadDisplayCursor(kCursorShow));
    HoldKeys(false, false);
    SendMessageA(dialog.display, WM_SYSKEYUP, VK_MENU, static_cast<LPARAM>(0xC0000001u));
    EXPECT_EQ(gPreviewDisplay.cursor, kCursorHide);
}

TEST_F(DisplayInput, EveryCursorIsAPictureOfItsOwn) {
    for (int a = 0; a < kDisplayCursorCount; ++a)
        for (int b = 0; b < a; ++b)
            EXPECT_NE(LoadDisplayCursor(static_cast<DisplayCursor>(a)),
                      LoadDisplayCursor(static_cast<DisplayCursor>(b)));
}

TEST_F(DisplayInput, AnswersOfTheControl) {
    EXPECT_EQ(SendMessageA(dialog.display, WM_GETDLGCODE, 0, 0), 257);
    EXPECT_EQ(SendMessageA(dialog.display, WM_ERASEBKGND, 0, 0), 1);
    EXPECT_EQ(SendMessageA(dialog.display, WM_NCHITTEST, 0, 0), 1);
}

// Whatever comes, the gesture ends in idle, without capture, and the view stays on the image.
TEST_F(DisplayInput, RandomInputKeepsItsSenses) {
    SetLightSources(&dialog, nullptr, 0);
    std::mt19937 random(99);
    constexpr UINT messages[] = {WM_LBUTTONDOWN, WM_MOUSEMOVE, WM_MOUSEMOVE, WM_LBUTTONUP, WM_MOUSELEAVE};
    constexpr WPARAM keys[] = {VK_LEFT, VK_NEXT, VK_HOME, VK_SPACE, VK_ESCAPE, VK_END, VK_CONTROL};
    for (int i = 0; i < 5000; ++i) {
        const int x = static_cast<int>(random() % 800) - 200, y = static_cast<int>(random() % 600) - 150;
        switch (random() % 8) {
        case 0:
            SelectViewTool(1 + random() % 4);
            break;
        case 1:
            HoldKeys(random() % 3 == 0, random() % 3 == 0);
            break;
        case 2:
            SendMessageA(dialog.display, random() % 2 ? WM_KEYDOWN : WM_KEYUP, keys[random() % 7], 1);
            break;
        case 3:
            WheelDisplay(dialog, x, y, static_cast<int>(random() % 500) - 250, random() % 3 ? 0 : MK_CONTROL);
            break;
        case 4:
            if (random() % 20 == 0)
                ReleaseCapture();
            SendMessageA(dialog.display, WM_TIMER, 1 + random() % 3, 0);
            break;
        default:
            SendMouse(dialog.display, messages[random() % 5], x, y);
        }
        ASSERT_TRUE(IsMouseState(State()));
        ASSERT_EQ(State() != kMouseIdle, GetCapture() == dialog.display) << "step " << i;
        const IntRect in = ImageInClient(View()), d = View().display;
        ASSERT_TRUE(in.left <= d.left || in.right <= d.right + 1) << "step " << i;
        ASSERT_FALSE(IsEmptyRect(IntersectRects(in, d))) << "step " << i;
    }
    CancelPreviewGesture();
    EXPECT_EQ(gViewToolInUse, 0);
}

} // namespace
