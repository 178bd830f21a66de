// The Proxy Update Task: its objects, its order of work, its messages, and that it always ends.
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/image/FixedPoint.h"
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "render/RenderDriver.h"
#include "render/RenderState.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/PreviewState.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/SystemObjects.h"
#include "ui/pixels/TypePictures.h"
#include "ui/preview/PreviewDraft.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/ProxyUpdateState.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/window/DialogMessages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace {

const bool gObjectsAreCounted = CountOwnSystemObjects();

std::vector<SentMessage> Only(const std::vector<SentMessage> &messages, UINT wanted, size_t from) {
    std::vector<SentMessage> found;
    std::copy_if(messages.begin() + static_cast<ptrdiff_t>(from), messages.end(), std::back_inserter(found),
                 [&](const SentMessage &m) { return m.message == wanted; });
    return found;
}

// The last ones come after the message that tells the end.
std::vector<RECT> SettledInvalidations() {
    Sleep(20);
    return TakeInvalidations();
}

bool IsReported(const std::vector<RecordedReport> &reports, uint32_t site, const char *text) {
    return std::any_of(reports.begin(), reports.end(), [&](const RecordedReport &r) {
        return r.record.line == site && r.message == text && r.title == kTitleUnexpected;
    });
}

decltype(&StretchDIBits) gStretchDIBits;
std::atomic<int> gTransfers;

int WINAPI CountTransfer(HDC dc, int x, int y, int width, int height, int fromX, int fromY, int fromWidth,
                         int fromHeight, const void *bits, const BITMAPINFO *info, UINT usage, DWORD mode) {
    ++gTransfers;
    return gStretchDIBits(dc, x, y, width, height, fromX, fromY, fromWidth, fromHeight, bits, info, usage,
                          mode);
}

} // namespace

TEST(ProxyUpdateTask, ServesVisibleSurroundingsAndTheRestAndCountsThem) {
    PreviewRun run(3000, 2000, 20);
    ASSERT_TRUE(run.Start());
    ResetPeakBufferBytes();
    const int64_t before = BufferBytesInUse();
    PreviewGeometry view = run.View(100.0, 300, 200);
    ASSERT_TRUE(run.Serve(MakeTestRequest(view)));
    EXPECT_LE(PeakBufferBytes() - before, 2 * run.image.pixelBytes + 100000000);
    EXPECT_EQ(gFloor, 65535u);
    EXPECT_FALSE(gPreciseMode);
    std::vector<uint32_t> type(9, ~0u);
    EXPECT_TRUE(ShrinkTypePicture(0, 3, type.data()) && std::count(type.begin(), type.end(), ~0u) == 0);
    const auto ready = std::find_if(run.messages.begin(), run.messages.end(),
                                    [](const SentMessage &m) { return m.message == kMsgTableReady; });
    const std::vector<SentMessage> progress =
        Only(run.messages, kMsgProgress, static_cast<size_t>(ready - run.messages.begin()));
    // 2 visible tiles of 200, the window of 900 × 600 in tiles of 200 but for those, the rest in tiles of
    // 1024.
    ASSERT_GE(progress.size(), 2u);
    for (size_t i = 0; i + 1 < progress.size(); ++i) {
        EXPECT_EQ(progress[i].wParam, i + 1);
        EXPECT_EQ(progress[i].lParam, 2);
    }
    EXPECT_GT(progress.size(), 2u + 12u);
    EXPECT_EQ(progress.back().lParam, 0);
    StopProxyUpdateTask();
}

TEST(ProxyUpdateTask, QuickPreviewRepaintsOnce) {
    PreviewRun run(300, 200, 4);
    ASSERT_TRUE(run.Start());
    PreviewGeometry view = run.View(100.0, 300, 200);
    ASSERT_TRUE(run.Serve(MakeTestRequest(view)));
    SettledInvalidations();
    const size_t before = run.messages.size();
    PreviewRequest request = MakeTestRequest(view);
    ++request.parameters[kLength];
    const DWORD start = GetTickCount();
    ASSERT_TRUE(run.Serve(request));
    const std::vector<RECT> invalid = SettledInvalidations();
    EXPECT_EQ(Only(run.messages, kMsgProgress, before).size(), 3u); // two tiles and the end
    if (GetTickCount() - start < 400) {
        ASSERT_EQ(invalid.size(), 1u);
        EXPECT_TRUE(invalid[0].left == 1 && invalid[0].top == 1 && invalid[0].right == 301 &&
                    invalid[0].bottom == 201);
    }
    // Another zoom repaints all of it, and what needs nothing repaints nothing.
    ASSERT_TRUE(run.Serve(MakeTestRequest(run.View(50.0, 300, 200))));
    const std::vector<RECT> zoomed = SettledInvalidations();
    ASSERT_FALSE(zoomed.empty());
    EXPECT_EQ(zoomed[0].right, 0);
    view = run.View(50.0, 300, 200);
    ASSERT_TRUE(run.Serve(MakeTestRequest(view)));
    EXPECT_TRUE(SettledInvalidations().empty());
    // So does a new place: a tile may have been finished between the last painting and the request for it.
    view.centerX += 10;
    ASSERT_TRUE(run.Serve(MakeTestRequest(view)));
    const std::vector<RECT> moved = SettledInvalidations();
    ASSERT_EQ(moved.size(), 1u);
    EXPECT_EQ(moved[0].right, 0);
}

