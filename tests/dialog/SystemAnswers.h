// Takes the place of what waits for a person or leaves the program - menus, file dialogs, the browser - and
// of what the user chose for all programs, in one loaded module.
#pragma once

#include "host/module/ModuleImports.h"

#include <map>
#include <string>
#include <vector>
#include <windows.h>

struct OfferedItem {
    std::wstring text;
    bool grayed, checked;
};

struct OfferedMenu {
    POINT at; // screen
    UINT flags;
    HWND owner;
    std::map<int, OfferedItem> items; // by command
};

// What the person did not do by hand: set before, looked at after.
struct SystemAnswers {
    int menuCommand = 0;       // the item picked; 0 none
    DWORD menuError = 0;       // with no item: the call failed
    std::wstring file;         // the file picked; empty: cancelled
    std::wstring offered;      // by the file dialog, before the person picks
    bool appsAreDark = false;  // whatever the user chose
    bool refuseDialog = false; // the main dialog cannot be opened
    INT_PTR shellAnswer = 33;  // above 32: opened
    std::vector<OfferedMenu> menus;
    std::vector<std::string> opened; // verb and what was given to the shell
};
extern SystemAnswers gAnswers;

// Clears the answers.
void AnswerForSystem(HMODULE module, host::ImportHooks *hooks);
