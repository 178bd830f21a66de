// Real drags of a slider: a mouse move every few milliseconds, seen from outside. Before the drag the exact
// view of each value that the slider passes is rendered at rest, and drafts of every quality with the task's
// own means. So it is known which value a frame shows, how old it is, and whether it is torn, samples of it
// showing one value and others another.
//
//   drag_bench [--megapixels 24] [--lights 400] [--every 8] [--seconds 3] [--zoom 0] [--slider -1] [--strip
//   FILE] [--tears 0|1] [--views 0|1]
//
// A zoom of 0 fits the image into the view, slider -1 is each of the eleven in turn. --strip writes eight
// frames from the middle of the drag, one below the other, as FILE (PPM). --tears 1 tears the frames seen and
// says how many of the tears are counted. --views 1 pans and zooms instead: the longest repaint and request,
// and how long after the last event something on the screen was not yet as it stays.
#include "bench/DragFrames.h"
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/table/LightSourceTable.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/RecordingDiag.h"
#include "ui/pixels/PreviewDrawing.h"
#include "ui/preview/PreviewDraft.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/PreviewProxies.h"
#include "ui/preview/PreviewTiles.h"
#include "ui/preview/ProxyUpdateTask.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kValues = 7;                         // of a slider
constexpr double kPatience = 120000.0, kRest = 1000.0; // milliseconds

// From one end of what people use to the other.
const struct {
    const char *name;
    int16_t low, high;
} kSliders[kParameterCount] = {
    {"Threshold", 30, 90}, {"Intensity", 40, 100}, {"Length", 20, 80},      {"Angle", -300, 300},
    {"Points", 3, 15},     {"Sharpness", 20, 80},  {"Saturation", -60, 60}, {"Rainbow", 0, 90},
    {"Frequency", 10, 90}, {"Secondary", 0, 60},   {"Soft flare", 10, 100},
};

struct Move {
    double time;
    int32_t value;
};

// The dialog's side.
struct Session {
    PreviewRun run;
    PreviewGeometry view{};
    HDC screen = nullptr;
    uint32_t *pixels = nullptr;
    Clock::time_point start = Clock::now();
    double longestPaint = 0.0, longestRequest = 0.0;
    bool keepsWhole = false;
    std::vector<Frame> frames;

    Session(int32_t width, int32_t height, int32_t lights) : run(width, height, lights) {}
    double Now() const { return std::chrono::duration<double, std::milli>(Clock::now() - start).count(); }
};

