#include "ui/fields/FieldClass.h"

#include "diag/ErrorReport.h"
#include "diag/SystemLibrary.h"
#include "diag/module/ModuleInstance.h"

namespace {

constexpr uint32_t kSiteLibrary = 22, kSiteClass = 30;
constexpr wchar_t kLibrary[] = L"msftedit.dll",
                  kClass[] = L"RICHEDIT50W"; // the class in the dialog's template

void ReportFailure(uint32_t site, const char *call) {
    ReportError({site, kSystemError, static_cast<uint32_t>(GetLastError())}, kStopIcon, kTitleUnexpected,
                "%s() failed with FilePath = '%ls'", call, kLibrary);
}

// A plain edit field knows all that the rows ask of one.
void RegisterPlainFields() {
    WNDCLASSEXW plain = {};
    plain.cbSize = sizeof plain;
    if (GetClassInfoExW(nullptr, L"EDIT", &plain)) {
        plain.style &= ~static_cast<UINT>(CS_GLOBALCLASS);
        plain.hInstance = ModuleInstance();
        plain.lpszClassName = kClass;
        if (RegisterClassExW(&plain))
            return;
    }
    ReportFailure(kSiteClass, "RegisterClassEx");
}

} // namespace

FieldClass EnterFieldClass() {
    const FieldClass made = {static_cast<HMODULE>(LoadSystemLibrary(kLibrary))};
    if (!made.library) {
        ReportFailure(kSiteLibrary, "LoadLibrary");
        RegisterPlainFields();
    }
    return made;
}

void LeaveFieldClass(const FieldClass &fieldClass) {
    if (fieldClass.library)
        FreeLibrary(fieldClass.library);
    else
        UnregisterClassW(kClass, ModuleInstance());
}
