#include "tests/host/PlayedFilter.h"

#include <algorithm>

using host::Descriptor;

static Descriptor MakeScript() {
    Descriptor script;
    script.values = {host::BooleanValue('bool', true),
                     host::IntegerValue('numb', -7),
                     host::FloatValue('real', 0.5),
                     host::UnitFloatValue('angl', kUnitAngle, 22.5),
                     host::EnumeratedValue('kind', 'kTyp', 'kTw2'),
                     host::DataValue('data', "abc", 3)};
    return script;
}

TEST(Descriptors, PackAndUnpack) {
    const Descriptor script = MakeScript();
    const std::vector<uint8_t> bytes = host::PackDescriptor(script);
    Descriptor unpacked;
    ASSERT_TRUE(host::UnpackDescriptor(bytes.data(), bytes.size(), &unpacked));
    EXPECT_EQ(unpacked, script);
    Descriptor untouched = script;
    for (size_t length = 0; length < bytes.size(); length++)
        EXPECT_FALSE(host::UnpackDescriptor(bytes.data(), length, &untouched)) << length;
    std::vector<uint8_t> wild = bytes;
    wild[4] = wild[5] = wild[6] = wild[7] = 0xFF; // count
    EXPECT_FALSE(host::UnpackDescriptor(wild.data(), wild.size(), &untouched));
    EXPECT_EQ(untouched, script);
}

// Reads the script inside a run: `action` gets the open reader and the key array; returns what close says.
static int16_t ReadScript(PlayedHost &played, std::vector<FourCharCode> keys,
                          const std::function<void(const ReadDescriptorProcs &procs, ReadDescriptor reader,
                                                   std::vector<FourCharCode> &keys)> &action) {
    int16_t verdict = 1;
    keys.push_back(0);
    played.ViolationsOf([&](FilterRecord &record) {
        PIDescriptorParameters &parameters = *record.descriptorParameters;
        const ReadDescriptorProcs &procs = *parameters.readDescriptorProcs;
        ReadDescriptor reader = procs.openReadDescriptorProc(parameters.descriptor, keys.data());
        ASSERT_NE(reader, nullptr);
        action(procs, reader, keys);
        verdict = procs.closeReadDescriptorProc(reader);
    });
    return verdict;
}

static std::vector<FourCharCode> AllKeys(const ReadDescriptorProcs &procs, ReadDescriptor reader) {
    std::vector<FourCharCode> found;
    FourCharCode key, type;
    int32_t flags;
    while (procs.getKeyProc(reader, &key, &type, &flags))
        found.push_back(key);
    return found;
}

TEST(Descriptors, ReadingGivesEveryValueByItsGetter) {
    PlayedHost played({});
    played.filterHost.script = MakeScript();
    const int16_t verdict = ReadScript(
        played, {'numb', 'real'},
        [](const ReadDescriptorProcs &procs, ReadDescriptor reader, std::vector<FourCharCode> &keys) {
            FourCharCode key, type, code;
            int32_t flags, integer;
            HostBoolean boolean;
            double real;
            ASSERT_TRUE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_EQ(procs.getBooleanProc(reader, &boolean), kNoError);
            EXPECT_EQ(boolean, 1);
            ASSERT_TRUE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_EQ(procs.getIntegerProc(reader, &integer), kNoError);
            EXPECT_EQ(integer, -7);
            EXPECT_EQ(procs.getPinnedIntegerProc(reader, 0, 9, &integer), 2);
            EXPECT_EQ(integer, 0);
            ASSERT_TRUE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_EQ(procs.getFloatProc(reader, &real), kNoError);
            EXPECT_EQ(real, 0.5);
            ASSERT_TRUE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_EQ(type, kTypeUnitFloat);
            EXPECT_EQ(procs.getUnitFloatProc(reader, &code, &real), kNoError);
            EXPECT_EQ(code, kUnitAngle);
            EXPECT_EQ(real, 22.5);
            ASSERT_TRUE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_EQ(type, kTypeEnumerated);
            EXPECT_EQ(procs.getEnumeratedProc(reader, &code), kNoError);
            EXPECT_EQ(code, uint32_t{'kTw2'});
            ASSERT_TRUE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_FALSE(procs.getKeyProc(reader, &key, &type, &flags));
            EXPECT_EQ(keys, (std::vector<FourCharCode>{kKeyFound, kKeyFound, 0}));
        });
    EXPECT_EQ(verdict, kNoError);
    EXPECT_TRUE(played.filterHost.log.violations.empty());
}

