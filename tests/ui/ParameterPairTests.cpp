// The pairs in a dialog of their own, driven with the messages of keyboard and mouse, with both generations
// of the rich edit control.
#include "tests/ui/PairDialog.h"
#include "tests/ui/UserPrompts.h"
#include "ui/DialogMessages.h"
#include "ui/ParameterEdit.h"
#include "ui/ParameterTrackbar.h"

#include <gtest/gtest.h>

#include <commctrl.h>
#include <richedit.h>

#include <set>

namespace {

enum RowIndex { kThreshold, kIntensity, kLength, kAngle, kPoints, kSharpness, kSaturation };

// Opening the dialog is the slow part, so that the tests of one kind of control share it.
class ParameterPairs : public testing::TestWithParam<const char *> {
protected:
    static PairDialog dialog;

    void SetUp() override {
        if (dialog.window)
            ResetPairDialog(&dialog, kDefaultParameters);
        else
            ASSERT_TRUE(OpenPairDialog(&dialog, GetParam(), kDefaultParameters));
    }
    static void TearDownTestSuite() { ClosePairDialog(&dialog); }

    static HWND Edit(int row) { return gParameterControls[row].edit; }
    static HWND Trackbar(int row) { return gParameterControls[row].trackbar; }

    // Focus selects all the text, so that the first character replaces it.
    static void Type(int row, const char *text) {
        SetFocus(Edit(row));
        TypeText(Edit(row), text);
    }
    void LeaveField() { SetFocus(dialog.otherControl); }
    int TakeChanges() {
        const int count = dialog.changesSent;
        dialog.changesSent = 0;
        return count;
    }
};

PairDialog ParameterPairs::dialog;

INSTANTIATE_TEST_SUITE_P(RichEdit2, ParameterPairs, testing::Values("RichEdit20A"));
INSTANTIATE_TEST_SUITE_P(RichEdit5, ParameterPairs, testing::Values("RICHEDIT50W"));

TEST_P(ParameterPairs, BindingShowsEveryParameter) {
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
        parameters.insert(row.value);
    }
    EXPECT_EQ(parameters.size(), 11u);
    EXPECT_EQ(gParameterControls[kThreshold].value, &dialog.parameters.threshold);
    EXPECT_EQ(gParameterControls[kAngle].value, &dialog.parameters.angle);
    EXPECT_EQ(memcmp(&dialog.parameters, &kDefaultParameters, sizeof dialog.parameters), 0);
}

TEST_P(ParameterPairs, BindingBringsValuesIntoRange) {
    ParameterSet wild = kDefaultParameters;
    wild.threshold = 32767;
    wild.angle = -32768;
    wild.numberOfPoints = 0;
    wild.colorSaturation = -101;
    ResetPairDialog(&dialog, wild);
    EXPECT_EQ(dialog.parameters.threshold, 100);
    EXPECT_EQ(dialog.parameters.angle, -900);
    EXPECT_EQ(dialog.parameters.numberOfPoints, 1);
    EXPECT_EQ(dialog.parameters.colorSaturation, -100);
    EXPECT_EQ(EditText(kAngle), "-90.0");
    EXPECT_EQ(TrackbarPositionOf(kAngle), -900);
}

TEST_P(ParameterPairs, TypedNumbersAreStoredAtOnce) {
    Type(kThreshold, "7");
    EXPECT_EQ(dialog.parameters.threshold, 7);
    EXPECT_EQ(TrackbarPositionOf(kThreshold), 7);
    EXPECT_EQ(TakeChanges(), 1);
    TypeText(Edit(kThreshold), "3");
    EXPECT_EQ(dialog.parameters.threshold, 73);
    EXPECT_EQ(TakeChanges(), 1);
    TypeText(Edit(kThreshold), ".");
    EXPECT_EQ(TakeChanges(), 0) << "the same value again tells nobody";
    EXPECT_EQ(EditText(kThreshold), "73.");
    LeaveField();
    EXPECT_EQ(EditText(kThreshold), "73");
    EXPECT_EQ(TakeChanges(), 0);
}

