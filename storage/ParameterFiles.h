// Parameter set files: 255 bytes, of which the first 40 are the record of the settings. Host's thread.
#pragma once

#include "storage/ParameterBlock.h"

#include <cstddef>
#include <cstdint>

constexpr char kParameterFileExtension[] = "sss";

enum ParameterFileState : uint32_t {
    kFileRead,       // the block was filled; what the file lacks of 255 bytes is 0
    kFileMissing,    // nothing reported
    kFileUnreadable, // cannot be opened, or the system refuses to read it; reported. Nothing is known of what
                     // it holds
    kFileInvalid,    // holds no parameter set: no bytes, reported, or half a record of the current version
};

// The block is changed only for kFileRead. Reports are for the log only.
ParameterFileState LoadParameterStructure(const wchar_t *path, ParameterBlock *block);
ParameterFileState LoadParameterStructure(const char *path, ParameterBlock *block);
// Replaces the file whole, or leaves it as it was; failures are reported to the log.
bool SaveParametersFile(const ParameterBlock &block, const wchar_t *path);
bool SaveParametersFile(const ParameterBlock &block, const char *path);

// What ReadParameterFile tells the user about one sort of file.
struct ParameterFileTexts {
    const char *obsoleteTitle;    // of the message about an obsolete file
    const char *convertedFormat;  // takes the path
    const char *obsoleteFormat;   // takes the path, or nothing; the version words follow it
    const char *unreadableFormat; // of a file that stays; takes the path. Null: the user is not told
    const char *missingFormat;    // the same, of a file that is not there
};

// Reads a file of the current version, or converts an older one and saves it again. A file that is invalid,
// or obsolete without a conversion, is deleted, and the user is told; without the ending of a set it was not
// ours and stays, as does one that cannot be opened or read. False, with the block unchanged, when there is
// no block. Needs the accessor.
bool ReadParameterFile(const wchar_t *path, const ParameterFileTexts &texts, ParameterBlock *block);

bool HasParameterSetExtension(const wchar_t *path);

// Reads the initial-settings file and commits it. False when the current set was not changed.
bool ReadInitialSettings(const char *path);
// The path of "LastSavedParameters.sss" in the settings folder. False, reported, without a settings folder or
// when it does not fit.
bool FormatInitialSettingsPath(char *path, size_t capacity);
