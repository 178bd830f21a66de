// A host's descriptors that answer from a case's bytes: keys without end, values of other kinds, errors,
// exceptions, lengths that lie. What is taken is what was answered well, each service ends as often as it
// began, and what is written reads as the same.
#include "plugin/interface/HostDescriptors.h"
#include "plugin/interface/HostSuites.h"
#include "plugin/interface/ScriptKeys.h"
#include "plugin/parameters/PersistentBlock.h"
#include "plugin/parameters/ScriptReader.h"
#include "plugin/parameters/ScriptWriter.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"
#include "storage/ParameterBlock.h"
#include "tests/fuzz/CaseBytes.h"
#include "tests/support/RecordingDiag.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <windows.h>

namespace {

struct Entry {
    FourCharCode key, type;
    double value;
};

struct Play {
    CaseBytes from;
    bool isHonest;              // plays what was written
    std::vector<Entry> written; // by the filter
    Entry now;                  // the key stepped to last
    bool mustAsk;               // for its value, by a getter that is there
    bool isPending, fits;       // it was not taken yet; every one before was
    int puts, keys, opened, suites, descriptors, disposed;
    ParameterSet expected;
    HostResult failure, verdict; // the first failure of the block's suites; of closing the script
    uint8_t block[kParameterBlockSize];
    int32_t stored; // bytes; below 0: none
} g;

// 0 nearly always; else an error, or no answer at all.
HostResult Answer() {
    const int way = g.isHonest ? 0 : g.from.Pick(0, 63);
    if (way == 63)
        throw 1;
    if (way == 62)
        RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    return way > 59 ? static_cast<HostResult>(g.from.Pick(-1800, 2)) : kNoError;
}

bool IsRare() {
    return !g.isHonest && g.from.Pick(0, 31) == 31;
}

ReadDescriptor OpenReader(HostHandle, FourCharCode *keys) {
    g.fits = false;
    if (Answer() != kNoError)
        return nullptr;
    for (int i = 0; keys[i]; ++i)
        keys[i] = kKeyFound;
    g.fits = true;
    ++g.opened;
    return &g;
}

void SettleKey() {
    Require(!g.mustAsk, "every value of its own type is asked for");
    g.fits = g.fits && !g.isPending;
    g.isPending = false;
}

HostResult CloseReader(ReadDescriptor) {
    SettleKey();
    --g.opened;
    constexpr HostResult kVerdicts[] = {kNoError, kNoError, kNoError, kErrMissingParameter, kParamErr, 2};
    g.verdict = kErrPlugInHostInsufficient;
    Answer();
    return g.verdict = kVerdicts[g.isHonest ? 0 : g.from.Pick(0, 5)];
}

// Whether the key stepped to has a value of its own type and a getter for it.
bool HasGoodValue() {
    const ReadDescriptorProcs &procs = *gFilterRecord->descriptorParameters->readDescriptorProcs;
    if (g.now.key == kKeyEffect)
        return (g.now.type == kTypeEnumerated || g.now.type == kTypeEffect) && procs.getEnumeratedProc;
    if (g.now.key == kKeyOutputSpikesOnly)
        return g.now.type == kTypeBoolean && procs.getBooleanProc;
    if (g.now.key == kParameters[kNumberOfPoints].key)
        return g.now.type == kTypeInteger && procs.getIntegerProc;
    return g.isPending && ((g.now.type == kTypeUnitFloat && procs.getUnitFloatProc) ||
                           (g.now.type == kTypeFloat && procs.getFloatProc));
}

HostBoolean NextKey(ReadDescriptor, FourCharCode *key, FourCharCode *type, int32_t *) {
    constexpr FourCharCode kTypes[] = {kTypeUnitFloat, kTypeUnitFloat,  kTypeFloat,  kTypeInteger,
                                       kTypeBoolean,   kTypeEnumerated, kTypeEffect, kTypeRawData};
    SettleKey();
    Require(++g.keys <= 4096, "keys without end are not read for ever");
    const size_t place = static_cast<size_t>(g.keys) - 1;
    const bool isOver = g.isHonest ? place >= g.written.size() : IsRare() || Answer() != kNoError;
    if (isOver)
        return 0;
    const int which = g.isHonest ? kParameterCount + 2 : g.from.Pick(0, kParameterCount + 2);
    if (g.isHonest)
        g.now = g.written[place];
    else
        g.now = {which < kParameterCount        ? kParameters[which].key
                 : which == kParameterCount     ? kKeyEffect
                 : which == kParameterCount + 1 ? kKeyOutputSpikesOnly
                                                : g.from.Take<FourCharCode>(),
                 kTypes[g.from.Pick(0, 7)], 0};
    g.isPending = which < kParameterCount + 2;
    g.mustAsk = HasGoodValue();
    *key = g.now.key;
    *type = g.now.type;
    return 1;
}

// For a getter that may be asked for this type and key; true when its value is taken.
bool Give(bool mayAsk, double *value) {
    Require(mayAsk, "a getter is asked for its own type only");
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kOdd[] = {
        std::numeric_limits<double>::quiet_NaN(), kInfinity, -kInfinity, 1e300, 0.5, 49.4999};
    g.mustAsk = false;
    const int kind = g.isHonest ? -1 : g.from.Pick(0, 7);
    *value = kind < 0   ? g.now.value
             : kind < 4 ? g.from.Pick(-1000, 1000)
             : kind < 6 ? kOdd[g.from.Pick(0, 5)]
                        : g.from.Take<double>();
    return Answer() == kNoError;
}

template <typename Value> bool GiveWhole(bool mayAsk, Value *value) {
    double real = 0;
    const bool isGood = Give(mayAsk, &real);
    *value = static_cast<Value>(std::abs(real) < 1e18 ? static_cast<int64_t>(real) : 0);
    g.isPending = g.isPending && !isGood;
    return isGood;
}

HostResult GetReal(ReadDescriptor, double *value) {
    if (!Give(g.now.type == kTypeUnitFloat || g.now.type == kTypeFloat, value))
        return kParamErr;
    for (const ParameterInfo &p : kParameters)
        if (p.key == g.now.key && !std::isnan(*value)) {
            const double stored = std::round(p.unit == ParameterUnit::kDegrees ? *value * 10.0 : *value);
            g.expected.*kParameterFields[p.parameter] =
                static_cast<int16_t>(std::clamp(stored, -32768.0, 32767.0));
            g.isPending = false;
        }
    return kNoError;
}
HostResult GetUnitFloat(ReadDescriptor, FourCharCode *, double *value) {
    return GetReal(nullptr, value);
}
HostResult GetInteger(ReadDescriptor, int32_t *value) {
    if (!GiveWhole(g.now.type == kTypeInteger && g.now.key == kParameters[kNumberOfPoints].key, value))
        return kParamErr;
    g.expected.numberOfPoints = static_cast<int16_t>(std::clamp(*value, -32768, 32767));
    return kNoError;
}
HostResult GetBoolean(ReadDescriptor, HostBoolean *value) {
    if (!GiveWhole(g.now.type == kTypeBoolean && g.now.key == kKeyOutputSpikesOnly, value))
        return kParamErr;
    g.expected.outputSpikesOnly = *value != 0;
    return kNoError;
}
HostResult GetEnumerated(ReadDescriptor, FourCharCode *value) {
    if (!GiveWhole(g.now.key == kKeyEffect, value))
        return kParamErr;
    g.expected.effectType = *value;
    return kNoError;
}

// A value that is refused costs only itself.
HostResult Put(FourCharCode key, FourCharCode type, double value) {
    g.puts += 1;
    const HostResult answer = Answer();
    if (answer == kNoError)
        g.written.push_back({key, type, value});
    return answer;
}

// One step of the block's suites: the first one that fails, or whose answer is of no use, decides.
HostResult Step(bool isUseless = false, HostResult failure = kErrPlugInPropertyUndefined) {
    const bool isFirst = g.failure == kNoError;
    if (isFirst)
        g.failure = kErrPlugInHostInsufficient; // what no answer counts as
    const HostResult answer = Answer();
    if (isFirst)
        g.failure = answer ? answer : isUseless ? failure : kNoError;
    return answer;
}

DescriptorRegistrySuite gRegistry;
ActionDescriptorSuite gActions;

SuiteResult Acquire(const char *name, int32_t, const void **suite) {
    const HostResult before = g.failure;
    if (Step() != kNoError) {
        g.failure = before ? before : kErrPlugInHostInsufficient;
        return kSuiteNotFound;
    }
    const bool isActions = std::strcmp(name, kActionDescriptorSuiteName) == 0;
    *suite = isActions ? static_cast<const void *>(&gActions) : &gRegistry;
    ++g.suites;
    return 0;
}

HostResult GiveDescriptor(ActionDescriptor *descriptor, bool isNone) {
    const HostResult answer = Step(isNone);
    *descriptor = answer || isNone ? nullptr : &g;
    g.descriptors += *descriptor != nullptr;
    return answer;
}

void OfferSuites() {
    gRegistry.Register = [](const char *, ActionDescriptor, HostBoolean) { return Step(); };
    gRegistry.Get = [](const char *, ActionDescriptor *descriptor) {
        return GiveDescriptor(descriptor, g.stored < 0 || IsRare());
    };
    gActions.Make = [](ActionDescriptor *descriptor) { return GiveDescriptor(descriptor, false); };
    gActions.Free = [](ActionDescriptor) {
        --g.descriptors;
        return Answer();
    };
    gActions.HasKey = [](ActionDescriptor, FourCharCode, HostBoolean *hasKey) {
        *hasKey = !IsRare();
        return Step(!*hasKey);
    };
    gActions.GetType = [](ActionDescriptor, FourCharCode, FourCharCode *type) {
        *type = IsRare() ? kTypeUnitFloat : kTypeRawData;
        return Step(*type != kTypeRawData);
    };
    gActions.GetDataLength = [](ActionDescriptor, FourCharCode, int32_t *length) {
        *length = IsRare() ? g.from.Take<int32_t>() : g.stored;
        return Step(*length < static_cast<int32_t>(sizeof(ParameterSet)) || *length > 255);
    };
    gActions.GetData = [](ActionDescriptor, FourCharCode, void *data) {
        std::memcpy(data, g.block, sizeof g.block); // whatever length was told
        return Step(g.block[0] || g.block[1] || g.block[2] || g.block[3], kPersistentBlockObsolete);
    };
    gActions.PutData = [](ActionDescriptor, FourCharCode, int32_t length, const void *data) {
        Require(length == sizeof g.block, "a whole block is kept");
        std::memcpy(g.block, data, sizeof g.block);
        return Step();
    };
}

// Without a getter now and then.
template <typename Getter> Getter *OfferGetter(Getter *getter) {
    return IsRare() ? nullptr : getter;
}

struct Host {
    FilterRecord record{};
    PIDescriptorParameters script{};
    ParameterSet set = kDefaultParameters;
    uint8_t pending = 0;
    HandleProcs handles{};
    SPBasicSuite basic{};
    ReadDescriptorProcs readers{};
    WriteDescriptorProcs writers{};

