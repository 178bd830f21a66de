#include "plugin/AboutBox.h"

#include "plugin/PluginState.h"
#include "resources/ResourceIds.h"

#include <windows.h>
#include <objbase.h>

namespace {

INT_PTR CALLBACK AboutProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
    case WM_INITDIALOG:
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(wParam) != IDOK && LOWORD(wParam) != IDCANCEL)
            return FALSE;
        EndDialog(dialog, IDOK);
        return TRUE;
    default:
        return FALSE;
    }
}

} // namespace

// COM is for what the box may open; without it the box is still worth showing.
bool ShowAboutBox(void *parentWindow) {
    const bool comInitialized = SUCCEEDED(CoInitialize(nullptr));
    ShowWaitCursor();
    const INT_PTR closed =
        DialogBoxParamA(static_cast<HINSTANCE>(ModuleHandle()), MAKEINTRESOURCEA(kAboutDialogId),
                        static_cast<HWND>(parentWindow), AboutProc, 0);
    if (comInitialized)
        CoUninitialize();
    return closed == IDOK;
}
