#include "host/services/HostServices.h"
#include "tests/host/PlayedFilter.h"

static std::vector<int16_t> SelectorsPlayed(const host::FilterHost &filterHost) {
    std::vector<int16_t> played;
    for (const host::SelectorCall &call : filterHost.log.selectors)
        played.push_back(call.selector);
    return played;
}

// Writes 1 into one sample, so that a document that was not put back shows.
static int16_t Touch(FilterRecord &record) {
    AskFor(record, {}, {0, 0, 1, 1});
    AskForPlanes(record, 0, 0);
    const int16_t result = record.advanceState();
    if (result == kNoError)
        *static_cast<uint8_t *>(record.outData) = 1;
    return result;
}

TEST(FilterRun, OrderAndPutBackAfterEachFailure) {
    struct Case {
        int16_t failing; // selector, or -1
        bool finishAfterFailure;
        std::vector<int16_t> expected;
    };
    const Case cases[] = {
        {-1, true, {1, 2, 3, 4, 5}}, {1, true, {1}},
        {2, true, {1, 2}},           {3, true, {1, 2, 3}},
        {4, true, {1, 2, 3, 4, 5}},  {4, false, {1, 2, 3, 4}},
        {5, true, {1, 2, 3, 4, 5}},
    };
    for (const Case &c : cases) {
        PlayedHost played([&](int16_t selector, FilterRecord &record, intptr_t *) -> int16_t {
            if (selector == kSelectorStart)
                Touch(record); // leaves its rectangle: the host advances and calls Continue
            if (selector == kSelectorContinue)
                AskFor(record, {}, {});
            return selector == c.failing ? int16_t{-77} : kNoError;
        });
        played.filterHost.settings.finishAfterFailure = c.finishAfterFailure;
        played.filterHost.settings.prefillOutput = true;
        const host::Document before = played.filterHost.document;
        played.Open();
        const host::RunResult result = host::RunFilter(played.filterHost, true);
        EXPECT_EQ(result.code, c.failing == -1 ? 0 : -77);
        EXPECT_EQ(result.failedSelector, c.failing);
        EXPECT_EQ(SelectorsPlayed(played.filterHost), c.expected);
        const bool isDone = c.failing == -1 || c.failing == kSelectorFinish;
        EXPECT_EQ(played.filterHost.document == before, !isDone) << c.failing;
        EXPECT_TRUE(!isDone || played.filterHost.log.advances.back().selector == -1) << "the host's own";
        EXPECT_TRUE(played.filterHost.log.violations.empty());
    }
}

// A case that the filter does not take is avoided where the document can be shown another way.
TEST(FilterRun, PropertyListDecidesWhatIsRun) {
    struct Case {
        std::optional<uint32_t> modes;
        const char *enableInfo;
        std::vector<int> casesRefused;
        bool hasTransparency, hasMask;
        int16_t filterCase; // 0: refused
    };
    const Case cases[] = {
        {0x50000000, "", {}, false, false, 1},
        {0x40000000, "", {}, false, false, 0},
        {std::nullopt, "in(PSHOP_ImageMode, GrayScaleMode)", {}, false, false, 0},
        {0x50000000, "", {4}, true, false, 6},
        {0x50000000, "", {4, 6}, true, false, 1},
        {0x50000000, "", {4, 6, 1}, true, false, 0},
        {0x50000000, "", {5}, true, true, 7},
        {0x50000000, "", {2}, false, true, 0},
    };
    for (const Case &c : cases) {
        int16_t seen = 0;
        PlayedHost played([&](int16_t selector, FilterRecord &record, intptr_t *) {
            seen = record.filterCase;
            if (selector == kSelectorStart) {
                AskFor(record, {0, 0, 1, 1}, {});
                AskForPlanes(record, 3, 3);
                EXPECT_EQ(record.advanceState() == kNoError, seen > 3) << "the transparency";
                AskFor(record, {}, {});
            }
            return kNoError;
        });
        played.pipl.modes = c.modes;
        played.pipl.enableInfo = c.enableInfo;
        for (const int refused : c.casesRefused)
            played.pipl.filterCases[refused - 1].inputHandling = host::kHandlingCannot;
        played.filterHost.document = host::MakeDocument(7, 5, 8, 3, c.hasTransparency);
        played.filterHost.document.mask.assign(c.hasMask ? 35 : 0, 255);
        EXPECT_EQ(played.Run(), c.filterCase ? kNoError : host::kFilterBadMode);
        EXPECT_EQ(seen, c.filterCase);
        EXPECT_EQ(played.filterHost.log.refusal.empty(), c.filterCase != 0);
    }
}

TEST(FilterRun, AFilterThatNeverEndsIsStopped) {
    PlayedHost played([](int16_t selector, FilterRecord &record, intptr_t *) {
        return selector == kSelectorStart || selector == kSelectorContinue ? Touch(record) : kNoError;
    });
    EXPECT_EQ(played.Run(), kParamErr);
    EXPECT_TRUE(played.HasViolation("without end"));
}
