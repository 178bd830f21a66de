// The Hide Effects and Show Hidden Effects tools on a table of known lights.
#include "tests/support/RecordingDiag.h"
#include "tests/support/WindowPicture.h"
#include "tests/view/FakePreview.h"
#include "tests/view/ViewDialog.h"

#include "storage/UISettings.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

constexpr IntRect kImage = {0, 0, 4000, 3000};

LightSource Light(int32_t x, int32_t y, uint32_t state = 1, uint32_t saved = 1) {
    LightSource source = {};
    source.X = x;
    source.Y = y;
    source.RadiusSquared = 9;
    source.State = state;
    source.SavedState = saved;
    return source;
}

class HideTool : public testing::Test {
protected:
    ViewDialog dialog;
    std::vector<LightSource> lights;

    void SetUp() override {
        gFakePreview = {};
        SetViewTool(kToolPan);
        ASSERT_TRUE(OpenViewDialog(&dialog, kImage));
    }
    void TearDown() override {
        CloseViewDialog(&dialog);
        EXPECT_TRUE(TakeReports().empty());
    }
    // Lights at the given client points of the present view.
    void PutLights(const std::vector<ViewPoint> &clients) {
        lights.clear();
        for (const ViewPoint &client : clients) {
            const ViewPoint place = DocumentFromClient(gViewTools.view, client);
            lights.push_back(Light(place.x, place.y));
        }
        SetLightSources(&dialog, lights.data(), static_cast<uint32_t>(lights.size()));
    }
    void Use(uint32_t tool) {
        SelectViewTool(tool);
        PumpMessages();
        dialog.previewRequests = 0;
    }
    std::vector<uint32_t> States() {
        std::vector<uint32_t> states;
        for (const LightSource &source : lights)
            states.push_back(source.State);
        return states;
    }
    Picture Show() {
        UpdateWindow(dialog.display);
        return CaptureClient(dialog.display);
    }
};

using States_t = std::vector<uint32_t>;

TEST_F(HideTool, ClicksChangeTheNearestLight) {
    PutLights({{100, 100}, {130, 100}, {300, 200}});
    Use(kToolHide);
    ClickDisplay(dialog, 120, 104);
    EXPECT_EQ(States(), (States_t{1, 0, 1}));
    EXPECT_EQ(dialog.previewRequests, 1);
    EXPECT_EQ(gLastHiddenLightSource, 1u);
    ClickDisplay(dialog, 200, 150);
    EXPECT_EQ(States(), (States_t{1, 0, 1})) << "no light within 20 pixels";
    ClickDisplay(dialog, 131, 100);
    EXPECT_EQ(dialog.previewRequests, 1) << "it is hidden already";
    HoldKeys(true, false);
    ClickDisplay(dialog, 112, 100);
    EXPECT_EQ(States(), (States_t{1, 1, 1})) << "Alt brings back the hidden one, though another is nearer";
    EXPECT_EQ(dialog.previewRequests, 2);
}

TEST_F(HideTool, TheShowToolIsTheOtherWayRound) {
    PutLights({{100, 100}, {300, 200}});
    lights[0].State = 0;
    Use(kToolShow);
    ClickDisplay(dialog, 102, 99);
    EXPECT_EQ(States(), (States_t{1, 1}));
    HoldKeys(true, false);
    ClickDisplay(dialog, 300, 201);
    EXPECT_EQ(States(), (States_t{1, 0}));
    lights[0] = Light(lights[0].X, lights[0].Y, 0, 2);
    HoldKeys(false, false);
    ClickDisplay(dialog, 102, 99);
    EXPECT_EQ(lights[0].State, 2u) << "a light comes back as it was";
}

TEST_F(HideTool, ADraggedRectangleChangesAllInside) {
    PutLights({{100, 100}, {150, 140}, {201, 100}, {150, 99}, {200, 160}});
    Use(kToolHide);
    DragDisplay(dialog, {200, 160}, {100, 100});
    EXPECT_EQ(States(), (States_t{0, 0, 1, 1, 0}));
    EXPECT_EQ(dialog.previewRequests, 1);
    DragDisplay(dialog, {200, 160}, {100, 100});
    EXPECT_EQ(dialog.previewRequests, 1) << "nothing was left to hide";
    HoldKeys(true, false);
    DragDisplay(dialog, {90, 90}, {160, 150});
    EXPECT_EQ(States(), (States_t{1, 1, 1, 1, 0}));
    ASSERT_EQ(gFakePreview.changes.size(), 2u);
    EXPECT_EQ(gFakePreview.changes[1].mode, kRestoreHidden);
}

TEST_F(HideTool, NothingIsTouchedBeforeTheTableIsReady) {
    lights = {Light(2000, 1500)};
    gLightSourceTable->records = lights.data();
    gLightSourceTable->Count = 1;
    Use(kToolHide);
    DragDisplay(dialog, {10, 10}, {390, 290});
    ClickDisplay(dialog, 200, 150);
    EXPECT_EQ(States(), (States_t{1}));
    EXPECT_EQ(dialog.previewRequests, 0);
    gLightSourceTable->Count = 0;
}

