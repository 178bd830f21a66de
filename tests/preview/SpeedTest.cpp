// A session on a large photo, with the times that a user feels. Long: only when asked for.
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/LightSourceTable.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/RecordingDiag.h"
#include "ui/DialogMessages.h"
#include "ui/PreviewImages.h"
#include "ui/ProxyUpdateTask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void Print(const char *what, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    std::printf("%-34s median %7.1f ms, least %7.1f, most %7.1f (%zu)\n", what, times[times.size() / 2],
                times.front(), times.back(), times.size());
}

double Median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// Takes messages until the first tile of the newest request is there; the time since `start`.
double WaitForFirstTile(PreviewRun *run, Clock::time_point start) {
    size_t seen = run->messages.size();
    for (;;) {
        run->TakeMessages();
        for (; seen < run->messages.size(); ++seen)
            if (run->messages[seen].message == kMsgProgress && run->messages[seen].wParam == 1)
                return Since(start);
        if (Since(start) > 20000)
            return Since(start);
        Sleep(1);
    }
}

// Takes messages until as many tiles as the visible part has are done; the time since `start`. Nothing else
// must have been asked for since then.
double WaitForView(PreviewRun *run, Clock::time_point start) {
    size_t seen = run->messages.size();
    while (Since(start) < 60000) {
        run->TakeMessages();
        for (; seen < run->messages.size(); ++seen) {
            const SentMessage &m = run->messages[seen];
            if (m.message == kMsgProgress && m.wParam >= static_cast<WPARAM>(m.lParam))
                return Since(start);
        }
        Sleep(1);
    }
    return Since(start);
}

bool WaitForEnd(PreviewRun *run, int servedBefore) {
    return run->served != servedBefore || run->WaitUntilServed(60000);
}

} // namespace

TEST(PreviewSpeed, SessionOnALargePhoto) {
    if (!std::getenv("BRILLATRIX_TEST_LONG"))
        GTEST_SKIP() << "set BRILLATRIX_TEST_LONG";
    PreviewRun run(6000, 4000, 400);
    const int64_t imageBytes = run.image.pixelBytes;
    ASSERT_TRUE(WaitLightSourceTable(nullptr, nullptr, 60000));
    std::printf("%u light sources\n", GetLightSourceTable().count);
    Clock::time_point start = Clock::now();
    ASSERT_TRUE(run.Start());
    std::printf("start %.1f ms\n", Since(start));
    ResetPeakBufferBytes();
    const int64_t before = BufferBytesInUse();
    PreviewGeometry view = run.View(15.0, 900, 600);
    PreviewRequest request = MakeDefaultRequest(view, 50);
    int served = run.served;
    start = Clock::now();
    RequestPreview(request);
    std::printf("open, fitted: first tile %.1f ms", WaitForFirstTile(&run, start));
    ASSERT_TRUE(WaitForEnd(&run, served));
    std::printf(", all %.1f ms\n", Since(start));

    std::vector<double> firstTiles, views, calls;
    for (int i = 0; i < 20; ++i) { // while the slider is dragged
        request.parameters[2] = static_cast<uint16_t>(30 + 2 * i);
        run.TakeMessages();
        served = run.served;
        start = Clock::now();
        RequestPreview(request);
        calls.push_back(Since(start));
        firstTiles.push_back(WaitForFirstTile(&run, start));
    }
    views.push_back(WaitForView(&run, start));
    ASSERT_TRUE(WaitForEnd(&run, served));
    for (int i = 0; i < 5; ++i) {
        request.parameters[2] = static_cast<uint16_t>(60 + i);
        run.TakeMessages();
        served = run.served;
        start = Clock::now();
        RequestPreview(request);
        views.push_back(WaitForView(&run, start));
        ASSERT_TRUE(WaitForEnd(&run, served));
    }
    Print("fitted: first tile while dragging", firstTiles);
    Print("fitted: whole view after a change", views);
    Print("handing a request over", calls);

    view = run.View(100.0, 900, 600);
    served = run.served;
    start = Clock::now();
    RequestPreview(request = MakeDefaultRequest(view, 50));
    std::printf("zoom to 100: view %.1f ms\n", WaitForView(&run, start));
    ASSERT_TRUE(WaitForEnd(&run, served));
    std::vector<double> paints, fullFirst;
    for (int i = 0; i < 20; ++i) {
        view.centerX += 15;
        view.centerY -= 8;
        served = run.served;
        start = Clock::now();
        run.Paint(view);
        paints.push_back(Since(start));
        RequestPreview(MakeDefaultRequest(view, 50));
    }
    ASSERT_TRUE(WaitForEnd(&run, served));
    Print("painting while panning at 100", paints);
    for (int i = 0; i < 20; ++i) {
        request = MakeDefaultRequest(view, 50);
        request.parameters[2] = static_cast<uint16_t>(30 + 2 * i);
        run.TakeMessages();
        served = run.served;
        start = Clock::now();
        RequestPreview(request);
        fullFirst.push_back(WaitForFirstTile(&run, start));
    }
    Print("100: first tile while dragging", fullFirst);
    const LightSource light = GetLightSourceTable().records[0];
    start = Clock::now();
    ChangeEffectAt(light.X, light.Y, 100.0, kHideEffect);
    RequestPreview(request);
    std::printf("hide a light: view %.1f ms\n", WaitForView(&run, start));
    start = Clock::now();
    StopProxyUpdateTask();
    std::printf("stop %.1f ms\n", Since(start));
    std::printf("images at most %.1f MB for a picture of %.1f MB\n", double(PeakBufferBytes() - before) / 1e6,
                double(imageBytes) / 1e6);
    EXPECT_LE(PeakBufferBytes() - before, 2 * imageBytes + 100000000);
    EXPECT_LT(Median(calls), 50.0);
    EXPECT_LT(Median(paints), 16.0);
}
