// Blending: the modes on working pixels, the source's tint, and the samples of every depth. Expected integers
// were worked out by a script of their own.
#include "render/PixelBlender.h"
#include "render/SourceTint.h"
#include "render/StampLayer.h"
#include "tests/render/RenderFixture.h"

#include <limits>

namespace {

constexpr uint32_t kOne = kFractionOne;

struct ScreenCase {
    Tint source;
    WorkingPixel before, precise, fast;
};

TEST_F(RenderTest, ScreenBlendToTheInteger) {
    const ScreenCase cases[] = {
        {{{kOne, kOne, kOne}, kOne},
         {{16777215, 16777215, 16777215}},
         {{16777214, 16777214, 16777214}},
         {{16759809, 16759809, 16759809}}},
        {{{0, 0, 0}, kOne}, {{1, 2, 3}}, {{0, 1, 2}}, {{0, 0, 0}}},
        {{{kOne, 0x80000000, 0x1000}, kOne},
         {{0, 0x123456, 16777215}},
         {{16777214, 8985130, 16777214}},
         {{16759809, 8977884, 16759809}}},
        {{{0xC0000000, 0x30000000, 0x70000000}, 9000000},
         {{1000000, 8000000, 16000000}},
         {{7347667, 8882837, 16182407}},
         {{7337019, 8877696, 16174272}}},
        {{{0xC0000000, 0x30000000, 0x70000000}, 40000},
         {{1000000, 8000000, 16000000}},
         {{1028210, 8003922, 16000809}},
         {{1022451, 7998120, 15990480}}},
    };
    for (const ScreenCase &c : cases)
        for (const bool precise : {true, false}) {
            gPreciseMode = precise;
            WorkingPixel pixel = c.before;
            BlendPixel(kBlendScreen, c.source, &pixel);
            for (int i = 0; i < 3; ++i)
                EXPECT_EQ(pixel.channel[i], (precise ? c.precise : c.fast).channel[i]) << precise << i;
        }
}

TEST_F(RenderTest, NormalAndAddBlends) {
    const Tint source{{kOne, 0x80000000, 0}, 0x80000000};
    WorkingPixel pixel{{1000000, 2000000, 16777215}};
    BlendPixel(kBlendNormal, source, &pixel);
    EXPECT_EQ(pixel.channel[0], 499999u + 2147483647u);
    EXPECT_EQ(pixel.channel[1], 999999u + 1073741824u);
    EXPECT_EQ(pixel.channel[2], 8388607u);
    pixel = {{1000000, 3500000000u, 16777215}};
    BlendPixel(kBlendAdd, source, &pixel);
    EXPECT_EQ(pixel.channel[0], 1000000u + 2147483647u);
    EXPECT_EQ(pixel.channel[1], 278774528u); // past 2^32: not clamped
    EXPECT_EQ(pixel.channel[2], 16777215u);
}

TEST_F(RenderTest, UnknownBlendModeIsReportedAndChangesNothing) {
    WorkingPixel pixel{{1, 2, 3}};
    BlendPixel(0x73637272, Tint{{kOne, kOne, kOne}, kOne}, &pixel);
    EXPECT_EQ(pixel.channel[0] + pixel.channel[1] + pixel.channel[2], 6u);
    const auto reports = TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].record.line, 249u);
    EXPECT_EQ(reports[0].record.kind, kDebugMessage);
    EXPECT_EQ(reports[0].title, "Debug:  Unexpected Error");
    EXPECT_EQ(reports[0].message, "Blending mode not implemented.");
}

TEST_F(RenderTest, SaturationMovesEveryChannelFromTheOldColour) {
    const struct {
        uint32_t before[3];
        int32_t saturation;
        uint32_t after[3];
    } cases[] = {
        {{3000000000u, 2000000001u, 1000000000u}, 0, {3000000000u, 2000000001u, 1000000000u}},
        {{3000000000u, 2000000001u, 1000000000u}, 30, {4294967294u, 2000000004u, 0}},
        {{3000000000u, 2000000001u, 1000000000u}, -30, {2700000000u, 2000000001u, 1300000000u}},
        {{3000000000u, 2000000001u, 1000000000u}, -100, {2000000000u, 2000000001u, 2000000000u}},
        {{3000000000u, 2900000001u, 2800000000u}, 2, {3030000000u, 2900000001u, 2770000000u}},
        {{10, 11, 13}, -37, {10, 11, 13}},
        {{4294967294u, 0, 0}, 100, {4294967294u, 0, 0}},
    };
    for (const auto &c : cases) {
        LightSource source = MakeSource(0, 0);
        source.Red = c.before[0];
        source.Green = c.before[1];
        source.Blue = c.before[2];
        const Tint tint = MakeSourceTint(source, c.saturation, 77);
        EXPECT_EQ(tint.value, 77u);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(tint.channel[i], c.after[i]) << c.saturation << " channel " << i;
    }
}

