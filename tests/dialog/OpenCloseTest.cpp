// How the dialog opens and the ways it ends, seen from the host: the result word, the picture, the files.
#include "tests/dialog/DialogFixture.h"

#include "storage/UISettings.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <atomic>
#include <commctrl.h>
#include <cstring>
#include <filesystem>
#include <thread>

namespace {

class MainDialog : public DialogFixture {
protected:
    void WriteUISettings(const UISettings &settings) {
        std::filesystem::create_directories(UserFolder("Settings"));
        WriteWholeFile(UISettingsFile(),
                       std::string(reinterpret_cast<const char *>(&settings), sizeof settings));
    }
    UISettings ReadUISettings() {
        UISettings settings = {};
        const std::string bytes = UISettingsBytes();
        EXPECT_EQ(bytes.size(), sizeof settings);
        std::memcpy(&settings, bytes.data(), std::min(bytes.size(), sizeof settings));
        return settings;
    }
    ScreenRect DialogRect() const {
        RECT rect;
        GetWindowRect(dialog, &rect);
        return {static_cast<int32_t>(rect.left), static_cast<int32_t>(rect.top),
                static_cast<int32_t>(rect.right), static_cast<int32_t>(rect.bottom)};
    }
    bool AreEffectToolsEnabled(BOOL enabled) const {
        constexpr int hideLabel = 1171, showLabel = 1185;
        return IsWindowEnabled(Item(kHideIcon)) == enabled && IsWindowEnabled(Item(kShowIcon)) == enabled &&
               IsWindowEnabled(Item(hideLabel)) == enabled && IsWindowEnabled(Item(showLabel)) == enabled;
    }
};

bool SameRect(const ScreenRect &a, const ScreenRect &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// In the template's order, then the line of state, which is made at run time; the labels of the pairs have no
// number.
constexpr char kControls[] =
    "1084 1023 1050 1046 1179 1176 1122 1079 1080 1081 1025 1026 1005 1004 1007 1006 1009 1008 1011 1010 "
    "1022 1024 1013 1012 1015 1014 1017 1016 1019 1018 1021 1020 1089 1174 1051 1052 1054 1056 1057 1059 "
    "1060 1062 1066 1088 1063 1065 1067 1069 1070 1072 1073 1075 1076 1078 1002 1000 1043 1169 1044 1170 "
    "1123 1171 1184 1185 1049 1040 1042 1045 1085 1087 1031 1030 1028 1082 1083 1 2 1191 1192 ";

} // namespace

TEST_F(MainDialog, OpensWithTheParametersShownAndTheEffectToolsWaiting) {
    static std::vector<int> toldFocus; // to show their focus marks; Wine does nothing with it
    toldFocus.clear();
    const auto noteState = [](HWND window, int id, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_CHANGEUISTATE && wParam == MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS))
            toldFocus.push_back(id);
        return SendDlgItemMessageW(window, id, message, wParam, lParam);
    };
    host::ReplaceImport<decltype(&SendDlgItemMessageW)>(module.module, "SendDlgItemMessageW", noteState,
                                                        &hooks);
    HoldTable();
    onInit = [this] {
        EXPECT_TRUE(AreEffectToolsEnabled(FALSE));
        EXPECT_EQ(toldFocus, (std::vector<int>{IDOK, IDCANCEL, kPreviewBox, kHelp}));
    };
    ULONG_PTR presentButton = 0;
    const host::RunResult result = RunDialog([this, &presentButton] {
        wchar_t title[50] = L"";
        GetWindowTextW(dialog, title, 50);
        EXPECT_STREQ(title, L"Brillatrix Pro");
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), hostWindow);
        EXPECT_FALSE(IsWindowEnabled(hostWindow));
        std::string controls;
        for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
            if (const auto id = static_cast<int16_t>(GetDlgCtrlID(child)); id > 0)
                controls += std::to_string(id) + " ";
        EXPECT_EQ(controls, kControls);
        EXPECT_EQ(GetFocus(), Item(kPairs[0].edit));
        presentButton = GetClassLongPtrW(Item(kPreviewBox), GCLP_WNDPROC);
        DWORD first = 1, last = 0;
        Ask(kPairs[0].edit, EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
        EXPECT_EQ(first, 0u);
        EXPECT_GE(last, 2u);
        const std::pair<int, const wchar_t *> texts[] = {{kHelp, L"Help and Support"},
                                                         {kZoomText, L" 100.00%"},
                                                         {1046, L"Se&ttings:"},
                                                         {1179, L"Effect&:"},
                                                         {kEffectsOnly, L"Output Effect &Only"},
                                                         {kPreviewBox, L"Previe&w"}};
        for (const auto &[id, text] : texts)
            EXPECT_EQ(Text(id), text);
        EXPECT_FALSE(IsChecked(kEffectsOnly));
        for (const ParameterPair &pair : kPairs) {
            SCOPED_TRACE(pair.edit);
            EXPECT_EQ(Ask(pair.trackbar, TBM_GETRANGEMIN), pair.minimum);
            EXPECT_EQ(Ask(pair.trackbar, TBM_GETRANGEMAX), pair.maximum);
            EXPECT_EQ(Position(pair.trackbar), pair.In(kDefaultParameters));
            EXPECT_EQ(Text(pair.edit), pair.Shown(pair.In(kDefaultParameters)));
        }
        const HDC dc = GetDC(dialog);
        const auto colours = [&](int id) {
            return SendMessageW(dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc),
                                reinterpret_cast<LPARAM>(Item(id)));
        };
        EXPECT_EQ(GetObjectType(reinterpret_cast<HGDIOBJ>(colours(kZoomText))), DWORD{OBJ_BRUSH});
        EXPECT_NE(colours(kZoomText), colours(1179)) << "a label has the dialog's";
        EXPECT_TRUE(SendMessageW(dialog, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0));
        ReleaseDC(dialog, dc);
        Pump(150);
        const ULONG_PTR cursor = Cursor();
        Key('X');
        EXPECT_EQ(Cursor(), cursor);
        EXPECT_TRUE(AreEffectToolsEnabled(FALSE)) << "the table is not ready";
        EXPECT_GT(Seen(kMsgProgress), 0) << "the wait is shown";
        ReleaseTable();
        WaitFor("the table", [this] { return AreEffectToolsEnabled(TRUE); });
        PressCancel();
    });
    EXPECT_EQ(result.code, kUserCanceledErr);
    const HWND button = CreateWindowW(L"Button", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(GetClassLongPtrW(button, GCLP_WNDPROC), presentButton)
        << "the present controls are the dialog's alone, not this program's";
    DestroyWindow(button);
}

