// What a person does by accident changes nothing, and what was changed can be taken back.
#include "tests/dialog/DialogFixture.h"

#include "ui/window/DialogMessages.h"


namespace {

class DialogEditing : public DialogFixture {
protected:
    // The system gives the wheel to the focus, or to what lies under the pointer.
    void Wheel(int over, int delta, WPARAM keys = 0) {
        const RECT place = ScreenPlace(over);
        const LPARAM point = PointParam((place.left + place.right) / 2, (place.top + place.bottom) / 2);
        const WPARAM turn = MAKEWPARAM(static_cast<WORD>(keys), static_cast<WORD>(delta));
        PostMessageW(GetFocus(), WM_MOUSEWHEEL, turn, point);
        Pump();
        Ask(over, WM_MOUSEWHEEL, turn, point);
        Pump();
    }
    void Undo() { Key('Z', true); }
    void Redo() { Key('Y', true); }
    // Names and pictures let the click through to the dialog.
    HWND Under(HWND control, POINT *point) {
        RECT place;
        GetWindowRect(control, &place);
        *point = {place.left + 3, (place.top + place.bottom) / 2};
        const HWND hit = ControlAt(*point);
        ScreenToClient(hit, point);
        return hit;
    }
    void ClickOn(HWND control) {
        POINT point;
        const HWND hit = Under(control, &point);
        ClickAt(hit, point);
    }
    void DoubleClickOn(HWND control) {
        POINT point;
        const HWND hit = Under(control, &point);
        PostMessageW(hit, WM_LBUTTONDBLCLK, MK_LBUTTON, PointParam(point.x, point.y));
        Pump();
    }
};

} // namespace

// Every turn comes twice.
TEST_F(DialogEditing, TheWheelStepsThePairUnderItAndNoClosedList) {
    const ParameterPair &length = kPairs[2], &angle = kPairs[3];
    RunDialog([&] {
        Settle();
        for (const int focus : {kSettingsCombo, kEffectCombo, length.edit, length.trackbar}) {
            SetFocus(Item(focus));
            for (const int over : {kSettingsCombo, kEffectCombo, kLogo})
                Wheel(over, -120);
            EXPECT_EQ(SetInHandle(), kDefaultParameters) << focus;
            EXPECT_EQ(Selected(kSettingsCombo), 0);
            Wheel(kDisplay, 120);
            EXPECT_EQ(Text(kZoomText), L" 300.00%") << "over the preview it zooms";
            Wheel(kDisplay, -120);
        }
        int value = 50;
        ParameterSet wanted = kDefaultParameters;
        for (const int focus : {kEffectCombo, length.edit, angle.edit}) {
            SetFocus(Item(focus));
            for (const int over : {length.edit, length.trackbar}) {
                Wheel(over, 120);
                Wheel(over, -120, MK_CONTROL);
                Wheel(over, -60); // half a turn, and the other half
                value += 2 - 20 - 1;
                wanted.length = static_cast<int16_t>(value = std::max(value, 0));
                EXPECT_EQ(SetInHandle(), wanted) << focus;
                EXPECT_EQ(Text(length.edit), length.Shown(value));
                EXPECT_EQ(Position(length.trackbar), value);
            }
        }
        PressCancel();
    });
}

