#include "tests/dialog/DialogFixture.h"

#include "ui/window/DialogMessages.h"

#include <commctrl.h>
#include <process.h>

const ParameterPair kPairs[11] = {
    {1025, 1026, 0, 100, 0, 'H', &ParameterSet::threshold},
    {1005, 1004, 0, 100, 0, 'I', &ParameterSet::intensity},
    {1007, 1006, 0, 100, 0, 'L', &ParameterSet::length},
    {1009, 1008, -900, 900, 1, 'A', &ParameterSet::angle},
    {1011, 1010, 1, 32, 0, 'N', &ParameterSet::numberOfPoints},
    {1022, 1024, 0, 100, 0, 'S', &ParameterSet::spikeSharpness},
    {1013, 1012, -100, 100, 0, 'C', &ParameterSet::colorSaturation},
    {1015, 1014, 0, 100, 0, 'R', &ParameterSet::rainbowIntensity},
    {1017, 1016, 0, 100, 0, 'F', &ParameterSet::rainbowFrequency},
    {1019, 1018, 0, 100, 0, 'E', &ParameterSet::secondaryIntensity},
    {1021, 1020, 0, 100, 0, 'Y', &ParameterSet::softFlareBrightness},
};

std::wstring ParameterPair::Shown(int number) const {
    wchar_t text[20];
    swprintf(text, 20, L"%.*f", decimals, decimals ? number / 10.0 : number);
    return text;
}

namespace {

constexpr unsigned kTableTaskStack = 8192; // which tells the task's thread from the others

// The system calls back without a context, and one dialog is open at a time.
DialogFixture *gFixture;
decltype(&DialogBoxParamW) gOpenOther;

// The table's task, held before it begins.
struct {
    unsigned(WINAPI *start)(void *);
    void *argument;
} gHeld;
uintptr_t (*gBeginThread)(void *, unsigned, unsigned(WINAPI *)(void *), void *, unsigned, unsigned *);

unsigned WINAPI StartWhenReleased(void *gate) {
    const auto held = gHeld;
    WaitForSingleObject(gate, 30000);
    return held.start(held.argument);
}

} // namespace

INT_PTR DialogFixture::Watch(DLGPROC real, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG)
        dialog = window;
    ++seen[message];
    if (message == kMsgRequestPreview)
        previewIdle = false;
    else if (message == kMsgTableReady)
        tableReady = true;
    else if (message == kMsgProgress && tableReady)
        previewIdle = lParam == 0;
    const INT_PTR result = real(window, message, wParam, lParam);
    if (afterMessage)
        afterMessage(message);
    if (message == WM_INITDIALOG && onInit)
        onInit();
    if (message == WM_GETMINMAXINFO && lParam) // the screen that tests run on is small
        reinterpret_cast<MINMAXINFO *>(lParam)->ptMaxTrackSize = {8000, 8000};
    return result;
}

void DialogFixture::RunScript() {
    scriptRan = true;
    UpdateWindow(dialog);
    script();
    if (!IsWindowVisible(dialog))
        return;
    ADD_FAILURE() << "the script left the dialog open";
    ReleaseTable();
    EndDialog(dialog, -7);
}

INT_PTR WINAPI DialogFixture::OpenMain(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC main,
                                       LPARAM parameter) {
    if (IS_INTRESOURCE(name) || wcscmp(name, L"BRILLATRIXDIALOG_ADVANCED") != 0)
        return gOpenOther(module, name, owner, main, parameter);
    DialogFixture &f = *gFixture;
    ++f.dialogsOpened;
    EXPECT_TRUE(f.script) << "nobody asked for the dialog";
    EXPECT_EQ(owner, f.hostWindow);
    if (!f.script || gAnswers.refuseDialog)
        return -1;
    f.dialogResult = PlayModal(
        main, [&](DLGPROC played) { return DialogBoxParamW(module, name, owner, played, parameter); },
        [&f](HWND) { f.RunScript(); },
        [&f](DLGPROC real, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            return f.Watch(real, window, message, wParam, lParam);
        });
    f.dialog = nullptr;
    return f.dialogResult;
}

void DialogFixture::SetUp() {
    ASSERT_NO_FATAL_FAILURE(ModuleFixture::SetUp());
    AnswerForSystem(module.module, &hooks);
    gFixture = this;
    gOpenOther = host::ReplaceImport(module.module, "DialogBoxParamW", &OpenMain, &hooks);
    tableGate = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    const auto beginThread = [](void *security, unsigned stack, unsigned(WINAPI * start)(void *),
                                void *argument, unsigned flags, unsigned *id) -> uintptr_t {
        if (stack != kTableTaskStack)
            return gBeginThread(security, stack, start, argument, flags, id);
        gHeld = {start, argument};
        return gBeginThread(security, 0, StartWhenReleased, tableGate, flags, id);
    };
    gBeginThread =
        host::ReplaceImport<decltype(gBeginThread)>(module.module, "_beginthreadex", beginThread, &hooks);
    hostWindow = CreateWindowA("STATIC", "Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 500, 400, nullptr,
                               nullptr, nullptr, nullptr);
    filterHost.settings.window = hostWindow;
    filterHost.document = before = MakeNight({.width = 240, .height = 180});
}

