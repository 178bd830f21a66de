// The frame around the preview and its scroll bars.
#pragma once

#include <windows.h>

// Gives the dialog's frame its own look; it comes off when the window is destroyed.
void SubclassPreviewFrame(HWND dialog);