TEST(Descriptors, VerdictsOfClose) {
    using host::MissingKeys;
    const auto readAll = [](const ReadDescriptorProcs &procs, ReadDescriptor reader,
                            std::vector<FourCharCode> &) { AllKeys(procs, reader); };
    const auto readWrongly = [](const ReadDescriptorProcs &procs, ReadDescriptor reader,
                                std::vector<FourCharCode> &) {
        FourCharCode key, type;
        int32_t flags, integer = 5;
        procs.getKeyProc(reader, &key, &type, &flags);
        EXPECT_EQ(procs.getIntegerProc(reader, &integer), kParamErr) << "the first key is a boolean";
        EXPECT_EQ(integer, 5);
        AllKeys(procs, reader);
    };
    PlayedHost played({});
    played.filterHost.script = MakeScript();
    EXPECT_EQ(ReadScript(played, {'numb', 'none'}, readAll), kErrMissingParameter);
    EXPECT_EQ(ReadScript(played, {'numb'}, readWrongly), kParamErr);
    played.filterHost.settings.missingKeys = MissingKeys::kNeverReported;
    EXPECT_EQ(ReadScript(played, {'numb', 'none'}, readAll), kNoError);
    played.filterHost.settings.closeReadResult = -36;
    EXPECT_EQ(ReadScript(played, {'numb'}, readAll), -36);
}

TEST(Descriptors, OrderAndTypesCanBeOdd) {
    PlayedHost played({});
    played.filterHost.script = MakeScript();
    std::vector<FourCharCode> straight, shuffled, types;
    const auto take = [&](std::vector<FourCharCode> *to) {
        return [to](const ReadDescriptorProcs &procs, ReadDescriptor reader, std::vector<FourCharCode> &) {
            *to = AllKeys(procs, reader);
        };
    };
    ReadScript(played, {}, take(&straight));
    played.filterHost.settings.shuffleSeed = 5;
    ReadScript(played, {}, take(&shuffled));
    EXPECT_NE(straight, shuffled);
    EXPECT_TRUE(std::is_permutation(straight.begin(), straight.end(), shuffled.begin(), shuffled.end()));

    played.filterHost.settings.shuffleSeed = 0;
    played.filterHost.settings.enumerationsGiveTheirOwnType = true;
    ReadScript(played, {},
               [&](const ReadDescriptorProcs &procs, ReadDescriptor reader, std::vector<FourCharCode> &) {
                   FourCharCode key, type;
                   int32_t flags;
                   while (procs.getKeyProc(reader, &key, &type, &flags))
                       types.push_back(type);
               });
    EXPECT_EQ(types[4], uint32_t{'kTyp'});
}

