// The keyboard: every key of the accelerator table, who else may claim the keys, and the way of the Tab key.
#include "tests/dialog/DialogFixture.h"

#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <set>

namespace {

class DialogKeys : public DialogFixture {
protected:
    void ExpectOpen(int combo) {
        EXPECT_EQ(GetFocus(), Item(combo));
        EXPECT_TRUE(Ask(combo, CB_GETDROPPEDSTATE));
        Ask(combo, CB_SHOWDROPDOWN, FALSE);
    }
    void ExpectFocusKeys(bool work, const char *where) {
        SCOPED_TRACE(where);
        for (const ParameterPair &pair : kPairs) {
            const HWND focus = GetFocus();
            Key(static_cast<WORD>(pair.key));
            EXPECT_EQ(GetFocus(), work ? Item(pair.edit) : focus)
                << char(pair.key) << " focuses " << GetDlgCtrlID(GetFocus());
            EXPECT_EQ(Text(pair.edit), pair.Shown(pair.In(SetInHandle()))) << "no letter in the field";
        }
    }
};

} // namespace

TEST_F(DialogKeys, LettersFocusTheFieldsUnlessAComboClaimsThem) {
    RunDialog([this] {
        Settle();
        ExpectFocusKeys(true, "at first");
        Forget();
        Key('D');
        EXPECT_EQ(GetFocus(), Item(kDisplay));
        ExpectFocusKeys(true, "in the preview");
        EXPECT_EQ(Seen(WM_UPDATEUISTATE), 11) << "focus and mnemonics show";
        // From here on the letters stay with the controls, until the effect combo has had the focus and lost
        // it.
        Key('T');
        ExpectOpen(kSettingsCombo);
        ExpectFocusKeys(false, "settings list");
        SetFocus(Item(kPairs[2].edit)); // a field wants the characters, so that they are no mnemonics either
        ExpectFocusKeys(false, "after the settings list");
        SetFocus(Item(kEffectCombo));
        ExpectFocusKeys(false, "effect list");
        SetFocus(Item(kDisplay));
        ExpectFocusKeys(true, "after the effect list");
        Character(L':');
        ExpectOpen(kEffectCombo);
        SetFocus(Item(kDisplay));
        // Another window of the program is active: its keys are its own.
        const HWND other = CreateWindowA("EDIT", "", WS_POPUP | WS_VISIBLE, 0, 0, 50, 20, nullptr, nullptr,
                                         nullptr, nullptr);
        SetActiveWindow(other);
        PostMessageW(Item(kPairs[2].edit), WM_KEYDOWN, 'I', 1);
        Pump();
        EXPECT_EQ(GetFocus(), other);
        DestroyWindow(other);
        SetActiveWindow(dialog);
        PressCancel();
    });
}