// What a field shows while it is edited, what is stored, and what it shows when it is left.
TEST_P(ParameterPairs, TypedOrPastedTextIsStoredInRangeAndPutRightAtTheEnd) {
    const struct {
        int row;
        bool pasted;
        const char *text, *shown;
        int stored;
        const char *left;
    } cases[] = {
        {kThreshold, false, "101", "101", 100, "100"}, {kPoints, false, "0", "0", 1, "1"},
        {kAngle, false, "7.25", "7.25", 72, "7.2"},    {kAngle, false, "-90.0", "-90.", -900, "-90.0"},
        {kAngle, false, "-", "-", -900, "-90.0"},      {kAngle, false, ".", ".", -900, "-90.0"},
        {kAngle, false, "++", "++", -900, "-90.0"},    {kAngle, true, "7,25", "7,25", 72, "7.2"},
        {kIntensity, true, "1e9", "1e9", 100, "100"},  {kLength, true, "abcd", "abcd", 50, "50"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        SetFocus(Edit(c.row));
        if (c.pasted)
            SendMessageA(Edit(c.row), EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(c.text));
        else
            TypeText(Edit(c.row), c.text);
        EXPECT_EQ(EditText(c.row), c.shown);
        EXPECT_EQ(*gParameterControls[c.row].value, c.stored);
        EXPECT_EQ(TrackbarPositionOf(c.row), c.stored);
        LeaveField();
        EXPECT_EQ(EditText(c.row), c.left);
    }
    TakeChanges();
    SetFocus(Edit(kAngle));
    PressKey(Edit(kAngle), VK_BACK);
    TypeText(Edit(kAngle), "\b");
    EXPECT_EQ(EditText(kAngle), "") << "Backspace removes the selected text";
    EXPECT_EQ(dialog.parameters.angle, 72);
    EXPECT_EQ(TakeChanges(), 0);
    SetFocus(Edit(kSharpness));
    SetWindowTextA(Edit(kSharpness), std::string(40, '9').c_str());
    EXPECT_EQ(dialog.parameters.spikeSharpness, 100);
}

TEST_P(ParameterPairs, OtherCharactersBeepAndAreDropped) {
    SetFocus(Edit(kIntensity));
    TakeBeeps();
    TypeText(Edit(kIntensity), "aZ ,%\xE4");
    EXPECT_EQ(TakeBeeps(), 6);
    // What follows Tab, Enter, Esc, Ctrl+C and Ctrl+Backspace is no character of the text, and no mistake
    // either.
    TypeText(Edit(kIntensity), "\t\r\x1B\x03\x7F");
    EXPECT_EQ(TakeBeeps(), 0);
    EXPECT_EQ(EditText(kIntensity), "50");
    EXPECT_EQ(TakeChanges(), 0);
    for (const char *p = "0123456789.-+\b"; *p; ++p)
        EXPECT_TRUE(OnEditCharacter(static_cast<unsigned char>(*p))) << *p;
    EXPECT_EQ(TakeBeeps(), 0);
}

TEST_P(ParameterPairs, KeysStepThroughTheTrackbar) {
    SetFocus(Edit(kThreshold));
    const struct {
        WPARAM key;
        int repeat, expected, changes;
    } steps[] = {{VK_UP, 1, 51, 1},  {VK_DOWN, 3, 48, 1}, {VK_PRIOR, 1, 58, 1},      {VK_NEXT, 2, 38, 1},
                 {VK_NEXT, 9, 0, 1}, {VK_DOWN, 1, 0, 0},  {VK_PRIOR, 65535, 100, 1}, {VK_UP, 1, 100, 0}};
    for (const auto &step : steps) {
        PressKey(Edit(kThreshold), step.key, step.repeat);
        EXPECT_EQ(dialog.parameters.threshold, step.expected);
        EXPECT_EQ(TrackbarPositionOf(kThreshold), step.expected);
        EXPECT_EQ(EditText(kThreshold), std::to_string(step.expected));
        EXPECT_EQ(TakeChanges(), step.changes);
    }
    SetFocus(Edit(kAngle));
    PressKey(Edit(kAngle), VK_UP);
    EXPECT_EQ(EditText(kAngle), "15.1");
    PressKey(Edit(kAngle), VK_NEXT);
    EXPECT_EQ(EditText(kAngle), "5.1");
}

TEST_P(ParameterPairs, CtrlArrowsTakeTheBigStep) {
    Type(kPoints, "31");
    HoldCtrl(true);
    PressKey(Edit(kPoints), VK_UP);
    EXPECT_EQ(dialog.parameters.numberOfPoints, 32);
    PressKey(Edit(kPoints), VK_DOWN);
    EXPECT_EQ(dialog.parameters.numberOfPoints, 30);
    PressKey(Edit(kPoints), VK_NEXT);
    EXPECT_EQ(dialog.parameters.numberOfPoints, 22) << "Ctrl does not change the page step";
    SetFocus(Edit(kAngle));
    PressKey(Edit(kAngle), VK_DOWN);
    PressKey(Edit(kAngle), VK_LEFT); // moves within the text
    EXPECT_EQ(dialog.parameters.angle, 140);
    EXPECT_FALSE(OnEditKey(&gParameterControls[kAngle], VK_HOME, 1, false));
}

// Through the queue and the dialog manager, as a real key goes.
TEST_P(ParameterPairs, DialogKeysWorkFromAField) {
    const auto Post = [](HWND edit, WPARAM key) {
        PostMessageA(edit, WM_KEYDOWN, key, 1);
        PostMessageA(edit, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
        PumpMessages();
    };
    SetFocus(Edit(kThreshold));
    TakeBeeps();
    Post(Edit(kThreshold), VK_TAB);
    EXPECT_EQ(GetFocus(), Edit(kIntensity));
    EXPECT_TRUE(gParameterControls[kIntensity].editing);
    EXPECT_FALSE(gParameterControls[kThreshold].editing);
    Post(Edit(kIntensity), VK_UP);
    EXPECT_EQ(dialog.parameters.intensity, 51);
    Post(Edit(kIntensity), '7');
    EXPECT_EQ(dialog.parameters.intensity, 7);
    Post(Edit(kIntensity), VK_ESCAPE);
    Post(Edit(kIntensity), VK_RETURN);
    EXPECT_EQ(EditText(kIntensity), "7");
    EXPECT_EQ(TakeBeeps(), 0);
}

TEST_P(ParameterPairs, FocusSelectsTheTextAndSetsEditing) {
    FocusParameterControl(kLength);
    EXPECT_EQ(GetFocus(), Edit(kLength));
    EXPECT_TRUE(gParameterControls[kLength].editing);
    CHARRANGE selected = {};
    SendMessageA(Edit(kLength), EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selected));
    EXPECT_EQ(selected.cpMin, 0);
    EXPECT_GE(selected.cpMax, 2);
    FocusParameterControl(kAngle);
    EXPECT_FALSE(gParameterControls[kLength].editing);
    FocusParameterControl(-1);
    FocusParameterControl(kParameterControlCount);
    EXPECT_EQ(GetFocus(), Edit(kAngle));
}

TEST_P(ParameterPairs, RefreshIsSilent) {
    SetFocus(Edit(kIntensity));
    dialog.parameters.intensity = 12;
    dialog.parameters.angle = 901;
    dialog.parameters.colorSaturation = -7;
    SendMessageA(dialog.window, kMsgParametersReplaced, 0, 0);
    PumpMessages();
    EXPECT_EQ(EditText(kIntensity), "12");
    EXPECT_EQ(EditText(kAngle), "90.0");
    EXPECT_EQ(dialog.parameters.angle, 900);
    EXPECT_EQ(TrackbarPositionOf(kAngle), 900);
    EXPECT_EQ(EditText(kSaturation), "-7");
    EXPECT_EQ(TakeChanges(), 0);
    CHARRANGE selected = {};
    SendMessageA(Edit(kIntensity), EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&selected));
    EXPECT_EQ(selected.cpMin, 0) << "the edited field is selected whole again";
    EXPECT_GE(selected.cpMax, 2);
    TypeText(Edit(kIntensity), "8");
    EXPECT_EQ(TakeChanges(), 1) << "and what is typed next still counts";
}

