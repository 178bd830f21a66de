#include "storage/ParameterFiles.h"

#include "diag/ErrorReport.h"
#include "diag/WidePath.h"
#include "storage/AppFolders.h"
#include "storage/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <windows.h>

ParameterBlockAccessor gParameterBlockAccessor = nullptr;

namespace {

constexpr wchar_t kWideExtension[] = L"sss";
constexpr char kInitialSettingsName[] = "LastSavedParameters";
// Of the messages about an invalid or unreadable file; the initial settings have a title of their own only
// for an obsolete one.
constexpr char kTitleReadFailed[] = "Warning - Failed to Read Saved Parameter Set";
// The bytes that mean something; a file of the current version without all of them is half a record.
constexpr size_t kRecordSize = 40;
constexpr size_t kVersionWords = 4;

constexpr uint32_t kSiteOpen = 61, kSiteRead = 70, kSiteVersion = 96, kSiteRemove = 110, kSiteInvalid = 131,
                   kSiteConverted = 144, kSiteSaveConverted = 149, kSiteObsolete = 163, kSiteNoAccessor = 180,
                   kSiteCommit = 207, kSitePath = 221, kSiteWiden = 230, kSiteUnreadable = 237,
                   kSiteForeign = 245;

constexpr ParameterFileTexts kInitialSettingsTexts = {
    "Warning - Failed to Read Initial Settings Parameters",
    "Your Initial Settings Parameter Set file '%s' was saved in an older format and has been "
    "converted.\r\n\r\n"
    "The converted Parameter Set is being saved, replacing the original file.",
    "Your Initial Settings Parameter Set file was saved in an obsolete format and is being deleted.  "
    "Parameters will "
    "be set to defaults.",
    nullptr,
    nullptr,
};

struct FileVersion {
    uint16_t words[kVersionWords]; // Major, Minor, Revision, Build
};

FileVersion VersionOf(const ParameterBlock &block) {
    FileVersion version;
    for (size_t i = 0; i < kVersionWords; ++i)
        version.words[i] = static_cast<uint16_t>(block.bytes[2 * i] | block.bytes[2 * i + 1] << 8);
    return version;
}

const ParameterBlock *IdentityBlock() {
    if (!gParameterBlockAccessor)
        return nullptr;
    return reinterpret_cast<const ParameterBlock *>(gParameterBlockAccessor(kIdentityBlock, nullptr));
}

bool IsCurrentVersion(const ParameterBlock &block) {
    const ParameterBlock *identity = IdentityBlock();
    return identity && memcmp(block.bytes, identity->bytes, kVersionWords * sizeof(uint16_t)) == 0;
}

void ReportDebug(uint32_t site, const char *message) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", message);
}

