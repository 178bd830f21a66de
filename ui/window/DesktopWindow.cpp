#include "ui/window/DesktopWindow.h"

#include "diag/SystemLibrary.h"
#include "ui/window/Palette.h"
#include "ui/window/SystemFunction.h"

#include <algorithm>

namespace {

// Attributes of windows by the system's numbers.
constexpr DWORD kVisibleFrame = 9, kCloak = 13, kDarkCaption = 20;
constexpr wchar_t kLibrary[] = L"dwmapi.dll";

bool SetAttribute(HWND window, DWORD attribute, BOOL value) {
    using Function = HRESULT(WINAPI *)(HWND, DWORD, const void *, DWORD);
    const HMODULE library = static_cast<HMODULE>(LoadSystemLibrary(kLibrary));
    const auto set = SystemFunction<Function>(library, "DwmSetWindowAttribute");
    const bool done = set && SUCCEEDED(set(window, attribute, &value, sizeof value));
    if (library)
        FreeLibrary(library);
    return done;
}

bool GetVisibleFrame(HWND window, RECT *frame) {
    using Function = HRESULT(WINAPI *)(HWND, DWORD, void *, DWORD);
    const HMODULE library = static_cast<HMODULE>(LoadSystemLibrary(kLibrary));
    const auto get = SystemFunction<Function>(library, "DwmGetWindowAttribute");
    const bool done = get && SUCCEEDED(get(window, kVisibleFrame, frame, sizeof *frame));
    if (library)
        FreeLibrary(library);
    return done && !IsRectEmpty(frame);
}

// A window that has not been shown yet does not say. What can be seen of a resize border is one pixel.
RECT UsualInvisibleFrame(HWND window) {
    if (IsWindowVisible(window))
        return {};
    RECT client = {}, rect = {};
    GetClientRect(window, &client);
    GetWindowRect(window, &rect);
    const LONG border = std::max(0L, (rect.right - rect.left - client.right) / 2 - 1);
    return {border, 0, border, border};
}

} // namespace

void DressCaption(HWND window) {
    SetAttribute(window, kDarkCaption, IsDarkLook());
}

void CloakWindow(HWND window, bool isCloaked) {
    SetAttribute(window, kCloak, isCloaked);
}

RECT InvisibleFrame(HWND window) {
    RECT rect = {}, seen = {};
    if (!GetVisibleFrame(window, &seen) || !GetWindowRect(window, &rect))
        return {};
    if (EqualRect(&seen, &rect))
        return UsualInvisibleFrame(window);
    return {std::max(0L, seen.left - rect.left), std::max(0L, seen.top - rect.top),
            std::max(0L, rect.right - seen.right), std::max(0L, rect.bottom - seen.bottom)};
}