TEST_P(ParameterPairs, TextSetWhileNotEditingChangesNothing) {
    SetWindowTextA(Edit(kIntensity), "77");
    EXPECT_EQ(dialog.parameters.intensity, 50);
    EXPECT_EQ(TakeChanges(), 0);
    EXPECT_FALSE(OnParameterEditChanged(999));
}

TEST_P(ParameterPairs, DraggingTheThumbFollowsEveryMove) {
    const HWND trackbar = Trackbar(kIntensity);
    SendMouse(trackbar, WM_LBUTTONDOWN, MK_LBUTTON, ThumbCenter(kIntensity));
    EXPECT_EQ(dialog.parameters.intensity, 50);
    EXPECT_TRUE(gParameterControls[kIntensity].editing);
    SendMouse(trackbar, WM_MOUSEMOVE, MK_LBUTTON, PointForValue(kIntensity, 60));
    EXPECT_EQ(dialog.parameters.intensity, TrackbarPositionOf(kIntensity));
    EXPECT_NEAR(dialog.parameters.intensity, 60, 1);
    EXPECT_EQ(EditText(kIntensity), std::to_string(dialog.parameters.intensity));
    EXPECT_EQ(TakeChanges(), 1);
    SendMouse(trackbar, WM_MOUSEMOVE, MK_LBUTTON, PointForValue(kIntensity, 60));
    EXPECT_EQ(TakeChanges(), 1) << "every move tells, also one that changes nothing";
    SendMouse(trackbar, WM_LBUTTONUP, 0, PointForValue(kIntensity, 60));
    EXPECT_EQ(TakeChanges(), 0);
    EXPECT_EQ(GetFocus(), Edit(kIntensity));
    EXPECT_TRUE(gParameterControls[kIntensity].editing);
    SendMouse(trackbar, WM_MOUSEMOVE, 0, PointForValue(kIntensity, 20));
    EXPECT_EQ(TakeChanges(), 0) << "no button, no change";
}

