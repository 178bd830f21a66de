// The filter module that lies beside this program, freshly loaded: what it takes of the system is counted,
// its folders lie in another place, and memory, dialogs and some calls of the system answer as asked. One
// module at a time.
#pragma once

#include "host/module/FilterModule.h"
#include "host/module/ShownBoxes.h"

#include <cstdint>
#include <string>

// What the module holds of the system now.
struct HeldObjects {
    int64_t heapBlocks;
    int objects; // of the system, all that SystemObjects counts
    int64_t comInitializations;
    int64_t sections; // critical sections initialised and not deleted
    bool operator==(const HeldObjects &) const = default;
};

// When the module last did each of these, counted in events of all of them; 0: never.
struct TeardownOrder {
    int64_t enteredSection, closedHandle, deletedSection;
};

std::wstring ModulePath();

// Its folders are made inside `folder`. Throws when it cannot be loaded.
host::FilterModule LoadWatchedModule(const std::string &folder);
// Message boxes and dialogs but the main one go to the handler.
void CatchModuleBoxes(const host::FilterModule &module, host::BoxHandler handler);
void UnloadWatchedModule(host::FilterModule *module);

HeldObjects Held();
TeardownOrder LastTeardown();
// From now on the n-th heap allocation of the module fails (1 = the next), and every later one too when
// asked; 0 switches failing off.
void FailModuleAllocation(int64_t n, bool andLater);
// Allocations of the module since then.
int64_t ModuleAllocations();
// Calls for the main dialog since the module was loaded. It does not open, each call answers IDOK, until one
// of the two is called: the answer is another one; or it opens, and after so many milliseconds, and again
// after as many more, that button is pressed.
int MainDialogs();
void AnswerMainDialogs(int answer);
void OpenMainDialogs(int button, uint32_t closeAfter);
// CoInitialize answers this from now on.
void SetComResult(HRESULT result);
// InitializeCriticalSectionAndSpinCount fails from now on, or no longer.
void RefuseCriticalSections(bool refuse);
