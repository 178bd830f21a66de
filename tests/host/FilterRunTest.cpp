#include "tests/host/PlayedFilter.h"

#include <windows.h>

#include <stdexcept>
#include <thread>

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

TEST(FilterRun, FailuresAndAbsencesByName) {
    PlayedHost played([](int16_t, FilterRecord &record, intptr_t *) -> int16_t {
        EXPECT_EQ(record.progressProc, nullptr);
        EXPECT_EQ(record.platformData, nullptr);
        EXPECT_EQ(record.handleProcs->recoverSpaceProc, nullptr);
        return kNoError;
    });
    played.filterHost.settings.absent = {"progressProc", "platformData", "recoverSpaceProc"};
    EXPECT_EQ(played.Run(), kNoError);
    host::CloseHost(played.filterHost);

    for (const bool andLater : {false, true}) {
        PlayedHost failing({});
        failing.filterHost.settings.failures["advanceState"] = {2, andLater, -36};
        failing.filterHost.settings.failures["newProc"] = {1, andLater, kMemFullErr};
        failing.ViolationsOf([&](FilterRecord &record) {
            AskFor(record, {}, {});
            EXPECT_EQ(record.advanceState(), kNoError);
            EXPECT_EQ(record.advanceState(), -36);
            EXPECT_EQ(record.advanceState(), andLater ? -36 : kNoError);
            EXPECT_EQ(record.handleProcs->newProc(5), nullptr);
            HostHandle second = record.handleProcs->newProc(5);
            EXPECT_EQ(second == nullptr, andLater);
            if (second)
                record.handleProcs->disposeProc(second);
        });
        EXPECT_EQ(failing.filterHost.log.calls.at("advanceState"), 3);
    }
    PlayedHost unknown({});
    unknown.filterHost.settings.absent = {"progresProc"};
    EXPECT_THROW(unknown.Open(), std::invalid_argument);
    unknown.filterHost.settings.absent = {};
    unknown.filterHost.settings.failures["noSuchProc"] = {};
    EXPECT_THROW(unknown.Open(), std::invalid_argument);
}

TEST(FilterRun, RecordsAreGuarded) {
    PlayedHost played({});
    EXPECT_TRUE(played.ViolationsOf([](FilterRecord &) {}).empty());
    played.ViolationsOf(
        [](FilterRecord &record) { reinterpret_cast<uint8_t *>(&record)[sizeof(record)] = 0; });
    EXPECT_TRUE(played.HasViolation("behind the end of the record"));
    played.ViolationsOf([](FilterRecord &record) { std::thread([&] { record.abortProc(); }).join(); });
    EXPECT_TRUE(played.HasViolation("another thread"));
    host::CloseHost(played.filterHost);

    PlayedHost silent([](int16_t, FilterRecord &, intptr_t *) { return int16_t{0x1234}; });
    silent.filterHost.settings.resultOnEntry = 0x1234;
    EXPECT_EQ(silent.Run(), 0x1234);
    EXPECT_TRUE(silent.HasViolation("left the result word alone"));
}

TEST(FilterRun, CallbacksOutsideASelectorAreFoundOut) {
    int32_t (*sizeOf)(HostHandle) = nullptr;
    PlayedHost played({});
    played.ViolationsOf([&](FilterRecord &record) { sizeOf = record.handleProcs->getSizeProc; });
    sizeOf(nullptr);
    EXPECT_TRUE(played.HasViolation("outside a selector"));
}

TEST(Handles, MisuseIsReported) {
    struct Case {
        const char *expected;
        std::function<void(const HandleProcs &procs)> action;
    };
    const Case cases[] = {
        {"leaked 1 handle", [](const HandleProcs &procs) { procs.newProc(10); }},
        {"not alive",
         [](const HandleProcs &procs) {
             HostHandle handle = procs.newProc(10);
             procs.disposeProc(handle);
             procs.disposeProc(handle);
         }},
        {"disposeProc of null", [](const HandleProcs &procs) { procs.disposeProc(nullptr); }},
        {"behind the end of a handle",
         [](const HandleProcs &procs) {
             HostHandle handle = procs.newProc(10);
             procs.lockProc(handle, 1)[10] = 0;
             procs.disposeProc(handle);
         }},
        {"newProc of 0 bytes", [](const HandleProcs &procs) { procs.newProc(0); }},
    };
    for (const Case &c : cases) {
        PlayedHost played({});
        const auto violations =
            played.ViolationsOf([&](FilterRecord &record) { c.action(*record.handleProcs); });
        ASSERT_EQ(violations.size(), 1u) << c.expected;
        EXPECT_NE(violations[0].find(c.expected), std::string::npos) << violations[0];
    }
}

TEST(Handles, GrowMoveAndKeepTheirBytes) {
    PlayedHost played({});
    char *before = nullptr;
    played.Open();
    played.ViolationsOf([&](FilterRecord &record) {
        const HandleProcs &procs = *record.handleProcs;
        HostHandle handle = procs.newProc(4);
        EXPECT_EQ(static_cast<uint8_t>((*handle)[0]), 0xCD) << "new handles are not zero";
        std::copy_n("abcd", 4, procs.lockProc(handle, 0));
        procs.unlockProc(handle);
        EXPECT_EQ(procs.setSizeProc(handle, 6), kNoError);
        EXPECT_EQ(procs.getSizeProc(handle), 6);
        EXPECT_EQ(std::string(*handle, 4), "abcd");
        record.parameters = handle;
        before = *handle;
    });
    HostHandle handle = host::Record(played.filterHost).parameters;
    EXPECT_NE(*handle, before) << "an unlocked handle stayed where it was";
    EXPECT_EQ(host::HandleBytes(played.filterHost, handle).size(), 6u);
    EXPECT_EQ(host::CountLive(played.filterHost).handles, 1);
}

// What becomes of `parameters` and the data word from one run to the next.
TEST(Handles, BetweenRuns) {
    struct Case {
        bool forgets, restores;
    };
    for (const Case c : {Case{false, false}, {true, false}, {false, true}}) {
        HostHandle first = nullptr;
        int run = 0;
        PlayedHost played([&](int16_t selector, FilterRecord &record, intptr_t *data) -> int16_t {
            if (selector != kSelectorPrepare)
                return kNoError;
            if (run++ == 0) {
                first = record.parameters = record.handleProcs->newProc(3);
                std::copy_n("xyz", 3, *first);
                *data = reinterpret_cast<intptr_t>(record.handleProcs->newProc(1));
                return kNoError;
            }
            EXPECT_EQ(record.parameters == nullptr, c.forgets);
            EXPECT_EQ(*data == 0, c.forgets);
            const bool isKept = record.parameters && std::string(*record.parameters, 3) == "xyz";
            EXPECT_EQ(isKept, !c.forgets);
            return kNoError;
        });
        played.filterHost.settings.forgetHandles = c.forgets;
        played.filterHost.settings.restoreHandlesAsBytes = c.restores;
        played.Run();
        played.Run();
        EXPECT_EQ(host::Record(played.filterHost).parameters == first, !c.forgets && !c.restores);
        EXPECT_TRUE(played.filterHost.log.violations.empty());
    }
}