    void OfferReaders() {
        readers.openReadDescriptorProc = OpenReader;
        readers.closeReadDescriptorProc = CloseReader;
        readers.getKeyProc = NextKey;
        readers.getIntegerProc = OfferGetter(GetInteger);
        readers.getFloatProc = OfferGetter(GetReal);
        readers.getUnitFloatProc = OfferGetter(GetUnitFloat);
        readers.getBooleanProc = OfferGetter(GetBoolean);
        readers.getEnumeratedProc = OfferGetter(GetEnumerated);
    }
    Host() {
        gFilterRecord = &record;
        gParameters = &set;
        gDialogPending = &pending;
        handles.disposeProc = [](HostHandle) {
            ++g.disposed;
            Answer();
        };
        basic.AcquireSuite = Acquire;
        basic.ReleaseSuite = [](const char *, int32_t) -> SuiteResult {
            --g.suites;
            return Answer();
        };
        OfferSuites();
        writers.openWriteDescriptorProc = []() -> WriteDescriptor { return &g; };
        writers.closeWriteDescriptorProc = [](WriteDescriptor, HostHandle *written) {
            *written = reinterpret_cast<HostHandle>(&g);
            return kNoError;
        };
        writers.putIntegerProc = [](WriteDescriptor, FourCharCode key, int32_t value) {
            return Put(key, kTypeInteger, value);
        };
        writers.putUnitFloatProc = [](WriteDescriptor, FourCharCode key, FourCharCode, const double *value) {
            return Put(key, kTypeUnitFloat, *value);
        };
        writers.putBooleanProc = [](WriteDescriptor, FourCharCode key, HostBoolean value) {
            return Put(key, kTypeBoolean, value);
        };
        writers.putEnumeratedProc = [](WriteDescriptor, FourCharCode key, FourCharCode, FourCharCode value) {
            return Put(key, kTypeEnumerated, value);
        };
        record.descriptorParameters = &script;
        record.handleProcs = &handles;
        record.sSPBasic = &basic;
        script.writeDescriptorProcs = &writers;
        script.readDescriptorProcs = &readers;
        InstallParameterBlockAccessor();
    }
};

bool AreSame(const ParameterSet &a, const ParameterSet &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void RequireNothingHeld() {
    Require(g.opened == 0 && g.suites == 0 && g.descriptors == 0, "nothing is held");
    ForgetHostFailure();
    TakeReports();
}

// Any set, as CommitSet leaves it.
ParameterSet TakeSet() {
    auto set = g.from.Take<ParameterSet>();
    std::memcpy(set.version, kDefaultParameters.version, sizeof set.version);
    set.outputSpikesOnly = set.outputSpikesOnly != 0;
    std::memset(set.padding1, 0, sizeof set.padding1);
    std::memset(set.padding2, 0, sizeof set.padding2);
    return set;
}

void Restore(const Host &host) {
    g.failure = kNoError;
    Require(RestorePersistentBlock() == g.failure, "the host's block fared as its suites answered");
    Require(AreSame(host.set, g.failure ? kDefaultParameters : g.expected),
            "the set is the block's, or the defaults");
    RequireNothingHeld();
}

void ReadScript(Host *host) {
    const ParameterSet before = g.expected = host->set;
    host->OfferReaders();
    g.keys = g.disposed = 0;
    g.verdict = kParamErr; // unless it is closed
    host->script.descriptor = reinterpret_cast<HostHandle>(&g);
    bool shows = false;
    const HostResult result = ReadScriptParameters(&shows), verdict = g.verdict;
    const bool isUsed = verdict == kNoError;
    const bool isWarning = verdict == kErrMissingParameter || (verdict == kParamErr && g.fits);
    Require(result == (isWarning ? kNoError : verdict), "a script's verdict is the run's result");
    Require(shows == (isUsed ? host->script.playInfo == kPlayDisplay : isWarning),
            "and decides on the dialog");
    Require(AreSame(host->set, isUsed ? g.expected : before), "a script counts whole or not at all");
    std::string told;
    for (const std::string &line : TakeReportLines())
        told += line.find("Invalid Script") != line.npos ? line : "";
    const std::string unfit = "The Photoshop Script you specified is not compatible with this version of "
                              "Brillatrix Pro";
    Require(told == (isUsed      ? ""
                     : isWarning ? "185 1 48 Invalid Script Specified: " + unfit +
                                       ". Some settings have been set to their default values."
                     : verdict == kParamErr
                         ? "198 1 16 Invalid Script Specified: " + unfit + " and will not be used."
                         : "212 1 16 Invalid Script Specified: A fatal error occurred while "
                           "reading the script parameters."),
            "a script of no use is told once");
    Require(g.disposed == 1 && !host->script.descriptor, "a script is given back once");
    RequireNothingHeld();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length) {
    g = {};
    g.from = {bytes, length};
    Host host;
    host.pending = static_cast<uint8_t>(g.from.Pick(0, 1));
    host.script.playInfo = static_cast<int16_t>(g.from.Pick(-1, 3));
    g.expected = TakeSet();
    std::memcpy(g.block, &g.expected, sizeof g.expected);
    g.block[g.from.Pick(0, 15)] ^= static_cast<uint8_t>(g.from.Pick(0, 31) == 31); // a version, or a value
    std::memcpy(&g.expected, g.block, sizeof g.expected);
    g.block[28] = g.from.Take<uint8_t>(); // the switch
    g.block[29] = 7;                      // padding
    g.expected.outputSpikesOnly = g.block[28] != 0;
    g.stored = g.from.Pick(39, 256);
    Restore(host);
    ReadScript(&host);
    const ParameterSet kept = host.set;
    Require(WriteScriptParameters() == kNoError && g.puts == kParameterCount + 2, "a set is recorded");
    g.isHonest = true;
    host.set = g.written.size() == kParameterCount + 2 ? kDefaultParameters : kept;
    ReadScript(&host);
    host.set.version[3] = kept.version[3];
    host.set.version[2] = kept.version[2];
    Require(AreSame(host.set, kept), "what was recorded plays as the same");
    g.isHonest = false;
    g.failure = kNoError;
    StorePersistentBlock();
    g.isHonest = true;
    g.stored = g.failure ? -1 : 255;
    host.set = g.expected = kept;
    std::memcpy(g.expected.version, kDefaultParameters.version, sizeof g.expected.version);
    Restore(host);
    return 0;
}
