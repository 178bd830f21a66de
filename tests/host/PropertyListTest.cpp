#include "host/base/ByteStream.h"
#include "host/module/EnableInfo.h"

#include <gtest/gtest.h>

using host::Bytes;

namespace {

Bytes MakeProperty(const char *key, Bytes data) {
    Bytes property = {'M', 'I', 'B', '8'};
    for (int i = 3; i >= 0; i--)
        property.push_back(static_cast<uint8_t>(key[i]));
    host::AppendNumber(property, uint32_t{0});
    host::AppendNumber(property, static_cast<uint32_t>(data.size()));
    host::AppendBytes(property, data.data(), data.size());
    return property;
}

std::vector<Bytes> GoodProperties() {
    return {MakeProperty("kind", {'M', 'F', 'B', '8'}),
            MakeProperty("name", {4, 'N', 'a', 'm', 'e', 0, 0, 0}),
            MakeProperty("catg", {3, 'C', 'a', 't', 0, 0, 0, 0}),
            MakeProperty("vers", {0, 0, 4, 0}),
            MakeProperty("8664", {'M', 'a', 'i', 'n', 0, 0, 0, 0}),
            MakeProperty("mode", {0x50, 0, 0, 0}),
            MakeProperty("enbl", {'t', 'r', 'u', 'e', 0, 0, 0, 0}),
            MakeProperty("ms32", {7, 0, 0, 0, 0, 1, 0, 0}),
            MakeProperty("fici", Bytes(28, 5))};
}

Bytes MakeList(const std::vector<Bytes> &properties) {
    Bytes list = {1, 0, 0, 0, 0, 0};
    host::AppendNumber(list, static_cast<uint32_t>(properties.size()));
    for (const Bytes &property : properties)
        host::AppendBytes(list, property.data(), property.size());
    return list;
}

std::string WhyRefused(const Bytes &list) {
    host::Pipl pipl;
    std::string why;
    EXPECT_FALSE(host::ParsePipl(list.data(), list.size(), &pipl, &why));
    EXPECT_TRUE(pipl.properties.empty()) << "the output was touched";
    return why;
}

} // namespace

TEST(PropertyList, EveryFieldIsRead) {
    const Bytes list = MakeList(GoodProperties());
    host::Pipl pipl;
    std::string why;
    ASSERT_TRUE(host::ParsePipl(list.data(), list.size(), &pipl, &why)) << why;
    EXPECT_EQ(pipl.name, "Name");
    EXPECT_EQ(pipl.category, "Cat");
    EXPECT_EQ(pipl.entryName64, "Main");
    EXPECT_EQ(pipl.modes, 0x50000000u);
    EXPECT_EQ(pipl.enableInfo, "true");
    EXPECT_EQ(pipl.mostRows, 7);
    EXPECT_EQ(pipl.mostColumns, 256);
    EXPECT_TRUE(pipl.hasFilterCases);
    EXPECT_EQ(pipl.filterCases[6].flags, 5);
}

TEST(PropertyList, WhatHostsRejectIsRejected) {
    struct Case {
        size_t property;
        Bytes replacement;
        const char *why;
    };
    const Case cases[] = {
        {0, MakeProperty("kind", {'M', 'A', 'B', '8'}), "not a filter"},
        {1, MakeProperty("name", {0, 0, 0, 0}), "name or a category"},
        {1, MakeProperty("name", {3, 'a', 'b', 'c'}), "name or a category"}, // no zero behind
        {1, MakeProperty("name", {200, 'a', 'b', 0}), "name or a category"},
        {2, MakeProperty("catx", {1, 'a', 0, 0}), "name or a category"},
        {3, MakeProperty("vers", {1, 0, 4, 0}), "newer filter interface"},
        {4, MakeProperty("8664", {'M', 'a', 'i', 'n'}), "no 64-bit entry"}, // not ended
        {4, MakeProperty("wx86", {'M', 0, 0, 0}), "no 64-bit entry"},
        {5, MakeProperty("mode", {0x50, 0, 0}), "multiple of 4"},
    };
    for (const Case &c : cases) {
        std::vector<Bytes> properties = GoodProperties();
        properties[c.property] = c.replacement;
        EXPECT_NE(WhyRefused(MakeList(properties)).find(c.why), std::string::npos) << c.why;
    }
    for (const size_t at : {2, 9}) { // version, high byte of the count
        Bytes wild = MakeList(GoodProperties());
        wild[at] = 0xFF;
        EXPECT_NE(WhyRefused(wild), "");
    }
}

// An RGB image of 16 bits, 300 wide and 200 high.
TEST(PropertyList, EnableInfoIsEvaluated) {
    const host::ImageFacts image = {11, 16, 300, 200, 3};
    const std::pair<std::string, std::optional<bool>> cases[] = {
        {"in (PSHOP_ImageMode, RGBMode, RGB48Mode)", true},
        {"IN(pshop_imagemode,rgbmode,GRAYSCALEMODE)", false},
        {"PSHOP_ImageMode == RGB48Mode && PSHOP_ImageDepth==16", true},
        {"PSHOP_ImageWidth<300 || PSHOP_ImageHeight >= 200", true},
        {"PSHOP_ImageWidth<300 || PSHOP_ImageHeight > 200", false},
        {"!(PSHOP_ImageDepth != 16) && PSHOP_ImageWidth <= 300", true},
        {"false || true && false", false},
        {"PSHOP_IsTargetVisible && !PSHOP_IsTargetSection", true},
        {"", {}},
        {"true true", {}},
        {"in(PSHOP_ImageMode, RGBMode", {}},
        {"PSHOP_Unheard == 1 || true", {}},
        {"12345678901234567890", {}},
        {std::string(100000, '!') + "true", {}},
        {std::string(100000, '('), {}},
    };
    for (const auto &[text, value] : cases)
        EXPECT_EQ(host::EvaluateEnableInfo(text, image), value) << text.substr(0, 80);
}

TEST(PropertyList, ModesExpressionAndSizeDecide) {
    struct Case {
        int32_t mode, depth;
        std::optional<uint32_t> modes;
        const char *text;
        int32_t most;
        bool isTaken;
    };
    const Case cases[] = {
        {3, 8, 0x50000000, "", 0, true},         {3, 8, 0x40000000, "", 0, false},
        {3, 8, 0x40000000, "true", 0, false},    {3, 8, 0x50000000, "false", 0, false},
        {3, 8, 0x50000000, "nonsense", 0, true}, {11, 16, 0x50000000, "", 0, false},
        {11, 16, 0x50100000, "", 0, true},       {11, 16, 0x50000000, "true", 0, true},
        {16, 32, 0x50008000, "", 0, true},       {16, 32, std::nullopt, "", 0, false},
        {3, 8, std::nullopt, "", 0, true},       {3, 8, 0x50000000, "", 299, false},
        {3, 8, 0x50000000, "", 300, true},
    };
    for (const Case &c : cases) {
        host::Pipl pipl;
        pipl.modes = c.modes;
        pipl.enableInfo = c.text;
        pipl.mostColumns = c.most;
        std::string why;
        EXPECT_EQ(host::TakesImage(pipl, {c.mode, c.depth, 300, 200, 3}, &why), c.isTaken)
            << c.mode << c.text;
        const std::string told = "it does not take " + std::to_string(c.depth) + "-bit RGB images";
        EXPECT_EQ(why.find(told) == 0, !c.isTaken) << why;
    }
}