// An effect tool would need the table; the others come back as they were. Never placed, or with a file of
// another version, it is centred, at the template's size.
TEST_F(MainDialog, ToolAndPlaceComeBackFromTheFile) {
    const struct {
        uint16_t version; // 0: no file
        uint32_t tool, expectedTool;
    } cases[] = {{0, 0, 2}, {10, 1, 2}, {11, 1, 1}, {11, 2, 2}, {11, 3, 2}, {11, 4, 2}};
    for (const auto &[version, tool, expectedTool] : cases) {
        SCOPED_TRACE(::testing::Message() << version << ' ' << tool);
        UISettings settings = {{0, 0, 0, version}, {31, 7, 31 + 900, 7 + 740}, tool, 0, {}, 0};
        if (version)
            WriteUISettings(settings);
        ScreenRect last = {};
        RunDialog([&] {
            last = DialogRect();
            EXPECT_TRUE(IsChecked(kPreviewBox)) << "on at every opening";
            if (version == 11) {
                EXPECT_TRUE(SameRect(last, settings.dialogRect));
                SetWindowPos(dialog, nullptr, 12, 5, 910, 745, SWP_NOZORDER);
                Pump();
                last = {12, 5, 12 + 910, 5 + 745};
            } else {
                RECT work, size = {0, 0, 497, 433}, client;
                SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
                EXPECT_NEAR(last.left + last.right, work.left + work.right, 2);
                EXPECT_NEAR(last.top + last.bottom, work.top + work.bottom, 2);
                MapDialogRect(dialog, &size);
                GetClientRect(dialog, &client);
                EXPECT_TRUE(EqualRect(&client, &size)) << client.right << " x " << client.bottom;
            }
            PressOk();
        });
        const UISettings written = ReadUISettings();
        EXPECT_EQ(written.viewTool, expectedTool);
        EXPECT_TRUE(SameRect(written.dialogRect, last));
        EXPECT_EQ(IsLogged("version mismatch. File Version = '0','0','0','10'"), version == 10);
        LoadModuleAgain();
    }
}

