// A freshly loaded filter module on a host of our own, with its windows, folders, heap and system objects
// watched.
#pragma once

#include "host/filter/FilterHost.h"
#include "render/ParameterSet.h"
#include "tests/plugin/NightDocument.h"
#include "tests/storage/TemporaryFolder.h"
#include "tests/support/ModuleWatch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

class ModuleFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Opens the host with its settings and document as they stand.
    void Open();
    // One whole run; opens the host when needed.
    host::RunResult Run(bool withParameters = true);

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
};

// A set that differs from the defaults in every field but "output effects only", and shows long bright stars.
ParameterSet ChangedParameters();

bool operator==(const ParameterSet &a, const ParameterSet &b);
