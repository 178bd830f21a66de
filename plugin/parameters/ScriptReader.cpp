#include "plugin/parameters/ScriptReader.h"

#include "diag/ErrorReport.h"
#include "plugin/interface/ScriptKeys.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr char kTitleInvalidScript[] = "Invalid Script Specified";
// A host that never says "no more keys" must not hang the filter.
constexpr int32_t kMaxKeysRead = 4096;

struct ScriptReader {
    const ReadDescriptorProcs *procs;
    ReadDescriptor descriptor;
};

// The host overwrites the keys it finds, so every reading has an array of its own; a 0 ends it.
struct KeyArray {
    FourCharCode keys[kParameterCount + 3] = {kKeyOutputSpikesOnly, kKeyEffect};
    KeyArray() {
        for (int32_t i = 0; i < kParameterCount; ++i)
            keys[2 + i] = kParameters[i].key;
    }
};

// The set keeps what a script gave, as far as its 16 bits hold it.
int16_t NarrowToField(double value) {
    constexpr double kLowest = std::numeric_limits<int16_t>::min();
    constexpr double kHighest = std::numeric_limits<int16_t>::max();
    return static_cast<int16_t>(std::clamp(std::round(value), kLowest, kHighest));
}

// A getter of the wrong type throws inside some hosts, so the type decides which one is asked, and a value
// that is no number at all is passed over.
bool GetNumber(const ScriptReader &reader, FourCharCode type, double *value) {
    FourCharCode unit = 0;
    if (type == kTypeUnitFloat)
        return reader.procs->getUnitFloatProc &&
               CallHost(reader.procs->getUnitFloatProc, reader.descriptor, &unit, value) == kNoError;
    if (type == kTypeFloat)
        return reader.procs->getFloatProc &&
               CallHost(reader.procs->getFloatProc, reader.descriptor, value) == kNoError;
    return false;
}

bool ReadNumber(const ScriptReader &reader, ParameterUnit unit, FourCharCode type, int16_t *field) {
    double value = 0;
    if (!GetNumber(reader, type, &value) || std::isnan(value))
        return false;
    *field = NarrowToField(unit == ParameterUnit::kDegrees ? value * kTenthsPerDegree : value);
    return true;
}

bool ReadCount(const ScriptReader &reader, FourCharCode type, int16_t *field) {
    int32_t value = 0;
    if (type != kTypeInteger || !reader.procs->getIntegerProc ||
        CallHost(reader.procs->getIntegerProc, reader.descriptor, &value) != kNoError)
        return false;
    *field = NarrowToField(value);
    return true;
}

bool ReadOutputSpikesOnly(const ScriptReader &reader, FourCharCode type, uint8_t *field) {
    HostBoolean value = 0;
    if (type != kTypeBoolean || !reader.procs->getBooleanProc ||
        CallHost(reader.procs->getBooleanProc, reader.descriptor, &value) != kNoError)
        return false;
    *field = value != 0;
    return true;
}

// Some hosts give an enumerated value the type of its own enumeration.
bool ReadEffect(const ScriptReader &reader, FourCharCode type, uint32_t *field) {
    FourCharCode value = 0;
    if ((type != kTypeEnumerated && type != kTypeEffect) || !reader.procs->getEnumeratedProc ||
        CallHost(reader.procs->getEnumeratedProc, reader.descriptor, &value) != kNoError)
        return false;
    *field = value;
    return true;
}

// False for a key of ours whose value could not be taken.
bool ReadKey(const ScriptReader &reader, FourCharCode key, FourCharCode type, ParameterSet *set) {
    if (key == kKeyOutputSpikesOnly)
        return ReadOutputSpikesOnly(reader, type, &set->outputSpikesOnly);
    if (key == kKeyEffect)
        return ReadEffect(reader, type, &set->effectType);
    for (const ParameterInfo &parameter : kParameters) {
        if (parameter.key != key)
            continue;
        int16_t *field = &(set->*kParameterFields[parameter.parameter]);
        return parameter.unit == ParameterUnit::kCount ? ReadCount(reader, type, field)
                                                       : ReadNumber(reader, parameter.unit, type, field);
    }
    return true;
}

// Returns the host's verdict, and whether every value found could be taken. A descriptor that cannot be
// opened is as good as one of wrong values.
HostResult ReadDescriptorInto(const PIDescriptorParameters &script, ParameterSet *set, bool *valuesFit) {
    *valuesFit = false;
    const ReadDescriptorProcs *procs = script.readDescriptorProcs;
    KeyArray wanted;
    const ScriptReader reader = {procs,
                                 CallHost(procs->openReadDescriptorProc, script.descriptor, wanted.keys)};
    if (!reader.descriptor)
        return kParamErr;
    *valuesFit = true;
    FourCharCode key = 0, type = 0;
    int32_t flags = 0;
    for (int32_t i = 0;
         i < kMaxKeysRead && CallHost(procs->getKeyProc, reader.descriptor, &key, &type, &flags) != 0; ++i)
        *valuesFit = ReadKey(reader, key, type, set) && *valuesFit;
    return CallHost(procs->closeReadDescriptorProc, reader.descriptor);
}

void DisposeScript(PIDescriptorParameters *script) {
    const HandleProcs *handles = gFilterRecord->handleProcs;
    if (handles && handles->disposeProc)
        CallHost(handles->disposeProc, script->descriptor);
    script->descriptor = nullptr;
}

void ReportScript(uint32_t siteCode, uint32_t icon, const char *text) {
    ReportError({siteCode, kUserMessage, 0}, icon, kTitleInvalidScript, "%s", text);
}

// What the user is told about a verdict other than 0, and how the run goes on. Some hosts give the general
// code for a missing key too: only a value that did not fit makes it a script of no use.
HostResult RefuseScript(HostResult verdict, bool valuesFit, bool *showDialog) {
    *showDialog = false;
    if (verdict == kErrMissingParameter || (verdict == kParamErr && valuesFit)) {
        ReportScript(
            185, kWarningIcon,
            "The Photoshop Script you specified is not compatible with this version of Brillatrix Pro. "
            "Some settings have been set to their default values.");
        *showDialog = true;
        return kNoError;
    }
    if (verdict == kParamErr)
        ReportScript(
            198, kStopIcon,
            "The Photoshop Script you specified is not compatible with this version of Brillatrix Pro and "
            "will not be used.");
    else
        ReportScript(212, kStopIcon, "A fatal error occurred while reading the script parameters.");
    return verdict;
}

// Tables with empty places occur: without these three procedures there is nothing to read with.
bool CanRead(const PIDescriptorParameters *script) {
    if (!script || !script->descriptor || !script->readDescriptorProcs)
        return false;
    const ReadDescriptorProcs *procs = script->readDescriptorProcs;
    return procs->openReadDescriptorProc && procs->getKeyProc && procs->closeReadDescriptorProc;
}

} // namespace

HostResult ReadScriptParameters(bool *showDialog) {
    if (!showDialog)
        return kErrMissingParameter;
    *showDialog = *gDialogPending != 0;
    PIDescriptorParameters *script = gFilterRecord->descriptorParameters;
    if (!CanRead(script))
        return kNoError;
    ParameterSet set = *gParameters;
    bool valuesFit = false;
    const HostResult verdict = ReadDescriptorInto(*script, &set, &valuesFit);
    DisposeScript(script);
    if (verdict != kNoError)
        return RefuseScript(verdict, valuesFit, showDialog);
    *gParameters = set;
    *showDialog = script->playInfo == kPlayDisplay;
    return kNoError;
}