// Lays one pixel: the forced centre of a flare without rings.
constexpr uint32_t kHalfAlpha = 0x800000; // strength whose alpha is a half

class DepthTest : public RenderTest {
protected:
    void LayInto(TestImage *image, const IntRect &target, const StampPlace &place, const Tint &tint) {
        const StampContext context = MakeStampContext(DefaultSettings());
        uint32_t none = 0;
        const ValueTable values{&none, 1, {}};
        const FlareStamp dot{true, 0, 0, 0, kHalfAlpha, true};
        BlendColor color;
        LayFlare({context, image->buffer, IntersectRects(target, image->buffer.bounds), noAbort, &color}, dot,
                 values, place, tint);
    }
    void Lay(TestImage *image, const Tint &tint) { LayInto(image, image->buffer.bounds, {5, 5, 0, 0}, tint); }
    const Tint white{{kOne, kOne, kOne}, kOne};
    const Tint red{{kOne, 0, 0}, kOne};
};

TEST_F(DepthTest, HalfWhiteOnBlackIsHalfGreyInEveryDepth) {
    const IntRect bounds{3, 2, 13, 12};
    TestImage bytes(kModeRgb8, 1, bounds), words(kModeRgb16, 0, bounds), floats(kModeRgb32, 0, bounds);
    Lay(&bytes, white);
    Lay(&words, white);
    Lay(&floats, white);
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(bytes.At<uint8_t>(plane, 5, 5), 127);
        EXPECT_EQ(words.At<uint16_t>(plane, 5, 5), 16384);
        EXPECT_NEAR(floats.At<float>(plane, 5, 5), 0.5f, 1e-6f);
        EXPECT_EQ(bytes.At<uint8_t>(plane, 6, 5), 0);
    }
    EXPECT_EQ(bytes.At<uint8_t>(3, 5, 5), 0); // transparency is not a colour
}

TEST_F(DepthTest, GreyTakesTheMeanOfTheBlendedChannels) {
    const IntRect bounds{0, 0, 8, 8};
    TestImage bytes(kModeGray8, 0, bounds), words(kModeGray16, 1, bounds), floats(kModeGray32, 0, bounds);
    Lay(&bytes, red);
    Lay(&words, red);
    Lay(&floats, red);
    EXPECT_EQ(bytes.At<uint8_t>(0, 5, 5), 42); // a third of 127.5
    EXPECT_EQ(words.At<uint16_t>(0, 5, 5), 5461);
    EXPECT_EQ(words.At<uint16_t>(1, 5, 5), 0);
    EXPECT_NEAR(floats.At<float>(0, 5, 5), 1.0f / 6.0f, 1e-6f);
}

TEST_F(DepthTest, WhiteStaysWhite) {
    const IntRect bounds{0, 0, 8, 8};
    for (const bool precise : {true, false}) {
        gPreciseMode = precise;
        TestImage bytes(kModeRgb8, 0, bounds), words(kModeRgb16, 0, bounds);
        for (int plane = 0; plane < 3; ++plane) {
            bytes.At<uint8_t>(plane, 5, 5) = 255;
            words.At<uint16_t>(plane, 5, 5) = 32768;
        }
        Lay(&bytes, red);
        Lay(&words, red);
        EXPECT_EQ(bytes.At<uint8_t>(0, 5, 5), 255);
        EXPECT_EQ(bytes.At<uint8_t>(2, 5, 5), 255);
        EXPECT_GE(words.At<uint16_t>(1, 5, 5), precise ? 32768 : 32730);
    }
}

