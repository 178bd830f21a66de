// The display with the real preview behind it: pictures to look at, left beside the test program, and what
// must hold of them.
#include "engine/InitializationTask.h"
#include "render/RenderDriver.h"
#include "render/shape/AngleTables.h"
#include "tests/support/NightScene.h"
#include "tests/support/PhotoImage.h"
#include "tests/support/PreviewState.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/WindowPicture.h"
#include "tests/view/ViewDialog.h"

#include "storage/UISettings.h"
#include "ui/preview/PreviewRequest.h"
#include "ui/view/ViewTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>

namespace {

constexpr int kWidth = 482, kHeight = 362; // of the display
constexpr ParameterSet kParameters = {{}, 60, 55, 150,           6,  50, 30, 50, 50, 15,
                                      30, 0,  {}, kStandardStar, 50, {}};
bool gPreviewOn = true;

PreviewRequest PresentRequest() {
    return MakePreviewRequest(CurrentPreviewGeometry(), gPreviewOn, kParameters);
}

void SendRequest() {
    RequestPreview(PresentRequest());
}

// The demonstration photo when it was fetched, otherwise a generated night of its size.
void MakeImage(ImageBuffer *image) {
    const std::filesystem::path photo =
        std::filesystem::path(BRILLATRIX_SOURCE_DIR) / "build" / "demo" / "launchpad_dusk.jpg";
    if (ReadPhotoImage(photo, image))
        return;
    ASSERT_EQ(AllocateImageBuffer(kModeRgb8, 1, 0, {0, 0, 640, 427}, false, image, nullptr), kNoError);
    PaintNightScene(MakeSceneLights(640, 427, 40, 3), 0.05, 7, image);
}

class LiveView : public testing::Test {
protected:
    ImageBuffer image = {};
    ViewDialog dialog;

    void SetUp() override {
        gPreviewOn = true;
        ASSERT_NO_FATAL_FAILURE(MakeImage(&image));
        SetImageGeometry(image.bounds);
        BuildAngleTables();
        ResetRenderState();
        StartLightSourceTableInit(image);
        SetViewTool(kToolPan);
        ASSERT_TRUE(OpenViewDialogOn(&dialog, image, kWidth, kHeight));
        dialog.onRequest = SendRequest;
        SetFocus(dialog.display);
        while (!gViewTools.tableReady)
            PumpFor(5);
    }
    void TearDown() override {
        CloseViewDialog(&dialog);
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        FreeRenderState();
        FreeImageBuffer(&image);
        EXPECT_TRUE(TakeReports().empty());
    }

    Picture Capture() {
        PumpMessages();
        SendRequest();
        while (!IsPreviewFinished(PresentRequest()))
            PumpFor(5);
        InvalidateRect(dialog.display, nullptr, FALSE); // the task's own may still be on its way
        UpdateWindow(dialog.display);
        return CaptureClient(dialog.display);
    }
    Picture CaptureOriginal() {
        gPreviewOn = false;
        const Picture picture = Capture();
        gPreviewOn = true;
        return picture;
    }
    // At a zoom that shows the whole image, and back to the view.
    void HideEverything(bool hidden) {
        const PreviewGeometry view = CurrentPreviewGeometry();
        SetZoom(16.0);
        SelectViewTool(kToolHide);
        HoldKeys(!hidden, false);
        DragDisplay(dialog, {1, 1}, {kWidth - 2, kHeight - 2});
        HoldKeys(false, false);
        SelectViewTool(kToolPan);
        SetZoom(view.zoom);
        CenterPreview(view.centerX, view.centerY);
        PumpMessages();
    }
    // The brightest light that has a star is shown in the middle, or as near to it as the image's edge
    // allows.
    ViewPoint ShowBrightest(double zoom) {
        SetZoom(zoom);
        const LightSource &source = GetLightSourceTable().records[BrightestLight()];
        CenterPreview(source.X * zoom / 100.0, source.Y * zoom / 100.0);
        PumpMessages();
        return ClientFromDocument(gViewTools.view, source.X * 4 + source.XQuarter,
                                  source.Y * 4 + source.YQuarter);
    }
    uint32_t BrightestLight() {
        const LightSourceTableView table = GetLightSourceTable();
        for (uint32_t i = 0; i < table.count; ++i)
            if (table.records[i].State != 0)
                return i;
        return 0;
    }
    void Save(const Picture &picture, const char *what, double zoom) {
        char name[60];
        snprintf(name, sizeof name, "preview-%.0f-%s.bmp", zoom, what);
        WriteBmp(picture, ProgramFolder() + name);
    }
};

// Mean difference of two pictures, in levels of 255.
double MeanDifference(const Picture &a, const Picture &b) {
    double sum = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            for (int shift = 0; shift < 24; shift += 8)
                sum += std::abs(static_cast<int>(PixelAt(a, x, y) >> shift & 255) -
                                static_cast<int>(PixelAt(b, x, y) >> shift & 255));
    return sum / (3.0 * a.width * a.height);
}

TEST_F(LiveView, HiddenLightsLeaveTheOriginalAndComeBack) {
    for (const double zoom : {16.0, 100.0, 400.0}) {
        ShowBrightest(zoom);
        const Picture stars = Capture(), original = CaptureOriginal();
        Save(stars, "stars", zoom);
        EXPECT_GT(MeanDifference(stars, original), 0.02) << zoom;
        HideEverything(true);
        EXPECT_EQ(MeanDifference(Capture(), original), 0.0) << zoom;
        Save(Capture(), "hidden", zoom);
        HideEverything(false);
        EXPECT_EQ(MeanDifference(Capture(), stars), 0.0) << zoom;
    }
}

TEST_F(LiveView, OneClickTakesOneStarAway) {
    for (const double zoom : {100.0, 400.0}) {
        SelectViewTool(kToolHide);
        const ViewPoint client = ShowBrightest(zoom);
        const uint32_t index = BrightestLight();
        const Picture stars = Capture();
        SendMouse(dialog.display, WM_MOUSEMOVE, client.x, client.y);
        Save(Capture(), "marked", zoom);
        ClickDisplay(dialog, client.x, client.y);
        EXPECT_EQ(GetLightSourceTable().records[index].State, 0u);
        SendMessageA(dialog.display, WM_MOUSELEAVE, 0, 0);
        const Picture without = Capture();
        Save(without, "one-hidden", zoom);
        EXPECT_GT(MeanDifference(without, stars), 0.0);
        HoldKeys(true, false);
        ClickDisplay(dialog, client.x, client.y);
        HoldKeys(false, false);
        SendMessageA(dialog.display, WM_MOUSELEAVE, 0, 0);
        EXPECT_EQ(MeanDifference(Capture(), stars), 0.0);
    }
}

} // namespace
