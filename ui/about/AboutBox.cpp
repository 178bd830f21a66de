#include "ui/about/AboutBox.h"

#include "diag/module/ModuleInstance.h"
#include "diag/module/ModuleVersion.h"
#include "resources/ResourceIds.h"
#include "ui/about/Guide.h"
#include "ui/about/LinkButton.h"
#include "ui/paint/PaintedControls.h"
#include "ui/window/ControlStyle.h"
#include "ui/window/DesktopWindow.h"
#include "ui/window/DpiScope.h"
#include "ui/window/MessageBoxOwner.h"
#include "ui/window/Palette.h"
#include "ui/window/ScaledBitmap.h"
#include "ui/window/WaitCursor.h"
#include "web/MakerAddresses.h"
#include "web/UpdateNotice.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <windows.h>

#include <objbase.h>

namespace {

constexpr char kMailScheme[] = "mailto:", kSecureScheme[] = "https://";

struct AboutLink {
    int id;
    const char *address;
};

constexpr AboutLink kLinks[] = {{kAboutHelpLinkId, kHelpAddress},
                                {kAboutWebLinkId, kWebAddress},
                                {kAboutSupportLinkId, kSupportAddress},
                                {kAboutUpdateLinkId, kDownloadAddress}};

const AboutLink *FindLink(int id) {
    for (const AboutLink &link : kLinks)
        if (link.id == id)
            return &link;
    return nullptr;
}

// What a person would write down.
const char *ShownAddress(const char *address) {
    for (const char *scheme : {kMailScheme, kSecureScheme})
        if (strncmp(address, scheme, strlen(scheme)) == 0)
            return address + strlen(scheme);
    return address;
}

void ShowVersion(HWND dialog) {
    char version[kVersionTextCapacity], text[64];
    FormatVersion(ReadModuleVersion(), version);
    snprintf(text, sizeof text, "Version %s", version);
    SetDlgItemTextA(dialog, kAboutVersionId, text);
}

void ShowUpdateControls(HWND dialog) {
    char notice[128];
    CheckDlgButton(dialog, kAboutUpdateSwitchId, IsUpdateNoticeOn() ? BST_CHECKED : BST_UNCHECKED);
    const bool known = NewVersionKnown(notice, sizeof notice);
    if (known)
        SetLinkText(GetDlgItem(dialog, kAboutUpdateLinkId), notice);
    ShowWindow(GetDlgItem(dialog, kAboutUpdateLinkId), known ? SW_SHOW : SW_HIDE);
    for (const int id : {kAboutUpdateSwitchId, kAboutUpdateNoteId})
        ShowWindow(GetDlgItem(dialog, id), CanNoticeUpdates() ? SW_SHOW : SW_HIDE);
}

void ShowGuideLink(HWND dialog) {
    if (!IsGuideInstalled())
        return;
    SetLinkText(GetDlgItem(dialog, kAboutGuideLinkId), "Guide on this computer");
    ShowWindow(GetDlgItem(dialog, kAboutGuideLinkId), SW_SHOW);
}

void Dress(HWND dialog) {
    DressControls(dialog);
    DressCaption(dialog);
}

void OnColorsChanged(HWND dialog) {
    ReadLook();
    Dress(dialog);
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

// Message boxes belong to the topmost window of ours.
void OnInit(HWND dialog, MessageBoxOwner *owner) {
    SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(owner));
    TakeMessageBoxes(dialog, owner);
    ShowVersion(dialog);
    for (const AboutLink &link : kLinks)
        if (link.id != kAboutUpdateLinkId)
            SetLinkText(GetDlgItem(dialog, link.id), ShownAddress(link.address));
    ShowGuideLink(dialog);
    ShowUpdateControls(dialog);
    Dress(dialog);
    SetFocus(GetDlgItem(dialog, IDOK));
}

void OnDestroy(HWND dialog) {
    if (auto *owner = reinterpret_cast<MessageBoxOwner *>(GetWindowLongPtrA(dialog, DWLP_USER)))
        GiveMessageBoxesBack(owner);
}

// Asking begins when the box closes, so that a slip of the finger can still be taken back.
void OnUpdateSwitch(HWND dialog) {
    SetUpdateNotice(IsDlgButtonChecked(dialog, kAboutUpdateSwitchId) == BST_CHECKED);
    ShowUpdateControls(dialog);
}

BOOL OnCommand(HWND dialog, int id, int notification) {
    if (id == IDOK || id == IDCANCEL) {
        EndDialog(dialog, IDOK);
        return TRUE;
    }
    if (notification != BN_CLICKED)
        return FALSE;
    if (id == kAboutUpdateSwitchId)
        OnUpdateSwitch(dialog);
    else if (id == kAboutGuideLinkId)
        OpenGuide(dialog);
    else if (const AboutLink *link = FindLink(id))
        OpenAddress(dialog, link->address);
    else
        return FALSE;
    return TRUE;
}

// The pictures carry their transparency, already multiplied in.
void BlendBitmap(HDC target, const RECT &area, HBITMAP bitmap, const SIZE &size) {
    const HDC source = CreateCompatibleDC(target);
    if (!source)
        return;
    const HGDIOBJ old = SelectObject(source, bitmap);
    const int width = static_cast<int>(size.cx), height = static_cast<int>(size.cy);
    const int top = static_cast<int>((area.top + area.bottom - height) / 2);
    GdiAlphaBlend(target, static_cast<int>(area.left), top, width, height, source, 0, 0, width, height,
                  {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA});
    SelectObject(source, old);
    DeleteDC(source);
}

void DrawLogo(const DRAWITEMSTRUCT &item) {
    FillWith(item.hDC, item.rcItem, kFaceColor);
    SIZE size = {};
    const SIZE room = {item.rcItem.right - item.rcItem.left, item.rcItem.bottom - item.rcItem.top};
    const HBITMAP logo = LoadFittingBitmap(kProductLogoBitmapId, kBitmapScaleCount, room, &size);
    if (!logo)
        return;
    BlendBitmap(item.hDC, item.rcItem, logo, size);
    DeleteObject(logo);
}

BOOL OnDrawItem(const DRAWITEMSTRUCT &item) {
    if (item.CtlType == ODT_BUTTON)
        DrawLink(item);
    else
        DrawLogo(item);
    return TRUE;
}

INT_PTR CALLBACK AboutProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        OnInit(dialog, reinterpret_cast<MessageBoxOwner *>(lParam));
        return FALSE; // the focus is set
    case WM_DESTROY:
        OnDestroy(dialog);
        return FALSE;
    case WM_COMMAND:
        return OnCommand(dialog, LOWORD(wParam), HIWORD(wParam));
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
        OnColorsChanged(dialog);
        return FALSE;
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
        return reinterpret_cast<INT_PTR>(OnControlColor(message, reinterpret_cast<HDC>(wParam)));
    case WM_DRAWITEM:
        return lParam && OnDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT *>(lParam));
    default:
        return FALSE;
    }
}

} // namespace

// COM is for what the box may open; without it the box is still worth showing.
bool ShowAboutBox(void *parentWindow) {
    const bool comInitialized = SUCCEEDED(CoInitialize(nullptr));
    ShowWaitCursor();
    const DpiCookie dpi = EnterDialogDpi();
    const ControlStyle style = EnterControlStyle();
    ReadLook();
    MessageBoxOwner owner = {};
    const INT_PTR closed =
        DialogBoxParamA(ModuleInstance(), MAKEINTRESOURCEA(kAboutDialogId), static_cast<HWND>(parentWindow),
                        AboutProc, reinterpret_cast<LPARAM>(&owner));
    LeaveControlStyle(style);
    LeaveDialogDpi(dpi);
    if (comInitialized)
        CoUninitialize();
    StartUpdateCheck();
    return closed == IDOK;
}
