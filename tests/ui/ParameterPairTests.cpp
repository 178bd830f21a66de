// The pairs on the dialog's template, driven with the messages of keyboard and mouse.
#include "tests/ui/PairDialog.h"
#include "ui/fields/ParameterEdit.h"
#include "ui/fields/ParameterTable.h"
#include "ui/fields/ParameterTrackbar.h"
#include "ui/window/DialogMessages.h"

#include <commctrl.h>
#include <cstring>
#include <richedit.h>
#include <set>

namespace {

class ParameterPairs : public PairTest {
protected:
    // Focus selects all the text, so that the first character replaces it.
    static void Type(int row, const char *text) {
        SetFocus(Edit(row));
        TypeText(Edit(row), text);
    }
    static void LeaveField() { SetFocus(dialog.otherControl); }
    static int TakeChanges() {
        const int count = dialog.changesSent;
        dialog.changesSent = 0;
        return count;
    }
    static bool IsEditing(int row) { return gParameterControls[row].editing; }
    static bool IsAllSelected(int row) {
        CHARRANGE selected = {-1, -1};
        SendMessageA(Edit(row), EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selected));
        return selected.cpMin == 0 && selected.cpMax >= static_cast<LONG>(EditText(row).size());
    }
    // Some systems give back no more than 80 characters.
    static std::string TooltipOf(HWND control) {
        char text[300] = "";
        TTTOOLINFOA tool = {};
        tool.cbSize = TTTOOLINFOA_V1_SIZE;
        tool.hwnd = dialog.window;
        tool.uId = reinterpret_cast<UINT_PTR>(control);
        tool.lpszText = text;
        SendMessageA(dialog.tooltips, TTM_GETTEXTA, sizeof text, reinterpret_cast<LPARAM>(&tool));
        return std::string(text).substr(0, 80);
    }
};

TEST_F(ParameterPairs, BindingShowsEveryParameterInRange) {
    const char *const expected[] = {"50", "50", "50", "15.0", "6", "50", "30", "50", "50", "15", "30"};
    std::set<int16_t *> parameters;
    for (int i = 0; i < kParameterControlCount; ++i) {
        const ParameterControl &row = gParameterControls[i];
        EXPECT_EQ(EditText(i), expected[i]) << i;
        EXPECT_EQ(TrackbarPositionOf(i), row.defaultValue) << i;
        EXPECT_EQ(SendMessageA(Trackbar(i), TBM_GETRANGEMIN, 0, 0), row.minimum) << i;
        EXPECT_EQ(SendMessageA(Trackbar(i), TBM_GETRANGEMAX, 0, 0), row.maximum) << i;
        EXPECT_EQ(SendMessageA(Trackbar(i), TBM_GETPAGESIZE, 0, 0), row.pageStep) << i;
        EXPECT_EQ(SendMessageA(Trackbar(i), TBM_GETLINESIZE, 0, 0), row.arrowStep) << i;
        EXPECT_EQ(SendMessageA(Edit(i), EM_GETLIMITTEXT, 0, 0), 4) << i;
        EXPECT_EQ(TooltipOf(Edit(i)), std::string(row.editTooltip).substr(0, 80));
        EXPECT_EQ(TooltipOf(Trackbar(i)), std::string(row.trackbarTooltip).substr(0, 80));
        parameters.insert(row.value);
    }
    EXPECT_EQ(parameters.size(), 11u);
    EXPECT_EQ(gParameterControls[kAngle].value, &dialog.parameters.angle);
    EXPECT_EQ(memcmp(&dialog.parameters, &kDefaultParameters, sizeof dialog.parameters), 0);
    ParameterSet wild = kDefaultParameters;
    wild.threshold = 32767;
    wild.angle = -32768;
    wild.numberOfPoints = 0;
    ResetPairDialog(&dialog, wild);
    EXPECT_EQ(dialog.parameters.threshold, 100);
    EXPECT_EQ(dialog.parameters.angle, -900);
    EXPECT_EQ(dialog.parameters.numberOfPoints, 1);
    EXPECT_EQ(EditText(kAngle), "-90.0");
    EXPECT_EQ(TrackbarPositionOf(kAngle), -900);
}

