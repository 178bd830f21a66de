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
DLGPROC gMainProcedure;
decltype(&DialogBoxParamW) gOpenOther;

// The table's task, held before it begins.
HANDLE gTableGate;
struct {
    unsigned(WINAPI *start)(void *);
    void *argument;
} gHeld;
uintptr_t (*gBeginThread)(void *, unsigned, unsigned(WINAPI *)(void *), void *, unsigned, unsigned *);

unsigned WINAPI StartWhenReleased(void *) {
    const auto held = gHeld;
    WaitForSingleObject(gTableGate, 30000);
    return held.start(held.argument);
}

uintptr_t BeginThread(void *security, unsigned stack, unsigned(WINAPI *start)(void *), void *argument,
                      unsigned flags, unsigned *id) {
    if (stack != kTableTaskStack)
        return gBeginThread(security, stack, start, argument, flags, id);
    gHeld = {start, argument};
    return gBeginThread(security, 0, StartWhenReleased, nullptr, flags, id);
}

LPARAM PointOf(LONG x, LONG y) {
    return MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y));
}

} // namespace

void HoldKeyState(int key, bool down) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[key] = down ? 0x80 : 0;
    SetKeyboardState(keys);
}

INT_PTR CALLBACK DialogFixture::Watch(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DialogFixture &f = *gFixture;
    if (message == WM_INITDIALOG)
        f.dialog = window;
    ++f.seen[message];
    if (message == kMsgRequestPreview)
        f.previewIdle = false;
    else if (message == kMsgTableReady)
        f.tableReady = true;
    else if (message == kMsgProgress && f.tableReady)
        f.previewIdle = lParam == 0;
    const INT_PTR result = gMainProcedure(window, message, wParam, lParam);
    if (f.afterMessage)
        f.afterMessage(message);
    if (message == WM_INITDIALOG && f.onInit)
        f.onInit();
    if (message == WM_GETMINMAXINFO) // the screen that tests run on is small
        reinterpret_cast<MINMAXINFO *>(lParam)->ptMaxTrackSize = {8000, 8000};
    return result;
}

// The modal loop shows the dialog when nothing else waits.
void CALLBACK DialogFixture::RunScript(HWND, UINT, UINT_PTR timer, DWORD) {
    DialogFixture &f = *gFixture;
    if (!f.dialog || !IsWindowVisible(f.dialog))
        return;
    KillTimer(nullptr, timer);
    if (f.scriptRan)
        return;
    f.scriptRan = true;
    UpdateWindow(f.dialog);
    f.script();
    if (!IsWindowVisible(f.dialog))
        return;
    ADD_FAILURE() << "the script left the dialog open";
    f.ReleaseTable();
    EndDialog(f.dialog, -7);
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
    gMainProcedure = main;
    SetTimer(nullptr, 0, 10, RunScript);
    f.dialogResult = DialogBoxParamW(module, name, owner, Watch, parameter);
    f.dialog = nullptr;
    return f.dialogResult;
}

void DialogFixture::SetUp() {
    ASSERT_NO_FATAL_FAILURE(ModuleFixture::SetUp());
    CountSystemObjects(module.module, &hooks);
    AnswerForSystem(module.module, &hooks);
    gFixture = this;
    gOpenOther = host::ReplaceImport(module.module, nullptr, "DialogBoxParamW", &OpenMain, &hooks);
    gTableGate = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    gBeginThread = host::ReplaceImport(module.module, nullptr, "_beginthreadex", BeginThread, &hooks);
    hostWindow = CreateWindowA("STATIC", "Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 500, 400, nullptr,
                               nullptr, nullptr, nullptr);
    filterHost.settings.window = hostWindow;
    filterHost.document = before = MakeNight({.width = 240, .height = 180});
}

