#include "tests/dialog/DialogFixture.h"

#include <atomic>
#include <chrono>
#include <commctrl.h>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <process.h>
#include <thread>

#include "ui/DialogMessages.h"

const ParameterPair kPairs[11] = {
    {1025, 1026, 0, 100, 50, 0, 'H', &ParameterSet::threshold},
    {1005, 1004, 0, 100, 50, 0, 'I', &ParameterSet::intensity},
    {1007, 1006, 0, 100, 50, 0, 'L', &ParameterSet::length},
    {1009, 1008, -900, 900, 150, 1, 'A', &ParameterSet::angle},
    {1011, 1010, 1, 32, 6, 0, 'N', &ParameterSet::numberOfPoints},
    {1022, 1024, 0, 100, 50, 0, 'S', &ParameterSet::spikeSharpness},
    {1013, 1012, -100, 100, 30, 0, 'C', &ParameterSet::colorSaturation},
    {1015, 1014, 0, 100, 50, 0, 'R', &ParameterSet::rainbowIntensity},
    {1017, 1016, 0, 100, 50, 0, 'F', &ParameterSet::rainbowFrequency},
    {1019, 1018, 0, 100, 15, 0, 'E', &ParameterSet::secondaryIntensity},
    {1021, 1020, 0, 100, 30, 0, 'Y', &ParameterSet::softFlareBrightness},
};

namespace {

constexpr auto kLongestRun = std::chrono::seconds(100);
constexpr unsigned kTableTaskStack = 8192; // which tells the task's thread from the others

// Ends the program when a run hangs: nobody else could.
class Watchdog {
public:
    Watchdog() : thread([this] { Watch(); }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(mutex);
            finished = true;
        }
        changed.notify_all();
        thread.join();
    }
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

private:
    void Watch() {
        std::unique_lock lock(mutex);
        if (changed.wait_for(lock, kLongestRun, [this] { return finished; }))
            return;
        std::fprintf(stderr, "a run with the dialog hangs\n");
        std::fflush(stderr);
        TerminateProcess(GetCurrentProcess(), 3);
    }
    std::mutex mutex;
    std::condition_variable changed;
    bool finished = false;
    std::thread thread;
};

// --- The table's task, held before it begins
// --------------------------------------------------------------------

HANDLE gTableGate;

struct HeldStart {
    unsigned(WINAPI *start)(void *);
    void *argument;
};

uintptr_t (*gBeginThread)(void *, unsigned, unsigned(WINAPI *)(void *), void *, unsigned, unsigned *);

unsigned WINAPI StartWhenReleased(void *argument) {
    auto *held = static_cast<HeldStart *>(argument);
    const HeldStart start = *held;
    delete held;
    WaitForSingleObject(gTableGate, 30000);
    return start.start(start.argument);
}

uintptr_t BeginThread(void *security, unsigned stack, unsigned(WINAPI *start)(void *), void *argument,
                      unsigned flags, unsigned *id) {
    if (stack != kTableTaskStack)
        return gBeginThread(security, stack, start, argument, flags, id);
    return gBeginThread(security, 0, StartWhenReleased, new HeldStart{start, argument}, flags, id);
}

void HoldKeyState(int key, bool down) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[key] = down ? 0x80 : 0;
    SetKeyboardState(keys);
}

LPARAM PointOf(int x, int y) {
    return MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y));
}

} // namespace

// --- Opening
// ------------------------------------------------------------------------------------------------

// The system calls back without a context, and one dialog is open at a time.
struct DialogRunner {
    static inline DialogFixture *current;
    static inline DLGPROC procedure;
    static inline INT_PTR(WINAPI *openOtherA)(HINSTANCE, LPCSTR, HWND, DLGPROC, LPARAM);
    static inline INT_PTR(WINAPI *openOtherW)(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM);

    static void Note(UINT message, LPARAM lParam) {
        ++current->seen[message];
        if (message == kMsgRequestPreview)
            current->previewIdle = false;
        else if (message == kMsgTableReady)
            current->tableReady = true;
        else if (message == kMsgProgress && current->tableReady)
            current->previewIdle = lParam == 0;
    }

