// The preview in the dialog: it shows what the host will get, the effect tools change both, and the window
// may have any size.
#include "tests/dialog/DialogFixture.h"

#include "ui/window/DialogMessages.h"

#include <cmath>

namespace {

class DialogView : public DialogFixture {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(DialogFixture::SetUp());
        filterHost.script = ScriptOf(ChangedParameters());
        filterHost.settings.playInfo = kPlayDisplay;
        full = FilteredNight(before, ChangedParameters());
    }

    Picture Shown() {
        PostMessageW(dialog, kMsgRequestPreview, 0, 0);
        Settle();
        UpdateWindow(Item(kDisplay));
        return CaptureClient(Item(kDisplay));
    }
    RECT Display() const {
        RECT display;
        GetClientRect(Item(kDisplay), &display);
        return display;
    }
    void DragOver(int tool, LONG toX) {
        Click(tool);
        Drag(kDisplay, {2, 2}, {toX, Display().bottom - 3});
        Ask(kDisplay, WM_MOUSELEAVE);
        withTool = Shown();
        Click(kPanIcon);
    }
    std::wstring State() {
        Settle();
        EXPECT_TRUE(IsWindowVisible(Item(kStateLine)));
        EXPECT_FALSE(IsWindowVisible(Item(kProgressBar)));
        return Text(kStateLine);
    }

    Picture withTool;    // of the last DragOver, the tool still chosen
    host::Document full; // with the stars of all lights
};

int Distance(uint32_t shown, const host::Document &document, int x, int y) {
    double most = 0;
    for (int plane = 0; plane < 3; ++plane)
        most = std::max(most, std::abs((shown >> (16 - 8 * plane) & 255) - GetSample(document, plane, x, y)));
    return static_cast<int>(most);
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
                    count += Distance(PixelAt(shown, left + dx + x, top + dy + y), document, x, y) > rounding;
            best = std::min(best, count);
        }
    return best;
}

} // namespace

TEST_F(DialogView, PreviewShowsWhatTheHostGets) {
    RunDialog(
        [&] {
            EXPECT_EQ(DifferentPixels(Shown(), full), 0);
            Click(kPreviewBox);
            EXPECT_EQ(DifferentPixels(Shown(), before), 0);
            Click(kPreviewBox);
            Click(kEffectsOnly);
            ParameterSet only = ChangedParameters();
            only.outputSpikesOnly = 1;
            EXPECT_EQ(DifferentPixels(Shown(), FilteredNight(before, only)), 0);
            Click(kEffectsOnly);
            PressOk();
        },
        false);
    EXPECT_EQ(DifferentSamples(filterHost.document, full), 0);
    EXPECT_GT(DifferentSamples(full, before), 1000);
}

TEST_F(DialogView, TheImageWithoutStarsIsThereAtOnceAndGoesAtOnce) {
    RunDialog(
        [&] {
            Click(kHideIcon); // whose marks are no part of the photograph
            Settle();
            const Picture stars = Shown();
            const auto display = [this] { return CaptureClient(Item(kDisplay)); };
            const auto press = [this](UINT message) { PostMessageW(Item(kCompare), message, 0, 0); };
            const auto key = [this](UINT message) { PostMessageW(GetFocus(), message, 'B', 1); };
            const std::pair<Script, Script> holds[] = {
                {[&] { key(WM_KEYDOWN); }, [&] { key(WM_KEYUP); }},
                {[&] { key(WM_KEYDOWN); }, [&] { SendMessageW(dialog, WM_ACTIVATE, WA_INACTIVE, 0); }},
                {[&] { press(WM_LBUTTONDOWN); }, [&] { press(WM_LBUTTONUP); }},
                {[&] { press(WM_LBUTTONDOWN); }, [] { ReleaseCapture(); }}};
            Forget();
            for (const auto &[hold, release] : holds) {
                hold();
                Pump();
                EXPECT_EQ(DifferentPixels(display(), before), 0);
                release();
                Pump();
                EXPECT_TRUE(display().pixels == stars.pixels);
            }
            EXPECT_EQ(Seen(kMsgRequestPreview), 0);
            EXPECT_EQ(SetInHandle(), ChangedParameters());
            PressCancel();
        },
        false);
}

