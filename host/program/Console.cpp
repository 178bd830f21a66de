#include "host/program/Console.h"

#include "host/base/SystemText.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

namespace host {

constexpr int32_t kBarLength = 40;

// Raised on the thread that the system makes for Ctrl+C, read on the program's own.
static std::atomic<bool> gCancelled{false};
static int32_t gBarShown = -1; // hundredths; -1: no bar on the line

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

static BOOL WINAPI OnConsoleEvent(DWORD) {
    return gCancelled.exchange(true) ? FALSE : TRUE;
}

void WatchForCancel() {
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool IsCancelled() {
    return gCancelled;
}

} // namespace host
