// Every control that changes the result: what the person sets is what the host's picture gets.
#include "tests/dialog/DialogFixture.h"

#include "render/EffectTypes.h"
#include "ui/DialogMessages.h"

#include <commctrl.h>

namespace {

class DialogControls : public DialogFixture {
protected:
    std::wstring Shown(const ParameterPair &pair, int value) const {
        if (pair.decimals == 0)
            return std::to_wstring(value);
        wchar_t text[20];
        swprintf(text, 20, L"%.1f", value / 10.0);
        return text;
    }
    // Text of the tool that the tooltip window has for a control: the first 80 characters, all that this call
    // gives.
    std::string TipOf(int id) const {
        std::pair<HWND, HWND> found = {dialog, nullptr};
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND window, LPARAM parameter) -> BOOL {
                auto &search = *reinterpret_cast<std::pair<HWND, HWND> *>(parameter);
                wchar_t name[40] = L"";
                GetClassNameW(window, name, 40);
                if (GetWindow(window, GW_OWNER) == search.first && lstrcmpiW(name, L"tooltips_class32") == 0)
                    search.second = window;
                return !search.second;
            },
            reinterpret_cast<LPARAM>(&found));
        char text[300] = "";
        TTTOOLINFOA tool = {};
        tool.cbSize = TTTOOLINFOA_V1_SIZE;
        tool.hwnd = dialog;
        tool.uId = reinterpret_cast<UINT_PTR>(Item(id));
        tool.lpszText = text;
        SendMessageA(found.second, TTM_GETTEXTA, 0, reinterpret_cast<LPARAM>(&tool));
        return text;
    }
};

} // namespace

TEST_F(DialogControls, AllPairsByTypingAndByDragging) {
    const host::Document before = filterHost.document;
    ParameterSet wanted = kDefaultParameters;
    RunDialog([&] {
        Settle();
        for (const ParameterPair &pair : kPairs) {
            SCOPED_TRACE(pair.edit);
            const int typed = pair.decimals ? -30 : pair.maximum - 3;
            Forget();
            Type(pair.edit, pair.decimals ? "-3.0" : std::to_string(typed));
            EXPECT_EQ(SetInHandle().*pair.value, typed);
            EXPECT_EQ(Position(pair.trackbar), typed);
            EXPECT_GT(Seen(kMsgParameterChanged), 0);
            EXPECT_GT(Seen(kMsgRequestPreview), 0);
            const int middle = (pair.minimum + pair.maximum) / 2;
            Forget();
            DragTrackbar(pair.trackbar, middle);
            const int dragged = Position(pair.trackbar);
            EXPECT_NEAR(dragged, middle, (pair.maximum - pair.minimum) * 0.02 + 1);
            EXPECT_EQ(SetInHandle().*pair.value, dragged);
            EXPECT_EQ(Text(pair.edit), Shown(pair, dragged));
            EXPECT_EQ(GetFocus(), Item(pair.edit));
            EXPECT_GT(Seen(kMsgParameterChanged), 1) << "the preview follows the thumb";
            wanted.*pair.value = static_cast<int16_t>(dragged);
        }
        Key('H');
        Key(VK_UP);
        Key(VK_PRIOR);
        Key(VK_UP, true);
        wanted.threshold = static_cast<int16_t>(wanted.threshold + 1 + 10 + 10);
        Type(kPairs[4].edit, "31");
        Key(VK_UP, true);
        wanted.numberOfPoints = 32;
        Type(kPairs[3].edit, "7.25");
        Key('I');
        EXPECT_EQ(Text(kPairs[3].edit), L"7.2");
        wanted.angle = 72;
        Type(kPairs[1].edit, "101");
        wanted.intensity = 100;
        Forget();
        const int beeps = gAnswers.beeps;
        Character(L'q');
        EXPECT_EQ(gAnswers.beeps, beeps + 1);
        EXPECT_EQ(Seen(kMsgParameterChanged), 0);
        EXPECT_EQ(SetInHandle(), wanted);
        PressOk();
    });
    EXPECT_EQ(SetInHandle(), wanted);
    EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, wanted)), 0);
}

