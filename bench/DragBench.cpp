// Real drags of a slider: a mouse move every few milliseconds, seen from outside. What the screen shows is
// compared with the exact picture of each value that the slider passes: so it is known which value a frame
// shows, how old it is, and whether it is torn, parts of it showing one value and parts another.
//
//   drag_bench [--megapixels 24] [--lights 400] [--every 8] [--seconds 3] [--zoom 0] [--slider -1] [--strip
//   FILE] [--views 0|1]
//
// A zoom of 0 fits the image into the view, slider -1 is each of the eleven in turn. --views 1 pans and zooms
// instead: the longest repaint and request, and how long after the last event something on the screen was not
// yet as it stays. --strip writes eight
// frames from the middle of the drag, one below the other, as FILE (PPM).
#include "diag/BufferUsage.h"
#include "engine/InitializationTask.h"
#include "engine/table/LightSourceTable.h"
#include "tests/preview/PreviewRun.h"
#include "tests/support/RecordingDiag.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/ProxyUpdateTask.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kWidth = 900, kHeight = 600; // of the display, inside its border
constexpr int32_t kStep = 3;                   // every third pixel and row is looked at
constexpr int32_t kColumns = 10, kRows = 8;    // cells of a frame
constexpr int32_t kValues = 7;                 // of a slider
constexpr size_t kStripFrames = 8;
constexpr double kPatience = 120000.0; // milliseconds

// From one end of what people use to the other.
const struct {
    const char *name;
    int16_t low, high;
} kSliders[kParameterCount] = {
    {"Threshold", 30, 90}, {"Intensity", 40, 100}, {"Length", 20, 80},      {"Angle", -300, 300},
    {"Points", 3, 15},     {"Sharpness", 20, 80},  {"Saturation", -60, 60}, {"Rainbow", 0, 90},
    {"Frequency", 10, 90}, {"Secondary", 0, 60},   {"Soft flare", 10, 100},
};