TEST_P(ParameterPairs, PressBesideTheThumbsCentreDoesNotMoveIt) {
    const HWND trackbar = Trackbar(kThreshold);
    RECT thumb = {};
    SendMessageA(trackbar, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    const LONG middle = (thumb.top + thumb.bottom) / 2;
    for (const POINT press : {POINT{thumb.left, middle}, POINT{thumb.right - 1, middle}}) {
        SendMouse(trackbar, WM_LBUTTONDOWN, MK_LBUTTON, press);
        SendMouse(trackbar, WM_LBUTTONUP, 0, press);
        EXPECT_EQ(dialog.parameters.threshold, 50);
        EXPECT_EQ(TakeChanges(), 0);
    }
    const LPARAM edge = MAKELPARAM(thumb.left, thumb.top);
    EXPECT_EQ(OnTrackbarButtonDown(gParameterControls[kThreshold], edge),
              MAKELPARAM((thumb.left + thumb.right) / 2, middle));
}

TEST_P(ParameterPairs, PressBesideTheThumbStepsAPage) {
    const HWND trackbar = Trackbar(kThreshold);
    const POINT channelEnd = PointForValue(kThreshold, 100);
    EXPECT_EQ(OnTrackbarButtonDown(gParameterControls[kThreshold], MAKELPARAM(channelEnd.x, channelEnd.y)),
              MAKELPARAM(channelEnd.x, channelEnd.y));
    SendMouse(trackbar, WM_LBUTTONDOWN, MK_LBUTTON, channelEnd);
    SendMouse(trackbar, WM_LBUTTONUP, 0, channelEnd);
    EXPECT_EQ(dialog.parameters.threshold, 60);
    EXPECT_EQ(EditText(kThreshold), "60");
    EXPECT_EQ(TakeChanges(), 1);
    EXPECT_EQ(GetFocus(), Edit(kThreshold));
}

TEST_P(ParameterPairs, TrackbarKeepsEditingWhenItsEditTakesOver) {
    SetFocus(Trackbar(kLength));
    EXPECT_TRUE(gParameterControls[kLength].editing);
    SetFocus(Edit(kLength));
    EXPECT_TRUE(gParameterControls[kLength].editing);
    SetFocus(Trackbar(kLength));
    EXPECT_TRUE(gParameterControls[kLength].editing);
    SetFocus(Trackbar(kAngle));
    EXPECT_FALSE(gParameterControls[kLength].editing);
    EXPECT_TRUE(gParameterControls[kAngle].editing);
    LeaveField();
    EXPECT_FALSE(gParameterControls[kAngle].editing);
}

TEST_P(ParameterPairs, KeysOnTheTrackbarKeepThePairTogether) {
    SetFocus(Trackbar(kLength));
    PressKey(Trackbar(kLength), VK_END);
    EXPECT_EQ(dialog.parameters.length, 100);
    EXPECT_EQ(EditText(kLength), "100");
    EXPECT_EQ(TakeChanges(), 1);
    PressKey(Trackbar(kLength), VK_END);
    EXPECT_EQ(TakeChanges(), 0);
}

std::string TooltipOf(const PairDialog &dialog, HWND control) {
    char text[300] = "";
    TTTOOLINFOA tool = {};
    tool.cbSize = TTTOOLINFOA_V1_SIZE;
    tool.hwnd = dialog.window;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = text;
    SendMessageA(dialog.tooltips, TTM_GETTEXTA, sizeof text, reinterpret_cast<LPARAM>(&tool));
    return text;
}

TEST_P(ParameterPairs, EveryControlHasItsTooltip) {
    EXPECT_EQ(SendMessageA(dialog.tooltips, TTM_GETTOOLCOUNT, 0, 0), 22);
    // Some systems give back no more than 80 characters of a text.
    const auto Begins = [](const std::string &text) { return text.substr(0, 80); };
    for (int i = 0; i < kParameterControlCount; ++i) {
        EXPECT_EQ(Begins(TooltipOf(dialog, Edit(i))), Begins(gParameterControls[i].editTooltip));
        EXPECT_EQ(Begins(TooltipOf(dialog, Trackbar(i))), Begins(gParameterControls[i].trackbarTooltip));
    }
    EXPECT_EQ(TooltipOf(dialog, Edit(kPoints)),
              "Number of Points (N) - Set the number of main spikes around a light source");
}

TEST_P(ParameterPairs, RowsWithoutControlsTakeTheirDefaults) {
    ClosePairDialog(&dialog);
    ParameterSet set = kDefaultParameters;
    set.angle = 7;
    set.length = 7;
    ASSERT_TRUE(OpenPairDialog(&dialog, GetParam(), set, 1u << kAngle));
    EXPECT_EQ(dialog.parameters.angle, 150);
    EXPECT_EQ(dialog.parameters.length, 7);
    dialog.parameters.angle = 8;
    RefreshParameterControls();
    EXPECT_EQ(dialog.parameters.angle, 150);
    EXPECT_TRUE(OnParameterEditChanged(gParameterControls[kAngle].editId)) << "known, but nothing to read";
    FocusParameterControl(kAngle);
    ClosePairDialog(&dialog);
    dialog.parameters.angle = 8;
    RefreshParameterControls();
    EXPECT_EQ(dialog.parameters.angle, 8) << "a closed dialog has let go of these parameters too";
}

TEST_P(ParameterPairs, ClosedDialogLetsGoOfTheParameters) {
    EXPECT_NE(gParameterControls[0].font, nullptr);
    ClosePairDialog(&dialog);
    for (const ParameterControl &row : gParameterControls) {
        EXPECT_EQ(row.value, nullptr);
        EXPECT_EQ(row.edit, nullptr);
        EXPECT_EQ(row.trackbar, nullptr);
        EXPECT_EQ(row.font, nullptr);
    }
    dialog.parameters.threshold = 1234;
    RefreshParameterControls();
    FocusParameterControl(0);
    EXPECT_EQ(dialog.parameters.threshold, 1234);
}

} // namespace
