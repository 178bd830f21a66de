#include "diag/module/ModuleVersion.h"

#include "diag/module/ModuleInstance.h"

#include <cstdio>
#include <cstring>
#include <windows.h>

namespace {

constexpr size_t kMostParts = 4, kMostDigits = 5;
constexpr uint32_t kLargestPart = 65535;

// Reads one number at *at and moves behind it.
bool ParsePart(const char *text, size_t length, size_t *at, uint16_t *part) {
    uint32_t value = 0;
    size_t digits = 0;
    for (; *at < length && text[*at] >= '0' && text[*at] <= '9'; ++*at, ++digits) {
        if (digits == kMostDigits)
            return false;
        value = value * 10 + static_cast<uint32_t>(text[*at] - '0');
    }
    if (digits == 0 || value > kLargestPart)
        return false;
    *part = static_cast<uint16_t>(value);
    return true;
}

} // namespace

ModuleVersion ReadModuleVersion() {
    // The fixed part of the resource follows three words and the key "VS_VERSION_INFO", on a multiple of
    // four.
    constexpr size_t kFixedInfoOffset = 40;
    const HINSTANCE module = ModuleInstance();
    const HRSRC resource =
        FindResourceA(module, MAKEINTRESOURCEA(VS_VERSION_INFO), MAKEINTRESOURCEA(16)); // RT_VERSION
    if (!resource || SizeofResource(module, resource) < kFixedInfoOffset + sizeof(VS_FIXEDFILEINFO))
        return {};
    const HGLOBAL loaded = LoadResource(module, resource);
    const void *data = loaded ? LockResource(loaded) : nullptr;
    if (!data)
        return {};
    VS_FIXEDFILEINFO info;
    memcpy(&info, static_cast<const uint8_t *>(data) + kFixedInfoOffset, sizeof info);
    if (info.dwSignature != VS_FFI_SIGNATURE)
        return {};
    return {{HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS), HIWORD(info.dwFileVersionLS),
             LOWORD(info.dwFileVersionLS)}};
}

void FormatVersion(const ModuleVersion &version, char (&text)[kVersionTextCapacity]) {
    snprintf(text, sizeof text, "%u.%u.%u.%u", version.parts[0], version.parts[1], version.parts[2],
             version.parts[3]);
}

bool ParseVersion(const char *text, size_t length, ModuleVersion *version) {
    ModuleVersion parsed = {};
    size_t at = 0;
    for (size_t part = 0; part < kMostParts; ++part) {
        if (!ParsePart(text, length, &at, &parsed.parts[part]))
            return false;
        if (at == length) {
            *version = parsed;
            return true;
        }
        if (text[at++] != '.')
            return false;
    }
    return false;
}

int CompareVersions(const ModuleVersion &a, const ModuleVersion &b) {
    for (size_t part = 0; part < kMostParts; ++part)
        if (a.parts[part] != b.parts[part])
            return a.parts[part] < b.parts[part] ? -1 : 1;
    return 0;
}
