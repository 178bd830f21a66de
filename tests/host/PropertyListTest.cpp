#include "host/base/ByteStream.h"
#include "host/filter/Descriptor.h"
#include "host/module/PiPL.h"

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
    const Bytes good = MakeList(GoodProperties());
    for (size_t length = 0; length < good.size(); length++)
        EXPECT_NE(WhyRefused(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(length))), "")
            << length;
    for (const size_t at : {2, 9}) { // version, high byte of the count
        Bytes wild = good;
        wild[at] = 0xFF;
        EXPECT_NE(WhyRefused(wild), "");
    }
}

TEST(Descriptors, PackAndUnpack) {
    host::Descriptor script;
    script.values = {host::BooleanValue('bool', true),
                     host::IntegerValue('numb', -7),
                     host::FloatValue('real', 0.5),
                     host::UnitFloatValue('angl', kUnitAngle, 22.5),
                     host::EnumeratedValue('kind', 'kTyp', 'kTw2'),
                     host::DataValue('data', "abc", 3)};
    const std::vector<uint8_t> bytes = host::PackDescriptor(script);
    host::Descriptor unpacked;
    ASSERT_TRUE(host::UnpackDescriptor(bytes.data(), bytes.size(), &unpacked));
    EXPECT_EQ(unpacked, script);
    host::Descriptor untouched = script;
    for (size_t length = 0; length < bytes.size(); length++)
        EXPECT_FALSE(host::UnpackDescriptor(bytes.data(), length, &untouched)) << length;
    std::vector<uint8_t> wild = bytes;
    wild[4] = wild[5] = wild[6] = wild[7] = 0xFF; // count
    EXPECT_FALSE(host::UnpackDescriptor(wild.data(), wild.size(), &untouched));
    EXPECT_EQ(untouched, script);
}
