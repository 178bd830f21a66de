#include "tests/ui/UserPrompts.h"

#include <cwchar>

PromptAnswers gAnswers;

namespace {

std::vector<AskedBox> gBoxes;
std::vector<AskedFile> gFiles;
int gBeeps = 0;

std::wstring Text(const wchar_t *text) {
    return text ? text : L"";
}

// Two zeros end a filter; both strings of each pair are kept, with a bar between.
std::wstring FilterText(const wchar_t *filter) {
    std::wstring text;
    for (; filter && *filter; filter += wcslen(filter) + 1)
        text += (text.empty() ? L"" : L"|") + std::wstring(filter);
    return text;
}

BOOL RealFileDialog(OPENFILENAMEW *request, const char *call) {
    using FileDialog = BOOL(WINAPI *)(OPENFILENAMEW *);
    const FARPROC address = GetProcAddress(LoadLibraryA("comdlg32.dll"), call);
    return reinterpret_cast<FileDialog>(reinterpret_cast<void *>(address))(request);
}

BOOL AskFile(OPENFILENAMEW *request, bool saves) {
    gFiles.push_back({saves, request->hwndOwner, Text(request->lpstrTitle), FilterText(request->lpstrFilter),
                      Text(request->lpstrDefExt), Text(request->lpstrInitialDir), request->Flags});
    if (gAnswers.realFileDialogs)
        return RealFileDialog(request, saves ? "GetSaveFileNameW" : "GetOpenFileNameW");
    if (gAnswers.file.empty() || gAnswers.file.size() >= request->nMaxFile)
        return FALSE;
    wcscpy(request->lpstrFile, gAnswers.file.c_str());
    return TRUE;
}

BOOL WINAPI AskOpenFile(OPENFILENAMEW *request) {
    return AskFile(request, false);
}

BOOL WINAPI AskSaveFile(OPENFILENAMEW *request) {
    return AskFile(request, true);
}

DWORD WINAPI FileDialogError() {
    return gAnswers.fileDialogError;
}

int WINAPI AskBox(HWND owner, LPCWSTR text, LPCWSTR title, UINT flags) {
    gBoxes.push_back({owner, Text(text), Text(title), flags});
    return gAnswers.box;
}

BOOL WINAPI CountBeep(UINT type) {
    gBeeps += type == MB_ICONHAND;
    return TRUE;
}

template <typename T> T Take(T *value) {
    T taken = *value;
    *value = {};
    return taken;
}

} // namespace

// The linker takes an import's address from here instead of from the import library.
extern "C" {
decltype(&AskOpenFile) __imp_GetOpenFileNameW = AskOpenFile;
decltype(&AskSaveFile) __imp_GetSaveFileNameW = AskSaveFile;
decltype(&FileDialogError) __imp_CommDlgExtendedError = FileDialogError;
decltype(&AskBox) __imp_MessageBoxW = AskBox;
decltype(&CountBeep) __imp_MessageBeep = CountBeep;
}

std::vector<AskedBox> TakeAskedBoxes() {
    return Take(&gBoxes);
}

std::vector<AskedFile> TakeAskedFiles() {
    return Take(&gFiles);
}

int TakeBeeps() {
    return Take(&gBeeps);
}