    static INT_PTR CALLBACK Watch(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG)
            current->dialog = window;
        Note(message, lParam);
        const INT_PTR result = procedure(window, message, wParam, lParam);
        if (current->afterMessage)
            current->afterMessage(message);
        if (message == WM_INITDIALOG && current->onInit)
            current->onInit();
        // The screen that tests run on is small.
        if (message == WM_GETMINMAXINFO)
            reinterpret_cast<MINMAXINFO *>(lParam)->ptMaxTrackSize = {8000, 8000};
        return result;
    }

    // The modal loop shows the dialog when nothing else waits.
    static void CALLBACK RunScript(HWND, UINT, UINT_PTR timer, DWORD) {
        DialogFixture &fixture = *current;
        if (!fixture.dialog || !IsWindowVisible(fixture.dialog))
            return;
        KillTimer(nullptr, timer);
        if (fixture.scriptRan)
            return;
        fixture.scriptRan = true;
        UpdateWindow(fixture.dialog);
        fixture.script();
        if (!IsWindowVisible(fixture.dialog))
            return;
        ADD_FAILURE() << "the script left the dialog open";
        fixture.ReleaseTable();
        EndDialog(fixture.dialog, -7);
    }

    template <typename Name, typename Open>
    static INT_PTR OpenMain(Open *open, HINSTANCE module, Name name, HWND owner, DLGPROC main,
                            LPARAM parameter) {
        ++current->dialogsOpened;
        EXPECT_TRUE(current->script) << "nobody asked for the dialog";
        EXPECT_EQ(owner, current->hostWindow);
        if (!current->script || gAnswers.refuseDialog)
            return -1;
        procedure = main;
        SetTimer(nullptr, 0, 10, RunScript);
        current->dialogResult = open(module, name, owner, Watch, parameter);
        current->dialog = nullptr;
        return current->dialogResult;
    }

    static INT_PTR WINAPI OpenA(HINSTANCE module, LPCSTR name, HWND owner, DLGPROC main, LPARAM parameter) {
        if (IS_INTRESOURCE(name) || strcmp(name, "BRILLATRIXDIALOG_ADVANCED") != 0)
            return openOtherA(module, name, owner, main, parameter);
        return OpenMain(DialogBoxParamA, module, name, owner, main, parameter);
    }

    static INT_PTR WINAPI OpenW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC main, LPARAM parameter) {
        if (IS_INTRESOURCE(name) || wcscmp(name, L"BRILLATRIXDIALOG_ADVANCED") != 0)
            return openOtherW(module, name, owner, main, parameter);
        return OpenMain(DialogBoxParamW, module, name, owner, main, parameter);
    }
};

void DialogFixture::SetUp() {
    ASSERT_NO_FATAL_FAILURE(ModuleFixture::SetUp());
    CountSystemObjects(module.module, &hooks);
    AnswerForSystem(module.module, &hooks);
    DialogRunner::current = this;
    DialogRunner::openOtherA =
        host::ReplaceImport(module.module, nullptr, "DialogBoxParamA", DialogRunner::OpenA, &hooks);
    DialogRunner::openOtherW =
        host::ReplaceImport(module.module, nullptr, "DialogBoxParamW", DialogRunner::OpenW, &hooks);
    gTableGate = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    gBeginThread = host::ReplaceImport(module.module, nullptr, "_beginthreadex", BeginThread, &hooks);
    hostWindow = CreateWindowA("STATIC", "Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 500, 400, nullptr,
                               nullptr, nullptr, nullptr);
    filterHost.settings.window = hostWindow;
    filterHost.document = MakeNight({.width = 240, .height = 180});
}

void DialogFixture::TearDown() {
    DestroyWindow(hostWindow);
    host::RestoreImports(&hooks);
    CloseHandle(gTableGate);
    ModuleFixture::TearDown();
}