TEST_F(MainDialog, OkRendersAndTheRepeatNeedsNoDialog) {
    const ParameterSet wanted = ChangedParameters();
    filterHost.script = ScriptOf(wanted);
    filterHost.settings.playInfo = kPlayDisplay; // a script that asks for the dialog
    const host::RunResult result = RunDialog(
        [&] {
            EXPECT_EQ(Selected(kEffectCombo), static_cast<int>(wanted.effectType & 0xF));
            for (const ParameterPair &pair : kPairs)
                EXPECT_EQ(Position(pair.trackbar), pair.In(wanted)) << pair.edit;
            Settle();
            Key(VK_RETURN); // OK is the default button
        },
        false);
    EXPECT_EQ(result.code, kNoError);
    EXPECT_EQ(DialogPendingByte(), 0);
    const host::Document expected = FilteredNight(before, wanted);
    EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
    filterHost.document = before;
    filterHost.script.reset();
    EXPECT_EQ(RunDialog(nullptr, false).code, kNoError);
    EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
    EXPECT_EQ(dialogsOpened, 1);
    ExpectCleanHost();
}

// Memory for a flood fill that runs out while the table is being built is reported as fatal, on a thread of
// the table's. The dialog is gone long before the table's task has ended and tells its code, and nobody waits
// for the rest of the scan, which tries a fill at every white pixel.
TEST_F(MainDialog, AFatalErrorEndsItOnceWithItsCode) {
    static bool refuseGrowth;
    static int ends;
    static std::atomic<int> refusals;
    refuseGrowth = false;
    ends = refusals = 0;
    const auto grow = [](void *old, size_t size) {
        if (!refuseGrowth)
            return std::realloc(old, size);
        ++refusals;
        Sleep(1);
        return static_cast<void *>(nullptr);
    };
    const auto end = [](HWND window, INT_PTR result) -> BOOL {
        ends += 1;
        return EndDialog(window, result);
    };
    const auto endSlowly = [](HANDLE event) -> BOOL {
        if (refuseGrowth)
            Sleep(20);
        return SetEvent(event);
    };
    host::ReplaceImport<void *(*)(void *, size_t)>(module.module, "realloc", grow, &hooks);
    host::ReplaceImport<BOOL(WINAPI *)(HWND, INT_PTR)>(module.module, "EndDialog", end, &hooks);
    host::ReplaceImport<BOOL(WINAPI *)(HANDLE)>(module.module, "SetEvent", endSlowly, &hooks);
    // A white half: too large and flat for a light, so it is taken out by a fill.
    for (std::vector<uint8_t> &plane : filterHost.document.planes)
        std::fill(plane.begin(), plane.begin() + 240 * 90, uint8_t{255});
    before = filterHost.document;
    HoldTable();
    const host::RunResult result = RunDialog([&] {
        EnableWindow(dialog, FALSE); // as a box does that is open above it
        refuseGrowth = true;
        ReleaseTable();
        const DWORD start = GetTickCount();
        while (IsWindowVisible(dialog) && GetTickCount() - start < 10000)
            SendMessageW(dialog, kMsgProgress, 0, 0); // at the first message after the report
        for (int i = 0; i < 3; ++i)
            SendMessageW(dialog, kMsgRequestPreview, 0, 0);
        EXPECT_FALSE(IsWindowEnabled(hostWindow)) << "the host is still in its call";
        EnableWindow(dialog, TRUE);
        EXPECT_TRUE(IsWindowEnabled(hostWindow));
    });
    refuseGrowth = false;
    EXPECT_EQ(ends, 1);
    EXPECT_LT(refusals, 5000) << "of the 10,000 that the whole scan meets";
    EXPECT_EQ(dialogResult, IDCANCEL);
    EXPECT_EQ(result.code, kMemFullErr);
    EXPECT_EQ(DifferentSamples(filterHost.document, before), 0);
    EXPECT_FALSE(Exists(UISettingsFile()));
    EXPECT_TRUE(IsLogged("Unable to allocate memory for a flood fill list."));
    host::CloseHost(filterHost);
    EXPECT_EQ(RunDialog([this] { PressOk(); }).code, kNoError) << "the next run begins without it";
}