TEST_F(DialogView, HiddenLightsAreNotRendered) {
    Picture half;
    RunDialog(
        [&] {
            // The display at three zooms, the last of which all of the image fits in at.
            const auto look = [this] {
                std::vector<std::vector<uint32_t>> pictures;
                for (const int command : {40016, 40008, 40011}) {
                    gAnswers.menuCommand = command;
                    Click(kZoomArrow);
                    SetFocus(Item(kPairs[0].edit)); // the display shows when it has the focus
                    pictures.push_back(Shown().pixels);
                }
                return pictures;
            };
            const auto stars = look();
            Click(kPreviewBox);
            const auto originals = look();
            Click(kPreviewBox);
            DragOver(kHideIcon, Display().right - 3);
            EXPECT_EQ(DifferentPixels(Shown(), before), 0);
            const int rings = DifferentPixels(withTool, before);
            EXPECT_GT(rings, 200) << "every hidden light is marked";
            EXPECT_TRUE(look() == originals);
            DragOver(kShowIcon, Display().right - 3);
            EXPECT_EQ(DifferentPixels(Shown(), full), 0);
            EXPECT_EQ(DifferentPixels(withTool, full), 0) << "none is hidden any more";
            Key('Z', true); // hidden again
            EXPECT_EQ(DifferentPixels(Shown(), before), 0);
            Key('Y', true);
            EXPECT_EQ(DifferentPixels(Shown(), full), 0);
            EXPECT_TRUE(look() == stars);
            DragOver(kHideIcon, Display().right / 2);
            half = Shown();
            EXPECT_GT(DifferentPixels(half, full), 100);
            EXPECT_GT(DifferentPixels(half, before), 100);
            PressOk();
        },
        false);
    EXPECT_EQ(DifferentPixels(half, filterHost.document), 0);
}

TEST_F(DialogView, ZoomAndScrollByMouse) {
    RunDialog(
        [&] {
            Settle();
            const auto expectZoom = [this](int id, int command, const wchar_t *text) {
                gAnswers.menuCommand = command;
                Click(id);
                EXPECT_EQ(Text(kZoomText), text);
            };
            expectZoom(kZoomInButton, 0, L" 200.00%");
            expectZoom(kZoomOutButton, 0, L" 100.00%");
            expectZoom(kZoomOutButton, 0, L" 66.67%");
            DoubleClick(kZoomIcon);
            EXPECT_EQ(Text(kZoomText), L" 100.00%");
            expectZoom(kZoomText, 40003, L" 1600.00%");
            expectZoom(kZoomArrow, 40008, L" 400.00%");
            ASSERT_EQ(gAnswers.menus.size(), 2u);
            const RECT text = ScreenPlace(kZoomText), arrow = ScreenPlace(kZoomArrow);
            const POINT places[] = {{(text.left + text.right) / 2, text.top - 2},
                                    {arrow.left, arrow.top - 2}};
            for (int i = 0; i < 2; ++i) {
                EXPECT_EQ(gAnswers.menus[i].at.x, places[i].x);
                EXPECT_EQ(gAnswers.menus[i].at.y, places[i].y);
                EXPECT_TRUE(gAnswers.menus[i].flags & TPM_BOTTOMALIGN);
            }
            EXPECT_TRUE(gAnswers.menus[0].flags & TPM_CENTERALIGN);
            EXPECT_TRUE(gAnswers.menus[1].items[40003].checked) << "the zoom before";
            EXPECT_FALSE(gAnswers.menus[1].items[40008].checked);
            // Typed in its place; only Enter and leaving it take it.
            const std::pair<WORD, const wchar_t *> ends[] = {
                {VK_ESCAPE, L" 400.00%"}, {VK_RETURN, L" 33.50%"}, {VK_TAB, L" 1600.00%"}};
            for (const auto &[key, shown] : ends) {
                SetFocus(Item(kPairs[2].edit));
                Key(VK_F2);
                ASSERT_EQ(GetFocus(), Item(kZoomField));
                for (const wchar_t digit : std::wstring(key == VK_TAB ? L"9999" : L"33\uFF15\b,5%"))
                    Character(digit);
                Key(key);
                EXPECT_EQ(Text(kZoomText), shown);
                EXPECT_EQ(Item(kZoomField), nullptr);
                EXPECT_EQ(GetFocus(), Item(kPairs[2].edit));
            }
            HoldKeys(false, true);
            Click(kZoomText);
            HoldKeys(false, false);
            SetFocus(Item(kDisplay));
            Pump();
            EXPECT_EQ(Text(kZoomText), L" 1600.00%");
            EXPECT_EQ(Item(kZoomField), nullptr);
            EXPECT_EQ(gAnswers.menus.size(), 2u);
            Settle();
            Forget();
            const std::pair<UINT, int> bars[] = {{WM_HSCROLL, kHorizontalBar}, {WM_VSCROLL, kVerticalBar}};
            for (const auto &[message, bar] : bars) {
                const int position = GetScrollPos(Item(bar), SB_CTL);
                SendMessageW(dialog, message, SB_LINERIGHT, reinterpret_cast<LPARAM>(Item(bar)));
                EXPECT_EQ(GetScrollPos(Item(bar), SB_CTL), position + 1);
            }
            Pump();
            EXPECT_EQ(Seen(kMsgRequestPreview), 2);
            PressCancel();
        },
        false);
}

