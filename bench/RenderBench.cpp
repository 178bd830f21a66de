// The renderer beside its plain form and beside a plain copy of the same image, in one run, in tiles as the
// final render draws them.
//
//   render_bench [--cases name,name] [--workers 2] [--no-plain] [--portable | --avx2] [--cpu] [--one]
//
// Prints one line a case: seconds for the copy, the plain form and the renderer, their ratio, the peak of the
// counted memory beyond the image's own buffers, and a sum over all that was drawn, by which two builds can
// be compared; with --one, the renderer with all workers only. Then the preview: milliseconds from one slider
// change to a finished tile of 1024 × 1024, stamps to rebuild; of a first render at a high zoom; and the time
// from a raised abort flag to the return.
#include "bench/Timing.h"
#include "bench/plain/PlainRender.h"
#include "engine/image/FixedPoint.h"
#include "engine/image/ImageBuffer.h"
#include "render/RenderDriver.h"
#include "render/rows/RenderPath.h"
#include "tests/support/RecordingDiag.h"
#include "tests/support/StandardThreads.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int32_t kTileSize = 2048, kPreviewSize = 1024;
constexpr RenderSettings kDefaults = {100.0, 100, 50, 50, 150, 6,     50,
                                      30,    50,  50, 15, 30,  false, kStandardStar};

struct Options {
    std::string cases = "24-50,24-500,24-long,24-flare,24-sharp20,100-50,preview,first,cancel";
    int32_t workers = 2;
    bool plain = true, oneThread = true;
};

struct Size {
    int32_t width, height;
};
constexpr Size k24 = {6000, 4000}, k100 = {12247, 8164}, kStrip = {32767, 1000};

struct Case {
    const char *name;
    Size size;
    int32_t mode, lights;
    void (*change)(RenderSettings *settings);
    bool hasPlain; // otherwise the plain form's stamps take gigabytes, and minutes to build
};

const Case kCases[] = {
    {"24-50", k24, kModeRgb8, 50, [](RenderSettings *) {}, true},
    {"24-500", k24, kModeRgb8, 500, [](RenderSettings *) {}, true},
    {"24-long", k24, kModeRgb8, 50,
     [](RenderSettings *s) {
         s->length = s->intensity = 100;
         s->numberOfPoints = 32;
     },
     true},
    {"100-50", k100, kModeRgb8, 50, [](RenderSettings *) {}, true},
    {"strip-1024", kStrip, kModeGray8, 1024, [](RenderSettings *) {}, false},
    {"strip-4096", kStrip, kModeGray8, 4096, [](RenderSettings *) {}, false},
    {"24-flare", k24, kModeRgb8, 50, [](RenderSettings *s) { s->length = s->softFlareIntensity = 100; },
     false},
    {"24-sharp20", k24, kModeRgb8, 50, [](RenderSettings *s) { s->spikeSharpness = 20; }, false},
    {"24-worst", k24, kModeRgb8, 50,
     [](RenderSettings *s) {
         s->effectType = kHollywoodStar;
         s->spikeSharpness = 0;
         s->numberOfPoints = 32;
         s->length = s->intensity = s->secondaryIntensity = s->softFlareIntensity = 100;
     },
     false},
};

const std::atomic<uint8_t> kNoAbort{0};

// Whether a list of names with commas between has the name.
bool IsNamed(const std::string &list, const char *name) {
    const size_t at = list.find(name), end = at + strlen(name);
    return at != std::string::npos && (at == 0 || list[at - 1] == ',') &&
           (end == list.size() || list[end] == ',');
}

[[noreturn]] void Fail(const char *what) {
    fprintf(stderr, "render_bench: %s\n", what);
    exit(1);
}

ImageBuffer NewImage(const IntRect &bounds, int32_t mode = kModeRgb8) {
    ImageBuffer image{};
    bool maskFailed = false;
    if (AllocateImageBuffer(mode, 1, 0, bounds, false, &image, &maskFailed) != kNoError)
        Fail("no memory for an image");
    return image;
}

