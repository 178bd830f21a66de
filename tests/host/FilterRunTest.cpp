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
        EXPECT_EQ(played.filterHost.document == before, c.failing != -1) << c.failing;
        EXPECT_TRUE(played.filterHost.log.violations.empty());
    }
}

TEST(FilterRun, AFilterThatNeverEndsIsStopped) {
    PlayedHost played([](int16_t selector, FilterRecord &record, intptr_t *) {
        return selector == kSelectorStart || selector == kSelectorContinue ? Touch(record) : kNoError;
    });
    EXPECT_EQ(played.Run(), kParamErr);
    EXPECT_TRUE(played.HasViolation("without end"));
}

TEST(FilterRun, CancelThroughAbortAndThroughTheUser) {
    PlayedHost played([](int16_t selector, FilterRecord &record, intptr_t *) {
        int polls = 0;
        while (selector == kSelectorStart && !record.abortProc())
            polls++;
        EXPECT_EQ(polls, selector == kSelectorStart ? 2 : 0);
        return selector == kSelectorStart ? kUserCanceledErr : kNoError;
    });
    played.filterHost.settings.cancelAtAbortCall = 3;
    EXPECT_EQ(played.Run(), kUserCanceledErr);
    host::CloseHost(played.filterHost);

    PlayedHost byUser([](int16_t selector, FilterRecord &record, intptr_t *) {
        return selector == kSelectorStart ? Touch(record) : kNoError;
    });
    byUser.filterHost.settings.isCancelled = [] { return true; };
    EXPECT_EQ(byUser.Run(), kUserCanceledErr);
}
