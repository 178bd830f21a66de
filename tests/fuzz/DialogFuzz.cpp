// The dialog under somebody who does anything, and closes it in any way at any time: it ends, its result is
// the one documented, nothing is left behind, what is kept is in range, and the next opening works.
#include "storage/UISettings.h"
#include "tests/dialog/DialogFixture.h"
#include "tests/fuzz/CaseBytes.h"
#include "ui/window/DialogMessages.h"

#include <iterator>

namespace {

struct DialogFuzz : DialogFixture {
    CaseBytes from;
    ParameterSet setBefore;
    std::string uiBefore;

    DialogFuzz() {
        SetUp();
        // The system's loops - sizing, menus - wait for a release that came before them.
        SetTimer(nullptr, 0, 300, [](HWND, UINT, UINT_PTR, DWORD) {
            if (const HWND holder = GetCapture())
                for (const UINT message : {WM_LBUTTONUP, WM_CANCELMODE})
                    PostMessageW(holder, message, 0, 0);
        });
    }
    void TestBody() override {}

    bool IsOpen() const { return IsWindowVisible(dialog); }
    // Of the dialog's windows, or the dialog itself.
    HWND TakeWindow() {
        HWND found = GetWindow(dialog, GW_CHILD);
        for (int i = from.Pick(0, 90); i > 0 && found; --i)
            found = GetWindow(found, GW_HWNDNEXT);
        return found ? found : dialog;
    }
    POINT TakePoint(HWND window) {
        const RECT area = ClientOf(window);
        return {from.Pick(-20, static_cast<int32_t>(area.right) + 20),
                from.Pick(-20, static_cast<int32_t>(area.bottom) + 20)};
    }

