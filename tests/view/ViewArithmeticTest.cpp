// The arithmetic of the view: ladder, fitting, texts, the tables of cursors and presses, and a random walk
// that checks that the picture never jumps.
#include "tests/support/RecordingDiag.h"
#include "ui/view/ViewCursor.h"
#include "ui/view/ViewState.h"
#include "ui/view/ViewZoom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <utility>

namespace {

int32_t Width(const IntRect &r) {
    return r.right - r.left;
}
int32_t Height(const IntRect &r) {
    return r.bottom - r.top;
}

// The exact document place under the middle of a client pixel, from what the display really shows.
struct Place {
    double x, y;
};

Place PlaceUnder(const ViewState &view, ViewPoint client) {
    const IntRect visible = VisibleRect(GeometryOfView(view));
    return {(visible.left + client.x - view.display.left + 0.5) * 100.0 / view.zoom,
            (visible.top + client.y - view.display.top + 0.5) * 100.0 / view.zoom};
}

bool FillsDisplay(const ViewState &view) {
    const IntRect in = ImageInClient(GeometryOfView(view)), d = view.display;
    return in.left < d.left && in.top < d.top && in.right > d.right && in.bottom > d.bottom;
}

TEST(ViewZoom, StepsFollowTheLadder) {
    const struct {
        ZoomSelector selector;
        double from, to;
    } steps[] = {{kZoomStepIn, 66.67, 100}, {kZoomStepIn, 70, 100},     {kZoomStepIn, 1600, 1600},
                 {kZoomStepIn, 1e9, 1600},  {kZoomStepOut, 70, 66.67},  {kZoomStepOut, 0.3, 0.3},
                 {kZoomStepOut, 0.1, 0.3},  {kZoomStepOut, 1700, 1600}, {kZoomActualPixels, 3, 100}};
    for (const auto &step : steps)
        EXPECT_EQ(LookUpZoom(step.selector, step.from), step.to) << step.from;
    constexpr double ladder[] = {0.3, 0.5, 1,   2.5, 6.25, 12.5, 25,   33.33, 50,  66.67,
                                 100, 200, 300, 400, 600,  800,  1000, 1200,  1600};
    for (size_t i = 1; i < std::size(ladder); ++i) {
        EXPECT_EQ(LookUpZoom(kZoomStepIn, ladder[i - 1]), ladder[i]);
        EXPECT_EQ(LookUpZoom(kZoomStepOut, ladder[i]), ladder[i - 1]);
    }
    EXPECT_TRUE(TakeReports().empty());
    EXPECT_EQ(LookUpZoom(static_cast<ZoomSelector>(3), 42.0), 42.0);
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].record.line, 1365u);
    EXPECT_EQ(reports[0].message, "Invalid Selector specified.");
}

TEST(ViewZoom, FitIsBoundByTheTighterSideAndOddZoomsAreBroughtIntoRange) {
    EXPECT_NEAR(FitZoom(800, 500, 4000, 3000), 16.6667, 0.0001);
    EXPECT_DOUBLE_EQ(FitZoom(800, 600, 4000, 3000), 20.0);
    EXPECT_DOUBLE_EQ(FitZoom(400, 600, 4000, 3000), 10.0);
    EXPECT_EQ(FitZoom(800, 500, 1, 1), kMaximumZoom);
    EXPECT_EQ(FitZoom(1, 1, 32767, 32767), kMinimumZoom);
    EXPECT_EQ(FitZoom(0, 500, 4000, 3000), kInitialZoom);
    EXPECT_EQ(FitZoom(800, 500, 0, -3), kInitialZoom);
    EXPECT_EQ(ClampZoom(NAN), kInitialZoom);
    EXPECT_EQ(ClampZoom(-1.0), kMinimumZoom);
    EXPECT_EQ(ClampZoom(INFINITY), kMaximumZoom);
}

TEST(ViewCursors, FollowToolAndKeys) {
    constexpr ViewModifiers none = {}, alt = {true, false}, ctrl = {false, true}, both = {true, true};
    const struct {
        uint32_t tool;
        ViewModifiers keys;
        double zoom;
        DisplayCursor cursor;
    } rows[] = {
        {kToolNone, none, 100, kCursorArrow},   {kToolNone, both, 100, kCursorArrow},
        {kToolPan, none, 100, kCursorOpenHand}, {kToolPan, ctrl, 100, kCursorZoomIn},
        {kToolPan, ctrl, 1600, kCursorNoZoom},  {kToolPan, alt, 100, kCursorZoomOut},
        {kToolPan, both, 100, kCursorZoomOut},  {kToolPan, alt, 0.3, kCursorNoZoom},
        {kToolZoom, none, 100, kCursorZoomIn},  {kToolZoom, ctrl, 100, kCursorZoomIn},
        {kToolZoom, none, 1600, kCursorNoZoom}, {kToolZoom, none, 0.3, kCursorZoomIn},
        {kToolZoom, alt, 100, kCursorZoomOut},  {kToolZoom, alt, 0.3, kCursorNoZoom},
        {kToolZoom, alt, 1600, kCursorZoomOut}, {kToolHide, none, 100, kCursorHide},
        {kToolHide, alt, 100, kCursorShow},     {kToolShow, none, 100, kCursorShow},
        {kToolShow, alt, 100, kCursorHide},     {99, none, 100, kCursorArrow},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ChooseCursor(row.tool, row.keys, row.zoom), row.cursor)
            << "tool " << row.tool << " alt " << row.keys.alt << " ctrl " << row.keys.ctrl << " at "
            << row.zoom;
    EXPECT_EQ(ChooseDragCursor(kMousePan, kCursorOpenHand), kCursorClosedHand);
    EXPECT_EQ(ChooseDragCursor(kMouseHide, kCursorHide), kCursorHide);
}

