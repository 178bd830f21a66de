// Runs without end in one process, and the largest pictures there are.
#include "tests/plugin/ModuleFixture.h"

#include <cstdlib>
#include <cstring>
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

namespace {

const bool kIsLong = std::getenv("BRILLATRIX_TEST_LONG") != nullptr;

class Long : public ModuleFixture {};

PROCESS_MEMORY_COUNTERS Memory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters;
}

int64_t PrivateBytes() {
    return static_cast<int64_t>(Memory().PagefileUsage);
}

int Threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 thread = {};
    thread.dwSize = sizeof thread;
    int count = 0;
    for (BOOL found = Thread32First(snapshot, &thread); found; found = Thread32Next(snapshot, &thread))
        count += thread.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}

// A picture that no memory holds: dark, with bright discs in its upper quarter. What is read is made when it
// is asked for, and what is written is looked at and forgotten.
struct Endless {
    int32_t width = 0, height = 0, sampleSize = 0;
    int64_t changed = 0; // rows
    std::vector<uint8_t> in, out;
    HostRect32 outRect = {};
    FilterRecord *record = nullptr;

    void MakeRow(int32_t y, int32_t left, int32_t right, uint8_t *row) const {
        constexpr int32_t kRadius = 90;
        const size_t size = static_cast<size_t>(sampleSize);
        std::memset(row, 5, static_cast<size_t>(right - left) * size);
        const int32_t dy = y - height / 8;
        for (int32_t middle = width / 8; middle < width; middle += width / 4)
            for (int32_t x = std::max(left, middle - kRadius); x < std::min(right, middle + kRadius); ++x) {
                const int64_t away = int64_t{dy} * dy + (x - middle) * (x - middle);
                if (away < kRadius * kRadius)
                    std::memset(row + static_cast<size_t>(x - left) * size,
                                static_cast<int>(120 - 110 * away / (kRadius * kRadius)), size);
            }
    }

    // Stars are shorter than a half.
    void TakeWritten() {
        const HostRect32 r = std::exchange(outRect, {});
        const size_t rowBytes = static_cast<size_t>(r.right - r.left) * static_cast<size_t>(sampleSize);
        std::vector<uint8_t> made(rowBytes);
        for (int32_t y = r.top; y < r.bottom; ++y) {
            MakeRow(y, r.left, r.right, made.data());
            const bool isSame =
                std::memcmp(&out[static_cast<size_t>(y - r.top) * rowBytes], made.data(), rowBytes) == 0;
            changed += !isSame;
            ASSERT_TRUE(isSame || y < height / 2) << "changed far from every light, in row " << y;
        }
    }

    int32_t HandOut(const HostRect32 &r, std::vector<uint8_t> *to, void **data) {
        const int32_t rowBytes = (r.right - r.left) * sampleSize;
        to->resize(static_cast<size_t>(rowBytes) * static_cast<size_t>(r.bottom - r.top));
        *data = to->data();
        return rowBytes;
    }

    void Advance() {
        TakeWritten();
        const BigDocumentStruct &big = *record->bigDocumentData;
        void *data = nullptr;
        record->inRowBytes = HandOut(big.inRect32, &in, &data);
        record->inData = data;
        for (int32_t y = big.inRect32.top; y < big.inRect32.bottom; ++y)
            MakeRow(y, big.inRect32.left, big.inRect32.right,
                    &in[static_cast<size_t>(y - big.inRect32.top) * static_cast<size_t>(record->inRowBytes)]);
        outRect = big.outRect32;
        record->outRowBytes = HandOut(outRect, &out, &data);
        record->outData = data;
    }
};
Endless gEndless;

} // namespace

TEST_F(Long, ManyRunsOfManyKindsLeaveNothingBehind) {
    const host::Document documents[] = {
        MakeNight({.width = 97, .height = 61}),
        MakeNight({.width = 300, .height = 200, .depth = 16, .colourPlanes = 1, .hasTransparency = true}),
        MakeNight({.width = 2100, .height = 40, .depth = 32}),
        MakeNight({.width = 500, .height = 31, .lights = 20}),
        MakeNight({.width = 31, .height = 1300, .hasTransparency = true})};
    const int runs = kIsLong ? 2000 : 40;
    constexpr int kDialogs = 8;                         // every so many runs opens one
    const int64_t tolerance = (kIsLong ? 8 : 16) << 20; // bytes: the heap keeps what it once had
    int64_t bytes = 0;
    int threads = 0, cancelled = 0;
    HeldObjects held = {};
    for (int run = 0; run < runs; ++run) {
        SCOPED_TRACE(run);
        if (run % 3 == 0) // another host
            host::CloseHost(filterHost);
        filterHost.settings.playInfo = run % kDialogs == 0 ? kPlayDisplay
                                       : run % 2           ? kPlaySilent
                                                           : kPlayDontDisplay;
        filterHost.settings.tileWidth = static_cast<int16_t>(run % 7 * 50);
        filterHost.settings.cancelAtAbortCall = run % 11 == 5;
        filterHost.document = documents[run % 5];
        filterHost.script = ScriptOf(run % 2 ? ChangedParameters() : kDefaultParameters);
        OpenMainDialogs(run % 3 ? IDOK : IDCANCEL, static_cast<uint32_t>(run % 100));
        const int16_t code = Run().code;
        EXPECT_TRUE(code == kNoError || code == kUserCanceledErr) << code;
        cancelled += code == kUserCanceledErr;
        host::ClearLog(filterHost);
        if (run == runs / 4) {
            bytes = PrivateBytes();
            threads = Threads();
            held = Held();
        }
    }
    EXPECT_GT(MainDialogs(), runs / kDialogs - 1);
    EXPECT_GT(cancelled, runs / 30);
    EXPECT_EQ(Held(), held);
    EXPECT_LE(Threads(), threads);
    EXPECT_LE(PrivateBytes() - bytes, tolerance);
    printf("%lld bytes more\n", static_cast<long long>(PrivateBytes() - bytes));
}

TEST_F(Long, TheLargestPicturesRunToTheEnd) {
    struct Size {
        int32_t width, height, depth, colours;
    };
    const Size sizes[] = {{kIsLong ? 32767 : 5000, kIsLong ? 32767 : 3000, 8, 1},
                          {kIsLong ? 20000 : 3000, kIsLong ? 20000 : 5000, 16, 3}};
    ParameterSet parameters = kDefaultParameters;
    parameters.length = 5;
    parameters.threshold = 100;
    for (const Size &size : sizes) {
        SCOPED_TRACE(size.width);
        gEndless = Endless();
        gEndless.width = size.width;
        gEndless.height = size.height;
        gEndless.sampleSize = size.depth / 8;
        filterHost.document = host::MakeDocument(8, 6, size.depth, size.colours, false);
        filterHost.script = ScriptOf(parameters);
        filterHost.settings.adjustRecord = [](int16_t, FilterRecord &record) {
            gEndless.record = &record;
            record.bigDocumentData->filterRect32 = {0, 0, gEndless.height, gEndless.width};
            record.advanceState = []() -> HostResult { return (gEndless.Advance(), kNoError); };
        };
        const auto begin = GetTickCount64();
        EXPECT_EQ(Run().code, kNoError);
        gEndless.TakeWritten();
        EXPECT_GT(gEndless.changed, 100);
        printf("%d x %d: %.1f s, %llu MB at most\n", size.width, size.height,
               static_cast<double>(GetTickCount64() - begin) / 1000.0,
               static_cast<unsigned long long>(Memory().PeakWorkingSetSize >> 20));
        EXPECT_TRUE(boxes.empty());
        host::CloseHost(filterHost);
    }
}
