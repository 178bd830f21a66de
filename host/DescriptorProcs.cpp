// The scripting procedures: a filter reads its parameters from one handle and records them into another.
#include "host/HostState.h"

#include <cstring>
#include <random>

namespace host {

constexpr int32_t kEnumeratedFlag = 0x2000; // as the terminology's parameter flags

// A reader or writer that the filter holds, or null and a violation.
template <typename Item> static Item *FindLive(std::list<Item> &items, void *item, const char *name) {
    for (Item &candidate : items)
        if (&candidate == item)
            return &candidate;
    AddViolation(*gHostState, std::string(name) + " of a descriptor that is not open");
    return nullptr;
}

static Reader *FindReader(void *reader, const char *name) {
    return FindLive(gHostState->readers, reader, name);
}
static Writer *FindWriter(void *writer, const char *name) {
    return FindLive(gHostState->writers, writer, name);
}

static void ShuffleKeys(Reader &reader, uint32_t seed) {
    reader.order.resize(reader.descriptor.values.size());
    for (size_t i = 0; i < reader.order.size(); i++)
        reader.order[i] = i;
    if (seed == 0)
        return;
    std::minstd_rand random(seed);
    for (size_t i = reader.order.size(); i > 1; i--)
        std::swap(reader.order[i - 1], reader.order[random() % i]);
}

static ReadDescriptor OpenReader(HostHandle descriptor, FourCharCode *keys) {
    HostState &state = *gHostState;
    const HandleBlock *block = FindHandle(state, descriptor);
    if (!block) {
        AddViolation(state, "openReadDescriptorProc of a handle that is not alive");
        return nullptr;
    }
    Reader reader;
    if (!UnpackDescriptor(reinterpret_cast<const uint8_t *>(block->data), static_cast<size_t>(block->size),
                          &reader.descriptor))
        return nullptr;
    reader.keys = keys;
    ShuffleKeys(reader, state.owner->settings.shuffleSeed);
    state.readers.push_back(std::move(reader));
    return &state.readers.back();
}

static bool HasMissingKey(const Reader &reader) {
    for (const uint32_t *key = reader.keys; key && *key; key++)
        if (*key != kKeyFound)
            return true;
    return false;
}

static HostResult CloseReader(ReadDescriptor handle) {
    Reader *reader = FindReader(handle, "closeReadDescriptorProc");
    if (!reader)
        return kParamErr;
    const HostSettings &settings = gHostState->owner->settings;
    HostResult result = reader->worstResult;
    if (result == kNoError && settings.missingKeys == MissingKeys::kReported && HasMissingKey(*reader))
        result = kErrMissingParameter;
    gHostState->readers.remove_if([reader](const Reader &candidate) { return &candidate == reader; });
    return settings.closeReadResult.value_or(result);
}

static HostBoolean GetNextKey(ReadDescriptor handle, FourCharCode *key, FourCharCode *type, int32_t *flags) {
    Reader *reader = FindReader(handle, "getKeyProc");
    if (!reader || reader->next >= reader->order.size())
        return 0;
    const DescriptorValue &value = reader->descriptor.values[reader->order[reader->next++]];
    for (uint32_t *wanted = reader->keys; wanted && *wanted; wanted++)
        if (*wanted == value.key)
            *wanted = kKeyFound;
    const bool isEnumerated = value.type == kTypeEnumerated;
    *key = value.key;
    *type = isEnumerated && gHostState->owner->settings.enumerationsGiveTheirOwnType ? value.enumerationType
                                                                                     : value.type;
    *flags = isEnumerated ? kEnumeratedFlag : 0;
    return 1;
}

// The value that getKeyProc stepped to last, when it is of the getter's type.
static const DescriptorValue *CurrentValue(ReadDescriptor handle, const char *name, uint32_t type) {
    Reader *reader = FindReader(handle, name);
    if (!reader)
        return nullptr;
    const DescriptorValue *value =
        reader->next > 0 ? &reader->descriptor.values[reader->order[reader->next - 1]] : nullptr;
    if (value && value->type == type)
        return value;
    reader->worstResult = kParamErr;
    return nullptr;
}

static HostResult ReadInteger(ReadDescriptor reader, int32_t *result) {
    const DescriptorValue *value = CurrentValue(reader, "getIntegerProc", kTypeInteger);
    if (!value)
        return kParamErr;
    *result = value->integer;
    return kNoError;
}

static HostResult ReadFloat(ReadDescriptor reader, double *result) {
    const DescriptorValue *value = CurrentValue(reader, "getFloatProc", kTypeFloat);
    if (!value)
        return kParamErr;
    *result = value->real;
    return kNoError;
}

static HostResult ReadUnitFloat(ReadDescriptor reader, FourCharCode *unit, double *result) {
    const DescriptorValue *value = CurrentValue(reader, "getUnitFloatProc", kTypeUnitFloat);
    if (!value)
        return kParamErr;
    *unit = value->unit;
    *result = value->real;
    return kNoError;
}

static HostResult ReadBoolean(ReadDescriptor reader, HostBoolean *result) {
    const DescriptorValue *value = CurrentValue(reader, "getBooleanProc", kTypeBoolean);
    if (!value)
        return kParamErr;
    *result = value->integer != 0;
    return kNoError;
}

static HostResult ReadEnumerated(ReadDescriptor reader, FourCharCode *result) {
    const DescriptorValue *value = CurrentValue(reader, "getEnumeratedProc", kTypeEnumerated);
    if (!value)
        return kParamErr;
    *result = value->code;
    return kNoError;
}

static HostResult ReadClass(ReadDescriptor reader, FourCharCode *result) {
    const DescriptorValue *value = CurrentValue(reader, "getClassProc", kTypeClass);
    if (!value)
        return kParamErr;
    *result = value->code;
    return kNoError;
}

static HostResult ReadText(ReadDescriptor reader, HostHandle *result) {
    const DescriptorValue *value = CurrentValue(reader, "getTextProc", kTypeText);
    if (!value)
        return kParamErr;
    *result = MakeHandle(*gHostState, value->bytes.data(), value->bytes.size());
    return *result ? kNoError : kMemFullErr;
}

static HostResult ReadString(ReadDescriptor reader, HostString255 *result) {
    const DescriptorValue *value = CurrentValue(reader, "getStringProc", kTypeText);
    if (!value || value->bytes.size() > 255)
        return kParamErr;
    (*result)[0] = static_cast<uint8_t>(value->bytes.size());
    std::copy(value->bytes.begin(), value->bytes.end(), *result + 1);
    return kNoError;
}

static HostResult ReadCount(ReadDescriptor handle, uint32_t *count) {
    const Reader *reader = FindReader(handle, "getCountProc");
    if (!reader)
        return kParamErr;
    *count = static_cast<uint32_t>(reader->order.size());
    return kNoError;
}

// A pinned getter gives the nearest value in range and tells when that changed it.
template <typename Number> static HostResult Pin(Number min, Number max, Number *value) {
    const Number pinned = std::clamp(*value, min, max);
    const HostResult result = pinned == *value ? kNoError : HostResult{2};
    *value = pinned;
    return result;
}

static HostResult ReadPinnedInteger(ReadDescriptor reader, int32_t min, int32_t max, int32_t *value) {
    const HostResult result = ReadInteger(reader, value);
    return result ? result : Pin(min, max, value);
}

static HostResult ReadPinnedFloat(ReadDescriptor reader, const double *min, const double *max,
                                  double *value) {
    const HostResult result = ReadFloat(reader, value);
    return result ? result : Pin(*min, *max, value);
}

static HostResult ReadPinnedUnitFloat(ReadDescriptor reader, const double *min, const double *max,
                                      FourCharCode *unit, double *value) {
    const HostResult result = ReadUnitFloat(reader, unit, value);
    return result ? result : Pin(*min, *max, value);
}

static HostResult ReadAlias(ReadDescriptor, HostHandle *) {
    return kErrPlugInHostInsufficient;
}
static HostResult ReadObject(ReadDescriptor, FourCharCode *, HostHandle *) {
    return kErrPlugInHostInsufficient;
}
static HostResult ReadReference(ReadDescriptor, DescriptorSimpleReference *) {
    return kErrPlugInHostInsufficient;
}

static WriteDescriptor OpenWriter() {
    gHostState->writers.emplace_back();
    return &gHostState->writers.back();
}

static HostResult CloseWriter(WriteDescriptor handle, HostHandle *result) {
    Writer *writer = FindWriter(handle, "closeWriteDescriptorProc");
    if (!writer)
        return kParamErr;
    const std::vector<uint8_t> bytes = PackDescriptor(writer->descriptor);
    gHostState->writers.remove_if([writer](const Writer &candidate) { return &candidate == writer; });
    HostHandle made = MakeHandle(*gHostState, bytes.data(), bytes.size());
    if (!made)
        return kMemFullErr;
    *result = made;
    gHostState->hasRecorded = true;
    return kNoError;
}

static HostResult Put(WriteDescriptor handle, const char *name, const DescriptorValue &value) {
    Writer *writer = FindWriter(handle, name);
    if (!writer)
        return kParamErr;
    PutValue(writer->descriptor, value);
    return kNoError;
}

static HostResult PutInteger(WriteDescriptor writer, FourCharCode key, int32_t value) {
    return Put(writer, "putIntegerProc", IntegerValue(key, value));
}

static HostResult PutFloat(WriteDescriptor writer, FourCharCode key, const double *value) {
    return Put(writer, "putFloatProc", FloatValue(key, *value));
}

static HostResult PutUnitFloat(WriteDescriptor writer, FourCharCode key, FourCharCode unit,
                               const double *value) {
    return Put(writer, "putUnitFloatProc", UnitFloatValue(key, unit, *value));
}

static HostResult PutBoolean(WriteDescriptor writer, FourCharCode key, HostBoolean value) {
    return Put(writer, "putBooleanProc", BooleanValue(key, value != 0));
}

static HostResult PutEnumerated(WriteDescriptor writer, FourCharCode key, FourCharCode type,
                                FourCharCode value) {
    return Put(writer, "putEnumeratedProc", EnumeratedValue(key, type, value));
}

static HostResult PutClass(WriteDescriptor writer, FourCharCode key, FourCharCode code) {
    DescriptorValue value;
    value.key = key;
    value.type = kTypeClass;
    value.code = code;
    return Put(writer, "putClassProc", value);
}

static HostResult PutText(WriteDescriptor writer, FourCharCode key, HostHandle text) {
    const HandleBlock *block = FindHandle(*gHostState, text);
    if (!block)
        return kParamErr;
    DescriptorValue value = DataValue(key, block->data, static_cast<size_t>(block->size));
    value.type = kTypeText;
    return Put(writer, "putTextProc", value);
}

static HostResult PutString(WriteDescriptor writer, FourCharCode key, const uint8_t *text) {
    DescriptorValue value = DataValue(key, text + 1, text[0]);
    value.type = kTypeText;
    return Put(writer, "putStringProc", value);
}

static HostResult PutAlias(WriteDescriptor, FourCharCode, HostHandle) {
    return kErrPlugInHostInsufficient;
}
static HostResult PutReference(WriteDescriptor, FourCharCode, const DescriptorSimpleReference *) {
    return kErrPlugInHostInsufficient;
}
static HostResult PutNestedObject(WriteDescriptor, FourCharCode, FourCharCode, HostHandle) {
    return kErrPlugInHostInsufficient;
}
static HostResult PutCount(WriteDescriptor, FourCharCode, uint32_t) {
    return kErrPlugInHostInsufficient;
}

static void FillReadProcs(HostState &state) {
    ReadDescriptorProcs &procs = state.readProcs;
    procs.readDescriptorProcsVersion = 0;
    procs.numReadDescriptorProcs = 18;
    procs.openReadDescriptorProc = Offer<"openReadDescriptorProc", OpenReader>(state);
    procs.closeReadDescriptorProc = Offer<"closeReadDescriptorProc", CloseReader>(state);
    procs.getKeyProc = Offer<"getKeyProc", GetNextKey>(state);
    procs.getIntegerProc = Offer<"getIntegerProc", ReadInteger>(state);
    procs.getFloatProc = Offer<"getFloatProc", ReadFloat>(state);
    procs.getUnitFloatProc = Offer<"getUnitFloatProc", ReadUnitFloat>(state);
    procs.getBooleanProc = Offer<"getBooleanProc", ReadBoolean>(state);
    procs.getTextProc = Offer<"getTextProc", ReadText>(state);
    procs.getAliasProc = Offer<"getAliasProc", ReadAlias>(state);
    procs.getEnumeratedProc = Offer<"getEnumeratedProc", ReadEnumerated>(state);
    procs.getClassProc = Offer<"getClassProc", ReadClass>(state);
    procs.getSimpleReferenceProc = Offer<"getSimpleReferenceProc", ReadReference>(state);
    procs.getObjectProc = Offer<"getObjectProc", ReadObject>(state);
    procs.getCountProc = Offer<"getCountProc", ReadCount>(state);
    procs.getStringProc = Offer<"getStringProc", ReadString>(state);
    procs.getPinnedIntegerProc = Offer<"getPinnedIntegerProc", ReadPinnedInteger>(state);
    procs.getPinnedFloatProc = Offer<"getPinnedFloatProc", ReadPinnedFloat>(state);
    procs.getPinnedUnitFloatProc = Offer<"getPinnedUnitFloatProc", ReadPinnedUnitFloat>(state);
}

static void FillWriteProcs(HostState &state) {
    WriteDescriptorProcs &procs = state.writeProcs;
    procs.writeDescriptorProcsVersion = 0;
    procs.numWriteDescriptorProcs = 16;
    procs.openWriteDescriptorProc = Offer<"openWriteDescriptorProc", OpenWriter>(state);
    procs.closeWriteDescriptorProc = Offer<"closeWriteDescriptorProc", CloseWriter>(state);
    procs.putIntegerProc = Offer<"putIntegerProc", PutInteger>(state);
    procs.putFloatProc = Offer<"putFloatProc", PutFloat>(state);
    procs.putUnitFloatProc = Offer<"putUnitFloatProc", PutUnitFloat>(state);
    procs.putBooleanProc = Offer<"putBooleanProc", PutBoolean>(state);
    procs.putTextProc = Offer<"putTextProc", PutText>(state);
    procs.putAliasProc = Offer<"putAliasProc", PutAlias>(state);
    procs.putEnumeratedProc = Offer<"putEnumeratedProc", PutEnumerated>(state);
    procs.putClassProc = Offer<"putClassProc", PutClass>(state);
    procs.putSimpleReferenceProc = Offer<"putSimpleReferenceProc", PutReference>(state);
    procs.putObjectProc = Offer<"putObjectProc", PutNestedObject>(state);
    procs.putCountProc = Offer<"putCountProc", PutCount>(state);
    procs.putStringProc = Offer<"putStringProc", PutString>(state);
    procs.putScopedClassProc = Offer<"putScopedClassProc", PutClass>(state);
    procs.putScopedObjectProc = Offer<"putScopedObjectProc", PutNestedObject>(state);
}

void FillDescriptorProcs(HostState &state) {
    FillReadProcs(state);
    FillWriteProcs(state);
}

} // namespace host
