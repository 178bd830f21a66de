// The effect's parameters as a script carries them, and the host's memory of the last run.
#pragma once

#include "host/filter/FilterHost.h"
#include "host/services/Descriptor.h"
#include "render/ParameterSet.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

// "Hollywood Star", "hollywood" or "efT1", in any case. False for another name.
bool FindEffect(const std::string &name, uint32_t *code);
// A word for each, as the program's texts list them.
std::string ListEffects();

// A parameter's value in the unit in which scripts and people give it.
double ShownValue(const ParameterInfo &parameter, int16_t stored);
DescriptorValue DescribeParameter(const ParameterInfo &parameter, double value);
// All keys.
Descriptor DescribeParameters(const ParameterSet &parameters);

// A saved set. False with a reason when the file is not one.
bool ReadSettingsFile(const std::wstring &path, Descriptor *parameters, std::string *why);
// What such a file holds of parameters as DescribeParameters gives them.
std::vector<uint8_t> SettingsFileBytes(const Descriptor &parameters);

// What this host keeps between runs of the program.
struct HostMemory {
    std::optional<Descriptor> lastParameters;
    std::vector<RegistryEntry> registry; // persistent entries
    bool isElsewhere = false;            // in a file that could not be read and must not be replaced
};
// "Registry.bin" in the host's own folder under the user's local application data, or in the folder that the
// environment names in BRILLATRIX_HOST_FOLDER. An absent file is an empty memory; false for a damaged one and
// for one that cannot be read, which is not saved over.
bool LoadHostMemory(HostMemory *memory, std::string *why);
bool SaveHostMemory(const HostMemory &memory, std::string *why);

} // namespace host
