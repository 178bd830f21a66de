// A session with the preview of a large photo, scripted: open, drag Length through 20 values, zoom, pan, hide
// a light, close. Prints the distribution of each time that a user feels.
//
//   preview_bench [--megapixels 24] [--lights 400] [--changes 5]
//
// The thread that plays the dialog takes its messages and paints what the task has invalidated, as the real
// one does; how long it was ever kept from doing so is its longest block.
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/RecordingDiag.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/window/DialogMessages.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kWidth = 900, kHeight = 600; // of the display, inside its border
constexpr double kPatience = 60000.0;          // milliseconds

double Since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

[[noreturn]] void Fail(const char *what) {
    fprintf(stderr, "preview_bench: %s\n", what);
    exit(1);
}

void Print(const char *what, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    const auto at = [&](double share) {
        return times[static_cast<size_t>(share * static_cast<double>(times.size() - 1) + 0.5)];
    };
    printf("%-40s %8.1f %8.1f %8.1f %8.1f %6zu\n", what, times.front(), at(0.5), at(0.9), times.back(),
           times.size());
    fflush(stdout);
}

// What a turn of the dialog's thread goes by with.
enum Part : int32_t { kSleeping, kAsking, kUpdateRect, kMessages, kPainting, kPartCount };
constexpr const char *kPartNames[kPartCount] = {"sleep", "request", "what is invalid", "messages",
                                                "painting"};

// The dialog's side: the view, and a bitmap in the place of the screen.
struct Session {
    PreviewRun run;
    PreviewGeometry view{};
    HDC screen = nullptr;
    size_t seen = 0; // messages looked at
    bool isFirstTileDone = false, isViewDone = false, isViewPainted = false;
    Clock::time_point lastTurn = Clock::now();
    double longestBlock = 0.0, longestWork = 0.0; // work: requests and painting, the preview's share of it
    double parts[kPartCount] = {}, longestParts[kPartCount] = {}; // of this turn and of the longest
    std::vector<double> paints;

    Session(int32_t width, int32_t height, int32_t lights) : run(width, height, lights) {}
};

void OpenScreen(Session *session) {
    SetWindowPos(session->run.display, nullptr, 0, 0, kWidth + 2, kHeight + 2, SWP_NOZORDER | SWP_SHOWWINDOW);
    const HDC window = GetDC(session->run.display);
    session->screen = CreateCompatibleDC(window);
    SelectObject(session->screen, CreateCompatibleBitmap(window, kWidth + 2, kHeight + 2));
    ReleaseDC(session->run.display, window);
}

template <typename Do> void Time(Session *session, Part part, Do act) {
    const Clock::time_point start = Clock::now();
    act();
    session->parts[part] += Since(start);
}

void EndTurn(Session *session) {
    const double block = Since(session->lastTurn);
    if (block > session->longestBlock) {
        session->longestBlock = block;
        std::copy_n(session->parts, kPartCount, session->longestParts);
    }
    session->longestWork =
        std::max(session->longestWork, session->parts[kAsking] + session->parts[kPainting]);
    std::fill_n(session->parts, kPartCount, 0.0);
    session->lastTurn = Clock::now();
}

void Paint(Session *session, const RECT &invalid) {
    ValidateRect(session->run.display, &invalid);
    const Clock::time_point start = Clock::now();
    PaintPreviewImage(session->screen, {invalid.left, invalid.top, invalid.right, invalid.bottom},
                      session->view);
    GdiFlush();
    session->paints.push_back(Since(start));
    session->isViewPainted = session->isViewDone;
}

// One turn of the dialog's message loop. A tile's message is posted before the tile is invalidated, so what
// is invalid before the messages are taken has had its message.
void TakeTurn(Session *session) {
    PreviewRun &run = session->run;
    RECT invalid;
    bool isInvalid = false;
    Time(session, kUpdateRect, [&] { isInvalid = GetUpdateRect(run.display, &invalid, FALSE); });
    Time(session, kMessages, [&] { run.TakeMessages(); });
    for (; session->seen < run.messages.size(); ++session->seen) {
        const SentMessage &message = run.messages[session->seen];
        if (message.message != kMsgProgress || !run.isTableReady)
            continue;
        session->isFirstTileDone |= message.wParam == 1;
        session->isViewDone |= message.wParam > 0 && message.wParam >= static_cast<WPARAM>(message.lParam);
    }
    if (isInvalid)
        Time(session, kPainting, [&] { Paint(session, invalid); });
    EndTurn(session);
}

template <typename Condition> double WaitUntil(Session *session, Clock::time_point start, Condition holds) {
    while (!holds()) {
        if (Since(start) > kPatience)
            Fail("the preview does not come");
        TakeTurn(session);
        Time(session, kSleeping, [] { Sleep(1); });
    }
    return Since(start);
}

double WaitForFirstTile(Session *session, Clock::time_point start) {
    return WaitUntil(session, start, [&] { return session->isFirstTileDone; });
}

double WaitForView(Session *session, Clock::time_point start) {
    return WaitUntil(session, start, [&] { return session->isViewPainted; });
}

// A request for the session's view; the start of its time.
Clock::time_point Ask(Session *session, int16_t length) {
    TakeTurn(session);
    session->isFirstTileDone = session->isViewDone = session->isViewPainted = false;
    const Clock::time_point start = Clock::now();
    Time(session, kAsking, [&] { RequestPreview(MakeDefaultRequest(session->view, length)); });
    return start;
}

