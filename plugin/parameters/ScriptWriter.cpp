#include "plugin/parameters/ScriptWriter.h"

#include "plugin/interface/ScriptKeys.h"
#include "plugin/record/HostCall.h"
#include "plugin/record/PluginState.h"

namespace {

struct ScriptWriter {
    const WriteDescriptorProcs *procs;
    WriteDescriptor descriptor;
};

// A value that the host cannot take is missing from the record; the others are still worth having.
void PutUnitFloat(const ScriptWriter &writer, FourCharCode key, FourCharCode unit, double value) {
    if (writer.procs->putUnitFloatProc)
        CallHost(writer.procs->putUnitFloatProc, writer.descriptor, key, unit, &value);
}

void PutParameter(const ScriptWriter &writer, const ParameterInfo &parameter, int16_t value) {
    switch (parameter.unit) {
    case ParameterUnit::kPercent:
        PutUnitFloat(writer, parameter.key, kUnitPercent, value);
        break;
    case ParameterUnit::kDegrees:
        PutUnitFloat(writer, parameter.key, kUnitAngle, value * 0.1);
        break;
    case ParameterUnit::kCount:
        if (writer.procs->putIntegerProc)
            CallHost(writer.procs->putIntegerProc, writer.descriptor, parameter.key, int32_t{value});
        break;
    }
}

void PutSet(const ScriptWriter &writer, const ParameterSet &set) {
    if (writer.procs->putBooleanProc)
        CallHost(writer.procs->putBooleanProc, writer.descriptor, kKeyOutputSpikesOnly, set.outputSpikesOnly);
    if (writer.procs->putEnumeratedProc)
        CallHost(writer.procs->putEnumeratedProc, writer.descriptor, kKeyEffect, kTypeEffect, set.effectType);
    for (const ParameterInfo &parameter : kParameters)
        PutParameter(writer, parameter, set.*kParameterFields[parameter.parameter]);
}

// Closing with no place for the result would leave it to nobody, so the field is emptied first: it then holds
// the new descriptor or none.
void CloseInto(const ScriptWriter &writer, PIDescriptorParameters *script) {
    const HandleProcs *handles = gFilterRecord->handleProcs;
    if (script->descriptor && handles && handles->disposeProc)
        CallHost(handles->disposeProc, script->descriptor);
    HostHandle written = nullptr;
    const HostResult closed = CallHost(writer.procs->closeWriteDescriptorProc, writer.descriptor, &written);
    script->descriptor = closed == kNoError ? written : nullptr;
    script->recordInfo = kRecordDialogOptional;
}

} // namespace

HostResult WriteScriptParameters() {
    PIDescriptorParameters *script = gFilterRecord->descriptorParameters;
    const WriteDescriptorProcs *procs = script ? script->writeDescriptorProcs : nullptr;
    if (!procs || !procs->openWriteDescriptorProc || !procs->closeWriteDescriptorProc)
        return kNoError;
    const ScriptWriter writer = {procs, CallHost(procs->openWriteDescriptorProc)};
    if (!writer.descriptor)
        return kErrMissingParameter;
    PutSet(writer, *gParameters);
    CloseInto(writer, script);
    return kNoError;
}
