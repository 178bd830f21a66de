#include "host/base/Console.h"

#include "host/base/ExitStatus.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

namespace host {

constexpr int32_t kBarLength = 40;

constexpr int32_t kStopAtOnce = 2;      // presses of Ctrl+C
constexpr DWORD kLongestGoodbye = 3000; // milliseconds; the system waits for five seconds

// Counted on the thread that the system makes for Ctrl+C, read on the program's own.
static std::atomic<int32_t> gCancelPresses{0};
static int32_t gPressesHandled = kStopAtOnce; // the one of this number ends the program
static int32_t gBarShown = -1;                // hundredths; -1: no bar on the line

static bool IsConsole(HANDLE handle) {
    DWORD mode;
    return GetConsoleMode(handle, &mode) != 0;
}

static void Print(DWORD which, const std::string &text) {
    const HANDLE handle = GetStdHandle(which);
    DWORD written;
    if (IsConsole(handle)) {
        const std::wstring wide = FromUtf8(text);
        WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
    } else {
        WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }
}

void PrintOut(const std::string &text) {
    Print(STD_OUTPUT_HANDLE, text);
}

void PrintError(const std::string &text) {
    EndProgressBar();
    Print(STD_ERROR_HANDLE, text);
}

void ShowProgressBar(int32_t done, int32_t total) {
    const int64_t bounded = std::clamp<int64_t>(done, 0, std::max(total, 0));
    const int32_t hundredths = total > 0 ? static_cast<int32_t>(bounded * 100 / total) : 0;
    if (hundredths == gBarShown || !IsConsole(GetStdHandle(STD_ERROR_HANDLE)))
        return;
    gBarShown = hundredths;
    const size_t filled = static_cast<size_t>(hundredths * kBarLength / 100);
    Print(STD_ERROR_HANDLE, "\r[" + std::string(filled, '#') + std::string(kBarLength - filled, '.') + "] " +
                                std::to_string(hundredths) + " % ");
}

void EndProgressBar() {
    if (gBarShown < 0)
        return;
    gBarShown = -1;
    Print(STD_ERROR_HANDLE, "\n");
}

// A closed console, the end of a session: the process ends when the handler returns, so it waits for the
// program to end by itself.
static BOOL WINAPI OnConsoleEvent(DWORD event) {
    const int32_t presses = ++gCancelPresses;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        gCancelPresses = kStopAtOnce;
        Sleep(kLongestGoodbye);
    } else if (presses < gPressesHandled) {
        return TRUE;
    }
    RemoveTemporaries();
    TerminateProcess(GetCurrentProcess(), kExitCancelled);
    return TRUE;
}

void WatchForCancel(bool stopsByItself) {
    gPressesHandled = stopsByItself ? kStopAtOnce + 1 : kStopAtOnce;
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool IsCancelled() {
    return gCancelPresses > 0;
}

bool MustStopAtOnce() {
    return gCancelPresses >= kStopAtOnce;
}

} // namespace host
