// Reading the host's image and writing the result: every form of picture must come out exactly as the engine
// and the renderer make it in one piece.
#include "tests/plugin/ModuleFixture.h"
#include "tests/plugin/NightDocument.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <windows.h>

namespace {

using host::PlaneCounts;
using Progress = std::vector<std::pair<int32_t, int32_t>>;

class ImageRun : public ModuleFixture {
protected:
    // Runs with all parameters from a script and expects success.
    void RunWith(const ParameterSet &parameters) {
        filterHost.script = ScriptOf(parameters);
        const host::RunResult result = Run();
        EXPECT_EQ(result.code, kNoError) << "in selector " << result.failedSelector;
        EXPECT_TRUE(boxes.empty());
        ExpectCleanHost();
    }
};

ParameterSet Parameters() {
    ParameterSet set = kDefaultParameters;
    set.threshold = 90;
    set.length = 80;
    set.intensity = 90;
    return set;
}

} // namespace

// Three output tiles across and two down, and input tiles that fit nothing: no seam may show.
TEST_F(ImageRun, TilesNeverShow) {
    const host::Document before = MakeNight({.width = 4100, .height = 2060, .lights = 12});
    filterHost.document = before;
    filterHost.settings.tileWidth = 1000;
    filterHost.settings.tileHeight = 777;
    ParameterSet set = Parameters();
    set.effectType = kHyperStar;
    RunWith(set);
    EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, set)), 0);
    EXPECT_EQ(filterHost.log.progress.back(), (std::pair{7, 7}));
}

TEST_F(ImageRun, TilesOfUnknownSizeAre1024) {
    filterHost.document = host::MakeDocument(1500, 1030, 8, 1, false);
    filterHost.settings.tileWidth = 300;
    filterHost.settings.tileHeight = 0;
    RunWith(Parameters());
    std::vector<host::Rectangle> read;
    for (const host::AdvanceCall &call : filterHost.log.advances)
        if (!host::IsEmpty(call.in))
            read.push_back(call.in);
    EXPECT_EQ(
        read,
        (std::vector<host::Rectangle>{
            {0, 0, 1024, 1024}, {1024, 0, 1500, 1024}, {0, 1024, 1024, 1030}, {1024, 1024, 1500, 1030}}));
}

// One plane a request, input and output never together, the mask with the first plane only.
TEST_F(ImageRun, RequestsAreOnePlaneEach) {
    filterHost.document = MakeNight({.hasTransparency = true});
    filterHost.document.mask.assign(240 * 180, 255);
    filterHost.settings.tileWidth = filterHost.settings.tileHeight = 1000;
    RunWith(Parameters());
    const std::vector<host::AdvanceCall> &calls = filterHost.log.advances;
    ASSERT_EQ(calls.size(), 8u);
    for (int16_t i = 0; i < 8; ++i) {
        const host::AdvanceCall &call = calls[static_cast<size_t>(i)];
        SCOPED_TRACE(i);
        EXPECT_EQ(call.selector, kSelectorStart);
        EXPECT_EQ(host::IsEmpty(call.in), i >= 4);
        EXPECT_EQ(host::IsEmpty(call.out), i < 4);
        EXPECT_EQ(host::IsEmpty(call.mask), i != 0);
        EXPECT_EQ(i < 4 ? call.inLo : call.outLo, i % 4);
        EXPECT_EQ(i < 4 ? call.inHi : call.outHi, i % 4);
    }
}

TEST_F(ImageRun, TransparencyIsReadAndWrittenOnlyWhereTheHostTakesIt) {
    host::Document before = MakeNight({.hasTransparency = true});
    for (int32_t y = 0; y < 180; ++y)
        for (int32_t x = 0; x < 120; ++x)
            host::SetSample(before, 3, x, y, 0); // the left half is not there: no star may start in it
    const host::Document expected = FilteredNight(before, Parameters());
    EXPECT_NE(DifferentSamples(expected, FilteredNight(MakeNight({.hasTransparency = true}), Parameters())),
              0);
    for (const PlaneCounts counts : {PlaneCounts::kLayer, PlaneCounts::kProtected,
                                     PlaneCounts::kProtectedFlatOutput, PlaneCounts::kAllZero}) {
        SCOPED_TRACE(static_cast<int>(counts));
        filterHost.document = before;
        filterHost.settings.planeCounts = counts;
        RunWith(Parameters());
        EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
        const bool isProtected =
            counts == PlaneCounts::kProtected || counts == PlaneCounts::kProtectedFlatOutput;
        EXPECT_EQ(filterHost.log.advances.back().outHi, isProtected ? 2 : 3);
        host::ClearLog(filterHost);
    }
}

TEST_F(ImageRun, SelectionMaskLimitsTheLights) {
    host::Document before = MakeNight({.colourPlanes = 1});
    for (int32_t i = 0; i < 240 * 180; ++i)
        before.mask.push_back(i % 240 < 120 ? 255 : 0);
    filterHost.document = before;
    filterHost.settings.rowPadding = 9;
    filterHost.settings.tileWidth = 50;
    RunWith(Parameters());
    EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, Parameters())), 0);
    host::Document unselected = before;
    unselected.mask.clear();
    EXPECT_NE(DifferentSamples(filterHost.document, FilteredNight(unselected, Parameters())), 0);
}

