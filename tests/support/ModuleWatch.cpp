#include "tests/support/ModuleWatch.h"

#include "resources/DialogControlIds.h"
#include "tests/support/SystemObjects.h"

#include <atomic>
#include <cstring>
#include <cwchar>
#include <stdexcept>

#include <objbase.h>
#include <shlobj.h>

namespace {

using DialogBoxFunction = INT_PTR WINAPI(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM);

// The hooks carry no context, and one module is loaded at a time.
struct Watch {
    std::string folder;
    std::atomic<int64_t> heapBlocks, sections, allocations, failAt;
    std::atomic<bool> failLater;
    int64_t comInitializations;
    HRESULT comResult;
    bool refuseSections;
    BOOL(WINAPI *closeHandle)(HANDLE);
    std::atomic<int64_t> events, enteredSection, closedHandle, deletedSection;
    host::ImportHooks hooks, dialogHooks;
    DialogBoxFunction *openDialog;
    int mainDialogs, answer;
    bool opensDialogs;
    DWORD closeAfter; // milliseconds
};
Watch gWatch;

bool FailsNow() {
    const int64_t count = ++gWatch.allocations;
    const int64_t failAt = gWatch.failAt;
    return failAt > 0 && (count == failAt || (gWatch.failLater && count > failAt));
}

void *WatchedMalloc(size_t size) {
    void *block = FailsNow() ? nullptr : std::malloc(size);
    gWatch.heapBlocks += block != nullptr;
    return block;
}

void *WatchedCalloc(size_t count, size_t size) {
    void *block = FailsNow() ? nullptr : std::calloc(count, size);
    gWatch.heapBlocks += block != nullptr;
    return block;
}

void *WatchedRealloc(void *old, size_t size) {
    void *block = FailsNow() ? nullptr : std::realloc(old, size);
    gWatch.heapBlocks += block != nullptr && old == nullptr;
    return block;
}

void WatchedFree(void *block) {
    gWatch.heapBlocks -= block != nullptr;
    std::free(block);
}

BOOL WINAPI WatchedClose(HANDLE handle) {
    gWatch.closedHandle = ++gWatch.events;
    return gWatch.closeHandle(handle);
}

HRESULT WINAPI WatchedCoInitialize(void *reserved) {
    if (FAILED(gWatch.comResult))
        return gWatch.comResult;
    const HRESULT result = CoInitialize(reserved);
    gWatch.comInitializations += SUCCEEDED(result);
    return result;
}

void WINAPI WatchedCoUninitialize() {
    --gWatch.comInitializations;
    CoUninitialize();
}

BOOL WINAPI WatchedInitializeSection(CRITICAL_SECTION *section, DWORD spins) {
    if (gWatch.refuseSections) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    const BOOL made = InitializeCriticalSectionAndSpinCount(section, spins);
    gWatch.sections += made != FALSE;
    return made;
}

void WINAPI WatchedEnterSection(CRITICAL_SECTION *section) {
    gWatch.enteredSection = ++gWatch.events;
    EnterCriticalSection(section);
}

void WINAPI WatchedDeleteSection(CRITICAL_SECTION *section) {
    --gWatch.sections;
    gWatch.deletedSection = ++gWatch.events;
    DeleteCriticalSection(section);
}

HRESULT WINAPI WatchedFolderPath(HWND, int kind, HANDLE, DWORD, LPSTR path) {
    const bool isCommon = (kind & 0xFF) == CSIDL_COMMON_APPDATA;
    std::strcpy(path, (gWatch.folder + (isCommon ? "\\common" : "\\user")).c_str());
    return S_OK;
}

void CALLBACK PressAnswer(HWND, UINT, UINT_PTR, DWORD) {
    const auto press = [](HWND window, LPARAM) -> BOOL {
        if (GetDlgItem(window, gWatch.answer))
            PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(gWatch.answer), 0);
        return TRUE;
    };
    EnumThreadWindows(GetCurrentThreadId(), press, 0);
}

