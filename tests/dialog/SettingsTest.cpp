// Saved sets in the dialog: the menu, loading, saving, deleting, and which row stands selected.
#include "tests/dialog/DialogFixture.h"

#include "render/EffectTypes.h"
#include "ui/DialogMessages.h"

#include <cstring>

namespace {

class DialogSettings : public DialogFixture {
protected:
    enum { kLoad = 1, kSave = 2, kDelete = 3 };

    void WriteSet(const std::string &path, const ParameterSet &set) {
        std::string bytes(255, '\0');
        std::memcpy(bytes.data(), &set, sizeof set);
        WriteWholeFile(path, bytes);
    }
    std::string SetFile(const std::string &name) const {
        return UserFolder("Parameters") + "\\" + name + ".sss";
    }
    void PickFromMenu(int command) {
        gAnswers.menuCommand = command;
        Click(kSettingsIcon);
        gAnswers.menuCommand = 0;
    }
    bool IsDeleteGrayed() {
        PickFromMenu(0);
        return gAnswers.menus.back().items[kDelete].grayed;
    }
    std::vector<std::wstring> Rows() const {
        std::vector<std::wstring> rows;
        const LRESULT count = SendDlgItemMessageW(dialog, kSettingsCombo, CB_GETCOUNT, 0, 0);
        for (WPARAM i = 0; i < static_cast<WPARAM>(count); ++i) {
            wchar_t text[100] = L"";
            SendDlgItemMessageW(dialog, kSettingsCombo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text));
            rows.push_back(text);
        }
        return rows;
    }
    int RowOf(const wchar_t *name) const {
        const std::vector<std::wstring> rows = Rows();
        for (size_t i = 0; i < rows.size(); ++i)
            if (rows[i] == name)
                return static_cast<int>(i);
        return -1;
    }
    std::wstring Wide(const std::string &text) const { return {text.begin(), text.end()}; }
    void ExpectShown(const ParameterSet &set) {
        EXPECT_EQ(SetInHandle(), set);
        for (const ParameterPair &pair : kPairs) {
            EXPECT_EQ(Position(pair.trackbar), set.*pair.value) << pair.trackbar;
            EXPECT_EQ(_wtof(Text(pair.edit).c_str()), set.*pair.value / (pair.decimals ? 10.0 : 1.0));
        }
        EXPECT_EQ(Selected(kEffectCombo), static_cast<int>(set.effectType - kStandardStar));
        EXPECT_EQ(IsChecked(kEffectsOnly), set.outputSpikesOnly != 0);
    }
};

} // namespace

TEST_F(DialogSettings, SaveChooseAndReselect) {
    RunDialog([this] {
        Settle();
        const std::vector<std::wstring> initial = Rows();
        ParameterSet saved = kDefaultParameters;
        saved.threshold = 64;
        saved.effectType = kStandardStar + 3;
        saved.numberOfPoints = static_cast<int16_t>(PresetPoints(saved.effectType));
        saved.outputSpikesOnly = 1;
        Type(kPairs[0].edit, "64");
        Choose(kEffectCombo, 3);
        Click(kEffectsOnly);
        gAnswers.file = Wide(SetFile("Mine"));
        PickFromMenu(kSave);
        EXPECT_EQ(gAnswers.fileTitles.back(), "Save Brillatrix Pro Parameter File");
        const std::string file = ReadWholeFile(SetFile("Mine"));
        ASSERT_EQ(file.size(), 255u);
        EXPECT_EQ(std::memcmp(file.data(), &saved, sizeof saved), 0);
        EXPECT_EQ(Rows().size(), initial.size() + 1);
        const int row = RowOf(L"Mine");
        ASSERT_GE(row, 0);

        Type(kPairs[2].edit, "11");
        Choose(kEffectCombo, 1);
        EXPECT_EQ(Selected(kSettingsCombo), -1) << "no saved set has these values";
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

        SetFocus(Item(kDisplay));
        Type(kPairs[0].edit, "65");
        EXPECT_EQ(Selected(kSettingsCombo), -1);
        Type(kPairs[0].edit, "64");
        EXPECT_EQ(Selected(kSettingsCombo), row) << "the values are the chosen set's again";
        PressCancel();
    });
    EXPECT_TRUE(boxes.empty());
}

TEST_F(DialogSettings, LoadDeleteAndTheGreyedItem) {
    ParameterSet other = SomeParameters();
    other.outputSpikesOnly = 1;
    const std::string elsewhere = folder / "Elsewhere.sss";
    onInit = [&] { WriteSet(elsewhere, other); };
    RunDialog([&] {
        Settle();
        SendDlgItemMessageW(dialog, kSettingsCombo, CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
        EXPECT_TRUE(IsDeleteGrayed());
        const OfferedMenu menu = gAnswers.menus.back();
        EXPECT_EQ(menu.items.size(), 3u);
        EXPECT_EQ(menu.items.at(kLoad).text, L"Load Settings");
        EXPECT_EQ(menu.items.at(kSave).text, L"Save Settings");
        EXPECT_EQ(menu.items.at(kDelete).text, L"Delete Settings");
        EXPECT_FALSE(menu.items.at(kLoad).grayed || menu.items.at(kSave).grayed);
        EXPECT_TRUE((menu.flags & TPM_RETURNCMD) && (menu.flags & TPM_RIGHTBUTTON));
        EXPECT_EQ(menu.owner, dialog);
        RECT icon;
        GetWindowRect(Item(kSettingsIcon), &icon);
        EXPECT_EQ(menu.at.y, icon.bottom);
        EXPECT_EQ(menu.at.x, icon.left);

        gAnswers.file = Wide(elsewhere);
        PickFromMenu(kLoad);
        EXPECT_EQ(gAnswers.fileTitles.back(), "Load Brillatrix Pro Parameter File");
        ExpectShown(other);
        EXPECT_EQ(Selected(kSettingsCombo), RowOf(L"Elsewhere"));
        for (const char *name : {"A", "B", "C"}) {
            gAnswers.file = Wide(SetFile(name));
            PickFromMenu(kSave);
        }
        const auto rows = static_cast<int>(Rows().size());
        ASSERT_GE(rows, 4);
        for (int row = 0; row < rows; ++row) {
            Choose(kSettingsCombo, row);
            EXPECT_EQ(IsDeleteGrayed(), row < 2) << row;
        }
        const int doomed = RowOf(L"B") >= 2 ? RowOf(L"B") : RowOf(L"C");
        const std::string name = doomed == RowOf(L"B") ? "B" : "C";
        Choose(kSettingsCombo, doomed);
        PickFromMenu(kDelete);
        EXPECT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes.back().text,
                  "The Brillatrix Pro saved parameter file '" + name + ".sss' will be deleted.");
        EXPECT_FALSE(Exists(SetFile(name)));
        EXPECT_EQ(static_cast<int>(Rows().size()), rows - 1);

        gAnswers.menuError = 1401;
        PickFromMenu(0);
        gAnswers.menuError = 0;
        PickFromMenu(77);
        EXPECT_TRUE(IsWindowVisible(dialog));
        PressOk();
    });
    EXPECT_NE(LogText().find("TrackPopupMenu() failed with error code 0x579"), std::string::npos);
    EXPECT_NE(LogText().find("TrackPopupMenu() returned unexpected value 0x4D"), std::string::npos);
    EXPECT_EQ(SetInHandle(), other);
}