TEST(ViewStates, LargeImagesNeverLeaveAGap) {
    ViewState view = MakeViewState({0, 0, 4001, 3003});
    SetViewClientSize(&view, 403, 302);
    for (const double zoom : {100.0, 66.67, 33.33, 300.0, 1600.0}) {
        SetViewZoom(&view, zoom);
        for (const double end : {-1e9, 1e9}) {
            SetViewCenter(&view, end, end);
            const IntRect in = ImageInClient(GeometryOfView(view)), d = view.display;
            EXPECT_EQ(end < 0 ? in.left : in.right, end < 0 ? d.left : d.right) << zoom;
            EXPECT_EQ(end < 0 ? in.top : in.bottom, end < 0 ? d.top : d.bottom) << zoom;
            const ScrollRange bar = HorizontalScroll(view);
            EXPECT_EQ(bar.position, end < 0 ? bar.minimum : bar.maximum - bar.page);
            EXPECT_EQ(CenterOfScroll(bar.position, bar.page), GeometryOfView(view).centerX);
        }
    }
}

// Also for images whose fitted size comes out a trifle above the display's by the rounding of the zoom.
TEST(ViewStates, AFittedImageHasNothingToScroll) {
    std::mt19937 random(20);
    for (int i = 0; i < 5000; ++i) {
        const int32_t left = static_cast<int32_t>(random() % 500), top = static_cast<int32_t>(random() % 500);
        const int32_t w = 1 + static_cast<int32_t>(random() % 32767),
                      h = 1 + static_cast<int32_t>(random() % 32767);
        ViewState view = MakeViewState({left, top, left + w, top + h});
        SetViewClientSize(&view, 203 + static_cast<int32_t>(random() % 700),
                          203 + static_cast<int32_t>(random() % 500));
        const IntRect d = view.display;
        SetViewZoom(&view, FitZoom(Width(d), Height(d), w, h));
        if (view.zoom == kMinimumZoom)
            continue;
        ASSERT_EQ(HorizontalScroll(view).maximum, 0) << w << " x " << h;
        ASSERT_EQ(VerticalScroll(view).maximum, 0) << w << " x " << h;
    }
}

TEST(ViewStates, ClientAndDocumentPixelsAgree) {
    std::mt19937 random(4);
    for (int i = 0; i < 20000; ++i) {
        ViewState view = MakeViewState({-300, 40, 3700, 3040});
        SetViewClientSize(&view, 300 + static_cast<int32_t>(random() % 300), 333);
        SetViewZoom(&view, kZoomLadder[random() % kZoomStepCount]);
        SetViewCenter(&view, (random() % 4000) * view.zoom / 100.0, (random() % 3000) * view.zoom / 100.0);
        const int32_t x = static_cast<int32_t>(random() % 4000) - 300,
                      y = 40 + static_cast<int32_t>(random() % 3000);
        const ViewPoint client = ClientFromDocument(view, x * 4, y * 4);
        const ViewPoint back = DocumentFromClient(view, client);
        const int32_t slack = view.zoom >= 100.0 ? 0 : static_cast<int32_t>(100.0 / view.zoom) + 1;
        ASSERT_NEAR(back.x, x, slack) << view.zoom;
        ASSERT_NEAR(back.y, y, slack) << view.zoom;
        const IntRect one = DocumentRectFromClient(view, {client.x, client.y, client.x + 1, client.y + 1});
        ASSERT_TRUE(RectContains(one, back.x, back.y));
        ASSERT_LE(Width(one), static_cast<int32_t>(std::ceil(100.0 / view.zoom)) + 1);
    }
}

// Zooming, panning and resizing at random: the image place under the pointer stays within half a display
// pixel of where it was, however long it goes on, unless the image's edge comes into play.
TEST(ViewStates, ThePlaceUnderThePointerStaysThroughRandomZooms) {
    std::mt19937 random(11);
    double worst = 0.0;
    int checked = 0;
    ViewState view = MakeViewState({0, 0, 6000, 4000});
    SetViewClientSize(&view, 641, 482);
    for (int i = 0; i < 50000; ++i) {
        const ViewPoint pointer = {
            1 + static_cast<int32_t>(random() % static_cast<uint32_t>(Width(view.display))),
            1 + static_cast<int32_t>(random() % static_cast<uint32_t>(Height(view.display)))};
        if (random() % 4 == 0)
            SetViewCenter(&view, view.centerX + static_cast<int>(random() % 200) - 100, view.centerY);
        if (random() % 50 == 0)
            SetViewClientSize(&view, 300 + static_cast<int32_t>(random() % 500),
                              300 + static_cast<int32_t>(random() % 300));
        if (!RectContains(view.display, pointer.x, pointer.y))
            continue;
        const Place before = PlaceUnder(view, pointer);
        const double oldZoom = view.zoom;
        const bool full = FillsDisplay(view);
        SetViewZoomAbout(&view, kZoomLadder[6 + random() % 13], pointer);
        if (!full || !FillsDisplay(view))
            continue;
        const Place after = PlaceUnder(view, pointer);
        // Half a pixel of rounding before, seen at the new zoom, and half a one after.
        const double allowed = 0.5 * 100.0 / view.zoom + 0.5 * 100.0 / oldZoom + 1e-6;
        const double moved = std::max(std::abs(after.x - before.x), std::abs(after.y - before.y));
        worst = std::max(worst, moved / allowed);
        ASSERT_LE(moved, allowed) << "step " << i;
        ++checked;
    }
    printf("%d zooms, worst %.3f of the rounding allowed\n", checked, worst);
    EXPECT_GT(checked, 10000);
}

} // namespace
