#include "web/MakerAddresses.h"

#include "diag/ErrorReport.h"

#include <cstring>
#include <initializer_list>
#include <windows.h>

#include <shellapi.h>

#ifndef BX_HELP_ADDRESS // for tools that look at this file outside the build
#define BX_HELP_ADDRESS ""
#define BX_WEB_ADDRESS ""
#define BX_SUPPORT_ADDRESS ""
#define BX_DOWNLOAD_ADDRESS ""
#define BX_UPDATE_ADDRESS ""
#endif

extern const char kHelpAddress[] = BX_HELP_ADDRESS;
extern const char kWebAddress[] = BX_WEB_ADDRESS;
extern const char kSupportAddress[] = BX_SUPPORT_ADDRESS;
extern const char kDownloadAddress[] = BX_DOWNLOAD_ADDRESS;
extern const char kUpdateAddress[] = BX_UPDATE_ADDRESS;

namespace {

constexpr uint32_t kSiteOpen = 38, kSiteScheme = 44;
constexpr INT_PTR kLargestShellError = 32; // the call's answers above it mean success

// The shell would run a file just as readily.
bool IsWebOrMail(const char *address) {
    for (const char *scheme : {"https://", "http://", "mailto:"})
        if (strncmp(address, scheme, strlen(scheme)) == 0)
            return true;
    return false;
}

} // namespace

bool OpenAddress(void *owner, const char *address) {
    if (!IsWebOrMail(address)) {
        ReportError({kSiteScheme, kDebugMessage, 0}, kStopIcon, kTitleUnexpected,
                    "OpenAddress() failed with Address = '%s'", address);
        return false;
    }
    const INT_PTR answer = reinterpret_cast<INT_PTR>(
        ShellExecuteA(static_cast<HWND>(owner), "open", address, nullptr, nullptr, SW_SHOWNORMAL));
    if (answer > kLargestShellError)
        return true;
    ReportError({kSiteOpen, kUserMessage, 0}, kWarningIcon, kTitleWarning,
                "The address could not be opened (error %d). It is: %s", static_cast<int>(answer), address);
    return false;
}