host::RunResult DialogFixture::RunDialog(const Script &wanted, bool withParameters) {
    const Watchdog watchdog;
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

// --- Reading
// ------------------------------------------------------------------------------------------------

std::wstring DialogFixture::Text(int id) const {
    wchar_t text[200] = L"";
    GetDlgItemTextW(dialog, id, text, 200);
    return text;
}

bool DialogFixture::IsChecked(int id) const {
    return IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

int DialogFixture::Selected(int comboId) const {
    return static_cast<int>(SendDlgItemMessageW(dialog, comboId, CB_GETCURSEL, 0, 0));
}

int DialogFixture::Position(int trackbarId) const {
    return static_cast<int>(SendDlgItemMessageW(dialog, trackbarId, TBM_GETPOS, 0, 0));
}

RECT DialogFixture::Place(int id) const {
    RECT place = {};
    GetWindowRect(Item(id), &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
    return place;
}

int DialogFixture::Seen(UINT message) const {
    const auto found = seen.find(message);
    return found == seen.end() ? 0 : found->second;
}

std::string DialogFixture::UserFolder(const char *name) const {
    return folder / (std::string("user\\Nexorvanta\\Brillatrix\\") + name);
}

std::string DialogFixture::UISettingsFile() const {
    return UserFolder("Settings") + "\\UISettings.bin";
}

// --- Doing
// --------------------------------------------------------------------------------------------------

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
    int requests = Seen(kMsgRequestPreview), progress = Seen(kMsgProgress);
    WaitFor("the end of the preview", [&] {
        if (!previewIdle || requests != Seen(kMsgRequestPreview) || progress != Seen(kMsgProgress)) {
            requests = Seen(kMsgRequestPreview);
            progress = Seen(kMsgProgress);
            last = GetTickCount();
        }
        return GetTickCount() - last >= quiet;
    });
}

HWND DialogFixture::ControlAt(POINT client) const {
    POINT screen = client;
    ClientToScreen(dialog, &screen);
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT place;
        GetWindowRect(child, &place);
        if (PtInRect(&place, screen) && IsWindowVisible(child) && IsWindowEnabled(child) &&
            SendMessageW(child, WM_NCHITTEST, 0, PointOf(screen.x, screen.y)) != HTTRANSPARENT)
            return child;
    }
    return dialog;
}

void DialogFixture::Mouse(HWND window, UINT message, int x, int y, WPARAM keys) {
    PostMessageW(window, message, keys, PointOf(x, y));
    Pump();
}

void DialogFixture::Click(int id) {
    const RECT place = Place(id);
    const POINT centre = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    const HWND hit = ControlAt(centre);
    EXPECT_EQ(hit, Item(id)) << "a click on " << id << " goes to " << GetDlgCtrlID(hit);
    POINT point = centre;
    MapWindowPoints(dialog, hit, &point, 1);
    Mouse(hit, WM_LBUTTONDOWN, point.x, point.y, MK_LBUTTON);
    Mouse(hit, WM_LBUTTONUP, point.x, point.y, 0);
}

void DialogFixture::DoubleClick(int id) {
    Click(id);
    const HWND control = Item(id);
    Mouse(control, WM_LBUTTONDBLCLK, 3, 3, MK_LBUTTON);
    Mouse(control, WM_LBUTTONUP, 3, 3, 0);
}

void DialogFixture::Drag(int id, POINT from, POINT to) {
    constexpr int steps = 4;
    const HWND control = Item(id);
    Mouse(control, WM_LBUTTONDOWN, from.x, from.y, MK_LBUTTON);
    for (int i = 1; i <= steps; ++i)
        Mouse(control, WM_MOUSEMOVE, from.x + (to.x - from.x) * i / steps,
              from.y + (to.y - from.y) * i / steps, MK_LBUTTON);
    Mouse(control, WM_LBUTTONUP, to.x, to.y, 0);
}

// To the pixel of that position; a trackbar may be narrower than its range.
void DialogFixture::DragTrackbar(int id, int position) {
    RECT thumb = {}, channel = {};
    SendDlgItemMessageW(dialog, id, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    SendDlgItemMessageW(dialog, id, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&channel));
    const auto minimum = static_cast<int>(SendDlgItemMessageW(dialog, id, TBM_GETRANGEMIN, 0, 0));
    const auto maximum = static_cast<int>(SendDlgItemMessageW(dialog, id, TBM_GETRANGEMAX, 0, 0));
    const LONG width = thumb.right - thumb.left, y = (thumb.top + thumb.bottom) / 2;
    const LONG first = channel.left + width / 2, last = channel.right - width / 2;
    Drag(id, {(thumb.left + thumb.right) / 2, y},
         {first + (last - first) * (position - minimum) / (maximum - minimum), y});
}

void DialogFixture::Key(WORD key, bool ctrl) {
    if (GetActiveWindow() != dialog)
        SetForegroundWindow(dialog); // another program's window may have come up
    HWND focus = GetFocus();
    const LPARAM scan = static_cast<LPARAM>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)) << 16 | 1;
    HoldKeyState(VK_CONTROL, ctrl);
    PostMessageW(focus ? focus : dialog, WM_KEYDOWN, key, scan);
    Pump();
    focus = GetFocus();
    PostMessageW(focus ? focus : dialog, WM_KEYUP, key, scan | 0xC0000000);
    Pump();
    HoldKeyState(VK_CONTROL, false);
}

void DialogFixture::Character(wchar_t character) {
    PostMessageW(GetFocus(), WM_CHAR, character, 1);
    Pump();
}

void DialogFixture::Type(int editId, const std::string &text) {
    SetFocus(Item(editId));
    SendDlgItemMessageW(dialog, editId, EM_SETSEL, 0, -1);
    for (const char character : text)
        Character(static_cast<wchar_t>(character));
    Pump();
}

void DialogFixture::Choose(int comboId, int row) {
    SendDlgItemMessageW(dialog, comboId, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(comboId, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(Item(comboId)));
    Pump();
}

void DialogFixture::Resize(int width, int height) {
    SetWindowPos(dialog, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Pump();
}

ParameterSet SomeParameters() {
    ParameterSet set = kDefaultParameters;
    set.intensity = 70;
    set.length = 64;
    set.angle = -225;
    set.numberOfPoints = 5;
    set.threshold = 80;
    set.softFlareBrightness = 45;
    set.effectType = kDefaultParameters.effectType + 2;
    return set;
}