// The system has no dark scroll bars, so that the mouse on them is the dialog's own to follow.
TEST_F(DialogView, DarkBarsFollowTheMouse) {
    gAnswers.appsAreDark = true;
    RunDialog([this] {
        Settle();
        for (int i = 0; i < 4; ++i)
            Click(kZoomInButton);
        Settle();
        for (const int bar : {kHorizontalBar, kVerticalBar}) {
            SCROLLINFO info = {};
            info.cbSize = sizeof info;
            info.fMask = SIF_ALL;
            GetScrollInfo(Item(bar), SB_CTL, &info);
            const int page = static_cast<int>(info.nPage);
            const RECT area = ClientOf(Item(bar));
            const bool isVertical = bar == kVerticalBar;
            const auto at = [&](int along) {
                return isVertical ? POINT{area.right / 2, along} : POINT{along, area.bottom / 2};
            };
            const int end = static_cast<int>(isVertical ? area.bottom : area.right) - 1, arrow = 20;
            const auto Moved = [&](int from, int to) {
                const int before = GetScrollPos(Item(bar), SB_CTL);
                Drag(bar, at(from), at(to));
                return GetScrollPos(Item(bar), SB_CTL) - before;
            };
            EXPECT_EQ(Moved(2, 2), -1);
            EXPECT_EQ(Moved(end + 4 - arrow, end + 4 - arrow), 1); // its first pixel
            EXPECT_NEAR(Moved(end - arrow, end - arrow), std::min(page, info.nMax - page + 1 - info.nPos), 1);
            const int middle = end / 2, before = GetScrollPos(Item(bar), SB_CTL);
            Moved(arrow, arrow); // back, so that the thumb is about the middle
            EXPECT_LT(GetScrollPos(Item(bar), SB_CTL), before);
            EXPECT_NEAR(Moved(middle, middle + 40), 40 * (info.nMax + 1) / (end + 1 - 2 * (arrow - 3)), 30);
        }
        PressCancel();
    });
}

// The preview takes all that is gained; every control can be clicked, and the way back leads to the same
// picture.
TEST_F(DialogView, AnySizeFromTheMinimumTo4000By3000) {
    int unpainted = 0; // after the message that shows it or gives it a size: it would be black there
    afterMessage = [&](UINT message) {
        for (const HWND window : {dialog, Item(IDOK), Item(kEffectCombo)})
            unpainted += message == WM_WINDOWPOSCHANGED && IsWindowVisible(window) &&
                         GetUpdateRect(window, nullptr, FALSE);
    };
    RunDialog(
        [&] {
            const auto picture = [this] {
                Shown();
                RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
                return CaptureClient(dialog);
            };
            const auto size = [this] {
                RECT rect;
                GetWindowRect(dialog, &rect);
                return SIZE{rect.right - rect.left, rect.bottom - rect.top};
            };
            Settle();
            const SIZE least = size();
            const LONG display = Display().right, panel = ClientOf(Item(1046)).right;
            Resize(200, 100);
            EXPECT_EQ(size().cx, least.cx);
            EXPECT_EQ(size().cy, least.cy);
            const Picture smallest = picture();
            for (const SIZE &wanted : {SIZE{least.cx + 1, least.cy}, SIZE{least.cx, least.cy + 401},
                                       SIZE{1920, 1080}, SIZE{4000, 3000}}) {
                SCOPED_TRACE(::testing::Message() << wanted.cx << " x " << wanted.cy);
                Forget();
                Resize(wanted.cx, wanted.cy);
                EXPECT_GT(Seen(kMsgRequestPreview), 0);
                EXPECT_EQ(Display().right - display + ClientOf(Item(1046)).right - panel,
                          wanted.cx - least.cx);
                for (const int id : {kPanIcon, kPreviewBox, kPreviewBox, kZoomIcon})
                    Click(id);
            }
            Shown();
            EXPECT_EQ(unpainted, 0);
            const Picture shown = CaptureClient(dialog);
            EXPECT_EQ(shown.width, 4000 - (least.cx - smallest.width));
            EXPECT_TRUE(shown.pixels == picture().pixels) << "something stale stood there";
            Resize(least.cx, least.cy);
            SetFocus(Item(kPairs[0].edit));
            EXPECT_TRUE(picture().pixels == smallest.pixels);
            PressOk();
        },
        false);
}

