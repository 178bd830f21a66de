#include "host/module/ShownBoxes.h"

#include "host/base/SystemText.h"

namespace host {

// The module whose boxes are caught. The hooks carry no context, so there is one.
static ImportHooks gBoxHooks;
static BoxHandler gBoxHandler;
static bool gDescribesDialogs = false;

static intptr_t HandleBox(const ShownBox &box) {
    return gBoxHandler ? gBoxHandler(box) : IDOK;
}

static int WINAPI CatchMessageBoxW(HWND, LPCWSTR text, LPCWSTR title, UINT style) {
    ShownBox box;
    box.title = title ? ToUtf8(title) : "Error";
    box.text = text ? ToUtf8(text) : "";
    box.style = style;
    return static_cast<int>(HandleBox(box));
}

static int WINAPI CatchMessageBoxA(HWND owner, LPCSTR text, LPCSTR title, UINT style) {
    return CatchMessageBoxW(owner, text ? FromLocal(text).c_str() : nullptr,
                            title ? FromLocal(title).c_str() : nullptr, style);
}

static std::string WindowText(HWND window) {
    wchar_t text[1024];
    const int length = GetWindowTextW(window, text, 1024);
    return ToUtf8(std::wstring(text, static_cast<size_t>(length)));
}

// A mark of a key is no part of what is read.
static std::string WithoutKeyMarks(std::string text) {
    std::erase(text, '&');
    return text;
}

// Static texts, check boxes, and buttons that their dialog draws: links.
static bool IsTextToRead(HWND control) {
    wchar_t name[32] = {};
    GetClassNameW(control, name, 32);
    const LONG style = GetWindowLongW(control, GWL_STYLE);
    const LONG type = style & BS_TYPEMASK;
    const bool isButtonToRead =
        lstrcmpiW(name, L"Button") == 0 && (type == BS_OWNERDRAW || type == BS_AUTOCHECKBOX);
    return (style & WS_VISIBLE) != 0 && (isButtonToRead || lstrcmpiW(name, L"Static") == 0);
}

static BOOL CALLBACK AddText(HWND control, LPARAM parameter) {
    const std::string text = WithoutKeyMarks(WindowText(control));
    if (IsTextToRead(control) && !text.empty()) {
        std::string &all = *reinterpret_cast<std::string *>(parameter);
        all += (all.empty() ? "" : all.back() == ':' ? " " : "\n") + text;
    }
    return TRUE;
}

static intptr_t CatchDialog(HINSTANCE instance, LPCWSTR name, DLGPROC procedure, LPARAM parameter) {
    ShownBox box;
    box.isDialog = true;
    box.dialogName =
        IS_INTRESOURCE(name) ? std::string("#").append(std::to_string(LOWORD(name))) : ToUtf8(name);
    const HWND dialog =
        gDescribesDialogs ? CreateDialogParamW(instance, name, nullptr, procedure, parameter) : nullptr;
    if (dialog) {
        box.title = WindowText(dialog);
        EnumChildWindows(dialog, AddText, reinterpret_cast<LPARAM>(&box.text));
        DestroyWindow(dialog);
    }
    return HandleBox(box);
}

static INT_PTR WINAPI CatchDialogBoxW(HINSTANCE instance, LPCWSTR name, HWND, DLGPROC procedure,
                                      LPARAM parameter) {
    return CatchDialog(instance, name, procedure, parameter);
}

static INT_PTR WINAPI CatchDialogBoxA(HINSTANCE instance, LPCSTR name, HWND, DLGPROC procedure,
                                      LPARAM parameter) {
    if (IS_INTRESOURCE(name))
        return CatchDialog(instance, MAKEINTRESOURCEW(LOWORD(name)), procedure, parameter);
    return CatchDialog(instance, FromLocal(name).c_str(), procedure, parameter);
}

static INT_PTR WINAPI CatchDialogBoxIndirectW(HINSTANCE, LPCDLGTEMPLATEW, HWND, DLGPROC, LPARAM) {
    ShownBox box;
    box.isDialog = true;
    box.dialogName = "of its own making";
    return HandleBox(box);
}

void CatchBoxes(HMODULE module, BoxHandler handler, bool describeDialogs) {
    ReleaseBoxes();
    gBoxHandler = std::move(handler);
    gDescribesDialogs = describeDialogs;
    ReplaceImport(module, "MessageBoxA", CatchMessageBoxA, &gBoxHooks);
    ReplaceImport(module, "MessageBoxW", CatchMessageBoxW, &gBoxHooks);
    ReplaceImport(module, "DialogBoxParamA", CatchDialogBoxA, &gBoxHooks);
    ReplaceImport(module, "DialogBoxParamW", CatchDialogBoxW, &gBoxHooks);
    ReplaceImport(module, "DialogBoxIndirectParamA", CatchDialogBoxIndirectW, &gBoxHooks);
    ReplaceImport(module, "DialogBoxIndirectParamW", CatchDialogBoxIndirectW, &gBoxHooks);
}

void ReleaseBoxes() {
    RestoreImports(&gBoxHooks);
    gBoxHandler = nullptr;
}

} // namespace host