TEST_F(HideTool, LosingTheCaptureChangesNothing) {
    PutLights({{100, 100}});
    Use(kToolHide);
    SendMouse(dialog.display, WM_LBUTTONDOWN, 50, 50, MK_LBUTTON);
    SendMouse(dialog.display, WM_MOUSEMOVE, 150, 150, MK_LBUTTON);
    EXPECT_TRUE(gPreviewDisplay.marks.inRect);
    EXPECT_EQ(gViewToolInUse, 1);
    ReleaseCapture();
    EXPECT_FALSE(gPreviewDisplay.marks.inRect);
    EXPECT_EQ(States(), (States_t{1}));
    EXPECT_EQ(gViewToolInUse, 0);
}

// The mark is where the light is, only while a press there would change it, and leaves nothing behind.
TEST_F(HideTool, LightsAboutToChangeAreMarked) {
    PutLights({{100, 100}, {300, 200}});
    Use(kToolHide);
    const Picture clean = Show();
    SendMouse(dialog.display, WM_MOUSEMOVE, 105, 95);
    const Picture marked = Show();
    int left = 402, right = 0, top = 302, bottom = 0;
    for (int y = 0; y < marked.height; ++y)
        for (int x = 0; x < marked.width; ++x)
            if (PixelAt(marked, x, y) != PixelAt(clean, x, y)) {
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
            }
    EXPECT_NEAR(left, 91, 1);
    EXPECT_NEAR(right, 109, 1);
    EXPECT_NEAR(top, 91, 1);
    EXPECT_NEAR(bottom, 109, 1);
    EXPECT_EQ(PixelAt(marked, 100, 100), PixelAt(clean, 100, 100)) << "the light itself stays visible";
    SendMouse(dialog.display, WM_MOUSEMOVE, 200, 150);
    EXPECT_EQ(Show().pixels, clean.pixels);
    SendMouse(dialog.display, WM_MOUSEMOVE, 300, 200);
    EXPECT_NE(Show().pixels, clean.pixels);
    SendMessageA(dialog.display, WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(Show().pixels, clean.pixels);
    lights[0].State = 0;
    SendMouse(dialog.display, WM_MOUSEMOVE, 100, 100);
    EXPECT_EQ(Show().pixels, clean.pixels) << "a hidden light cannot be hidden";
    SendMessageA(dialog.display, WM_MOUSELEAVE, 0, 0);
    Use(kToolPan);
    SendMouse(dialog.display, WM_MOUSEMOVE, 300, 200);
    EXPECT_EQ(Show().pixels, clean.pixels) << "the hand changes no light";
}

TEST_F(HideTool, MarksFollowTheViewAndTheChange) {
    PutLights({{200, 150}});
    Use(kToolHide);
    SendMouse(dialog.display, WM_MOUSEMOVE, 200, 150);
    EXPECT_EQ(gPreviewDisplay.marks.single, 0);
    ScrollPreview(100, 0);
    PumpMessages();
    EXPECT_EQ(gPreviewDisplay.marks.single, -1) << "the light has moved away from the pointer";
    ScrollPreview(-100, 0);
    PumpMessages();
    EXPECT_EQ(gPreviewDisplay.marks.single, 0);
    ClickDisplay(dialog, 200, 150);
    UpdateWindow(dialog.display);
    SendMessageA(dialog.display, WM_MOUSELEAVE, 0, 0);
    const Picture clean = Show();
    SendMouse(dialog.display, WM_MOUSEMOVE, 201, 150);
    EXPECT_EQ(Show().pixels, clean.pixels) << "no mark stays on a light that was hidden";
}

TEST_F(HideTool, TheMarkedLightIsTheOneThatChanges) {
    std::mt19937 random(12);
    lights.resize(300);
    for (int i = 0; i < 3000; ++i) {
        for (LightSource &source : lights) {
            source = Light(static_cast<int32_t>(random() % 400), static_cast<int32_t>(random() % 300),
                           random() % 3);
            source.XQuarter = static_cast<int32_t>(random() % 4);
            source.YQuarter = static_cast<int32_t>(random() % 4);
        }
        gLightSourceTable->records = lights.data();
        gLightSourceTable->Count = static_cast<uint32_t>(random() % (lights.size() + 1));
        const int32_t x = static_cast<int32_t>(random() % 400), y = static_cast<int32_t>(random() % 300);
        const double zoom = kZoomLadder[random() % kZoomStepCount];
        const int32_t mode = static_cast<int32_t>(random() % 5);
        const int32_t found = FindLightSourceAt(x, y, zoom, mode);
        std::vector<LightSource> before = lights;
        ASSERT_EQ(SetLightSourceStateAt(x, y, zoom, mode), found);
        for (size_t k = 0; k < lights.size(); ++k) {
            const bool changes = static_cast<int32_t>(k) == found && IsChangedByMode(before[k], mode);
            ASSERT_EQ(lights[k].State != before[k].State, changes) << "step " << i;
        }
    }
    gLightSourceTable->Count = 0;
}

} // namespace
