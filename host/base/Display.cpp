#include "host/base/Display.h"

#include <windows.h>

namespace host {

bool IsUnderWine() {
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system && GetProcAddress(system, "wine_get_version");
}

static bool HasVariable(const wchar_t *name) {
    wchar_t value[2];
    const DWORD length = GetEnvironmentVariableW(name, value, 2);
    return length > 0;
}

static bool IsSessionVisible() {
    USEROBJECTFLAGS flags = {};
    return !GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof(flags), nullptr) ||
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

// A prefix may be set to draw nothing anywhere.
static bool DoesWineDraw() {
    wchar_t driver[64] = L"";
    DWORD size = sizeof(driver);
    RegGetValueW(HKEY_CURRENT_USER, L"Software\\Wine\\Drivers", L"Graphics", RRF_RT_REG_SZ, nullptr, driver,
                 &size);
    return lstrcmpiW(driver, L"null") != 0 && (HasVariable(L"DISPLAY") || HasVariable(L"WAYLAND_DISPLAY"));
}

bool HasDisplay(std::string *why) {
    if (HasVariable(L"BRILLATRIX_WINDOWS"))
        return true;
    if (!IsSessionVisible())
        *why = "this session has no screen";
    else if (IsUnderWine() && !DoesWineDraw())
        *why = "there is no display (DISPLAY is not set, or Wine is set to draw nothing)";
    else
        return true;
    return false;
}

} // namespace host
