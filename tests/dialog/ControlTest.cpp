// Every control that changes the result: what the person sets is what the host's picture gets.
#include "tests/dialog/DialogFixture.h"

#include "render/shape/EffectTypes.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <set>

namespace {

class DialogControls : public DialogFixture {
protected:
    void ExpectResult(const ParameterSet &wanted) {
        EXPECT_EQ(SetInHandle(), wanted);
        EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, wanted)), 0);
    }
    // The tooltip window, once it is shown for a control that the pointer rests on.
    HWND RestOn(int id) {
        const RECT place = ScreenPlace(id);
        SetCursorPos(static_cast<int>(place.left + 5), static_cast<int>(place.top + 2));
        PostMessageW(Item(id), WM_MOUSEMOVE, 0, PointParam(5, 2));
        const auto shown = [] {
            const HWND tip = FindWindowExW(nullptr, nullptr, L"tooltips_class32", nullptr);
            return tip && IsWindowVisible(tip) ? tip : nullptr;
        };
        WaitFor("the tooltip", [&] { return shown() != nullptr; });
        return shown();
    }
};

} // namespace

TEST_F(DialogControls, AllPairsByTypingAndByDragging) {
    ParameterSet wanted = kDefaultParameters;
    RunDialog([&] {
        Settle();
        for (const ParameterPair &pair : kPairs) {
            SCOPED_TRACE(pair.edit);
            const int typed = pair.decimals ? -30 : pair.maximum - 3;
            Forget();
            Type(pair.edit, pair.decimals ? "-3.0" : std::to_string(typed));
            EXPECT_EQ(pair.In(SetInHandle()), typed);
            EXPECT_EQ(Position(pair.trackbar), typed);
            EXPECT_GT(Seen(kMsgParameterChanged), 0);
            EXPECT_GT(Seen(kMsgRequestPreview), 0);
            const int middle = (pair.minimum + pair.maximum) / 2;
            Forget();
            DragTrackbar(pair.trackbar, middle);
            const int dragged = Position(pair.trackbar);
            EXPECT_NEAR(dragged, middle, (pair.maximum - pair.minimum) * 0.02 + 1);
            EXPECT_EQ(Text(pair.edit), pair.Shown(dragged));
            EXPECT_EQ(GetFocus(), Item(pair.edit));
            EXPECT_GT(Seen(kMsgParameterChanged), 1) << "the preview follows the thumb";
            wanted.*pair.value = static_cast<int16_t>(dragged);
            EXPECT_EQ(SetInHandle(), wanted);
        }
        PressOk();
    });
    ExpectResult(wanted);
}

TEST_F(DialogControls, EffectAndOutputEffectsOnly) {
    const wchar_t *names[] = {L"Standard Star", L"Hollywood Star", L"Religious Cross", L"Hyper Star",
                              L"North Star",    L"Vector Star",    L"Star Burst"};
    ParameterSet wanted = kDefaultParameters;
    RunDialog([&] {
        Settle();
        for (const int row : {6, 4, 3, 2, 1, 0, 5}) {
            EXPECT_EQ(RowText(kEffectCombo, row), names[row]);
            Forget();
            Choose(kEffectCombo, row);
            wanted.effectType = kStandardStar + static_cast<uint32_t>(row);
            wanted.numberOfPoints = static_cast<int16_t>(PresetPoints(wanted.effectType));
            EXPECT_EQ(SetInHandle(), wanted);
            EXPECT_EQ(Text(kPairs[4].edit), std::to_wstring(wanted.numberOfPoints));
            EXPECT_GT(Seen(kMsgParameterChanged), 0);
            EXPECT_GT(Seen(kMsgRequestPreview), 0);
        }
        Forget();
        Click(kEffectsOnly);
        wanted.outputSpikesOnly = 1;
        EXPECT_EQ(SetInHandle(), wanted);
        EXPECT_EQ(Seen(kMsgParameterChanged), 1);
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kEffectsOnly, BN_CLICKED),
                     reinterpret_cast<LPARAM>(Item(kEffectsOnly)));
        EXPECT_EQ(Seen(kMsgParameterChanged), 1) << "the state that it has already";
        Pump();
        Forget();
        Click(kPreviewBox);
        Click(kPreviewBox);
        EXPECT_EQ(Seen(kMsgRequestPreview), 2);
        PressOk();
    });
    ExpectResult(wanted);
}

// On a gray image the parameters of colour say what they do, and it is so.
TEST_F(DialogControls, AGrayImageHasNoColors) {
    for (const bool isGray : {true, false}) {
        filterHost.document = before = MakeNight({.colourPlanes = isGray ? 1 : 3});
        RunDialog([&] {
            Settle();
            for (const ParameterPair &pair : kPairs) {
                const bool isNone = isGray && pair.edit == 1013;
                const bool isLess = isGray && (pair.edit == 1015 || pair.edit == 1017);
                SetFocus(Item(pair.edit));
                EXPECT_EQ(Text(kStateLine).find(L"No effect: ") == 0, isNone) << pair.edit;
                EXPECT_EQ(Text(kStateLine).find(L"No colors, only light") == 0, isLess) << pair.edit;
                const std::string tip = TooltipOf(dialog, Item(pair.edit)); // as far as the system tells it
                EXPECT_EQ(tip.find("\r\nNo effect: ") != tip.npos, isNone) << tip;
                if (!isNone && !isLess)
                    continue;
                ParameterSet changed = kDefaultParameters;
                changed.*pair.value = static_cast<int16_t>(pair.maximum);
                const host::Document filtered = FilteredNight(before, kDefaultParameters);
                EXPECT_EQ(DifferentSamples(FilteredNight(before, changed), filtered) == 0, isNone)
                    << pair.edit;
            }
            PressCancel();
        });
    }
}

