// What the main dialog works on, and what it keeps while it is open. One dialog at a time; dialog's thread.
#pragma once

#include "engine/image/ImageBuffer.h"
#include "render/ParameterSet.h"
#include "ui/window/MessageBoxOwner.h"

#include <windows.h>

// Set before the dialog is opened; whoever opens the dialog without a run gets a dialog without a picture on
// parameters of its own.
struct DialogSubject {
    ParameterSet *parameters; // changed as the user changes the controls, whatever the outcome
    const ImageBuffer *image; // null: no preview
    const void *iccProfile;   // of the image, or null
    uint32_t iccProfileBytes;
    bool isCancelled; // written by the dialog: the user cancelled it
};
extern DialogSubject gDialogSubject;

struct MainDialog {
    HWND window; // null while none is open
    MessageBoxOwner messageBoxOwner;
    bool previewOn;
    bool isEnding;      // EndDialog was called, by the user or for a fatal error
    bool endedForFatal; // EndDialog was called for a fatal error
    HWND heldHost;      // disabled until nothing of ours is open above the dialog any more, or null
    RECT rect;          // of the window, screen; kept up to date while the window is no icon
    bool isTouched;     // a key, a button or the wheel was used
    bool isDark;        // as it is dressed; the look may have been read anew for another window
    bool isCloaked;     // nobody sees it until it is painted
    HWND tooltips;
    HHOOK hook;
    bool comboClaimsKeys; // the letters stay with the controls
    HBRUSH zoomTextBrush;
    HFONT boldFont;       // of the group boxes' captions
    DWORD progress;       // shown last
    LPARAM progressTotal; // shown last
};
extern MainDialog gMainDialog;

// What is to be said of a parameter's controls when the image has no colours: a rainbow still makes a spike
// lighter and darker along its length. Null for the others, and for an image with colours.
const wchar_t *NoColorText(int parameter);
const wchar_t *NoColorTextOf(HWND control);

// The parameters that the dialog works on; never null while it is open.
ParameterSet *DialogParameters();
