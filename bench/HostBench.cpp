// The whole filter module on a host of our own, beside a filter that only reads, copies and writes the same
// picture through the same host.
//
//   host_bench MODULE.8bf [--megapixels 24,100] [--lights 50,500] [--depth 8|16|32] [--repeat N] [--phases 1]
//
// Prints one line a case: seconds for the copy and for the whole run (best of N), their ratio, the peak of
// the process's memory, and how much of it is above that of the copy. With phases two more lines: where the
// time of the best copy and of the best run went, in milliseconds.
//
//   host_bench MODULE.8bf --startup N
//
// Prints what starting up costs: milliseconds to load the module and for its first call, the first time and
// at best of N, and the memory that the process has then got beyond what it had before.
//
//   host_bench PHOTO.jpg --codec N
//
// Prints what the picture library takes for a JPEG without any filter, the first time and at best of N:
// milliseconds from the file to decoded samples, and from those to a new file, written as the program would.
#include "bench/Timing.h"
#include "engine/image/ImageBuffer.h"
#include "host/base/FileBytes.h"
#include "host/filter/FilterHost.h"
#include "host/module/ShownBoxes.h"
#include "host/pictures/VipsLibrary.h"
#include "host/pictures/VipsWriter.h"
#include "tests/support/NightScene.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr uint32_t kSeed = 7;
constexpr double kNoise = 0.02;
constexpr int32_t kCopyTile = 2048; // the filter's own output tiles
constexpr int16_t kHostTile = 1024;

struct Options {
    std::wstring module;
    std::vector<int32_t> megapixels = {24, 100}, lights = {50, 500};
    int32_t depth = 8, repeat = 1, startups = 0, codings = 0;
    bool phases = false;
};

[[noreturn]] void Fail(const char *what) {
    fprintf(stderr, "host_bench: %s\n", what);
    exit(1);
}

double MebibytesOf(SIZE_T bytes) {
    return static_cast<double>(bytes) / (1 << 20);
}

PROCESS_MEMORY_COUNTERS ReadMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters))
        Fail("no memory counters");
    return counters;
}

// --- The copying filter

void AskFor(FilterRecord *record, const HostRect32 &in, const HostRect32 &out) {
    if (!record->bigDocumentData)
        Fail("the host has no large rectangles");
    record->bigDocumentData->PluginUsing32BitCoordinates = 1;
    record->bigDocumentData->inRect32 = in;
    record->bigDocumentData->outRect32 = out;
    record->bigDocumentData->maskRect32 = HostRect32{};
}

void CopyRows(const FilterRecord &record, int32_t rowBytes, int32_t rows) {
    const auto *from = static_cast<const uint8_t *>(record.inData);
    auto *to = static_cast<uint8_t *>(record.outData);
    for (int32_t y = 0; y < rows; ++y, from += record.inRowBytes, to += record.outRowBytes)
        memcpy(to, from, static_cast<size_t>(rowBytes));
}

int16_t CopyPlane(FilterRecord *record, int16_t plane, const HostPoint32 &size) {
    record->inLoPlane = record->inHiPlane = record->outLoPlane = record->outHiPlane = plane;
    for (int32_t top = 0; top < size.v; top += kCopyTile)
        for (int32_t left = 0; left < size.h; left += kCopyTile) {
            const HostRect32 tile = {top, left, std::min(top + kCopyTile, size.v),
                                     std::min(left + kCopyTile, size.h)};
            AskFor(record, tile, tile);
            if (const int16_t result = record->advanceState())
                return result;
            CopyRows(*record, (tile.right - tile.left) * (record->depth / 8), tile.bottom - tile.top);
        }
    return kNoError;
}

void CopyEntry(int16_t selector, void *parameters, intptr_t *, int16_t *result) {
    auto *record = static_cast<FilterRecord *>(parameters);
    *result = kNoError;
    if (selector != kSelectorStart)
        return;
    record->inputRate = kFixedOne;
    const HostPoint32 size = record->bigDocumentData->imageSize32;
    for (int16_t plane = 0; plane < 3 && *result == kNoError; ++plane)
        *result = CopyPlane(record, plane, size);
    AskFor(record, HostRect32{}, HostRect32{});
}

// --- Where the time goes

// The host's advances split a run: what happens inside them is the host's, what happens between two of them
// belongs to the phase that the two tell.
enum Phase {
    kBeforeReading,
    kHostReads,
    kFilterReads,
    kTableAndFirstTile,
    kHostWrites,
    kFilterWrites,
    kTiles,
    kAfter,
    kPhases
};
constexpr const char *kPhaseNames[kPhases] = {
    "before",      "host reads", "copies in",   "table and first tile",
    "host writes", "copies out", "other tiles", "after"};

