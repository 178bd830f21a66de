// The exported dialog procedures for diagnostic callers.
#include "plugin/DiagnosticRequests.h"
#include "ui/viewers/DebugImageViewer.h"
#include "ui/viewers/LightSourceViewer.h"

#include <windows.h>

extern "C" INT_PTR CALLBACK DisplayLightSourceTableProc(HWND window, UINT message, WPARAM wParam,
                                                        LPARAM lParam) {
    return window ? HandleLightSourceViewer(window, message, wParam, lParam)
                  : AnswerDiagnosticRequest(message, wParam, lParam);
}

extern "C" INT_PTR CALLBACK DebugImageProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return window ? HandleDebugImageViewer(window, message, wParam, lParam)
                  : AnswerDiagnosticRequest(message, wParam, lParam);
}
