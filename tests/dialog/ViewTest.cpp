// The preview in the dialog: it shows what the host will get, the effect tools change both, and the window
// may have any size.
#include "tests/dialog/DialogFixture.h"

#include "ui/DialogMessages.h"

#include <cmath>

namespace {

class DialogView : public DialogFixture {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(DialogFixture::SetUp());
        before = filterHost.document;
        filterHost.script = ScriptOf(SomeParameters());
        filterHost.settings.playInfo = kPlayDisplay;
    }

    Picture Shown() {
        PostMessageW(dialog, kMsgRequestPreview, 0, 0);
        Settle();
        UpdateWindow(Item(kDisplay));
        return CaptureClient(Item(kDisplay));
    }
    void DragOver(int fromX, int toX) {
        RECT display;
        GetClientRect(Item(kDisplay), &display);
        Drag(kDisplay, {fromX, 2}, {toX, display.bottom - 3});
        SendDlgItemMessageW(dialog, kDisplay, WM_MOUSELEAVE, 0, 0);
        Pump();
    }
    LONG DisplayWidth() const { return Place(kDisplay).right - Place(kDisplay).left; }

    host::Document before;
};

uint32_t ColourAt(const host::Document &document, int x, int y) {
    const auto sample = [&](int32_t plane) {
        return static_cast<uint32_t>(GetSample(document, plane, x, y));
    };
    return sample(0) << 16 | sample(1) << 8 | sample(2);
}

int Distance(uint32_t a, uint32_t b) {
    int most = 0;
    for (int shift = 0; shift < 24; shift += 8)
        most =
            std::max(most, std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)));
    return most;
}

// Pixels that differ by more than the preview's rounding from the document in the middle of the picture, at
// 100 %.
int DifferentPixels(const Picture &shown, const host::Document &document) {
    const int left = (shown.width - document.width) / 2, top = (shown.height - document.height) / 2;
    constexpr int rounding = 6;
    int best = document.width * document.height;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
            int count = 0;
            for (int y = 0; y < document.height; ++y)
                for (int x = 0; x < document.width; ++x)
                    count += Distance(PixelAt(shown, left + dx + x, top + dy + y), ColourAt(document, x, y)) >
                             rounding;
            best = std::min(best, count);
        }
    return best;
}

// The controls as a person sees them: inside the window, none over another.
struct Seen {
    int id;
    RECT place;
};

std::vector<Seen> VisibleControls(HWND dialog) {
    std::vector<Seen> all;
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        wchar_t name[40] = L"";
        GetClassNameW(child, name, 40);
        const LONG style = GetWindowLongW(child, GWL_STYLE);
        const bool isFrame = lstrcmpiW(name, L"Button") == 0 && (style & BS_TYPEMASK) == BS_GROUPBOX;
        if (!(style & WS_VISIBLE) || isFrame)
            continue;
        Seen seen = {GetDlgCtrlID(child), {}};
        GetWindowRect(child, &seen.place);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&seen.place), 2);
        all.push_back(seen);
    }
    return all;
}

void ExpectTidy(HWND dialog) {
    RECT client;
    GetClientRect(dialog, &client);
    const std::vector<Seen> controls = VisibleControls(dialog);
    EXPECT_GT(controls.size(), 75u);
    for (size_t i = 0; i < controls.size(); ++i) {
        const RECT &place = controls[i].place;
        RECT inside;
        IntersectRect(&inside, &place, &client);
        EXPECT_TRUE(EqualRect(&inside, &place) && !IsRectEmpty(&place)) << controls[i].id << " is outside";
        for (size_t j = 0; j < i; ++j)
            EXPECT_FALSE(IntersectRect(&inside, &place, &controls[j].place))
                << controls[i].id << " lies over " << controls[j].id;
    }
}

} // namespace

TEST_F(DialogView, PreviewShowsWhatTheHostGets) {
    const host::Document expected = FilteredNight(before, SomeParameters());
    RunDialog(
        [&] {
            const Picture stars = Shown();
            EXPECT_EQ(DifferentPixels(stars, expected), 0);
            EXPECT_GT(DifferentPixels(stars, before), 200);
            Click(kPreviewBox);
            EXPECT_EQ(DifferentPixels(Shown(), before), 0);
            Click(kPreviewBox);
            Click(kEffectsOnly);
            ParameterSet only = SomeParameters();
            only.outputSpikesOnly = 1;
            EXPECT_EQ(DifferentPixels(Shown(), FilteredNight(before, only)), 0);
            Click(kEffectsOnly);
            PressOk();
        },
        false);
    EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
}