void DialogFixture::TearDown() {
    DestroyWindow(hostWindow);
    host::RestoreImports(&hooks);
    CloseHandle(tableGate);
    ModuleFixture::TearDown();
}

void DialogFixture::LoadModuleAgain() {
    TearDown();
    SetUp();
}

host::RunResult DialogFixture::RunDialog(const Script &wanted, bool withParameters) {
    script = wanted;
    scriptRan = previewIdle = tableReady = false;
    dialogResult = 0;
    const host::RunResult result = Run(withParameters);
    EXPECT_EQ(scriptRan, wanted && !gAnswers.refuseDialog);
    EXPECT_TRUE(IsWindowEnabled(hostWindow));
    return result;
}

std::wstring DialogFixture::Text(int id) const {
    wchar_t text[200] = L"";
    GetDlgItemTextW(dialog, id, text, 200);
    return text;
}

std::wstring DialogFixture::RowText(int comboId, int row) const {
    wchar_t text[200] = L"";
    Ask(comboId, CB_GETLBTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text));
    return text;
}

int DialogFixture::Position(int trackbarId) const {
    return static_cast<int>(Ask(trackbarId, TBM_GETPOS));
}

ULONG_PTR DialogFixture::Cursor() {
    Pump();
    Ask(kDisplay, kMsgRefreshCursor);
    return GetClassLongPtrW(Item(kDisplay), GCLP_HCURSOR);
}

RECT DialogFixture::ScreenPlace(int id) const {
    RECT place = {};
    GetWindowRect(Item(id), &place);
    return place;
}

int DialogFixture::Seen(UINT message) const {
    const auto found = seen.find(message);
    return found == seen.end() ? 0 : found->second;
}

std::string DialogFixture::UserFolder(const char *name) const {
    return folder / (std::string("user\\Nexorvanta\\Brillatrix\\") + name);
}

// The end of a request that was made obsolete may still be on its way when the next one is made.
void DialogFixture::Settle() {
    Pump();
    WaitFor("the light source table", [this] { return tableReady; });
    constexpr DWORD quiet = 40;
    DWORD last = GetTickCount();
    int busy = -1;
    WaitFor("the end of the preview", [&] {
        const int messages = Seen(kMsgRequestPreview) + Seen(kMsgProgress);
        if (!previewIdle || busy != messages) {
            busy = messages;
            last = GetTickCount();
        }
        return GetTickCount() - last >= quiet;
    });
}

HWND DialogFixture::ControlAt(POINT screen) const {
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT place;
        GetWindowRect(child, &place);
        if (PtInRect(&place, screen) && IsWindowVisible(child) && IsWindowEnabled(child) &&
            SendMessageW(child, WM_NCHITTEST, 0, PointParam(screen.x, screen.y)) != HTTRANSPARENT)
            return child;
    }
    return dialog;
}

void DialogFixture::Click(int id) {
    const RECT place = ScreenPlace(id);
    POINT point = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    const HWND hit = ControlAt(point);
    EXPECT_EQ(hit, Item(id)) << "a click on " << id << " goes to " << GetDlgCtrlID(hit);
    ScreenToClient(hit, &point);
    ClickAt(hit, point);
}

void DialogFixture::DoubleClick(int id) {
    Click(id);
    PostMessageW(Item(id), WM_LBUTTONDBLCLK, MK_LBUTTON, PointParam(3, 3));
    Pump();
}

void DialogFixture::Key(WORD key, bool ctrl, bool shift) {
    if (GetActiveWindow() != dialog)
        SetForegroundWindow(dialog); // another program's window may have come up
    HoldKeys(false, ctrl, shift);
    PostKey(dialog, key);
    HoldKeys(false, false);
}

void DialogFixture::Character(wchar_t character) {
    PostMessageW(GetFocus(), WM_CHAR, character, 1);
    Pump();
}

void DialogFixture::Type(int editId, const std::string &text) {
    SetFocus(Item(editId));
    Ask(editId, EM_SETSEL, 0, -1);
    for (const char character : text)
        Character(static_cast<wchar_t>(character));
}

void DialogFixture::Resize(int width, int height) {
    SetWindowPos(dialog, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Pump();
}