TEST(Descriptors, WhatIsWrittenIsRecorded) {
    PlayedHost played([](int16_t selector, FilterRecord &record, intptr_t *) -> int16_t {
        PIDescriptorParameters &parameters = *record.descriptorParameters;
        const WriteDescriptorProcs &procs = *parameters.writeDescriptorProcs;
        if (selector != kSelectorFinish)
            return kNoError;
        const double real = 0.5, angle = 22.5;
        WriteDescriptor writer = procs.openWriteDescriptorProc();
        EXPECT_EQ(procs.putBooleanProc(writer, 'bool', 1), kNoError);
        EXPECT_EQ(procs.putIntegerProc(writer, 'numb', -7), kNoError);
        EXPECT_EQ(procs.putFloatProc(writer, 'real', &real), kNoError);
        EXPECT_EQ(procs.putUnitFloatProc(writer, 'angl', kUnitAngle, &angle), kNoError);
        EXPECT_EQ(procs.putEnumeratedProc(writer, 'kind', 'kTyp', 'kTw2'), kNoError);
        record.handleProcs->disposeProc(parameters.descriptor);
        return procs.closeWriteDescriptorProc(writer, &parameters.descriptor);
    });
    played.filterHost.script = MakeScript();
    ASSERT_EQ(played.Run(), kNoError);
    Descriptor expected = MakeScript();
    host::EraseValue(expected, 'data');
    ASSERT_TRUE(played.filterHost.recorded.has_value());
    EXPECT_EQ(*played.filterHost.recorded, expected);
    EXPECT_TRUE(played.filterHost.log.violations.empty());
    EXPECT_EQ(host::CountLive(played.filterHost).handles, 0);
}

TEST(Descriptors, ReadersAndWritersLeftOpenAreReported) {
    PlayedHost played({});
    played.filterHost.script = MakeScript();
    played.ViolationsOf([](FilterRecord &record) {
        PIDescriptorParameters &parameters = *record.descriptorParameters;
        FourCharCode none = 0;
        parameters.readDescriptorProcs->openReadDescriptorProc(parameters.descriptor, &none);
        parameters.writeDescriptorProcs->openWriteDescriptorProc();
    });
    EXPECT_TRUE(played.HasViolation("leaked 1 descriptor reader"));
    EXPECT_TRUE(played.HasViolation("leaked 1 descriptor writer"));
    EXPECT_FALSE(played.filterHost.recorded.has_value());
    int16_t verdict = 0;
    played.ViolationsOf([&](FilterRecord &record) {
        const ReadDescriptorProcs &procs = *record.descriptorParameters->readDescriptorProcs;
        FourCharCode none = 0;
        ReadDescriptor reader = procs.openReadDescriptorProc(record.descriptorParameters->descriptor, &none);
        procs.closeReadDescriptorProc(reader);
        verdict = procs.closeReadDescriptorProc(reader);
    });
    EXPECT_EQ(verdict, kParamErr);
    EXPECT_TRUE(played.HasViolation("not open"));
}

template <typename Suite>
static const Suite *Acquire(FilterRecord &record, const char *name, int32_t version) {
    const void *suite = nullptr;
    EXPECT_EQ(record.sSPBasic->AcquireSuite(name, version, &suite), 0) << name;
    return static_cast<const Suite *>(suite);
}

// A block kept under a key, as a filter does it, in one run and found in the next.
TEST(Suites, ABlockIsKeptBetweenRuns) {
    constexpr char kKey[] = "a-key";
    PlayedHost played({});
    for (const bool isSecond : {false, true}) {
        const auto violations = played.ViolationsOf([&](FilterRecord &record) {
            const auto *registry = Acquire<DescriptorRegistrySuite>(record, kDescriptorRegistrySuiteName, 1);
            const auto *action = Acquire<ActionDescriptorSuite>(record, kActionDescriptorSuiteName, 2);
            ActionDescriptor descriptor = nullptr;
            EXPECT_EQ(registry->Get(kKey, &descriptor), kNoError);
            EXPECT_EQ(descriptor != nullptr, isSecond);
            if (isSecond) {
                char data[8] = {};
                int32_t length = 0;
                FourCharCode type = 0;
                EXPECT_EQ(action->GetType(descriptor, 'PBlk', &type), kNoError);
                EXPECT_EQ(type, kTypeRawData);
                EXPECT_EQ(action->GetDataLength(descriptor, 'PBlk', &length), kNoError);
                EXPECT_EQ(length, 5);
                EXPECT_EQ(action->GetData(descriptor, 'PBlk', data), kNoError);
                EXPECT_STREQ(data, "block");
                EXPECT_EQ(action->GetDataLength(descriptor, 'none', &length), kParamErr);
            } else {
                EXPECT_EQ(action->Make(&descriptor), kNoError);
                EXPECT_EQ(action->PutData(descriptor, 'PBlk', 5, "block"), kNoError);
                EXPECT_EQ(registry->Register(kKey, descriptor, 1), kNoError);
            }
            EXPECT_EQ(action->Free(descriptor), kNoError);
            record.sSPBasic->ReleaseSuite(kActionDescriptorSuiteName, 2);
            record.sSPBasic->ReleaseSuite(kDescriptorRegistrySuiteName, 1);
        });
        EXPECT_TRUE(violations.empty()) << violations[0];
    }
    ASSERT_EQ(played.filterHost.registry.size(), 1u);
    EXPECT_TRUE(played.filterHost.registry[0].isPersistent);
}