// No request lives long enough to be finished, and still the picture follows, each time in one piece.
TEST(ProxyUpdateTask, DraftsOfTheWholeViewFollowADrag) {
    PreviewRun run(3000, 2000, 200);
    ASSERT_TRUE(run.Start());
    const PreviewGeometry view = run.View(16.67, 500, 334);
    PreviewRequest request = MakeTestRequest(view);
    ASSERT_TRUE(run.Serve(request));
    const std::vector<uint32_t> before = run.Paint(view);
    SettledInvalidations();
    gProxyUpdate.nanosecondsPerPixel =
        1000; // as on a slow machine: no view is finished before the next request
    const DWORD start = GetTickCount();
    std::vector<RECT> invalid;
    while (GetTickCount() - start < 1500) {
        request.parameters[kLength] = static_cast<uint16_t>(10 + (request.parameters[kLength] + 7) % 80);
        RequestPreview(request);
        Sleep(8);
        const std::vector<RECT> now = TakeInvalidations();
        invalid.insert(invalid.end(), now.begin(), now.end());
    }
    std::printf("%zu drafts in 1.5 s\n", invalid.size());
    EXPECT_GE(invalid.size(), 5u);
    for (const RECT &rect : invalid)
        EXPECT_EQ(rect.right, 0) << "whole";
    EXPECT_NE(run.Paint(view), before);
    EXPECT_LT(gProxyUpdate.nanosecondsPerPixel, 10000) << "no view took longer";
    request.parameters[kLength] = 50;
    RequestPreview(request);
    // At rest it is what a preview made from nothing shows.
    ASSERT_TRUE(run.WaitUntil([&] { return IsPreviewFinished(request); }));
    const std::vector<uint32_t> atRest = run.Paint(view);
    ASSERT_TRUE(run.Start());
    ASSERT_TRUE(run.Serve(request));
    EXPECT_EQ(run.Paint(view), atRest);
    // A draft is replaced as a whole, not by tile after tile.
    gProxies.draftQuality = kFirstDraft;
    ASSERT_TRUE(MakeDraft(request, gProxyUpdate.stopDraft));
    const std::vector<uint32_t> draft = run.Paint(view);
    int others = 0; // that are no likeness
    for (size_t i = 0; i < draft.size(); ++i)
        for (int shift = 0; shift < 24; shift += 8)
            others += std::abs(int(draft[i] >> shift & 255) - int(atRest[i] >> shift & 255)) > 30;
    EXPECT_TRUE(draft != atRest && others < 10000) << others;
    ShowFreshOverDraft();
    EXPECT_EQ(run.Paint(view), atRest);
    for (const double scale : {12.0, 6.0}) // another quality has a picture of its own
        EXPECT_EQ(NeedDraftPicture(scale, gProxyUpdate.stopDraft, &gProxies.draftPictures)->bounds.right,
                  ScaleRect(run.image.bounds, scale).right);
    gProxies.draftQuality = kCoarsestDraft;
    const PreviewRequest small = MakeTestRequest(run.View(16.67, 40, 27));
    for (int i = 0; i < 20 && gProxies.draftQuality == kCoarsestDraft; ++i)
        MakeDraft(small, gProxyUpdate.stopDraft);
    EXPECT_LT(gProxies.draftQuality, kCoarsestDraft) << "there is time for better ones";
}