// What a field shows while it is edited, what is stored, and what it shows when it is left.
TEST_F(ParameterPairs, TypedOrPastedTextIsStoredInRangeAndPutRightAtTheEnd) {
    const struct {
        int row;
        bool pasted;
        const char *text, *shown;
        int stored, changes;
        const char *left;
    } cases[] = {
        {kThreshold, false, "73.", "73.", 73, 2, "73"},     {kThreshold, false, "101", "101", 100, 3, "100"},
        {kNumberOfPoints, false, "0", "0", 1, 1, "1"},      {kAngle, false, "7.25", "7.25", 72, 2, "7.2"},
        {kAngle, false, "-90.0", "-90.", -900, 2, "-90.0"}, {kAngle, false, "-", "-", -900, 0, "-90.0"},
        {kAngle, false, "++", "++", -900, 0, "-90.0"},      {kAngle, true, "7,25", "7,25", 72, 1, "7.2"},
        {kIntensity, true, "1e9", "1e9", 100, 1, "100"},    {kLength, true, "abcd", "abcd", 50, 0, "50"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        SetFocus(Edit(c.row));
        TakeChanges();
        if (c.pasted)
            SendMessageA(Edit(c.row), EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(c.text));
        else
            TypeText(Edit(c.row), c.text);
        EXPECT_EQ(EditText(c.row), c.shown);
        EXPECT_EQ(*gParameterControls[c.row].value, c.stored);
        EXPECT_EQ(TrackbarPositionOf(c.row), c.stored);
        LeaveField();
        EXPECT_EQ(TakeChanges(), c.changes);
        EXPECT_EQ(EditText(c.row), c.left);
    }
    SetFocus(Edit(kAngle));
    PressKey(Edit(kAngle), VK_BACK);
    TypeText(Edit(kAngle), "\b");
    EXPECT_EQ(EditText(kAngle), "") << "Backspace removes the selected text";
    EXPECT_EQ(dialog.parameters.angle, 72);
    SetFocus(Edit(kSpikeSharpness));
    SetWindowTextA(Edit(kSpikeSharpness), std::string(40, '9').c_str());
    EXPECT_EQ(dialog.parameters.spikeSharpness, 100);
}

TEST_F(ParameterPairs, OtherCharactersBeepAndAreDropped) {
    SetFocus(Edit(kIntensity));
    TakeBeeps();
    TypeText(Edit(kIntensity), "aZ ,%\xE4");
    EXPECT_EQ(TakeBeeps(), 6);
    // What follows Tab, Enter, Esc, Ctrl+C and Ctrl+Backspace is no character of the text, and no mistake
    // either.
    TypeText(Edit(kIntensity), "\t\r\x1B\x03\x7F");
    EXPECT_EQ(EditText(kIntensity), "50");
    EXPECT_EQ(TakeChanges(), 0);
    for (const char *p = "0123456789.-+\b"; *p; ++p)
        EXPECT_TRUE(OnEditCharacter(static_cast<unsigned char>(*p))) << *p;
    EXPECT_EQ(TakeBeeps(), 0);
}

TEST_F(ParameterPairs, KeysStepThroughTheTrackbar) {
    const struct {
        int row;
        bool ctrl;
        WPARAM key;
        int repeat, expected, changes;
    } steps[] = {{kThreshold, false, VK_UP, 1, 51, 1},       {kThreshold, false, VK_DOWN, 3, 48, 1},
                 {kThreshold, false, VK_PRIOR, 1, 58, 1},    {kThreshold, false, VK_NEXT, 9, 0, 1},
                 {kThreshold, false, VK_DOWN, 1, 0, 0},      {kThreshold, false, VK_PRIOR, 65535, 100, 1},
                 {kAngle, false, VK_UP, 1, 151, 1},          {kAngle, true, VK_DOWN, 1, 141, 1},
                 {kAngle, false, VK_LEFT, 1, 141, 0},        {kNumberOfPoints, true, VK_UP, 13, 32, 1},
                 {kNumberOfPoints, true, VK_DOWN, 1, 30, 1}, {kNumberOfPoints, true, VK_NEXT, 1, 22, 1}};
    for (const auto &step : steps) {
        SetFocus(Edit(step.row));
        HoldCtrl(step.ctrl);
        PressKey(Edit(step.row), step.key, step.repeat);
        EXPECT_EQ(*gParameterControls[step.row].value, step.expected);
        EXPECT_EQ(TrackbarPositionOf(step.row), step.expected);
        EXPECT_EQ(TakeChanges(), step.changes) << step.expected;
    }
    EXPECT_EQ(EditText(kAngle), "14.1");
    EXPECT_EQ(EditText(kNumberOfPoints), "22");
    EXPECT_FALSE(OnEditKey(&gParameterControls[kAngle], VK_HOME, 1, false));
}

// Through the queue and the dialog manager, as a real key goes.
TEST_F(ParameterPairs, DialogKeysWorkFromAField) {
    SetFocus(Edit(kThreshold));
    TakeBeeps();
    for (const WPARAM key : {VK_TAB, VK_UP, static_cast<int>('7'), VK_ESCAPE, VK_RETURN}) {
        PostMessageA(GetFocus(), WM_KEYDOWN, key, 1);
        PostMessageA(GetFocus(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
        PumpMessages();
        EXPECT_EQ(GetFocus(), Edit(kIntensity));
        EXPECT_TRUE(IsEditing(kIntensity) && !IsEditing(kThreshold));
        EXPECT_EQ(dialog.parameters.intensity, key == VK_TAB ? 50 : key == VK_UP ? 51 : 7);
    }
    EXPECT_EQ(EditText(kIntensity), "7");
    EXPECT_EQ(TakeBeeps(), 0);
}

TEST_F(ParameterPairs, FocusSelectsTheTextAndRefreshIsSilent) {
    FocusParameterControl(kIntensity);
    EXPECT_EQ(GetFocus(), Edit(kIntensity));
    EXPECT_TRUE(IsEditing(kIntensity) && IsAllSelected(kIntensity));
    FocusParameterControl(-1);
    FocusParameterControl(kParameterControlCount);
    EXPECT_EQ(GetFocus(), Edit(kIntensity));
    dialog.parameters.intensity = 12;
    dialog.parameters.angle = 901;
    dialog.parameters.colorSaturation = -7;
    SendMessageA(dialog.window, kMsgParametersReplaced, 0, 0);
    PumpMessages();
    EXPECT_EQ(EditText(kIntensity), "12");
    EXPECT_EQ(EditText(kAngle), "90.0");
    EXPECT_EQ(dialog.parameters.angle, 900);
    EXPECT_EQ(TrackbarPositionOf(kAngle), 900);
    EXPECT_EQ(EditText(kColorSaturation), "-7");
    EXPECT_TRUE(IsAllSelected(kIntensity)) << "the edited field is selected whole again";
    SetWindowTextA(Edit(kLength), "77");
    EXPECT_EQ(dialog.parameters.length, 50) << "nobody edits this one";
    EXPECT_EQ(TakeChanges(), 0);
    TypeText(Edit(kIntensity), "8");
    EXPECT_EQ(TakeChanges(), 1) << "what is typed next still counts";
    EXPECT_FALSE(OnParameterEditChanged(999));
}

TEST_F(ParameterPairs, DraggingTheThumbFollowsEveryMove) {
    const HWND trackbar = Trackbar(kIntensity);
    SendMouse(trackbar, WM_LBUTTONDOWN, MK_LBUTTON, PointForValue(kIntensity, 50));
    EXPECT_EQ(dialog.parameters.intensity, 50);
    EXPECT_TRUE(IsEditing(kIntensity));
    for (int move = 0; move < 2; ++move) { // every move tells, also one that changes nothing
        SendMouse(trackbar, WM_MOUSEMOVE, MK_LBUTTON, PointForValue(kIntensity, 60));
        EXPECT_EQ(dialog.parameters.intensity, TrackbarPositionOf(kIntensity));
        EXPECT_NEAR(dialog.parameters.intensity, 60, 1);
        EXPECT_EQ(EditText(kIntensity), std::to_string(dialog.parameters.intensity));
        EXPECT_EQ(TakeChanges(), 1);
    }
    SendMouse(trackbar, WM_LBUTTONUP, 0, PointForValue(kIntensity, 60));
    EXPECT_EQ(GetFocus(), Edit(kIntensity));
    EXPECT_TRUE(IsEditing(kIntensity));
    SendMouse(trackbar, WM_MOUSEMOVE, 0, PointForValue(kIntensity, 20));
    EXPECT_EQ(TakeChanges(), 0) << "no button, no change";
}

TEST_F(ParameterPairs, PressesOnTheThumbDoNotMoveItAndBesideItStepAPage) {
    const HWND trackbar = Trackbar(kThreshold);
    const auto Press = [&](POINT at) {
        SendMouse(trackbar, WM_LBUTTONDOWN, MK_LBUTTON, at);
        SendMouse(trackbar, WM_LBUTTONUP, 0, at);
    };
    const RECT thumb = ThumbOf(kThreshold);
    const LONG middle = (thumb.top + thumb.bottom) / 2;
    for (const LONG x : {thumb.left, thumb.right - 1}) {
        Press({x, middle});
        EXPECT_EQ(dialog.parameters.threshold, 50);
        EXPECT_EQ(TakeChanges(), 0);
    }
    EXPECT_EQ(OnTrackbarButtonDown(gParameterControls[kThreshold], MAKELPARAM(thumb.left, thumb.top)),
              MAKELPARAM((thumb.left + thumb.right) / 2, middle));
    const POINT end = PointForValue(kThreshold, 100);
    EXPECT_EQ(OnTrackbarButtonDown(gParameterControls[kThreshold], MAKELPARAM(end.x, end.y)),
              MAKELPARAM(end.x, end.y));
    Press(end);
    EXPECT_EQ(dialog.parameters.threshold, 60);
    EXPECT_EQ(EditText(kThreshold), "60");
    EXPECT_EQ(TakeChanges(), 1);
    EXPECT_EQ(GetFocus(), Edit(kThreshold));
}

TEST_F(ParameterPairs, TrackbarsWithTheFocusKeepThePairTogether) {
    for (const HWND focus : {Trackbar(kLength), Edit(kLength), Trackbar(kLength)}) {
        SetFocus(focus);
        EXPECT_TRUE(IsEditing(kLength));
    }
    for (const int changes : {1, 0}) {
        PressKey(Trackbar(kLength), VK_END);
        EXPECT_EQ(dialog.parameters.length, 100);
        EXPECT_EQ(EditText(kLength), "100");
        EXPECT_EQ(TakeChanges(), changes);
    }
    SetFocus(Trackbar(kAngle));
    EXPECT_TRUE(!IsEditing(kLength) && IsEditing(kAngle));
    LeaveField();
    EXPECT_FALSE(IsEditing(kAngle));
}

TEST_F(ParameterPairs, RowsWithoutControlsTakeTheirDefaultsAndClosedOnesLetGo) {
    ClosePairDialog(&dialog);
    ParameterSet set = kDefaultParameters;
    set.angle = set.length = 7;
    ASSERT_TRUE(OpenPairDialog(&dialog, set, 1u << kAngle));
    EXPECT_EQ(dialog.parameters.angle, 150);
    EXPECT_EQ(dialog.parameters.length, 7);
    dialog.parameters.angle = 8;
    RefreshParameterControls();
    EXPECT_EQ(dialog.parameters.angle, 150);
    EXPECT_TRUE(OnParameterEditChanged(gParameterControls[kAngle].editId)) << "known, but nothing to read";
    FocusParameterControl(kAngle);
    EXPECT_NE(gParameterControls[0].font, nullptr);
    ClosePairDialog(&dialog);
    for (const ParameterControl &row : gParameterControls)
        EXPECT_TRUE(!row.value && !row.edit && !row.trackbar && !row.font);
    dialog.parameters.angle = dialog.parameters.threshold = 1234;
    RefreshParameterControls();
    FocusParameterControl(0);
    EXPECT_EQ(dialog.parameters.angle, 1234);
    EXPECT_EQ(dialog.parameters.threshold, 1234);
}

} // namespace