void OpenScreen(Session *session) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, kScreenWidth, -kScreenHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    SetWindowPos(session->run.display, nullptr, 0, 0, kScreenWidth, kScreenHeight,
                 SWP_NOZORDER | SWP_SHOWWINDOW);
    session->screen = CreateCompatibleDC(nullptr);
    SelectObject(session->screen,
                 CreateDIBSection(session->screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    session->pixels = static_cast<uint32_t *>(bits);
}

void KeepFrame(Session *session) {
    Frame frame{session->Now(), TakeSamples(session->pixels), {}};
    if (session->keepsWhole)
        frame.whole.assign(session->pixels, session->pixels + kScreenWidth * kScreenHeight);
    session->frames.push_back(std::move(frame));
}

// One turn of the dialog's message loop.
void TakeTurn(Session *session) {
    RECT invalid;
    const bool isInvalid = GetUpdateRect(session->run.display, &invalid, FALSE);
    if (isInvalid) // and not all of it: more may have become invalid since
        ValidateRect(session->run.display, &invalid);
    session->run.TakeMessages();
    if (!isInvalid)
        return;
    const double start = session->Now();
    PaintPreviewImage(session->screen, {invalid.left, invalid.top, invalid.right, invalid.bottom},
                      session->view);
    GdiFlush();
    session->longestPaint = std::max(session->longestPaint, session->Now() - start);
    KeepFrame(session);
}

PreviewRequest RequestOf(const Session &session, int32_t slider, int32_t value) {
    PreviewRequest request = MakeDefaultRequest(session.view, 50);
    const auto &range = kSliders[slider];
    request.parameters[slider] =
        static_cast<uint16_t>(range.low + (range.high - range.low) * value / (kValues - 1));
    return request;
}

void Ask(Session *session, const PreviewRequest &request) {
    const double start = session->Now();
    RequestPreview(request);
    session->longestRequest = std::max(session->longestRequest, session->Now() - start);
}

// False when the time is over first.
template <typename Condition> bool TakeTurnsUntil(Session *session, double patience, Condition holds) {
    const double start = session->Now();
    while (!holds()) {
        if (session->Now() - start > patience)
            return false;
        TakeTurn(session);
        Sleep(1);
    }
    return true;
}

bool IsViewExact(const PreviewRequest &request) {
    if (!LockPreview())
        return false;
    const IntRect visible = VisibleImage(request);
    const HRGN region = CreateRectRgn(visible.left, visible.top, visible.right, visible.bottom);
    const bool isExact = gProxies.hasEffect && SameEffect(gProxies.effectOf, request) &&
                         SameView(gProxies.previous, request) && RegionHolds(gProxies.FreshRegion, region);
    DeleteObject(region);
    UnlockPreview();
    return isExact;
}

// Until the view is exact, and what is around it too unless that takes long.
void WaitForRest(Session *session, const PreviewRequest &request) {
    TakeTurnsUntil(session, kPatience, [&] { return IsViewExact(request); });
    TakeTurnsUntil(session, kRest, [] { return !IsPreviewInWork(); });
    TakeTurnsUntil(session, 20.0, [] { return false; });
}

Samples ExactView(Session *session) {
    PaintPreviewImage(session->screen, {0, 0, kScreenWidth, kScreenHeight}, session->view);
    GdiFlush();
    return TakeSamples(session->pixels);
}

// The exact view of each value, and how long the first changed pixel took to come from rest.
std::vector<Pictures> LearnValues(Session *session, int32_t slider, std::vector<double> *firstChanges) {
    std::vector<Pictures> values;
    for (int32_t value = 0; value < kValues; ++value) {
        const Samples before = ExactView(session);
        const PreviewRequest request = RequestOf(*session, slider, value);
        session->frames.clear();
        const double start = session->Now();
        Ask(session, request);
        WaitForRest(session, request);
        for (const Frame &frame : session->frames)
            if (frame.samples != before) {
                firstChanges->push_back(frame.time - start);
                break;
            }
        values.push_back({ExactView(session), {}});
    }
    return values;
}

Samples DraftView(Session *session, const PreviewRequest &request, int32_t quality) {
    static const std::atomic<uint8_t> goOn{0};
    gProxies.draftQuality = quality;
    if (!MakeDraft(request, goOn)) {
        fprintf(stderr, "drag_bench: no draft\n");
        exit(1);
    }
    const IntRect behind = VisibleRect(session->view), visible = VisibleImage(request);
    const int64_t row = visible.top - behind.top + session->view.display.top,
                  column = visible.left - behind.left + session->view.display.left;
    DrawStore(gProxies.draft, session->run.image, true, request.zoom, visible,
              session->pixels + row * kScreenWidth + column, kScreenWidth);
    return TakeSamples(session->pixels);
}

// Drafts of each value. The task shows the photograph, and waits.
void LearnDrafts(Session *session, int32_t slider, std::vector<Pictures> *values) {
    const int32_t quality = gProxies.draftQuality;
    PreviewRequest photograph = RequestOf(*session, slider, 0);
    photograph.previewOn = 0;
    Ask(session, photograph);
    TakeTurnsUntil(session, kPatience, [] { return !IsPreviewInWork(); });
    TakeTurnsUntil(session, 20.0, [] { return false; });
    for (int32_t value = 0; value < kValues; ++value)
        for (int32_t draft = 0; draft <= kCoarsestDraft; ++draft)
            (*values)[static_cast<size_t>(value)].drafts.push_back(
                DraftView(session, RequestOf(*session, slider, value), draft));
    DropDraft();
    gProxies.draftQuality = quality;
    const PreviewRequest request = RequestOf(*session, slider, 0);
    Ask(session, request);
    WaitForRest(session, request);
}

std::vector<Move> Drag(Session *session, int32_t slider, int32_t every, double seconds) {
    std::vector<Move> moves;
    const double start = session->Now();
    for (int32_t i = 1; session->Now() - start < seconds * 1000.0; ++i) {
        while (session->Now() - start < double(i) * every) {
            TakeTurn(session);
            Sleep(1);
        }
        // To and fro, 4 moves to a value, as a hand does it.
        const int32_t phase = i / 4 % (2 * kValues - 2);
        moves.push_back({session->Now(), phase < kValues ? phase : 2 * kValues - 2 - phase});
        Ask(session, RequestOf(*session, slider, moves.back().value));
        TakeTurn(session);
    }
    return moves;
}

// Time from which on every frame showed what it shows at the end; -1: the last one does not.
double SettledAt(const std::vector<Frame> &frames, const Samples &last) {
    double time = -1.0;
    for (size_t i = frames.size(); i-- > 0 && frames[i].samples == last;)
        time = frames[i].time;
    return time;
}

struct Play {
    int32_t every;
    double seconds;
    const char *strip;
    bool plantsTears;
};

void PlaySlider(Session *session, int32_t slider, const Play &play) {
    std::vector<double> firstChanges, ages;
    std::vector<Pictures> values = LearnValues(session, slider, &firstChanges);
    LearnDrafts(session, slider, &values);
    session->longestPaint = session->longestRequest = 0.0;
    session->frames.clear();
    session->keepsWhole = play.strip != nullptr;
    const std::vector<Move> moves = Drag(session, slider, play.every, play.seconds);
    const size_t dragged = session->frames.size();
    session->keepsWhole = false;
    WaitForRest(session, RequestOf(*session, slider, moves.back().value));
    int32_t whole = 0, torn = 0, mixed = 0;
    for (size_t i = 0; i < dragged; ++i) {
        const Seen seen = LookAt(values, session->frames[i].samples);
        ++(seen.isTorn ? torn : seen.isMixed ? mixed : whole);
        for (auto move = moves.rbegin(); move != moves.rend(); ++move)
            if (move->time <= session->frames[i].time && move->value == seen.value) {
                ages.push_back(session->frames[i].time - move->time);
                break;
            }
    }
    const Samples &last = values[static_cast<size_t>(moves.back().value)].exact;
    const double settled = SettledAt(session->frames, last);
    const double atRest = settled < 0.0 ? -1.0 : std::max(settled - moves.back().time, 0.0);
    printf("%-11s %6.1f %6.1f %6.1f %8.0f %8.0f %8.0f %8.0f %8.0f %8.1f %8.1f\n", kSliders[slider].name,
           whole / play.seconds, mixed / play.seconds, torn / play.seconds, At(firstChanges, 0.5),
           At(firstChanges, 1.0), At(ages, 0.5), At(ages, 1.0), atRest, session->longestPaint,
           session->longestRequest);
    session->frames.resize(dragged);
    if (play.plantsTears) {
        const Tears tears = PlantTears(values, session->frames);
        printf("%-11s %d tears planted, %d counted\n", "", tears.planted, tears.counted);
    }
    fflush(stdout);
    if (play.strip)
        WriteStrip(session->frames, play.strip);
}

// To and fro between two views, or towards one end and back; `viewAt` has a share of the way.
template <typename ViewAt>
void PlayViews(Session *session, const char *name, int32_t every, double seconds, ViewAt viewAt) {
    session->longestPaint = session->longestRequest = 0.0;
    session->frames.clear();
    const double start = session->Now();
    double last = start;
    for (int32_t i = 0; session->Now() - start < seconds * 1000.0; ++i) {
        session->view = viewAt(0.5 - 0.5 * std::cos(i * 0.02));
        last = session->Now();
        Ask(session, RequestOf(*session, kLength, 3));
        InvalidateRect(session->run.display, nullptr, FALSE);
        TakeTurn(session);
        while (session->Now() < start + double(i + 1) * every)
            Sleep(1);
    }
    WaitForRest(session, RequestOf(*session, kLength, 3));
    printf("%-11s %8.1f %8.1f %8.0f %8zu\n", name, session->longestPaint, session->longestRequest,
           SettledAt(session->frames, ExactView(session)) - last, session->frames.size());
    fflush(stdout);
}

void PlayAllViews(Session *session, double zoom, int32_t every, double seconds) {
    const auto view = [session](double at) { return session->run.View(at, kWidth, kHeight); };
    printf("%-11s %8s %8s %8s %8s\n", "", "paint", "request", "stale", "frames");
    PlayViews(session, "pan", every, seconds, [&](double share) {
        PreviewGeometry at = view(100.0);
        at.centerX += static_cast<int32_t>(share * 1500);
        at.centerY += static_cast<int32_t>(share * 900);
        return at;
    });
    PlayViews(session, "zoom", every, seconds,
              [&](double share) { return view(zoom * std::pow(100.0 / zoom, share)); });
}

} // namespace