TEST_F(DialogEditing, WhatLooksSelectedIsReplacedByTyping) {
    RunDialog([this] {
        Settle();
        const ParameterPair &intensity = kPairs[1], &length = kPairs[2];
        const auto typed = [this](const char *text, const ParameterPair &pair) {
            for (; *text; ++text)
                Character(static_cast<wchar_t>(*text));
            return pair.In(SetInHandle());
        };
        for (const ParameterPair *pair : {&intensity, &length, &intensity}) {
            Click(pair->edit);
            EXPECT_EQ(typed("7", *pair), 7) << "a click into a field selects its number";
        }
        for (const char *text : {"40", "70"}) {
            Key('L');
            EXPECT_EQ(std::to_string(typed(text, length)), text);
        }
        // What does not come as a plain character is in the field before anybody can refuse it.
        const auto expectField = [&](const wchar_t *text, int value) {
            EXPECT_EQ(Text(length.edit), text);
            EXPECT_EQ(length.In(SetInHandle()), value);
        };
        const auto put = [&](const wchar_t *text) {
            Ask(length.edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text));
        };
        Character(L'\uFF14');
        expectField(L"704", 100);
        Ask(length.edit, EM_SETSEL, 1, -1);
        put(L"a\uFF13\u3042");
        expectField(L"73", 73);
        Character(L'5');
        expectField(L"735", 100);
        Ask(length.edit, EM_SETSEL, 0, -1);
        SetClipboardText("m6x");
        Ask(length.edit, WM_PASTE);
        expectField(L"6", 6);
        Ask(length.edit, WM_IME_STARTCOMPOSITION);
        put(L"\uFF17");
        expectField(L"6\uFF17", 6);
        Ask(length.edit, WM_IME_ENDCOMPOSITION);
        expectField(L"67", 67);
        PressCancel();
    });
}

// One step each, whatever it was; all of them back, all of them again, and all of them back.
TEST_F(DialogEditing, EverySortOfChangeIsOneStep) {
    std::vector<ParameterSet> states = {kDefaultParameters};
    RunDialog([&] {
        Settle();
        const auto step = [&](const char *what, const Script &change) {
            change();
            Settle();
            EXPECT_NE(SetInHandle(), states.back()) << what;
            states.push_back(SetInHandle());
        };
        const HWND lengthName = GetWindow(Item(kPairs[2].edit), GW_HWNDPREV);
        step("a drag", [this] { DragTrackbar(kPairs[2].trackbar, 80); });
        step("another", [this] { DragTrackbar(kPairs[2].trackbar, 20); });
        step("typing", [this] { Type(kPairs[2].edit, "64"); });
        step("a name", [&] { DoubleClickOn(lengthName); });
        EXPECT_EQ(states.back(), kDefaultParameters);
        step("keys", [this] {
            for (int i = 0; i < 5; ++i)
                Key(VK_UP);
        });
        step("wheel", [this] { Wheel(kPairs[3].edit, 120); });
        step("a picture", [this] { DoubleClickOn(Item(1057)); });
        for (const auto &[picture, value] : {std::pair{1059, 151}, {1057, 150}}) {
            step("its sides", [&, id = picture] { ClickOn(Item(id)); });
            EXPECT_EQ(states.back().angle, value);
        }
        step("the effect, with its points", [this] { Choose(kEffectCombo, 1); });
        step("another effect", [this] { Choose(kEffectCombo, 4); });
        step("the switch", [this] { Click(kEffectsOnly); });
        step("a set", [this] { Choose(kSettingsCombo, 0); });
        step("typing again", [this] { Type(kPairs[2].edit, "31"); });
        step("the defaults", [this] { Key('R', true); });
        EXPECT_EQ(states.back(), kDefaultParameters);
        EXPECT_EQ(Selected(kSettingsCombo), 0);
        EXPECT_EQ(GetFocus(), Item(kPairs[2].edit)) << "the focus stays where the person works";
        for (size_t i = states.size() - 1; i-- > 0;) {
            Undo();
            EXPECT_EQ(SetInHandle(), states[i]) << i;
            EXPECT_EQ(Text(kPairs[2].edit), kPairs[2].Shown(states[i].length));
        }
        Undo();
        EXPECT_EQ(SetInHandle(), states[0]) << "nothing was before";
        for (size_t i = 1; i < states.size(); ++i) {
            Redo();
            EXPECT_EQ(SetInHandle(), states[i]) << i;
        }
        const RECT display = ClientOf(Item(kDisplay));
        Click(kHideIcon);
        Drag(kDisplay, {2, 2}, {display.right - 3, display.bottom - 3});
        Undo();
        PressOk();
    });
    EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, kDefaultParameters)), 0)
        << "the hidden lights are back";
}