// A request that changes nothing cancels nothing, and after a pan the tile in work is finished and kept.
TEST(ProxyUpdateTask, WhatIsOfUseIsNotCancelled) {
    PreviewRun run(900, 700, 10);
    ASSERT_TRUE(run.Start());
    PreviewRequest request = MakeTestRequest(run.View(100.0));
    ASSERT_TRUE(run.Serve(request));
    const PreviewCancelFlags &cancel = gProxyUpdate.cancel;
    const auto cancelled = [&](const PreviewRequest &next, const IntRect &tileInWork) {
        RaiseCancelFlags(0);
        gProxyUpdate.tileInWork = tileInWork;
        CancelForRequest(next);
        return cancel.task + 2 * cancel.stars + 4 * cancel.reduction + 8 * cancel.conversion;
    };
    const IntRect seen = VisibleDocument(request), beside{0, 0, 50, 50};
    EXPECT_EQ(cancelled(request, seen), 0);
    PreviewRequest other = request;
    ++other.parameters[kAngle];
    EXPECT_EQ(cancelled(other, seen), 15);
    other = request;
    other.previewOn = 0;
    EXPECT_EQ(cancelled(other, seen), 15);
    other = request;
    other.centerX += 40;
    EXPECT_EQ(cancelled(other, seen), 1);
    EXPECT_EQ(cancelled(other, beside), 15);
    other.zoom = 200.0;
    other.centerX *= 2;
    other.centerY *= 2;
    EXPECT_EQ(cancelled(other, seen), 13);
}

TEST(ProxyUpdateTask, HidingALightRendersOnlyItsStarAnew) {
    PreviewRun run(1600, 1200, 12);
    ASSERT_TRUE(run.Start());
    const PreviewGeometry view = run.View(100.0, 1600, 1200);
    PreviewRequest request = MakeTestRequest(view);
    request.parameters[kLength] = 5;             // short spikes
    request.parameters[kSoftFlareIntensity] = 0; // no flare, which reaches far
    ASSERT_TRUE(run.Serve(request));
    const std::vector<uint32_t> before = run.Paint(view);
    const LightSourceTableView table = GetLightSourceTable();
    ASSERT_GT(table.count, 3u);
    const LightSource light = table.records[2];
    ASSERT_EQ(ChangeEffectAt(light.X, light.Y, 100.0, kHideEffect), 2);
    EXPECT_FALSE(PtInRegion(gProxies.ValidEffectProxyRegion, light.X, light.Y));
    HRGN whole = CreateRectRgn(0, 0, 1600, 1200);
    CombineRgn(whole, whole, gProxies.ValidEffectProxyRegion, RGN_DIFF);
    const IntRect redone = RegionBox(whole);
    DeleteObject(whole);
    EXPECT_LT(int64_t{redone.right - redone.left} * (redone.bottom - redone.top), 1600 * 1200 / 4);
    ASSERT_TRUE(run.Serve(request));
    const std::vector<uint32_t> hidden = run.Paint(view);
    EXPECT_NE(hidden, before);
    ASSERT_TRUE(run.Start()); // nothing of the star is left that a preview made from nothing has not
    ASSERT_TRUE(run.Serve(request));
    EXPECT_EQ(run.Paint(view), hidden);
    ASSERT_EQ(ChangeEffectAt(light.X, light.Y, 100.0, kRestoreHidden), 2);
    ASSERT_TRUE(run.Serve(request));
    EXPECT_EQ(run.Paint(view), before);
    // While the original is shown, a change is remembered for the effect.
    request.previewOn = 0;
    ASSERT_TRUE(run.Serve(request));
    EXPECT_GT(ChangeEffectsInRect({light.X, light.Y, light.X + 1, light.Y + 1}, kHideEffect), 0);
    request.previewOn = 1;
    ASSERT_TRUE(run.Serve(request));
    EXPECT_EQ(run.Paint(view), hidden);
}