int main(int argc, char **argv) {
    int megapixels = 24, lights = 400, slider = -1;
    double zoom = 0.0;
    Play play{8, 3.0, nullptr, false};
    bool playsViews = false;
    for (int i = 1; i + 1 < argc; i += 2) {
        const auto is = [&](const char *name) { return !strcmp(argv[i], name); };
        const int number = atoi(argv[i + 1]);
        if (is("--megapixels"))
            megapixels = std::max(number, 1);
        else if (is("--lights"))
            lights = std::max(number, 0);
        else if (is("--every"))
            play.every = std::max(number, 1);
        else if (is("--slider"))
            slider = std::clamp<int>(number, -1, kParameterCount - 1);
        else if (is("--zoom"))
            zoom = number;
        else if (is("--seconds"))
            play.seconds = std::max(number, 1);
        else if (is("--views"))
            playsViews = number != 0;
        else if (is("--tears"))
            play.plantsTears = number != 0;
        else if (is("--strip"))
            play.strip = argv[i + 1];
    }
    const auto width = static_cast<int32_t>(std::sqrt(megapixels * 1.5e6));
    Session session(width, width * 2 / 3, lights);
    if (!WaitLightSourceTable(nullptr, nullptr, 60000))
        return 1;
    OpenScreen(&session);
    const ImageBuffer &image = session.run.image;
    if (zoom <= 0.0)
        zoom = 100.0 * std::min(double(kWidth) / image.width, double(kHeight) / image.height);
    session.view = session.run.View(zoom, kWidth, kHeight);
    ResetPeakBufferBytes();
    const int64_t before = BufferBytesInUse();
    if (!session.run.Start())
        return 1;
    const double opened = session.Now();
    const PreviewRequest first = RequestOf(session, kLength, 3);
    Ask(&session, first);
    WaitForRest(&session, first);
    printf("opening: first frame %.0f ms, whole %.0f ms, longest repaint %.1f ms\n",
           session.frames.empty() ? -1.0 : session.frames.front().time - opened,
           SettledAt(session.frames, ExactView(&session)) - opened, session.longestPaint);
    if (playsViews)
        PlayAllViews(&session, zoom, play.every, play.seconds);
    else
        printf("%d x %d, %u light sources, zoom %.2f %%, a move every %d ms; frames a second, "
               "milliseconds\n%-11s %6s %6s %6s "
               "%8s %8s %8s %8s %8s %8s %8s\n",
               image.width, image.height, GetLightSourceTable().count, zoom, play.every, "", "whole", "mixed",
               "torn", "first", "worst", "age", "oldest", "at rest", "paint", "request");
    for (int32_t i = 0; i < kParameterCount && !playsViews; ++i)
        if (slider < 0 || slider == i)
            PlaySlider(&session, i, play);
    StopProxyUpdateTask();
    printf("memory of the preview: at most %.0f MB for an image of %.0f MB\n",
           double(PeakBufferBytes() - before) / 1e6, double(image.pixelBytes) / 1e6);
    return 0;
}
