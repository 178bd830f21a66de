// Takes the place of system calls that the code under test imports: message boxes are kept instead of shown,
// the shell's folders are the test's own, and a chosen call can be made to fail.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

struct ShownBox {
    HWND owner;
    std::string text;
    std::string title;
    UINT flags;
};
// Takes the boxes shown since the last call.
std::vector<ShownBox> TakeBoxes();

// The next call of this name fails with the given error, once. "WriteFile:short" writes half and succeeds.
void FailNextCall(const std::string &name, DWORD error);
// Whether the failure asked for has happened.
bool FailureHappened();

// The folders that the shell answers with; empty = the call fails with `result`.
struct ShellFolders {
    std::string localData;
    std::string commonData;
    HRESULT result;
    int createResult; // -1: the real call
    // The wide answer for the user's folder, of which localData is what the code page makes; empty:
    // localData.
    std::wstring wideLocalData = {};
};
extern ShellFolders gShellFolders;
// Flags of the calls made to SHGetFolderPathA.
std::vector<int> TakeShellFolderCalls();