TEST(ProxyUpdateTask, StopsAtAnyMomentAndLeavesNothing) {
    const bool isLong = std::getenv("BRILLATRIX_TEST_LONG") != nullptr;
    const int rounds = isLong ? 3000 : 300;
    std::mt19937 random(12);
    const int64_t bytes = BufferBytesInUse();
    {
        PreviewRun run(500, 400, 15);
        ASSERT_TRUE(WaitLightSourceTable(nullptr, nullptr, 20000));
        ASSERT_TRUE(run.Start()); // whatever is made once for all is made now
        ASSERT_TRUE(run.Serve(MakeTestRequest(run.View(50.0))));
        StopProxyUpdateTask();
        const auto live = LiveObjects();
        const int64_t held = BufferBytesInUse();
        const long made = ObjectsMade();
        DWORD longest = 0;
        for (int i = 0; i < rounds; ++i) {
            ASSERT_TRUE(run.Start());
            const unsigned requests = random() % 4;
            for (unsigned r = 0; r < requests; ++r) {
                RequestPreview(MakeTestRequest(run.View(random() % 2 ? 100.0 : 33.33)));
                if (random() % 2)
                    Sleep(random() % 4);
            }
            if (random() % 3 == 0)
                run.Paint(run.View(100.0));
            const DWORD start = GetTickCount();
            StopProxyUpdateTask();
            longest = std::max(longest, GetTickCount() - start);
            ASSERT_EQ(LiveObjects(), live) << "round " << i;
            ASSERT_EQ(BufferBytesInUse(), held) << "round " << i;
        }
        std::printf("%ld objects made and given back, longest stop %lu ms\n", ObjectsMade() - made, longest);
        EXPECT_GT(ObjectsMade() - made, rounds * 15L);
        EXPECT_LT(longest, 1000u);
        RequestPreview(MakeTestRequest(run.View(100.0))); // nobody there: no harm
        StopProxyUpdateTask();
    }
    EXPECT_EQ(BufferBytesInUse(), bytes);
}

TEST(ProxyUpdateTask, FailingCreationsAreReportedAndOnlyTheThreadsAndTheImagesAreFatal) {
    const struct {
        const char *call;
        int n;
        uint32_t site;
        const char *text;
    } failures[] = {
        {"CreateEventA", 1, 344, "Could not create ParametersAvailableEvent."},
        {"CreateEventA", 2, 350, "Could not create ProxyUpdateTerminateEvent."},
        {"CreateEventA", 3, 356, "Could not create ProxyUpdateTaskExitEvent."},
        {"CreateMutexA", 1, 362, "Could not create NewRenderingParametersMutex."},
        {"CreateRectRgn", 1, 652, "Could not create ValidEffectProxyRegion."},
        {"CreateRectRgn", 2, 657, "Could not create ValidHostProxyRegion."},
        {"SetRectRgn", 1, 660, "Could not set empty rectangle into ValidHostProxyRegion."},
        {"SetRectRgn", 2, 664, "Could not set HostProxyImage rectangle into ValidHostProxyRegion."},
        {"CreateRectRgn", 3, 383, "Could not create WorkRegion."},
        {"CreateRectRgn", 4, 388, "Could not create InvalidateDisplayRegion."},
        {"CreateRectRgn", 5, 393, "Could not create ValidScaledProxyRegion."},
        {"CreateRectRgn", 6, 398, "Could not create InvalidWorkRegion."},
        {"CreateRectRgn", 7, 403, "Could not create TempRegion."},
        {"CreateRectRgn", 8, 407, "Could not create ScaledProxyRegion."},
        {"CreateMutexA", 2, 367, "Could not create the preview images mutex."},
        {"CreateDIBSection", 1, 424, "Could not create a bitmap for the preview."},
        {"CreateCompatibleDC", 1, 414, "Could not create a device context for the preview."},
        {"CreateCompatibleBitmap", 1, 424, "Could not create a bitmap for the preview."},
        {"_beginthreadex", 1, 475, "Could not start Proxy Update Task."},
    };
    PreviewRun run(300, 200, 6);
    ASSERT_TRUE(WaitLightSourceTable(nullptr, nullptr, 20000));
    const auto live = LiveObjects();
    const int64_t held = BufferBytesInUse();
    for (const auto &failure : failures) {
        TakeReports();
        FailSystemCall(failure.call, failure.n, 14);
        EXPECT_EQ(run.Start(), failure.site != 475 && failure.site != 652 && failure.site != 657)
            << failure.text;
        FailSystemCall(kAnyDrawingCall, 0, 0);
        EXPECT_TRUE(IsReported(TakeReports(), failure.site, failure.text)) << failure.text;
        RequestPreview(MakeTestRequest(run.View(50.0)));
        run.WaitUntilServed(60);
        StopProxyUpdateTask();
        FreeRenderState(); // the stamps are the renderer's
        ASSERT_EQ(LiveObjects(), live) << failure.text;
        ASSERT_EQ(BufferBytesInUse(), held) << failure.text;
    }
    TakeReports();
    const ImageBuffer none{};
    EXPECT_FALSE(StartProxyUpdateTask(run.display, {&none, nullptr, 0, run.dialog}));
    EXPECT_FALSE(StartProxyUpdateTask(nullptr, {&run.image, nullptr, 0, run.dialog}));
    EXPECT_TRUE(TakeReports().empty());
}

