// The about box: product name, version and an OK button.
#pragma once

// Shows it modally on the window (an HWND, may be null). False when it could not be opened.
bool ShowAboutBox(void *parentWindow);
