// Saved sets in the dialog: the menu, loading, saving, deleting, and which row stands selected.
#include "tests/dialog/DialogFixture.h"

#include "render/shape/EffectTypes.h"
#include "ui/window/DialogMessages.h"

#include <cstring>

namespace {

class DialogSettings : public DialogFixture {
protected:
    enum { kNone = 0, kLoad = 1, kSave = 2, kDelete = 3 };

    std::string SetFile(const std::string &name) const {
        return UserFolder("Parameters") + "\\" + name + ".sss";
    }
    void Pick(int command, const std::string &file = "") {
        gAnswers.menuCommand = command;
        gAnswers.file.assign(file.begin(), file.end());
        Click(kSettingsIcon);
        gAnswers.menuCommand = kNone;
    }
    static std::wstring Wide(const std::string &text) { return {text.begin(), text.end()}; }
    // In the middle of the field, without its arrow.
    int DarkPixels(int combo) {
        SetFocus(Item(IDOK));
        UpdateWindow(Item(combo));
        const Picture picture = CaptureClient(Item(combo));
        int dark = 0;
        for (int y = 5; y < picture.height - 5; ++y)
            for (int x = 5; x < picture.width / 2; ++x)
                dark += (PixelAt(picture, x, y) & 0xFF) < 96;
        return dark;
    }
    bool IsDeleteGrayed() {
        Pick(kNone);
        return gAnswers.menus.back().items[kDelete].grayed;
    }
    int Rows() const { return static_cast<int>(Ask(kSettingsCombo, CB_GETCOUNT)); }
    int RowOf(const wchar_t *name) const {
        return static_cast<int>(
            Ask(kSettingsCombo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(name)));
    }
    void ExpectShown(const ParameterSet &set) {
        EXPECT_EQ(SetInHandle(), set);
        for (const ParameterPair &pair : kPairs) {
            EXPECT_EQ(Position(pair.trackbar), pair.In(set)) << pair.trackbar;
            EXPECT_EQ(Text(pair.edit), pair.Shown(pair.In(set)));
        }
        EXPECT_EQ(Selected(kEffectCombo), static_cast<int>(set.effectType - kStandardStar));
        EXPECT_EQ(IsChecked(kEffectsOnly), set.outputSpikesOnly != 0);
    }
};

} // namespace

TEST_F(DialogSettings, SaveChooseAndReselect) {
    ParameterSet saved = kDefaultParameters;
    saved.threshold = 64;
    saved.effectType = kStandardStar + 3;
    saved.numberOfPoints = static_cast<int16_t>(PresetPoints(saved.effectType));
    saved.outputSpikesOnly = 1;
    RunDialog([&] {
        Settle();
        EXPECT_EQ(Selected(kSettingsCombo), 0) << "opened with the defaults";
        Type(kPairs[0].edit, "64");
        Choose(kEffectCombo, 3);
        Click(kEffectsOnly);
        EXPECT_EQ(Selected(kSettingsCombo), -1) << "no saved set has these values";
        EXPECT_EQ(Text(kSettingsCombo), L"(Custom)");
        EXPECT_EQ(Rows(), 2) << "which is no row";
        EXPECT_GT(DarkPixels(kSettingsCombo), 30) << "and can be read";
        Pick(kSave, SetFile("Mine"));
        const std::string file = ReadWholeFile(SetFile("Mine"));
        ASSERT_EQ(file.size(), 255u);
        EXPECT_EQ(std::memcmp(file.data(), &saved, sizeof saved), 0);
        const int row = RowOf(L"Mine");
        EXPECT_EQ(row, 2);
        EXPECT_EQ(Selected(kSettingsCombo), row);

        Type(kPairs[2].edit, "11");
        Choose(kEffectCombo, 1);
        EXPECT_EQ(Selected(kSettingsCombo), -1);
        Pump();
        Forget();
        SetFocus(Item(kSettingsCombo));
        Choose(kSettingsCombo, row);
        ExpectShown(saved);
        EXPECT_EQ(Selected(kSettingsCombo), row);
        EXPECT_EQ(Seen(kMsgParametersReplaced), 1);
        EXPECT_EQ(Seen(kMsgParameterChanged), 0) << "the fields must not answer for the person";
        EXPECT_EQ(Seen(kMsgRequestPreview), 1);
        EXPECT_NE(GetFocus(), Item(kSettingsCombo));

        Type(kPairs[0].edit, "65");
        EXPECT_EQ(Selected(kSettingsCombo), -1);
        Pick(kLoad); // cancelled: the row chosen last is still known
        Pick(kSave);
        EXPECT_EQ(gAnswers.offered, Wide(SetFile("Mine")));
        Pick(kSave, SetFile("Mine"));
        EXPECT_EQ(Rows(), 3) << "in its place";
        EXPECT_EQ(ReadWholeFile(SetFile("Mine"))[36], 65);
        Type(kPairs[0].edit, "64");
        Pick(kSave, SetFile("Mine"));
        Type(kPairs[0].edit, "64");
        EXPECT_EQ(Selected(kSettingsCombo), row) << "the values are the chosen set's again";
        // While the list is open the keys walk through it: Enter must not reach the OK button.
        SetFocus(Item(kSettingsCombo));
        Ask(kSettingsCombo, CB_SHOWDROPDOWN, TRUE);
        Choose(kSettingsCombo, 0);
        ExpectShown(kDefaultParameters);
        EXPECT_EQ(GetFocus(), Item(kSettingsCombo));
        Ask(kSettingsCombo, CB_SHOWDROPDOWN, FALSE);
        EXPECT_NE(GetFocus(), Item(kSettingsCombo));
        Choose(kSettingsCombo, row);
        PressOk();
    });
    EXPECT_TRUE(boxes.empty());
    for (const bool asSaved : {true, false}) { // the next opening names the set that it opens with
        SCOPED_TRACE(asSaved);
        host::CloseHost(filterHost);
        if (!asSaved)
            saved.length = 3;
        filterHost.script = ScriptOf(saved);
        filterHost.settings.playInfo = kPlayDisplay;
        RunDialog([&] {
            EXPECT_EQ(Selected(kSettingsCombo), asSaved ? RowOf(L"Mine") : 1);
            PressCancel();
        });
    }
}

