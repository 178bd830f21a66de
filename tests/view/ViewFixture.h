// What the tests of the display and its tools share: the dialog on a large image, and checks at the end that
// nothing was reported and everything given back.
#pragma once

#include "storage/UISettings.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowPicture.h"
#include "tests/view/FakePreview.h"
#include "tests/view/ViewDialog.h"
#include "ui/view/ViewTools.h"

#include <gtest/gtest.h>

constexpr IntRect kTestImage = {0, 0, 4000, 3000};

class ViewTest : public testing::Test {
protected:
    ViewDialog dialog;

    void SetUp() override {
        gFakePreview = {};
        gMenuAnswer = {};
        SetViewTool(kToolZoom);
    }
    void TearDown() override {
        FailSystemCall(kAnyDrawingCall, 0, 0);
        CloseViewDialog(&dialog);
        EXPECT_EQ(LiveDrawingObjects(), 0);
        EXPECT_EQ(LiveObjects().count("LoadMenuA"), 0u);
        EXPECT_TRUE(TakeReports().empty());
    }

    void Open(const IntRect &image = kTestImage) {
        ASSERT_TRUE(OpenViewDialog(&dialog, image));
        dialog.previewRequests = 0;
    }
    // With an empty light source table.
    void OpenReady(const IntRect &image = kTestImage) {
        Open(image);
        SetLightSources(&dialog, nullptr, 0);
        UpdateWindow(dialog.display);
    }
    void Use(uint32_t tool) {
        SelectViewTool(tool);
        PumpMessages();
        dialog.previewRequests = 0;
    }
    // The one report since the last call.
    void ExpectReport(uint32_t site, const char *message) {
        const auto reports = TakeReports();
        ASSERT_EQ(reports.size(), 1u) << message;
        EXPECT_EQ(reports[0].record.line, site);
        EXPECT_EQ(reports[0].message, message);
    }

    PreviewGeometry View() { return CurrentPreviewGeometry(); }
    ViewPoint PlaceAt(int x, int y) { return DocumentFromClient(gViewTools.view, {x, y}); }
    // The place of the image, to a pixel.
    void ExpectPlaceAt(int x, int y, ViewPoint place) {
        EXPECT_NEAR(PlaceAt(x, y).x, place.x, 1);
        EXPECT_NEAR(PlaceAt(x, y).y, place.y, 1);
    }
    void ExpectCenter(int32_t x, int32_t y) {
        EXPECT_EQ(View().centerX, x);
        EXPECT_EQ(View().centerY, y);
    }

    // Paints only what is invalid.
    Picture Show() {
        UpdateWindow(dialog.display);
        return CaptureClient(dialog.display);
    }
    int WrongPixels(const Picture &picture) {
        const PreviewGeometry view = View();
        int wrong = 0;
        for (int y = view.display.top; y < view.display.bottom; ++y)
            for (int x = view.display.left; x < view.display.right; ++x)
                wrong += PixelAt(picture, x, y) != PatternPixel(view, x, y);
        return wrong;
    }
};
