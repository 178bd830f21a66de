// Private window messages that the rooms of the dialog share.
#pragma once

#include <windows.h>

// To the preview display.
constexpr UINT kMsgRefreshCursor = WM_APP + 1;

// To the dialog.
constexpr UINT kMsgParameterChanged = WM_APP + 2;   // one value changed in the controls
constexpr UINT kMsgParametersReplaced = WM_APP + 3; // the whole set changed: refresh the controls
constexpr UINT kMsgRequestPreview = WM_APP + 4;
constexpr UINT kMsgProgress = WM_APP + 5; // wParam position, lParam total
constexpr UINT kMsgTableReady = WM_APP + 6;
