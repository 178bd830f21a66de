#include "host/options/Options.h"
#include "host/options/Parameters.h"
#include "tests/host/TestFiles.h"
#include "tests/support/ParameterKeys.h"

using host::Options;

static Options ParseGood(std::vector<std::wstring> arguments) {
    arguments.insert(arguments.end(), {L"in.png", L"out.png"});
    Options options;
    std::string why;
    EXPECT_TRUE(host::ParseOptions(arguments, &options, &why)) << why;
    return options;
}

static std::string ParseBad(const std::vector<std::wstring> &arguments) {
    Options options;
    std::string why;
    EXPECT_FALSE(host::ParseOptions(arguments, &options, &why));
    EXPECT_TRUE(options.photo.empty()) << "the output was touched";
    return why;
}

TEST(Options, ValuesReachTheirKeys) {
    const auto percent = [](uint32_t key, double value) {
        return host::UnitFloatValue(key, kUnitPercent, value);
    };
    const std::tuple<std::wstring, std::wstring, host::DescriptorValue> cases[] = {
        {L"--threshold", L"0", percent(kKeyThreshold, 0)},
        {L"--saturation", L"-5", percent(kKeySaturation, -5)},
        {L"--length", L"12.5", percent(kKeyLength, 12.5)},
        {L"--sharpness", L"100", percent(kKeySpikeSharpness, 100)},
        {L"--saturation", L"1e2", percent(kKeySaturation, 100)},
        {L"--rainbow", L"+7", percent(kKeyRainbowIntensity, 7)},
        {L"--rainbow-frequency", L"10.7", percent(kKeyRainbowFrequency, 10.7)},
        {L"--secondary", L"3", percent(kKeySecondaryIntensity, 3)},
        {L"--flare", L"4", percent(kKeySoftFlareBrightness, 4)},
        {L"--angle", L"22.46", host::UnitFloatValue(kKeyAngle, kUnitAngle, 22.46)},
        {L"--points", L"32", host::IntegerValue(kKeyNumberOfPoints, 32)},
        {L"--effect", L"Hollywood Star", host::EnumeratedValue(kKeyEffect, kTypeEffect, kHollywoodStar)},
    };
    for (const auto &[option, value, expected] : cases) {
        EXPECT_EQ(ParseGood({option, value}).values, std::vector{expected});
        EXPECT_EQ(ParseGood({option + L"=" + value}).values, std::vector{expected});
    }
    EXPECT_EQ(ParseGood({L"--effects-only"}).values,
              std::vector{host::BooleanValue(kKeyOutputSpikesOnly, true)});
}

TEST(Options, EffectsByAnyName) {
    const std::pair<const char *, uint32_t> cases[] = {
        {"efT0", kStandardStar}, {"EFT6", kStarBurst},       {"Standard Star", kStandardStar},
        {"north", kNorthStar},   {"HYPER-STAR", kHyperStar}, {"Religious Cross", kReligiousCross},
        {"vector", kVectorStar}, {"cross", kReligiousCross}, {"hollywood", kHollywoodStar},
        {"Burst", kStarBurst},   {"star_burst", kStarBurst}};
    for (const auto &[name, expected] : cases) {
        uint32_t code = 0;
        EXPECT_TRUE(host::FindEffect(name, &code)) << name;
        EXPECT_EQ(code, expected) << name;
    }
    for (const char *name : {"", "star", "efT7", "efT", "efT00", "standardstarr", "holly wood star x"}) {
        uint32_t code = 7;
        EXPECT_FALSE(host::FindEffect(name, &code)) << name;
        EXPECT_EQ(code, 7u);
    }
}

TEST(Options, FilesAndFlags) {
    EXPECT_TRUE(ParseGood({L"--quiet"}).isQuiet);
    Options dashes;
    std::string why;
    ASSERT_TRUE(host::ParseOptions({L"--lights-csv", L"l.csv", L"in.png"}, &dashes, &why)) << why;
    EXPECT_EQ(dashes.out, L"");
    EXPECT_TRUE(WantsDiagnostics(dashes) && !WantsDebugPictures(dashes) && !OpensWindows(dashes));
    ASSERT_TRUE(host::ParseOptions({L"--quiet", L"--", L"--photo", L"-"}, &dashes, &why)) << why;
    EXPECT_EQ(dashes.photo, L"--photo");
    EXPECT_EQ(dashes.out, L"-");
    ASSERT_TRUE(host::ParseOptions({L"--about"}, &dashes, &why));
    EXPECT_EQ(dashes.task, host::ProgramTask::kAbout);
    ASSERT_TRUE(host::ParseOptions({L"batch", L"--json", L"a.png"}, &dashes, &why)) << why;
    EXPECT_EQ(dashes.batch.json, L"-") << "a photo's name was taken for the file's";
}

