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
        PressCancel();
    });
}
