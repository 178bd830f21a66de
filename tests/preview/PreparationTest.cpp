// What becomes of the regions and the window when the view changes, and random sequences of everything a
// dialog does, with the rules checked after every step.
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "render/RenderDriver.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/PreviewState.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/PreviewInvariants.h"
#include "ui/preview/PreviewPreparation.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/PreviewTiles.h"
#include "ui/preview/ProxyUpdateState.h"
#include "ui/preview/ProxyUpdateTask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <thread>

namespace {

// The images alone, prepared and rendered on this thread.
struct Images {
    PreviewRun run;
    PreviewCancelFlags cancel{};
    explicit Images(int32_t width, int32_t height) : run(width, height, 20) {
        EXPECT_TRUE(WaitLightSourceTable(nullptr, nullptr, 20000));
        EXPECT_TRUE(PreparePreviewImages(run.image));
        CreatePreviewProxies();
        gCheckPreview = true;
        gPreviewFaults = 0;
    }
    ~Images() {
        EXPECT_EQ(gPreviewFaults, 0u);
        gCheckPreview = false;
        DeletePreviewRegions();
        FreePreviewImages();
    }
    // Renders all of an area; the number of tiles.
    int Render(const PreviewRequest &request, PreviewArea area) {
        int tiles = 0;
        PreviewTile tile{};
        while (FindPreviewTile(request, area, &tile) && tiles < 1000) {
            EXPECT_EQ(RenderPreviewTile(request, tile, cancel), TileResult::rendered);
            ++tiles;
        }
        return tiles;
    }
};

bool SameRect(const IntRect &a, const IntRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

} // namespace

TEST(PreviewPreparation, ShortPanKeepsTheWindowAndLongPanCutsIt) {
    Images images(2000, 1500);
    PreviewGeometry view = images.run.View(100.0);
    PreparePreview(MakeTestRequest(view));
    const IntRect window = RegionBox(gProxies.ScaledProxyRegion);
    EXPECT_TRUE(SameRect(window, {550, 450, 1450, 1050})); // three displays of 300 × 200
    images.Render(MakeTestRequest(view), PreviewArea::surroundings);
    EXPECT_TRUE(SameRect(RegionBox(gProxies.ValidScaledProxyRegion), window));

    view.centerX += 149;
    view.centerY -= 99;
    PreparePreview(MakeTestRequest(view));
    EXPECT_TRUE(SameRect(RegionBox(gProxies.ScaledProxyRegion), window));
    EXPECT_TRUE(SameRect(RegionBox(gProxies.ValidScaledProxyRegion), window));
    EXPECT_EQ(images.Render(MakeTestRequest(view), PreviewArea::surroundings), 0);

    view.centerX += 60; // a slow pan in small steps gets there too
    PreparePreview(MakeTestRequest(view));
    const IntRect moved = RegionBox(gProxies.ScaledProxyRegion);
    EXPECT_TRUE(SameRect(moved, {759, 351, 1659, 951}));
    EXPECT_TRUE(SameRect(RegionBox(gProxies.ValidScaledProxyRegion), IntersectRects(window, moved)));
    EXPECT_EQ(images.Render(MakeTestRequest(view), PreviewArea::visible), 0); // panned onto rendered pixels

    view.display = {1, 1, 401, 301}; // another size
    PreparePreview(MakeTestRequest(view));
    EXPECT_FALSE(SameRect(RegionBox(gProxies.ScaledProxyRegion), moved));
    view.centerX = -9000; // beside the image: one pixel wide
    PreparePreview(MakeTestRequest(view));
    EXPECT_EQ(RegionBox(gProxies.ScaledProxyRegion).right, 1);
    EXPECT_EQ(images.Render(MakeTestRequest(view), PreviewArea::visible), 0);
}

TEST(PreviewPreparation, TheEffectAloneNeverShowsThePhotograph) {
    Images images(800, 600);
    PreviewGeometry view = images.run.View(100.0);
    CreateTileBitmap(images.run.display, nullptr, 0, &gProxies.tileBitmap);
    PreviewRequest request = MakeTestRequest(view);
    PreparePreview(request);
    images.Render(request, PreviewArea::surroundings);
    request.effectsOnly = 1;
    PreparePreview(request);
    EXPECT_EQ(images.run.Paint(view), std::vector<uint32_t>(300 * 200));
    images.Render(request, PreviewArea::visible);
    EXPECT_NE(images.run.Paint(view), std::vector<uint32_t>(300 * 200));
    DeleteTileBitmap(&gProxies.tileBitmap);
}

TEST(PreviewPreparation, InvalidatingARectangleNeedsTheEffectLayer) {
    Images images(800, 600);
    TakeReports();
    SetFilterEffectsInvalidInRect({0, 0, 10, 10});
    PreviewRequest request = MakeTestRequest(images.run.View(100.0), false);
    PreparePreview(request);
    SetFilterEffectsInvalidInRect({0, 0, 10, 10});
    std::vector<RecordedReport> reports = TakeReports();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1].message,
              "SetFilterEffectsInvalidInRect() called when Filter Effect Layer not active.");

    request.previewOn = 1;
    PreparePreview(request);
    images.Render(request, PreviewArea::image);
    images.Render(request, PreviewArea::surroundings);
    SetFilterEffectsInvalidInRect({400, 300, 410, 320});
    EXPECT_TRUE(TakeReports().empty());
    for (const HRGN region :
         {gProxies.ValidEffectProxyRegion, gProxies.ValidScaledProxyRegion, gProxies.FreshRegion}) {
        EXPECT_FALSE(PtInRegion(region, 400, 300));
        EXPECT_FALSE(PtInRegion(region, 409, 319));
        EXPECT_TRUE(PtInRegion(region, 410, 300));
        EXPECT_TRUE(PtInRegion(region, 400, 299));
    }
    EXPECT_EQ(images.Render(request, PreviewArea::visible), 1);
}