TEST(Options, WrongUsageIsExplained) {
    const std::pair<std::vector<std::wstring>, const char *> cases[] = {
        {{}, "PHOTO and OUT are missing"},
        {{L"a.png"}, "OUT is missing"},
        {{L"--lights"}, "PHOTO is missing"},
        {{L"--dialog", L"a.png"}, "OUT is missing"},
        {{L"--lights-csv=", L"a"}, "--lights-csv needs a value"},
        {{L"--lights-csv", L"l", L"--lights-svg", L"l", L"a"}, "the same file"},
        {{L"a", L"b", L"c"}, "not also \"c\""},
        {{L"--nonsense", L"a", L"b"}, "unknown option --nonsense"},
        {{L"-x", L"a", L"b"}, "unknown option -x"},
        {{L"--quiet=1", L"a", L"b"}, "--quiet takes no value"},
        {{L"a", L"b", L"--angle"}, "--angle needs a value"},
        {{L"--angle", L"x", L"a", L"b"}, "--angle needs a number"},
        {{L"--angle", L"nan", L"a", L"b"}, "--angle needs a number"},
        {{L"--angle", L"0x10", L"a", L"b"}, "--angle needs a number"},
        {{L"--angle", L"5 5", L"a", L"b"}, "--angle needs a number"},
        {{L"--angle", L"1e9", L"a", L"b"}, "--angle needs a number -90..90"},
        {{L"--angle", L"90.5", L"a", L"b"}, "--angle goes from -90 to 90"},
        {{L"--points", L"33", L"a", L"b"}, "--points goes from 1 to 32"},
        {{L"--quality", L"0", L"a", L"b"}, "--quality goes from 1 to 100, not \"0\""},
        {{L"--depth", L"12", L"a", L"b"}, "--depth takes one of 8, 16, 32"},
        {{L"--compression=zip", L"a", L"b"}, "none, lzw, deflate, packbits, jpeg"},
        {{L"--treshold", L"5", L"a", L"b"}, "did you mean --threshold?"},
        {{L"--jobs", L"2", L"a", L"b"}, "--jobs does not go with this command"},
        {{L"inplace", L"--overwrite", L"a"}, "--overwrite does not go with this command"},
        {{L"inplace"}, "PHOTO is missing"},
        {{L"a", L""}, "OUT is empty"},
        {{L"--angle=", L"a", L"b"}, "--angle needs a value"},
        {{L"--points", L"6.5", L"a", L"b"}, "--points needs a whole number"},
        {{L"--effect", L"sparkle", L"a", L"b"}, "there is no effect \"sparkle\""},
        {{L"--roi", L"1,2,3", L"a", L"b"}, "--roi needs"},
        {{L"--roi", L"1,2,3,4,5", L"a", L"b"}, "--roi needs"},
        {{L"--roi", L"5,0,5,9", L"a", L"b"}, "--roi needs"},
        {{L"--mask=", L"a", L"b"}, "--mask needs a value"},
        {{L"--filter", L"f", L"--plugin", L"p", L"a", L"b"}, "exclude each other"},
        {{L"--filter", L"f", L"--lights", L"a"}, "lights are those of the star filter"},
        {{L"--filter", L"f", L"--points", L"6", L"a", L"b"}, "parameters are those of the star filter"},
        {{L"--filter", L"f", L"--last", L"a", L"b"}, "parameters are those of the star filter"},
        {{L"--last", L"--settings", L"s.sss", L"a", L"b"}, "exclude each other"},
    };
    for (const auto &[arguments, why] : cases)
        EXPECT_NE(ParseBad(arguments).find(why), std::string::npos) << why;
}

TEST(HostMemory, IsKeptAndDamageIsNoticed) {
    const TestFolder folder;
    SetEnvironmentVariableW(L"BRILLATRIX_HOST_FOLDER", folder.path.c_str());
    host::HostMemory memory, read;
    std::string why;
    EXPECT_TRUE(host::LoadHostMemory(&read, &why)) << "no file yet";
    EXPECT_FALSE(read.lastParameters.has_value());
    memory.lastParameters = host::DescribeParameters(kDefaultParameters);
    host::Descriptor block;
    block.values = {host::DataValue('PBlk', "block", 5)};
    memory.registry = {{"a", block, true}, {"b", block, false}};
    ASSERT_TRUE(host::SaveHostMemory(memory, &why)) << why;
    ASSERT_TRUE(host::LoadHostMemory(&read, &why)) << why;
    EXPECT_EQ(read.lastParameters, memory.lastParameters);
    ASSERT_EQ(read.registry.size(), 1u) << "only persistent entries are kept";
    EXPECT_EQ(read.registry[0].key, "a");
    EXPECT_EQ(read.registry[0].descriptor, block);
    const host::Bytes whole = ReadBytes(folder.File(L"Registry.bin"));
    for (size_t length = 0; length < whole.size(); length++) {
        WriteBytes(folder.File(L"Registry.bin"),
                   host::Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)));
        EXPECT_FALSE(host::LoadHostMemory(&read, &why)) << length;
    }
    SetEnvironmentVariableW(L"BRILLATRIX_HOST_FOLDER", nullptr);
}