// A dark, grainy image with lights anywhere, in all phases and many colours, all bright.
ImageBuffer MakeScene(const Size &size, int32_t mode, int32_t lights, std::vector<LightSource> *sources) {
    const auto [width, height] = size;
    ImageBuffer image = NewImage({0, 0, width, height}, mode);
    std::mt19937 random(5);
    for (int64_t i = 0; i < image.pixelBytes; ++i)
        image.pixels[i] = static_cast<uint8_t>(random() % 40);
    const auto fraction = [&] { return 0x40000000u + static_cast<uint32_t>(random()) / 4 * 3; };
    for (int32_t i = 0; i < lights; ++i)
        sources->push_back({static_cast<int32_t>(random() % static_cast<uint32_t>(width)),
                            static_cast<int32_t>(random() % 4),
                            static_cast<int32_t>(random() % static_cast<uint32_t>(height)),
                            static_cast<int32_t>(random() % 4), 9, 0xF0000000u, fraction(), fraction(),
                            fraction(), kFractionOne, -1, 1, 1});
    return image;
}

// The sum depends on the place of each byte.
uint64_t SumOf(const ImageBuffer &image, uint64_t sum) {
    for (int64_t i = 0; i < image.pixelBytes; ++i)
        sum = sum * 0x100000001B3u + image.pixels[i];
    return sum;
}

// The seconds that it took to draw all tiles; *sum is of what was drawn.
template <typename Work> double TimeTiles(const ImageBuffer &image, uint64_t *sum, Work work) {
    double seconds = 0.0;
    *sum = 0;
    for (int32_t top = 0; top < image.height; top += kTileSize)
        for (int32_t left = 0; left < image.width; left += kTileSize) {
            const IntRect tile = IntersectRects(image.bounds, {left, top, left + kTileSize, top + kTileSize});
            const Stopwatch watch;
            ImageBuffer output = NewImage(tile, image.imageMode);
            work(tile, &output);
            seconds += watch.Seconds();
            *sum = SumOf(output, *sum);
            FreeImageBuffer(&output);
        }
    return seconds;
}

void CopyTile(const ImageBuffer &image, const IntRect &tile, ImageBuffer *output) {
    for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
        for (int32_t y = 0; y < output->height; ++y)
            memcpy(output->planes[plane] + int64_t{y} * output->width,
                   image.planes[plane] + int64_t{tile.top + y} * image.width + tile.left,
                   static_cast<size_t>(output->width));
}

void RunCase(const Case &which, const Options &options) {
    std::vector<LightSource> sources;
    ImageBuffer image = MakeScene(which.size, which.mode, which.lights, &sources);
    const LightSourceTableView view{sources.data(), static_cast<uint32_t>(sources.size())};
    RenderSettings settings = kDefaults;
    which.change(&settings);
    SetImageGeometry(image.bounds);
    gPreciseMode = true;
    gFloor = kFloor8Bit;
    uint64_t sum;
    const double copy = TimeTiles(
        image, &sum, [&](const IntRect &tile, ImageBuffer *output) { CopyTile(image, tile, output); });
    double plainTime = 0.0;
    if (options.plain && which.hasPlain)
        plainTime = TimeTiles(image, &sum, [&](const IntRect &tile, ImageBuffer *output) {
            plain::RenderEffect(settings, image, tile, view, output);
        });
    plain::FreeRenderState();
    ResetPeakBufferBytes();
    double times[2] = {};
    for (int i = options.oneThread ? 0 : 1; i < 2; ++i) {
        ResetRenderState();
        times[i] = TimeTiles(image, &sum, [&](const IntRect &tile, ImageBuffer *output) {
            if (!RenderEffect(settings, image, tile, view, kNoAbort, output,
                              StandardThreads(i == 0 ? 1 : options.workers)))
                Fail("a render failed");
        });
    }
    const double peak = static_cast<double>(PeakBufferBytes() - image.pixelBytes) / 1e6;
    if (!RenderEffect(settings, image, image.bounds, view, kNoAbort, &image,
                      StandardThreads(options.workers)))
        Fail("a render in place failed");
    printf("%-12s %8.3f %8.2f %8.3f %8.3f %7.1f %8.0f  %016llx %s\n", which.name, copy, plainTime, times[0],
           times[1], plainTime / times[1], peak, static_cast<unsigned long long>(sum),
           TakeReports().empty() ? "" : "reports!");
    fflush(stdout);
    FreeRenderState();
    FreeImageBuffer(&image);
}