TEST(PreviewPreparation, ATileIsDoneAgainWhenALightChangesWhileItIsRendered) {
    Images images(2000, 1500);
    const PreviewRequest request = MakeTestRequest(images.run.View(100.0, 1800, 1400));
    PreparePreview(request);
    PreviewTile tile{};
    ASSERT_TRUE(FindPreviewTile(MakeTestRequest(images.run.View(50.0)), PreviewArea::image, &tile));
    EXPECT_TRUE(RectContains(tile.rect, 1000, 750)) << "what is looked at goes first";
    ASSERT_TRUE(FindPreviewTile(request, PreviewArea::visible, &tile));
    const LightSourceTableView table = GetLightSourceTable();
    const LightSource *light =
        std::find_if(table.records, table.records + table.count,
                     [&](const LightSource &s) { return RectContains(tile.rect, s.X, s.Y); });
    ASSERT_NE(light, table.records + table.count);
    std::thread renderer([&] { RenderPreviewTile(request, tile, images.cancel); });
    for (bool hasBegun = false; !hasBegun;) {
        ASSERT_TRUE(LockPreview());
        hasBegun = gProxies.hasLightSources;
        UnlockPreview();
    }
    ChangeEffectAt(light->X, light->Y, 100.0, kHideEffect);
    renderer.join();
    EXPECT_FALSE(PtInRegion(gProxies.ValidEffectProxyRegion, light->X, light->Y));
    EXPECT_FALSE(PtInRegion(gProxies.FreshRegion, light->X, light->Y));
}

TEST(PreviewPreparation, FailingRegionsAreReportedAndEndNothing) {
    Images images(800, 600);
    PreviewRequest request = MakeTestRequest(images.run.View(100.0));
    PreparePreview(request);
    gCheckPreview = false;
    TakeReports();
    for (const char *call : {"SetRectRgn", "CombineRgn", "ExtCreateRegion"})
        for (int n = 0; n < 96; ++n) { // the 12 first calls, each view twice
            request.zoom = n % 4 < 2 ? 200.0 : 50.0;
            request.previewOn = n % 8 < 4;
            ++request.centerX;
            FailSystemCall(call, n / 8 + 1, 8);
            PreparePreview(request);
            PreviewTile tile{};
            if (FindPreviewTile(request, PreviewArea::visible, &tile))
                RenderPreviewTile(request, tile, images.cancel);
        }
    FailSystemCall(kAnyDrawingCall, 0, 0);
    std::map<uint32_t, std::string> texts; // one for each site
    for (const RecordedReport &report : TakeReports()) {
        EXPECT_EQ(report.title, kTitleUnexpected);
        EXPECT_EQ(texts.try_emplace(report.record.line, report.message).first->second, report.message);
    }
    for (const uint32_t site : {793u, 832u, 835u, 838u, 841u, 850u, 853u, 858u, 861u, 868u})
        EXPECT_TRUE(texts.contains(site)) << site;
}

namespace {

// A person at work: each step changes the view, the effect or the lights, at any moment of the task's work.
struct RandomUser {
    std::mt19937 random;
    PreviewGeometry view;
    PreviewRequest request;

