#include "tests/dialog/SystemAnswers.h"

#include <commdlg.h>
#include <cwchar>
#include <shellapi.h>

SystemAnswers gAnswers;

namespace {

BOOL WINAPI OfferMenu(HMENU menu, UINT flags, int x, int y, int, HWND owner, const RECT *) {
    OfferedMenu offered = {{x, y}, flags, owner, {}};
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[100] = L"";
        const UINT place = static_cast<UINT>(i), state = GetMenuState(menu, place, MF_BYPOSITION);
        GetMenuStringW(menu, place, text, 100, MF_BYPOSITION);
        if (GetMenuItemID(menu, i) != 0)
            offered.items[static_cast<int>(GetMenuItemID(menu, i))] = {
                text, (state & (MF_GRAYED | MF_DISABLED)) != 0, (state & MF_CHECKED) != 0};
    }
    gAnswers.menus.push_back(offered);
    SetLastError(gAnswers.menuError);
    return gAnswers.menuCommand;
}

BOOL WINAPI PickFile(OPENFILENAMEW *request) {
    gAnswers.offered = request->lpstrFile;
    if (gAnswers.file.empty() || gAnswers.file.size() >= request->nMaxFile)
        return FALSE;
    wcscpy(request->lpstrFile, gAnswers.file.c_str());
    return TRUE;
}

HINSTANCE WINAPI OpenByShell(HWND, LPCSTR verb, LPCSTR file, LPCSTR, LPCSTR, int) {
    gAnswers.opened.push_back(std::string(verb ? verb : "") + " " + file);
    return reinterpret_cast<HINSTANCE>(gAnswers.shellAnswer);
}

LSTATUS WINAPI ReadKey(HKEY root, LPCWSTR key, LPCWSTR name, DWORD how, DWORD *type, void *to, DWORD *size) {
    if (!gAnswers.appsAreDark || wcscmp(name, L"AppsUseLightTheme") != 0)
        return RegGetValueW(root, key, name, how, type, to, size);
    *static_cast<DWORD *>(to) = 0;
    return ERROR_SUCCESS;
}

} // namespace

void AnswerForSystem(HMODULE module, host::ImportHooks *hooks) {
    gAnswers = {};
    const auto hook = [&](const char *name, auto function) {
        host::ReplaceImport(module, name, function, hooks);
    };
    hook("TrackPopupMenu", OfferMenu);
    hook("GetOpenFileNameW", PickFile);
    hook("GetSaveFileNameW", PickFile);
    hook("ShellExecuteA", OpenByShell);
    hook("RegGetValueW", ReadKey);
}
