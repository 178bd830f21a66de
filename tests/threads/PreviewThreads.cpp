// The preview's task and the table's, as they are, on threads of the standard library: what the dialog does
// with them at any moment, for ThreadSanitizer and the others. Nothing is held afterwards, nothing reported.
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/table/HideEffects.h"
#include "render/RenderState.h"
#include "tests/support/NightScene.h"
#include "tests/support/PreviewState.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/TestImage.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/ProxyUpdateTask.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

// The bitmap that pieces are drawn in; there is no screen to bring them to.
void CreateTileBitmap(HWND, const void *, uint32_t, TileBitmap *bitmap) {
    bitmap->pixels = new uint32_t[int64_t{kTileBitmapSide} * kTileBitmapSide];
}
void DeleteTileBitmap(TileBitmap *bitmap) {
    delete[] bitmap->pixels;
    bitmap->pixels = nullptr;
}
void MatchColors(const TileBitmap &, PixelStore *) {}
bool DrawTileBitmap(const TileBitmap &, HDC, int32_t, int32_t, int32_t, int32_t) {
    return true;
}

namespace {

struct PreviewThreads : ::testing::Test {
    std::mt19937 random{20260417};
    int window = 0;

    int32_t Pick(int32_t low, int32_t high) { return std::uniform_int_distribution(low, high)(random); }
    PreviewGeometry TakeView(const IntRect &bounds) {
        constexpr double kZooms[] = {25.0, 50.0, 66.7, 100.0, 200.0};
        const double zoom = kZooms[Pick(0, 4)];
        const IntRect scaled = ScaleRect(bounds, zoom);
        return {
            bounds, {1, 1, 151, 101}, Pick(scaled.left, scaled.right), Pick(scaled.top, scaled.bottom), zoom};
    }
    PreviewRequest TakeRequest(const PreviewGeometry &view) {
        ParameterSet set = kDefaultParameters;
        set.length = static_cast<int16_t>(Pick(0, 100));
        set.threshold = static_cast<int16_t>(Pick(50, 100));
        set.effectType = kStandardStar + static_cast<uint32_t>(Pick(0, 6));
        set.outputSpikesOnly = Pick(0, 7) == 0;
        return MakePreviewRequest(view, Pick(0, 5) != 0, set);
    }
    // What the dialog's thread does between two messages.
    void Act(const IntRect &bounds, PreviewGeometry *view) {
        switch (Pick(0, 7)) {
        case 0:
            *view = TakeView(bounds);
            [[fallthrough]];
        case 1:
        case 2:
            return RequestPreview(TakeRequest(*view));
        case 3:
            if (WaitLightSourceTable(nullptr, nullptr, 0))
                ChangeEffectAt(Pick(0, 400), Pick(0, 300), 100.0, Pick(0, 1));
            return;
        case 4:
            return std::this_thread::sleep_for(std::chrono::milliseconds(Pick(0, 20)));
        default:
            PaintPreviewImage(nullptr, view->display, *view);
            IsPreviewInWork();
        }
    }
};

} // namespace

TEST_F(PreviewThreads, AnyUseAtAnyMomentEndsCleanly) {
    const TestImage picture(kModeRgb8, 1, 0, {-20, 10, 380, 310}, false);
    PaintNightScene(MakeSceneLights(400, 300, 12, 3), 0.02, 3, const_cast<ImageBuffer *>(&picture.buffer));
    const int64_t held = BufferBytesInUse();
    const int runs = std::getenv("BRILLATRIX_TEST_LONG") ? 200 : 12;
    for (int run = 0; run < runs; ++run) {
        PreviewGeometry view = TakeView(picture.buffer.bounds);
        StartLightSourceTableInit(picture.buffer);
        ASSERT_TRUE(StartProxyUpdateTask(&window, {&picture.buffer, nullptr, 0, &window}));
        for (int i = Pick(0, 40); i > 0; --i)
            Act(picture.buffer.bounds, &view);
        if (Pick(0, 2) == 0) { // the last request is served to its end
            const PreviewRequest request = TakeRequest(view);
            RequestPreview(request);
            while (!IsPreviewFinished(request))
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        if (Pick(0, 1))
            CancelLightSourceTableInit();
        StopProxyUpdateTask();
        StopLightSourceTableInit();
        CloseLightSourceTableThread();
        FreeRenderState();
        EXPECT_EQ(BufferBytesInUse(), held);
    }
    EXPECT_EQ(TakeReportLines(), std::vector<std::string>{});
}