TEST(Suites, MisuseIsReported) {
    PlayedHost played({});
    played.filterHost.settings.refusedSuites = {kErrorSuiteName};
    played.ViolationsOf([](FilterRecord &record) {
        const void *suite = &record;
        EXPECT_EQ(record.sSPBasic->AcquireSuite(kErrorSuiteName, 1, &suite), kSuiteNotFound);
        EXPECT_EQ(record.sSPBasic->AcquireSuite(kPropertySuiteName, 9, &suite), kSuiteNotFound);
        EXPECT_EQ(suite, &record) << "a failing call touched its output";
        EXPECT_NE(record.sSPBasic->ReleaseSuite(kPropertySuiteName, 1), 0);
        const auto *action = Acquire<ActionDescriptorSuite>(record, kActionDescriptorSuiteName, 2);
        ActionDescriptor descriptor = nullptr;
        action->Make(&descriptor);
        action->PutInteger(descriptor, 'numb', 1);
        action->PutInteger(descriptor, 'numb', 2);
        Acquire<ActionDescriptorSuite>(record, kActionDescriptorSuiteName, 2);
    });
    EXPECT_TRUE(played.HasViolation("released a suite that it does not hold"));
    EXPECT_TRUE(played.HasViolation("already present"));
    EXPECT_TRUE(played.HasViolation("leaked 1 action descriptor"));
    EXPECT_TRUE(played.HasViolation("leaked 2 acquisition"));
    EXPECT_EQ(played.filterHost.log.violations.size(), 4u);
    EXPECT_EQ(played.filterHost.log.suites[0], std::string("!") + kErrorSuiteName + "/1");

    played.ViolationsOf([](FilterRecord &record) {
        const auto *action = Acquire<ActionDescriptorSuite>(record, kActionDescriptorSuiteName, 2);
        record.sSPBasic->ReleaseSuite(kActionDescriptorSuiteName, 2);
        ActionDescriptor descriptor = nullptr;
        action->Make(&descriptor);
        action->Free(descriptor);
    });
    EXPECT_TRUE(played.HasViolation("without holding its suite"));
}

TEST(Suites, ErrorTextAndWatchProperty) {
    PlayedHost played({});
    played.ViolationsOf([](FilterRecord &record) {
        const auto *error = Acquire<ErrorSuite>(record, kErrorSuiteName, 1);
        error->SetErrorFromPString(reinterpret_cast<const uint8_t *>("\x04"
                                                                     "oops and more"));
        record.sSPBasic->ReleaseSuite(kErrorSuiteName, 1);
        EXPECT_EQ(record.propertyProcs->setPropertyProc(kHostSignature, kPropWatchSuspension, 0, 1, nullptr),
                  kNoError);
        EXPECT_EQ(record.propertyProcs->setPropertyProc(kHostSignature, 'none', 0, 1, nullptr),
                  kErrPlugInPropertyUndefined);
    });
    EXPECT_EQ(played.filterHost.log.errorText, "oops");
    EXPECT_EQ(played.filterHost.log.propertiesSet.size(), 1u);
}