TEST_F(DepthTest, FloatHighlightsAreKeptAndOddValuesBecomeNumbers) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float kept[] = {1.0f, 1.5f, 70000.0f, infinity};
    const float replaced[] = {std::numeric_limits<float>::quiet_NaN(), -infinity, -3.0f};
    for (const int32_t mode : {kModeRgb32, kModeGray32}) {
        TestImage image(mode, 0, {0, 0, 8, 8});
        for (const float value : kept) {
            image.At<float>(0, 5, 5) = value;
            Lay(&image, red);
            EXPECT_EQ(image.At<float>(0, 5, 5), value);
        }
        for (const float value : replaced) {
            image.At<float>(0, 5, 5) = value;
            Lay(&image, white);
            EXPECT_NEAR(image.At<float>(0, 5, 5), 0.5f, 1e-6f); // counts as black
        }
    }
}

TEST_F(DepthTest, EntriesOutsideTheTargetOrTooFaintAreLeft) {
    TestImage image(kModeRgb32, 0, {0, 0, 8, 8});
    const auto before = image.Bytes();
    LayInto(&image, {0, 0, 5, 8}, {5, 5, 0, 0}, white);
    LayInto(&image, {6, 0, 8, 8}, {5, 5, 0, 0}, white);
    LayInto(&image, {-10, -10, 18, 18}, {-1, 5, 0, 0}, white);
    LayInto(&image, image.buffer.bounds, {0x7FFFFFFF, -0x7FFFFFFF, 0, 0}, white);
    Tint faint = white;
    faint.value = 4192000; // a strength of 8187, just below half the floor
    LayInto(&image, image.buffer.bounds, {5, 5, 0, 0}, faint);
    EXPECT_EQ(image.Bytes(), before);
    faint.value = 4196000; // 8195, just above
    LayInto(&image, image.buffer.bounds, {5, 5, 0, 0}, faint);
    EXPECT_GT(image.At<float>(0, 5, 5), 0.0f);
}

// The vector form of the blend against the portable one: every sample of the integer depths under many
// strengths, rows of every length at the very end of their room.
template <typename Sample> void CompareBlends(int32_t depth, int32_t values, bool precise, int32_t planes) {
    std::mt19937 random(static_cast<uint32_t>(values) + planes);
    std::vector<BlendColor> colors(16);
    for (BlendColor &color : colors)
        color = {static_cast<uint32_t>(random()),
                 {static_cast<uint32_t>(random()), random() % 2 ? 0 : 0xFFFFFFFEu, 77}};
    for (int32_t from = 0; from < values; from += 61) {
        const int32_t count = 1 + static_cast<int32_t>(random() % 70);
        std::vector<Sample> rows[2][3];
        uint32_t strengths[80];
        uint16_t states[80];
        for (uint32_t &strength : strengths)
            strength = static_cast<uint32_t>(random()) >> random() % 20;
        for (uint16_t &state : states)
            state = static_cast<uint16_t>(random() % colors.size());
        for (int which = 0; which < 2; ++which) {
            BlendPiece piece{strengths,
                             from % 2 ? states : nullptr,
                             count,
                             count + from % 3,
                             colors.data(),
                             kOne,
                             5000,
                             8191,
                             precise,
                             planes,
                             {}};
            for (int32_t plane = 0; plane < planes; ++plane) {
                rows[which][plane].resize(static_cast<size_t>(piece.room));
                for (int32_t i = 0; i < piece.room; ++i)
                    rows[which][plane][i] = static_cast<Sample>((from + i + plane * 7) % values);
                piece.samples[plane] = rows[which][plane].data();
            }
            (which ? Avx2Path() : &kPortablePath)->blend[depth](piece);
        }
        for (int32_t plane = 0; plane < planes; ++plane)
            ASSERT_EQ(rows[0][plane], rows[1][plane]) << from << " count " << count << " planes " << planes;
    }
}

TEST_F(DepthTest, VectorFormIsThePortableOne) {
    if (!Avx2Path())
        GTEST_SKIP() << "no AVX2 here";
    for (const bool precise : {true, false})
        for (const int32_t planes : {1, 3})
            for (int round = 0; round < 20; ++round) {
                ASSERT_NO_FATAL_FAILURE(CompareBlends<uint8_t>(0, 256, precise, planes));
                ASSERT_NO_FATAL_FAILURE(CompareBlends<uint16_t>(1, 40000, precise, planes));
                ASSERT_NO_FATAL_FAILURE(CompareBlends<float>(2, 2, precise, planes));
            }
}

