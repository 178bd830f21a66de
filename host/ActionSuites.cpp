// The action descriptor suite and the registry that keeps descriptors between runs.
#include "host/HostState.h"

#include <cstring>

namespace host {

static Descriptor *FindAction(ActionDescriptor handle, const char *name) {
    for (Descriptor &descriptor : gHostState->actionDescriptors)
        if (&descriptor == handle)
            return &descriptor;
    AddViolation(*gHostState, std::string(name) + " of a descriptor that is not alive");
    return nullptr;
}

static ActionDescriptor KeepAction(Descriptor descriptor) {
    gHostState->actionDescriptors.push_back(std::move(descriptor));
    return &gHostState->actionDescriptors.back();
}

static HostResult Make(ActionDescriptor *result) {
    *result = KeepAction({});
    return kNoError;
}

static HostResult Free(ActionDescriptor handle) {
    const Descriptor *descriptor = FindAction(handle, "Action.Free");
    if (!descriptor)
        return kParamErr;
    gHostState->actionDescriptors.remove_if(
        [descriptor](const Descriptor &kept) { return &kept == descriptor; });
    return kNoError;
}

static HostResult GetCount(ActionDescriptor handle, uint32_t *count) {
    const Descriptor *descriptor = FindAction(handle, "Action.GetCount");
    if (!descriptor)
        return kParamErr;
    *count = static_cast<uint32_t>(descriptor->values.size());
    return kNoError;
}

static HostResult GetKey(ActionDescriptor handle, uint32_t index, FourCharCode *key) {
    const Descriptor *descriptor = FindAction(handle, "Action.GetKey");
    if (!descriptor || index >= descriptor->values.size())
        return kParamErr;
    *key = descriptor->values[index].key;
    return kNoError;
}

static HostResult HasKey(ActionDescriptor handle, FourCharCode key, HostBoolean *result) {
    const Descriptor *descriptor = FindAction(handle, "Action.HasKey");
    if (!descriptor)
        return kParamErr;
    *result = FindValue(*descriptor, key) != nullptr;
    return kNoError;
}

static HostResult HasKeys(ActionDescriptor handle, FourCharCode *keys, HostBoolean *result) {
    const Descriptor *descriptor = FindAction(handle, "Action.HasKeys");
    if (!descriptor)
        return kParamErr;
    *result = 1;
    for (; *keys; keys++)
        if (!FindValue(*descriptor, *keys))
            *result = 0;
    return kNoError;
}

static HostResult AreEqual(ActionDescriptor a, ActionDescriptor b, HostBoolean *result) {
    const Descriptor *left = FindAction(a, "Action.IsEqual");
    const Descriptor *right = FindAction(b, "Action.IsEqual");
    if (!left || !right)
        return kParamErr;
    *result = *left == *right;
    return kNoError;
}

static HostResult EraseKey(ActionDescriptor handle, FourCharCode key) {
    Descriptor *descriptor = FindAction(handle, "Action.Erase");
    return descriptor && EraseValue(*descriptor, key) ? kNoError : kParamErr;
}

static HostResult Clear(ActionDescriptor handle) {
    Descriptor *descriptor = FindAction(handle, "Action.Clear");
    if (!descriptor)
        return kParamErr;
    descriptor->values.clear();
    return kNoError;
}

// Some hosts raise an exception when a key is put twice; this one puts it down in the log.
static HostResult Put(ActionDescriptor handle, const char *name, const DescriptorValue &value) {
    Descriptor *descriptor = FindAction(handle, name);
    if (!descriptor)
        return kParamErr;
    if (FindValue(*descriptor, value.key))
        AddViolation(*gHostState, std::string(name) + " of a key that is already present");
    PutValue(*descriptor, value);
    return kNoError;
}

static HostResult PutInteger(ActionDescriptor d, FourCharCode key, int32_t value) {
    return Put(d, "Action.PutInteger", IntegerValue(key, value));
}

static HostResult PutFloat(ActionDescriptor d, FourCharCode key, double value) {
    return Put(d, "Action.PutFloat", FloatValue(key, value));
}

static HostResult PutUnitFloat(ActionDescriptor d, FourCharCode key, FourCharCode unit, double value) {
    return Put(d, "Action.PutUnitFloat", UnitFloatValue(key, unit, value));
}

static HostResult PutBoolean(ActionDescriptor d, FourCharCode key, HostBoolean value) {
    return Put(d, "Action.PutBoolean", BooleanValue(key, value != 0));
}

static HostResult PutEnumerated(ActionDescriptor d, FourCharCode key, FourCharCode type, FourCharCode code) {
    return Put(d, "Action.PutEnumerated", EnumeratedValue(key, type, code));
}

static HostResult PutString(ActionDescriptor d, FourCharCode key, const char *text) {
    if (!text)
        return kParamErr;
    DescriptorValue value = DataValue(key, text, std::strlen(text));
    value.type = kTypeText;
    return Put(d, "Action.PutString", value);
}

static HostResult PutData(ActionDescriptor d, FourCharCode key, int32_t length, const void *data) {
    if (length < 0 || (length > 0 && !data))
        return kParamErr;
    return Put(d, "Action.PutData", DataValue(key, data, static_cast<size_t>(length)));
}

// The value of a key when it has the type, or null.
static const DescriptorValue *TypedValue(ActionDescriptor handle, const char *name, FourCharCode key,
                                         FourCharCode type) {
    const Descriptor *descriptor = FindAction(handle, name);
    const DescriptorValue *value = descriptor ? FindValue(*descriptor, key) : nullptr;
    return value && value->type == type ? value : nullptr;
}

static HostResult GetType(ActionDescriptor handle, FourCharCode key, FourCharCode *type) {
    const Descriptor *descriptor = FindAction(handle, "Action.GetType");
    const DescriptorValue *value = descriptor ? FindValue(*descriptor, key) : nullptr;
    if (!value)
        return kParamErr;
    *type = value->type;
    return kNoError;
}

static HostResult GetInteger(ActionDescriptor d, FourCharCode key, int32_t *result) {
    const DescriptorValue *value = TypedValue(d, "Action.GetInteger", key, kTypeInteger);
    if (!value)
        return kParamErr;
    *result = value->integer;
    return kNoError;
}

static HostResult GetFloat(ActionDescriptor d, FourCharCode key, double *result) {
    const DescriptorValue *value = TypedValue(d, "Action.GetFloat", key, kTypeFloat);
    if (!value)
        return kParamErr;
    *result = value->real;
    return kNoError;
}

static HostResult GetUnitFloat(ActionDescriptor d, FourCharCode key, FourCharCode *unit, double *result) {
    const DescriptorValue *value = TypedValue(d, "Action.GetUnitFloat", key, kTypeUnitFloat);
    if (!value)
        return kParamErr;
    *unit = value->unit;
    *result = value->real;
    return kNoError;
}

static HostResult GetBoolean(ActionDescriptor d, FourCharCode key, HostBoolean *result) {
    const DescriptorValue *value = TypedValue(d, "Action.GetBoolean", key, kTypeBoolean);
    if (!value)
        return kParamErr;
    *result = value->integer != 0;
    return kNoError;
}

static HostResult GetEnumerated(ActionDescriptor d, FourCharCode key, FourCharCode *type,
                                FourCharCode *code) {
    const DescriptorValue *value = TypedValue(d, "Action.GetEnumerated", key, kTypeEnumerated);
    if (!value)
        return kParamErr;
    *type = value->enumerationType;
    *code = value->code;
    return kNoError;
}

static HostResult GetStringLength(ActionDescriptor d, FourCharCode key, uint32_t *length) {
    const DescriptorValue *value = TypedValue(d, "Action.GetStringLength", key, kTypeText);
    if (!value)
        return kParamErr;
    *length = static_cast<uint32_t>(value->bytes.size());
    return kNoError;
}

static HostResult GetString(ActionDescriptor d, FourCharCode key, char *text, uint32_t maxLength) {
    const DescriptorValue *value = TypedValue(d, "Action.GetString", key, kTypeText);
    if (!value || maxLength == 0)
        return kParamErr;
    const size_t length = std::min<size_t>(value->bytes.size(), maxLength - 1);
    std::copy_n(value->bytes.begin(), length, text);
    text[length] = 0;
    return kNoError;
}

static HostResult GetDataLength(ActionDescriptor d, FourCharCode key, int32_t *length) {
    const DescriptorValue *value = TypedValue(d, "Action.GetDataLength", key, kTypeRawData);
    if (!value)
        return kParamErr;
    *length = static_cast<int32_t>(value->bytes.size());
    return kNoError;
}

static HostResult GetData(ActionDescriptor d, FourCharCode key, void *data) {
    const DescriptorValue *value = TypedValue(d, "Action.GetData", key, kTypeRawData);
    if (!value || !data)
        return kParamErr;
    std::copy(value->bytes.begin(), value->bytes.end(), static_cast<uint8_t *>(data));
    return kNoError;
}

static HostResult AsHandle(ActionDescriptor d, HostHandle *result) {
    const Descriptor *descriptor = FindAction(d, "Action.AsHandle");
    if (!descriptor)
        return kParamErr;
    const std::vector<uint8_t> bytes = PackDescriptor(*descriptor);
    HostHandle made = MakeHandle(*gHostState, bytes.data(), bytes.size());
    if (!made)
        return kMemFullErr;
    *result = made;
    return kNoError;
}

static HostResult HandleToDescriptor(HostHandle handle, ActionDescriptor *result) {
    const HandleBlock *block = FindHandle(*gHostState, handle);
    Descriptor descriptor;
    if (!block || !UnpackDescriptor(reinterpret_cast<const uint8_t *>(block->data),
                                    static_cast<size_t>(block->size), &descriptor))
        return kParamErr;
    *result = KeepAction(std::move(descriptor));
    return kNoError;
}

static RegistryEntry *FindEntry(const char *key) {
    for (RegistryEntry &entry : gHostState->owner->registry)
        if (entry.key == key)
            return &entry;
    return nullptr;
}

static HostResult Register(const char *key, ActionDescriptor handle, HostBoolean isPersistent) {
    const Descriptor *descriptor = FindAction(handle, "Registry.Register");
    if (!key || !descriptor)
        return kParamErr;
    RegistryEntry *entry = FindEntry(key);
    if (!entry)
        entry = &gHostState->owner->registry.emplace_back(RegistryEntry{key, {}, false});
    entry->descriptor = *descriptor;
    entry->isPersistent = isPersistent != 0;
    return kNoError;
}

static HostResult EraseEntry(const char *key) {
    if (!key)
        return kParamErr;
    std::erase_if(gHostState->owner->registry,
                  [key](const RegistryEntry &entry) { return entry.key == key; });
    return kNoError;
}

static HostResult GetEntry(const char *key, ActionDescriptor *result) {
    if (!key || !result)
        return kParamErr;
    const RegistryEntry *entry = FindEntry(key);
    *result = entry ? KeepAction(entry->descriptor) : nullptr;
    return kNoError;
}

// Nested objects, lists, references, files and host strings: no filter of plain parameters has them.
template <typename... Arguments> static HostResult Refuse(Arguments...) {
    return kErrPlugInHostInsufficient;
}

template <ServiceName name, typename... Arguments>
static void OfferRefusal(HostState &state, HostResult (**slot)(Arguments...)) {
    *slot = Offer<name, Refuse<Arguments...>>(state);
}

static void FillRefusals(HostState &state) {
    ActionDescriptorSuite &suite = state.actionSuite;
    OfferRefusal<"Action.PutList">(state, &suite.PutList);
    OfferRefusal<"Action.PutObject">(state, &suite.PutObject);
    OfferRefusal<"Action.PutGlobalObject">(state, &suite.PutGlobalObject);
    OfferRefusal<"Action.PutReference">(state, &suite.PutReference);
    OfferRefusal<"Action.PutClass">(state, &suite.PutClass);
    OfferRefusal<"Action.PutGlobalClass">(state, &suite.PutGlobalClass);
    OfferRefusal<"Action.PutAlias">(state, &suite.PutAlias);
    OfferRefusal<"Action.GetList">(state, &suite.GetList);
    OfferRefusal<"Action.GetObject">(state, &suite.GetObjectValue);
    OfferRefusal<"Action.GetGlobalObject">(state, &suite.GetGlobalObjectValue);
    OfferRefusal<"Action.GetReference">(state, &suite.GetReference);
    OfferRefusal<"Action.GetClass">(state, &suite.GetClass);
    OfferRefusal<"Action.GetGlobalClass">(state, &suite.GetGlobalClass);
    OfferRefusal<"Action.GetAlias">(state, &suite.GetAlias);
    OfferRefusal<"Action.PutIntegers">(state, &suite.PutIntegers);
    OfferRefusal<"Action.GetIntegers">(state, &suite.GetIntegers);
    OfferRefusal<"Action.PutZString">(state, &suite.PutZString);
    OfferRefusal<"Action.GetZString">(state, &suite.GetZString);
}

void FillActionSuites(HostState &state) {
    state.registrySuite.Register = Offer<"Registry.Register", Register>(state);
    state.registrySuite.Erase = Offer<"Registry.Erase", EraseEntry>(state);
    state.registrySuite.Get = Offer<"Registry.Get", GetEntry>(state);

    ActionDescriptorSuite &suite = state.actionSuite;
    suite.Make = Offer<"Action.Make", Make>(state);
    suite.Free = Offer<"Action.Free", Free>(state);
    suite.GetType = Offer<"Action.GetType", GetType>(state);
    suite.GetKey = Offer<"Action.GetKey", GetKey>(state);
    suite.HasKey = Offer<"Action.HasKey", HasKey>(state);
    suite.GetCount = Offer<"Action.GetCount", GetCount>(state);
    suite.IsEqual = Offer<"Action.IsEqual", AreEqual>(state);
    suite.Erase = Offer<"Action.Erase", EraseKey>(state);
    suite.Clear = Offer<"Action.Clear", Clear>(state);
    suite.PutInteger = Offer<"Action.PutInteger", PutInteger>(state);
    suite.PutFloat = Offer<"Action.PutFloat", PutFloat>(state);
    suite.PutUnitFloat = Offer<"Action.PutUnitFloat", PutUnitFloat>(state);
    suite.PutString = Offer<"Action.PutString", PutString>(state);
    suite.PutBoolean = Offer<"Action.PutBoolean", PutBoolean>(state);
    suite.PutEnumerated = Offer<"Action.PutEnumerated", PutEnumerated>(state);
    suite.PutData = Offer<"Action.PutData", PutData>(state);
    suite.GetInteger = Offer<"Action.GetInteger", GetInteger>(state);
    suite.GetFloat = Offer<"Action.GetFloat", GetFloat>(state);
    suite.GetUnitFloat = Offer<"Action.GetUnitFloat", GetUnitFloat>(state);
    suite.GetStringLength = Offer<"Action.GetStringLength", GetStringLength>(state);
    suite.GetString = Offer<"Action.GetString", GetString>(state);
    suite.GetBoolean = Offer<"Action.GetBoolean", GetBoolean>(state);
    suite.GetEnumerated = Offer<"Action.GetEnumerated", GetEnumerated>(state);
    suite.GetDataLength = Offer<"Action.GetDataLength", GetDataLength>(state);
    suite.GetData = Offer<"Action.GetData", GetData>(state);
    suite.HasKeys = Offer<"Action.HasKeys", HasKeys>(state);
    suite.AsHandle = Offer<"Action.AsHandle", AsHandle>(state);
    suite.HandleToDescriptor = Offer<"Action.HandleToDescriptor", HandleToDescriptor>(state);
    FillRefusals(state);
}

} // namespace host