// Each slider that changes a star moves a step, for each effect type.
double TimeSliders(const ImageBuffer &tile, const LightSourceTableView &lights, RenderSettings settings,
                   const Options &options, ImageBuffer *output, std::vector<double> *times) {
    constexpr int16_t RenderSettings::*kSliders[] = {&RenderSettings::intensity,
                                                     &RenderSettings::length,
                                                     &RenderSettings::angle,
                                                     &RenderSettings::numberOfPoints,
                                                     &RenderSettings::spikeSharpness,
                                                     &RenderSettings::rainbowIntensity,
                                                     &RenderSettings::rainbowFrequency,
                                                     &RenderSettings::secondaryIntensity};
    const auto render = [&] {
        const Stopwatch watch;
        RenderEffect(settings, tile, tile.bounds, lights, kNoAbort, output, StandardThreads(options.workers));
        return watch.Seconds() * 1000.0;
    };
    render();
    double worst = 0.0;
    for (int16_t RenderSettings::*slider : kSliders) {
        ++(settings.*slider);
        times->push_back(render());
        worst = std::max(worst, times->back());
    }
    return worst;
}

// At full size and with the whole image in view.
void RunPreview(const Options &options) {
    std::vector<LightSource> sources;
    ImageBuffer image = MakeScene(k24, kModeRgb8, 200, &sources);
    SetImageGeometry(image.bounds);
    FreeImageBuffer(&image);
    gPreciseMode = false;
    gFloor = kFloorPreview;
    constexpr int16_t kPoints[] = {6, 4, 4, 14, 4, 8, 14};
    for (const double scale : {100.0, 17.0}) {
        const int32_t left = scale == 100.0 ? 1500 : 0, top = scale == 100.0 ? 1000 : 0;
        ImageBuffer tile = NewImage({left, top, left + kPreviewSize, top + kPreviewSize});
        ImageBuffer output = NewImage(tile.bounds);
        std::vector<double> times;
        printf("preview at %3.0f %%, worst slider of each effect:", scale);
        for (uint32_t effect = 0; effect < 7; ++effect) {
            RenderSettings settings = kDefaults;
            settings.scale = scale;
            settings.effectType = kStandardStar + effect;
            settings.numberOfPoints = kPoints[effect];
            printf(" %.0f", TimeSliders(tile, {sources.data(), static_cast<uint32_t>(sources.size())},
                                        settings, options, &output, &times));
        }
        std::sort(times.begin(), times.end());
        printf("\npreview at %3.0f %%: median %.1f ms, worst %.1f ms\n", scale, times[times.size() / 2],
               times.back());
        FreeImageBuffer(&output);
        FreeImageBuffer(&tile);
    }
    FreeRenderState();
}

