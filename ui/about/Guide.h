// The guide. Host's thread.
#pragma once

#include <windows.h>

// Whether it was installed with the plug-in.
bool IsGuideInstalled();
// Opens it in the user's browser; where it was not installed, or cannot be opened, the maker's help page.
void OpenGuide(HWND owner);
