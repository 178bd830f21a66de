// What the tests of the display and its tools share: a dialog with the display and the controls of the view
// tools on a large image, driven with real messages, and checks at the end that nothing was reported and
// everything given back. The preview's images and its task are stood in for, so that the display can be
// tested to the pixel: the picture is a pattern that tells the document pixel, and every call is kept. So is
// the zoom menu.
#pragma once

#include "engine/table/LightSourceTable.h"
#include "storage/UISettings.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/WindowPicture.h"
#include "ui/display/PreviewDisplay.h"
#include "ui/view/ViewTools.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

struct FakePreview {
    bool startFails = false, paintFails = false;
    int starts = 0, stops = 0, paintings = 0;
    std::vector<int32_t> changeModes; // of ChangeEffectAt and ChangeEffectsInRect
};
extern FakePreview gFakePreview;

// What the user picks from the zoom menu, and the call that was made; items empty when there was none.
struct ZoomMenu {
    int command = 0;
    int x = 0, y = 0;
    UINT flags = 0;
    HWND owner = nullptr;
    std::map<int, std::string> items; // command and label
    int separators = 0;
};
extern ZoomMenu gZoomMenu;

constexpr uint32_t kSurroundPixel = 0x606060;
// What a client pixel of a view must show, 0xRRGGBB.
uint32_t PatternPixel(const PreviewGeometry &view, int32_t x, int32_t y);

constexpr IntRect kTestImage = {0, 0, 4000, 3000};
constexpr int kDisplayWidth = 402, kDisplayHeight = 302;

class ViewTest : public testing::Test {
protected:
    static inline HWND window, display, button;        // the last takes the focus off the display
    static inline int previewRequests;                 // kMsgRequestPreview handled
    static inline PreviewGeometry lastRequest;         // what the last one would have shown
    static inline std::map<int, ToolPicture> pictures; // shown last, by control

    void SetUp() override;
    void TearDown() override;
    // Every message that waits is handled. False when the display could not be attached.
    static bool Open(const IntRect &image = kTestImage);
    static void Close();
    // Makes `sources` the light source table, and announces it.
    static void SetLightSources(std::vector<LightSource> *sources = nullptr);
    static void OpenReady(const IntRect &image = kTestImage) {
        ASSERT_TRUE(Open(image));
        SetLightSources();
        UpdateWindow(display);
    }
    static void Use(uint32_t tool) {
        SelectViewTool(tool);
        PumpMessages();
        previewRequests = 0;
    }
    static void Press(int x, int y) { SendMouse(display, WM_LBUTTONDOWN, {x, y}, MK_LBUTTON); }
    static void Move(int x, int y) { SendMouse(display, WM_MOUSEMOVE, {x, y}, MK_LBUTTON); }
    static void Release(int x, int y) { SendMouse(display, WM_LBUTTONUP, {x, y}); }
    static void Click(int x, int y) { ClickAt(display, {x, y}); }
    static void Drag(POINT from, POINT to) { DragOn(display, from, to); }
    static void Wheel(int x, int y, int delta, WPARAM keys = 0) { TurnWheel(display, {x, y}, delta, keys); }
    // The one report since the last call.
    static void ExpectReport(uint32_t site, const char *message) {
        const auto reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u) << message;
        EXPECT_EQ(reports[0].record.line, site);
        EXPECT_EQ(reports[0].message, message);
    }

    static PreviewGeometry View() { return CurrentPreviewGeometry(); }
    static ViewPoint PlaceAt(int x, int y) { return DocumentFromClient(gViewTools.view, {x, y}); }
    // The place of the image, to a pixel.
    static void ExpectPlaceAt(int x, int y, ViewPoint place) {
        EXPECT_NEAR(PlaceAt(x, y).x, place.x, 1);
        EXPECT_NEAR(PlaceAt(x, y).y, place.y, 1);
    }
    static void ExpectCenter(int32_t x, int32_t y) {
        EXPECT_EQ(View().centerX, x);
        EXPECT_EQ(View().centerY, y);
    }
    // Paints only what is invalid.
    static Picture Show() {
        UpdateWindow(display);
        return CaptureClient(display);
    }
    static int WrongPixels(const Picture &picture);
};
