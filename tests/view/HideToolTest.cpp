// The Hide Effects and Show Hidden Effects tools on a table of known lights.
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "tests/view/ViewFixture.h"
#include "ui/display/PreviewDisplayState.h"

#include <vector>

namespace {

using States = std::vector<uint32_t>;

LightSource Light(int32_t x, int32_t y, uint32_t state = 1, uint32_t saved = 1) {
    LightSource source = {};
    source.X = x;
    source.Y = y;
    source.RadiusSquared = 9;
    source.State = state;
    source.SavedState = saved;
    return source;
}

class HideTool : public ViewTest {
protected:
    std::vector<LightSource> lights;

    void SetUp() override {
        ViewTest::SetUp();
        Open();
    }
    // Lights at the given client points of the present view.
    void PutLights(const std::vector<ViewPoint> &clients) {
        lights.clear();
        for (const ViewPoint &client : clients)
            lights.push_back(Light(PlaceAt(client.x, client.y).x, PlaceAt(client.x, client.y).y));
        SetLightSources(&lights);
    }
    States Now() {
        States states;
        for (const LightSource &source : lights)
            states.push_back(source.State);
        return states;
    }
    Picture ShowAt(int x, int y) {
        SendMouse(display, WM_MOUSEMOVE, {x, y});
        return Show();
    }
    void LeaveDisplay() { SendMessageA(display, WM_MOUSELEAVE, 0, 0); }
};

TEST_F(HideTool, ClicksChangeTheNearestLight) {
    PutLights({{100, 100}, {130, 100}, {300, 200}});
    Use(kToolHide);
    Click(120, 104);
    EXPECT_EQ(Now(), (States{1, 0, 1}));
    EXPECT_EQ(previewRequests, 1);
    Click(200, 150);
    EXPECT_EQ(Now(), (States{1, 0, 1})) << "no light within 20 pixels";
    Click(131, 100);
    EXPECT_EQ(previewRequests, 1) << "it is hidden already";
    HoldKeys(true, false);
    Click(112, 100);
    EXPECT_EQ(Now(), (States{1, 1, 1})) << "Alt brings back the hidden one, though another is nearer";
    EXPECT_EQ(previewRequests, 2);
}

TEST_F(HideTool, ADraggedRectangleChangesAllInside) {
    PutLights({{100, 100}, {150, 140}, {201, 100}, {150, 99}, {200, 160}});
    Use(kToolHide);
    Drag({200, 160}, {100, 100});
    EXPECT_EQ(Now(), (States{0, 0, 1, 1, 0}));
    EXPECT_EQ(previewRequests, 1);
    Drag({200, 160}, {100, 100});
    EXPECT_EQ(previewRequests, 1) << "nothing was left to hide";
    HoldKeys(true, false);
    Drag({90, 90}, {160, 150});
    EXPECT_EQ(Now(), (States{1, 1, 1, 1, 0}));
    Use(kToolShow);
    Drag({90, 90}, {160, 150});
    EXPECT_EQ(gFakePreview.changeModes, (std::vector<int32_t>{kHideEffect, kRestoreHidden, kHideEffect}));
}

TEST_F(HideTool, NothingChangesBeforeTheTableIsReadyOrWithoutTheCapture) {
    lights = {Light(2000, 1500)};
    gLightSourceTable->records = lights.data();
    gLightSourceTable->Count = 1;
    Use(kToolHide);
    Drag({10, 10}, {390, 290});
    Click(200, 150);
    EXPECT_EQ(Now(), (States{1}));
    EXPECT_EQ(previewRequests, 0);
    SetLightSources(&lights);
    Press(50, 50);
    Move(350, 250);
    EXPECT_TRUE(gPreviewDisplay.marks.inRect);
    EXPECT_GT(WrongPixels(Show()), 1020) << "the outline, and the mark of the light inside";
    ReleaseCapture();
    EXPECT_FALSE(gPreviewDisplay.marks.inRect);
    EXPECT_EQ(Now(), (States{1}));
}

// The mark is where the light is, only while a press there would change it, and leaves nothing behind.
TEST_F(HideTool, LightsAboutToChangeAreMarked) {
    PutLights({{100, 100}, {300, 200}});
    Use(kToolHide);
    const Picture clean = Show(), marked = ShowAt(105, 95);
    IntRect mark = {402, 302, 0, 0};
    for (int y = 0; y < marked.height; ++y)
        for (int x = 0; x < marked.width; ++x)
            if (PixelAt(marked, x, y) != PixelAt(clean, x, y))
                mark = {std::min(mark.left, x), std::min(mark.top, y), std::max(mark.right, x),
                        std::max(mark.bottom, y)};
    for (const int32_t edge : {mark.left, mark.top})
        EXPECT_NEAR(edge, 91, 1);
    for (const int32_t edge : {mark.right, mark.bottom})
        EXPECT_NEAR(edge, 109, 1);
    EXPECT_EQ(PixelAt(marked, 100, 100), PixelAt(clean, 100, 100)) << "the light itself stays visible";
    EXPECT_EQ(ShowAt(200, 150).pixels, clean.pixels);
    EXPECT_NE(ShowAt(300, 200).pixels, clean.pixels);
    LeaveDisplay();
    EXPECT_EQ(Show().pixels, clean.pixels);
    lights[0].State = 0;
    EXPECT_EQ(ShowAt(100, 100).pixels, clean.pixels) << "a hidden light cannot be hidden";
    LeaveDisplay();
    Use(kToolPan);
    EXPECT_EQ(ShowAt(300, 200).pixels, clean.pixels) << "the hand changes no light";
}

TEST_F(HideTool, MarksFollowTheViewAndTheChange) {
    PutLights({{200, 150}});
    Use(kToolHide);
    ShowAt(200, 150);
    EXPECT_EQ(gPreviewDisplay.marks.single, 0);
    ScrollPreview(100, 0);
    PumpMessages();
    EXPECT_EQ(gPreviewDisplay.marks.single, -1) << "the light has moved away from the pointer";
    ScrollPreview(-100, 0);
    PumpMessages();
    EXPECT_EQ(gPreviewDisplay.marks.single, 0);
    Click(200, 150);
    LeaveDisplay();
    const Picture clean = Show();
    EXPECT_EQ(ShowAt(201, 150).pixels, clean.pixels) << "no mark stays on a light that was hidden";
}

} // namespace
