// The about box: the product and its version, where help is found, and the switch of the update notice.
#pragma once

// Shows it modally on the window (an HWND, may be null), at the scale of its monitor. False when it could not
// be opened. Host's thread.
bool ShowAboutBox(void *parentWindow);
