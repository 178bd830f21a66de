// Runs a target without a fuzzer: CORPUS-FOLDER RUNS [FIRST [SECONDS]]. First every file of the corpus, then
// cases that are random bytes or a changed file, until all are run or the time is over. Each run is named
// before it, so that a crash's can be repeated as FIRST. CORPUS-FOLDER save NUMBER FILE keeps a run's case as
// a file.
#include "tests/fuzz/CaseBytes.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>
#ifdef _WIN32
#include <windows.h>
#endif

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

constexpr int kTicksAllowed = 300; // of 200 ms that this process has; a stopped one has none
static std::atomic<int> gTicks;    // in this run

static int64_t Seconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(Clock::now().time_since_epoch()).count();
}

static void Kill() {
#ifdef _WIN32
    TerminateProcess(GetCurrentProcess(), 3); // other threads may hold what an orderly end needs
#endif
    std::_Exit(3);
}

static void EndHangs() {
    while (++gTicks < kTicksAllowed)
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    std::fprintf(stderr, "HANGS\n");
    Kill();
}

// Under Wine a crash would end with 0.
static void EndCrashes() {
#ifdef _WIN32
    SetUnhandledExceptionFilter([](EXCEPTION_POINTERS *raised) -> LONG {
        std::fprintf(stderr, "Unhandled exception 0x%08lX\n", raised->ExceptionRecord->ExceptionCode);
        Kill();
        return EXCEPTION_EXECUTE_HANDLER;
    });
#endif
}

static std::vector<Bytes> ReadCorpus(const char *folder) {
    std::set<std::filesystem::path> paths; // in one order everywhere
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        paths.insert(entry.path());
    std::vector<Bytes> files;
    for (const auto &path : paths) {
        std::ifstream file(path, std::ios::binary);
        files.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return files;
}

static Bytes MakeCase(const std::vector<Bytes> &corpus, uint64_t number) {
    std::mt19937_64 random(number);
    Bytes made(random() % 400);
    std::generate(made.begin(), made.end(), [&random] { return static_cast<uint8_t>(random()); });
    if (random() % 2 == 0)
        return made;
    made = corpus[random() % corpus.size()];
    for (uint64_t i = random() % 30; i > 0 && !made.empty(); --i)
        made[random() % made.size()] = static_cast<uint8_t>(random());
    return made;
}

static void RunCase(const char *kind, uint64_t number, const Bytes &bytes) {
    std::fprintf(stderr, "%s %llu\n", kind, static_cast<unsigned long long>(number));
    std::fflush(stderr);
    gTicks = 0;
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int main(int count, char **values) {
    if (count < 3)
        return 2;
    const auto number = [&](int at, uint64_t other) {
        return count > at ? std::strtoull(values[at], nullptr, 10) : other;
    };
    const std::vector<Bytes> corpus = ReadCorpus(values[1]);
    Require(!corpus.empty(), "there is a corpus");
    const char *wanted = std::getenv("BRILLATRIX_TEST_SEED"), *isLong = std::getenv("BRILLATRIX_TEST_LONG");
    const uint64_t seed = wanted ? std::strtoull(wanted, nullptr, 10) : 20260417;
    const auto make = [&](uint64_t run) { return MakeCase(corpus, seed * 1000003 + run); };
    if (count == 5 && values[2] == std::string("save")) {
        const Bytes made = make(number(3, 0));
        std::ofstream(values[4], std::ios::binary)
            .write(reinterpret_cast<const char *>(made.data()), static_cast<std::streamsize>(made.size()));
        return 0;
    }
    const uint64_t runs = number(2, 0) * (isLong && *isLong == '1' ? 10 : 1), first = number(3, 0);
    const int64_t end = Seconds() + static_cast<int64_t>(number(4, 1000000));
    std::thread(EndHangs).detach();
    EndCrashes();
    std::fprintf(stderr, "seed %llu\n", static_cast<unsigned long long>(seed));
    for (size_t i = 0; i < corpus.size(); ++i)
        RunCase("file", i, corpus[i]);
    uint64_t run = first;
    for (; run < first + runs && Seconds() < end; ++run)
        RunCase("run", run, make(run));
    std::fprintf(stderr, "%llu runs held\n", static_cast<unsigned long long>(run - first));
    return 0;
}