// Colours of few, equal, zero and largest channels, where quotients are whole or nearly so.
TEST_F(DepthTest, VectorColorsAreThePortableOnes) {
    if (!Avx2Path())
        GTEST_SKIP() << "no AVX2 here";
    std::mt19937 random(8);
    const auto fraction = [&] {
        const uint32_t some[] = {0, 1, 2, 3, kOne, 0xFFFFFFFFu, 0x80000000u, static_cast<uint32_t>(random())};
        return random() % 2 ? some[random() % 8] : static_cast<uint32_t>(random()) >> random() % 32;
    };
    std::vector<RainbowFactors> factors(300);
    std::vector<BlendColor> colors[2] = {std::vector<BlendColor>(300), std::vector<BlendColor>(300)};
    for (int round = 0; round < 2000; ++round) {
        for (RainbowFactors &triple : factors)
            triple = round % 3 ? RainbowFactors{{fraction(), fraction(), fraction()}}
                               : RainbowFactors{{kOne, kOne, kOne}};
        const uint32_t tint[] = {fraction(), fraction(), fraction()};
        kPortablePath.makeColors({factors.data(), 300, tint, round % 2 == 0}, colors[0].data());
        Avx2Path()->makeColors({factors.data(), 300, tint, round % 2 == 0}, colors[1].data());
        ASSERT_EQ(memcmp(colors[0].data(), colors[1].data(), 300 * sizeof(BlendColor)), 0) << round;
    }
}

// Strengths of up to half a byte's step change no byte, whatever its value and the colour; the next do.
TEST_F(DepthTest, FaintStrengthsLeaveBytesAlone) {
    constexpr uint32_t kInverses[] = {0, 1, 0x7FFFFFFF, 0xFFFFFF00, 0xFFFFFFFE};
    std::vector<uint8_t> row(256), before(256);
    for (int32_t i = 0; i < 256; ++i)
        row[i] = before[i] = static_cast<uint8_t>(i);
    const auto blend = [&row](uint32_t strength, uint32_t inverse, int32_t planes) {
        // Each of the two products takes one off.
        const std::vector<uint32_t> values(256, strength + 2);
        const BlendColor color = {0xFFFFFFFFu, {inverse, inverse, inverse}};
        kPortablePath.blend[0]({values.data(),
                                nullptr,
                                256,
                                256,
                                &color,
                                0xFFFFFFFFu,
                                0,
                                1,
                                true,
                                planes,
                                {row.data(), row.data(), row.data()}});
    };
    for (const int32_t planes : {1, 3})
        for (const uint32_t inverse : kInverses)
            for (uint32_t strength = 1; strength <= 32896; strength += strength < 32800 ? 97 : 1) {
                blend(strength, inverse, planes);
                ASSERT_EQ(row, before) << strength << " " << inverse;
            }
    blend(32900, 0, 1);
    EXPECT_EQ(row[0], 1);
}

// The short forms of the conversions, for every working value and every sample.
TEST_F(DepthTest, ShortFormsOfConversionsAreExact) {
    for (uint32_t working = 0; working <= kFullIntensity; ++working) {
        ASSERT_EQ(((working << 8) - working + 8388735) >> 24, WorkingTo8(working));
        ASSERT_EQ((working + 256) >> 9, WorkingTo16(working));
    }
    for (int32_t sample = 0; sample <= 32768; ++sample)
        ASSERT_EQ(static_cast<uint32_t>((sample << 9) + ((16384 - sample) >> 15)),
                  WorkingFrom16(static_cast<uint16_t>(sample)));
}

// Whatever shows under a tint has at least the least visible value.
TEST_F(DepthTest, LeastVisibleValueIsTheLeast) {
    std::mt19937 random(4);
    for (int round = 0; round < 2000; ++round) {
        gPreciseMode = round % 2;
        const uint32_t largest = static_cast<uint32_t>(random()) >> random() % 8;
        const uint32_t value = static_cast<uint32_t>(random()) >> random() % 8;
        const uint32_t least = LeastVisibleValue(largest, value, 8191);
        if (least != 0xFFFFFFFFu) {
            EXPECT_GE(Mul(largest, Mul(value, least)), 8191u);
        }
        EXPECT_LT(Mul(largest, Mul(value, least - 1)), 8191u);
    }
}

} // namespace
