// Memory that is refused at any allocation of a run, once or from then on: a known code, nothing told twice,
// nothing left held, no time lost, and the run after it is a normal one.
#include "tests/plugin/ModuleFixture.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ostream>
#include <set>

namespace {

using Seconds = std::chrono::duration<double>;

struct Refusing {
    const char *name;
    bool withDialog, andLater;
};

void PrintTo(const Refusing &refusing, std::ostream *to) {
    *to << refusing.name;
}

class Memory : public ModuleFixture, public ::testing::WithParamInterface<Refusing> {
protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        before = MakeNight({.width = 92, .height = 116, .hasTransparency = true, .lights = 3});
        before.mask.assign(92 * 116, 255);
        expected = FilteredNight(before, kDefaultParameters);
        filterHost.settings.playInfo = GetParam().withDialog ? kPlayDisplay : kPlayDontDisplay;
        OpenMainDialogs(IDOK, 30);
        RunRefusing(0); // what is made once is made now
        normal = RunRefusing(0);
        held = Held();
    }

    // From a host that knows nothing of earlier runs.
    double RunRefusing(int64_t n) {
        host::CloseHost(filterHost);
        boxes.clear();
        filterHost.document = before;
        filterHost.script = ScriptOf(kDefaultParameters);
        Open();
        FailModuleAllocation(n, GetParam().andLater);
        const auto begin = std::chrono::steady_clock::now();
        code = Run().code;
        const Seconds taken = std::chrono::steady_clock::now() - begin;
        allocations = ModuleAllocations();
        FailModuleAllocation(0, false);
        return taken.count();
    }

    void ExpectToldOnce() {
        const std::set<std::string> texts = {"Could not allocate memory for an image.",
                                             "Could not allocate memory for an image mask.",
                                             "Low memory.  Check image - some effects may not be rendered."};
        EXPECT_LE(boxes.size(), 1u);
        for (const host::ShownBox &box : boxes)
            EXPECT_TRUE(texts.contains(box.text)) << box.text;
    }

    void ExpectNormalRun() {
        RunRefusing(0);
        EXPECT_EQ(code, kNoError);
        EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
        EXPECT_TRUE(boxes.empty());
        ExpectCleanHost();
        EXPECT_EQ(Held(), held);
    }

    host::Document before, expected;
    int16_t code = 0;
    int64_t allocations = 0;
    double normal = 0; // seconds
    HeldObjects held = {};
};

} // namespace

TEST_P(Memory, MayRunOutAtAnyAllocation) {
    const char *wanted = std::getenv("BRILLATRIX_TEST_SEED");
    const int64_t count = allocations;
    const int64_t step = std::getenv("BRILLATRIX_TEST_LONG") ? 1 : count / (GetParam().withDialog ? 3 : 20);
    const int64_t first = 1 + (wanted ? std::atoll(wanted) : 0) % step;
    int failures = 0;
    for (int64_t n = first; n <= count; n += step) {
        SCOPED_TRACE(::testing::Message() << "allocation " << n);
        double taken = RunRefusing(n);
        failures += code != kNoError;
        if (code != kNoError) {
            EXPECT_EQ(DifferentSamples(filterHost.document, before), 0);
        }
        ExpectToldOnce();
        ExpectCleanHost();
        // The machine may be busy, once.
        for (int again = 0; again < 3 && taken > 10 * normal; ++again)
            taken = std::min(taken, RunRefusing(n));
        EXPECT_LE(taken, 10 * normal);
        ExpectNormalRun();
    }
    EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(All, Memory,
                         ::testing::Values(Refusing{"silent", false, false},
                                           Refusing{"silent_for_good", false, true},
                                           Refusing{"dialog", true, false},
                                           Refusing{"dialog_for_good", true, true}),
                         [](const auto &info) { return std::string(info.param.name); });
