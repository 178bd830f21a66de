// The main dialog: what it keeps while it is open, and the steps that its files share. One dialog at a time;
// dialog's thread.
#pragma once

#include "diag/Log.h"
#include "render/ParameterSet.h"
#include "ui/preview/ProxyUpdateTask.h"

#include <windows.h>

// What the dialog works on. Set before it is opened; whoever opens the dialog without a run gets a dialog
// without a picture on parameters of its own.
struct DialogSubject {
    ParameterSet *parameters; // changed as the user changes the controls, whatever the outcome
    const ImageBuffer *image; // null: no preview
    const void *iccProfile;   // of the image, or null
    uint32_t iccProfileBytes;
};
extern DialogSubject gDialogSubject;

struct MainDialog {
    HWND window;             // null while none is open
    NativeWindow hostWindow; // owned the message boxes before the dialog was opened
    bool previewOn;
    bool painted;       // once
    bool isEnding;      // EndDialog was called, by the user or for a fatal error
    bool endedForFatal; // EndDialog was called for a fatal error
    RECT rect;          // of the window, screen; kept up to date while the window is no icon
    RECT initialRect;   // as it was made from the template; empty before it is recorded
    HWND tooltips;
    HHOOK hook;
    bool comboClaimsKeys;    // the letters stay with the controls
    bool leavesSettingsList; // as soon as the list of saved sets is closed
    int settingsRow;         // last chosen in the list of saved sets; -1: none
    HBRUSH zoomTextBrush;
    HFONT boldFont;       // of the group boxes' captions
    DWORD progress;       // shown last
    LPARAM progressTotal; // shown last
};
extern MainDialog gMainDialog;

// The parameters that the dialog works on; never null while it is open.
ParameterSet *DialogParameters();

// WM_INITDIALOG and WM_DESTROY.
void InitializeMainDialog(HWND dialog);
void ReleaseMainDialog();

// WM_COMMAND. False for a command that is none of the dialog's.
bool OnDialogCommand(HWND dialog, int id, int notification, LPARAM lParam);
// A command of the accelerator table.
bool OnKeyboardCommand(HWND dialog, int command);

// Ends the dialog with IDOK or IDCANCEL.
void EndMainDialog(HWND dialog, int result);

// An effect tool, once the light source table can be read.
void SelectEffectTool(uint32_t tool);
void ShowZoomMenuAtArrow(HWND dialog);

// The private messages.
void OnParameterChanged(HWND dialog);
void OnParametersReplaced(HWND dialog);
void OnPreviewRequested();
void OnProgress(HWND dialog, WPARAM position, LPARAM total);

// Makes the bold font anew to the controls' present font, and gives it to the group boxes.
void UseBoldGroupFont(HWND dialog);