struct PhaseTimes {
    double seconds[kPhases];
    Stopwatch sinceLast;
    bool hasRead, hasWritten;
    FilterRecord *record;
    int16_t (*advance)();
};
PhaseTimes gPhases, gBestPhases;

void EndPhase(Phase phase) {
    gPhases.seconds[phase] += gPhases.sinceLast.Seconds();
    gPhases.sinceLast = Stopwatch{};
}

Phase PhaseBeforeAdvance(bool writes) {
    if (!gPhases.hasRead)
        return kBeforeReading;
    if (!writes)
        return kFilterReads;
    if (!gPhases.hasWritten)
        return kTableAndFirstTile;
    return gPhases.record->outLoPlane == 0 ? kTiles : kFilterWrites;
}

int16_t TimedAdvance() {
    const HostRect32 &out = gPhases.record->bigDocumentData->outRect32;
    const bool writes = out.right > out.left;
    EndPhase(PhaseBeforeAdvance(writes));
    (writes ? gPhases.hasWritten : gPhases.hasRead) = true;
    const int16_t result = gPhases.advance();
    EndPhase(writes ? kHostWrites : kHostReads);
    return result;
}

void TimeAdvances(int16_t selector, FilterRecord &record) {
    if (selector != kSelectorStart)
        return;
    gPhases.record = &record;
    gPhases.advance = record.advanceState;
    record.advanceState = TimedAdvance;
}

void PrintPhases(const char *title, const PhaseTimes &times) {
    printf("    %s:", title);
    for (int i = 0; i < kPhases; ++i)
        printf("%s %s %.0f", i == 0 ? "" : ",", kPhaseNames[i], times.seconds[i] * 1000.0);
    printf("\n");
}

// --- The cases

host::Document MakeScene(int32_t megapixels, int32_t lights, int32_t depth) {
    const auto width = static_cast<int32_t>(std::sqrt(megapixels * 1e6 * 1.5));
    const int32_t height = width * 2 / 3;
    const int32_t modes[] = {kModeRgb8, kModeRgb16, kModeRgb32};
    ImageBuffer image{};
    bool maskFailed = false;
    if (AllocateImageBuffer(modes[depth / 16], depth / 8, 0, IntRect{0, 0, width, height}, false, &image,
                            &maskFailed) != kNoError)
        Fail("no memory for a picture");
    PaintNightScene(MakeSceneLights(width, height, lights, kSeed), kNoise, kSeed, &image);
    host::Document document = host::MakeDocument(width, height, depth, image.colorPlanes, false);
    for (int32_t plane = 0; plane < image.colorPlanes; ++plane)
        memcpy(document.planes[static_cast<size_t>(plane)].data(), image.planes[plane],
               document.planes[static_cast<size_t>(plane)].size());
    FreeImageBuffer(&image);
    return document;
}

// Nobody is there: the main dialog counts as left with OK at once, a message box as read.
intptr_t AnswerBox(const host::ShownBox &) {
    return IDOK;
}

// Seconds from Prepare to Finish.
double TimeRun(host::FilterHost *filterHost) {
    host::ClearLog(*filterHost);
    gPhases = PhaseTimes{};
    const Stopwatch watch;
    const host::RunResult result = host::RunFilter(*filterHost, false);
    const double seconds = watch.Seconds();
    EndPhase(kAfter);
    if (result.code != kNoError)
        Fail("the filter failed");
    return seconds;
}

template <typename Open> double BestRun(const host::Document &document, const Options &options, Open open) {
    double best = 0;
    for (int32_t i = 0; i < options.repeat; ++i) {
        host::FilterHost filterHost;
        filterHost.document = document;
        filterHost.settings.tileWidth = filterHost.settings.tileHeight = kHostTile;
        if (options.phases)
            filterHost.settings.adjustRecord = TimeAdvances;
        open(&filterHost);
        const double seconds = TimeRun(&filterHost);
        host::CloseHost(filterHost);
        if (i > 0 && seconds >= best)
            continue;
        best = seconds;
        gBestPhases = gPhases;
    }
    return best;
}

