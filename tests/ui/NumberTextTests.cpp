#include "ui/fields/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>
#include <utility>

namespace {

constexpr int32_t kNothing = -123456;

int32_t Parse(const char *text, int decimals) {
    int32_t value = kNothing;
    const bool parsed = ParseScaledNumber(text, decimals, &value);
    EXPECT_EQ(parsed, value != kNothing) << text;
    return value;
}

std::string Format(int32_t value, int decimals) {
    char text[33];
    EXPECT_TRUE(FormatScaledNumber(value, decimals, text, sizeof text));
    return text;
}

TEST(NumberText, TruncatesTowardZeroWithoutBinaryFractions) {
    const struct {
        const char *text;
        int32_t tenths, whole;
    } cases[] = {{"7.25", 72, 7},      {"7.2", 72, 7},   {"7.29", 72, 7}, {"0.3", 3, 0},
                 {"-12.7", -127, -12}, {"-0.99", -9, 0}, {"1.1", 11, 1},  {"2.3", 23, 2},
                 {"90", 900, 90},      {"+5", 50, 5},    {".5", 5, 0},    {"5.", 50, 5},
                 {"-.5", -5, 0},       {"007.5", 75, 7}, {" 3.4", 34, 3}, {"0.0999", 0, 0},
                 {"12abc", 120, 12},   {"1.2.3", 12, 1}};
    for (const auto &c : cases) {
        EXPECT_EQ(Parse(c.text, 1), c.tenths) << c.text;
        EXPECT_EQ(Parse(c.text, 0), c.whole) << c.text;
    }
}

TEST(NumberText, EveryTenthComesBackAsItIsShown) {
    for (int32_t tenths = -900; tenths <= 900; ++tenths) {
        const std::string text = Format(tenths, 1);
        char expected[33];
        snprintf(expected, sizeof expected, "%.*f", 1, tenths / 10.0);
        ASSERT_EQ(text, expected);
        ASSERT_EQ(Parse(text.c_str(), 1), tenths) << text;
        ASSERT_EQ(Parse((text + "9").c_str(), 1), tenths) << "one more digit never rounds up";
    }
    EXPECT_EQ(Format(INT32_MIN, 0), "-2147483648");
    char small[4] = "abc";
    EXPECT_FALSE(FormatScaledNumber(-100, 0, small, sizeof small));
    EXPECT_STREQ(small, "");
}

TEST(NumberText, LocalePlaysNoPart) {
    for (const char *locale : {"German_Germany.1252", "C"}) {
        setlocale(LC_ALL, locale);
        EXPECT_EQ(Parse("-7,25", 1), -72);
        EXPECT_EQ(Parse("7.25", 1), 72);
        EXPECT_EQ(Format(72, 1), "7.2");
    }
}

TEST(NumberText, HugeNumbersStayWithinTheLimitAndTextWithoutANumberChangesNothing) {
    const std::pair<std::string, int32_t> cases[] = {{"1e9", kScaledNumberLimit},
                                                     {"-1e999999999999", -kScaledNumberLimit},
                                                     {"1e-999999999999", 0},
                                                     {"12345e-3", 12},
                                                     {"2.5E1", 25},
                                                     {"-" + std::string(5000, '9'), -kScaledNumberLimit},
                                                     {std::string(5000, '0') + "7", 7}};
    for (const auto &[text, value] : cases)
        EXPECT_EQ(Parse(text.c_str(), 0), value) << text;
    for (const char *text : {"", " ", "-", ".", ",", "+-5", "-.", "e9", "x12", "inf", "nan", "\xE4"})
        EXPECT_EQ(Parse(text, 1), kNothing) << text;
}

} // namespace
