// A freshly loaded filter module on a host of our own, with its windows, folders, heap and system objects
// watched.
#pragma once

#include "host/filter/FilterHost.h"
#include "host/module/FilterModule.h"
#include "host/module/ModuleImports.h"
#include "host/module/ShownBoxes.h"
#include "render/ParameterSet.h"
#include "tests/storage/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

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

class ModuleFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Opens the host with its settings and document as they stand.
    void Open();
    // One whole run; opens the host when needed.
    host::RunResult Run(bool withParameters = true);

    HeldObjects Held() const;
    TeardownOrder LastTeardown() const;
    // From now on the n-th heap allocation of the module fails (1 = the next), and every later one too when
    // asked; 0 switches failing off.
    void FailModuleAllocation(int64_t n, bool andLater);
    // Allocations of the module since then.
    int64_t ModuleAllocations() const;
    int MainDialogs() const; // calls; the main dialog does not open, each call answers IDOK
    // CoInitialize answers this from now on.
    void SetComResult(HRESULT result);
    // InitializeCriticalSectionAndSpinCount fails from now on, or no longer.
    void RefuseCriticalSections(bool refuse);

    // The bytes of the parameters handle as a set, all zero without one.
    ParameterSet SetInHandle() const;
    // The dialog-pending byte, -1 without a data handle.
    int DialogPendingByte() const;
    std::string SettingsFile() const; // path of "LastSavedParameters.sss"
    // Everything in the log folder's newest file, as plain text; empty without one.
    std::string LogText() const;
    // Host calls between acquiring and releasing that did not pair, and what the filter did that no filter
    // may.
    void ExpectCleanHost();

    TemporaryFolder folder;
    host::FilterModule module;
    host::FilterHost filterHost;
    std::vector<host::ShownBox> boxes; // message boxes and dialogs, in order
    INT_PTR boxAnswer = IDOK;

private:
    void EndModuleRun();

    host::ImportHooks hooks, dialogHooks;
};

// Path of the module, which lies beside this program.
std::wstring ModulePath();

// All 13 keys of a set, as a script would give them.
host::Descriptor ScriptOf(const ParameterSet &set);

// A set that differs from the defaults in every field but "output effects only", and shows long bright stars.
ParameterSet ChangedParameters();

bool operator==(const ParameterSet &a, const ParameterSet &b);
