// The light source table against the yardstick: adding, merging, ranking, hiding, text.
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceGrid.h"
#include "engine/table/LightSourceText.h"
#include "tests/reference/Cases.h"
#include "tests/reference/detect/ReferenceTable.h"
#include "tests/support/RecordingDiag.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstring>

namespace {

using cases::Random;

const std::atomic<uint8_t> kNoCancel{0};

// Puts a table of its own in the global one's place for the length of a test.
class Tables : public testing::Test {
protected:
    Tables() : before(gLightSourceTable) { gLightSourceTable = &global; }
    ~Tables() override {
        FreeTableRecords(&global);
        gLightSourceTable = before;
    }
    void TearDown() override { EXPECT_TRUE(TakeReports().empty()); }

    LightSourceTable global{};

private:
    LightSourceTable *before;
};

// Brightness has no meaning before the ranking.
void ExpectSameRecords(const LightSourceTable &product, const reference::Table &expected, bool ranked) {
    ASSERT_EQ(product.Count, expected.size());
    for (uint32_t i = 0; i < product.Count; ++i) {
        LightSource record = product.records[i];
        if (!ranked)
            record.Brightness = expected[i].Brightness;
        ASSERT_EQ(std::memcmp(&record, &expected[i], sizeof record), 0) << "record " << i;
    }
}

struct NewSource {
    LightSourcePosition position;
    float radiusSquared;
    uint32_t red, green, blue;
    bool enabled;
};

NewSource PickNewSource(Random *random, int32_t extent) {
    const auto quarter = [&] { return static_cast<int32_t>(random->Chance(60) ? 0 : random->Pick(0, 3)); };
    const auto level = [&] {
        return random->Chance(5) ? 0u
                                 : static_cast<uint32_t>(random->Pick(0, 0xFFFFFFFF)) >> random->Pick(0, 24);
    };
    const double radius = random->Real(0, random->OneOf({1.5, 4.0, 9.0}));
    double squared = radius * radius;
    if (random->Chance(30))
        squared = std::floor(squared) + random->OneOf({0.0, 0.5, 0.49999997, 0.49, 0.51});
    return {{static_cast<int32_t>(random->Pick(-extent, extent)), quarter(),
             static_cast<int32_t>(random->Pick(-extent, extent)), quarter()},
            static_cast<float>(squared),
            level(),
            level(),
            level(),
            random->Chance(80)};
}

void AddToBoth(const NewSource &s, LightSourceTable *product, reference::Table *expected) {
    ASSERT_EQ(AddLightSource(product, s.position, s.radiusSquared, s.red, s.green, s.blue, s.enabled),
              kNoError);
    reference::Add(expected, s.position, s.radiusSquared, s.red, s.green, s.blue, s.enabled);
}

// Worker tables made by the add rule, with a grid from some point on, also one for which memory runs out,
// merged through an analysis image with unselected and transparent pixels.
TEST_F(Tables, Merging) {
    for (int i = 0; i < cases::Count(150); ++i) {
        Random random(61, i);
        reference::Analysis analysis{
            {0, 0, 60, 60}, random.Chance(30) ? 1.0 : random.Real(1.001, 27.4), 0, {}};
        for (int j = 0; j < 3600; ++j)
            analysis.samples.push_back(
                {1, 1, 1, random.Chance(10) ? 0u : 1u,
                 random.OneOf({0xFFFFFFFFu, 0xFFFFFFFFu, 0x7FFFFFFFu, 0x7FFFFFFEu, 0u})});
        const AnalysisImage image{analysis.bounds, analysis.scale, 0, analysis.samples.data(),
                                  analysis.samples.size() * sizeof(PixelSample)};
        reference::Table expected;
        FreeTableRecords(&global);
        for (int worker = 0; worker < 3; ++worker) {
            LightSourceTable product{};
            reference::Table own;
            const int64_t gridAt = random.Pick(-20, 30);
            for (int j = 0; j < 40; ++j) {
                FailAllocation(random.Chance(10) ? 3 : 0, true);
                if (j == gridAt)
                    AttachLightSourceGrid({0, 0, 60, 50}, random.OneOf({1, 8, 50}), &product);
                FailAllocation(0, false);
                ASSERT_NO_FATAL_FAILURE(AddToBoth(PickNewSource(&random, 62), &product, &own));
            }
            ASSERT_EQ(MergeWorkerTable(product, image, kNoCancel), kNoError);
            ASSERT_NO_FATAL_FAILURE(ExpectSameRecords(product, own, false)) << "case " << i;
            reference::Merge(own, analysis, &expected);
            FreeTableRecords(&product);
            ASSERT_NO_FATAL_FAILURE(ExpectSameRecords(global, expected, false)) << "case " << i;
        }
    }
}

TEST_F(Tables, HidingAndText) {
    for (int i = 0; i < cases::Count(60); ++i) {
        Random random(62, i);
        reference::Table expected;
        FreeTableRecords(&global);
        for (int j = 0; j < 30; ++j)
            ASSERT_NO_FATAL_FAILURE(AddToBoth(PickNewSource(&random, 40), &global, &expected));
        RankLightSources(kNoCancel);
        reference::Rank(&expected);
        for (int j = 0; j < 60; ++j) {
            const auto mode = static_cast<int32_t>(random.Pick(-1, 4));
            const auto x = static_cast<int32_t>(random.Pick(-60, 60)),
                       y = static_cast<int32_t>(random.Pick(-60, 60));
            if (random.Chance(70)) {
                const double zoom = random.OneOf({25.0, 37.5, 66.7, 100.0, 150.0, 400.0});
                ASSERT_EQ(SetLightSourceStateAt(x, y, zoom, mode),
                          reference::SetStateAt(&expected, x, y, zoom, mode));
            } else {
                const IntRect rect{x, y, x + static_cast<int32_t>(random.Pick(0, 30)),
                                   y + static_cast<int32_t>(random.Pick(0, 30))};
                ASSERT_EQ(SetLightSourceStatesInRect(rect, mode),
                          reference::SetStatesInRect(&expected, rect, mode));
            }
            ASSERT_NO_FATAL_FAILURE(ExpectSameRecords(global, expected, true))
                << "case " << i << " step " << j;
        }
        const std::vector<std::string> text = reference::FormatTable(expected);
        for (size_t j = 0; j < text.size(); ++j) {
            const char *line = FormatLightSourceTableLine(j == 0);
            ASSERT_NE(line, nullptr);
            ASSERT_EQ(text[j], line);
        }
        ASSERT_EQ(FormatLightSourceTableLine(false), nullptr);
    }
}

} // namespace