void RunCase(const host::FilterModule &module, int32_t megapixels, int32_t lights, const Options &options) {
    const host::Document document = MakeScene(megapixels, lights, options.depth);
    const double copy = BestRun(document, options, [&module](host::FilterHost *filterHost) {
        host::OpenHost(*filterHost, CopyEntry, &module.pipl);
    });
    const PhaseTimes copyPhases = gBestPhases;
    const SIZE_T copyPeak = ReadMemory().PeakWorkingSetSize;
    const double whole = BestRun(
        document, options, [&module](host::FilterHost *filterHost) { host::OpenHost(*filterHost, module); });
    const SIZE_T peak = ReadMemory().PeakWorkingSetSize;
    printf("%4d %7d %8.3f %8.3f %10.1f %9.0f %10.0f\n", megapixels, lights, copy, whole, whole / copy,
           MebibytesOf(peak), MebibytesOf(peak - copyPeak));
    if (options.phases) {
        PrintPhases("copy", copyPhases);
        PrintPhases("whole", gBestPhases);
    }
    fflush(stdout);
}

// Loads the module, makes the first call of it, ends the run and unloads it again.
void StartUp(const std::wstring &path, double *loadMs, double *callMs, SIZE_T *bytes) {
    const SIZE_T before = ReadMemory().PagefileUsage;
    const Stopwatch loading;
    host::FilterModule module;
    std::string why;
    if (!host::LoadFilterModule(path, &module, &why))
        Fail(why.c_str());
    *loadMs = loading.Seconds() * 1000.0;
    {
        host::FilterHost filterHost;
        filterHost.document = host::MakeDocument(64, 64, 8, 3, false);
        host::OpenHost(filterHost, module);
        const Stopwatch calling;
        if (host::CallSelector(filterHost, kSelectorPrepare) != kNoError)
            Fail("the first call failed");
        *callMs = calling.Seconds() * 1000.0;
        *bytes = ReadMemory().PagefileUsage - before;
        host::CallSelector(filterHost, kSelectorFinish);
        host::CloseHost(filterHost);
    }
    host::UnloadFilterModule(&module);
}

// A host has loaded the system's libraries long before a filter.
void LoadSystemLibraries() {
    for (const char *name : {"comctl32.dll", "comdlg32.dll", "gdi32.dll", "ole32.dll", "shell32.dll"})
        LoadLibraryA(name);
}

void RunStartups(const Options &options) {
    LoadSystemLibraries();
    double firstLoad = 0, firstCall = 0, load = 0, call = 0;
    SIZE_T bytes = 0, ignored = 0;
    StartUp(options.module, &firstLoad, &firstCall, &bytes);
    double bestLoad = firstLoad, bestCall = firstCall;
    for (int32_t i = 1; i < options.startups; ++i) {
        StartUp(options.module, &load, &call, &ignored);
        bestLoad = std::min(bestLoad, load);
        bestCall = std::min(bestCall, call);
    }
    printf("start-up: load %.1f ms (best %.1f), first call %.1f ms (best %.1f), %.2f MiB\n", firstLoad,
           bestLoad, firstCall, bestCall, MebibytesOf(bytes));
}

struct Decoded {
    host::PictureOrigin origin;
    int32_t width = 0, height = 0, bands = 0;
    host::Bytes samples;
};

Decoded Decode(const std::wstring &path) {
    constexpr int32_t kRows = 256;
    Decoded decoded;
    host::Bytes file;
    std::string why;
    VipsImage *opened = nullptr;
    if (!host::ReadWholeFile(path, &file, &why) || !host::TellPictureKind(file, &decoded.origin, &why) ||
        !host::LoadVips(&why))
        Fail(why.c_str());
    const host::VipsLibrary &vips = host::Vips();
    const std::unique_ptr<VipsSource, host::VipsRelease> source(
        vips.vips_source_new_from_memory(file.data(), file.size()));
    if (!source || vips.vips_jpegload_source(source.get(), &opened, "access", host::kVipsSequential, nullptr))
        Fail(host::TakeVipsError().c_str());
    const host::ImageHandle image(opened);
    const std::unique_ptr<VipsRegion, host::VipsRelease> region(vips.vips_region_new(opened));
    decoded.width = vips.vips_image_get_width(opened);
    decoded.height = vips.vips_image_get_height(opened);
    decoded.bands = vips.vips_image_get_bands(opened);
    decoded.samples.reserve(size_t{1} * decoded.width * decoded.height * decoded.bands);
    for (int32_t y = 0; y < decoded.height; y += kRows) {
        size_t length = 0;
        unsigned char *rows = vips.vips_region_fetch(region.get(), 0, y, decoded.width,
                                                     std::min(kRows, decoded.height - y), &length);
        if (!rows)
            Fail(host::TakeVipsError().c_str());
        decoded.samples.insert(decoded.samples.end(), rows, rows + length);
        vips.g_free(rows);
    }
    return decoded;
}

