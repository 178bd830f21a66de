// Runs a target without a fuzzer: CORPUS-FOLDER RUNS [FIRST]. First every file of the corpus, then cases that
// are random bytes or a changed file. Each run is named before it, so that a crash's can be repeated as
// FIRST.
#include "tests/fuzz/CaseBytes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <vector>

using Bytes = std::vector<uint8_t>;

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

int main(int count, char **values) {
    if (count < 3)
        return 2;
    const std::vector<Bytes> corpus = ReadCorpus(values[1]);
    Require(!corpus.empty(), "there is a corpus");
    for (const Bytes &file : corpus)
        LLVMFuzzerTestOneInput(file.data(), file.size());
    const char *wanted = std::getenv("BRILLATRIX_TEST_SEED"), *isLong = std::getenv("BRILLATRIX_TEST_LONG");
    const uint64_t seed = wanted ? std::strtoull(wanted, nullptr, 10) : 20260417;
    const uint64_t runs = std::strtoull(values[2], nullptr, 10) * (isLong && *isLong == '1' ? 10 : 1);
    const uint64_t first = count > 3 ? std::strtoull(values[3], nullptr, 10) : 0;
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    for (uint64_t run = first; run < first + runs; ++run) {
        std::fprintf(stderr, "\rrun %llu ", static_cast<unsigned long long>(run));
        const Bytes made = MakeCase(corpus, seed * 1000003 + run);
        LLVMFuzzerTestOneInput(made.data(), made.size());
    }
    return 0;
}
