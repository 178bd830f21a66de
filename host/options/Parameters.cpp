#include "host/options/Parameters.h"

#include "host/base/FileBytes.h"
#include "host/base/SystemText.h"
#include "plugin/interface/ScriptKeys.h"

#include <shlobj.h>

#include <algorithm>
#include <cmath>

namespace host {

constexpr size_t kSettingsFileSize = 255;
constexpr uint32_t kMemoryMagic = 0x52484242; // "BBHR"
constexpr wchar_t kMemoryName[] = L"\\Registry.bin";

// In small letters, without what stands between words.
static std::string Simplify(const std::string &name) {
    std::string simple;
    for (const char c : name)
        if (c != ' ' && c != '-' && c != '_')
            simple += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return simple;
}

static std::string TextOfCode(uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(code >> shift & 0xFF);
    return text;
}

// By the code, the whole name or one of its two words, but "star" alone names no effect.
static bool IsCalled(const EffectType &type, const std::string &simple) {
    const std::string name = ToUtf8(type.name);
    const size_t blank = std::min(name.find(' '), name.size());
    return simple == Simplify(TextOfCode(type.code)) || simple == Simplify(name) ||
           (simple != "star" &&
            (simple == Simplify(name.substr(0, blank)) || simple == Simplify(name.substr(blank))));
}

bool FindEffect(const std::string &name, uint32_t *code) {
    const std::string simple = Simplify(name);
    const auto found = std::find_if(std::begin(kEffectTypes), std::end(kEffectTypes),
                                    [&](const EffectType &type) { return IsCalled(type, simple); });
    if (simple.empty() || found == std::end(kEffectTypes))
        return false;
    *code = found->code;
    return true;
}

std::string ListEffects() {
    std::string list;
    for (const EffectType &type : kEffectTypes)
        list += (list.empty() ? "" : ", ") + ToUtf8(type.word);
    return list;
}

DescriptorValue DescribeParameter(const ParameterInfo &parameter, double value) {
    switch (parameter.unit) {
    case ParameterUnit::kDegrees:
        return UnitFloatValue(parameter.key, kUnitAngle, value);
    case ParameterUnit::kCount:
        return IntegerValue(parameter.key, static_cast<int32_t>(value));
    default:
        return UnitFloatValue(parameter.key, kUnitPercent, value);
    }
}

double ShownValue(const ParameterInfo &parameter, int16_t stored) {
    return parameter.unit == ParameterUnit::kDegrees ? stored / kTenthsPerDegree : stored;
}

Descriptor DescribeParameters(const ParameterSet &set) {
    Descriptor described;
    described.values = {BooleanValue(kKeyOutputSpikesOnly, set.outputSpikesOnly != 0),
                        EnumeratedValue(kKeyEffect, kTypeEffect, set.effectType)};
    for (const ParameterInfo &parameter : kParameters) {
        const int16_t stored = set.*kParameterFields[parameter.parameter];
        described.values.push_back(DescribeParameter(parameter, ShownValue(parameter, stored)));
    }
    return described;
}

bool ReadSettingsFile(const std::wstring &path, Descriptor *parameters, std::string *why) {
    Bytes bytes;
    if (!ReadWholeFile(path, &bytes, why))
        return false;
    ParameterSet set = {};
    if (bytes.size() == kSettingsFileSize)
        std::memcpy(&set, bytes.data(), sizeof(set));
    if (!std::equal(std::begin(set.version), std::end(set.version), std::begin(kDefaultParameters.version))) {
        *why = "it is not a saved set of this filter's parameters";
        return false;
    }
    *parameters = DescribeParameters(set);
    return true;
}

static int16_t StoredValue(const Descriptor &parameters, const ParameterInfo &parameter) {
    const DescriptorValue *value = FindValue(parameters, parameter.key);
    const double shown = !value                                    ? 0.0
                         : parameter.unit == ParameterUnit::kCount ? value->integer
                                                                   : value->real;
    const double scale = parameter.unit == ParameterUnit::kDegrees ? kTenthsPerDegree : 1.0;
    if (std::isnan(shown))
        return parameter.defaultValue;
    return static_cast<int16_t>(std::lround(std::clamp(shown * scale, -32768.0, 32767.0)));
}

std::vector<uint8_t> SettingsFileBytes(const Descriptor &parameters) {
    ParameterSet set = kDefaultParameters;
    for (const ParameterInfo &parameter : kParameters)
        set.*kParameterFields[parameter.parameter] = StoredValue(parameters, parameter);
    if (const DescriptorValue *effect = FindValue(parameters, kKeyEffect))
        set.effectType = effect->code;
    if (const DescriptorValue *alone = FindValue(parameters, kKeyOutputSpikesOnly))
        set.outputSpikesOnly = static_cast<decltype(set.outputSpikesOnly)>(alone->integer);
    std::vector<uint8_t> bytes(kSettingsFileSize);
    std::memcpy(bytes.data(), &set, sizeof(set));
    return bytes;
}

// The host's folder, made when it is missing. Empty when the system has none.
static std::wstring MemoryFolder() {
    wchar_t folder[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableW(L"BRILLATRIX_HOST_FOLDER", folder, MAX_PATH);
    if (length > 0 && length < MAX_PATH)
        return NativePath(folder);
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
        return {};
    return std::wstring(folder) + L"\\BrillatrixHost";
}

static Descriptor TakeDescriptor(ByteReader &reader) {
    Descriptor descriptor;
    const Bytes bytes = reader.TakeBytes(reader.Take<uint32_t>());
    if (!reader.failed && !UnpackDescriptor(bytes.data(), bytes.size(), &descriptor))
        reader.failed = true;
    return descriptor;
}

static void AppendDescriptor(Bytes &bytes, const Descriptor &descriptor) {
    const Bytes packed = PackDescriptor(descriptor);
    AppendNumber(bytes, static_cast<uint32_t>(packed.size()));
    AppendBytes(bytes, packed.data(), packed.size());
}

static bool UnpackMemory(const Bytes &bytes, HostMemory *memory) {
    ByteReader reader = {bytes.data(), bytes.size()};
    HostMemory read;
    if (reader.Take<uint32_t>() != kMemoryMagic)
        return false;
    if (reader.Take<uint8_t>() != 0)
        read.lastParameters = TakeDescriptor(reader);
    const uint32_t entries = reader.Take<uint32_t>();
    for (uint32_t i = 0; i < entries && !reader.failed; i++) {
        RegistryEntry entry;
        const Bytes key = reader.TakeBytes(reader.Take<uint32_t>());
        entry.key.assign(key.begin(), key.end());
        entry.descriptor = TakeDescriptor(reader);
        entry.isPersistent = true;
        read.registry.push_back(std::move(entry));
    }
    if (reader.failed)
        return false;
    *memory = std::move(read);
    return true;
}

bool LoadHostMemory(HostMemory *memory, std::string *why) {
    const std::wstring path = MemoryFolder() + kMemoryName;
    *memory = {};
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES &&
        (GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND))
        return true;
    Bytes bytes;
    memory->isElsewhere = !ReadWholeFile(path, &bytes, why);
    if (memory->isElsewhere)
        return false;
    *why = "it is damaged";
    return UnpackMemory(bytes, memory);
}

bool SaveHostMemory(const HostMemory &memory, std::string *why) {
    const std::wstring folder = MemoryFolder();
    if (folder.empty() || memory.isElsewhere) {
        *why = folder.empty() ? "there is no folder for it" : "those of an earlier one could not be read";
        return false;
    }
    CreateDirectoryW(folder.c_str(), nullptr);
    Bytes bytes;
    AppendNumber(bytes, kMemoryMagic);
    AppendNumber(bytes, static_cast<uint8_t>(memory.lastParameters ? 1 : 0));
    if (memory.lastParameters)
        AppendDescriptor(bytes, *memory.lastParameters);
    const auto count = std::count_if(memory.registry.begin(), memory.registry.end(),
                                     [](const RegistryEntry &entry) { return entry.isPersistent; });
    AppendNumber(bytes, static_cast<uint32_t>(count));
    for (const RegistryEntry &entry : memory.registry) {
        if (!entry.isPersistent)
            continue;
        AppendNumber(bytes, static_cast<uint32_t>(entry.key.size()));
        AppendBytes(bytes, entry.key.data(), entry.key.size());
        AppendDescriptor(bytes, entry.descriptor);
    }
    Bytes kept;
    std::string absent;
    return (ReadWholeFile(folder + kMemoryName, &kept, &absent) && kept == bytes) ||
           WriteWholeFile(folder + kMemoryName, bytes, why);
}

} // namespace host