TEST_F(DialogView, HiddenLightsAreNotRendered) {
    const host::Document full = FilteredNight(before, SomeParameters());
    Picture half;
    RunDialog(
        [&] {
            Shown();
            RECT display;
            GetClientRect(Item(kDisplay), &display);
            Click(kHideIcon);
            DragOver(2, display.right - 3);
            EXPECT_EQ(DifferentPixels(Shown(), before), 0);
            Click(kShowIcon);
            DragOver(2, display.right - 3);
            EXPECT_EQ(DifferentPixels(Shown(), full), 0);
            Click(kHideIcon);
            DragOver(2, display.right / 2);
            half = Shown();
            EXPECT_GT(DifferentPixels(half, full), 100);
            EXPECT_GT(DifferentPixels(half, before), 100);
            PressOk();
        },
        false);
    EXPECT_EQ(DifferentPixels(half, filterHost.document), 0);
    EXPECT_GT(DifferentSamples(filterHost.document, full), 0);
    EXPECT_GT(DifferentSamples(filterHost.document, before), 0);
}

TEST_F(DialogView, ZoomAndScrollByMouse) {
    RunDialog(
        [&] {
            Settle();
            const auto zoomAfter = [this](int id) {
                Click(id);
                return Text(kZoomText);
            };
            EXPECT_EQ(zoomAfter(kZoomInButton), L" 200.00%");
            EXPECT_EQ(zoomAfter(kZoomOutButton), L" 100.00%");
            EXPECT_EQ(zoomAfter(kZoomOutButton), L" 66.67%");
            DoubleClick(kZoomIcon);
            EXPECT_EQ(Text(kZoomText), L" 100.00%");
            gAnswers.menuCommand = 40003;
            EXPECT_EQ(zoomAfter(kZoomText), L" 1600.00%");
            EXPECT_FALSE(IsWindowEnabled(Item(kZoomInButton)));
            EXPECT_TRUE(IsWindowEnabled(Item(kZoomOutButton)));
            gAnswers.menuCommand = 40008;
            EXPECT_EQ(zoomAfter(kZoomArrow), L" 400.00%");
            gAnswers.menuCommand = 0;
            ASSERT_EQ(gAnswers.menus.size(), 2u);
            RECT text;
            GetWindowRect(Item(kZoomText), &text);
            EXPECT_EQ(gAnswers.menus[0].at.x, (text.left + text.right) / 2);
            EXPECT_EQ(gAnswers.menus[0].at.y, text.top - 2);
            Settle();
            const auto position = [this](int bar) { return GetScrollPos(Item(bar), SB_CTL); };
            const int x = position(kHorizontalBar), y = position(kVerticalBar);
            Forget();
            SendMessageW(dialog, WM_HSCROLL, SB_LINERIGHT, reinterpret_cast<LPARAM>(Item(kHorizontalBar)));
            SendMessageW(dialog, WM_VSCROLL, SB_LINEUP, reinterpret_cast<LPARAM>(Item(kVerticalBar)));
            Pump();
            EXPECT_EQ(position(kHorizontalBar), x + 1);
            EXPECT_EQ(position(kVerticalBar), y - 1);
            EXPECT_EQ(Seen(kMsgRequestPreview), 2);
            PressCancel();
        },
        false);
}

// The preview takes all that is gained; nothing is lost, and the way back leads to the same picture.
TEST_F(DialogView, AnySizeFromTheMinimumTo4000By3000) {
    RunDialog(
        [&] {
            Settle();
            RECT first;
            GetWindowRect(dialog, &first);
            const LONG width = first.right - first.left, height = first.bottom - first.top;
            const LONG display = DisplayWidth();
            ExpectTidy(dialog);
            MINMAXINFO limits = {};
            SendMessageW(dialog, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
            EXPECT_EQ(limits.ptMinTrackSize.x, width);
            EXPECT_EQ(limits.ptMinTrackSize.y, height);
            Resize(200, 100);
            RECT small;
            GetWindowRect(dialog, &small);
            EXPECT_EQ(small.right - small.left, width);
            EXPECT_EQ(small.bottom - small.top, height);
            const Picture smallest = CaptureClient(dialog);
            const SIZE sizes[] = {{width + 1, height},
                                  {width + 333, height + 10},
                                  {width, height + 401},
                                  {1920, 1080},
                                  {4000, 3000}};
            for (const SIZE &size : sizes) {
                SCOPED_TRACE(::testing::Message() << size.cx << " x " << size.cy);
                Forget();
                Resize(size.cx, size.cy);
                EXPECT_GT(Seen(kMsgRequestPreview), 0);
                EXPECT_EQ(DisplayWidth() - display, size.cx - width);
                ExpectTidy(dialog);
                Click(kPanIcon);
                Click(kPreviewBox);
                Click(kPreviewBox);
            }
            Shown();
            const Picture shown = CaptureClient(dialog);
            RedrawWindow(dialog, nullptr, nullptr,
                         RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
            const Picture fresh = CaptureClient(dialog);
            EXPECT_EQ(shown.width, 4000 - (width - smallest.width));
            EXPECT_TRUE(shown.pixels == fresh.pixels) << "something stale stood there";
            Resize(width, height);
            Click(kZoomIcon);
            SetFocus(Item(kPairs[0].edit));
            Shown();
            RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
            EXPECT_TRUE(CaptureClient(dialog).pixels == smallest.pixels);
            PressOk();
        },
        false);
    EXPECT_EQ(UISettingsBytes().size(), 52u);
}