// In words, where the progress stands while there is some.
TEST_F(DialogView, ALineSaysWhatTheLightsAre) {
    HoldTable();
    RunDialog(
        [&] {
            Pump(100);
            EXPECT_FALSE(IsWindowVisible(Item(kStateLine)));
            EXPECT_TRUE(IsWindowVisible(Item(kProgressBar)));
            // The photograph is there meanwhile, reduced as it will be.
            const auto zoomTo = [this](int command) {
                gAnswers.menuCommand = command;
                Click(kZoomArrow);
                SetFocus(Item(kPairs[0].edit));
            };
            zoomTo(40012); // 66.67 %
            Pump(800);
            Picture waiting = CaptureClient(Item(kDisplay));
            ReleaseTable();
            Settle();
            Click(kPreviewBox);
            Picture original = Shown();
            for (Picture *picture : {&waiting, &original}) // above the text
                picture->pixels.resize(static_cast<size_t>(picture->height / 2 - 20) * picture->width);
            EXPECT_TRUE(waiting.pixels == original.pixels);
            Click(kPreviewBox);
            zoomTo(40018);
            const std::wstring all = State(), number = all.substr(0, all.find(L' '));
            EXPECT_GT(std::stoi(number), 1);
            EXPECT_EQ(all.find(number + L" lights, "), 0u) << "the rest tells the stars";
            EXPECT_EQ(all.find(L"hidden"), std::wstring::npos);
            Type(kPairs[0].edit, "100");
            const std::wstring shown = number + L" lights, " + number + L" with stars";
            EXPECT_EQ(State(), shown);
            Type(kPairs[0].edit, "0");
            EXPECT_EQ(State(), number + L" lights, 0 with stars");
            Type(kPairs[0].edit, "100");
            DragOver(kHideIcon, Display().right - 3);
            EXPECT_EQ(State(), number + L" lights, 0 with stars, " + number + L" hidden");
            Key('Z', true);
            gAnswers.menuCommand = 40003; // 1600 %, a corner of the sky
            Click(kZoomArrow);
            SetFocus(Item(kDisplay));
            Key(VK_HOME);
            EXPECT_EQ(State(), shown + L", no star in view, Ctrl+O shows all");
            Key('O', true);
            EXPECT_EQ(State(), shown);
            SendMessageW(dialog, kMsgProgress, 1, 4);
            EXPECT_TRUE(IsWindowVisible(Item(kStateLine))) << "nothing is in work";
            PressCancel();
        },
        false);
    // Far from the middle; whoever has used the dialog is not moved about.
    filterHost.document = before = host::MakeDocument(2400, 1800, 8, 3, false);
    for (int i = 0; i < 27; ++i)
        SetSample(filterHost.document, i % 3, 200 + i / 3 % 3, 150 + i / 9, 255);
    for (const bool isUsed : {false, true}) {
        HoldTable();
        RunDialog(
            [&] {
                if (isUsed)
                    Key('Z');
                ReleaseTable();
                EXPECT_EQ(State(), isUsed ? L"1 light, 1 with a star, no star in view, Ctrl+O shows all"
                                          : L"1 light, 1 with a star");
                PressCancel();
            },
            false);
    }
    filterHost.document = before = host::MakeDocument(240, 180, 8, 3, false);
    RunDialog(
        [&] {
            EXPECT_EQ(State(), L"No lights found");
            PressCancel();
        },
        false);
}