// One allocation after the other fails, while requests are served: the preview goes on as far as it can.
TEST(ProxyUpdateTask, GoesOnWithoutMemory) {
    PreviewRun run(300, 200, 6);
    ASSERT_TRUE(WaitLightSourceTable(nullptr, nullptr, 20000));
    const int64_t held = BufferBytesInUse();
    for (const bool andAllLater : {false, true})
        for (int64_t n = 1; n <= 24; ++n) {
            ASSERT_TRUE(run.Start());
            ASSERT_TRUE(run.WaitFor(kMsgTableReady));
            FailAllocation(n, andAllLater);
            RequestPreview(MakeTestRequest(run.View(n % 2 ? 50.0 : 100.0)));
            EXPECT_TRUE(run.WaitUntilServed(5000)) << n;
            FailAllocation(0, false);
            ResetRenderState();
            PreviewRequest request = MakeTestRequest(run.View(50.0));
            ++request.parameters[kThreshold];
            RequestPreview(request);
            EXPECT_TRUE(run.WaitUntilServed(5000)) << n;
            StopProxyUpdateTask();
            FreeRenderState();
            ASSERT_LE(BufferBytesInUse(), held) << n;
        }
    TakeReports();
}

TEST(ProxyUpdateTask, TileBitmapCarriesTheProfileBehindItsHeader) {
    std::vector<uint8_t> profile(3000, 0xAB);
    TileBitmapHeader description{};
    DescribeTileBitmap(profile.data(), 3000, &description);
    const BITMAPV5HEADER &header = description.header;
    EXPECT_TRUE(header.bV5Size == 124 && header.bV5Width == 1040 && std::abs(header.bV5Height) == 1040 &&
                header.bV5Planes == 1 && header.bV5BitCount == 32 && header.bV5Compression == BI_RGB);
    EXPECT_EQ(memcmp(&header.bV5CSType, "DEBM", 4), 0);
    EXPECT_TRUE(header.bV5ProfileData == 124 && header.bV5ProfileSize == 3000 && header.bV5Intent == 4);
    EXPECT_EQ(memcmp(reinterpret_cast<const uint8_t *>(&description) + 124, profile.data(), 3000), 0);
    DescribeTileBitmap(nullptr, 0, &description);
    EXPECT_EQ(memcmp(&header.bV5CSType, " niW", 4), 0);
    EXPECT_EQ(header.bV5ProfileSize, 0u);
    TakeReports();
    profile.resize(16385);
    DescribeTileBitmap(profile.data(), 16385, &description);
    EXPECT_EQ(memcmp(&header.bV5CSType, " niW", 4), 0);
    EXPECT_TRUE(
        IsReported(TakeReports(), 446, "Preallocated ConversionInfo.ICCProfile too small for this image."));
    profile.resize(16384);
    DescribeTileBitmap(profile.data(), 16384, &description);
    EXPECT_EQ(header.bV5ProfileSize, 16384u);
    EXPECT_TRUE(TakeReports().empty());

    // The profile goes the longer way to the screen, with the same pixels where nothing can be matched.
    PreviewRun run(300, 200, 4);
    ASSERT_TRUE(run.Start(profile.data(), 3000));
    const PreviewGeometry view = run.View(100.0, 300, 200);
    ASSERT_TRUE(run.Serve(MakeTestRequest(view)));
    gTransfers = 0; // once, by the task, and not again at each repaint
    host::ImportHooks hooks;
    gStretchDIBits = host::ReplaceImport(GetModuleHandleA(nullptr), "StretchDIBits", CountTransfer, &hooks);
    ASSERT_NE(gStretchDIBits, nullptr);
    const std::vector<uint32_t> matched = run.Paint(view);
    EXPECT_EQ(gTransfers, 0);
    PreviewRequest other = MakeTestRequest(view);
    ++other.parameters[kLength];
    ASSERT_TRUE(run.Serve(other) && run.Serve(MakeTestRequest(view)));
    EXPECT_GT(gTransfers, 0);
    host::RestoreImports(&hooks);
    EXPECT_EQ(matched, run.Paint(view));
    ASSERT_TRUE(run.Start());
    ASSERT_TRUE(run.Serve(MakeTestRequest(view)));
    EXPECT_EQ(matched, run.Paint(view));
}
