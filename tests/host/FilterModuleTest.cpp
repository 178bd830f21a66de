#include "host/filter/FilterHost.h"
#include "tests/host/TestFiles.h"

// The test filter, loaded for one test, told what to do.
struct InvertFilter {
    host::FilterModule module;

    explicit InvertFilter(const char *order = "") {
        std::string why;
        SetEnvironmentVariableA("INVERT_FILTER", order);
        EXPECT_TRUE(host::LoadFilterModule(ProgramFile(L"InvertFilter.8bf"), &module, &why)) << why;
    }
    ~InvertFilter() {
        host::UnloadFilterModule(&module);
        SetEnvironmentVariableA("INVERT_FILTER", nullptr);
    }
};

static host::Document MakeNumbered(int32_t width, int32_t height, int32_t depth, int32_t planes,
                                   bool transparency) {
    host::Document document = host::MakeDocument(width, height, depth, planes, transparency);
    for (int32_t plane = 0; plane < static_cast<int32_t>(document.planes.size()); plane++)
        for (int32_t y = 0; y < height; y++)
            for (int32_t x = 0; x < width; x++) {
                const int32_t number = plane * 31 + y * 7 + x;
                host::SetSample(document, plane, x, y,
                                depth == 8    ? number % 256
                                : depth == 16 ? number * 97 % 32769
                                              : number / 64.0);
            }
    return document;
}

// Runs the filter on part of a document: exactly the inverted picture, nothing to complain about.
static void ExpectInverted(const InvertFilter &filter, host::FilterHost &filterHost,
                           const host::Document &before) {
    const int32_t depth = before.depth, white = depth == 8 ? 255 : depth == 16 ? 32768 : 1;
    filterHost.document = before;
    filterHost.settings.filterRect = host::Rectangle{2, 1, 12, 11};
    filterHost.log = {};
    if (!filterHost.state)
        host::OpenHost(filterHost, filter.module);
    ASSERT_EQ(host::RunFilter(filterHost, true).code, kNoError);
    ASSERT_TRUE(filterHost.log.violations.empty()) << filterHost.log.violations[0];
    for (int32_t plane = 0; plane < static_cast<int32_t>(before.planes.size()); plane++)
        for (int32_t y = 0; y < 11; y++)
            for (int32_t x = 0; x < 13; x++) {
                const double old = host::GetSample(before, plane, x, y);
                ASSERT_EQ(host::GetSample(filterHost.document, plane, x, y),
                          x >= 2 && x < 12 && y >= 1 ? white - old : old);
            }
}

// Every depth, layer kind, tile size and way of advancing; the second run plays what the first recorded.
TEST(FilterModule, InvertsEveryKindOfDocument) {
    struct Tile {
        int16_t width, height;
        const char *order;
    };
    for (const Tile tile : {Tile{256, 256, ""},
                            {5, 3, ""},
                            {1, 64, ""},
                            {64, 64, "continue"},
                            {5, 3, "twice"},
                            {5, 3, "late"},
                            {5, 3, "remember"},
                            {5, 3, "services"}}) {
        const InvertFilter filter(tile.order);
        for (const int32_t depth : {8, 16, 32})
            for (const int32_t planes : {1, 3})
                for (const bool transparency : {false, true}) {
                    SCOPED_TRACE(tile.order);
                    host::FilterHost filterHost;
                    filterHost.settings.tileWidth = tile.width;
                    filterHost.settings.tileHeight = tile.height;
                    ExpectInverted(filter, filterHost, MakeNumbered(13, 11, depth, planes, transparency));
                    filterHost.script = filterHost.recorded;
                    ExpectInverted(filter, filterHost, MakeNumbered(13, 11, depth, planes, transparency));
                }
    }
}

TEST(FilterModule, FilesThatAreNoFilterAreRefused) {
    host::FilterModule module;
    std::string why;
    EXPECT_FALSE(host::LoadFilterModule(ProgramFile(L"absent.8bf"), &module, &why));
    EXPECT_NE(why, "");
    EXPECT_FALSE(host::LoadFilterModule(ProgramFile(L"host_tests.exe"), &module, &why));
    EXPECT_EQ(why, "it has no property list");
    const TestFolder folder;
    WriteBytes(folder.File(L"a.8bf"), {'M', 'Z', 1, 2, 3});
    EXPECT_FALSE(host::LoadFilterModule(folder.File(L"a.8bf"), &module, &why));
    EXPECT_EQ(module.module, nullptr);
}
