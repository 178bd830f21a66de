// Takes the place of the system calls that wait for a person: message boxes, beeps and the file dialogs.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

#include <commdlg.h>

struct AskedBox {
    HWND owner;
    std::wstring text, title;
    UINT flags;
};

struct AskedFile {
    bool saves;
    HWND owner;
    std::wstring title, filter, defaultExtension, startFolder;
    DWORD flags;
};

// What the person answers.
struct PromptAnswers {
    int box = IDCANCEL;
    std::wstring file;         // empty: cancelled
    DWORD fileDialogError = 0; // with an empty file: the dialog failed
    bool realFileDialogs = false;
};
extern PromptAnswers gAnswers;

// What was asked since the last call.
std::vector<AskedBox> TakeAskedBoxes();
std::vector<AskedFile> TakeAskedFiles();
int TakeBeeps();
