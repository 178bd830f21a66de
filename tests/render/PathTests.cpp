// The two forms of the inner loops against each other, and the short cuts that both take. What they blend is
// held against the yardsticks in tests/reference.
#include "render/rows/PixelBlender.h"
#include "render/stamp/StampLayer.h"
#include "tests/render/RenderFixture.h"

namespace {

constexpr uint32_t kOne = kFractionOne;

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

TEST_F(RenderTest, VectorFormIsThePortableOne) {
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
TEST_F(RenderTest, VectorColorsAreThePortableOnes) {
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
TEST_F(RenderTest, FaintStrengthsLeaveBytesAlone) {
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

// Whatever shows under a tint has at least the least visible value.
TEST_F(RenderTest, LeastVisibleValueIsTheLeast) {
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