// Who sends from another thread goes on as soon as the dialog has handled the message, unless the answer is
// the system's to give.
TEST_F(MainDialog, SentMessagesAreAnsweredEarlyAndProgressReachesTheBar) {
    RunDialog([this] {
        Settle();
        std::map<UINT, DWORD> states;
        afterMessage = [&](UINT message) { states[message] = InSendMessageEx(nullptr); };
        DWORD_PTR mayEnd = 0;
        bool sent = false;
        std::thread sender([&] {
            for (const UINT message : {kMsgProgress, UINT{WM_APP + 77}, UINT{WM_NULL}})
                SendMessageTimeoutW(dialog, message, 2, 9, SMTO_NORMAL, 20000, nullptr);
            SendMessageTimeoutW(dialog, WM_QUERYENDSESSION, 0, 0, SMTO_NORMAL, 20000, &mayEnd);
            sent = true;
        });
        WaitFor("the sender", [&] { return sent; });
        sender.join();
        afterMessage = nullptr;
        for (const UINT message : {kMsgProgress, UINT{WM_APP + 77}, UINT{WM_NULL}})
            EXPECT_EQ(states[message] & (ISMEX_SEND | ISMEX_REPLIED), DWORD{ISMEX_SEND | ISMEX_REPLIED})
                << message;
        EXPECT_EQ(mayEnd, 1u) << "the dialog does not keep the session from ending";

        static std::string toBar;
        const auto record = [](HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                               DWORD_PTR) -> LRESULT {
            if (message == PBM_SETPOS)
                toBar += "pos " + std::to_string(wParam) + ",";
            if (message == PBM_SETRANGE32)
                toBar += "range " + std::to_string(wParam) + "-" + std::to_string(lParam) + ",";
            return DefSubclassProc(bar, message, wParam, lParam);
        };
        SetWindowSubclass(Item(kProgressBar), record, 5, 0);
        SendMessageW(dialog, kMsgProgress, 0, 0);
        const struct {
            WPARAM position;
            LPARAM total;
            const char *expected;
        } steps[] = {{3, 10, "range 0-10,pos 3,"},
                     {3, 10, ""},
                     {7, 10, "pos 7,"},
                     {12, 10, "pos 10,"},
                     {5, 20, "range 0-20,pos 5,"},
                     {5, 25, "range 0-25,"},
                     {0, 0, "pos 1,pos 0,range 0-0,"},
                     {1, 4, "range 0-4,pos 1,"}};
        for (const auto &step : steps) {
            toBar.clear();
            SendMessageW(dialog, kMsgProgress, step.position, step.total);
            EXPECT_EQ(toBar, step.expected) << step.position << " of " << step.total;
        }
        RemoveWindowSubclass(Item(kProgressBar), record, 5);
        PressCancel();
    });
}