void WaitForEnd(Session *session, int servedBefore) {
    const Clock::time_point start = Clock::now();
    WaitUntil(session, start, [&] { return session->run.served != servedBefore; });
}

double FittingZoom(const ImageBuffer &image) {
    return 100.0 * std::min(double(kWidth) / image.width, double(kHeight) / image.height);
}

void OpenFitted(Session *session) {
    session->view = session->run.View(FittingZoom(session->run.image), kWidth, kHeight);
    if (!session->run.Start())
        Fail("the task does not start");
    const Clock::time_point start = Ask(session, 50);
    Print("open: first tile", {WaitForFirstTile(session, start)});
    Print("open: whole view", {WaitForView(session, start)});
}

// Each value comes as soon as the first tile of the one before is there, the worst that a drag can do.
void DragLength(Session *session, const char *what) {
    std::vector<double> firstTiles;
    for (int16_t i = 0; i < 20; ++i)
        firstTiles.push_back(WaitForFirstTile(session, Ask(session, static_cast<int16_t>(30 + 2 * i))));
    Print(what, firstTiles);
}

void ChangeAndWait(Session *session, int changes) {
    std::vector<double> views;
    for (int i = 0; i < changes; ++i) {
        const int served = session->run.served;
        views.push_back(WaitForView(session, Ask(session, static_cast<int16_t>(50 + i))));
        WaitForEnd(session, served);
    }
    Print("fitted: whole view after a change", views);
}

void ZoomAndPan(Session *session) {
    session->view = session->run.View(100.0, kWidth, kHeight);
    const int served = session->run.served;
    Print("zoom to 100: whole view", {WaitForView(session, Ask(session, 50))});
    WaitForEnd(session, served);
    session->paints.clear();
    for (int i = 0; i < 30; ++i) {
        session->view.centerX += 14;
        session->view.centerY -= 8;
        InvalidateRect(session->run.display, nullptr, FALSE);
        Ask(session, 50);
        TakeTurn(session);
    }
    Print("100: repaint while panning", session->paints);
}

void HideLight(Session *session) {
    const LightSource light = GetLightSourceTable().records[0];
    ChangeEffectAt(light.X, light.Y, 100.0, kHideEffect);
    const int served = session->run.served;
    Print("100: hide a light, all done",
          {WaitUntil(session, Ask(session, 50), [&] { return session->run.served != served; })});
}

void PrintBlock(const Session &session, const char *what) {
    Print(what, {session.longestBlock});
    for (int32_t part = 0; part < kPartCount; ++part)
        printf("%s%s %.1f", part > 0 ? ", " : "  of it ", kPartNames[part], session.longestParts[part]);
    printf("\n");
}

// What the system alone keeps the dialog's thread waiting for: the same turns, as long, while another thread
// computes and no preview is there.
void IdleBesideBusyThread(Session *session, double milliseconds) {
    std::atomic<bool> isOver{false};
    std::thread busy([&] {
        while (!isOver)
            ;
    });
    session->longestBlock = 0.0;
    const Clock::time_point start = session->lastTurn = Clock::now();
    while (Since(start) < milliseconds) {
        TakeTurn(session);
        Time(session, kSleeping, [] { Sleep(1); });
    }
    isOver = true;
    busy.join();
}

void RunSession(int32_t megapixels, int32_t lights, int changes) {
    const auto width = static_cast<int32_t>(std::sqrt(megapixels * 1.5e6));
    Session session(width, width * 2 / 3, lights);
    if (!WaitLightSourceTable(nullptr, nullptr, 60000))
        Fail("no light sources");
    OpenScreen(&session);
    ResetPeakBufferBytes();
    const int64_t before = BufferBytesInUse();
    printf("%d x %d, %u light sources; milliseconds\n%-40s %8s %8s %8s %8s %6s\n", session.run.image.width,
           session.run.image.height, GetLightSourceTable().count, "", "least", "median", "90 %", "most", "n");
    const Clock::time_point opened = session.lastTurn = Clock::now();
    OpenFitted(&session);
    DragLength(&session, "fitted: first tile while dragging");
    ChangeAndWait(&session, changes);
    ZoomAndPan(&session);
    DragLength(&session, "100: first tile while dragging");
    HideLight(&session);
    Print("dialog's thread: longest own work", {session.longestWork});
    PrintBlock(session, "dialog's thread: longest block");
    const Clock::time_point start = Clock::now();
    StopProxyUpdateTask();
    Print("close", {Since(start)});
    IdleBesideBusyThread(&session, std::chrono::duration<double, std::milli>(start - opened).count());
    PrintBlock(session, "the same, no preview, a busy thread");
    printf("memory of the preview: at most %.0f MB for an image of %.0f MB\n",
           double(PeakBufferBytes() - before) / 1e6, double(session.run.image.pixelBytes) / 1e6);
}

} // namespace

int main(int argc, char **argv) {
    int megapixels = 24, lights = 400, changes = 5;
    for (int i = 1; i + 1 < argc; i += 2)
        if (!strcmp(argv[i], "--megapixels"))
            megapixels = atoi(argv[i + 1]);
        else if (!strcmp(argv[i], "--lights"))
            lights = atoi(argv[i + 1]);
        else if (!strcmp(argv[i], "--changes"))
            changes = atoi(argv[i + 1]);
        else
            Fail("usage: preview_bench [--megapixels 24] [--lights 400] [--changes 5]");
    if (megapixels < 1 || lights < 0 || changes < 1)
        Fail("numbers from 1 on");
    RunSession(megapixels, lights, changes);
    return 0;
}