TEST_F(DialogKeys, KeysPressButtonsPickToolsAndOpenMenus) {
    RunDialog([this] {
        Settle();
        SetFocus(Item(kDisplay));
        for (const bool on : {true, false}) {
            Forget();
            Key('O');
            EXPECT_EQ(IsChecked(kEffectsOnly), on);
            EXPECT_EQ(SetInHandle().outputSpikesOnly, on);
            EXPECT_EQ(Seen(kMsgParameterChanged), 1);
            Forget();
            Key('W');
            EXPECT_EQ(IsChecked(kPreviewBox), !on);
            EXPECT_EQ(Seen(kMsgRequestPreview), 1);
        }
        std::set<ULONG_PTR> cursors;
        const std::pair<wchar_t, int> tools[] = {
            {'P', kPanIcon}, {'Z', kZoomIcon}, {'X', kHideIcon}, {'+', kShowIcon}};
        for (const auto &[key, icon] : tools) {
            const int name = icon == kShowIcon ? 1185 : icon == kHideIcon ? 1171 : icon + 126;
            if (key == '+')
                Character(key);
            else
                Key(key);
            const ULONG_PTR byKey = Cursor();
            cursors.insert(byKey);
            Click(icon == kPanIcon ? kZoomIcon : kPanIcon);
            EXPECT_NE(Cursor(), byKey);
            Click(icon);
            EXPECT_EQ(Cursor(), byKey) << icon;
            Click(icon == kPanIcon ? kZoomIcon : kPanIcon);
            Click(name);
            EXPECT_EQ(Cursor(), byKey) << name;
        }
        EXPECT_EQ(cursors.size(), 4u);
        // Alt turns Show into Hide; another program's window takes the Alt with it.
        SetFocus(Item(kPairs[0].edit));
        const ULONG_PTR shown = Cursor();
        HoldKeys(true, false);
        PostMessageW(GetFocus(), WM_SYSKEYDOWN, VK_MENU, 1 | 1 << 29);
        EXPECT_NE(Cursor(), shown);
        SendMessageW(dialog, WM_ACTIVATEAPP, FALSE, 0);
        EXPECT_EQ(Cursor(), shown);
        HoldKeys(false, false);

        SetFocus(Item(kDisplay));
        const std::pair<WORD, const wchar_t *> zooms[] = {{VK_OEM_PLUS, L" 200.00%"},
                                                          {VK_ADD, L" 300.00%"},
                                                          {VK_OEM_MINUS, L" 200.00%"},
                                                          {VK_SUBTRACT, L" 100.00%"}};
        for (const auto &[key, text] : zooms) {
            Key(key, true);
            EXPECT_EQ(Text(kZoomText), text);
        }
        Key('O', true);
        RECT display, rect, work;
        GetClientRect(Item(kDisplay), &display);
        const double zoom = std::min((display.right - 2) * 100.0 / 240, (display.bottom - 2) * 100.0 / 180);
        EXPECT_NEAR(_wtof(Text(kZoomText).c_str()), zoom, 0.01);
        GetWindowRect(dialog, &rect);
        // What is fitted stays so at another size, until the zoom is changed.
        Resize(rect.right - rect.left + 50, rect.bottom - rect.top);
        EXPECT_GT(_wtof(Text(kZoomText).c_str()), zoom + 1);
        Key(VK_OEM_MINUS, true);
        const std::wstring chosen = Text(kZoomText);
        Resize(rect.right - rect.left, rect.bottom - rect.top);
        EXPECT_EQ(Text(kZoomText), chosen);
        EXPECT_EQ(ClientOf(Item(kDisplay)).right, display.right);
        Key('0', true);
        GetWindowRect(dialog, &rect);
        SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
        EXPECT_TRUE(EqualRect(&rect, &work)) << rect.right - rect.left << " x " << rect.bottom - rect.top;

        Key('V');
        Key('M');
        ASSERT_EQ(gAnswers.menus.size(), 2u);
        EXPECT_EQ(gAnswers.menus[0].items.size(), 18u);
        Key(VK_F1);
        Key(VK_HELP);
        ASSERT_EQ(gAnswers.opened.size(), 2u);
        EXPECT_EQ(gAnswers.opened[0].compare(0, 9, "open http"), 0) << gAnswers.opened[0];
        EXPECT_EQ(gAnswers.opened[1], gAnswers.opened[0]);
        PressCancel();
    });
}

// Once round: every control that takes input, each once, the pairs in their order, the buttons last.
TEST_F(DialogKeys, TabGoesEverywhereInOrder) {
    RunDialog([this] {
        Settle();
        std::vector<int> order, expected = {kSettingsCombo, kEffectCombo, kEffectsOnly};
        HWND at = Item(kSettingsCombo);
        do {
            order.push_back(GetDlgCtrlID(at));
            at = GetNextDlgTabItem(dialog, at, FALSE);
        } while (at != Item(kSettingsCombo) && order.size() < 100);
        for (const ParameterPair &pair : kPairs) // the arrow keys of a field move its trackbar
            expected.push_back(pair.edit);
        expected.insert(expected.end(), {kPreviewBox, kHelp, kPanIcon, kZoomIcon, kHideIcon, kShowIcon,
                                         kDisplay, IDOK, IDCANCEL, kCompare});
        EXPECT_EQ(order, expected);
        SetFocus(Item(kPairs[10].edit));
        Key(VK_TAB);
        EXPECT_EQ(GetFocus(), Item(kPreviewBox));
        // OK is the button that Enter presses again when the preview takes the focus from another one.
        for (const auto &[before, button] : {std::pair<int, int>{kPreviewBox, kHelp}, {IDOK, IDCANCEL}}) {
            SetFocus(Item(before));
            Key(VK_TAB);
            EXPECT_EQ(GetFocus(), Item(button));
            SetFocus(Item(kDisplay));
            Pump();
            EXPECT_TRUE(Ask(IDOK, WM_GETDLGCODE) & DLGC_DEFPUSHBUTTON);
            EXPECT_EQ(GetWindowLongW(Item(button), GWL_STYLE) & 0xF, BS_PUSHBUTTON) << button;
        }
        PressCancel();
    });
}