// Some hosts send an 8-bit mode with a greater depth, or no depth at all.
TEST_F(ImageRun, DepthDecidesBeforeTheMode) {
    for (const int32_t colours : {1, 3}) {
        const host::Document before = MakeNight({.depth = 16, .colourPlanes = colours});
        const host::Document expected = FilteredNight(before, Parameters());
        filterHost.document = before;
        filterHost.settings.imageMode = static_cast<int16_t>(colours == 1 ? 1 : 3);
        RunWith(Parameters());
        EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
        filterHost.document = before;
        filterHost.settings.imageMode = std::nullopt;
        filterHost.settings.depthField = 0;
        RunWith(Parameters());
        EXPECT_EQ(DifferentSamples(filterHost.document, expected), 0);
        filterHost.settings.depthField = std::nullopt;
    }
}

TEST_F(ImageRun, ProgressOfTwoTilesHasATotalOfThree) {
    filterHost.document = host::MakeDocument(2049, 1000, 8, 3, false); // long to look for lights
    for (std::vector<uint8_t> &plane : filterHost.document.planes)
        for (size_t i = 0; i < plane.size(); ++i)
            plane[i] = static_cast<uint8_t>(i * i % 8191 % 59);
    RunWith(kDefaultParameters);
    EXPECT_GT(filterHost.log.progress.front().second, 3) << "none while the lights are looked for";
    Progress tail = filterHost.log.progress;
    tail.erase(tail.begin(), tail.end() - std::min<std::ptrdiff_t>(6, std::ssize(tail)));
    EXPECT_EQ(tail, (Progress{{0, 3}, {1, 3}, {1, 3}, {2, 3}, {2, 3}, {3, 3}}));
    for (const auto &[done, total] : filterHost.log.progress)
        EXPECT_GT(total, 0);
}

TEST_F(ImageRun, OddShapesRunThrough) {
    const std::pair<int32_t, int32_t> shapes[] = {{1, 1}, {2, 1}, {1, 2049}, {32767, 3}, {3, 32767}};
    for (const auto &[width, height] : shapes)
        for (const int32_t depth : {8, 32}) {
            SCOPED_TRACE(::testing::Message() << width << " x " << height << " at " << depth);
            filterHost.document = host::MakeDocument(width, height, depth, 3, false);
            host::SetSample(filterHost.document, 1, width / 2, height / 2, depth == 8 ? 255 : 1);
            const host::Document before = filterHost.document;
            RunWith(Parameters());
            EXPECT_EQ(DifferentSamples(filterHost.document, FilteredNight(before, Parameters())), 0);
        }
}

// The warning is shown once for a run, and the run goes on with the ordinary planes.
TEST_F(ImageRun, ExtraPlanesAreReportedAndIgnored) {
    struct Case {
        int16_t layerMasks, invertedMasks, nonLayer, transparency;
        PlaneCounts counts;
        const char *text;
    };
    constexpr const char *kMasks =
        "Plugin does not currently support the use of layer masks or non-layer planes.";
    constexpr const char *kTransparency =
        "Plugin does not currently support more than one transparency plane.";
    const Case cases[] = {
        {1, 0, 0, 1, PlaneCounts::kLayer, kMasks},        {0, 1, 0, 1, PlaneCounts::kLayer, kMasks},
        {0, 0, 1, 1, PlaneCounts::kLayer, kMasks},        {0, 0, 1, 0, PlaneCounts::kFlat, kMasks},
        {0, 0, 0, 2, PlaneCounts::kLayer, kTransparency}, {0, 0, 0, 1, PlaneCounts::kLayer, nullptr},
        {0, 0, 0, 0, PlaneCounts::kFlat, nullptr},        {0, 0, 0, 0, PlaneCounts::kFlatAsLayer, nullptr},
        {1, 0, 0, 1, PlaneCounts::kProtected, kMasks}};
    const host::Document before = MakeNight({.hasTransparency = true});
    const host::Document expected = FilteredNight(before, Parameters());
    for (const Case &c : cases) {
        SCOPED_TRACE(&c - cases);
        boxes.clear();
        filterHost.document = before;
        filterHost.document.planes.resize(5, before.planes[0]);
        filterHost.settings.planeCounts = c.counts;
        filterHost.settings.layerMasks = c.layerMasks;
        filterHost.settings.invertedLayerMasks = c.invertedMasks;
        filterHost.settings.extraNonLayerPlanes = c.nonLayer;
        filterHost.settings.adjustRecord = [&](int16_t, FilterRecord &record) {
            if (c.counts == PlaneCounts::kLayer)
                record.inTransparencyMask = c.transparency;
        };
        filterHost.script = ScriptOf(Parameters());
        EXPECT_EQ(Run().code, kNoError);
        EXPECT_EQ(boxes.size(), c.text ? 1u : 0u);
        if (c.text && !boxes.empty()) {
            EXPECT_EQ(boxes[0].text, c.text);
            EXPECT_EQ(boxes[0].title, "Error: Unsupported feature.");
            EXPECT_EQ(boxes[0].style, 16u | MB_SETFOREGROUND);
        }
        EXPECT_EQ(filterHost.document.planes[0], expected.planes[0]);
        EXPECT_EQ(filterHost.document.planes[4], before.planes[0]);
        ExpectCleanHost();
    }
}