    void UseMouse(int kind) {
        const HWND window = kind & 1 ? Item(kDisplay) : TakeWindow();
        POINT points[] = {TakePoint(window), TakePoint(window)}, &point = points[0], &to = points[1];
        if (kind < 4) {
            MapWindowPoints(window, nullptr, points, 2);
            const HWND hit = ControlAt(point);
            MapWindowPoints(nullptr, hit, points, 2);
            // Posted at once: a scroll bar waits for the release in a loop of its own.
            PostMessageW(hit, WM_LBUTTONDOWN, MK_LBUTTON, PointParam(point.x, point.y));
            if (kind > 1)
                PostMessageW(hit, WM_MOUSEMOVE, MK_LBUTTON, PointParam(to.x, to.y));
            PostMessageW(hit, WM_LBUTTONUP, 0, PointParam(to.x, to.y));
            Pump();
            // What is let go of lets go of the mouse; an open list keeps it.
            EXPECT_TRUE(!GetCapture() || Ask(kSettingsCombo, CB_GETDROPPEDSTATE) ||
                        Ask(kEffectCombo, CB_GETDROPPEDSTATE));
        } else if (kind < 6)
            TurnWheel(window, point, from.Pick(-4, 4) * 60, from.Pick(0, 1) ? MK_CONTROL : 0);
        else
            SendMouse(window, from.Pick(0, 1) ? WM_LBUTTONDBLCLK : WM_RBUTTONDOWN, point);
    }
    // Alt would open a menu, which waits for somebody.
    void UseKeys() {
        constexpr WORD kKeys[] = {VK_TAB,      VK_UP,  VK_DOWN, VK_LEFT,     VK_RIGHT,    VK_PRIOR, VK_NEXT,
                                  VK_HOME,     VK_END, VK_F1,   VK_DELETE,   VK_BACK,     VK_SPACE, VK_ADD,
                                  VK_SUBTRACT, '0',    VK_F6,   VK_OEM_PLUS, VK_OEM_MINUS};
        const int key = from.Pick(0, static_cast<int>(std::size(kKeys)) + 25), held = from.Pick(0, 7);
        if (held > 5)
            SetFocus(TakeWindow());
        const int letter = key - static_cast<int>(std::size(kKeys));
        Key(letter < 0 ? kKeys[key] : static_cast<WORD>('A' + letter), held & 1, held & 2);
    }
    void TypeAnything() {
        constexpr char kCharacters[] = "0123456789.,-+ %e";
        SetFocus(Item(kPairs[from.Pick(0, 10)].edit));
        for (int i = from.Pick(0, 8); i > 0 && IsOpen(); --i)
            Character(static_cast<wchar_t>(kCharacters[from.Pick(0, 16)]));
    }
    void ChangeWindow() {
        RECT place = {from.Pick(-500, 900), from.Pick(-500, 900), from.Pick(0, 3000), from.Pick(0, 3000)};
        const WPARAM dpi = static_cast<WPARAM>(from.Pick(90, 400));
        constexpr UINT kChanges[] = {WM_SYSCOLORCHANGE, WM_THEMECHANGED,   WM_SETTINGCHANGE, WM_DISPLAYCHANGE,
                                     WM_ACTIVATEAPP,    WM_CAPTURECHANGED, WM_CANCELMODE,    WM_PAINT};
        constexpr WPARAM kCommands[] = {SC_MINIMIZE, SC_MAXIMIZE, SC_RESTORE, SC_RESTORE};
        switch (from.Pick(0, 3)) {
        case 0:
            return Resize(place.right, place.bottom);
        case 1:
            SendMessageW(dialog, WM_DPICHANGED, dpi | dpi << 16, reinterpret_cast<LPARAM>(&place));
            break;
        case 2:
            gAnswers.appsAreDark = from.Pick(0, 1) == 0;
            SendMessageW(dialog, kChanges[from.Pick(0, 7)], 0, 0);
            break;
        default:
            SendMessageW(dialog, WM_SYSCOMMAND, kCommands[from.Pick(0, 3)], 0);
        }
        Pump();
    }
    void UseLists() {
        constexpr int kCommands[] = {0, 1, 2, 3, 40001, 40005, 40010, 40011, 40012};
        const std::string path =
            UserFolder("Parameters") + "\\Set" + std::to_string(from.Pick(0, 3)) + ".sss";
        gAnswers.menuCommand = kCommands[from.Pick(0, 8)];
        gAnswers.file.assign(path.begin(), path.end() - (from.Pick(0, 7) == 0 ? 4 : 0));
        boxAnswer = from.Pick(IDOK, IDNO);
        if (from.Pick(0, 1))
            return Choose(from.Pick(0, 1) ? kEffectCombo : kSettingsCombo, from.Pick(-1, 8));
        ClickAt(Item(from.Pick(0, 1) ? kSettingsIcon : kZoomArrow), {3, 3});
    }
    void SendAnything() {
        constexpr UINT kMessages[] = {kMsgParameterChanged, kMsgParametersReplaced,
                                      kMsgRequestPreview,   kMsgProgress,
                                      kMsgTableReady,       WM_TIMER,
                                      WM_COMMAND,           WM_HSCROLL,
                                      WM_VSCROLL,           WM_SETCURSOR,
                                      WM_QUERYENDSESSION,   WM_ENDSESSION};
        const UINT message = kMessages[from.Pick(0, 11)];
        WPARAM number = static_cast<WPARAM>(from.Pick(0, 1) ? from.Pick(0, 20) : from.Pick(1000, 1200));
        if (message == WM_COMMAND)
            number = number << 16 | static_cast<WPARAM>(from.Pick(1000, 1200));
        PostMessageW(dialog, message, number, 0);
        Pump();
    }
    void Act() {
        const int kind = from.Pick(0, 15);
        if (kind < 6)
            UseMouse(from.Pick(0, 6));
        else if (kind < 9)
            UseKeys();
        else if (kind == 9)
            TypeAnything();
        else if (kind < 12)
            ChangeWindow();
        else if (kind == 12)
            UseLists();
        else if (kind == 13)
            SendAnything();
        else
            Pump(static_cast<DWORD>(from.Pick(0, 60)));
    }
    void Close() {
        ReleaseTable();
        switch (from.Pick(0, 4)) {
        case 0:
            SendMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0);
            break;
        case 1:
            PostMessageW(dialog, WM_CLOSE, 0, 0);
            break;
        case 2:
            Key(VK_ESCAPE);
            break;
        default:
            SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(from.Pick(IDOK, IDCANCEL)), 0);
        }
        PumpFor(1, dialog);
        if (IsOpen()) // that went to a list that was open, or left a field
            SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    }

    void CheckKept(const host::RunResult &result) {
        const bool isOk = dialogResult == IDOK;
        EXPECT_EQ(result.code, isOk ? kNoError : kUserCanceledErr);
        const ParameterSet set = SetInHandle();
        const RenderSettings settings = MakeRenderSettings(set, 100.0);
        for (int32_t i = 0; i < kParameterCount; ++i)
            EXPECT_EQ(set.*kParameterFields[i], settings.*kParameters[i].setting) << "in range";
        EXPECT_EQ(set.effectType, settings.effectType);
        const bool isLooked = !isOk || from.Pick(0, 3) == 0;
        EXPECT_EQ(isLooked ? DifferentSamples(filterHost.document, isOk ? FilteredNight(before, set) : before)
                           : 0,
                  0);
        const std::string kept = UISettingsBytes();
        EXPECT_TRUE(isOk || (set == setBefore && kept == uiBefore)) << "cancelling changes nothing";
        UISettings ui = kDefaultUISettings;
        EXPECT_TRUE(!isOk || kept.size() == sizeof ui);
        if (kept.size() == sizeof ui)
            std::memcpy(&ui, kept.data(), sizeof ui);
        EXPECT_TRUE(ui.viewTool - 1 < 4 && ui.previewFlag <= 1);
        EXPECT_TRUE(ui.dialogRect.right >= ui.dialogRect.left && ui.dialogRect.bottom >= ui.dialogRect.top);
    }

    void RunCase(const CaseBytes &bytes) {
        from = bytes;
        gAnswers = {};
        boxAnswer = IDOK;
        const int picture = from.Pick(0, 3), actions = from.Pick(0, from.Pick(0, 3) ? 2 : 40);
        filterHost.document = before = MakeNight({.width = picture == 1 ? 30 : 240,
                                                  .height = picture == 2 ? 700 : 180,
                                                  .depth = picture == 3 ? 16 : 8});
        if (from.Pick(0, 3) == 0)
            HoldTable();
        const host::RunResult result = RunDialog([this, actions] {
            setBefore = SetInHandle();
            uiBefore = UISettingsBytes();
            Pump(static_cast<DWORD>(from.Pick(0, 40)));
            for (int i = 0; i < actions && IsOpen(); ++i) {
                Act();
                if (from.Pick(0, 7) == 0)
                    ReleaseTable();
            }
            if (IsOpen())
                Close();
        });
        ReleaseTable();
        CheckKept(result);
        ExpectCleanHost();
        host::CloseHost(filterHost);
        TakeInvalidations(); // they would add up
        EXPECT_EQ(Held(), (HeldObjects{0, 0, 0, 0})) << ::testing::PrintToString(LiveObjects());
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    static DialogFuzz fuzz;
    fuzz.RunCase({bytes, length});
    Require(!::testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed(), "see above");
    return 0;
}
