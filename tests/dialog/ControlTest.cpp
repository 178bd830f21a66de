// Every control that changes the result: what the person sets is what the host's picture gets.
#include "tests/dialog/DialogFixture.h"

#include "render/shape/EffectTypes.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <commctrl.h>
#include <map>
#include <oleacc.h>
#include <set>

namespace {

class DialogControls : public DialogFixture {
protected:
    void ExpectResult(const ParameterSet &wanted) {
        EXPECT_EQ(SetInHandle(), wanted);
        EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, wanted)), 0);
    }
    struct Told {
        LONG role;
        std::wstring name, value = L"", description = L"";
        LONG state = 0;
    };
    // With `act` the control's own action is done first.
    Told Accessible(int id, bool act = false) {
        IAccessible *object = nullptr;
        AccessibleObjectFromWindow(Item(id), static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                   reinterpret_cast<void **>(&object));
        if (!object)
            return {};
        VARIANT self = {}, role = {}, state = {};
        self.vt = VT_I4;
        if (act) {
            object->accDoDefaultAction(self);
            Pump();
        }
        const auto text = [&](HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, BSTR *)) {
            BSTR given = nullptr;
            (object->*get)(self, &given);
            const std::wstring kept = given ? given : L"";
            SysFreeString(given);
            return kept;
        };
        object->get_accRole(self, &role);
        object->get_accState(self, &state);
        const Told told = {role.lVal, text(&IAccessible::get_accName), text(&IAccessible::get_accValue),
                           text(&IAccessible::get_accDescription), state.lVal};
        object->Release();
        return told;
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
        EXPECT_EQ(Ask(kEffectCombo, CB_GETCOUNT), 7);
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

// Through the calls that screen readers make.
TEST_F(DialogControls, EveryControlTellsWhatItIs) {
    constexpr LONG button = ROLE_SYSTEM_PUSHBUTTON, menu = ROLE_SYSTEM_BUTTONMENU;
    std::map<int, Told> wanted = {
        {kLogo, {button, L"About Brillatrix Pro"}},
        {kSettingsCombo, {ROLE_SYSTEM_COMBOBOX, L"Settings", L"<Default Settings>"}},
        {kEffectCombo, {ROLE_SYSTEM_COMBOBOX, L"Effect", L"Standard Star"}},
        {kSettingsIcon, {menu, L"Settings menu"}},
        {kCompare, {button, L"Compare with the image without stars"}},
        {kPanIcon, {button, L"Pan tool"}},
        {kZoomIcon, {button, L"Zoom tool"}},
        {kHideIcon, {button, L"Hide Effects tool"}},
        {kShowIcon, {button, L"Show Hidden Effects tool"}},
        {kZoomOutButton, {button, L"Zoom out"}},
        {kZoomInButton, {button, L"Zoom in"}},
        {kZoomText, {menu, L"Zoom", L" 100.00%"}},
        {kZoomArrow, {menu, L"Zoom menu", L" 100.00%"}},
        {kMakerLogo, {ROLE_SYSTEM_LINK, L"Nexorvanta Software web site"}},
        {1083, {ROLE_SYSTEM_GRIP, L"Size the dialog"}}};
    filterHost.document = before = MakeNight({.colourPlanes = 1});
    HoldTable();
    RunDialog([&] {
        EXPECT_TRUE(Accessible(kHideIcon).state & STATE_SYSTEM_UNAVAILABLE);
        ReleaseTable();
        Settle();
        wanted[kDisplay] = {ROLE_SYSTEM_GRAPHIC, L"Preview", Text(kStateLine)};
        for (const ParameterPair &pair : kPairs) {
            const std::wstring name = Text(pair.trackbar), value = pair.Shown(Position(pair.trackbar));
            wanted[pair.edit] = {ROLE_SYSTEM_TEXT, name, value};
            wanted[pair.trackbar] = {ROLE_SYSTEM_SLIDER, name, value};
        }
        wanted[1059] = {button, L"More Angle"};
        for (const auto &[id, expected] : wanted) {
            const Told told = Accessible(id);
            EXPECT_EQ(told.role, expected.role) << id;
            EXPECT_EQ(told.name, expected.name);
            EXPECT_EQ(told.value, expected.value) << id;
            EXPECT_EQ((told.state & STATE_SYSTEM_HASPOPUP) != 0,
                      told.role == menu || told.role == ROLE_SYSTEM_COMBOBOX)
                << id;
            const bool isReached = (GetWindowLongW(Item(id), GWL_STYLE) & WS_TABSTOP) != 0;
            EXPECT_EQ(told.state & ~(STATE_SYSTEM_FOCUSED | STATE_SYSTEM_HASPOPUP | STATE_SYSTEM_PRESSED),
                      isReached ? STATE_SYSTEM_FOCUSABLE : 0)
                << id;
        }
        EXPECT_EQ(Accessible(kPairs[6].edit).description, L"No effect: this image is grayscale");
        // What they do, and how it is told.
        for (const int tool : {kHideIcon, kPanIcon}) {
            Accessible(tool, true);
            for (const int other : {kPanIcon, kZoomIcon, kHideIcon, kShowIcon})
                EXPECT_EQ((Accessible(other).state & STATE_SYSTEM_PRESSED) != 0, other == tool) << other;
        }
        Accessible(1059, true);
        EXPECT_EQ(SetInHandle().angle, kDefaultParameters.angle + 1);
        SetFocus(Item(kZoomIcon));
        EXPECT_TRUE(Accessible(kZoomIcon).state & STATE_SYSTEM_FOCUSED);
        Key(VK_SPACE);
        EXPECT_TRUE(Accessible(kZoomIcon).state & STATE_SYSTEM_PRESSED);
        SetFocus(Item(kPanIcon));
        Key(VK_RETURN);
        EXPECT_TRUE(Accessible(kPanIcon).state & STATE_SYSTEM_PRESSED);
        PressCancel();
    });
}

// A press that leaves a logo before the button comes up is none.
TEST_F(DialogControls, LogosActWhenTheButtonComesUpOnThem) {
    RunDialog([this] {
        for (const int logo : {kLogo, kMakerLogo}) {
            const POINT outside = {-4, 3}, inside = {5, 5};
            const auto acted = [this] { return boxes.size() + gAnswers.opened.size(); };
            const size_t count = acted();
            DragOn(Item(logo), inside, outside, 1);
            DragOn(Item(logo), outside, outside, 1);
            SendMouse(Item(logo), WM_LBUTTONUP, inside);
            EXPECT_EQ(acted(), count) << logo;
            DragOn(Item(logo), inside, {6, 6}, 1);
            EXPECT_EQ(acted(), count + 1) << logo;
        }
        PressCancel();
    });
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

TEST_F(DialogControls, ChangesOfTheSystemReachThem) {
    RunDialog([this] {
        static std::vector<UINT> told;
        const auto note = [](HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                             DWORD_PTR) -> LRESULT {
            told.push_back(message);
            return DefSubclassProc(bar, message, wParam, lParam);
        };
        SetWindowSubclass(Item(kPairs[10].trackbar), note, 9, 0);
        for (const UINT message : {WM_SYSCOLORCHANGE, WM_SETTINGCHANGE}) {
            SendMessageW(dialog, message, 0, 0);
            EXPECT_EQ(std::count(told.begin(), told.end(), message), 1) << message;
        }
        RemoveWindowSubclass(Item(kPairs[10].trackbar), note, 9);
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
        PressCancel();
    });
}
