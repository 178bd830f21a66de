// The maker's logo, which leads to the maker's web site.
#pragma once

#include <windows.h>

// A click on the logo opens the web site in the default browser. Comes off when the window is destroyed.
void SubclassMakersLogo(HWND dialog);
