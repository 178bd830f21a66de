#include "host/services/DescriptorProcs.h"

#include "host/services/HandleProcs.h"
#include "host/services/HostState.h"

#include <cstring>
#include <random>

namespace host {

constexpr HostResult kCoercedParamErr = 2;
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
    if (!descriptor) // nothing was recorded yet
        return nullptr;
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

// Into a place of the filter's, which may have none.
template <typename Value> static void Give(Value *place, Value value) {
    if (place)
        *place = value;
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
    const bool givesOwnType = isEnumerated && gHostState->owner->settings.enumerationsGiveTheirOwnType;
    Give(key, value.key);
    Give(type, givesOwnType ? value.enumerationType : value.type);
    Give(flags, isEnumerated ? kEnumeratedFlag : 0);
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
    if (!value || !result)
        return kParamErr;
    *result = value->integer;
    return kNoError;
}

static HostResult ReadFloat(ReadDescriptor reader, double *result) {
    const DescriptorValue *value = CurrentValue(reader, "getFloatProc", kTypeFloat);
    if (!value || !result)
        return kParamErr;
    *result = value->real;
    return kNoError;
}

static HostResult ReadUnitFloat(ReadDescriptor reader, FourCharCode *unit, double *result) {
    const DescriptorValue *value = CurrentValue(reader, "getUnitFloatProc", kTypeUnitFloat);
    if (!value || !unit || !result)
        return kParamErr;
    *unit = value->unit;
    *result = value->real;
    return kNoError;
}

// A value outside its limits comes back at the limit, and the result says so.
template <typename Value> static HostResult Pin(Value least, Value most, Value *value) {
    if (*value >= least && *value <= most)
        return kNoError;
    *value = *value > most ? most : least; // not a number: the least
    return kCoercedParamErr;
}

static HostResult ReadPinnedInteger(ReadDescriptor reader, int32_t least, int32_t most, int32_t *result) {
    const HostResult read = ReadInteger(reader, result);
    return read == kNoError ? Pin(least, most, result) : read;
}

static HostResult ReadPinnedFloat(ReadDescriptor reader, const double *least, const double *most,
                                  double *result) {
    const HostResult read = least && most ? ReadFloat(reader, result) : kParamErr;
    return read == kNoError ? Pin(*least, *most, result) : read;
}

static HostResult ReadPinnedUnitFloat(ReadDescriptor reader, const double *least, const double *most,
                                      FourCharCode *unit, double *result) {
    const HostResult read = least && most ? ReadUnitFloat(reader, unit, result) : kParamErr;
    return read == kNoError ? Pin(*least, *most, result) : read;
}

static HostResult ReadBoolean(ReadDescriptor reader, HostBoolean *result) {
    const DescriptorValue *value = CurrentValue(reader, "getBooleanProc", kTypeBoolean);
    if (!value || !result)
        return kParamErr;
    *result = value->integer != 0;
    return kNoError;
}

static HostResult ReadEnumerated(ReadDescriptor reader, FourCharCode *result) {
    const DescriptorValue *value = CurrentValue(reader, "getEnumeratedProc", kTypeEnumerated);
    if (!value || !result)
        return kParamErr;
    *result = value->code;
    return kNoError;
}

// The handle becomes the filter's.
static HostResult ReadText(ReadDescriptor reader, HostHandle *result) {
    const DescriptorValue *value = CurrentValue(reader, "getTextProc", kTypeText);
    if (!value || !result)
        return kParamErr;
    HostHandle made = MakeHandle(*gHostState, value->bytes.data(), value->bytes.size());
    if (!made)
        return kMemFullErr;
    *result = made;
    return kNoError;
}

static HostResult ReadString(ReadDescriptor reader, HostString255 *result) {
    const DescriptorValue *value = CurrentValue(reader, "getStringProc", kTypeText);
    if (!value || !result)
        return kParamErr;
    const size_t length = std::min(value->bytes.size(), sizeof(HostString255) - 1);
    (*result)[0] = static_cast<uint8_t>(length);
    std::copy_n(value->bytes.begin(), length, *result + 1);
    return length == value->bytes.size() ? kNoError : kCoercedParamErr;
}

static WriteDescriptor OpenWriter() {
    gHostState->writers.emplace_back();
    return &gHostState->writers.back();
}

static HostResult CloseWriter(WriteDescriptor handle, HostHandle *result) {
    Writer *writer = FindWriter(handle, "closeWriteDescriptorProc");
    if (!writer || !result)
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
    return value ? Put(writer, "putFloatProc", FloatValue(key, *value)) : kParamErr;
}

// The handle stays the filter's.
static HostResult PutText(WriteDescriptor writer, FourCharCode key, HostHandle text) {
    const HandleBlock *block = FindHandle(*gHostState, text);
    if (!block) {
        AddViolation(*gHostState, "putTextProc of a handle that is not alive");
        return kParamErr;
    }
    return Put(writer, "putTextProc", TextValue(key, block->data, static_cast<size_t>(block->size)));
}

static HostResult PutString(WriteDescriptor writer, FourCharCode key, const HostString255 text) {
    return text ? Put(writer, "putStringProc", TextValue(key, text + 1, text[0])) : kParamErr;
}

static HostResult PutUnitFloat(WriteDescriptor writer, FourCharCode key, FourCharCode unit,
                               const double *value) {
    if (!value)
        return kParamErr;
    return Put(writer, "putUnitFloatProc", UnitFloatValue(key, unit, *value));
}

static HostResult PutBoolean(WriteDescriptor writer, FourCharCode key, HostBoolean value) {
    return Put(writer, "putBooleanProc", BooleanValue(key, value != 0));
}

static HostResult PutEnumerated(WriteDescriptor writer, FourCharCode key, FourCharCode type,
                                FourCharCode value) {
    return Put(writer, "putEnumeratedProc", EnumeratedValue(key, type, value));
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
    procs.getEnumeratedProc = Offer<"getEnumeratedProc", ReadEnumerated>(state);
    procs.getTextProc = Offer<"getTextProc", ReadText>(state);
    procs.getStringProc = Offer<"getStringProc", ReadString>(state);
    procs.getPinnedIntegerProc = Offer<"getPinnedIntegerProc", ReadPinnedInteger>(state);
    procs.getPinnedFloatProc = Offer<"getPinnedFloatProc", ReadPinnedFloat>(state);
    procs.getPinnedUnitFloatProc = Offer<"getPinnedUnitFloatProc", ReadPinnedUnitFloat>(state);
    RefuseAll(&procs.getAliasProc, &procs.getClassProc, &procs.getSimpleReferenceProc, &procs.getObjectProc,
              &procs.getCountProc);
}

static void FillWriteProcs(HostState &state) {
    WriteDescriptorProcs &procs = state.writeProcs;
    procs.writeDescriptorProcsVersion = 0;
    procs.numWriteDescriptorProcs = 16;
    procs.openWriteDescriptorProc = Offer<"openWriteDescriptorProc", OpenWriter>(state);
    procs.closeWriteDescriptorProc = Offer<"closeWriteDescriptorProc", CloseWriter>(state);
    procs.putIntegerProc = Offer<"putIntegerProc", PutInteger>(state);
    procs.putUnitFloatProc = Offer<"putUnitFloatProc", PutUnitFloat>(state);
    procs.putBooleanProc = Offer<"putBooleanProc", PutBoolean>(state);
    procs.putEnumeratedProc = Offer<"putEnumeratedProc", PutEnumerated>(state);
    procs.putFloatProc = Offer<"putFloatProc", PutFloat>(state);
    procs.putTextProc = Offer<"putTextProc", PutText>(state);
    procs.putStringProc = Offer<"putStringProc", PutString>(state);
    RefuseAll(&procs.putAliasProc, &procs.putClassProc, &procs.putSimpleReferenceProc, &procs.putObjectProc,
              &procs.putCountProc, &procs.putScopedClassProc, &procs.putScopedObjectProc);
}

void FillDescriptorProcs(HostState &state) {
    FillReadProcs(state);
    FillWriteProcs(state);
}

} // namespace host