TEST_F(DialogSettings, LoadDeleteAndTheGreyedItem) {
    ParameterSet other = ChangedParameters();
    other.outputSpikesOnly = 1;
    const std::string elsewhere = folder / "Elsewhere.sss";
    std::string bytes(255, '\0');
    std::memcpy(bytes.data(), &other, sizeof other);
    WriteWholeFile(elsewhere, bytes);
    RunDialog([&] {
        Settle();
        Ask(kSettingsCombo, CB_SETCURSEL, static_cast<WPARAM>(-1));
        EXPECT_TRUE(IsDeleteGrayed());
        OfferedMenu menu = gAnswers.menus.back();
        EXPECT_EQ(menu.items.size(), 3u);
        EXPECT_EQ(menu.items[kLoad].text, L"Load Settings");
        EXPECT_EQ(menu.items[kSave].text, L"Save Settings");
        EXPECT_EQ(menu.items[kDelete].text, L"Delete Settings");
        EXPECT_FALSE(menu.items[kLoad].grayed || menu.items[kSave].grayed);
        EXPECT_EQ(menu.flags, static_cast<UINT>(TPM_RETURNCMD | TPM_RIGHTBUTTON));
        EXPECT_EQ(menu.owner, dialog);
        EXPECT_EQ(menu.at.x, ScreenPlace(kSettingsIcon).left);
        EXPECT_EQ(menu.at.y, ScreenPlace(kSettingsIcon).bottom);

        Pick(kLoad, elsewhere);
        ExpectShown(other);
        EXPECT_EQ(Selected(kSettingsCombo), RowOf(L"Elsewhere"));
        for (const char *name : {"A", "C", "B"}) {
            Pick(kSave, SetFile(name));
            EXPECT_EQ(RowText(kSettingsCombo, Selected(kSettingsCombo)), std::wstring(1, *name));
        }
        Pick(kLoad, SetFile("A")); // of the folder: none is selected, but it is what is saved next
        EXPECT_EQ(Selected(kSettingsCombo), -1);
        Pick(kSave);
        EXPECT_EQ(gAnswers.offered, Wide(SetFile("A")));
        const int rows = Rows();
        EXPECT_EQ(rows, 6);
        for (int row = 0; row < rows; ++row) {
            Choose(kSettingsCombo, row);
            EXPECT_EQ(IsDeleteGrayed(), row < 2) << row;
        }
        Choose(kSettingsCombo, RowOf(L"B"));
        Pick(kDelete);
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text, "The Brillatrix Pro saved parameter file 'B.sss' will be deleted.");
        EXPECT_FALSE(Exists(SetFile("B")));
        EXPECT_EQ(Rows(), rows - 1);

        gAnswers.menuError = 1401;
        Pick(kNone);
        Click(kZoomArrow);
        gAnswers.menuError = 0;
        Pick(77);
        EXPECT_TRUE(IsWindowVisible(dialog));
        PressOk();
    });
    const std::string log = LogText(), failed = "TrackPopupMenu() failed with error code 0x579";
    EXPECT_LT(log.find(failed), log.rfind(failed)) << "of both menus";
    EXPECT_TRUE(IsLogged("TrackPopupMenu() returned unexpected value 0x4D"));
    EXPECT_EQ(SetInHandle(), other);
}

TEST_F(DialogSettings, LongNamesShowInFull) {
    RunDialog([&] {
        Settle();
        const std::string name =
            "Long name of a set that the closed list has no room for, however wide it is";
        Pick(kSave, SetFile(name));
        const auto tooltip = [this] {
            SendMessageW(dialog, WM_SETCURSOR, reinterpret_cast<WPARAM>(Item(kSettingsCombo)),
                         MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
            return TooltipOf(dialog, Item(kSettingsCombo));
        };
        EXPECT_NE(tooltip().find("parameters\r\nLong name of a set"), std::string::npos) << tooltip();
        SetFocus(Item(kSettingsCombo));
        Ask(kSettingsCombo, CB_SHOWDROPDOWN, TRUE);
        const HDC dc = GetDC(Item(kSettingsCombo));
        const HGDIOBJ font = SelectObject(dc, reinterpret_cast<HGDIOBJ>(Ask(kSettingsCombo, WM_GETFONT)));
        SIZE extent = {};
        GetTextExtentPoint32A(dc, name.c_str(), static_cast<int>(name.size()), &extent);
        SelectObject(dc, font);
        ReleaseDC(Item(kSettingsCombo), dc);
        EXPECT_GT(Ask(kSettingsCombo, CB_GETDROPPEDWIDTH), extent.cx);
        Ask(kSettingsCombo, CB_SHOWDROPDOWN, FALSE);
        Choose(kSettingsCombo, 0);
        EXPECT_EQ(tooltip(), "Settings (T) - Select a set of saved parameters");
        PressCancel();
    });
}
