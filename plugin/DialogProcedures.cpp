// The exported dialog procedures. None of their dialogs exists yet, so they handle no message.
#include <windows.h>

extern "C" INT_PTR CALLBACK BrillatrixProc(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

extern "C" INT_PTR CALLBACK DisplayLightSourceTableProc(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

extern "C" INT_PTR CALLBACK DebugImageProc(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}