// Milliseconds of the first render after a zoom: one tile in the middle, its stamp to build.
void RunFirst(const Options &options) {
    constexpr struct {
        Size size;
        double scale;
        int16_t sharpness, length;
    } kFirsts[] = {
        {{20000, 500}, 400.0, 8, 100}, {{12000, 2000}, 800.0, 5, 50}, {{12000, 2000}, 800.0, 5, 100}};
    gPreciseMode = false;
    gFloor = kFloorPreview;
    for (const auto &[size, scale, sharpness, length] : kFirsts) {
        SetImageGeometry({0, 0, size.width, size.height});
        const int32_t left = static_cast<int32_t>(size.width * scale / 200.0), top = 600;
        ImageBuffer tile = NewImage({left, top, left + kPreviewSize, top + kPreviewSize});
        ImageBuffer output = NewImage(tile.bounds);
        LightSource light{
            size.width / 2 + 50, 0,  200, 0, 9, 0xF0000000u, 0xF0000000u, 0xE0000000u, 0xD0000000u,
            kFractionOne,        -1, 1,   1};
        uint64_t sum = 0;
        printf("first render of %d x %d at %.0f %%, sharpness %d, Length %d, each effect:", size.width,
               size.height, scale, sharpness, length);
        for (uint32_t effect = 0; effect < 7; ++effect) {
            RenderSettings settings = kDefaults;
            settings.scale = scale;
            settings.effectType = kStandardStar + effect;
            settings.spikeSharpness = sharpness;
            settings.length = length;
            ResetRenderState();
            const Stopwatch watch;
            RenderEffect(settings, tile, tile.bounds, {&light, 1}, kNoAbort, &output,
                         StandardThreads(options.workers));
            printf(" %.1f", watch.Seconds() * 1000.0);
            sum = SumOf(output, sum);
        }
        printf(" ms  %016llx\n", static_cast<unsigned long long>(sum));
        FreeImageBuffer(&output);
        FreeImageBuffer(&tile);
    }
    FreeRenderState();
}

// The flag is raised at different moments of the heaviest render.
void RunCancel(const Options &options) {
    std::vector<LightSource> sources;
    ImageBuffer image = MakeScene(k24, kModeRgb8, 50, &sources),
                output = NewImage({0, 0, kTileSize, kTileSize});
    SetImageGeometry(image.bounds);
    gPreciseMode = true;
    gFloor = kFloor8Bit;
    RenderSettings settings = kDefaults;
    kCases[std::size(kCases) - 1].change(&settings);
    double worst = 0.0;
    for (int32_t wait = 5; wait < 400; wait += 37) {
        std::atomic<uint8_t> abort{0};
        std::atomic<double> raised{0.0};
        const Stopwatch watch;
        ResetRenderState();
        std::thread raiser([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(wait));
            raised = watch.Seconds();
            abort = 1;
        });
        const bool done = RenderEffect(settings, image, output.bounds,
                                       {sources.data(), static_cast<uint32_t>(sources.size())}, abort,
                                       &output, StandardThreads(options.workers));
        const double back = watch.Seconds();
        raiser.join();
        if (!done)
            worst = std::max(worst, (back - raised) * 1000.0);
    }
    printf("cancel: worst %.1f ms from flag to return\n", worst);
    FreeRenderState();
    FreeImageBuffer(&output);
    FreeImageBuffer(&image);
}

} // namespace

int main(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--cases" && i + 1 < argc)
            options.cases = argv[++i];
        else if (option == "--workers" && i + 1 < argc)
            options.workers = atoi(argv[++i]);
        else if (option == "--no-plain")
            options.plain = false;
        else if (option == "--cpu")
            gCountProcessorTime = true;
        else if (option == "--portable")
            gRenderPath = &kPortablePath;
        else if (option == "--avx2" && Avx2Path())
            gRenderPath = Avx2Path();
        else if (option == "--one")
            options.oneThread = options.plain = false;
        else
            Fail("usage: render_bench [--cases name,name] [--workers 2] [--no-plain] [--portable | --avx2] "
                 "[--cpu] [--one]");
    }
    printf("path: %s, workers: %d\n", gRenderPath->name, options.workers);
    printf("case           copy s  plain s  1 thread  now s   ratio  extra MB  sum\n");
    for (const Case &which : kCases)
        if (IsNamed(options.cases, which.name))
            RunCase(which, options);
    if (IsNamed(options.cases, "preview"))
        RunPreview(options);
    if (IsNamed(options.cases, "first"))
        RunFirst(options);
    if (IsNamed(options.cases, "cancel"))
        RunCancel(options);
    return 0;
}