// Nobody is there to close the main dialog.
INT_PTR WINAPI WatchedDialogBox(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                                LPARAM parameter) {
    if (IS_INTRESOURCE(name) || std::wcscmp(name, kMainDialogName) != 0)
        return gWatch.openDialog(instance, name, owner, procedure, parameter);
    ++gWatch.mainDialogs;
    if (!gWatch.opensDialogs)
        return gWatch.answer;
    const UINT_PTR timer = SetTimer(nullptr, 0, gWatch.closeAfter, PressAnswer);
    const INT_PTR result = DialogBoxParamW(instance, name, owner, procedure, parameter);
    KillTimer(nullptr, timer);
    return result;
}

void HookModule(HMODULE module) {
    host::ImportHooks *hooks = &gWatch.hooks;
    CountSystemObjects(module, hooks);
    const auto hook = [&](const char *name, auto function) {
        return host::ReplaceImport(module, name, function, hooks);
    };
    hook("malloc", WatchedMalloc);
    hook("calloc", WatchedCalloc);
    hook("realloc", WatchedRealloc);
    hook("free", WatchedFree);
    gWatch.closeHandle = hook("CloseHandle", WatchedClose);
    hook("CoInitialize", WatchedCoInitialize);
    hook("CoUninitialize", WatchedCoUninitialize);
    hook("InitializeCriticalSectionAndSpinCount", WatchedInitializeSection);
    hook("EnterCriticalSection", WatchedEnterSection);
    hook("DeleteCriticalSection", WatchedDeleteSection);
    hook("SHGetFolderPathA", WatchedFolderPath);
}

} // namespace

std::wstring ModulePath() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\') + 1) + L"BrillatrixX64.8bf";
}

host::FilterModule LoadWatchedModule(const std::string &folder) {
    gWatch.folder = folder;
    gWatch.heapBlocks = gWatch.sections = gWatch.allocations = gWatch.failAt = 0;
    gWatch.events = gWatch.enteredSection = gWatch.closedHandle = gWatch.deletedSection = 0;
    gWatch.comInitializations = gWatch.mainDialogs = 0;
    gWatch.comResult = S_OK;
    gWatch.refuseSections = gWatch.opensDialogs = false;
    gWatch.answer = IDOK;
    host::FilterModule module;
    std::string why;
    if (!host::LoadFilterModule(ModulePath(), &module, &why))
        throw std::runtime_error(why);
    HookModule(module.module);
    return module;
}

void CatchModuleBoxes(const host::FilterModule &module, host::BoxHandler handler) {
    host::CatchBoxes(module.module, std::move(handler), true);
    gWatch.openDialog =
        host::ReplaceImport(module.module, "DialogBoxParamW", WatchedDialogBox, &gWatch.dialogHooks);
}

void UnloadWatchedModule(host::FilterModule *module) {
    host::RestoreImports(&gWatch.dialogHooks);
    host::ReleaseBoxes();
    host::RestoreImports(&gWatch.hooks);
    host::UnloadFilterModule(module);
}

HeldObjects Held() {
    int objects = 0;
    for (const auto &[call, count] : LiveObjects())
        objects += count;
    return {gWatch.heapBlocks, objects, gWatch.comInitializations, gWatch.sections};
}

TeardownOrder LastTeardown() {
    return {gWatch.enteredSection, gWatch.closedHandle, gWatch.deletedSection};
}

void FailModuleAllocation(int64_t n, bool andLater) {
    gWatch.allocations = 0;
    gWatch.failLater = andLater;
    gWatch.failAt = n;
}

int64_t ModuleAllocations() {
    return gWatch.allocations;
}

int MainDialogs() {
    return gWatch.mainDialogs;
}

void AnswerMainDialogs(int answer) {
    gWatch.answer = answer;
    gWatch.opensDialogs = false;
}

void OpenMainDialogs(int button, uint32_t closeAfter) {
    gWatch.answer = button;
    gWatch.opensDialogs = true;
    gWatch.closeAfter = closeAfter;
}

void SetComResult(HRESULT result) {
    gWatch.comResult = result;
}

void RefuseCriticalSections(bool refuse) {
    gWatch.refuseSections = refuse;
}
