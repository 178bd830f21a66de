#include "ui/dialog/AccessibleNames.h"

#include "resources/DialogControlIds.h"
#include "ui/fields/ParameterTable.h"

#include <oleacc.h>

#include <cwchar>
#include <iterator>

namespace {

struct ControlName {
    int controlId;
    const wchar_t *name;
};

constexpr ControlName kNames[] = {
    {kProductLogoId, L"About Brillatrix Pro"},
    {kSettingsComboId, L"Settings"},
    {kSettingsMenuIconControlId, L"Settings menu"},
    {kCompareId, L"Compare with the image without stars"},
    {kPanIconId, L"Pan tool"},
    {kZoomIconId, L"Zoom tool"},
    {kHideIconId, L"Hide Effects tool"},
    {kShowIconId, L"Show Hidden Effects tool"},
    {kPreviewDisplayId, L"Preview"},
    {kZoomOutButtonId, L"Zoom out"},
    {kZoomInButtonId, L"Zoom in"},
    {kZoomArrowId, L"Zoom menu"},
    {kProgressId, L"Progress of the preview"},
    {kHorizontalBarId, L"Scroll the preview sideways"},
    {kVerticalBarId, L"Scroll the preview up and down"},
    {kMakerLogoId, L"Nexorvanta Software web site"},
    {kCornerIconId, L"Size the dialog"},
};

IAccPropServices *OpenNameService() {
    void *service = nullptr;
    const HRESULT result = CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IAccPropServices, &service);
    return SUCCEEDED(result) ? static_cast<IAccPropServices *>(service) : nullptr;
}

void NameControl(IAccPropServices *service, HWND control, const wchar_t *name) {
    if (control)
        service->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME,
                                name);
}

// A trackbar's text, which it does not show, is its parameter's name.
void NamePair(IAccPropServices *service, HWND dialog, int index) {
    const ParameterControl &row = gParameterControls[index];
    wchar_t name[64] = L"", less[80], more[80];
    GetDlgItemTextW(dialog, row.trackbarId, name, static_cast<int>(std::size(name)));
    swprintf(less, std::size(less), L"Less %ls", name);
    swprintf(more, std::size(more), L"More %ls", name);
    NameControl(service, GetDlgItem(dialog, row.editId), name);
    NameControl(service, GetDlgItem(dialog, row.trackbarId), name);
    NameControl(service, GetDlgItem(dialog, kPairIds[index].less), less);
    NameControl(service, GetDlgItem(dialog, kPairIds[index].more), more);
}

BOOL CALLBACK ForgetName(HWND control, LPARAM service) {
    const MSAAPROPID name = PROPID_ACC_NAME;
    reinterpret_cast<IAccPropServices *>(service)->ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT),
                                                                  CHILDID_SELF, &name, 1);
    return TRUE;
}

} // namespace

void NameControls(HWND dialog) {
    IAccPropServices *service = OpenNameService();
    if (!service)
        return;
    for (const ControlName &entry : kNames)
        NameControl(service, GetDlgItem(dialog, entry.controlId), entry.name);
    for (int i = 0; i < kParameterControlCount; ++i)
        NamePair(service, dialog, i);
    service->Release();
}

void ForgetControlNames(HWND dialog) {
    IAccPropServices *service = OpenNameService();
    if (!service)
        return;
    EnumChildWindows(dialog, ForgetName, reinterpret_cast<LPARAM>(service));
    service->Release();
}