void DialogFixture::TearDown() {
    DestroyWindow(hostWindow);
    host::RestoreImports(&hooks);
    CloseHandle(gTableGate);
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

void DialogFixture::HoldTable() {
    ResetEvent(gTableGate);
}

void DialogFixture::ReleaseTable() {
    SetEvent(gTableGate);
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

// As the dialog's own modal loop does it.
void DialogFixture::Pump(DWORD milliseconds) {
    const DWORD start = GetTickCount();
    do {
        MSG message;
        while (IsWindowVisible(dialog) && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (IsDialogMessageW(dialog, &message))
                continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (milliseconds != 0)
            Sleep(1);
    } while (GetTickCount() - start < milliseconds && IsWindowVisible(dialog));
}

bool DialogFixture::WaitFor(const char *what, const std::function<bool()> &condition, DWORD milliseconds) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > milliseconds || !IsWindowVisible(dialog)) {
            ADD_FAILURE() << what << " does not come";
            return false;
        }
        Pump(2);
    }
    return true;
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
            SendMessageW(child, WM_NCHITTEST, 0, PointOf(screen.x, screen.y)) != HTTRANSPARENT)
            return child;
    }
    return dialog;
}

void DialogFixture::Mouse(HWND window, UINT message, LONG x, LONG y, WPARAM keys) {
    PostMessageW(window, message, keys, PointOf(x, y));
    Pump();
}

void DialogFixture::Click(int id) {
    const RECT place = ScreenPlace(id);
    POINT point = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    const HWND hit = ControlAt(point);
    EXPECT_EQ(hit, Item(id)) << "a click on " << id << " goes to " << GetDlgCtrlID(hit);
    ScreenToClient(hit, &point);
    Mouse(hit, WM_LBUTTONDOWN, point.x, point.y, MK_LBUTTON);
    Mouse(hit, WM_LBUTTONUP, point.x, point.y, 0);
}

void DialogFixture::DoubleClick(int id) {
    Click(id);
    Mouse(Item(id), WM_LBUTTONDBLCLK, 3, 3, MK_LBUTTON);
    Mouse(Item(id), WM_LBUTTONUP, 3, 3, 0);
}

void DialogFixture::Drag(int id, POINT from, POINT to) {
    constexpr LONG steps = 4;
    const HWND control = Item(id);
    Mouse(control, WM_LBUTTONDOWN, from.x, from.y, MK_LBUTTON);
    for (LONG i = 1; i <= steps; ++i)
        Mouse(control, WM_MOUSEMOVE, from.x + (to.x - from.x) * i / steps,
              from.y + (to.y - from.y) * i / steps, MK_LBUTTON);
    Mouse(control, WM_LBUTTONUP, to.x, to.y, 0);
}

// To the pixel of that position; a trackbar may be narrower than its range.
void DialogFixture::DragTrackbar(int id, int position) {
    RECT thumb = {}, channel = {};
    Ask(id, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    Ask(id, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&channel));
    const auto minimum = static_cast<int>(Ask(id, TBM_GETRANGEMIN)),
               maximum = static_cast<int>(Ask(id, TBM_GETRANGEMAX));
    const LONG width = thumb.right - thumb.left, y = (thumb.top + thumb.bottom) / 2;
    const LONG first = channel.left + width / 2, last = channel.right - width / 2;
    Drag(id, {(thumb.left + thumb.right) / 2, y},
         {first + (last - first) * (position - minimum) / (maximum - minimum), y});
}

void DialogFixture::Key(WORD key, bool ctrl) {
    if (GetActiveWindow() != dialog)
        SetForegroundWindow(dialog); // another program's window may have come up
    const LPARAM scan = static_cast<LPARAM>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)) << 16 | 1;
    HoldKeyState(VK_CONTROL, ctrl);
    for (const bool up : {false, true}) {
        PostMessageW(GetFocus() ? GetFocus() : dialog, up ? WM_KEYUP : WM_KEYDOWN, key,
                     up ? scan | 0xC0000000 : scan);
        Pump();
    }
    HoldKeyState(VK_CONTROL, false);
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

void DialogFixture::Choose(int comboId, int row) {
    Ask(comboId, CB_SETCURSEL, static_cast<WPARAM>(row));
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(comboId, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(Item(comboId)));
    Pump();
}

void DialogFixture::Resize(int width, int height) {
    SetWindowPos(dialog, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Pump();
}
