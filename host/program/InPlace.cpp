#include "host/program/InPlace.h"

#include "host/base/Console.h"
#include "host/base/Display.h"
#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "host/base/UnixFile.h"

#include <algorithm>

namespace host {

static std::wstring BackupPath(const std::wstring &photo) {
    return photo + L"_original";
}

// The photo under its second name, whole or not at all. The first original stays.
static bool KeepOriginal(const std::wstring &photo, bool *isMade, std::string *why) {
    const std::wstring backup = BackupPath(photo), temporary = TemporaryPath(backup, GetCurrentProcessId());
    if (DoesFileExist(backup))
        return true;
    NoteTemporary(temporary);
    *isMade = CopyFileW(photo.c_str(), temporary.c_str(), FALSE) &&
              ((IsUnderWine() && PutUnixFile(temporary, backup, photo)) ||
               MoveFileExW(temporary.c_str(), backup.c_str(), MOVEFILE_WRITE_THROUGH));
    const DWORD error = GetLastError();
    if (!*isMade)
        DeleteFileW(temporary.c_str());
    ForgetTemporary(temporary);
    return *isMade || Fail(why, SystemErrorText(error));
}

static PhotoOutcome ReplacePhoto(PhotoSession &session, const std::wstring &photo) {
    const std::wstring path = NativePath(photo);
    bool hasNewBackup = false;
    PhotoOutcome outcome;
    std::string why;
    const bool isBacked =
        !session.options.keepsNoBackup && DoesFileExist(path) && CheckOutputPlace(path, &why);
    if (isBacked && !KeepOriginal(path, &hasNewBackup, &why)) {
        outcome.status = kExitFile;
        outcome.reason = "cannot write " + ToUtf8(BackupPath(photo)) + ": " + why;
        return outcome;
    }
    outcome = RunPhoto(session, photo, photo);
    if (outcome.status != kExitDone && hasNewBackup) // the photo is what it was
        DeleteFileW(BackupPath(path).c_str());
    return outcome;
}

int RunInPlace(PhotoSession &session, const std::function<void(const PhotoOutcome &)> &tell) {
    const std::vector<std::wstring> &photos = session.options.photos;
    size_t failed = 0;
    int status = kExitDone;
    for (const std::wstring &photo : photos) {
        const PhotoOutcome outcome = ReplacePhoto(session, photo);
        if (outcome.status != kExitDone)
            tell(outcome);
        if (outcome.status == kExitCancelled)
            return kExitCancelled;
        if (outcome.status == kExitDone)
            session.options.showDialog = false;
        else
            status = outcome.status, failed++;
    }
    return failed == 0 || photos.size() == 1 ? status : failed == photos.size() ? kExitFile : kExitSomeFailed;
}

bool HasOwnConsole() {
    DWORD processes[2];
    return !IsUnderWine() && GetConsoleProcessList(processes, 2) == 1;
}

bool AreDroppedFiles(const std::vector<std::wstring> &arguments) {
    return !arguments.empty() && HasOwnConsole() &&
           std::all_of(arguments.begin(), arguments.end(), DoesFileExist);
}

} // namespace host