bool WidenReported(const char *path, WidePath *wide) {
    if (WidenPath(path, wide))
        return true;
    ReportError({kSiteWiden, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "MultiByteToWideChar() failed with FilePath = '%s'", path);
    return false;
}

// Reads up to a whole block; what is missing stays 0. A read that the system refuses is told from an empty
// file: a file that another program has locked is not an invalid one.
ParameterFileState ReadBlock(FILE *file, ParameterBlock *block, size_t *bytesRead) {
    errno = 0;
    *bytesRead = fread(block->bytes, 1, sizeof block->bytes, file);
    if (*bytesRead > 0 && !ferror(file))
        return kFileRead;
    const int error = errno;
    ReportError({kSiteRead, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "fread() failed with errno = '%d'", error);
    return ferror(file) ? kFileUnreadable : kFileInvalid;
}

void DeleteParameterFile(const wchar_t *path) {
    if (_wremove(SystemPath(path).text) == 0)
        return;
    const int error = errno;
    ReportError({kSiteRemove, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                "_tremove() failed with error = '%d'. File to be deleted was '%s'", error,
                DescribePath(path).text);
}

void DropInvalidFile(const wchar_t *path) {
    ReportError({kSiteInvalid, kUserMessage, 0}, kWarningIcon, kTitleReadFailed,
                "Your Parameter Set file '%s' is invalid and is being deleted.\r\n", DescribePath(path).text);
    DeleteParameterFile(path);
}

void DropObsoleteFile(const wchar_t *path, const ParameterFileTexts &texts, const FileVersion &version) {
    char text[kMaxPath + 200];
    snprintf(text, sizeof text, texts.obsoleteFormat, DescribePath(path).text);
    ReportError(
        {kSiteObsolete, kUserMessage, 0}, kWarningIcon, texts.obsoleteTitle,
        "%s\r\n\r\nFile Version: Major Version = '%d', Minor Version = '%d', Revision = '%d', Build = '%d'",
        text, version.words[0], version.words[1], version.words[2], version.words[3]);
    DeleteParameterFile(path);
}

// Any file may be picked by its name; only what is named as a set is ours to delete.
bool IsForeignFile(const wchar_t *path) {
    if (HasParameterSetExtension(path))
        return false;
    ReportError({kSiteForeign, kUserMessage, 0}, kWarningIcon, kTitleReadFailed,
                "The file '%s' is no Parameter Set file and stays as it is.", DescribePath(path).text);
    return true;
}

// For the initial settings a file that stays is a matter of the log alone.
void TellStaying(const wchar_t *path, const char *format) {
    if (format)
        ReportError({kSiteUnreadable, kUserMessage, 0}, kWarningIcon, kTitleReadFailed, format,
                    DescribePath(path).text);
}

void TellWhyNotRead(const wchar_t *path, const ParameterFileTexts &texts, ParameterFileState state) {
    if (state == kFileMissing)
        TellStaying(path, texts.missingFormat);
    else if (state == kFileUnreadable)
        TellStaying(path, texts.unreadableFormat);
    else if (!IsForeignFile(path))
        DropInvalidFile(path);
}

void SaveConvertedFile(const wchar_t *path, const ParameterFileTexts &texts,
                       const ParameterBlock &converted) {
    ReportError({kSiteConverted, kUserMessage, 0}, kInformationIcon, "Parameter Set Conversion",
                texts.convertedFormat, DescribePath(path).text);
    if (!SaveParametersFile(converted, path))
        ReportError({kSiteSaveConverted, kUserMessage, 0}, kWarningIcon,
                    "Warning - Parameter Set Conversion Failed",
                    "The converted Parameter Set file '%s' could not be saved.", DescribePath(path).text);
}

// No layout before the current one can be converted; the way is kept for layouts to come.
bool ConvertFile(const wchar_t *path, const ParameterFileTexts &texts, ParameterBlock *block) {
    const uintptr_t result = gParameterBlockAccessor(kConvertBlock, block);
    ParameterBlock *converted = reinterpret_cast<ParameterBlock *>(result);
    if (!converted)
        return false;
    *block = *converted;
    free(converted);
    SaveConvertedFile(path, texts, *block);
    return true;
}

} // namespace

ParameterFileState LoadParameterStructure(const wchar_t *path, ParameterBlock *block) {
    FILE *file = _wfopen(SystemPath(path).text, L"rb");
    if (!file) {
        const int error = errno;
        if (error == ENOENT)
            return kFileMissing;
        ReportError({kSiteOpen, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "_tfopen() failed with FilePath = '%s' and errno = '%d'", DescribePath(path).text, error);
        return kFileUnreadable;
    }
    ParameterBlock read = {};
    size_t bytesRead = 0;
    const ParameterFileState state = ReadBlock(file, &read, &bytesRead);
    fclose(file);
    if (state != kFileRead)
        return state;
    if (bytesRead < kRecordSize && IsCurrentVersion(read))
        return kFileInvalid;
    *block = read;
    return kFileRead;
}

ParameterFileState LoadParameterStructure(const char *path, ParameterBlock *block) {
    WidePath wide;
    return WidenReported(path, &wide) ? LoadParameterStructure(wide.text, block) : kFileUnreadable;
}

bool SaveParametersFile(const ParameterBlock &block, const wchar_t *path) {
    return WriteFileAtomically(path, block.bytes, sizeof block.bytes);
}

bool SaveParametersFile(const ParameterBlock &block, const char *path) {
    return WriteFileAtomically(path, block.bytes, sizeof block.bytes);
}

bool HasParameterSetExtension(const wchar_t *path) {
    const wchar_t *point = wcsrchr(FileNameOf(path), L'.');
    return point && CompareStringOrdinal(point + 1, -1, kWideExtension, -1, TRUE) == CSTR_EQUAL;
}

bool ReadParameterFile(const wchar_t *path, const ParameterFileTexts &texts, ParameterBlock *block) {
    if (!IdentityBlock()) {
        // Without the current version to compare with, a good file would be taken for an obsolete one.
        ReportDebug(kSiteNoAccessor, "The parameter block accessor is missing.");
        return false;
    }
    ParameterBlock read;
    const ParameterFileState state = LoadParameterStructure(path, &read);
    if (state != kFileRead) {
        TellWhyNotRead(path, texts, state);
        return false;
    }
    if (!IsCurrentVersion(read)) {
        const FileVersion version = VersionOf(read);
        ReportError({kSiteVersion, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "User Setting File version mismatch. File Version = '%d','%d','%d','%d'",
                    version.words[0], version.words[1], version.words[2], version.words[3]);
        if (!ConvertFile(path, texts, &read)) {
            if (!IsForeignFile(path))
                DropObsoleteFile(path, texts, version);
            return false;
        }
    }
    *block = read;
    return true;
}

bool ReadInitialSettings(const char *path) {
    WidePath wide;
    ParameterBlock block;
    if (!WidenReported(path, &wide) || !ReadParameterFile(wide.text, kInitialSettingsTexts, &block))
        return false;
    if (gParameterBlockAccessor(kCommitBlock, &block) == 1)
        return true;
    ReportDebug(kSiteCommit, "The initial settings could not be committed.");
    return false;
}

bool FormatInitialSettingsPath(char *path, size_t capacity) {
    char formatted[kMaxPath];
    const int printed = snprintf(formatted, sizeof formatted, "%s\\%s.%s", gSettingsFolder,
                                 kInitialSettingsName, kParameterFileExtension);
    const bool fits = printed >= 0 && static_cast<size_t>(printed) < sizeof formatted &&
                      static_cast<size_t>(printed) < capacity;
    if (!*gSettingsFolder || !fits) {
        ReportError({kSitePath, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "_stprintf_s() failed with Settings Directory = '%s'", gSettingsFolder);
        return false;
    }
    memcpy(path, formatted, static_cast<size_t>(printed) + 1);
    return true;
}
