// How long the light sources of three pictures take to find, beside the plain form of the tests' yardstick,
// and whether both find the same.
//
//   detect_bench [--plain 0|1] [--repeat N] [--case NAME] [--workers N] [--photos FOLDER]
//
// Prints one line a case: seconds for the analysis image, for the whole build (best of N) with so many
// workers on threads of their own, for the yardstick, their ratio, the number of sources, and whether the
// tables agree record by record. With --photos (Windows build) the cases are the photos of a folder instead.
#include "bench/DetectScenes.h"
#include "bench/Timing.h"
#include "engine/SerialBuild.h"
#include "engine/image/AnalysisImage.h"
#include "engine/table/LightSourceTable.h"
#include "tests/reference/detect/ReferenceDetect.h"
#include "tests/support/ThreadedBuild.h"
#ifdef _WIN32
#include "tests/support/PhotoImage.h"
#endif

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

const std::atomic<uint8_t> kNoCancel{0};

struct Options {
    bool plain = true;
    int repeat = 3;
    int32_t workers = 1;
    std::string only;   // name of the one case to run; empty: all
    std::string photos; // folder
};

struct BenchCase {
    const char *name;
    ImageBuffer (*make)();
};

const BenchCase kCases[] = {
    {"night24", [] { return MakeNightPicture(6000, 4000, 3000); }},
    {"noisy-sky", [] { return MakeNoisySkyPicture(1200, 800); }},
    {"squares", [] { return MakeSquaresPicture(1200, 1200, 100); }},
};

[[noreturn]] void Fail(const char *what) {
    fprintf(stderr, "detect_bench: %s\n", what);
    exit(1);
}

double TimeReduction(const ImageBuffer &picture, int32_t workers) {
    AnalysisImage analysis{};
    const Stopwatch watch;
    if (PrepareAnalysisImage(picture, kNoCancel, &analysis, StandardThreads(workers)) != kNoError)
        Fail("no analysis image");
    const double seconds = watch.Seconds();
    FreeAnalysisImage(&analysis);
    return seconds;
}

double TimeBuild(const ImageBuffer &picture, int32_t workers) {
    ThreadedBuild threaded;
    const Stopwatch watch;
    const HostResult result = workers == 1 ? BuildLightSourceTable(picture, 1, kNoCancel)
                                           : threaded.Run(picture, workers, kNoCancel, ScanOnThreads);
    if (result != kNoError)
        Fail("the light sources could not be found");
    return watch.Seconds();
}

bool IsSameTable(const reference::Table &expected) {
    const LightSourceTableView table = GetLightSourceTable();
    return table.count == expected.size() &&
           (table.count == 0 ||
            memcmp(table.records, expected.data(), table.count * sizeof(LightSource)) == 0);
}

// False when the yardstick finds other sources. Frees the picture.
bool RunCase(const std::string &name, ImageBuffer picture, const Options &options) {
    if (!picture.pixels)
        Fail("no memory for a picture");
    double reduction = TimeReduction(picture, options.workers), build = TimeBuild(picture, options.workers);
    for (int i = 1; i < options.repeat; ++i) {
        reduction = std::min(reduction, TimeReduction(picture, options.workers));
        build = std::min(build, TimeBuild(picture, options.workers));
    }
    printf("%-27s %11.4f %8.4f %8u", name.c_str(), reduction, build, GetLightSourceTable().count);
    bool same = true;
    if (options.plain) {
        fflush(stdout);
        const Stopwatch watch;
        const reference::Table expected = reference::BuildTable(picture, options.workers);
        const double plain = watch.Seconds();
        same = IsSameTable(expected);
        printf(" %9.3f %7.1f  %s", plain, plain / build, same ? "same" : "DIFFERENT");
    }
    printf("\n");
    fflush(stdout);
    FreeTableRecords(gLightSourceTable);
    FreeImageBuffer(&picture);
    return same;
}

Options ParseOptions(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; i += 2) {
        const std::string name = argv[i];
        if (i + 1 == argc)
            Fail("an option lacks its value");
        if (name == "--plain")
            options.plain = atoi(argv[i + 1]) != 0;
        else if (name == "--repeat")
            options.repeat = atoi(argv[i + 1]);
        else if (name == "--case")
            options.only = argv[i + 1];
        else if (name == "--workers")
            options.workers = std::clamp(atoi(argv[i + 1]), 1, kMaxWorkers);
        else if (name == "--photos")
            options.photos = argv[i + 1];
        else
            Fail("usage: detect_bench [--plain 0|1] [--repeat N] [--case NAME] [--workers N] [--photos "
                 "FOLDER]");
    }
    return options;
}

bool RunPhotos(const Options &options) {
    bool same = true;
#ifdef _WIN32
    for (const auto &file : std::filesystem::directory_iterator(options.photos)) {
        ImageBuffer picture{};
        if (file.path().extension() != ".md" && ReadPhotoImage(file.path(), &picture))
            same = RunCase(file.path().filename().string(), picture, options) && same;
    }
#else
    Fail(("photos are read by the Windows build only: " + options.photos).c_str());
#endif
    return same;
}

} // namespace

int main(int argc, char **argv) {
    const Options options = ParseOptions(argc, argv);
    printf("%-27s reduction s  build s  sources%s\n", "case",
           options.plain ? "   plain s   ratio  tables" : "");
    bool same = options.photos.empty() || RunPhotos(options);
    for (const BenchCase &which : kCases)
        if (options.photos.empty() && (options.only.empty() || options.only == which.name))
            same = RunCase(which.name, which.make(), options) && same;
    return same ? 0 : 1;
}
