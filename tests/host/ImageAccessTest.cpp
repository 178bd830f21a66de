#include "tests/host/PlayedFilter.h"

#include <cstring>

using Area = host::Rectangle;

static const Area kWhole = {0, 0, 7, 5};

static uint8_t *Row(void *data, int32_t rowBytes, int32_t y) {
    return static_cast<uint8_t *>(data) + static_cast<ptrdiff_t>(y) * rowBytes;
}

// Any rectangle, any plane range, both forms of coordinates: the very samples of the document.
TEST(ImageAccess, InputIsTheDocument) {
    for (const bool isBig : {true, false}) {
        PlayedHost played({});
        if (!isBig)
            played.filterHost.settings.absent = {"bigDocumentData"};
        const host::Document &document = played.filterHost.document;
        const auto violations = played.ViolationsOf([&](FilterRecord &record) {
            EXPECT_EQ(record.inData, nullptr);
            for (const Area r : {kWhole, Area{2, 1, 5, 4}, Area{6, 4, 7, 5}})
                for (int16_t lo = 0; lo < 3; lo++)
                    for (int16_t hi = lo; hi < 3; hi++) {
                        AskFor(record, r, {});
                        AskForPlanes(record, lo, hi);
                        ASSERT_EQ(record.advanceState(), kNoError);
                        ASSERT_EQ(record.outData, nullptr);
                        ASSERT_EQ(record.inColumnBytes, hi - lo + 1);
                        for (int32_t y = r.top; y < r.bottom; y++)
                            for (int32_t x = r.left; x < r.right; x++)
                                for (int32_t plane = lo; plane <= hi; plane++)
                                    ASSERT_EQ(Row(record.inData, record.inRowBytes,
                                                  y - r.top)[(x - r.left) * (hi - lo + 1) + plane - lo],
                                              host::GetSample(document, plane, x, y));
                    }
        });
        EXPECT_TRUE(violations.empty()) << violations[0];
    }
}

TEST(ImageAccess, RequestsOutOfBoundsAreRefusedAndReported) {
    struct Case {
        Area in, out, mask;
        int16_t lo, hi;
        const char *name;
    };
    const Case cases[] = {
        {{0, 0, 8, 5}, {}, {}, 0, 0, "inRect"},   {{-1, 0, 7, 5}, {}, {}, 0, 0, "inRect"},
        {{0, 0, 7, 6}, {}, {}, 0, 0, "inRect"},   {kWhole, {}, {}, 0, 3, "inRect"},
        {kWhole, {}, {}, 2, 1, "inRect"},         {kWhole, {}, {}, -1, 0, "inRect"},
        {{}, {0, 0, 7, 5}, {}, 0, 0, "outRect"},  {{}, {1, 1, 4, 4}, {}, 3, 3, "outRect"},
        {{}, {}, {0, 0, 8, 1}, 0, 0, "maskRect"},
    };
    for (const Case &c : cases) {
        PlayedHost played({});
        played.filterHost.document.mask.assign(35, 255);
        played.filterHost.settings.filterRect = Area{1, 1, 4, 4};
        const auto violations = played.ViolationsOf([&](FilterRecord &record) {
            AskFor(record, c.in, c.out, c.mask);
            AskForPlanes(record, c.lo, c.hi);
            EXPECT_EQ(record.advanceState(), kParamErr);
            EXPECT_EQ(record.inData, nullptr);
            EXPECT_EQ(record.outData, nullptr);
            AskFor(record, {}, {});
        });
        ASSERT_EQ(violations.size(), 1u) << c.name;
        EXPECT_NE(violations[0].find(c.name), std::string::npos) << violations[0];
    }
}

TEST(ImageAccess, WritingAroundTheRowsIsFoundOut) {
    struct Case {
        bool isInput;
        ptrdiff_t offset;
        bool isFound;
    };
    PlayedHost probe({});
    int32_t rowBytes = 0;
    probe.ViolationsOf([&](FilterRecord &record) {
        AskFor(record, {}, kWhole);
        AskForPlanes(record, 0, 0);
        record.advanceState();
        rowBytes = record.outRowBytes;
    });
    ASSERT_GT(rowBytes, 7);
    host::CloseHost(probe.filterHost);
    for (const Case c : {Case{false, 6, false},
                         {false, 7, true},
                         {false, -1, true},
                         {true, 7, true},
                         {false, ptrdiff_t{4} * rowBytes + 6, false},
                         {false, ptrdiff_t{4} * rowBytes + 7, true},
                         {false, ptrdiff_t{5} * rowBytes, true}}) {
        PlayedHost played({});
        const auto violations = played.ViolationsOf([&](FilterRecord &record) {
            AskFor(record, kWhole, kWhole);
            AskForPlanes(record, 0, 0);
            ASSERT_EQ(record.advanceState(), kNoError);
            static_cast<uint8_t *>(c.isInput ? record.inData : record.outData)[c.offset] = 1;
            AskFor(record, {}, {});
        });
        EXPECT_EQ(violations.size(), c.isFound ? 1u : 0u) << c.offset;
    }
}

TEST(ImageAccess, MaskIsServedAndClipsWhereTheHostDoesThat) {
    for (const bool filterWritesOutside : {true, false})
        for (const int32_t depth : {8, 16, 32}) {
            PlayedHost played({});
            played.filterHost.document = host::MakeDocument(3, 1, depth, 1, false);
            played.filterHost.document.mask = {0, 128, 255};
            for (host::FilterCaseInfo &info : played.pipl.filterCases)
                info.flags = filterWritesOutside ? host::kCaseWritesOutsideSelection : 0;
            const double white = depth == 8 ? 255 : depth == 16 ? 32768 : 1;
            played.ViolationsOf([&](FilterRecord &record) {
                EXPECT_EQ(record.haveMask, 1);
                EXPECT_EQ(record.filterCase, 2);
                EXPECT_EQ(record.autoMask, filterWritesOutside ? 0 : 1);
                AskFor(record, {}, {0, 0, 3, 1}, {1, 0, 3, 1});
                ASSERT_EQ(record.advanceState(), kNoError);
                EXPECT_EQ(std::memcmp(record.maskData, "\x80\xFF", 2), 0);
                host::Document full = host::MakeDocument(3, 1, depth, 1, false);
                for (int32_t x = 0; x < 3; x++)
                    host::SetSample(full, 0, x, 0, white);
                std::memcpy(record.outData, full.planes[0].data(), full.planes[0].size());
                ASSERT_EQ(record.advanceState(), kNoError); // again: what was written, not yet clipped
                EXPECT_EQ(std::memcmp(record.outData, full.planes[0].data(), full.planes[0].size()), 0);
                AskFor(record, {}, {});
                record.advanceState();
            });
            const host::Document &after = played.filterHost.document;
            EXPECT_EQ(host::GetSample(after, 0, 0, 0), filterWritesOutside ? white : 0);
            EXPECT_NEAR(host::GetSample(after, 0, 1, 0), filterWritesOutside ? white : white * 128 / 255,
                        white / 500);
            EXPECT_EQ(host::GetSample(after, 0, 2, 0), white);
        }
}
