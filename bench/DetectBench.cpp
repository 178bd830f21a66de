// How long the light sources of three pictures take to find, beside the plain form of the tests' yardstick,
// and whether both find the same.
//
//   detect_bench [--plain 0|1] [--repeat N] [--case NAME]
//
// Prints one line a case: seconds for the analysis image, for the whole build (best of N), for the yardstick,
// their ratio, the number of sources, and whether the tables agree record by record.
#include "bench/DetectScenes.h"
#include "bench/Timing.h"
#include "engine/SerialBuild.h"
#include "engine/image/AnalysisImage.h"
#include "engine/table/LightSourceTable.h"
#include "tests/reference/detect/ReferenceDetect.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const std::atomic<uint8_t> kNoCancel{0};

struct Options {
    bool plain = true;
    int repeat = 3;
    std::string only; // name of the one case to run; empty: all
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

double TimeReduction(const ImageBuffer &picture) {
    AnalysisImage analysis{};
    const Stopwatch watch;
    if (PrepareAnalysisImage(picture, kNoCancel, &analysis) != kNoError)
        Fail("no analysis image");
    const double seconds = watch.Seconds();
    FreeAnalysisImage(&analysis);
    return seconds;
}

double TimeBuild(const ImageBuffer &picture) {
    const Stopwatch watch;
    if (BuildLightSourceTable(picture, 1, kNoCancel) != kNoError)
        Fail("the light sources could not be found");
    return watch.Seconds();
}

bool IsSameTable(const reference::Table &expected) {
    const LightSourceTableView table = GetLightSourceTable();
    return table.count == expected.size() &&
           (table.count == 0 ||
            memcmp(table.records, expected.data(), table.count * sizeof(LightSource)) == 0);
}

// False when the yardstick finds other sources.
bool RunCase(const BenchCase &which, const Options &options) {
    ImageBuffer picture = which.make();
    if (!picture.pixels)
        Fail("no memory for a picture");
    double reduction = TimeReduction(picture), build = TimeBuild(picture);
    for (int i = 1; i < options.repeat; ++i) {
        reduction = std::min(reduction, TimeReduction(picture));
        build = std::min(build, TimeBuild(picture));
    }
    printf("%-10s %11.3f %8.3f %8u", which.name, reduction, build, GetLightSourceTable().count);
    bool same = true;
    if (options.plain) {
        fflush(stdout);
        const Stopwatch watch;
        const reference::Table expected = reference::BuildTable(picture, 1);
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
        else
            Fail("usage: detect_bench [--plain 0|1] [--repeat N] [--case NAME]");
    }
    return options;
}

} // namespace

int main(int argc, char **argv) {
    const Options options = ParseOptions(argc, argv);
    printf("case       reduction s  build s  sources%s\n", options.plain ? "   plain s   ratio  tables" : "");
    bool same = true;
    for (const BenchCase &which : kCases)
        if (options.only.empty() || options.only == which.name)
            same = RunCase(which, options) && same;
    return same ? 0 : 1;
}
