// What is kept about the update notice: "UpdateNotice.bin" in the settings folder.
#pragma once

#include "diag/module/ModuleVersion.h"

#include <cstdint>

// The file's image.
struct UpdateRecord {
    uint32_t magic;
    uint32_t isOn;        // 1: the user wants to be told
    int64_t lastAsked;    // seconds since 1970 (UTC); 0: never
    ModuleVersion newest; // the maker's last good answer; zeros: none yet
};
static_assert(sizeof(UpdateRecord) == 24);

constexpr uint32_t kUpdateRecordMagic = 0x314E5542; // "BUN1"
constexpr UpdateRecord kDefaultUpdateRecord = {kUpdateRecordMagic, 0, 0, {}};

// Gives the default, which is off, for a file that is missing, is none of ours or cannot be read. A file that
// some program holds is waited for, half a second at most. Any thread.
UpdateRecord LoadUpdateRecord();
// The same; false when there may be a record that could not be read: nothing must be put in its place.
bool ReadUpdateRecord(UpdateRecord *record);
// Replaces the file whole. False, reported, when that failed. Who changes a record holds the lock of the
// record's folder from its reading to its saving.
bool SaveUpdateRecord(const UpdateRecord &record);
