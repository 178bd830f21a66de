#include "ui/about/Guide.h"

#include "storage/InstalledFiles.h"
#include "web/MakerAddresses.h"

#include <shellapi.h>

namespace {

constexpr wchar_t kGuide[] = L"guide\\Brillatrix Pro Guide.html";
constexpr INT_PTR kLargestShellError = 32; // the call's answers above it mean success

} // namespace

bool IsGuideInstalled() {
    WidePath path;
    return FindInstalledFile(kGuide, &path);
}

void OpenGuide(HWND owner) {
    WidePath path;
    if (FindInstalledFile(kGuide, &path) &&
        reinterpret_cast<INT_PTR>(ShellExecuteW(owner, L"open", path.text, nullptr, nullptr, SW_SHOWNORMAL)) >
            kLargestShellError)
        return;
    OpenAddress(owner, kHelpAddress);
}