void Code(const Decoded &decoded, const std::wstring &path) {
    const host::VipsLibrary &vips = host::Vips();
    void *coded = nullptr;
    size_t length = 0;
    std::string why;
    const host::ImageHandle image(
        vips.vips_image_new_from_memory(decoded.samples.data(), decoded.samples.size(), decoded.width,
                                        decoded.height, decoded.bands, host::kVipsUChar));
    if (!image || vips.vips_jpegsave_buffer(image.get(), &coded, &length, "Q",
                                            host::JpegQuality(decoded.origin, {}), "subsample_mode",
                                            decoded.origin.halvesColour ? host::kVipsSubsampleOn
                                                                        : host::kVipsSubsampleOff,
                                            "optimize_coding", 1, nullptr))
        Fail(host::TakeVipsError().c_str());
    const auto *bytes = static_cast<const uint8_t *>(coded);
    if (!host::WriteWholeFile(path, host::Bytes(bytes, bytes + length), &why))
        Fail(why.c_str());
    vips.g_free(coded);
}

void RunCodec(const Options &options) {
    const std::wstring path = options.module, out = path + L".coded.jpg";
    double firstRead = 0, firstWrite = 0, bestRead = 1e9, bestWrite = 1e9, best = 1e9;
    for (int32_t i = 0; i < options.codings; ++i) {
        const Stopwatch watch;
        const Decoded decoded = Decode(path);
        const double read = watch.Seconds() * 1000.0;
        Code(decoded, out);
        const double write = watch.Seconds() * 1000.0 - read;
        if (i == 0)
            firstRead = read, firstWrite = write;
        bestRead = std::min(bestRead, read);
        bestWrite = std::min(bestWrite, write);
        best = std::min(best, read + write);
    }
    DeleteFileW(out.c_str());
    printf("codec: read %.0f ms (best %.0f), write %.0f ms (best %.0f), both at best %.0f ms\n", firstRead,
           bestRead, firstWrite, bestWrite, best);
}

std::vector<int32_t> ParseNumbers(const char *text) {
    std::vector<int32_t> numbers;
    for (char *rest = const_cast<char *>(text); *rest; rest += *rest == ',')
        numbers.push_back(static_cast<int32_t>(strtol(rest, &rest, 10)));
    return numbers;
}

Options ParseOptions(int argc, char **argv) {
    if (argc < 2 || argc % 2 != 0)
        Fail("usage: host_bench MODULE.8bf [--megapixels 24,100] [--lights 50,500] [--depth 8] [--repeat N] "
             "[--phases 1]");
    Options options;
    options.module.assign(argv[1], argv[1] + strlen(argv[1]));
    for (int i = 2; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--megapixels")
            options.megapixels = ParseNumbers(argv[i + 1]);
        else if (name == "--lights")
            options.lights = ParseNumbers(argv[i + 1]);
        else if (name == "--depth")
            options.depth = atoi(argv[i + 1]);
        else if (name == "--repeat")
            options.repeat = atoi(argv[i + 1]);
        else if (name == "--startup")
            options.startups = atoi(argv[i + 1]);
        else if (name == "--codec")
            options.codings = atoi(argv[i + 1]);
        else if (name == "--phases")
            options.phases = atoi(argv[i + 1]) != 0;
        else
            Fail("unknown option");
    }
    if (options.depth != 8 && options.depth != 16 && options.depth != 32)
        Fail("the depth is 8, 16 or 32");
    return options;
}

} // namespace

// The peak of memory only ever rises within a process: run single cases to compare them.
int main(int argc, char **argv) {
    const Options options = ParseOptions(argc, argv);
    if (options.startups > 0) {
        RunStartups(options);
        return 0;
    }
    if (options.codings > 0) {
        RunCodec(options);
        return 0;
    }
    host::FilterModule module;
    std::string why;
    if (!host::LoadFilterModule(options.module, &module, &why))
        Fail(why.c_str());
    host::CatchBoxes(module.module, AnswerBox);
    printf("MPix  lights   copy s  whole s  of copies  peak MiB  above copy\n");
    for (const int32_t megapixels : options.megapixels)
        for (const int32_t lights : options.lights)
            RunCase(module, megapixels, lights, options);
    host::ReleaseBoxes();
    host::UnloadFilterModule(&module);
    return 0;
}
