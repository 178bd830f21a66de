// Text and progress on the program's console, and Ctrl+C.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// UTF-8 text as it is.
void PrintOut(const std::string &text);
void PrintError(const std::string &text);

// A bar on the error output when that is a terminal; repeated calls redraw it.
void ShowProgressBar(int32_t done, int32_t total);
// Ends the bar's line, if there is one, so that other text starts on its own.
void EndProgressBar();

// From now on Ctrl+C (and closing the console) raises the flag instead of ending the program. A second Ctrl+C
// ends it at once, or with `stopsByItself` raises the second flag, and a third ends it.
void WatchForCancel(bool stopsByItself = false);
bool IsCancelled();
bool MustStopAtOnce();

} // namespace host
