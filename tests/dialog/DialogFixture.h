// The module's main dialog, opened by a run of the filter and used by a script that stands for a person:
// mouse and keys go the way that the system's own messages go. The script runs on the dialog's thread, inside
// its modal loop. What a script waits for has a time-out.
#pragma once

#include "tests/dialog/SystemAnswers.h"
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/NightDocument.h"
#include "tests/support/SystemObjects.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/WindowPicture.h"

#include <functional>
#include <map>
#include <string>
#include <windows.h>

using Script = std::function<void()>;

class DialogFixture : public ModuleFixture {
protected:
    void SetUp() override;
    void TearDown() override;
    // The module forgets what it knew; its folders stay.
    void LoadModuleAgain();

    // One run. The script starts when the dialog has been painted; it must end the dialog. Without a script
    // the dialog must not open.
    host::RunResult RunDialog(const Script &script, bool withParameters = true);
    // Runs inside WM_INITDIALOG, after the dialog's own answer.
    Script onInit;
    // Runs after the dialog procedure has handled a message.
    std::function<void(UINT message)> afterMessage;

    // For scripts: reading.
    HWND Item(int id) const { return GetDlgItem(dialog, id); }
    std::wstring Text(int id) const;
    bool IsChecked(int id) const { return IsDlgButtonChecked(dialog, id) == BST_CHECKED; }
    LRESULT Ask(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendDlgItemMessageW(dialog, id, message, wParam, lParam);
    }
    int Selected(int comboId) const { return static_cast<int>(Ask(comboId, CB_GETCURSEL)); }
    std::wstring RowText(int comboId, int row) const;
    int Position(int trackbarId) const;
    ULONG_PTR Cursor(); // of the display, which shows the tool
    RECT ScreenPlace(int id) const;

    // Handles what waits, for at least so long.
    void Pump(DWORD milliseconds = 0) { PumpFor(milliseconds, dialog); }
    // Pumps until it holds; a failure when that takes too long.
    void WaitFor(const char *what, const std::function<bool()> &condition) {
        EXPECT_TRUE(PumpUntil(condition, 10000, dialog)) << what << " does not come";
    }
    // Waits until the light source table is ready and the preview of what was asked for last is finished.
    void Settle();

    // A click in the middle of the control: whatever lies there on top gets it, a failure when that is not
    // the control.
    void Click(int id);
    void DoubleClick(int id);
    HWND ControlAt(POINT screen) const;
    void Drag(int id, POINT from, POINT to) { DragOn(Item(id), from, to, 4); }
    void DragTrackbar(int id, int position) {
        Drag(id, ThumbAt(Item(id), Position(id)), ThumbAt(Item(id), position));
    }
    // To the control with the focus.
    void Key(WORD key, bool ctrl = false, bool shift = false);
    void Character(wchar_t character);
    // Replaces the text of an edit field, character by character.
    void Type(int editId, const std::string &text);
    void Choose(int comboId, int row) { ChooseRow(dialog, comboId, row); }
    void Resize(int width, int height);
    void PressOk() { Click(IDOK); }
    void PressCancel() { Click(IDCANCEL); }

    // Messages that the dialog procedure got since Forget.
    int Seen(UINT message) const;
    void Forget() { seen.clear(); }

    // Stops the building of the light source table before it begins, until it is let go.
    void HoldTable() { ResetEvent(tableGate); }
    void ReleaseTable() { SetEvent(tableGate); }

    std::string UserFolder(const char *name) const; // Settings, Parameters, Logs
    std::string UISettingsFile() const { return UserFolder("Settings") + "\\UISettings.bin"; }
    std::string UISettingsBytes() const { return ReadWholeFile(UISettingsFile()); }
    bool IsLogged(const char *text) const { return LogText().find(text) != std::string::npos; }

    host::Document before;   // the document as it is made
    host::ImportHooks hooks; // in the module, until TearDown
    HWND dialog = nullptr;   // while it is open
    HWND hostWindow = nullptr;
    int dialogsOpened = 0;
    INT_PTR dialogResult = 0; // of the last one
    static inline HANDLE tableGate;

private:
    INT_PTR Watch(DLGPROC real, HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static INT_PTR WINAPI OpenMain(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC main,
                                   LPARAM parameter);
    void RunScript();

    Script script;
    std::map<UINT, int> seen;
    bool scriptRan = false;
    bool previewIdle = false, tableReady = false;
};

// Control ids that scripts use, as numbers that people who drive the dialog from outside rely on.
constexpr int kHelp = 1000, kPreviewBox = 1002, kSettingsCombo = 1023, kVerticalBar = 1028,
              kHorizontalBar = 1030, kProgressBar = 1031, kDisplay = 1040, kZoomOutButton = 1042,
              kPanIcon = 1043, kZoomIcon = 1044, kZoomInButton = 1045, kSettingsIcon = 1050,
              kMakerLogo = 1082, kLogo = 1084, kZoomText = 1085, kZoomArrow = 1087, kEffectsOnly = 1122,
              kHideIcon = 1123, kEffectCombo = 1176, kShowIcon = 1184, kStateLine = 1191, kCompare = 1192,
              kZoomField = 1193;

struct ParameterPair {
    int edit, trackbar, minimum, maximum, decimals;
    wchar_t key;
    int16_t ParameterSet::*value;

    int In(const ParameterSet &set) const { return set.*value; }
    std::wstring Shown(int number) const;
};
extern const ParameterPair kPairs[11];
