#include "host/services/ActionSuites.h"

#include "host/services/HostState.h"

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
    if (!result)
        return kParamErr;
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

static HostResult HasKey(ActionDescriptor handle, FourCharCode key, HostBoolean *result) {
    const Descriptor *descriptor = FindAction(handle, "Action.HasKey");
    if (!descriptor || !result)
        return kParamErr;
    *result = FindValue(*descriptor, key) != nullptr;
    return kNoError;
}

// Some hosts raise an exception when a key is put twice; this one puts it down in the log.
static HostResult PutData(ActionDescriptor handle, FourCharCode key, int32_t length, const void *data) {
    Descriptor *descriptor = FindAction(handle, "Action.PutData");
    if (!descriptor || length < 0 || (length > 0 && !data))
        return kParamErr;
    if (FindValue(*descriptor, key))
        AddViolation(*gHostState, "Action.PutData of a key that is already present");
    PutValue(*descriptor, DataValue(key, data, static_cast<size_t>(length)));
    return kNoError;
}

// The value of a key, or null.
static const DescriptorValue *FindActionValue(ActionDescriptor handle, const char *name, FourCharCode key) {
    const Descriptor *descriptor = FindAction(handle, name);
    return descriptor ? FindValue(*descriptor, key) : nullptr;
}

static HostResult GetType(ActionDescriptor handle, FourCharCode key, FourCharCode *type) {
    const DescriptorValue *value = FindActionValue(handle, "Action.GetType", key);
    if (!value || !type)
        return kParamErr;
    *type = value->type;
    return kNoError;
}

static HostResult GetDataLength(ActionDescriptor handle, FourCharCode key, int32_t *length) {
    const DescriptorValue *value = FindActionValue(handle, "Action.GetDataLength", key);
    if (!value || !length || value->type != kTypeRawData)
        return kParamErr;
    *length = static_cast<int32_t>(value->bytes.size());
    return kNoError;
}

static HostResult GetData(ActionDescriptor handle, FourCharCode key, void *data) {
    const DescriptorValue *value = FindActionValue(handle, "Action.GetData", key);
    if (!value || value->type != kTypeRawData || !data)
        return kParamErr;
    std::copy(value->bytes.begin(), value->bytes.end(), static_cast<uint8_t *>(data));
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

static HostResult GetEntry(const char *key, ActionDescriptor *result) {
    if (!key || !result)
        return kParamErr;
    const RegistryEntry *entry = FindEntry(key);
    *result = entry ? KeepAction(entry->descriptor) : nullptr;
    return kNoError;
}

// The members with which a filter keeps a block of its own; nothing here keeps single parameters this way.
void FillActionSuites(HostState &state) {
    state.registrySuite.Register = Offer<"Registry.Register", Register>(state);
    state.registrySuite.Get = Offer<"Registry.Get", GetEntry>(state);
    RefuseAll(&state.registrySuite.Erase);

    ActionDescriptorSuite &s = state.actionSuite;
    s.Make = Offer<"Action.Make", Make>(state);
    s.Free = Offer<"Action.Free", Free>(state);
    s.GetType = Offer<"Action.GetType", GetType>(state);
    s.HasKey = Offer<"Action.HasKey", HasKey>(state);
    s.PutData = Offer<"Action.PutData", PutData>(state);
    s.GetDataLength = Offer<"Action.GetDataLength", GetDataLength>(state);
    s.GetData = Offer<"Action.GetData", GetData>(state);
    RefuseAll(&s.GetKey, &s.GetCount, &s.IsEqual, &s.Erase, &s.Clear, &s.HasKeys, &s.AsHandle,
              &s.HandleToDescriptor);
    RefuseAll(&s.PutInteger, &s.PutFloat, &s.PutUnitFloat, &s.PutString, &s.PutBoolean, &s.PutEnumerated,
              &s.PutList, &s.PutObject, &s.PutGlobalObject, &s.PutReference, &s.PutClass, &s.PutGlobalClass,
              &s.PutAlias, &s.PutIntegers, &s.PutZString);
    RefuseAll(&s.GetInteger, &s.GetFloat, &s.GetUnitFloat, &s.GetStringLength, &s.GetString, &s.GetBoolean,
              &s.GetEnumerated, &s.GetList, &s.GetObjectValue, &s.GetGlobalObjectValue, &s.GetReference,
              &s.GetClass, &s.GetGlobalClass, &s.GetAlias, &s.GetIntegers, &s.GetZString);
}

} // namespace host
