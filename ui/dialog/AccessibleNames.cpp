#include "ui/dialog/AccessibleNames.h"

#include "resources/DialogControlIds.h"
#include "ui/dialog/MainDialogState.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/fields/ParameterTable.h"
#include "ui/look/AccessibleControl.h"
#include "ui/view/ViewTools.h"

#include <oleacc.h>

#include <cwchar>
#include <iterator>

namespace {

constexpr wchar_t kPress[] = L"Press";

int EditOfTrackbar(int trackbarId) {
    for (const PairIds &ids : kPairIds)
        if (ids.trackbar == trackbarId)
            return ids.edit;
    return 0;
}

void ReadText(HWND control, wchar_t *text, size_t capacity) {
    GetWindowTextW(control, text, static_cast<int>(capacity));
}

void ReadZoom(HWND control, wchar_t *text, size_t capacity) {
    GetDlgItemTextW(GetParent(control), kZoomTextId, text, static_cast<int>(capacity));
}

// The preview is what it shows: in words that is the line of state.
void ReadLights(HWND control, wchar_t *text, size_t capacity) {
    GetDlgItemTextW(GetParent(control), kStateLineId, text, static_cast<int>(capacity));
}

// As the field shows it, and not in percent of the way.
void ReadPair(HWND control, wchar_t *text, size_t capacity) {
    const HWND edit = GetDlgItem(GetParent(control), EditOfTrackbar(GetDlgCtrlID(control)));
    GetWindowTextW(edit, text, static_cast<int>(capacity));
}

bool IsSelectedTool(HWND control) {
    constexpr int icons[] = {0, kPanIconId, kZoomIconId, kHideIconId, kShowIconId};
    return gViewTools.tool < std::size(icons) && GetDlgCtrlID(control) == icons[gViewTools.tool];
}

bool IsComparing(HWND) {
    return gPreviewDisplay.comparing;
}

struct ControlTraits {
    int controlId;
    AccessibleTraits traits;
};

constexpr LONG kButton = ROLE_SYSTEM_PUSHBUTTON;
constexpr ControlTraits kTraits[] = {
    {kProductLogoId, {L"About Brillatrix Pro", kButton, nullptr, kPress, nullptr, nullptr, nullptr, false}},
    {kSettingsComboId, {L"Settings", ROLE_SYSTEM_COMBOBOX, L"T", nullptr, nullptr, ReadText, nullptr, true}},
    {kEffectComboId, {L"Effect", ROLE_SYSTEM_COMBOBOX, L":", nullptr, nullptr, ReadText, nullptr, true}},
    {kSettingsMenuIconControlId,
     {L"Settings menu", ROLE_SYSTEM_BUTTONMENU, L"M", kPress, nullptr, nullptr, nullptr, true}},
    {kCompareId,
     {L"Compare with the image without stars", kButton, L"B", nullptr, nullptr, nullptr, IsComparing, false}},
    {kPanIconId, {L"Pan tool", kButton, L"P", kPress, nullptr, nullptr, IsSelectedTool, false}},
    {kZoomIconId, {L"Zoom tool", kButton, L"Z", kPress, nullptr, nullptr, IsSelectedTool, false}},
    {kHideIconId, {L"Hide Effects tool", kButton, L"X", kPress, nullptr, nullptr, IsSelectedTool, false}},
    {kShowIconId,
     {L"Show Hidden Effects tool", kButton, L"+", kPress, nullptr, nullptr, IsSelectedTool, false}},
    {kPreviewDisplayId,
     {L"Preview", ROLE_SYSTEM_GRAPHIC, L"D", nullptr, nullptr, ReadLights, nullptr, false}},
    {kZoomOutButtonId, {L"Zoom out", kButton, L"Ctrl+-", kPress, nullptr, nullptr, nullptr, false}},
    {kZoomInButtonId, {L"Zoom in", kButton, L"Ctrl++", kPress, nullptr, nullptr, nullptr, false}},
    {kZoomTextId, {L"Zoom", ROLE_SYSTEM_BUTTONMENU, L"V", kPress, nullptr, ReadZoom, nullptr, true}},
    {kZoomArrowId, {L"Zoom menu", ROLE_SYSTEM_BUTTONMENU, L"V", kPress, nullptr, ReadZoom, nullptr, true}},
    {kMakerLogoId,
     {L"Nexorvanta Software web site", ROLE_SYSTEM_LINK, nullptr, nullptr, nullptr, nullptr, nullptr, false}},
    {kCornerIconId,
     {L"Size the dialog", ROLE_SYSTEM_GRIP, nullptr, nullptr, nullptr, nullptr, nullptr, false}},
};

// What the system describes rightly once it has a name.
struct ControlName {
    int controlId;
    const wchar_t *name;
};
constexpr ControlName kNames[] = {
    {kProgressId, L"Progress of the preview"},
    {kHorizontalBarId, L"Scroll the preview sideways"},
    {kVerticalBarId, L"Scroll the preview up and down"},
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

void Describe(IAccPropServices *service, HWND control, const AccessibleTraits &traits) {
    DescribeControl(control, traits);
    if (service)
        NameControl(service, control, traits.name);
}

// A trackbar's text, which it does not show, is its parameter's name.
void DescribePair(IAccPropServices *service, HWND dialog, int index) {
    const ParameterControl &row = gParameterControls[index];
    wchar_t name[48] = L"";
    GetDlgItemTextW(dialog, row.trackbarId, name, static_cast<int>(std::size(name)));
    const struct {
        int controlId;
        const wchar_t *form;
        AccessibleTraits traits;
    } controls[] = {
        {row.editId,
         L"%ls",
         {L"", ROLE_SYSTEM_TEXT, nullptr, nullptr, NoColorText(index), ReadText, nullptr, false}},
        {row.trackbarId,
         L"%ls",
         {L"", ROLE_SYSTEM_SLIDER, nullptr, nullptr, NoColorText(index), ReadPair, nullptr, false}},
        {kPairIds[index].less,
         L"Less %ls",
         {L"", kButton, nullptr, kPress, nullptr, nullptr, nullptr, false}},
        {kPairIds[index].more,
         L"More %ls",
         {L"", kButton, nullptr, kPress, nullptr, nullptr, nullptr, false}},
    };
    for (const auto &control : controls) {
        AccessibleTraits traits = control.traits;
        swprintf(traits.name, std::size(traits.name), control.form, name);
        Describe(service, GetDlgItem(dialog, control.controlId), traits);
    }
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
    for (const ControlTraits &entry : kTraits)
        Describe(service, GetDlgItem(dialog, entry.controlId), entry.traits);
    for (int i = 0; i < kParameterControlCount; ++i)
        DescribePair(service, dialog, i);
    if (!service)
        return;
    for (const ControlName &entry : kNames)
        NameControl(service, GetDlgItem(dialog, entry.controlId), entry.name);
    service->Release();
}

void ForgetControlNames(HWND dialog) {
    IAccPropServices *service = OpenNameService();
    if (!service)
        return;
    EnumChildWindows(dialog, ForgetName, reinterpret_cast<LPARAM>(service));
    service->Release();
}