TEST_F(DialogControls, EffectAndOutputEffectsOnly) {
    const wchar_t *names[] = {L"Standard Star", L"Hollywood Star", L"Religious Cross", L"Hyper Star",
                              L"North Star",    L"Vector Star",    L"Star Burst"};
    const host::Document before = filterHost.document;
    ParameterSet wanted = kDefaultParameters;
    RunDialog([&] {
        Settle();
        for (int row = 6; row >= 0; --row) {
            wchar_t name[50] = L"";
            SendDlgItemMessageW(dialog, kEffectCombo, CB_GETLBTEXT, static_cast<WPARAM>(row),
                                reinterpret_cast<LPARAM>(name));
            EXPECT_STREQ(name, names[row]);
            Forget();
            Choose(kEffectCombo, row);
            EXPECT_EQ(SetInHandle().effectType, kStandardStar + static_cast<uint32_t>(row));
            EXPECT_EQ(SetInHandle().numberOfPoints, PresetPoints(SetInHandle().effectType));
            EXPECT_EQ(Text(kPairs[4].edit), std::to_wstring(SetInHandle().numberOfPoints));
            EXPECT_GT(Seen(kMsgParameterChanged), 0);
            EXPECT_GT(Seen(kMsgRequestPreview), 0);
        }
        Choose(kEffectCombo, 5);
        Forget();
        Click(kEffectsOnly);
        EXPECT_EQ(SetInHandle().outputSpikesOnly, 1);
        EXPECT_EQ(Seen(kMsgParameterChanged), 1);
        const HWND box = Item(kEffectsOnly);
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kEffectsOnly, BN_CLICKED), reinterpret_cast<LPARAM>(box));
        EXPECT_EQ(Seen(kMsgParameterChanged), 1) << "the state that it has already";
        Forget();
        Click(kPreviewBox);
        Click(kPreviewBox);
        EXPECT_EQ(Seen(kMsgRequestPreview), 2);
        PressOk();
    });
    wanted.effectType = kStandardStar + 5;
    wanted.numberOfPoints = static_cast<int16_t>(PresetPoints(wanted.effectType));
    wanted.outputSpikesOnly = 1;
    EXPECT_EQ(SetInHandle(), wanted);
    EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, wanted)), 0);
}

TEST_F(DialogControls, TooltipsAndWhatLeadsOutOfTheDialog) {
    const std::pair<int, const char *> tips[] = {
        {IDOK, "OK - Commit changes and return to the editor"},
        {IDCANCEL, "Cancel (Esc) - Close the dialog without making any changes"},
        {kPreviewBox,
         "Preview (P) - Check to see a preview of the modified image, uncheck to see the original "
         "image"},
        {kHelp, "Click here for links to help and support resources"},
        {kLogo, "Brillatrix Pro version information, help, and online resources"},
        {kMakerLogo, "Visit the Nexorvanta Software web site"},
        {kSettingsCombo, "Settings (T) - Select a set of saved parameters"},
        {kEffectCombo, "Effect (:) - Select the type of Star Effect to apply to the image."},
        {kEffectsOnly, "Output Effects Only (O) - Check to output the effects only, excluding the original "
                       "image"},
        {1025, "Threshold (H) - Determine how many light sources, ranked by brightness, for which to create "
               "spikes"},
        {1020,
         "Soft Flare Intensity (Y) - Move right to increase the brightness of the soft flare around light "
         "sources"},
        {kPanIcon, "Pan Tool (P) - use this tool to move the image in the display area"}};
    RunDialog([&] {
        for (const auto &[id, text] : tips)
            EXPECT_EQ(TipOf(id), std::string(text).substr(0, 80)) << id;
        Click(kHelp);
        EXPECT_EQ(boxes.size(), 1u);
        Click(kLogo);
        EXPECT_EQ(boxes.size(), 2u);
        for (const host::ShownBox &box : boxes)
            EXPECT_EQ(box.dialogName, "#191");
        EXPECT_TRUE(gAnswers.opened.empty());
        Click(kMakerLogo);
        EXPECT_EQ(gAnswers.opened.size(), 1u);
        EXPECT_TRUE(IsWindowEnabled(dialog));
        PressCancel();
    });
}