TEST_F(DialogControls, TypesAreShownBesideTheirNames) {
    RunDialog([this] {
        Settle();
        COMBOBOXINFO combo = {};
        combo.cbSize = sizeof combo;
        GetComboBoxInfo(Item(kEffectCombo), &combo);
        SetFocus(Item(kEffectCombo));
        Ask(kEffectCombo, CB_SHOWDROPDOWN, TRUE);
        UpdateWindow(combo.hwndList);
        const Picture list = CaptureClient(combo.hwndList);
        const int height = static_cast<int>(Ask(kEffectCombo, CB_GETITEMHEIGHT));
        std::set<std::vector<uint32_t>> pictures;
        for (int row = 0; row < 7; ++row) {
            std::vector<uint32_t> picture;
            for (int y = 2; y < height - 2; ++y)
                for (int x = 2; x < height - 2; ++x)
                    picture.push_back(PixelAt(list, x, row * height + y) & 0xFFFFFF);
            EXPECT_GT(*std::max_element(picture.begin(), picture.end()), 0xC0C0C0u) << "the light";
            EXPECT_LT(picture.front() & 255, 60u) << "the night";
            pictures.insert(picture);
        }
        EXPECT_EQ(pictures.size(), 7u);
        EXPECT_EQ(SizeOf(ScreenPlace(kEffectCombo)).cy, SizeOf(ScreenPlace(kSettingsCombo)).cy);
        PressCancel();
    });
}

TEST_F(DialogControls, TooltipsAndWhatLeadsOutOfTheDialog) {
    const std::pair<int, const char *> tips[] = {
        {IDOK, "OK - Commit changes"},
        {IDCANCEL, "Cancel (Esc) - Close the dialog"},
        {kPreviewBox, "Preview (P) - Check to see"},
        {kHelp, "Click here for links"},
        {kLogo, "Brillatrix Pro version information"},
        {kMakerLogo, "Visit the Nexorvanta Software web site"},
        {kSettingsCombo, "Settings (T) - Select a set"},
        {kEffectCombo, "Effect (:) - Select the type"},
        {kEffectsOnly, "Output Effects Only (O) - Check to output"},
        {kPairs[0].edit, "Threshold (H) - Determine"},
        {kPairs[10].trackbar, "Soft Flare Intensity (Y) - Move right"},
        {kSettingsIcon, "Settings Menu (M) - Load"},
        {kZoomOutButton, "Zoom Out (Ctrl+-)"},
        {kZoomInButton, "Zoom In (Ctrl++)"},
        {kZoomText, "Zoom (V) - Click"},
        {kZoomArrow, "Zoom (V) - Click"},
        {kPanIcon, "Pan Tool (P) - use this tool"},
        {kZoomIcon, "Zoom Tool (Z) - use this tool"},
        {kHideIcon, "Hide Effects Tool (X) - use this tool"},
        {kShowIcon, "Show Hidden Effects Tool (+) - use this tool"}};
    RunDialog([&] {
        for (const auto &[id, text] : tips)
            EXPECT_EQ(TooltipOf(dialog, Item(id)).find(text), 0u)
                << id << ": " << TooltipOf(dialog, Item(id));
        // Beside its control, and off an open list, wherever the pointer rests.
        for (const int focus : {kPairs[0].edit, kEffectCombo}) {
            SetFocus(Item(focus));
            for (const int id : {kEffectCombo, kPairs[1].trackbar, kLogo}) {
                Ask(kEffectCombo, CB_SHOWDROPDOWN, focus == kEffectCombo && id != focus);
                const RECT over = ScreenPlace(id);
                const HWND tip = RestOn(id);
                RECT shown, both;
                GetWindowRect(tip, &shown);
                EXPECT_FALSE(IntersectRect(&both, &shown, &over)) << id;
                RECT used = ScreenPlace(focus);
                COMBOBOXINFO list = {};
                list.cbSize = sizeof list;
                if (Ask(focus, CB_GETDROPPEDSTATE) && GetComboBoxInfo(Item(focus), &list))
                    GetWindowRect(list.hwndList, &used);
                EXPECT_FALSE(IntersectRect(&both, &shown, &used)) << id << " covers " << focus;
                Key(VK_SHIFT);
                EXPECT_FALSE(IsWindowVisible(tip));
            }
        }
        Click(kHelp);
        Click(kLogo);
        ASSERT_EQ(boxes.size(), 2u);
        EXPECT_EQ(boxes[0].dialogName, "#191");
        EXPECT_EQ(boxes[1].dialogName, "#191");
        EXPECT_TRUE(gAnswers.opened.empty());
        Click(kMakerLogo);
        EXPECT_EQ(gAnswers.opened.size(), 1u);
        EXPECT_TRUE(IsWindowEnabled(dialog));
        PressCancel();
    });
}
