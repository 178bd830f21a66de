// Version numbers: of this module, as texts, and which is newer.
#pragma once

#include <cstddef>
#include <cstdint>

struct ModuleVersion {
    uint16_t parts[4]; // most significant first
};

// The file version of the module that this code is linked into, not of the program that loaded it; zeros
// without a version resource. Any thread.
ModuleVersion ReadModuleVersion();

constexpr size_t kVersionTextCapacity = 24; // "65535.65535.65535.65535"
void FormatVersion(const ModuleVersion &version, char (&text)[kVersionTextCapacity]);

// One to four numbers of one to five digits, each at most 65535, with single dots between them and nothing
// else; the parts not given are 0. False, with *version left alone, for any other text.
bool ParseVersion(const char *text, size_t length, ModuleVersion *version);

// Below 0, 0 or above 0 as `a` is older than, the same as or newer than `b`.
int CompareVersions(const ModuleVersion &a, const ModuleVersion &b);