    int32_t Pick(int32_t low, int32_t high) {
        return low + static_cast<int32_t>(random() % static_cast<uint32_t>(high - low + 1));
    }
    std::string Description() const {
        return ": " + std::to_string(view.zoom) + " % of a display of " + std::to_string(view.display.right) +
               " x " + std::to_string(view.display.bottom) + " about " + std::to_string(view.centerX) + ", " +
               std::to_string(view.centerY) + (request.previewOn ? "" : ", original");
    }
    void Step(const PreviewRun &run) {
        constexpr double kZooms[] = {6.25, 16.67, 33.33, 50.0, 80.0, 100.0, 150.0, 200.0, 400.0, 1600.0};
        switch (Pick(0, 7)) {
        case 0:
            view = run.View(kZooms[Pick(0, std::size(kZooms) - 1)], view.display.right - 1,
                            view.display.bottom - 1);
            break;
        case 1:
        case 2:
            view.centerX += Pick(-150, 150);
            view.centerY += Pick(-150, 150);
            break;
        case 3:
            view.display = {1, 1, Pick(2, 501), Pick(2, 401)};
            break;
        case 4:
            request.parameters[Pick(0, kParameterCount - 1)] = static_cast<uint16_t>(Pick(0, 100));
            request.effectsOnly = Pick(0, 3) == 0;
            request.effectType = kStandardStar + static_cast<uint32_t>(Pick(0, 6));
            break;
        case 5:
            request.previewOn = Pick(0, 3) != 0;
            break;
        case 6:
            ChangeEffectAt(Pick(0, 699), Pick(0, 499), view.zoom, Pick(0, 3));
            break;
        default: {
            const int32_t x = Pick(0, 599), y = Pick(0, 399);
            ChangeEffectsInRect({x, y, x + 150, y + 150}, Pick(0, 1));
        }
        }
        PreviewRequest next = MakeTestRequest(view, request.previewOn != 0);
        std::copy_n(request.parameters, kParameterCount, next.parameters);
        next.effectType = request.effectType;
        next.effectsOnly = request.effectsOnly;
        request = next;
    }
};

} // namespace

// A view painted in pieces, with a change between two of them, would be torn.
TEST(PreviewPreparation, NothingChangesWhileAViewIsPainted) {
    static std::thread other;
    static std::atomic<bool> isChanged{false};
    static int pieces = 0;
    PreviewRun run(1500, 40, 0);
    ASSERT_TRUE(run.Start());
    const PieceDrawer draw = [](const PreviewGeometry &, const IntRect &, uint32_t *) {
        if (pieces++ == 0)
            other = std::thread([] {
                LockPreview();
                isChanged = true;
                UnlockPreview();
            });
        Sleep(30); // time to come in between
        EXPECT_FALSE(isChanged);
    };
    const HDC dc = CreateCompatibleDC(nullptr);
    EXPECT_TRUE(PaintImageWith(draw, dc, {0, 0, 1502, 42}, run.View(100.0, 1500, 40)));
    DeleteDC(dc);
    other.join();
    EXPECT_TRUE(isChanged && pieces == 2);
}

// A picture that is finished is the one that a preview made from nothing shows.
TEST(PreviewPreparation, RandomSequencesKeepTheRulesAndEndInTheRightPicture) {
    const bool isLong = std::getenv("BRILLATRIX_TEST_LONG") != nullptr;
    const char *again = std::getenv("BRILLATRIX_TEST_SEED");
    const uint32_t seed = again    ? static_cast<uint32_t>(std::strtoul(again, nullptr, 10))
                          : isLong ? std::random_device()()
                                   : 20260101u;
    std::printf("seed %u\n", seed);
    PreviewRun run(700, 500, 25);
    gCheckPreview = true;
    gPreviewFaults = gPreviewChecks = 0;
    TakeReports();
    ASSERT_TRUE(run.Start());
    RandomUser user{std::mt19937(seed), run.View(100.0), MakeTestRequest(run.View(100.0))};
    const auto isFinished = [&] { return IsPreviewFinished(user.request); };
    const int rounds = isLong ? 4000 : 200;
    for (int i = 0; i < rounds; ++i) {
        user.Step(run);
        gProxyUpdate.nanosecondsPerPixel = user.Pick(0, 1) ? 1000.0 : 1.0; // with drafts, and without
        RequestPreview(user.request);
        if (user.Pick(0, 2) == 0)
            Sleep(static_cast<DWORD>(user.Pick(0, 19)));
        if (user.Pick(0, 3) == 0)
            run.Paint(user.view);
        if (user.Pick(0, 11) != 0)
            continue;
        SCOPED_TRACE("round " + std::to_string(i) + user.Description());
        ASSERT_TRUE(run.WaitUntil(isFinished));
        const std::vector<uint32_t> shown = run.Paint(user.view);
        ASSERT_TRUE(run.Start());
        RequestPreview(user.request);
        ASSERT_TRUE(run.WaitUntil(isFinished));
        ASSERT_EQ(shown, run.Paint(user.view));
        ASSERT_EQ(gPreviewFaults, 0u);
    }
    StopProxyUpdateTask();
    std::printf("%u checks\n", gPreviewChecks.load());
    EXPECT_GT(gPreviewChecks, static_cast<uint32_t>(rounds) / 2);
    for (const RecordedReport &report : TakeReports())
        ADD_FAILURE() << report.message;
    gCheckPreview = false;
}