using Samples = std::vector<uint32_t>;
struct Frame {
    double time;
    Samples samples;
    std::vector<uint32_t> whole; // only for the strip
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
    info.bmiHeader = {sizeof info.bmiHeader, kWidth + 2, -(kHeight + 2), 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    SetWindowPos(session->run.display, nullptr, 0, 0, kWidth + 2, kHeight + 2, SWP_NOZORDER | SWP_SHOWWINDOW);
    session->screen = CreateCompatibleDC(nullptr);
    SelectObject(session->screen,
                 CreateDIBSection(session->screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    session->pixels = static_cast<uint32_t *>(bits);
}

void KeepFrame(Session *session) {
    Frame frame{session->Now(), {}, {}};
    for (int32_t y = 1; y <= kHeight; y += kStep)
        for (int32_t x = 1; x <= kWidth; x += kStep)
            frame.samples.push_back(session->pixels[y * (kWidth + 2) + x] & 0xFFFFFF);
    if (session->keepsWhole)
        frame.whole.assign(session->pixels, session->pixels + (kWidth + 2) * (kHeight + 2));
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

void Ask(Session *session, int32_t slider, int32_t value) {
    PreviewRequest request = MakeDefaultRequest(session->view, 50);
    const auto &range = kSliders[slider];
    request.parameters[slider] =
        static_cast<uint16_t>(range.low + (range.high - range.low) * value / (kValues - 1));
    const double start = session->Now();
    RequestPreview(request);
    session->longestRequest = std::max(session->longestRequest, session->Now() - start);
}

void WaitForEnd(Session *session) {
    const int served = session->run.served;
    const double start = session->Now();
    while (session->run.served == served && session->Now() - start < kPatience) {
        TakeTurn(session);
        Sleep(1);
    }
    for (int i = 0; i < 20; ++i, Sleep(1))
        TakeTurn(session);
}

Samples ExactView(Session *session) {
    PaintPreviewImage(session->screen, {0, 0, kWidth + 2, kHeight + 2}, session->view);
    GdiFlush();
    KeepFrame(session);
    Samples samples = session->frames.back().samples;
    session->frames.pop_back();
    return samples;
}

// Mean difference of a cell's samples, in levels.
double CellDistance(const Samples &a, const Samples &b, int32_t cell) {
    constexpr int32_t width = (kWidth + kStep - 1) / kStep, height = (kHeight + kStep - 1) / kStep;
    const int32_t column = cell % kColumns, row = cell / kColumns;
    int64_t sum = 0, count = 0;
    for (int32_t y = row * height / kRows; y < (row + 1) * height / kRows; ++y)
        for (int32_t x = column * width / kColumns; x < (column + 1) * width / kColumns; ++x)
            for (int shift = 0; shift < 24; shift += 8, ++count)
                sum += std::abs(static_cast<int>(a[static_cast<size_t>(y * width + x)] >> shift & 255) -
                                static_cast<int>(b[static_cast<size_t>(y * width + x)] >> shift & 255));
    return double(sum) / double(count);
}

// The value whose exact picture a cell shows; -1 where the pictures do not tell.
int32_t ValueOfCell(const std::vector<Samples> &exact, const Samples &frame, int32_t cell) {
    constexpr double kTelling = 2.0, kClear = 0.6;
    double least = 1e9, second = 1e9;
    int32_t value = -1;
    for (int32_t k = 0; k < kValues; ++k) {
        const double distance = CellDistance(exact[static_cast<size_t>(k)], frame, cell);
        if (distance < least) {
            second = std::exchange(least, distance);
            value = k;
        } else {
            second = std::min(second, distance);
        }
    }
    return second >= kTelling && least < kClear * second ? value : -1;
}

struct Seen {
    int32_t value; // that most cells show; -1: nobody can tell
    bool isTorn;
};
Seen LookAt(const std::vector<Samples> &exact, const Samples &frame) {
    int32_t votes[kValues] = {};
    for (int32_t cell = 0; cell < kColumns * kRows; ++cell)
        if (const int32_t value = ValueOfCell(exact, frame, cell); value >= 0)
            ++votes[value];
    const auto most = std::max_element(votes, votes + kValues);
    const int32_t different =
        static_cast<int32_t>(std::count_if(votes, votes + kValues, [](int v) { return v > 0; }));
    return {*most > 0 ? static_cast<int32_t>(most - votes) : -1, different > 1};
}

double At(std::vector<double> times, double share) {
    if (times.empty())
        return -1.0;
    std::sort(times.begin(), times.end());
    return times[static_cast<size_t>(share * static_cast<double>(times.size() - 1) + 0.5)];
}

void WriteStrip(const std::vector<Frame> &frames, const char *path) {
    const size_t count = std::min(frames.size(), kStripFrames), first = (frames.size() - count) / 2;
    FILE *file = fopen(path, "wb");
    if (!file)
        return;
    fprintf(file, "P6 %d %d 255\n", kWidth, kHeight * static_cast<int>(count));
    for (size_t i = first; i < first + count; ++i)
        for (int32_t y = 1; y <= kHeight; ++y)
            for (int32_t x = 1; x <= kWidth; ++x)
                for (int shift = 16; shift >= 0; shift -= 8)
                    fputc(static_cast<int>(
                              frames[i].whole[static_cast<size_t>(y * (kWidth + 2) + x)] >> shift & 255),
                          file);
    fclose(file);
}

// The exact view of each value, and how long the first changed pixel took to come from rest.
std::vector<Samples> LearnValues(Session *session, int32_t slider, std::vector<double> *firstChanges) {
    std::vector<Samples> exact;
    for (int32_t value = 0; value < kValues; ++value) {
        const Samples before = ExactView(session);
        session->frames.clear();
        const double start = session->Now();
        Ask(session, slider, value);
        WaitForEnd(session);
        for (const Frame &frame : session->frames)
            if (frame.samples != before) {
                firstChanges->push_back(frame.time - start);
                break;
            }
        exact.push_back(ExactView(session));
    }
    return exact;
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
        Ask(session, slider, moves.back().value);
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

void PlaySlider(Session *session, int32_t slider, int32_t every, double seconds, const char *strip) {
    std::vector<double> firstChanges, ages;
    const std::vector<Samples> exact = LearnValues(session, slider, &firstChanges);
    session->longestPaint = session->longestRequest = 0.0;
    session->frames.clear();
    session->keepsWhole = strip != nullptr;
    const std::vector<Move> moves = Drag(session, slider, every, seconds);
    const size_t dragged = session->frames.size();
    session->keepsWhole = false;
    WaitForEnd(session);
    int32_t whole = 0, torn = 0;
    for (size_t i = 0; i < dragged; ++i) {
        const Seen seen = LookAt(exact, session->frames[i].samples);
        ++(seen.isTorn ? torn : whole);
        for (auto move = moves.rbegin(); move != moves.rend(); ++move)
            if (move->time <= session->frames[i].time && move->value == seen.value) {
                ages.push_back(session->frames[i].time - move->time);
                break;
            }
    }
    const Samples &last = exact[static_cast<size_t>(moves.back().value)];
    const double settled = SettledAt(session->frames, last);
    const double atRest = settled < 0.0 ? -1.0 : settled - moves.back().time;
    printf("%-11s %6.1f %6.1f %8.0f %8.0f %8.0f %8.0f %8.0f %8.1f %8.1f\n", kSliders[slider].name,
           whole / seconds, torn / seconds, At(firstChanges, 0.5), At(firstChanges, 1.0), At(ages, 0.5),
           At(ages, 1.0), atRest, session->longestPaint, session->longestRequest);
    fflush(stdout);
    if (strip) {
        session->frames.resize(dragged);
        WriteStrip(session->frames, strip);
    }
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
        Ask(session, kLength, 3);
        InvalidateRect(session->run.display, nullptr, FALSE);
        TakeTurn(session);
        while (session->Now() < start + double(i + 1) * every)
            Sleep(1);
    }
    WaitForEnd(session);
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
    int megapixels = 24, lights = 400, every = 8, slider = -1;
    double zoom = 0.0, seconds = 3.0;
    const char *strip = nullptr;
    bool playsViews = false;
    for (int i = 1; i + 1 < argc; i += 2) {
        const auto is = [&](const char *name) { return !strcmp(argv[i], name); };
        const int number = atoi(argv[i + 1]);
        if (is("--megapixels"))
            megapixels = std::max(number, 1);
        else if (is("--lights"))
            lights = std::max(number, 0);
        else if (is("--every"))
            every = std::max(number, 1);
        else if (is("--slider"))
            slider = std::clamp<int>(number, -1, kParameterCount - 1);
        else if (is("--zoom"))
            zoom = number;
        else if (is("--seconds"))
            seconds = std::max(number, 1);
        else if (is("--views"))
            playsViews = number != 0;
        else if (is("--strip"))
            strip = argv[i + 1];
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
    Ask(&session, kLength, 3);
    WaitForEnd(&session);
    printf("opening: first frame %.0f ms, whole %.0f ms, longest repaint %.1f ms\n",
           session.frames.empty() ? -1.0 : session.frames.front().time - opened,
           SettledAt(session.frames, ExactView(&session)) - opened, session.longestPaint);
    if (playsViews)
        PlayAllViews(&session, zoom, every, seconds);
    else
        printf("%d x %d, %u light sources, zoom %.2f %%, a move every %d ms; frames a second, "
               "milliseconds\n%-11s %6s %6s "
               "%8s %8s %8s %8s %8s %8s %8s\n",
               image.width, image.height, GetLightSourceTable().count, zoom, every, "", "whole", "torn",
               "first", "worst", "age", "oldest", "at rest", "paint", "request");
    for (int32_t i = 0; i < kParameterCount && !playsViews; ++i)
        if (slider < 0 || slider == i)
            PlaySlider(&session, i, every, seconds, strip);
    StopProxyUpdateTask();
    printf("memory of the preview: at most %.0f MB for an image of %.0f MB\n",
           double(PeakBufferBytes() - before) / 1e6, double(image.pixelBytes) / 1e6);
    return 0;
}
