// The keyboard: every key of the accelerator table, who else may claim the keys, and the way of the Tab key.
#include "tests/dialog/DialogFixture.h"

#include "ui/DialogMessages.h"

#include <algorithm>
#include <set>

namespace {

class DialogKeys : public DialogFixture {
protected:
    // The tool shows in the display's cursor.
    ULONG_PTR Cursor() {
        Pump();
        SendMessageW(Item(kDisplay), kMsgRefreshCursor, 0, 0);
        return GetClassLongPtrW(Item(kDisplay), GCLP_HCURSOR);
    }
    bool IsDropped(int combo) { return SendDlgItemMessageW(dialog, combo, CB_GETDROPPEDSTATE, 0, 0) != 0; }
    void ExpectFocusKeys(bool work, const char *where) {
        SCOPED_TRACE(where);
        for (const ParameterPair &pair : kPairs) {
            const HWND before = GetFocus();
            Key(static_cast<WORD>(pair.key));
            EXPECT_EQ(GetFocus(), work ? Item(pair.edit) : before)
                << char(pair.key) << " focuses " << GetDlgCtrlID(GetFocus());
            EXPECT_GE(Text(pair.edit).size(), 1u);
            EXPECT_EQ(Text(pair.edit).find_first_not_of(L"0123456789."), std::wstring::npos);
        }
    }
};

} // namespace

TEST_F(DialogKeys, LettersFocusTheFieldsUnlessAComboClaimsThem) {
    RunDialog([this] {
        Settle();
        ExpectFocusKeys(true, "at first");
        SendMessageW(dialog, WM_CHANGEUISTATE, MAKEWPARAM(UIS_SET, UISF_HIDEACCEL | UISF_HIDEFOCUS), 0);
        Key('D');
        EXPECT_EQ(GetFocus(), Item(kDisplay));
        ExpectFocusKeys(true, "in the preview");
        EXPECT_EQ(SendMessageW(dialog, WM_QUERYUISTATE, 0, 0) & (UISF_HIDEACCEL | UISF_HIDEFOCUS), 0)
            << "focus and mnemonics show";
        // From here on the letters stay with the controls, until the effect combo has had the focus and lost
        // it.
        Key('T');
        EXPECT_EQ(GetFocus(), Item(kSettingsCombo));
        EXPECT_TRUE(IsDropped(kSettingsCombo));
        SendDlgItemMessageW(dialog, kSettingsCombo, CB_SHOWDROPDOWN, FALSE, 0);
        ExpectFocusKeys(false, "settings list");
        SetFocus(Item(kPairs[2].edit)); // a field wants the characters, so that they are no mnemonics either
        ExpectFocusKeys(false, "after the settings list");
        SetFocus(Item(kEffectCombo));
        ExpectFocusKeys(false, "effect list");
        SetFocus(Item(kDisplay));
        ExpectFocusKeys(true, "after the effect list");
        Character(L':');
        EXPECT_EQ(GetFocus(), Item(kEffectCombo));
        EXPECT_TRUE(IsDropped(kEffectCombo));
        SendDlgItemMessageW(dialog, kEffectCombo, CB_SHOWDROPDOWN, FALSE, 0);
        ExpectFocusKeys(false, "effect list opened by its key");
        SetFocus(Item(kDisplay));
        ExpectFocusKeys(true, "after that");
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
        Forget();
        Key('O');
        EXPECT_TRUE(IsChecked(kEffectsOnly));
        EXPECT_EQ(SetInHandle().outputSpikesOnly, 1);
        EXPECT_EQ(Seen(kMsgParameterChanged), 1);
        Key('O');
        EXPECT_EQ(SetInHandle().outputSpikesOnly, 0);
        Forget();
        Key('W');
        EXPECT_FALSE(IsChecked(kPreviewBox));
        EXPECT_EQ(Seen(kMsgRequestPreview), 1);
        EXPECT_EQ(Seen(kMsgParameterChanged), 0);
        Key('W');
        EXPECT_TRUE(IsChecked(kPreviewBox));

        SetFocus(Item(kDisplay));
        std::set<ULONG_PTR> cursors;
        const struct {
            wchar_t key;
            int icon;
        } tools[] = {{'P', kPanIcon}, {'Z', kZoomIcon}, {'X', kHideIcon}, {'+', kShowIcon}};
        for (const auto &tool : tools) {
            if (tool.key == '+')
                Character(tool.key);
            else
                Key(tool.key);
            const ULONG_PTR byKey = Cursor();
            cursors.insert(byKey);
            Click(tool.icon == kPanIcon ? kZoomIcon : kPanIcon);
            EXPECT_NE(Cursor(), byKey);
            Click(tool.icon);
            EXPECT_EQ(Cursor(), byKey) << tool.icon;
        }
        EXPECT_EQ(cursors.size(), 4u);

        SetFocus(Item(kDisplay));
        const auto zoomBy = [this](WORD key) {
            Key(key, true);
            return Text(kZoomText);
        };
        EXPECT_EQ(zoomBy(VK_OEM_PLUS), L" 200.00%");
        EXPECT_EQ(zoomBy(VK_ADD), L" 300.00%");
        EXPECT_EQ(zoomBy(VK_OEM_MINUS), L" 200.00%");
        EXPECT_EQ(zoomBy(VK_SUBTRACT), L" 100.00%");
        const std::wstring fitted = zoomBy('O');
        RECT display;
        GetClientRect(Item(kDisplay), &display);
        const double zoom = std::min((display.right - 2) * 100.0 / 240, (display.bottom - 2) * 100.0 / 180);
        EXPECT_NEAR(_wtof(fitted.c_str()), zoom, 0.01);
        Key('0', true);
        RECT rect, work;
        GetWindowRect(dialog, &rect);
        SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
        EXPECT_TRUE(EqualRect(&rect, &work)) << rect.right - rect.left << " x " << rect.bottom - rect.top;

        Key('V');
        Key('M');
        ASSERT_EQ(gAnswers.menus.size(), 2u);
        EXPECT_EQ(gAnswers.menus[0].items.size(), 18u);
        EXPECT_EQ(gAnswers.menus[1].items.size(), 3u);
        RECT arrow;
        GetWindowRect(Item(kZoomArrow), &arrow);
        EXPECT_EQ(gAnswers.menus[0].at.x, arrow.left);
        EXPECT_EQ(gAnswers.menus[0].at.y, arrow.top - 2);
        EXPECT_TRUE(gAnswers.menus[0].flags & TPM_BOTTOMALIGN);

        Key(VK_F1);
        Key(VK_HELP);
        EXPECT_EQ(gAnswers.opened.size(), 2u);
        for (const std::string &opened : gAnswers.opened)
            EXPECT_EQ(opened.compare(0, 9, "open http"), 0) << opened;
        EXPECT_TRUE(boxes.empty());
        PressCancel();
    });
}

