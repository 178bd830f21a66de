// Bounds that hold on any machine; bench/PreviewBench.cpp measures.
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/RecordingDiag.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/window/DialogMessages.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

DWORD Median(std::vector<DWORD> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace

TEST(PreviewSpeed, DialogIsNeverHeldUpAndMemoryIsBounded) {
    PreviewRun run(3000, 2000, 200);
    ASSERT_TRUE(WaitLightSourceTable(nullptr, nullptr, 60000));
    ASSERT_TRUE(run.Start());
    ResetPeakBufferBytes();
    const int64_t before = BufferBytesInUse();
    PreviewGeometry view = run.View(30.0, 900, 600);
    std::vector<DWORD> requests, firstTiles, paints;
    for (int16_t length = 30; length < 50; ++length) { // each cancels the one before
        const DWORD start = GetTickCount();
        RequestPreview(MakeDefaultRequest(view, length));
        requests.push_back(GetTickCount() - start);
        ASSERT_TRUE(run.WaitFor(kMsgProgress));
        firstTiles.push_back(GetTickCount() - start);
    }
    view = run.View(100.0, 900, 600);
    for (int i = 0; i < 20; ++i) { // while it renders
        view.centerX += 14;
        RequestPreview(MakeDefaultRequest(view, 50));
        const DWORD start = GetTickCount();
        run.Paint(view);
        paints.push_back(GetTickCount() - start);
    }
    ASSERT_TRUE(run.WaitUntilServed(60000));
    EXPECT_LT(*std::max_element(requests.begin(), requests.end()), 50u);
    EXPECT_LT(Median(firstTiles), 300u);
    EXPECT_LT(Median(paints), 50u); // two painted halves, copied pixel by pixel
    EXPECT_LE(PeakBufferBytes() - before, 2 * run.image.pixelBytes + 100000000);
}
