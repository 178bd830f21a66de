// Message boxes and modal dialogs of a filter module, caught before they open: nobody may be there to close
// them.
#pragma once

#include "host/module/ModuleImports.h"

#include <windows.h>

#include <functional>
#include <string>

namespace host {

struct ShownBox {
    bool isDialog = false;
    std::string title;      // UTF-8; a dialog's caption
    std::string text;       // UTF-8; a dialog's visible texts and links, one a line
    uint32_t style = 0;     // message boxes: MB_ flags
    std::string dialogName; // dialogs: resource name, or "#191"
};

// Gets every box of the module from now on, on the thread that shows it, and answers what the module's call
// returns (IDOK, IDCANCEL, -1 ...). One module at a time.
using BoxHandler = std::function<intptr_t(const ShownBox &box)>;
void CatchBoxes(HMODULE module, BoxHandler handler, bool describeDialogs = false);
// Call before the module is unloaded.
void ReleaseBoxes();

} // namespace host