// Once round: every control that takes input, each once, the pairs in their order, the buttons last.
TEST_F(DialogKeys, TabGoesEverywhereInOrder) {
    RunDialog([this] {
        std::vector<int> order;
        HWND at = Item(kSettingsCombo);
        do {
            order.push_back(GetDlgCtrlID(at));
            at = GetNextDlgTabItem(dialog, at, FALSE);
        } while (at != Item(kSettingsCombo) && order.size() < 100);
        std::vector<int> expected = {kSettingsCombo, kEffectCombo, kEffectsOnly};
        for (const ParameterPair &pair : kPairs) // the arrow keys of a field move its trackbar
            expected.push_back(pair.edit);
        expected.insert(expected.end(), {kPreviewBox, kHelp, kDisplay, IDOK, IDCANCEL});
        EXPECT_EQ(order, expected);
        SetFocus(Item(kPairs[10].edit));
        Key(VK_TAB);
        EXPECT_EQ(GetFocus(), Item(kPreviewBox));
        // OK stays the button that Enter presses.
        for (const int button : {kHelp, int{IDCANCEL}}) {
            SetFocus(Item(button));
            Pump();
            SetFocus(Item(kDisplay));
            Pump();
            EXPECT_EQ(SendDlgItemMessageW(dialog, IDOK, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON,
                      DLGC_DEFPUSHBUTTON);
            EXPECT_EQ(GetWindowLongW(Item(button), GWL_STYLE) & 0xF, BS_PUSHBUTTON) << button;
        }
        PressCancel();
    });
}
